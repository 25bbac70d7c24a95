#include "support/ReportText.h"

#include "localisation/LanguageState.h"

#include <QDir>

#include <QHash>

#include <algorithm>
#include <limits>

namespace {
constexpr QStringView kCrLf = u"\r\n";
// Source characters a step of the pass or of a block's remaking takes.
constexpr qsizetype kPiece = 4096;
// A state keeps the start of a line; beyond this much a point waits for a shorter one.
constexpr qsizetype kMaxSavedLine = 256;
constexpr qsizetype kKeptBlocks = 8;

void findBreaks(QStringView text, QList<qsizetype> &breaks)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            breaks.append(++i + 1);
        else if (text[i] == u'\r' || text[i] == u'\n')
            breaks.append(i + 1);
    }
}

// Blanks only, as the report trims: from the front, or back from the end.
qsizetype skipBlanks(const TextSource &log, qsizetype from, qsizetype to, bool forward)
{
    while (from < to) {
        const qsizetype n = qMin(kPiece, to - from);
        const QString piece = log.slice(forward ? from : to - n, forward ? from + n : to);
        qsizetype i = forward ? 0 : piece.size();
        while (forward ? i < piece.size() && piece[i] == u' ' : i > 0 && piece[i - 1] == u' ')
            i += forward ? 1 : -1;
        if (forward ? i < piece.size() : i > 0)
            return forward ? from + i : to - n + i;
        forward ? from += n : to -= n;
    }
    return forward ? to : from;
}
} // namespace

StringText::StringText(const QString &text, const QString &path) : m_text(text), m_path(path)
{
    m_starts = {0};
    findBreaks(m_text, m_starts);
    for (qsizetype i = 1; i <= m_starts.size(); ++i)
        m_widest = qMax(m_widest, (i < m_starts.size() ? m_starts[i] : m_text.size()) - m_starts[i - 1]);
}

QString StringText::slice(qsizetype from, qsizetype to) const
{
    from = qBound(qsizetype(0), from, m_text.size());
    return m_text.mid(from, qBound(from, to, m_text.size()) - from);
}

qint64 StringText::bytesBefore(qsizetype pos) const
{
    return QStringView(m_text).first(qBound(qsizetype(0), pos, m_text.size())).toUtf8().size();
}

ReportText::ReportText(QList<Section> sections, bool hidePersonalData, const QString &accountName,
                       const QString &homeFolder, qsizetype blockChars)
    : m_hide(hidePersonalData), m_accountName(accountName), m_homeFolder(homeFolder),
      m_blockChars(qMax<qsizetype>(1, blockChars))
{
    for (qsizetype i = 0; i < sections.size(); ++i) {
        if (i > 0)
            m_segments.append({Kind::Separator, {}, {}});
        m_segments.append({Kind::Literal, sections[i].header + kCrLf.toString(), {}});
        m_segments.append(
            {Kind::Log, {}, sections[i].log ? sections[i].log : std::make_shared<StringText>(QString())});
    }
    m_points = {Checkpoint{}};
}

// One piece of the text: a header, a separator, or up to kPiece characters of a log (with the
// log's end when they reach it). False at the end.
bool ReportText::step(Cursor &cursor, LogSectionFilter &filter, QString &out, qsizetype piece) const
{
    if (cursor.segment >= m_segments.size())
        return false;
    const Segment &segment = m_segments[cursor.segment];
    switch (segment.kind) {
    case Kind::Literal:
        out += segment.literal;
        break;
    case Kind::Separator:
        if (filter.state().gave && !filter.state().lastCrLf)
            out += kCrLf;
        break;
    case Kind::Log:
        if (cursor.pos < segment.end) {
            const qsizetype n = qMin(piece, segment.end - cursor.pos);
            filter.feed(segment.log->slice(cursor.pos, cursor.pos + n), out);
            cursor.pos += n;
            if (cursor.pos < segment.end)
                return true;
        }
        filter.finish(out);
        break;
    }
    ++cursor.segment;
    cursor.pos = 0;
    if (cursor.segment < m_segments.size() && m_segments[cursor.segment].kind == Kind::Log) {
        cursor.pos = m_segments[cursor.segment].begin;
        filter.reset();
    }
    return true;
}

