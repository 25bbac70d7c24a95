#include "support/SharedTextView.h"

#include "localisation/LanguageState.h"
#include "support/ClipboardAction.h"
#include "support/LogFiles.h"
#include "support/PagedText.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QtMath>

#include <algorithm>
#include <climits>

namespace {
// Space around the text, as a text edit leaves it.
constexpr int kMargin = 4;
constexpr int kTabWidth = 8;
// Longer lines are drawn without looking at what lies left of the window, so tabs in them
// count one column.
constexpr qsizetype kTabbedLine = 4096;
// Finding line breaks holds up the window for at most this long per turn.
constexpr qint64 kScanBudgetNs = 4'000'000;

bool isWordChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_';
}

QChar shown(QChar c)
{
    return c.unicode() < 0x20 ? QChar(u' ') : c;
}

// Line starts behind each break of text, CR LF counting once; longest line in widest.
void findBreaks(QStringView text, QList<qsizetype> &starts, qsizetype &widest)
{
    qsizetype lineBegin = 0;
    bool afterCr = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c == u'\n' && afterCr) {
            starts.back() = lineBegin = i + 1;
        } else if (c == u'\n' || c == u'\r') {
            widest = qMax(widest, i - lineBegin);
            starts.append(lineBegin = i + 1);
        }
        afterCr = c == u'\r';
    }
    widest = qMax(widest, text.size() - lineBegin);
}
} // namespace

// What a screen reader reads: the box's text by position, never the whole of a log unless it
// asks for it. Offsets are those of the text the box shows.
class SharedTextAccessible : public QAccessibleWidget, public QAccessibleTextInterface
{
public:
    explicit SharedTextAccessible(SharedTextView *view)
        : QAccessibleWidget(view, QAccessible::EditableText), m_view(view)
    {}

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::TextInterface)
            return static_cast<QAccessibleTextInterface *>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QAccessible::State state() const override
    {
        QAccessible::State s = QAccessibleWidget::state();
        s.readOnly = true;
        s.multiLine = true;
        s.selectableText = true;
        s.focusable = true;
        return s;
    }

    QString text(QAccessible::Text t) const override
    {
        // A short text is also the value, as in a text edit; a log is read through the text
        // interface piece by piece.
        if (t == QAccessible::Value)
            return m_view->length() <= kValueLimit ? m_view->text() : QString();
        return QAccessibleWidget::text(t);
    }

    void selection(int index, int *start, int *end) const override
    {
        *start = *end = 0;
        if (index == 0 && selectionCount() == 1) {
            *start = clamp(qMin(m_view->m_anchor, m_view->m_cursor));
            *end = clamp(qMax(m_view->m_anchor, m_view->m_cursor));
        }
    }
    int selectionCount() const override { return m_view->m_anchor != m_view->m_cursor ? 1 : 0; }
    void addSelection(int start, int end) override { setSelection(0, start, end); }
    void removeSelection(int index) override
    {
        if (index == 0)
            m_view->setSelection(m_view->m_cursor, m_view->m_cursor);
    }
    void setSelection(int index, int start, int end) override
    {
        if (index == 0)
            m_view->setSelection(start, end);
    }
    int cursorPosition() const override { return clamp(m_view->m_cursor); }
    void setCursorPosition(int position) override { m_view->setSelection(position, position); }

    QString text(int start, int end) const override { return m_view->slice(start, end); }
    int characterCount() const override { return clamp(m_view->length()); }

    QRect characterRect(int offset) const override
    {
        const SharedTextView &v = *m_view;
        if (offset < 0 || offset > v.length())
            return {};
        const qsizetype line = v.lineOf(offset);
        const qreal x =
            kMargin + qreal(v.columnOf(line, offset)) * v.m_charWidth - v.horizontalScrollBar()->value();
        const qsizetype y = kMargin + (line - v.verticalScrollBar()->value()) * v.m_lineHeight;
        const QRect local(qRound(x),
                          int(qBound(qsizetype(INT_MIN / 2), qsizetype(y), qsizetype(INT_MAX / 2))),
                          qCeil(v.m_charWidth), v.m_lineHeight);
        return QRect(v.viewport()->mapToGlobal(local.topLeft()), local.size());
    }
    int offsetAtPoint(const QPoint &point) const override
    {
        const QPoint local = m_view->viewport()->mapFromGlobal(point);
        if (!m_view->viewport()->rect().contains(local))
            return -1;
        return clamp(m_view->positionAt(local));
    }
    void scrollToSubstring(int start, int) override
    {
        QScrollBar *vertical = m_view->verticalScrollBar();
        const qsizetype line = m_view->lineOf(start);
        if (line < vertical->value() || line >= vertical->value() + vertical->pageStep())
            vertical->setValue(int(qMin<qsizetype>(line, INT_MAX)));
    }
    QString attributes(int, int *start, int *end) const override
    {
        *start = 0;
        *end = characterCount();
        return {};
    }

    QString textAtOffset(int offset, QAccessible::TextBoundaryType type, int *start, int *end) const override
    {
        const auto [from, to] = segment(offset, type);
        return piece(from, to, start, end);
    }
    QString textBeforeOffset(int offset, QAccessible::TextBoundaryType type, int *start,
                             int *end) const override
    {
        const qsizetype at = segment(offset, type).first;
        if (at <= 0 || type == QAccessible::NoBoundary)
            return piece(0, 0, start, end);
        const auto [from, to] = segment(at - 1, type);
        return piece(from, to, start, end);
    }
    QString textAfterOffset(int offset, QAccessible::TextBoundaryType type, int *start,
                            int *end) const override
    {
        const qsizetype at = segment(offset, type).second;
        if (at >= m_view->length() || type == QAccessible::NoBoundary)
            return piece(m_view->length(), m_view->length(), start, end);
        const auto [from, to] = segment(at, type);
        return piece(from, to, start, end);
    }

