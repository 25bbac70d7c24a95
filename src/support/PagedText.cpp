#include "support/PagedText.h"

#include "core/TextFile.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>

namespace {
// Decoded blocks kept for painting and for the accessibility interface: a screen and a bit.
constexpr qsizetype kKeptBlocks = 8;

bool isContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}
} // namespace

PagedText::PagedText(const QString &path, qint64 blockBytes)
    : m_path(path), m_blockBytes(qMax<qint64>(1, blockBytes))
{
    restart();
}

void PagedText::restart()
{
    QMutexLocker lock(&m_mutex);
    m_points = {Checkpoint{}};
    m_utf8 = true;
    m_bom = m_done = false;
    m_widest = 0;
    ++m_generation;
    m_blocks.clear();
    m_open.clear();
    m_scanned = m_openBreaks = m_lineBytes = m_scanWidest = 0;
    m_afterCr = m_started = false;
}

// Ends the block m_open[from, to); its bytes are counted in the rule found so far.
qsizetype PagedText::close(qsizetype from, qsizetype to, bool lineStart)
{
    const QByteArrayView bytes(m_open.constData() + from, to - from);
    qint64 chars = bytes.size();
    bool switched = false;
    if (m_utf8) {
        // A BOM inside the file is a character like any other.
        QStringDecoder utf8(QStringDecoder::Utf8,
                            QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
        chars = QString(utf8.decode(bytes)).size();
        // One invalid byte makes the whole file Windows-1252, unless a BOM said otherwise.
        if (utf8.hasError() && !m_bom) {
            switched = true;
            chars = bytes.size();
        }
    }
    QMutexLocker lock(&m_mutex);
    if (switched) {
        m_utf8 = false;
        for (Checkpoint &point : m_points)
            point.chars = point.byte;
        ++m_generation;
        m_blocks.clear();
    }
    const Checkpoint &last = m_points.back();
    m_points.append(
        Checkpoint{last.byte + bytes.size(), last.chars + chars, last.line + m_openBreaks, lineStart});
    m_widest = qMax(m_widest, m_scanWidest);
    m_openBreaks = 0;
    return to;
}

PagedText::Step PagedText::indexStep(qint64 maxBytes)
{
    // Only a regular file: a FIFO or a device could block the pass for ever.
    const QFileInfo info(m_path);
    QFile file(m_path);
    if (!info.isFile() || !file.open(QIODevice::ReadOnly))
        return Step::Failed;
    const qint64 size = file.size();
    qint64 end;
    {
        QMutexLocker lock(&m_mutex);
        end = m_points.back().byte + m_open.size();
    }
    if (size < end) {
        restart();
        end = 0;
    } else if (m_done) {
        if (size == end)
            return Step::Done;
        // Grown: the last block is read again, as a CR at the old end may have got its LF.
        QMutexLocker lock(&m_mutex);
        m_done = false;
        if (m_points.size() > 1)
            m_points.removeLast();
        m_blocks.clear();
        m_open.clear();
        m_scanned = m_openBreaks = m_lineBytes = 0;
        m_afterCr = false;
        end = m_points.back().byte;
    }
    if (!m_started) {
        const QByteArray head = file.read(3);
        m_started = size >= 3;
        if (head == "\xEF\xBB\xBF") {
            QMutexLocker lock(&m_mutex);
            m_bom = true;
            m_points = {Checkpoint{3, 0, 0, true}};
            end = 3;
        }
    }
    if (!file.seek(end))
        return Step::Failed;
    const QByteArray page = file.read(qBound(qint64(1), qint64(maxBytes), qint64(4 << 20)));
    const bool atEnd = end + page.size() >= size;
    m_open += page;
    qsizetype base = 0;
    const char *data = m_open.constData();
    const qsizetype n = m_open.size();
    // Locals, as the compiler must assume that the bytes may alias the members.
    qsizetype scanned = m_scanned;
    qint64 breaks = m_openBreaks, lineBytes = m_lineBytes, widest = m_scanWidest;
    bool afterCr = m_afterCr;
    const auto closeAt = [&](qsizetype to, bool lineStart) {
        m_openBreaks = breaks;
        m_scanWidest = widest;
        base = close(base, to, lineStart);
        breaks = 0;
    };
    for (qsizetype i = scanned; i < n; ++i) {
        const char c = data[i];
        // A CR is one break with an LF behind it: wait for the next byte unless the file ends.
        if (c == '\r' && i + 1 == n && !atEnd)
            break;
        scanned = i + 1;
        if (c == '\n' && afterCr) {
            afterCr = false;
            if (i + 1 - base >= m_blockBytes)
                closeAt(i + 1, true);
            continue;
        }
        if (c == '\n' || c == '\r') {
            afterCr = c == '\r';
            ++breaks;
            widest = qMax(widest, lineBytes);
            lineBytes = 0;
            const bool lf = afterCr && i + 1 < n && data[i + 1] == '\n';
            if (!lf && i + 1 - base >= m_blockBytes)
                closeAt(i + 1, true);
            continue;
        }
        afterCr = false;
        // A line longer than two blocks is cut at the start of a character.
        if (i - base >= 2 * m_blockBytes && !(m_utf8 && isContinuation(c)))
            closeAt(i, false);
        ++lineBytes;
    }
    m_scanned = scanned;
    m_openBreaks = breaks;
    m_lineBytes = lineBytes;
    m_scanWidest = widest;
    m_afterCr = afterCr;
    m_open.remove(0, base);
    m_scanned -= base;
    if (atEnd && m_scanned == m_open.size()) {
        m_scanWidest = qMax(m_scanWidest, m_lineBytes);
        const bool endsWithBreak = m_open.endsWith('\n') || m_open.endsWith('\r');
        if (!m_open.isEmpty())
            close(0, m_open.size(), endsWithBreak);
        m_open.clear();
        m_scanned = 0;
        QMutexLocker lock(&m_mutex);
        m_widest = qMax(m_widest, m_scanWidest);
        m_done = true;
        return Step::Done;
    }
    return m_cancelled ? Step::Done : Step::More;
}

quint64 PagedText::generation() const
{
    QMutexLocker lock(&m_mutex);
    return m_generation;
}

bool PagedText::isIndexed() const
{
    QMutexLocker lock(&m_mutex);
    return m_done;
}

qsizetype PagedText::length() const
{
    QMutexLocker lock(&m_mutex);
    return m_points.back().chars;
}

qsizetype PagedText::lineCount() const
{
    QMutexLocker lock(&m_mutex);
    return m_points.back().line + 1;
}

qsizetype PagedText::longestLine() const
{
    QMutexLocker lock(&m_mutex);
    return m_widest;
}

qsizetype PagedText::blockOfChar(qsizetype pos) const
{
    // The last block that starts at or before pos; the end of the text belongs to the last.
    const auto it = std::upper_bound(m_points.cbegin(), m_points.cend() - 1, pos,
                                     [](qsizetype p, const Checkpoint &c) { return p < c.chars; });
    return qMax<qsizetype>(0, it - m_points.cbegin() - 1);
}

const PagedText::Block &PagedText::block(qsizetype index) const
{
    for (qsizetype i = m_blocks.size() - 1; i >= 0; --i) {
        if (m_blocks[i].index == index && m_blocks[i].generation == m_generation) {
            if (i != m_blocks.size() - 1)
                m_blocks.move(i, m_blocks.size() - 1);
            return m_blocks.back();
        }
    }
    const Checkpoint &from = m_points[index];
    const Checkpoint &to = m_points[index + 1];
    Block b;
    b.index = index;
    b.generation = m_generation;
    QFile file(m_path);
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly) && file.seek(from.byte))
        bytes = file.read(to.byte - from.byte);
    b.text = decodeInstallationPiece(bytes, m_utf8);
    if (m_utf8 && bytes.startsWith("\xEF\xBB\xBF"))
        b.text.prepend(QChar(0xFEFF)); // the decoder drops a BOM at the start of a piece
    // A file cut behind the pass's back reads as blanks until the pass notices.
    b.text.resize(to.chars - from.chars, u' ');
    for (qsizetype i = 0; i < b.text.size(); ++i) {
        const QChar c = b.text[i];
        if (c == u'\n' || (c == u'\r' && !(i + 1 < b.text.size() && b.text[i + 1] == u'\n')))
            b.breaks.append(i + 1);
    }
    if (m_blocks.size() >= kKeptBlocks)
        m_blocks.removeFirst();
    m_blocks.append(std::move(b));
    return m_blocks.back();
}