ReportText::Step ReportText::indexStep(qsizetype maxChars)
{
    if (!m_started) {
        for (const Segment &segment : std::as_const(m_segments)) {
            if (segment.log && !segment.log->isIndexed())
                return m_cancelled ? Step::Done : Step::More;
        }
        for (Segment &segment : m_segments) {
            if (segment.kind != Kind::Log)
                continue;
            const qsizetype length = segment.log->length();
            segment.begin = skipBlanks(*segment.log, 0, length, true);
            segment.end = skipBlanks(*segment.log, segment.begin, length, false);
        }
        m_filter = std::make_unique<LogSectionFilter>(m_hide, m_accountName, m_homeFolder);
        if (!m_segments.isEmpty() && m_segments.front().kind == Kind::Log)
            m_cursor.pos = m_segments.front().begin;
        m_started = true;
    }
    QString out;
    qsizetype made = 0;
    while (made < maxChars && !m_cancelled) {
        out.clear();
        const qsizetype before = m_cursor.segment;
        if (!step(m_cursor, *m_filter, out)) {
            QMutexLocker lock(&m_mutex);
            if (m_points.back().chars != m_chars) {
                Cursor at = m_cursor;
                at.filter = m_filter->state();
                m_points.append({at, m_chars, m_lines});
            }
            m_widest = qMax(m_widest, m_lineLength);
            m_done = true;
            return Step::Done;
        }
        for (const QChar c : std::as_const(out)) {
            if (c == u'\n' && m_afterCr) {
                m_lineLength = 0;
            } else if (c == u'\n' || c == u'\r') {
                ++m_lines;
                m_widest = qMax(m_widest, m_lineLength);
                m_lineLength = 0;
            } else {
                ++m_lineLength;
            }
            m_afterCr = c == u'\r';
        }
        m_chars += out.size();
        made += out.size() + 1;
        if (before != m_cursor.segment) {
            if (m_segments[before].kind == Kind::Log)
                m_segments[before].outEnd = m_chars;
            if (m_cursor.segment < m_segments.size() && m_segments[m_cursor.segment].kind == Kind::Log)
                m_segments[m_cursor.segment].outBegin = m_chars;
        }
        QMutexLocker lock(&m_mutex);
        if (m_chars - m_points.back().chars >= m_blockChars &&
            m_filter->state().line.size() <= kMaxSavedLine) {
            Cursor at = m_cursor;
            at.filter = m_filter->state();
            m_points.append({at, m_chars, m_lines});
            m_widest = qMax(m_widest, m_lineLength);
        }
    }
    return m_cancelled ? Step::Done : Step::More;
}

bool ReportText::isIndexed() const
{
    QMutexLocker lock(&m_mutex);
    return m_done;
}

qsizetype ReportText::length() const
{
    QMutexLocker lock(&m_mutex);
    return m_points.back().chars;
}

qsizetype ReportText::lineCount() const
{
    QMutexLocker lock(&m_mutex);
    return m_points.back().line + 1;
}

qsizetype ReportText::longestLine() const
{
    QMutexLocker lock(&m_mutex);
    return m_widest;
}