private:
    // Texts up to this many characters are also handed out whole as the box's value.
    static constexpr qsizetype kValueLimit = 64 * 1024;
    // A word is looked for this far around the offset: a log may be one line of megabytes.
    static constexpr qsizetype kWordReach = 4096;

    static int clamp(qsizetype value)
    {
        return int(qBound(qsizetype(0), qsizetype(value), qsizetype(INT_MAX)));
    }

    QString piece(qsizetype from, qsizetype to, int *start, int *end) const
    {
        *start = clamp(from);
        *end = clamp(to);
        return m_view->slice(from, to);
    }

    // The stretch of the given kind around offset. Lines hold their line break; a word is a
    // run of letters and digits, and so is a run of anything else on one line.
    std::pair<qsizetype, qsizetype> segment(qsizetype offset, QAccessible::TextBoundaryType type) const
    {
        const SharedTextView &v = *m_view;
        const qsizetype length = v.length();
        offset = qBound(qsizetype(0), qsizetype(offset), qsizetype(length));
        switch (type) {
        case QAccessible::CharBoundary:
            return {offset, qMin(offset + 1, length)};
        case QAccessible::NoBoundary:
            return {0, length};
        case QAccessible::WordBoundary: {
            if (offset == length)
                return {length, length};
            const qsizetype line = v.lineOf(offset);
            const qsizetype lineFrom = qMax(v.lineStart(line), offset - kWordReach);
            const qsizetype lineTo = qMin(v.lineEnd(line), offset + kWordReach);
            if (offset >= lineTo) // the line break
                return {offset, line + 1 < v.lineCount() ? v.lineStart(line + 1) : length};
            const bool word = isWordChar(v.at(offset));
            qsizetype from = offset, to = offset + 1;
            while (from > lineFrom && isWordChar(v.at(from - 1)) == word)
                --from;
            while (to < lineTo && isWordChar(v.at(to)) == word)
                ++to;
            return {from, to};
        }
        default: {
            const qsizetype line = v.lineOf(offset);
            return {v.lineStart(line), line + 1 < v.lineCount() ? v.lineStart(line + 1) : length};
        }
        }
    }

    SharedTextView *m_view;
};

