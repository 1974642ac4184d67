#include "IdleTimer.h"

#include <time.h>

namespace nebra {

IdleTimer::Clock IdleTimer::bootClock()
{
    // The monotonic clock that Qt's timers use stops while the computer is
    // suspended; this one does not.
    return [] {
        timespec now = {};
        clock_gettime(CLOCK_BOOTTIME, &now);
        return qint64(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
    };
}

IdleTimer::IdleTimer(Clock clock, int pollIntervalMs, QObject* parent)
    : QObject(parent), m_clock(clock ? std::move(clock) : bootClock()),
      m_pollIntervalMs(qMax(0, pollIntervalMs))
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::CoarseTimer);
    connect(&m_timer, &QTimer::timeout, this, &IdleTimer::check);
}

void IdleTimer::start(qint64 periodMs)
{
    m_periodMs = qMax<qint64>(1, periodMs);
    m_active = true;
    m_startedAt = m_clock();
    m_warned = false;
    arm();
}

void IdleTimer::reset()
{
    if (!m_active)
        return;
    m_startedAt = m_clock();
    m_warned = false;
    arm();
}

void IdleTimer::setWarningMs(qint64 warningMs)
{
    m_warningMs = qMax<qint64>(0, warningMs);
    if (m_active)
        arm();
}

void IdleTimer::stop()
{
    m_active = false;
    m_timer.stop();
}

qint64 IdleTimer::remainingMs() const
{
    return m_active ? qMax<qint64>(0, m_periodMs - (m_clock() - m_startedAt)) : 0;
}

void IdleTimer::arm()
{
    qint64 wait = qMin<qint64>(remainingMs(), m_pollIntervalMs);
    if (m_warningMs > 0 && !m_warned)
        wait = qMin(wait, qMax<qint64>(0, remainingMs() - m_warningMs));
    m_timer.start(int(wait));
}

void IdleTimer::check()
{
    if (!m_active)
        return;
    const qint64 remaining = remainingMs();
    if (remaining > 0) {
        if (m_warningMs > 0 && !m_warned && remaining <= m_warningMs) {
            m_warned = true;
            Q_EMIT warning();
        }
        if (m_active) // a handler of warning() may have stopped the timer
            arm();
        return;
    }
    stop();
    Q_EMIT expired();
}

} // namespace nebra
