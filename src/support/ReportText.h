#pragma once

#include "support/ErrorReport.h"
#include "support/TextSource.h"

#include <QList>
#include <QMutex>
#include <QString>

#include <atomic>
#include <memory>

// A short text held whole, read through the same interface as a log file: a log the paged
// reader cannot read stands in the report as its message.
class StringText : public TextSource
{
public:
    explicit StringText(const QString &text, const QString &path = QString());

    quint64 generation() const override { return 1; }
    bool isIndexed() const override { return true; }
    qsizetype length() const override { return m_text.size(); }
    qsizetype lineCount() const override { return m_starts.size(); }
    qsizetype lineStart(qsizetype line) const override { return m_starts.value(line, m_text.size()); }
    qsizetype longestLine() const override { return m_widest; }
    QString slice(qsizetype from, qsizetype to) const override;
    QChar at(qsizetype pos) const override { return m_text.at(pos); }
    QString pathAt(qsizetype) const override { return m_path; }
    qint64 bytesBefore(qsizetype pos) const override;

private:
    QString m_text, m_path;
    QList<qsizetype> m_starts;
    qsizetype m_widest = 0;
};

// The report's log sections of logs of any size: each log under its header, trimmed, line
// breaks collapsed and personal data hidden, as BuildErrorReport makes them, without a copy of
// a log. One pass (indexStep(), on any thread) makes the text once and keeps, about every
// block of it, the point it came from and the filter's state there; everything else is made
// again from the nearest point when it is painted, selected or copied. The pass waits for the
// logs' own passes.
class ReportText : public TextSource
{
public:
    struct Section
    {
        QString header;
        std::shared_ptr<const TextSource> log;
    };
    ReportText(QList<Section> sections, bool hidePersonalData, const QString &accountName,
               const QString &homeFolder, qsizetype blockChars = 32 * 1024);

    enum class Step
    {
        More, // also while a log is still being read
        Done,
    };
    Step indexStep(qsizetype maxChars);
    void cancel() { m_cancelled = true; }
    bool isCancelled() const { return m_cancelled; }

    quint64 generation() const override { return 1; }
    bool isIndexed() const override;
    qsizetype length() const override;
    qsizetype lineCount() const override;
    qsizetype lineStart(qsizetype line) const override;
    qsizetype longestLine() const override;
    QString slice(qsizetype from, qsizetype to) const override;
    QChar at(qsizetype pos) const override;
    QString pathAt(qsizetype pos) const override;
    qint64 bytesBefore(qsizetype pos) const override;

    // The sections as they may leave the program in at most about budget characters: whole
    // when they fit, else each log gets a share and keeps its newest part, after one line that
    // says how many bytes of the file were left out and names it. Call when indexed.
    QString handoff(qsizetype budget) const;

private:
    enum class Kind
    {
        Literal,
        Log,
        Separator, // a line break, unless the log before ended with one
    };
    struct Segment
    {
        Kind kind;
        QString literal;
        std::shared_ptr<const TextSource> log;
        qsizetype begin = 0, end = 0; // of the log, without blanks at its ends
        qsizetype outBegin = 0, outEnd = 0;
    };
    struct Cursor
    {
        qsizetype segment = 0, pos = 0;
        LogSectionFilter::State filter;
    };
    struct Checkpoint
    {
        Cursor at;
        qint64 chars = 0;
        qint64 line = 0; // breaks before
    };
    struct Block
    {
        qsizetype index = -1;
        QString text;
        QList<qsizetype> breaks; // behind each line break, from the block's start
    };

    bool step(Cursor &cursor, LogSectionFilter &filter, QString &out, qsizetype piece = 4096) const;
    const Block &block(qsizetype index) const;
    qsizetype blockOfChar(qsizetype pos) const;
    // The first step boundary at or behind pos, in the log segment that holds pos.
    Cursor cursorAt(qsizetype pos, qsizetype &outPos) const;

    QList<Segment> m_segments;
    const bool m_hide;
    const QString m_accountName, m_homeFolder;
    const qsizetype m_blockChars;
    std::atomic<bool> m_cancelled{false};

    mutable QMutex m_mutex;
    QList<Checkpoint> m_points; // the last one ends the known text
    bool m_done = false;
    qsizetype m_widest = 0;
    mutable QList<Block> m_blocks; // most recently used last

    // The pass's own state, touched only by indexStep().
    bool m_started = false;
    Cursor m_cursor;
    std::unique_ptr<LogSectionFilter> m_filter;
    qint64 m_chars = 0, m_lines = 0, m_lineLength = 0;
    bool m_afterCr = false;
};

// The logs' part of the report for in's boxes and personal-data settings, over the given logs;
// null when no log is asked for.
std::shared_ptr<ReportText> makeReportText(const ErrorReportInput &in,
                                           std::shared_ptr<const TextSource> startLog,
                                           std::shared_ptr<const TextSource> errorLog,
                                           qsizetype blockChars = 32 * 1024);
