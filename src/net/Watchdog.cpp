#include "net/Watchdog.h"

Watchdog::Watchdog(QObject *parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &Watchdog::onTimeout);
}

void Watchdog::setTimeouts(int connectMs, int stallMs)
{
    m_connectMs = connectMs;
    m_stallMs = stallMs;
}

void Watchdog::awaitAnswer()
{
    m_stallMark = 0;
    m_timer.start(qMax(1, m_connectMs));
}

void Watchdog::awaitData()
{
    m_timer.start(qMax(1, m_stallMs));
}

void Watchdog::progress(qint64 received)
{
    if (received - m_stallMark >= kStallProgress) {
        m_stallMark = received;
        awaitData();
    }
}

void Watchdog::stop()
{
    m_timer.stop();
}

void Watchdog::onTimeout()
{
    if (m_behind && m_behind()) {
        awaitData();
        return;
    }
    emit expired();
}
