#pragma once

#include <QObject>
#include <QString>

// Pawnsketch's two logs, logfiles\startlog.txt and logfiles\errorlog.txt. They are never
// rotated and can grow large, so they are read off the window's thread.

// Full path of a log: selector 1 the start log, 2 the error log; "" for anything else.
QString logFilePath(int selector);
// A log beyond this is no log Pawnsketch wrote but a broken or foreign file: held as text
// it would take twice its size in memory, and no window could show it.
inline constexpr qint64 kLogSizeLimit = 64 * 1000 * 1000;
// The whole file, decoded like every text of the installation; "" for an empty or
// unreadable file, or one beyond kLogSizeLimit. Nothing is cut.
QString LoadFileText(const QString &path);
// What a log box shows: the file's text, "Missing: " and the full path when there is no
// such file, or "Too large (N MB): " and the full path beyond kLogSizeLimit.
QString logBoxText(const QString &path);

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

signals:
    void loaded();

private:
    QString m_startLog;
    QString m_errorLog;
    bool m_loaded = false;
    quint64 m_generation = 0;
};
