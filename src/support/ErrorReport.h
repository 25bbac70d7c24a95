#pragma once

#include <QList>
#include <QString>
#include <QStringView>

#include <memory>

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
inline constexpr QStringView kReportStartLogHeader = u"---------------[startlog.txt]";
inline constexpr QStringView kReportErrorLogHeader = u"---------------[errorlog.txt]";

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

class PersonalDataFilter;

// A log's section of the report made a piece at a time, the same text as BuildErrorReport makes
// of the whole log: runs of CR LF collapsed to one, none leading, personal data hidden. The
// caller trims blanks at both ends of the whole log. Between two pieces the filter holds only
// a little of the line it is in, so a reader can save its state and make the same text again
// from there.
class LogSectionFilter
{
public:
    struct State
    {
        QString line;                // of the line not given out yet; its first character is given
        bool lineHasContext = false; // out already and only shows what came before
        bool pendingCr = false;      // a CR waiting for the character that says what it is
        bool afterCrLf = true;       // a CR LF now would join a run (or lead the section)
        bool gave = false;           // anything given out
        bool lastCrLf = false;       // what was given out ends with CR LF
    };

    // An empty account and a root home folder hide nothing.
    LogSectionFilter(bool hidePersonalData, const QString &accountName, const QString &homeFolder);
    ~LogSectionFilter();

    void feed(QStringView text, QString &out);
    void finish(QString &out);

    const State &state() const { return m_state; }
    void setState(const State &state) { m_state = state; }
    void reset() { m_state = State(); }
    // Characters fed but not given out yet in a state.
    static qsizetype heldBack(const State &state)
    {
        return state.line.size() - (state.lineHasContext ? 1 : 0) + (state.pendingCr ? 1 : 0);
    }

private:
    void flushLine(QString &out, bool whole);
    void give(QStringView text, QString &out);

    std::shared_ptr<const PersonalDataFilter> m_filter;
    State m_state;
};

// The head of the report while the user types: the user line, the error message and the
// additional text. The logs' sections behind it (ReportText) do not depend on them, so a
// keystroke costs only the head, whatever the logs' size.
class ErrorReportHead
{
public:
    // True when the head is another than before.
    bool setInput(const ErrorReportInput &in);
    const QString &text() const { return m_head; }

private:
    QString m_head;
    bool m_started = false;
};
