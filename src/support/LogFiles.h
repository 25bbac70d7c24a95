#pragma once

#include <QObject>
#include <QString>

#include <memory>

class PagedText;

// Pawnsketch's two logs, logfiles\startlog.txt and logfiles\errorlog.txt. They are never
// rotated and can grow large, so they are read off the window's thread.

// Full path of a log: selector 1 the start log, 2 the error log; "" for anything else.
QString logFilePath(int selector);
// The log boxes show a log of any size through the paged reader; the report and the
// clipboard still take a log as one text, which costs twice its size in memory, so beyond
// this they get a message instead.
inline constexpr qint64 kLogSizeLimit = 64 * 1000 * 1000;
// The whole file, decoded like every text of the installation; "" for an empty or
// unreadable file, or one beyond kLogSizeLimit. Nothing is cut.
QString LoadFileText(const QString &path);
// What the report gets of a log (and a log box, when the paged reader cannot read it): the file's text,
// "Missing: " and the full path when there is no such file, or "Too large (N MB): " and the full path beyond
// kLogSizeLimit.
QString logBoxText(const QString &path);

// A mail program takes about this much text.
inline constexpr qsizetype kHandoffLimit = 10'000'000;
// Characters [from, to) of a log as they may leave the program (clipboard, mail): all of them
// up to kHandoffLimit, else the newest kHandoffLimit after one line in the chosen language
// that says how many bytes were left out and names the whole file.
QString handoffText(const PagedText &log, qsizetype from, qsizetype to);

// Reads both logs in a worker thread and reports once they are in.
class LogFileLoader : public QObject
{
    Q_OBJECT

public:
    explicit LogFileLoader(QObject *parent = nullptr);
    ~LogFileLoader() override;

    // Starts reading (again); a read still running is dropped.
    void start();
    bool isLoaded() const { return m_loaded; }
    // The texts for the log boxes and the report; "" until loaded.
    const QString &startLog() const { return m_startLog; }
    const QString &errorLog() const { return m_errorLog; }
    // The logs for their boxes, of any size, read by position; null for a log that is missing
    // or cannot be read, whose text above says so.
    std::shared_ptr<const PagedText> startPaged() const { return m_startPaged; }
    std::shared_ptr<const PagedText> errorPaged() const { return m_errorPaged; }

signals:
    void loaded();

private:
    QString m_startLog;
    QString m_errorLog;
    std::shared_ptr<const PagedText> m_startPaged, m_errorPaged;
    bool m_loaded = false;
    quint64 m_generation = 0;
};
