#include "WildcardFilter.h"

#include <QTest>

using namespace nebra;

class WildcardFilterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void matches_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("expected");
        QTest::newRow("extension") << "*.apr"
                                   << "Protocol.apr" << true;
        QTest::newRow("extension in capitals") << "*.apr"
                                               << "PROTOCOL.APR" << true;
        QTest::newRow("other extension") << "*.apr"
                                         << "Protocol.mht" << false;
        QTest::newRow("extension not last") << "*.apr"
                                            << "Protocol.apr.bak" << false;
        QTest::newRow("name only the extension") << "*.apr"
                                                 << ".apr" << true;
        QTest::newRow("all: no extension") << "*.*"
                                           << "README" << true;
        QTest::newRow("all: hidden") << "*.*"
                                     << ".hidden" << true;
        QTest::newRow("empty filter") << ""
                                      << "anything" << true;
        QTest::newRow("star") << "*"
                              << "a.b.c" << true;
        QTest::newRow("list") << "*.daq; *.TXT"
                              << "notes.txt" << true;
        QTest::newRow("list, neither") << "*.daq;*.txt"
                                       << "notes.md" << false;
        QTest::newRow("dot star: bare name") << "Plate.*"
                                             << "Plate" << true;
        QTest::newRow("dot star: with extension") << "Plate.*"
                                                  << "Plate.mlo" << true;
        QTest::newRow("dot star: longer name") << "Plate.*"
                                               << "Plates" << false;
        QTest::newRow("question mark: one character") << "?.apr" << QString::fromUtf8("é.apr") << true;
        QTest::newRow("question mark: not two") << "??.apr" << QString::fromUtf8("é.apr") << false;
        QTest::newRow("non-ASCII literal")
            << QString::fromUtf8("*ä*") << QString::fromUtf8("Mäuse.apr") << true;
        QTest::newRow("blank and newline") << "*.apr"
                                           << "two words\nline.apr" << true;
    }

    void matches()
    {
        QFETCH(QString, filter);
        QFETCH(QString, name);
        QFETCH(bool, expected);
        QCOMPARE(WildcardFilter(filter).matches(name), expected);
    }

    void manyStarsStayLinear()
    {
        // A backtracking matcher would take forever on this.
        const WildcardFilter filter(QStringLiteral("*a*a*a*a*a*a*a*a*b"));
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!filter.matches(QString(5000, QLatin1Char('a'))));
        QVERIFY(timer.elapsed() < 1000);
    }
};

QTEST_GUILESS_MAIN(WildcardFilterTest)
#include "WildcardFilterTest.moc"
