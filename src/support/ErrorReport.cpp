#include "support/ErrorReport.h"

#include <QStringMatcher>

#include <algorithm>
#include <vector>

namespace {

constexpr QStringView kCrLf = u"\r\n";
constexpr QStringView kHeaderErrorMessage = u"---------------[Fehlermeldung / error report]";
constexpr QStringView kHeaderAdditionalText = u"---------------[Zusatext / additional text]";

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

} // namespace

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

    struct Range
    {
        qsizetype stop = 0;
        bool replaced = false;
    };
    // Replaces the matches that start in [from, limit), the character before from being
    // context only, and hands text[from, stop) to take, the placeholders in place of the
    // personal data. stop is limit, or the end of the last match when that lies beyond it: a
    // match starting later needs text that may not have come yet.
    template <typename Take>
    Range applyRange(QStringView text, qsizetype from, qsizetype limit, Take take) const
    {
        std::vector<qsizetype> next;
        for (const Needle &needle : m_needles)
            next.push_back(needle.matcher.indexIn(text, from));
        Range range;
        qsizetype copied = from;
        for (;;) {
            qsizetype found = -1;
            for (qsizetype i = 0; i < qsizetype(next.size()); ++i) {
                if (next[i] >= 0 && next[i] < limit &&
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
            range.replaced = true;
            if (pos > copied)
                take(text.sliced(copied, pos - copied));
            take(m_needles[found].placeholder);
            copied = end;
            for (qsizetype i = 0; i < qsizetype(next.size()); ++i) {
                if (next[i] >= 0 && next[i] < end)
                    next[i] = m_needles[i].matcher.indexIn(text, end);
            }
        }
        range.stop = qMax(limit, copied);
        if (copied < range.stop)
            take(text.sliced(copied, range.stop - copied));
        return range;
    }

    bool isEmpty() const { return m_needles.empty(); }
    qsizetype longestNeedle() const
    {
        qsizetype longest = 0;
        for (const Needle &needle : m_needles)
            longest = qMax(longest, needle.length);
        return longest;
    }

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

namespace {

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
    return PersonalDataFilter(accountName, homeFolder).applyRange(text, 0, text.size(), append).replaced
               ? out
               : toString(text, whole);
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
        appendSection(report, kReportStartLogHeader, sectionText(trimBlanks(in.startLog), in.startLog, in));
    if (in.appendErrorLog)
        appendSection(report, kReportErrorLogHeader, sectionText(trimBlanks(in.errorLog), in.errorLog, in));
    if (report.isEmpty())
        return {};
    return withUserLine(in, CollapseRepeats(report, kCrLf.toString()));
}

LogSectionFilter::LogSectionFilter(bool hidePersonalData, const QString &accountName,
                                   const QString &homeFolder)
{
    if (hidePersonalData) {
        auto filter = std::make_shared<PersonalDataFilter>(accountName, homeFolder);
        if (!filter->isEmpty())
            m_filter = std::move(filter);
    }
}

LogSectionFilter::~LogSectionFilter() = default;

void LogSectionFilter::give(QStringView text, QString &out)
{
    if (text.isEmpty())
        return;
    out += text;
    m_state.gave = true;
    m_state.lastCrLf = text.endsWith(kCrLf);
    m_state.afterCrLf = m_state.lastCrLf;
}

// A line is filtered whole when it is complete; a very long one in windows, keeping back what a
// match could still need.
void LogSectionFilter::flushLine(QString &out, bool whole)
{
    QString &line = m_state.line;
    const qsizetype from = m_state.lineHasContext ? 1 : 0;
    if (!m_filter || whole) {
        if (line.size() > from) {
            const auto take = [this, &out](QStringView piece) { give(piece, out); };
            if (m_filter)
                m_filter->applyRange(line, from, line.size(), take);
            else
                give(QStringView(line).sliced(from), out);
        }
        line.clear();
        m_state.lineHasContext = false;
        return;
    }
    const qsizetype limit = line.size() - m_filter->longestNeedle() - 1;
    if (limit <= from)
        return;
    const auto take = [this, &out](QStringView piece) { give(piece, out); };
    const qsizetype stop = m_filter->applyRange(line, from, limit, take).stop;
    line.remove(0, stop - 1);
    m_state.lineHasContext = true;
}

void LogSectionFilter::feed(QStringView text, QString &out)
{
    // Long enough that lines are filtered whole, short enough that a saved state stays small.
    constexpr qsizetype kWindow = 16 * 1024;
    qsizetype i = 0;
    while (i < text.size()) {
        const QChar c = text[i];
        if (m_state.pendingCr) {
            m_state.pendingCr = false;
            flushLine(out, true);
            if (c == u'\n') {
                if (!m_state.afterCrLf)
                    give(kCrLf, out);
                ++i;
            } else {
                give(u"\r", out);
            }
            continue;
        }
        if (c == u'\r') {
            m_state.pendingCr = true;
            ++i;
        } else if (c == u'\n') {
            flushLine(out, true);
            give(u"\n", out);
            ++i;
        } else {
            qsizetype j = i + 1;
            while (j < text.size() && text[j] != u'\r' && text[j] != u'\n')
                ++j;
            m_state.line += text.sliced(i, j - i);
            if (m_state.line.size() > kWindow)
                flushLine(out, !m_filter);
            i = j;
        }
    }
}

void LogSectionFilter::finish(QString &out)
{
    flushLine(out, true);
    if (m_state.pendingCr) {
        m_state.pendingCr = false;
        give(u"\r", out);
    }
}

bool ErrorReportHead::setInput(const ErrorReportInput &in)
{
    QString head;
    QString sections = userSections(in);
    const bool hasTail = in.appendStartLog || in.appendErrorLog;
    if (!sections.isEmpty() || hasTail) {
        if (!sections.isEmpty() && hasTail)
            sections += kCrLf;
        head = withUserLine(in, collapse(sections, kCrLf));
    }
    const bool changed = !m_started || head != m_head;
    m_head = head;
    m_started = true;
    return changed;
}
