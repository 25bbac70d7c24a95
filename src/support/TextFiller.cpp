#include "support/TextFiller.h"

#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTimer>

namespace {
// About a hundredth of a second of layout on a slow machine.
constexpr qsizetype kPiece = 256 * 1024;
} // namespace

TextFiller::TextFiller(QPlainTextEdit *view) : QObject(view), m_view(view) {}

void TextFiller::append(const QString &text)
{
    cancel();
    m_kept = text;
    appendParts({QStringView(m_kept)});
}

void TextFiller::appendParts(const QList<QStringView> &parts)
{
    const QString kept = m_kept; // append() hands its own string in
    cancel();
    m_kept = kept;
    m_parts = parts;
    step();
}

void TextFiller::cancel()
{
    ++m_generation;
    m_parts.clear();
    m_kept.clear();
    m_part = m_offset = 0;
}

void TextFiller::step()
{
    if (!m_view)
        return;
    // Whole parts while they are small, a long one up to a line feed near the piece size,
    // so that no CR LF is torn into two line breaks.
    QString piece;
    while (isFilling() && piece.size() < kPiece) {
        const QStringView part = m_parts[m_part];
        qsizetype end = qMin(part.size(), m_offset + kPiece - piece.size());
        if (end < part.size()) {
            const qsizetype lineFeed = part.lastIndexOf(u'\n', end - 1);
            if (lineFeed >= m_offset) {
                end = lineFeed + 1;
            } else if (!piece.isEmpty()) {
                break; // the rest of this line goes with the next piece
            } else {
                const qsizetype next = part.indexOf(u'\n', end);
                end = next < 0 ? part.size() : next + 1;
            }
        }
        piece += part.mid(m_offset, end - m_offset);
        m_offset = end;
        if (m_offset == part.size()) {
            ++m_part;
            m_offset = 0;
        }
    }
    QTextCursor cursor(m_view->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(piece);
    if (!isFilling()) {
        cancel();
        emit filled();
        return;
    }
    const quint64 generation = m_generation;
    QTimer::singleShot(0, this, [this, generation] {
        if (generation == m_generation)
            step();
    });
}
