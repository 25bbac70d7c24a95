#pragma once

#include <QList>
#include <QString>
#include <QStringView>

// The error report: one plain text with CR LF line breaks that the user copies and mails to
// support. It starts with the user line and a blank line, then the sections in a fixed order
// (error message, additional text, startlog.txt, errorlog.txt), and holds no empty line below
// the user line.
struct ErrorReportInput
{
    // The {} let designated initializers leave fields out without a warning. All texts have
    // CR LF line breaks, as the log files do: pass what edit controls give through WithCrLf()
    // (FileStatus.h), or typed empty lines survive and the report mixes line breaks.
    QString userLine{}; // "Benutzername:" (localised), a blank and the user name
    QString errorMessage{}, additionalText{}, startLog{}, errorLog{};
    bool reportError = false, appendStartLog = false, appendErrorLog = false;

    // Replaces the account name and the home folder in every section by kAccountPlaceholder
    // and kHomePlaceholder; the user line stays as it is. Fill accountName with the login name
    // (USERNAME on Windows, USER elsewhere) and homeFolder with QDir::homePath(); the folder is
    // found with "\" and with "/" separators, both compared without regard to case.
    bool hidePersonalData = false;
    QString accountName{};
    QString homeFolder{};
};

inline constexpr QStringView kAccountPlaceholder = u"<user>";
inline constexpr QStringView kHomePlaceholder = u"<home>";

// The whole report; "" when no box is checked or every chosen text is empty.
QString BuildErrorReport(const ErrorReportInput &in);

// Replaces sep+sep by sep until none is left. A null text is returned as it is; a text made
// only of the first character of sep (at least one) gives sep itself. With an empty sep the
// text is returned unchanged.
QString CollapseRepeats(const QString &text, const QString &sep);

// The personal-data replacement of the report on its own: the home folder (either separator)
// and then the account name, each only where it stands as a whole word or path, so that an
// account "max" leaves "maximum" alone. An empty name or a root folder replaces nothing.
QString HidePersonalData(const QString &text, const QString &accountName, const QString &homeFolder);

// Keeps the report up to date while the user types, without redoing the work on the logs.
//
// The report splits into a head (user line, error message and additional text) and a tail
// (the two log sections). No line break can be collapsed across a section header, so the
// tail depends only on the logs, their boxes and the personal-data settings; setInput()
// trims, anonymises and collapses each log once and keeps the result until that log or those
// settings change. A keystroke in the description then costs only the head.
//
// head() + the tail parts is always BuildErrorReport(input) (text() joins them). The tail is
// handed out as views into the logs' own text (the stretches between dropped empty lines
// and personal data) and into constants (headers, line breaks, placeholders). So the
// builder holds no copy of a 20 MB log, only a list of pieces. The views stay valid until
// the next setInput() or the builder's end.
//
// Use from the report page:
//   - Keep the log texts as read from the files (CR LF intact) and pass the same QString
//     objects on every call; reading the text back from the log boxes would copy 20 MB.
//     Comparing an unchanged log costs nothing when it is the same
//     QString.
//   - After setInput():
//       tailChanged: give the report view head(), tailParts() and tailOwners() (the view keeps
//                    the owners so that the parts stay valid). This happens on a box click
//                    or a new log, not while typing.
//       only headChanged: replace the view's head alone; the 40 MB behind it stay as they are.
//   - The counter shows length(), the send buttons follow !isEmpty(), and the clipboard gets
//     text() when a send button is pressed. Nothing of the report's size is built per
//     keystroke.
class ErrorReportBuilder
{
public:
    ErrorReportBuilder() = default;
    // The tail views point into the builder's strings.
    ErrorReportBuilder(const ErrorReportBuilder &) = delete;
    ErrorReportBuilder &operator=(const ErrorReportBuilder &) = delete;

    struct Changes
    {
        bool headChanged = false;
        bool tailChanged = false;
        qsizetype previousHeadLength = 0; // length of the head before this call
    };

    Changes setInput(const ErrorReportInput &in);

    const QString &head() const { return m_head; }
    // Many pieces (one per dropped empty line or hidden name).
    const QList<QStringView> &tailParts() const { return m_tail; }
    // The strings the tail parts point into, other than constants.
    QList<QString> tailOwners() const { return {m_start.source, m_error.source}; }
    QString tailText() const;
    qsizetype length() const { return m_head.size() + m_tailLength; }
    bool isEmpty() const { return length() == 0; }
    QString text() const;

private:
    // One log after trimming, anonymising and collapsing, as pieces of text; source and the
    // settings say what it was made from.
    struct LogPart
    {
        QString source;
        bool hide = false;
        QString accountName, homeFolder;
        QList<QStringView> pieces;
        bool valid = false;
    };

    static bool refresh(LogPart &part, const QString &source, const ErrorReportInput &in);

    LogPart m_start, m_error;
    bool m_appendStartLog = false, m_appendErrorLog = false;
    QString m_head;
    QList<QStringView> m_tail;
    qsizetype m_tailLength = 0;
    bool m_started = false;
};
