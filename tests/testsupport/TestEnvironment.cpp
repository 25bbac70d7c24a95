#include "testsupport/TestSupport.h"

#include <QtGlobal>

// Linked into every test program, so that one started by hand (outside CTest) is as safe
// as under CTest: the servers are a closed port on 127.0.0.1, never the real ones, and no
// window opens. Whatever the caller set is kept.
namespace {
void setUnlessSet(const char *name, const char *value)
{
    if (!qEnvironmentVariableIsSet(name))
        qputenv(name, value);
}

void prepareTestEnvironment()
{
    setUnlessSet("QT_QPA_PLATFORM", "offscreen");
    setUnlessSet("SUPPORTKIT_VERSION_URL", "http://127.0.0.1:9/none");
    setUnlessSet("SUPPORTKIT_DOWNLOAD_URL", "http://127.0.0.1:9/none/pawnsketch.exe");
    setUnlessSet("SUPPORTKIT_WEBSITE_URL", "http://127.0.0.1:9/");
    TestSupport::bypassProxyForLoopback();
}
} // namespace

Q_CONSTRUCTOR_FUNCTION(prepareTestEnvironment)
