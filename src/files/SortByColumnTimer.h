#pragma once

#include <QObject>

#include <functional>

class QTimer;

namespace nebra {

// TimerSortByColumn: after a column-header click the list sorts itself;
// once 0.05 seconds have passed since the click, the selected items are
// scrolled back into view and the timer stops. The clock gives seconds
// since midnight; a click just before midnight still ends shortly after it.
class SortByColumnTimer : public QObject
{
    Q_OBJECT
public:
    using Clock = std::function<double()>;
    static constexpr double Delay = 0.05;
    static constexpr int TickIntervalMs = 10;

    // The system clock: seconds since local midnight.
    static double secondsSinceMidnight();

    explicit SortByColumnTimer(std::function<void()> showSelection, Clock clock = &secondsSinceMidnight,
                               QObject* parent = nullptr);

    // A header was clicked: note the time and start ticking.
    void Arm();
    bool isArmed() const;
    double sortTimeStamp() const { return m_stamp; }

    // One tick: nothing until the delay has passed, then show the selection and stop.
    void Tick();

private:
    std::function<void()> m_showSelection;
    Clock m_clock;
    QTimer* m_timer;
    double m_stamp = 0;
};

} // namespace nebra