namespace {
QAccessibleInterface *accessibleFactory(const QString &className, QObject *object)
{
    if (className == QLatin1String("SharedTextView") && object && object->isWidgetType())
        return new SharedTextAccessible(static_cast<SharedTextView *>(object));
    return nullptr;
}
} // namespace

SharedTextView::SharedTextView(QWidget *parent) : QAbstractScrollArea(parent)
{
    static const bool registered = [] {
        QAccessible::installFactory(accessibleFactory);
        return true;
    }();
    Q_UNUSED(registered);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setCursor(Qt::IBeamCursor);
    viewport()->setBackgroundRole(QPalette::Base);
    viewport()->setAutoFillBackground(true);
    updateFont();
    setText(QString());
    // Scrolling by hand (wheel, bar, keys) stops following the end.
    connect(verticalScrollBar(), &QScrollBar::actionTriggered, this, [this] { m_followEnd = false; });
}

SharedTextView::~SharedTextView() = default;

void SharedTextView::setText(const QString &text)
{
    setText(QString(), {QStringView(text)}, {text});
}

void SharedTextView::setText(const QString &head, const QList<QStringView> &parts,
                             const QList<QString> &owners)
{
    m_source.reset();
    m_parts.clear();
    m_partStarts.clear();
    m_tailLength = 0;
    for (const QStringView part : parts) {
        if (part.isEmpty())
            continue;
        m_parts.append(part);
        m_partStarts.append(m_tailLength);
        m_tailLength += part.size();
    }
    m_owners = owners;
    m_head = head;
    m_tailStarts.clear();
    m_scanPart = m_scanOffset = m_lineLength = m_tailWidest = 0;
    m_scanAfterCr = false;
    m_anchor = m_cursor = 0;
    indexHead();
    verticalScrollBar()->setValue(0);
    horizontalScrollBar()->setValue(0);
    updateScrollBars();
    viewport()->update();
    if (QAccessible::isActive()) {
        // Handing a screen reader the old and new logs would copy them: it reads what it needs.
        QAccessibleTextUpdateEvent event(this, 0, QString(), QString());
        QAccessible::updateAccessibility(&event);
    }
    if (isIndexing()) {
        m_scanTimer.start(0, this);
    } else {
        m_scanTimer.stop();
        emit indexed();
    }
}

void SharedTextView::setText(const QString &head, std::shared_ptr<const TextSource> tail)
{
    setText(head, {}, {});
    m_source = std::move(tail);
    m_sourceGeneration = m_source ? m_source->generation() : 0;
    updateScrollBars();
    viewport()->update();
    if (isIndexing())
        m_scanTimer.start(50, this);
    else
        emit indexed();
}

bool SharedTextView::isIndexing() const
{
    return m_source ? !m_source->isIndexed() : m_scanPart < m_parts.size();
}

qsizetype SharedTextView::tailLength() const
{
    return m_source ? m_source->length() : m_tailLength;
}

void SharedTextView::setHead(const QString &head)
{
    // A selection behind the head moves with the text; one in the head is gone.
    const qsizetype shift = head.size() - m_head.size();
    if (qMin(m_anchor, m_cursor) >= m_head.size() && m_anchor != m_cursor)
        setSelection(m_anchor + shift, m_cursor + shift);
    else
        setSelection(0, 0);
    if (QAccessible::isActive()) {
        QAccessibleTextUpdateEvent event(this, 0, m_head, head);
        QAccessible::updateAccessibility(&event);
    }
    m_head = head;
    indexHead();
    updateScrollBars();
    viewport()->update();
}