// Call with m_mutex held.
const ReportText::Block &ReportText::block(qsizetype index) const
{
    const auto kept = std::find_if(m_blocks.begin(), m_blocks.end(),
                                   [index](const Block &block) { return block.index == index; });
    if (kept != m_blocks.end()) {
        m_blocks.move(kept - m_blocks.begin(), m_blocks.size() - 1);
        return m_blocks.back();
    }
    Block made;
    made.index = index;
    const Checkpoint &from = m_points[index];
    const Checkpoint &to = m_points[index + 1];
    LogSectionFilter filter(m_hide, m_accountName, m_homeFolder);
    filter.setState(from.at.filter);
    Cursor cursor = from.at;
    made.text.reserve(to.chars - from.chars);
    while ((cursor.segment != to.at.segment || cursor.pos != to.at.pos) && step(cursor, filter, made.text)) {
    }
    // A log changed on disk since the pass cannot make more or less than the pass did.
    made.text.resize(to.chars - from.chars, u' ');
    findBreaks(made.text, made.breaks);
    if (m_blocks.size() >= kKeptBlocks)
        m_blocks.removeFirst();
    m_blocks.append(std::move(made));
    return m_blocks.back();
}

// Call with m_mutex held; pos inside the known text.
qsizetype ReportText::blockOfChar(qsizetype pos) const
{
    const auto it = std::upper_bound(m_points.cbegin(), m_points.cend() - 1, pos,
                                     [](qsizetype p, const Checkpoint &point) { return p < point.chars; });
    return qMax<qsizetype>(0, (it - m_points.cbegin()) - 1);
}

qsizetype ReportText::lineStart(qsizetype line) const
{
    QMutexLocker lock(&m_mutex);
    if (line <= 0)
        return 0;
    if (line > m_points.back().line)
        return m_points.back().chars;
    // The line begins behind break number `line`, in the block whose points enclose it.
    const auto it = std::lower_bound(m_points.cbegin(), m_points.cend(), line,
                                     [](const Checkpoint &point, qsizetype l) { return point.line < l; });
    const qsizetype index = (it - m_points.cbegin()) - 1;
    const Block &b = block(index);
    return m_points[index].chars + b.breaks.value(line - m_points[index].line - 1, b.text.size());
}

QString ReportText::slice(qsizetype from, qsizetype to) const
{
    QMutexLocker lock(&m_mutex);
    from = qBound(qsizetype(0), from, m_points.back().chars);
    to = qBound(from, to, m_points.back().chars);
    QString text;
    text.reserve(to - from);
    for (qsizetype index = blockOfChar(from); from < to; ++index) {
        const qsizetype base = m_points[index].chars;
        const Block &b = block(index);
        const qsizetype end = qMin(to, base + b.text.size());
        text += QStringView(b.text).sliced(from - base, end - from);
        from = end;
    }
    return text;
}

QChar ReportText::at(qsizetype pos) const
{
    QMutexLocker lock(&m_mutex);
    if (pos < 0 || pos >= m_points.back().chars)
        return {};
    const qsizetype index = blockOfChar(pos);
    return block(index).text.at(pos - m_points[index].chars);
}

ReportText::Cursor ReportText::cursorAt(qsizetype pos, qsizetype &outPos) const
{
    QMutexLocker lock(&m_mutex);
    const qsizetype index = blockOfChar(qBound(qsizetype(0), pos, m_points.back().chars));
    const Checkpoint &to = m_points.value(index + 1, m_points.back());
    LogSectionFilter filter(m_hide, m_accountName, m_homeFolder);
    filter.setState(m_points[index].at.filter);
    Cursor cursor = m_points[index].at;
    outPos = m_points[index].chars;
    QString out;
    // Small steps, and the last one that does not go beyond pos.
    while (cursor.segment < to.at.segment || (cursor.segment == to.at.segment && cursor.pos < to.at.pos)) {
        Cursor next = cursor;
        const LogSectionFilter::State before = filter.state();
        out.clear();
        if (!step(next, filter, out, 64) || outPos + out.size() > pos) {
            filter.setState(before);
            break;
        }
        cursor = next;
        outPos += out.size();
    }
    cursor.filter = filter.state();
    return cursor;
}

