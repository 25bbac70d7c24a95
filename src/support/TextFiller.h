#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringView>

class QPlainTextEdit;

// Appends a long text to a text view in pieces, one piece per turn of the event loop, so
// that a log of many megabytes never holds up the window while it is laid out. Filling
// again, or cancelling, drops what was still to come.
class TextFiller : public QObject
{
    Q_OBJECT

public:
    explicit TextFiller(QPlainTextEdit *view);

    // Appends text at the end of the view's document (the text is shared, not copied).
    void append(const QString &text);
    // Appends parts one after the other. They are not copied: their owner keeps them
    // unchanged until filled() or cancel(). No line break may be split between two parts.
    void appendParts(const QList<QStringView> &parts);
    void cancel();
    bool isFilling() const { return m_part < m_parts.size(); }

signals:
    void filled();

private:
    void step();

    QPointer<QPlainTextEdit> m_view;
    QString m_kept;
    QList<QStringView> m_parts;
    qsizetype m_part = 0;
    qsizetype m_offset = 0;
    quint64 m_generation = 0;
};