void SharedTextView::indexHead()
{
    m_headStarts = {0};
    m_headWidest = 0;
    findBreaks(m_head, m_headStarts, m_headWidest);
}

void SharedTextView::scanStep()
{
    if (m_source) {
        // The reader's own pass finds the lines; the box follows it, and starts over with
        // it when the file was cut.
        if (m_source->generation() != m_sourceGeneration) {
            m_sourceGeneration = m_source->generation();
            setSelection(0, 0);
        }
        updateScrollBars();
        if (m_followEnd)
            verticalScrollBar()->setValue(verticalScrollBar()->maximum());
        viewport()->update();
        if (!isIndexing()) {
            m_followEnd = false;
            m_scanTimer.stop();
            emit indexed();
        }
        return;
    }
    QElapsedTimer clock;
    clock.start();
    while (isIndexing() && clock.nsecsElapsed() < kScanBudgetNs) {
        const QStringView part = m_parts[m_scanPart];
        const qsizetype base = m_partStarts[m_scanPart];
        const qsizetype end = qMin(part.size(), m_scanOffset + 256 * 1024);
        for (qsizetype i = m_scanOffset; i < end; ++i) {
            const char16_t c = part[i].unicode();
            if (c == u'\n' && m_scanAfterCr) {
                // The CR before it, maybe at the end of the previous part, began the break.
                m_tailStarts.back() = base + i + 1;
                m_lineLength = -1;
            } else if (c == u'\n' || c == u'\r') {
                m_tailWidest = qMax(m_tailWidest, m_lineLength);
                m_tailStarts.append(base + i + 1);
                m_lineLength = -1;
            }
            ++m_lineLength;
            m_scanAfterCr = c == u'\r';
        }
        m_scanOffset = end;
        if (m_scanOffset == part.size()) {
            ++m_scanPart;
            m_scanOffset = 0;
        }
    }
    m_tailWidest = qMax(m_tailWidest, m_lineLength);
    updateScrollBars();
    viewport()->update();
    if (!isIndexing()) {
        m_scanTimer.stop();
        m_tailStarts.squeeze();
        emit indexed();
    }
}

bool SharedTextView::headJoinsTail() const
{
    // A CR closing the head and an LF opening the tail are one line break.
    if (!m_head.endsWith(u'\r'))
        return false;
    return m_source ? m_source->length() > 0 && m_source->at(0) == u'\n'
                    : !m_parts.isEmpty() && m_parts.front().front() == u'\n';
}

qsizetype SharedTextView::lineCount() const
{
    const qsizetype tailBreaks = m_source ? m_source->lineCount() - 1 : m_tailStarts.size();
    const bool join = headJoinsTail() && tailBreaks > 0;
    return m_headStarts.size() + tailBreaks - (join ? 1 : 0);
}

qsizetype SharedTextView::lineStart(qsizetype line) const
{
    const bool join = headJoinsTail();
    const qsizetype headLines = m_headStarts.size();
    if (line < headLines)
        return m_headStarts[line] + (join && line == headLines - 1 ? 1 : 0);
    if (m_source)
        return m_head.size() + m_source->lineStart(line - headLines + 1 + (join ? 1 : 0));
    return m_head.size() + m_tailStarts[line - headLines + (join ? 1 : 0)];
}

qsizetype SharedTextView::lineEnd(qsizetype line) const
{
    const qsizetype start = lineStart(line);
    if (line + 1 < lineCount()) {
        const qsizetype next = lineStart(line + 1);
        const bool crLf = at(next - 1) == u'\n' && next - 2 >= start && at(next - 2) == u'\r';
        return next - (crLf ? 2 : 1);
    }
    // The last line found so far goes as far as the search has come.
    const qsizetype scanned =
        m_source || !isIndexing() ? length() : m_head.size() + m_partStarts[m_scanPart] + m_scanOffset;
    return qMax(start, scanned);
}

