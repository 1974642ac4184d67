#include "IdleTimer.h"

#include <QSignalSpy>
#include <QTest>

using namespace nebra;

// The idle timer on a clock the test moves by hand.
class tst_IdleTimer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void expiresWhenThePeriodHasPassed();
    void resetStartsThePeriodAgain();
    void stoppedTimerNeverExpires();

private:
    qint64 m_now = 1000;
    IdleTimer::Clock clock()
    {
        return [this] { return m_now; };
    }
};

void tst_IdleTimer::expiresWhenThePeriodHasPassed()
{
    IdleTimer timer(clock(), 5);
    QSignalSpy expired(&timer, &IdleTimer::expired);
    timer.start(15 * 60 * 1000);
    m_now += 15 * 60 * 1000 - 1;
    QCOMPARE(timer.remainingMs(), 1);
    m_now += 1;
    QVERIFY(expired.wait(5000));
    QCOMPARE(expired.count(), 1);
    QVERIFY(!timer.isActive()); // raised once, then stopped
}

void tst_IdleTimer::resetStartsThePeriodAgain()
{
    IdleTimer timer(clock(), 5);
    QSignalSpy expired(&timer, &IdleTimer::expired);
    timer.start(60000);
    m_now += 59000;
    timer.reset();
    m_now += 59000;
    QCOMPARE(timer.remainingMs(), 1000); // 118 s after the start, but only 59 s after the reset
    QCOMPARE(expired.count(), 0);
    m_now += 1000;
    QVERIFY(expired.wait(5000));
}

void tst_IdleTimer::stoppedTimerNeverExpires()
{
    IdleTimer timer(clock(), 5);
    timer.start(1000);
    timer.stop();
    timer.reset(); // does not start it again
    QVERIFY(!timer.isActive());
    QCOMPARE(timer.remainingMs(), 0);
}

QTEST_GUILESS_MAIN(tst_IdleTimer)
#include "tst_IdleTimer.moc"
