#pragma once

#include "support/TextSource.h"

#include <QByteArray>
#include <QList>
#include <QMutex>
#include <QString>

#include <atomic>

// A text file of any size, shown and copied without holding it in memory.
//
// One pass over the file (indexStep(), on any thread, as often as wanted until it reports the
// end) decides the installation's text rule (UTF-8 when valid or after a BOM, else
// Windows-1252) and keeps a checkpoint about every block of bytes: where it lies in bytes, in
// characters and in lines. Blocks end behind a line break, or inside a very long line at the
// start of a character, never between the CR and LF of one break. Everything else is read
// back by position (no mapping: a log that Pawnsketch truncates must stay truncatable) and
// decoded a block at a time; a few decoded blocks are kept for painting.
//
// Positions are in UTF-16 characters of the text as it would be decoded whole. The text known
// so far ends at the last checkpoint; generation() changes whenever positions handed out
// before became wrong (the file was cut, or a late byte showed it is no UTF-8).
class PagedText : public TextSource
{
public:
    explicit PagedText(const QString &path, qint64 blockBytes = 32 * 1024);

    enum class Step
    {
        More,
        Done,
        Failed, // no regular file, or it cannot be opened
    };
    // Reads on from where the pass stopped, at most about maxBytes. Goes on behind the old end
    // when the file grew; starts over when it is shorter than what was read.
    Step indexStep(qint64 maxBytes);
    void cancel() { m_cancelled = true; }
    bool isCancelled() const { return m_cancelled; }

    const QString &path() const { return m_path; }
    QString pathAt(qsizetype) const override { return m_path; }
    quint64 generation() const override;
    bool isIndexed() const override;
    qsizetype length() const override;
    // Lines of the known text: breaks + 1, as a text box counts them.
    qsizetype lineCount() const override;
    qsizetype lineStart(qsizetype line) const override;
    qsizetype longestLine() const override; // in bytes
    // Bytes from the text's start (behind a BOM) to a character position.
    qint64 bytesBefore(qsizetype pos) const override;

    QString slice(qsizetype from, qsizetype to) const override;
    QChar at(qsizetype pos) const override;

private:
    struct Checkpoint
    {
        qint64 byte = 0;
        qint64 chars = 0;
        qint64 line = 0; // breaks before byte
        bool lineStart = true;
    };
    struct Block
    {
        qsizetype index = -1;
        quint64 generation = 0;
        QString text;
        QList<qsizetype> breaks; // positions behind each line break, from the block's start
    };

    qsizetype blockOfChar(qsizetype pos) const;
    const Block &block(qsizetype index) const;
    void restart();
    qsizetype close(qsizetype from, qsizetype to, bool lineStart);

    const QString m_path;
    const qint64 m_blockBytes;
    std::atomic<bool> m_cancelled{false};

    mutable QMutex m_mutex;
    QList<Checkpoint> m_points; // the last one ends the known text
    bool m_utf8 = true, m_bom = false, m_done = false;
    quint64 m_generation = 0;
    qint64 m_widest = 0;
    mutable QList<Block> m_blocks; // most recently used last

    // The pass's own state, touched only by indexStep().
    QByteArray m_open;    // bytes behind the last checkpoint
    qint64 m_scanned = 0; // of m_open
    qint64 m_openBreaks = 0, m_lineBytes = 0, m_scanWidest = 0;
    bool m_afterCr = false, m_started = false;
};
