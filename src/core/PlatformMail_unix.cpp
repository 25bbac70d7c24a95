#include "core/Platform_unix.h"

#include "core/XdgSchemeHandler.h"

#include <QProcess>

namespace {
// Read at every call: the user may pick another mail program while we run.
bool mailCommand(const QString &address, xdg::Command &command)
{
    return xdg::schemeHandlerCommand(xdg::baseDirs(QProcessEnvironment::systemEnvironment()), address,
                                     command);
}
} // namespace

bool UnixPlatform::hasMailHandler() const
{
    xdg::Command command;
    return mailCommand(QStringLiteral("mailto:"), command);
}

// The address goes to the program as one argument, untouched: QUrl and QDesktopServices
// would write blanks and a bare "%" as escapes, re-encode the umlauts as UTF-8 and treat "#"
// as the start of a fragment.
bool UnixPlatform::openMailto(const QString &address)
{
    xdg::Command command;
    if (!mailCommand(address, command))
        return false;
    return QProcess::startDetached(command.program, command.arguments, command.workingDirectory);
}