qsizetype SharedTextView::lineOf(qsizetype pos) const
{
    qsizetype low = 0, high = lineCount() - 1;
    while (low < high) {
        const qsizetype middle = (low + high + 1) / 2;
        if (lineStart(middle) <= pos)
            low = middle;
        else
            high = middle - 1;
    }
    return low;
}

QChar SharedTextView::at(qsizetype pos) const
{
    if (pos < m_head.size())
        return m_head[pos];
    const qsizetype tail = pos - m_head.size();
    if (m_source)
        return m_source->at(tail);
    const auto it = std::upper_bound(m_partStarts.cbegin(), m_partStarts.cend(), tail) - 1;
    return m_parts[it - m_partStarts.cbegin()][tail - *it];
}

QString SharedTextView::slice(qsizetype from, qsizetype to) const
{
    from = qBound(qsizetype(0), from, length());
    to = qBound(from, to, length());
    QString text;
    text.reserve(to - from);
    if (from < m_head.size())
        text += QStringView(m_head).mid(from, qMin(to, m_head.size()) - from);
    const qsizetype tailFrom = qMax(qsizetype(0), from - m_head.size());
    const qsizetype tailTo = to - m_head.size();
    if (tailTo <= tailFrom)
        return text;
    if (m_source)
        return text + m_source->slice(tailFrom, tailTo);
    qsizetype part =
        std::upper_bound(m_partStarts.cbegin(), m_partStarts.cend(), tailFrom) - m_partStarts.cbegin() - 1;
    for (; part < m_parts.size() && m_partStarts[part] < tailTo; ++part) {
        const qsizetype begin = qMax(tailFrom - m_partStarts[part], qsizetype(0));
        const qsizetype end = qMin(tailTo - m_partStarts[part], m_parts[part].size());
        text += m_parts[part].sliced(begin, end - begin);
    }
    return text;
}

QString SharedTextView::displayText(qsizetype line, qsizetype &firstColumn, qsizetype columns) const
{
    const qsizetype start = lineStart(line);
    const qsizetype length = lineEnd(line) - start;
    QString text;
    if (length > kTabbedLine) {
        firstColumn = qMin(firstColumn, length);
        text = slice(start + firstColumn, start + qMin(length, firstColumn + columns));
        for (QChar &c : text)
            c = shown(c);
        return text;
    }
    const QString raw = slice(start, start + length);
    for (const QChar c : raw) {
        if (c == u'\t')
            text += QString(kTabWidth - text.size() % kTabWidth, u' ');
        else
            text += shown(c);
    }
    return text.mid(firstColumn, columns);
}

qsizetype SharedTextView::columnOf(qsizetype line, qsizetype pos) const
{
    const qsizetype start = lineStart(line);
    if (lineEnd(line) - start > kTabbedLine)
        return pos - start;
    qsizetype column = 0;
    for (qsizetype i = start; i < pos; ++i)
        column = at(i) == u'\t' ? (column / kTabWidth + 1) * kTabWidth : column + 1;
    return column;
}

qsizetype SharedTextView::positionAt(const QPoint &point) const
{
    const int row = point.y() < kMargin ? -1 : (point.y() - kMargin) / m_lineHeight;
    const qsizetype line =
        qBound(qsizetype(0), verticalScrollBar()->value() + qsizetype(row), lineCount() - 1);
    if (point.y() < 0 && line == 0)
        return 0;
    const qsizetype start = lineStart(line);
    const qsizetype end = lineEnd(line);
    if (line == lineCount() - 1 && point.y() >= viewport()->height())
        return end;
    // The character boundary nearest to the point.
    const qsizetype wanted =
        qMax(qsizetype(0), qRound64((point.x() - kMargin + horizontalScrollBar()->value()) / m_charWidth));
    if (end - start > kTabbedLine)
        return start + qMin(wanted, end - start);
    qsizetype column = 0;
    for (qsizetype i = start; i < end; ++i) {
        const qsizetype next = at(i) == u'\t' ? (column / kTabWidth + 1) * kTabWidth : column + 1;
        if (wanted <= (column + next) / 2)
            return i;
        column = next;
    }
    return end;
}

