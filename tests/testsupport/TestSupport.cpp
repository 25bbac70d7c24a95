#include "testsupport/TestSupport.h"

#include <QByteArrayList>

namespace TestSupport {
QString sourceDir()
{
    return QStringLiteral(SK_SOURCE_DIR);
}
QString binaryDir()
{
    return QStringLiteral(SK_BINARY_DIR);
}
void bypassProxyForLoopback()
{
    for (const char *name : {"no_proxy", "NO_PROXY"}) {
        const QByteArray list = qgetenv(name);
        if (!list.split(',').contains("127.0.0.1"))
            qputenv(name, list.isEmpty() ? QByteArray("127.0.0.1") : list + ",127.0.0.1");
    }
}
} // namespace TestSupport
