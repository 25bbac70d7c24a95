#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QThread>

#include <atomic>
#include <memory>

class PagedText;
class TextSource;

// Pawnsketch's two logs, logfiles\startlog.txt and logfiles\errorlog.txt. They are never
// rotated and can grow large, so they are read off the window's thread.

// Full path of a log: selector 1 the start log, 2 the error log; "" for anything else.
QString logFilePath(int selector);
// What a log box and the report show for a log the paged reader cannot read: "Missing: " and the
// full path when there is no such file, "" for one that is no regular file or cannot be read.
QString logBoxText(const QString &path);

// A mail program takes about this much text.
inline constexpr qsizetype kHandoffLimit = 10'000'000;
// Characters [from, to) of a log as they may leave the program (clipboard, mail): all of them
// up to kHandoffLimit, else the newest kHandoffLimit after one line in the chosen language
// that says how many bytes were left out and names the whole file.
QString handoffText(const TextSource &log, qsizetype from, qsizetype to);

// Reads both logs in a worker thread: reports as soon as they can be shown, while the pass over
// them goes on, and again when it has reached their ends.
class LogFileLoader : public QObject
{
    Q_OBJECT

public:
    explicit LogFileLoader(QObject *parent = nullptr);
    ~LogFileLoader() override;

    // Starts reading (again); a read still running is dropped.
    void start();
    bool isLoaded() const { return m_loaded; }
    // The text for a log the paged reader cannot read (logBoxText); "" until loaded.
    const QString &startLog() const { return m_startLog; }
    const QString &errorLog() const { return m_errorLog; }
    // The logs, of any size, read by position; null for a log that is missing or cannot be
    // read, whose text above says so.
    std::shared_ptr<const PagedText> startPaged() const { return m_startPaged; }
    std::shared_ptr<const PagedText> errorPaged() const { return m_errorPaged; }

signals:
    void loaded();
    void indexed();

private:
    QString m_startLog;
    QString m_errorLog;
    std::shared_ptr<const PagedText> m_startPaged, m_errorPaged;
    bool m_loaded = false;
    quint64 m_generation = 0;
    std::shared_ptr<std::atomic<bool>> m_stop;
    QPointer<QThread> m_worker;
};
