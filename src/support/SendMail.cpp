#include "support/SendMail.h"

#include "core/Config.h"
#include "core/Platform.h"
#include "localisation/Messages.h"
#include "localisation/ShowMsg.h"
#include "support/MailHandoff.h"

namespace {
// "@" is a line break in message texts.
QString supportMailForMessages()
{
    return Config::supportMail().replace(u'@', QLatin1String("<<at>>"));
}
} // namespace

void openSupportMail(QWidget *owner, const MailContent &content)
{
    const QString address = MailtoAddress(Config::supportMail(), content.subject, content.body);
    Platform &system = platform();
    if (system.hasMailHandler() && system.openMailto(address))
        return;
    const QString noMailProgram = messageText(
        QStringLiteral("M19201"), QStringLiteral("Es wurde kein E-Mail-Programm gefunden, das die "
                                                 "Mail an den Support öffnen kann."));
    const QString instructions =
        messageText(QStringLiteral("M167"), webMailInstructionsDefault(Config::supportMail()));
    ShowMsg(1, QString(), 64, noMailProgram + QStringLiteral("@@") + instructions, owner,
            {supportMailForMessages()});
}

void showWebmailInstructions(QWidget *owner)
{
    ShowMsg(1, QStringLiteral("M167"), 64, webMailInstructionsDefault(Config::supportMail()), owner,
            {supportMailForMessages()});
}
