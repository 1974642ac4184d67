#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

namespace nebra {

// The inactivity time-out of a session, measured on the boot-time clock: one
// that the user's or a network's change of the wall-clock time cannot move,
// and that keeps counting while the computer is suspended (a session left
// over a suspend times out when the computer wakes if the period has passed).
// expired() is raised once when the period passes without reset(); the
// timer then stops until start() is called again. With a warning time set,
// warning() is raised once per idle stretch when no more than that is left.
//
// The timer wakes at least every poll interval to read the clock, so a clock
// supplied for testing that jumps ahead is noticed within one interval. An
// interval of 0 reads the clock at every turn of the event loop (for tests
// that move the clock and then process events once; it keeps a core busy).
class IdleTimer : public QObject
{
    Q_OBJECT
public:
    // Milliseconds since some fixed point; must never go backwards.
    using Clock = std::function<qint64()>;

    // Milliseconds of CLOCK_BOOTTIME.
    static Clock bootClock();

    explicit IdleTimer(Clock clock = {}, int pollIntervalMs = 1000, QObject* parent = nullptr);

    void start(qint64 periodMs);
    // Starts the period again from now; does nothing while stopped.
    void reset();
    void stop();
    // 0: no warning. A warning time as long as the period warns at once.
    void setWarningMs(qint64 warningMs);

    bool isActive() const { return m_active; }
    qint64 periodMs() const { return m_periodMs; }
    qint64 remainingMs() const;

Q_SIGNALS:
    void expired();
    void warning();

private:
    void check();
    void arm();

    Clock m_clock;
    int m_pollIntervalMs;
    QTimer m_timer;
    qint64 m_periodMs = 0;
    qint64 m_startedAt = 0;
    qint64 m_warningMs = 0;
    bool m_warned = false;
    bool m_active = false;
};

} // namespace nebra
