#include "support/MailHandoff.h"

#include "localisation/Fields.h"
#include "support/FileStatus.h"

namespace {
const QString kParagraph = QStringLiteral("%0D%0A%0D%0A");
const QString kPasteHint =
    QStringLiteral("Setzen Sie die Schreibmarke (Cursor) \u00fcber diesen Hinweistext und "
                   "druecken Sie die Tastenkombination <Strg><V>, um den Text aus der "
                   "Zwischenablage an der Cursorposition einzufuegen");
const QString kShortPasteHint =
    QStringLiteral("Bitte druecken Sie <Ctrl><V>, um den Text aus der Zwischenablage an der Cursorposition "
                   "einzufuegen");
} // namespace

QString UrlEncodeMailText(const QString &text)
{
    static const std::pair<QString, QString> kSteps[] = {
        {QStringLiteral("%"), QStringLiteral("%25")},      {QStringLiteral("\r\n"), QStringLiteral("%0A")},
        {QStringLiteral("\r"), QStringLiteral("%0A")},     {QStringLiteral(" "), QStringLiteral("%20")},
        {QStringLiteral("!"), QStringLiteral("%21")},      {QStringLiteral("#"), QStringLiteral("%23")},
        {QStringLiteral("*"), QStringLiteral("%2A")},      {QStringLiteral("/"), QStringLiteral("%2F")},
        {QStringLiteral("?"), QStringLiteral("%3F")},      {QStringLiteral("\u00c4"), QStringLiteral("%C4")},
        {QStringLiteral("\u00d6"), QStringLiteral("%D6")}, {QStringLiteral("\u00dc"), QStringLiteral("%DC")},
        {QStringLiteral("\u00df"), QStringLiteral("%DF")}, {QStringLiteral("\u00e4"), QStringLiteral("%E4")},
        {QStringLiteral("\u00f6"), QStringLiteral("%F6")}, {QStringLiteral("\u00fc"), QStringLiteral("%FC")},
    };
    QString encoded = text;
    for (const auto &[from, to] : kSteps)
        encoded.replace(from, to);
    return encoded;
}

QString MailtoAddress(const QString &mail, const QString &subject, const QString &body)
{
    return QStringLiteral("mailto:") + mail + QStringLiteral("?Subject=") + subject +
           QStringLiteral("&Body=") + body;
}

MailTextSource mailTextSource(MailTopic topic)
{
    const QString t3 = QStringLiteral("T3");
    switch (topic) {
    case MailTopic::StartLog:
        return {
            t3,
            QStringLiteral("Pawnsketch: STARTLOG.TXT@Bitte beachten: Druecken Sie < Ctrl > + < V >, um den "
                           "Fehler- bzw. Diagnosereport aus der Zwischenablage an der Cursorposition in "
                           "Ihre E-Mail einzufuegen!"),
            QStringLiteral("STARTLOG.TXT")};
    case MailTopic::ErrorLog:
        return {t3, QStringLiteral("Pawnsketch: ERRORLOG.TXT@") + kShortPasteHint,
                QStringLiteral("ERRORLOG.TXT")};
    case MailTopic::MissingFonts:
        return {t3, QStringLiteral("Pawnsketch: STARTLOG.TXT@") + kShortPasteHint,
                QStringLiteral("Missing Fonts")};
    case MailTopic::ErrorReport:
        return {QStringLiteral("T116"), QStringLiteral("Pawnsketch: Fehlerreport@") + kPasteHint, {}};
    case MailTopic::Feedback:
        return {QStringLiteral("T162"), QStringLiteral("Pawnsketch: Feedback@") + kPasteHint, {}};
    }
    return {};
}

MailContent PasteHintMail(const QString &languageText, const QString &var1)
{
    QString text = languageText;
    text.replace(QStringLiteral("<var1>"), var1);
    const QString at = QStringLiteral("@");
    return {GetField(text, 1, at), GetField(text, 2, at) + kParagraph};
}

MailContent FeedbackMail(const QString &subject, const QString &feedback, const QString &languageText)
{
    // Edit controls end lines with a lone LF; the mail and the limit count CR LF.
    QString text = WithCrLf(feedback);
    if (text.size() > kFeedbackInlineLimit)
        return {subject, PasteHintMail(languageText).body};
    return {subject, text.replace(QStringLiteral("\r\n"), QStringLiteral("%0D%0A"))};
}

QString webMailInstructionsDefault(const QString &supportMail)
{
    QString address = supportMail;
    address.replace(u'@', QStringLiteral("<<at>>"));
    return QStringLiteral(
               "Starten Sie nun Ihr Web-Mail Programm@Erstellen Sie dort eine neue Mail.@F\u00fcgen Sie den "
               "Fehlerreport an Cursorposition ein mit der Tastenkombination:@@<Strg> + <V> (bzw. "
               "<Umschalt> + <V>)@@Senden SIe Ihre Mail an:@") +
           address + QStringLiteral("#Hinweis zum Versenden");
}