QString SharedTextView::selectedText() const
{
    return slice(qMin(m_anchor, m_cursor), qMax(m_anchor, m_cursor));
}

void SharedTextView::selectAll()
{
    setSelection(0, length());
}

void SharedTextView::copy() const
{
    if (m_anchor == m_cursor)
        return;
    const qsizetype from = qMin(m_anchor, m_cursor), to = qMax(m_anchor, m_cursor);
    if (m_source && (from >= m_head.size() || to - from > kHandoffLimit)) {
        // What is left out of a long selection is older than what is kept: the head goes first.
        const qsizetype head = m_head.size();
        ClipboardAction(1, handoffText(*m_source, qMax(from - head, qsizetype(0)), to - head));
        return;
    }
    if (to - from <= kHandoffLimit) {
        ClipboardAction(1, slice(from, to));
        return;
    }
    const qsizetype kept = to - kHandoffLimit;
    qint64 leftOut = 0;
    for (qsizetype pos = from; pos < kept; pos += 1 << 20)
        leftOut += slice(pos, qMin<qsizetype>(kept, pos + (1 << 20))).toUtf8().size();
    QString line = lngText(QStringLiteral("T19451"), QStringLiteral("[<var1> Bytes am Anfang ausgelassen]"));
    line.replace(QLatin1String("<var1>"), QString::number(leftOut));
    ClipboardAction(1, line + QStringLiteral("\r\n") + slice(kept, to));
}

void SharedTextView::setSelection(qsizetype anchor, qsizetype cursor)
{
    anchor = qBound(qsizetype(0), anchor, length());
    cursor = qBound(qsizetype(0), cursor, length());
    const bool moved = cursor != m_cursor, reselected = anchor != m_anchor || moved;
    m_anchor = anchor;
    m_cursor = cursor;
    viewport()->update();
    if (!QAccessible::isActive())
        return;
    const auto offset = [](qsizetype pos) { return int(qMin<qsizetype>(pos, INT_MAX)); };
    if (moved) {
        QAccessibleTextCursorEvent event(this, offset(m_cursor));
        QAccessible::updateAccessibility(&event);
    }
    if (reselected) {
        QAccessibleTextSelectionEvent event(this, offset(qMin(m_anchor, m_cursor)),
                                            offset(qMax(m_anchor, m_cursor)));
        QAccessible::updateAccessibility(&event);
    }
}

void SharedTextView::updateFont()
{
    // Log lines line up in a fixed-pitch font of the box's size.
    m_font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (font().pointSizeF() > 0)
        m_font.setPointSizeF(font().pointSizeF());
    else
        m_font.setPixelSize(font().pixelSize());
    const QFontMetricsF metrics(m_font);
    m_lineHeight = qMax(1, qCeil(metrics.lineSpacing()));
    m_charWidth = qMax(qreal(1), metrics.horizontalAdvance(u'0'));
    m_ascent = qCeil(metrics.ascent());
    updateScrollBars();
    viewport()->update();
}

void SharedTextView::updateScrollBars()
{
    const QSize size = viewport()->size();
    const int rows = qMax(1, (size.height() - kMargin) / m_lineHeight);
    QScrollBar *vertical = verticalScrollBar();
    vertical->setPageStep(rows);
    vertical->setSingleStep(1);
    vertical->setRange(0, int(qMin<qsizetype>(INT_MAX, qMax<qsizetype>(0, lineCount() - rows))));
    // One cell more for a selected line break.
    const qsizetype widest = qMax(m_headWidest, m_source ? m_source->longestLine() : m_tailWidest);
    const qint64 width = qCeil(qreal(widest + 1) * m_charWidth) + 2 * kMargin;
    QScrollBar *horizontal = horizontalScrollBar();
    horizontal->setPageStep(size.width());
    horizontal->setSingleStep(qCeil(m_charWidth * 2));
    horizontal->setRange(0, int(qBound(qint64(0), width - size.width(), qint64(INT_MAX / 2))));
}