qsizetype PagedText::lineStart(qsizetype line) const
{
    QMutexLocker lock(&m_mutex);
    if (line <= 0)
        return 0;
    // The first line that can start in a block: the one behind its checkpoint, or that of the
    // checkpoint itself when it is a line start.
    const auto first = [](const Checkpoint &c) { return c.line + (c.lineStart ? 0 : 1); };
    const auto it = std::upper_bound(m_points.cbegin(), m_points.cend(), line,
                                     [&first](qsizetype l, const Checkpoint &c) { return l < first(c); });
    const qsizetype index = it - m_points.cbegin() - 1;
    const Checkpoint &point = m_points[index];
    if (point.line == line || index + 1 == m_points.size())
        return point.chars;
    const Block &b = block(index);
    const qsizetype nth = line - point.line - 1;
    return point.chars + (nth < b.breaks.size() ? b.breaks[nth] : b.text.size());
}

qint64 PagedText::bytesBefore(qsizetype pos) const
{
    QMutexLocker lock(&m_mutex);
    const qsizetype index = blockOfChar(pos);
    const Checkpoint &point = m_points[index];
    const qint64 base = point.byte - (m_bom ? 3 : 0);
    if (index + 1 == m_points.size() || !m_utf8)
        return base + (pos - point.chars);
    return base + block(index).text.left(pos - point.chars).toUtf8().size();
}

QString PagedText::slice(qsizetype from, qsizetype to) const
{
    QMutexLocker lock(&m_mutex);
    const qsizetype total = m_points.back().chars;
    from = qBound(qsizetype(0), qsizetype(from), qsizetype(total));
    to = qBound(from, to, total);
    QString text;
    text.reserve(to - from);
    for (qsizetype index = blockOfChar(from); from < to; ++index) {
        const qsizetype start = m_points[index].chars;
        const qsizetype end = qMin<qsizetype>(m_points[index + 1].chars, to);
        if (end > from)
            text += QStringView(block(index).text).sliced(from - start, end - from);
        from = qMax(from, end);
    }
    return text;
}

QChar PagedText::at(qsizetype pos) const
{
    QMutexLocker lock(&m_mutex);
    if (pos < 0 || pos >= m_points.back().chars)
        return {};
    const qsizetype index = blockOfChar(pos);
    return block(index).text[pos - m_points[index].chars];
}