QString ReportText::pathAt(qsizetype pos) const
{
    qsizetype outPos = 0;
    qsizetype segment = qMin(cursorAt(pos, outPos).segment, m_segments.size() - 1);
    while (segment > 0 && m_segments[segment].kind != Kind::Log)
        --segment;
    return segment >= 0 && m_segments[segment].log ? m_segments[segment].log->pathAt(0) : QString();
}

// Exact where the report shows the log as it is; near enough where names were hidden.
qint64 ReportText::bytesBefore(qsizetype pos) const
{
    qsizetype outPos = 0;
    const Cursor cursor = cursorAt(pos, outPos);
    if (cursor.segment >= m_segments.size() || m_segments[cursor.segment].kind != Kind::Log)
        return 0;
    const Segment &segment = m_segments[cursor.segment];
    const qsizetype from = qMax(segment.begin, cursor.pos - LogSectionFilter::heldBack(cursor.filter));
    return segment.log->bytesBefore(from) + slice(outPos, pos).toUtf8().size();
}

QString ReportText::handoff(qsizetype budget) const
{
    const qsizetype total = length();
    if (total <= budget)
        return slice(0, total);
    // Each log gets an equal share of what the headers leave, a shorter one its whole text and
    // the longer ones what it leaves over.
    QList<qsizetype> logs;
    qsizetype fixed = total;
    for (qsizetype i = 0; i < m_segments.size(); ++i) {
        if (m_segments[i].kind == Kind::Log) {
            logs.append(i);
            fixed -= m_segments[i].outEnd - m_segments[i].outBegin;
        }
    }
    const auto size = [this](qsizetype i) { return m_segments[i].outEnd - m_segments[i].outBegin; };
    QList<qsizetype> bySize = logs;
    std::sort(bySize.begin(), bySize.end(), [&size](qsizetype a, qsizetype b) { return size(a) < size(b); });
    const auto note = [this](qsizetype i, qint64 leftOut) {
        QString line =
            lngText(QStringLiteral("T19450"),
                    QStringLiteral("[<var1> Bytes am Anfang ausgelassen, die ganze Datei: <var2>]"));
        line.replace(QLatin1String("<var1>"), QString::number(leftOut));
        line.replace(QLatin1String("<var2>"), QDir::toNativeSeparators(m_segments[i].log->pathAt(0)));
        return line + kCrLf.toString();
    };
    // Room for the lines that say what was left out, with the longest number.
    qsizetype left = budget - fixed;
    for (const qsizetype i : std::as_const(logs))
        left -= note(i, std::numeric_limits<qint64>::max()).size();
    left = qMax<qsizetype>(0, left);
    QHash<qsizetype, qsizetype> share;
    for (qsizetype k = 0; k < bySize.size(); ++k) {
        share[bySize[k]] = qMin(size(bySize[k]), left / (bySize.size() - k));
        left -= share[bySize[k]];
    }
    QString text;
    qsizetype done = 0;
    for (const qsizetype i : std::as_const(logs)) {
        const Segment &segment = m_segments[i];
        text += slice(done, segment.outBegin);
        done = segment.outEnd;
        if (share[i] == size(i)) {
            text += slice(segment.outBegin, segment.outEnd);
            continue;
        }
        const qsizetype kept = segment.outEnd - share[i];
        text += note(i, bytesBefore(kept)) + slice(kept, segment.outEnd);
    }
    return text + slice(done, total);
}

std::shared_ptr<ReportText> makeReportText(const ErrorReportInput &in,
                                           std::shared_ptr<const TextSource> startLog,
                                           std::shared_ptr<const TextSource> errorLog, qsizetype blockChars)
{
    QList<ReportText::Section> sections;
    if (in.appendStartLog)
        sections.append({kReportStartLogHeader.toString(), std::move(startLog)});
    if (in.appendErrorLog)
        sections.append({kReportErrorLogHeader.toString(), std::move(errorLog)});
    if (sections.isEmpty())
        return nullptr;
    return std::make_shared<ReportText>(sections, in.hidePersonalData, in.accountName, in.homeFolder,
                                        blockChars);
}