void SharedTextView::paintEvent(QPaintEvent *)
{
    QPainter painter(viewport());
    painter.setFont(m_font);
    const QPalette::ColorGroup group = !isEnabled()       ? QPalette::Disabled
                                       : isActiveWindow() ? QPalette::Active
                                                          : QPalette::Inactive;
    const QPalette &colours = palette();
    const int scrolledX = horizontalScrollBar()->value();
    const qsizetype first = verticalScrollBar()->value();
    const qsizetype rows = viewport()->height() / m_lineHeight + 2;
    const qsizetype columns = qsizetype(viewport()->width() / m_charWidth) + 3;
    const qsizetype leftColumn = qsizetype(qMax(0, scrolledX - kMargin) / m_charWidth);
    const qsizetype selectionFrom = qMin(m_anchor, m_cursor), selectionTo = qMax(m_anchor, m_cursor);
    const qsizetype last = qMin(lineCount(), first + rows);
    for (qsizetype line = first; line < last; ++line) {
        const int top = kMargin + int(line - first) * m_lineHeight;
        qsizetype column = leftColumn;
        const QString text = displayText(line, column, columns);
        const qreal x = kMargin + qreal(column) * m_charWidth - scrolledX;
        painter.setPen(colours.color(group, QPalette::Text));
        painter.drawText(QPointF(x, top + m_ascent), text);

        const qsizetype start = lineStart(line), end = lineEnd(line);
        const bool breakSelected = selectionFrom <= end && selectionTo > end;
        const qsizetype from = qMax(selectionFrom, start), to = qMin(selectionTo, end);
        if (from >= to && !breakSelected)
            continue;
        const qsizetype fromColumn = from < to ? columnOf(line, from) : columnOf(line, end);
        const qsizetype toColumn = (from < to ? columnOf(line, to) : fromColumn) + (breakSelected ? 1 : 0);
        const QRectF area(kMargin + qreal(fromColumn) * m_charWidth - scrolledX, top,
                          qreal(toColumn - fromColumn) * m_charWidth, m_lineHeight);
        painter.fillRect(area, colours.color(group, QPalette::Highlight));
        painter.save();
        painter.setClipRect(area);
        painter.setPen(colours.color(group, QPalette::HighlightedText));
        painter.drawText(QPointF(x, top + m_ascent), text);
        painter.restore();
    }
}

void SharedTextView::scrollContentsBy(int, int)
{
    viewport()->update();
}

void SharedTextView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBars();
}

void SharedTextView::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateFont();
    else if (event->type() == QEvent::PaletteChange || event->type() == QEvent::EnabledChange ||
             event->type() == QEvent::ActivationChange)
        viewport()->update();
}

bool SharedTextView::event(QEvent *event)
{
    // The box's own keys come before the window's shortcuts.
    if (event->type() == QEvent::ShortcutOverride) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->matches(QKeySequence::Copy) || key->matches(QKeySequence::SelectAll)) {
            event->accept();
            return true;
        }
    }
    return QAbstractScrollArea::event(event);
}

