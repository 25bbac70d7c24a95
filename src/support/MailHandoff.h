#pragma once

#include <QString>

// The mail hand-off: the material goes to the clipboard, and the user's mail program gets a
// mailto address with a subject and a body that usually only tells the user to paste.
// Subjects and hints go into the address as the language file has them; only the line breaks
// the program adds itself are written as escapes. Handing the address to the mail program is
// Platform::openMailto(), which passes it on exactly as composed here.

// Percent-encodes text by plain replacements in a fixed order: "%" first, so that later
// escapes are not encoded again; a line break (CR LF or a lone CR) becomes "%0A", and the
// German umlauts and "ß" their single Latin-1 byte. Everything else passes unchanged.
QString UrlEncodeMailText(const QString &text);

// "mailto:" + mail + "?Subject=" + subject + "&Body=" + body, nothing encoded.
QString MailtoAddress(const QString &mail, const QString &subject, const QString &body);

// What a mail is about; each has a language text "subject@hint" with a German default.
enum class MailTopic
{
    StartLog,
    ErrorLog,
    MissingFonts,
    ErrorReport,
    Feedback,
};

struct MailTextSource
{
    QString key;           // in the code-text file ("T3", "T116", "T162")
    QString germanDefault; // used without a language file or key
    QString var1;          // replaces "<var1>" in the looked-up text; "" when unused
};
// The three mails about files share T3 with three different defaults; the fonts' default
// names the start log, as it always has.
MailTextSource mailTextSource(MailTopic topic);

struct MailContent
{
    QString subject;
    QString body;
};

// For a material the user pastes: subject = the text before the first "@", body = the hint
// after it + "%0D%0A%0D%0A" (the pasted text goes below the hint). "<var1>" is replaced first.
MailContent PasteHintMail(const QString &languageText, const QString &var1 = {});

// Feedback travels inside the address while it is short enough; otherwise the body is the
// paste hint of languageText (T162) and the user pastes the text from the clipboard.
inline constexpr qsizetype kFeedbackInlineLimit = 1000;
// feedback as the edit control gives it: a lone LF counts and is sent as CR LF.
// The subject is used as typed and may be empty.
MailContent FeedbackMail(const QString &subject, const QString &feedback, const QString &languageText);

// Default of the web-mail instructions ("M167"): the support address is written with
// "<<at>>", since "@" is a line break in message texts; "#" starts the title.
QString webMailInstructionsDefault(const QString &supportMail);
