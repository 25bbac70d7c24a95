#include "core/Platform.h"

#include <QCoreApplication>

// Hands its argument to the user's mail program as SupportKit does, in a process of its own,
// so that every case of the hand-off test has a desktop set-up of its own. The exit code is 1
// when a mail program is registered, plus 2 when one was started.
int main(int argc, char *argv[])
{
    const QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const std::unique_ptr<Platform> native = createNativePlatform();
    const bool found = native->hasMailHandler();
    const bool started = arguments.size() > 1 && native->openMailto(arguments.at(1));
    return (found ? 1 : 0) | (started ? 2 : 0);
}
