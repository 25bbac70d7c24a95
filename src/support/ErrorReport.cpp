#include "support/ErrorReport.h"

#include <QStringMatcher>

#include <algorithm>
#include <vector>

namespace {

constexpr QStringView kCrLf = u"\r\n";
constexpr QStringView kHeaderErrorMessage = u"---------------[Fehlermeldung / error report]";
constexpr QStringView kHeaderAdditionalText = u"---------------[Zusatext / additional text]";
constexpr QStringView kHeaderStartLog = u"---------------[startlog.txt]";
constexpr QStringView kHeaderErrorLog = u"---------------[errorlog.txt]";

// Only blanks count: the report keeps tabs and line breaks at the ends of a text.
QStringView trimBlanks(QStringView text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] == u' ')
        ++begin;
    while (end > begin && text[end - 1] == u' ')
        --end;
    return text.sliced(begin, end - begin);
}

// The whole of text when the view covers it, so that an untouched log stays shared.
QString toString(QStringView view, const QString &text)
{
    return view.size() == text.size() ? text : view.toString();
}

bool hasBorder(QStringView sep)
{
    for (qsizetype k = 1; k < sep.size(); ++k) {
        if (sep.first(k) == sep.last(k))
            return true;
    }
    return false;
}

// Every run of consecutive seps becomes one sep, in one pass: hands what remains of text to
// take, piece by piece. For a sep that cannot overlap itself (CR LF) that is what repeated
// replacing of sep+sep ends in. False, and nothing handed over, when there is no run.
template <typename Take> bool collapseRuns(QStringView text, QStringView sep, Take take)
{
    QString twice = sep.toString();
    twice += sep;
    qsizetype pos = text.indexOf(twice);
    if (pos < 0)
        return false;
    qsizetype from = 0;
    while (pos >= 0) {
        qsizetype next = pos + sep.size();
        take(text.sliced(from, next - from));
        while (text.sliced(next).startsWith(sep))
            next += sep.size();
        from = next;
        pos = text.indexOf(twice, from);
    }
    if (from < text.size())
        take(text.sliced(from));
    return true;
}

QString collapse(const QString &text, QStringView sep)
{
    QString out;
    const auto append = [&out, &text](QStringView piece) {
        if (out.isEmpty())
            out.reserve(text.size());
        out += piece;
    };
    return collapseRuns(text, sep, append) ? out : text;
}

bool isWordChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_';
}

bool hasLineBreak(const QString &text)
{
    return text.contains(u'\r') || text.contains(u'\n');
}

// Finds the home folder (either separator) and the account name where they are not part of a
// longer word or name on either side, all in one pass, so that a placeholder is never
// searched again (an account called "home"). The needles hold no line break, so a text can
// be filtered line by line or piece by piece with the same result.
class PersonalDataFilter
{
public:
    PersonalDataFilter(const QString &accountName, const QString &homeFolder)
    {
        QString home = homeFolder;
        while (home.endsWith(u'/') || home.endsWith(u'\\'))
            home.chop(1);
        // A drive or the root alone would hide every path, not the user's.
        if ((home.contains(u'/') || home.contains(u'\\')) && !hasLineBreak(home)) {
            add(QString(home).replace(u'/', u'\\'), kHomePlaceholder);
            add(QString(home).replace(u'\\', u'/'), kHomePlaceholder);
        }
        if (!accountName.isEmpty() && !hasLineBreak(accountName))
            add(accountName, kAccountPlaceholder);
    }

    // Hands text to take in pieces, the placeholders in place of the personal data. False, and
    // nothing handed over, when text holds none.
    template <typename Take> bool apply(QStringView text, Take take) const
    {
        std::vector<qsizetype> next;
        for (const Needle &needle : m_needles)
            next.push_back(needle.matcher.indexIn(text, 0));
        bool replaced = false;
        qsizetype copied = 0;
        for (;;) {
            qsizetype found = -1;
            for (qsizetype i = 0; i < qsizetype(next.size()); ++i) {
                if (next[i] >= 0 &&
                    (found < 0 || next[i] < next[found] ||
                     (next[i] == next[found] && m_needles[i].length > m_needles[found].length)))
                    found = i;
            }
            if (found < 0)
                break;
            const qsizetype pos = next[found];
            const qsizetype end = pos + m_needles[found].length;
            const bool wholeStart = pos == 0 || !isWordChar(text[pos - 1]);
            const bool wholeEnd = end == text.size() || !isWordChar(text[end]);
            if (!wholeStart || !wholeEnd) {
                next[found] = m_needles[found].matcher.indexIn(text, pos + 1);
                continue;
            }
            replaced = true;
            if (pos > copied)
                take(text.sliced(copied, pos - copied));
            take(m_needles[found].placeholder);
            copied = end;
            for (qsizetype i = 0; i < qsizetype(next.size()); ++i) {
                if (next[i] >= 0 && next[i] < end)
                    next[i] = m_needles[i].matcher.indexIn(text, end);
            }
        }
        if (replaced && copied < text.size())
            take(text.sliced(copied));
        return replaced;
    }

