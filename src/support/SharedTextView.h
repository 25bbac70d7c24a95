#pragma once

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QFont>
#include <QList>
#include <QString>
#include <QStringView>

#include <memory>

class TextSource;

// A read-only text box for texts of many megabytes: the logs and the report built from them.
//
// It shows a head followed by parts without copying them: the parts are views into strings
// whose shared copies the box keeps (QString shares its data, so the caller may change or
// drop its own strings), or into constants. Nothing is laid out: the box finds the line
// breaks (CR LF, LF or CR, also across parts) a slice per turn of the event loop and paints
// only the lines in sight, in a fixed-pitch font. The head can be replaced on its own, as
// the report's head is on every keystroke; the parts behind it are not looked at again.
//
// Like a read-only QPlainTextEdit: scrolling by wheel, scroll bars and keys (arrows, Page
// Up/Down, Home/End, Ctrl+Home/End), selection with the mouse (Shift+click extends, a double
// click takes a word), Ctrl+A, and Ctrl+C or the context menu through ClipboardAction. The
// clipboard gets the text's own line breaks, up to 10 million characters; of a longer
// selection it gets the newest part, after a line that says how much was left out.
//
// Screen readers read it through an accessible text interface (registered by the first box
// made) that decodes only what they ask for; they follow its caret and selection.
class SharedTextView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    explicit SharedTextView(QWidget *parent = nullptr);
    ~SharedTextView() override;

    void setText(const QString &text);
    // parts point into owners (or into data that never goes away).
    void setText(const QString &head, const QList<QStringView> &parts, const QList<QString> &owners);
    // A text read by position (a log file, the report's logs), which the box shares behind the
    // head; its pass may still be running.
    void setText(const QString &head, std::shared_ptr<const TextSource> tail);
    void setPagedText(std::shared_ptr<const TextSource> text) { setText(QString(), std::move(text)); }
    // Replaces what the last setText() gave as head; the parts stay as they are.
    void setHead(const QString &head);
    void clear() { setText(QString()); }

    qsizetype length() const { return m_head.size() + tailLength(); }
    bool isEmpty() const { return length() == 0; }
    // The whole text, line breaks as given.
    QString text() const { return slice(0, length()); }
    // Lines whose start is known; all of them once isIndexing() is false.
    qsizetype lineCount() const;
    bool isIndexing() const;
    // A line without its line break.
    QString lineText(qsizetype line) const { return slice(lineStart(line), lineEnd(line)); }

    QString selectedText() const;
    void selectAll();
    void copy() const;

signals:
    // Every line break is known.
    void indexed();

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    friend class SharedTextAccessible;

    qsizetype tailLength() const;
    QChar at(qsizetype pos) const;
    QString slice(qsizetype from, qsizetype to) const;
    qsizetype lineStart(qsizetype line) const;
    qsizetype lineEnd(qsizetype line) const; // before its line break
    qsizetype lineOf(qsizetype pos) const;
    QString displayText(qsizetype line, qsizetype &firstColumn, qsizetype columns) const;
    qsizetype columnOf(qsizetype line, qsizetype pos) const;
    qsizetype positionAt(const QPoint &point) const;
    bool headJoinsTail() const;
    void indexHead();
    void scanStep();
    void updateFont();
    void updateScrollBars();
    void setSelection(qsizetype anchor, qsizetype cursor);
    void dragTo(const QPoint &point);

    QString m_head;
    QList<qsizetype> m_headStarts; // line starts in the head, 0 first
    QList<QString> m_owners;
    QList<QStringView> m_parts;
    QList<qsizetype> m_partStarts; // where each part begins behind the head, then the tail's end
    qsizetype m_tailLength = 0;
    QList<qsizetype> m_tailStarts;              // line starts behind a break in the tail, from its beginning
    std::shared_ptr<const TextSource> m_source; // instead of parts
    quint64 m_sourceGeneration = 0;

    qsizetype m_scanPart = 0, m_scanOffset = 0, m_lineLength = 0;
    bool m_scanAfterCr = false;
    qsizetype m_headWidest = 0, m_tailWidest = 0; // longest lines, in characters
    QBasicTimer m_scanTimer;

    bool m_followEnd = false;
    qsizetype m_anchor = 0, m_cursor = 0;
    bool m_dragging = false;
    QPoint m_dragPoint;
    QBasicTimer m_dragTimer;

    QFont m_font;
    int m_lineHeight = 1, m_ascent = 0;
    qreal m_charWidth = 1; // glyphs advance by fractions of a pixel
};
