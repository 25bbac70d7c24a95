#pragma once

#include <QChar>
#include <QString>

// A text too large to hold, read by position: a log file, or the report built from the logs.
// Implementations are safe to read from one thread while their pass runs on another; what is
// known grows until isIndexed(), and generation() changes when positions handed out before
// became wrong.
class TextSource
{
public:
    virtual ~TextSource() = default;

    virtual quint64 generation() const = 0;
    virtual bool isIndexed() const = 0;
    virtual qsizetype length() const = 0;
    // Lines of the known text: breaks + 1, as a text box counts them.
    virtual qsizetype lineCount() const = 0;
    virtual qsizetype lineStart(qsizetype line) const = 0;
    virtual qsizetype longestLine() const = 0; // enough for a scroll bar
    virtual QString slice(qsizetype from, qsizetype to) const = 0;
    virtual QChar at(qsizetype pos) const = 0;
    // The file the text at pos comes from ("" for none), and how many of its bytes lie before pos.
    virtual QString pathAt(qsizetype pos) const = 0;
    virtual qint64 bytesBefore(qsizetype pos) const = 0;
};
