#include "SortByColumnTimer.h"

#include <QTime>
#include <QTimer>

namespace nebra {

namespace {
constexpr double SecondsPerDay = 86400.0;
}

double SortByColumnTimer::secondsSinceMidnight()
{
    return QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
}

SortByColumnTimer::SortByColumnTimer(std::function<void()> showSelection, Clock clock, QObject* parent)
    : QObject(parent), m_showSelection(std::move(showSelection)), m_clock(std::move(clock)),
      m_timer(new QTimer(this))
{
    m_timer->setInterval(TickIntervalMs);
    connect(m_timer, &QTimer::timeout, this, &SortByColumnTimer::Tick);
}

void SortByColumnTimer::Arm()
{
    m_stamp = m_clock();
    m_timer->start();
}

bool SortByColumnTimer::isArmed() const
{
    return m_timer->isActive();
}

void SortByColumnTimer::Tick()
{
    double now = m_clock();
    if (now < m_stamp)
        now += SecondsPerDay; // the clock passed midnight since the click
    if (m_stamp + Delay >= now)
        return;
    m_timer->stop();
    if (m_showSelection)
        m_showSelection();
}

} // namespace nebra
