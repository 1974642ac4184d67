#include "WildcardFilter.h"

#include <QTest>

using namespace nebra;

class WildcardFilterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void matches()
    {
        const auto matches = [](const char* filter, const char* name) {
            return WildcardFilter(QString::fromUtf8(filter)).matches(QString::fromUtf8(name));
        };
        QVERIFY(matches("*.apr", "Protocol.apr"));        // extension
        QVERIFY(matches("*.apr", "PROTOCOL.APR"));        // in capitals
        QVERIFY(!matches("*.apr", "Protocol.apr.bak"));   // not last
        QVERIFY(matches("*.apr", ".apr"));                // the name only the extension
        QVERIFY(matches("*.*", "README"));                // all: no extension
        QVERIFY(matches("", "anything"));                 // empty filter
        QVERIFY(matches("*.daq; *.TXT", "notes.txt"));    // a list
        QVERIFY(matches("Plate.*", "Plate"));             // dot star: bare name
        QVERIFY(!matches("Plate.*", "Plates"));           // dot star: longer name
        QVERIFY(matches("?.apr", "é.apr"));               // question mark: one character
        QVERIFY(!matches("??.apr", "é.apr"));             // not two
        QVERIFY(matches("*ä*", "Mäuse.apr"));             // non-ASCII literal
        QVERIFY(matches("*.apr", "two words\nline.apr")); // blank and newline
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