    bool isEmpty() const { return m_needles.empty(); }

private:
    struct Needle
    {
        QStringMatcher matcher;
        qsizetype length;
        QStringView placeholder;
    };

    void add(const QString &text, QStringView placeholder)
    {
        m_needles.push_back({QStringMatcher(text, Qt::CaseInsensitive), text.size(), placeholder});
    }

    std::vector<Needle> m_needles;
};

// The filtered text, or the text itself (shared) when it holds no personal data.
QString hidePersonal(QStringView text, const QString &whole, const QString &accountName,
                     const QString &homeFolder)
{
    QString out;
    const auto append = [&out, text](QStringView piece) {
        if (out.isEmpty())
            out.reserve(text.size());
        out += piece;
    };
    return PersonalDataFilter(accountName, homeFolder).apply(text, append) ? out : toString(text, whole);
}

QString sectionText(QStringView trimmed, const QString &whole, const ErrorReportInput &in)
{
    return in.hidePersonalData ? hidePersonal(trimmed, whole, in.accountName, in.homeFolder)
                               : toString(trimmed, whole);
}

void appendSection(QString &report, QStringView header, const QString &text)
{
    if (!report.isEmpty())
        report += kCrLf;
    report += header;
    report += kCrLf;
    report += text;
}

// The sections the user writes: the error message and the additional text.
QString userSections(const ErrorReportInput &in)
{
    QString report;
    if (!in.reportError)
        return report;
    const QStringView message = trimBlanks(in.errorMessage);
    if (!message.isEmpty())
        appendSection(report, kHeaderErrorMessage, sectionText(message, in.errorMessage, in));
    const QStringView additional = trimBlanks(in.additionalText);
    if (!additional.isEmpty()) {
        appendSection(report, kHeaderAdditionalText, sectionText(additional, in.additionalText, in));
        report += kCrLf;
    }
    return report;
}

QString withUserLine(const ErrorReportInput &in, const QString &collapsedBody)
{
    QString report;
    report.reserve(in.userLine.size() + 2 * kCrLf.size() + collapsedBody.size());
    report += in.userLine;
    report += kCrLf;
    report += kCrLf;
    report += collapsedBody;
    return report;
}

} // namespace

QString CollapseRepeats(const QString &text, const QString &sep)
{
    if (text.isNull() || sep.isEmpty())
        return text;
    const QChar first = sep.front();
    if (!text.isEmpty() && std::all_of(text.cbegin(), text.cend(), [first](QChar c) { return c == first; }))
        return sep;
    if (!hasBorder(sep))
        return collapse(text, sep);
    const QString twice = sep + sep;
    QString result = text;
    while (result.contains(twice))
        result.replace(twice, sep);
    return result;
}

QString HidePersonalData(const QString &text, const QString &accountName, const QString &homeFolder)
{
    return hidePersonal(text, text, accountName, homeFolder);
}

QString BuildErrorReport(const ErrorReportInput &in)
{
    QString report = userSections(in);
    // Logs of many megabytes: grow once, not step by step.
    report.reserve(report.size() + (in.appendStartLog ? in.startLog.size() : 0) +
                   (in.appendErrorLog ? in.errorLog.size() : 0) + 128);
    if (in.appendStartLog)
        appendSection(report, kHeaderStartLog, sectionText(trimBlanks(in.startLog), in.startLog, in));
    if (in.appendErrorLog)
        appendSection(report, kHeaderErrorLog, sectionText(trimBlanks(in.errorLog), in.errorLog, in));
    if (report.isEmpty())
        return {};
    return withUserLine(in, CollapseRepeats(report, kCrLf.toString()));
}

