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
        auto row = [](const char* tag, const char* filter, const char* name, bool expected) {
            // clang-format off
            QTest::newRow(tag) << QString::fromUtf8(filter) << QString::fromUtf8(name) << expected;
            // clang-format on
        };
        row("extension", "*.apr", "Protocol.apr", true);
        row("extension in capitals", "*.apr", "PROTOCOL.APR", true);
        row("extension not last", "*.apr", "Protocol.apr.bak", false);
        row("name only the extension", "*.apr", ".apr", true);
        row("all: no extension", "*.*", "README", true);
        row("empty filter", "", "anything", true);
        row("list", "*.daq; *.TXT", "notes.txt", true);
        row("dot star: bare name", "Plate.*", "Plate", true);
        row("dot star: longer name", "Plate.*", "Plates", false);
        row("question mark: one character", "?.apr", "é.apr", true);
        row("question mark: not two", "??.apr", "é.apr", false);
        row("non-ASCII literal", "*ä*", "Mäuse.apr", true);
        row("blank and newline", "*.apr", "two words\nline.apr", true);
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
