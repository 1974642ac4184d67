#include "SortByColumnTimer.h"

#include <QTest>

using namespace nebra;

class SortByColumnTimerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // At midday and across midnight: the clock is the seconds since midnight.
    void showsTheSelectionOnceTheDelayHasPassed()
    {
        for (const auto& [clicked, early, late] :
             {std::tuple{43200.0, 43200.04, 43200.06}, {86399.98, 0.02, 0.04}}) {
            double now = clicked;
            int shown = 0;
            SortByColumnTimer timer([&shown] { ++shown; }, [&now] { return now; });
            timer.Arm();
            QVERIFY(timer.isArmed());
            QCOMPARE(timer.sortTimeStamp(), clicked);
            now = early; // the stamp plus 0.05 s is still after now
            timer.Tick();
            QVERIFY(shown == 0 && timer.isArmed());
            now = late;
            timer.Tick();
            QVERIFY(shown == 1 && !timer.isArmed());
        }
    }
};

QTEST_GUILESS_MAIN(SortByColumnTimerTest)
#include "SortByColumnTimerTest.moc"