// No line break runs through a section header, so each log can be collapsed on its own: in
// the report a log's text always follows header + CR LF, and collapsing CR LF + text gives
// CR LF + (the collapsed text without a leading CR LF). The part keeps that as pieces of the
// log's own text.
bool ErrorReportBuilder::refresh(LogPart &part, const QString &source, const ErrorReportInput &in)
{
    const bool sameSource = part.source.constData() == source.constData()
                                ? part.source.size() == source.size()
                                : part.source == source;
    const bool sameSettings =
        part.hide == in.hidePersonalData &&
        (!in.hidePersonalData || (part.accountName == in.accountName && part.homeFolder == in.homeFolder));
    if (part.valid && sameSource && sameSettings)
        return false;
    part.source = source;
    part.hide = in.hidePersonalData;
    part.accountName = in.accountName;
    part.homeFolder = in.homeFolder;
    const QStringView text = trimBlanks(part.source);
    QList<QStringView> collapsed;
    const auto take = [&collapsed](QStringView piece) { collapsed.append(piece); };
    if (!collapseRuns(text, kCrLf, take) && !text.isEmpty())
        collapsed.append(text);
    if (!collapsed.isEmpty() && collapsed.front().startsWith(kCrLf)) {
        collapsed.front() = collapsed.front().sliced(kCrLf.size());
        if (collapsed.front().isEmpty())
            collapsed.removeFirst();
    }
    if (!in.hidePersonalData) {
        part.pieces = collapsed;
    } else {
        // The placeholders are views of constants: the log is not copied for them either.
        part.pieces.clear();
        const PersonalDataFilter filter(in.accountName, in.homeFolder);
        const auto keep = [&part](QStringView piece) { part.pieces.append(piece); };
        for (const QStringView piece : std::as_const(collapsed)) {
            if (!filter.apply(piece, keep))
                part.pieces.append(piece);
        }
    }
    part.valid = true;
    return true;
}

ErrorReportBuilder::Changes ErrorReportBuilder::setInput(const ErrorReportInput &in)
{
    Changes changes;
    changes.previousHeadLength = m_head.size();

    bool tailChanged =
        !m_started || in.appendStartLog != m_appendStartLog || in.appendErrorLog != m_appendErrorLog;
    if (in.appendStartLog && refresh(m_start, in.startLog, in))
        tailChanged = true;
    if (in.appendErrorLog && refresh(m_error, in.errorLog, in))
        tailChanged = true;
    m_appendStartLog = in.appendStartLog;
    m_appendErrorLog = in.appendErrorLog;

    if (tailChanged) {
        m_tail.clear();
        m_tailLength = 0;
        const auto add = [this](QStringView part) {
            if (!part.isEmpty()) {
                m_tail.append(part);
                m_tailLength += part.size();
            }
        };
        if (in.appendStartLog) {
            add(kHeaderStartLog);
            add(kCrLf);
            for (const QStringView piece : std::as_const(m_start.pieces))
                add(piece);
            // The line break before the next header joins a run ending the log. No piece ends
            // between CR and LF, so the last one tells.
            if (in.appendErrorLog && !m_start.pieces.isEmpty() && !m_start.pieces.back().endsWith(kCrLf))
                add(kCrLf);
        }
        if (in.appendErrorLog) {
            add(kHeaderErrorLog);
            add(kCrLf);
            for (const QStringView piece : std::as_const(m_error.pieces))
                add(piece);
        }
    }

    QString head;
    QString sections = userSections(in);
    const bool hasTail = in.appendStartLog || in.appendErrorLog;
    if (!sections.isEmpty() || hasTail) {
        if (!sections.isEmpty() && hasTail)
            sections += kCrLf;
        head = withUserLine(in, collapse(sections, kCrLf));
    }

    changes.tailChanged = tailChanged;
    changes.headChanged = !m_started || head != m_head;
    m_head = head;
    m_started = true;
    return changes;
}

QString ErrorReportBuilder::tailText() const
{
    QString tail;
    tail.reserve(m_tailLength);
    for (const QStringView part : m_tail)
        tail += part;
    return tail;
}

QString ErrorReportBuilder::text() const
{
    QString report;
    report.reserve(length());
    report += m_head;
    for (const QStringView part : m_tail)
        report += part;
    return report;
}
