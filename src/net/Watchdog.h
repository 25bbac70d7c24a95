#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

// Nothing waits forever: an answer's headers must come within the connect timeout, and
// after that at least kStallProgress bytes within each stall timeout. A server that
// trickles a few bytes now and then would keep a plain "no data" timer waiting for ever,
// so only real progress puts the stall off.
class Watchdog : public QObject
{
    Q_OBJECT

public:
    static constexpr qint64 kStallProgress = 1024;

    explicit Watchdog(QObject *parent = nullptr);

    void setTimeouts(int connectMs, int stallMs);
    // True while the delay is ours (a handler still busy, a password prompt, a full buffer):
    // the watch then waits another stall timeout instead of giving up.
    void setBehind(std::function<bool()> behind) { m_behind = std::move(behind); }

    // A request went out, or a redirect is followed: its headers are awaited.
    void awaitAnswer();
    // Data flow, or their headers came.
    void awaitData();
    // Bytes of the answer received so far.
    void progress(qint64 received);
    void stop();

signals:
    void expired();

private:
    void onTimeout();

    QTimer m_timer;
    std::function<bool()> m_behind;
    int m_connectMs = 10000;
    int m_stallMs = 30000;
    qint64 m_stallMark = 0;
};