void SharedTextView::keyPressEvent(QKeyEvent *event)
{
    QScrollBar *vertical = verticalScrollBar();
    QScrollBar *horizontal = horizontalScrollBar();
    const bool control = event->modifiers() & Qt::ControlModifier;
    if (event->matches(QKeySequence::Copy)) {
        copy();
    } else if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (event->key() == Qt::Key_Up) {
        vertical->triggerAction(QAbstractSlider::SliderSingleStepSub);
    } else if (event->key() == Qt::Key_Down) {
        vertical->triggerAction(QAbstractSlider::SliderSingleStepAdd);
    } else if (event->key() == Qt::Key_PageUp) {
        vertical->triggerAction(QAbstractSlider::SliderPageStepSub);
    } else if (event->key() == Qt::Key_PageDown) {
        vertical->triggerAction(QAbstractSlider::SliderPageStepAdd);
    } else if (event->key() == Qt::Key_Left) {
        horizontal->triggerAction(QAbstractSlider::SliderSingleStepSub);
    } else if (event->key() == Qt::Key_Right) {
        horizontal->triggerAction(QAbstractSlider::SliderSingleStepAdd);
    } else if (event->key() == Qt::Key_Home) {
        m_followEnd = false;
        horizontal->setValue(0);
        if (control)
            vertical->setValue(0);
    } else if (event->key() == Qt::Key_End) {
        if (control) {
            horizontal->setValue(0);
            vertical->setValue(vertical->maximum());
            // The end of a text still being read moves on: the box follows it to the real end.
            m_followEnd = isIndexing();
        } else {
            horizontal->setValue(horizontal->maximum());
        }
    } else {
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    event->accept();
}

void SharedTextView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QAbstractScrollArea::mousePressEvent(event);
        return;
    }
    setFocus(Qt::MouseFocusReason);
    const qsizetype pos = positionAt(event->position().toPoint());
    setSelection(event->modifiers() & Qt::ShiftModifier ? m_anchor : pos, pos);
    m_dragging = true;
    m_dragPoint = event->position().toPoint();
}

void SharedTextView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging || !(event->buttons() & Qt::LeftButton))
        return;
    m_dragPoint = event->position().toPoint();
    dragTo(m_dragPoint);
    // Held above or below the box, the selection goes on growing.
    if (viewport()->rect().contains(m_dragPoint))
        m_dragTimer.stop();
    else if (!m_dragTimer.isActive())
        m_dragTimer.start(50, this);
}

void SharedTextView::dragTo(const QPoint &point)
{
    const QRect inside = viewport()->rect();
    if (point.y() < inside.top())
        verticalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepSub);
    else if (point.y() > inside.bottom())
        verticalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepAdd);
    if (point.x() < inside.left())
        horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepSub);
    else if (point.x() > inside.right())
        horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepAdd);
    setSelection(m_anchor, positionAt(point));
}

void SharedTextView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_dragging = false;
        m_dragTimer.stop();
    }
    QAbstractScrollArea::mouseReleaseEvent(event);
}

void SharedTextView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || isEmpty())
        return;
    const qsizetype pos = positionAt(event->position().toPoint());
    const qsizetype line = lineOf(pos);
    const qsizetype start = lineStart(line), end = lineEnd(line);
    qsizetype from = pos, to = pos;
    while (from > start && isWordChar(at(from - 1)))
        --from;
    while (to < end && isWordChar(at(to)))
        ++to;
    if (from == to && to < end)
        ++to;
    setSelection(from, to);
}

void SharedTextView::contextMenuEvent(QContextMenuEvent *event)
{
    // The entries a read-only text edit offers, in the words Qt gives them.
    QMenu menu(this);
    QAction *copyAction =
        menu.addAction(QCoreApplication::translate("QWidgetTextControl", "&Copy"), this, [this] { copy(); });
    copyAction->setShortcut(QKeySequence::Copy);
    copyAction->setEnabled(m_anchor != m_cursor);
    menu.addSeparator();
    QAction *allAction = menu.addAction(QCoreApplication::translate("QWidgetTextControl", "Select All"), this,
                                        [this] { selectAll(); });
    allAction->setShortcut(QKeySequence::SelectAll);
    allAction->setEnabled(!isEmpty());
    menu.exec(event->globalPos());
}

void SharedTextView::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
}

void SharedTextView::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

void SharedTextView::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_scanTimer.timerId())
        scanStep();
    else if (event->timerId() == m_dragTimer.timerId())
        dragTo(m_dragPoint);
    else
        QAbstractScrollArea::timerEvent(event);
}
