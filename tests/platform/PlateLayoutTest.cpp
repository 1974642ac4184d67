#include "PlateLayout.h"

#include <QDir>
#include <QtTest>

using namespace nebra;

class PlateLayoutTest : public QObject
{
    Q_OBJECT

private:
    static QByteArray layoutText(int rows, int columns, const QByteArray& wells)
    {
        return "[Layout]\nName=Test\nRows=" + QByteArray::number(rows) +
               "\nColumns=" + QByteArray::number(columns) + "\n[Wells]\n" + wells;
    }

private Q_SLOTS:
    void readsTheExampleLayouts()
    {
        const QDir folder(qEnvironmentVariable("NEBRA_TEST_DATA_DIR") +
                          QStringLiteral("/Example Assays/Microplate Layouts"));
        const QStringList files = folder.entryList({QStringLiteral("*.mlo")}, QDir::Files);
        QCOMPARE(files.size(), 3);
        for (const QString& name : files) {
            QString error;
            const std::optional<PlateLayout> layout = PlateLayout::Load(folder.filePath(name), error);
            QVERIFY2(layout, qPrintable(name + ": " + error));
            QCOMPARE(layout->name() + QStringLiteral(".mlo"), name);
        }
        QString error;
        const std::optional<PlateLayout> elisa =
            PlateLayout::Load(folder.filePath(QStringLiteral("ELISA 96 Standard Curve.mlo")), error);
        QCOMPARE(elisa->wellCount(), 96);
        QCOMPARE(elisa->well(4, 2).role, WellRole::Control); // E3
        QCOMPARE(elisa->well(4, 2).label, QStringLiteral("NC"));
        const std::optional<PlateLayout> bca =
            PlateLayout::Load(folder.filePath(QStringLiteral("BCA Protein 96.mlo")), error);
        QCOMPARE(bca->well(7, 11).role, WellRole::Empty); // H12 is not listed
    }

    void supportsEveryPlateFrom6To1536Wells_data()
    {
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("columns");
        QTest::addColumn<QString>("lastWell");
        QTest::newRow("6") << 2 << 3 << "B3";
        QTest::newRow("12") << 3 << 4 << "C4";
        QTest::newRow("24") << 4 << 6 << "D6";
        QTest::newRow("48") << 6 << 8 << "F8";
        QTest::newRow("96") << 8 << 12 << "H12";
        QTest::newRow("384") << 16 << 24 << "P24";
        QTest::newRow("1536") << 32 << 48 << "AF48";
    }

    void supportsEveryPlateFrom6To1536Wells()
    {
        QFETCH(int, rows);
        QFETCH(int, columns);
        QFETCH(QString, lastWell);
        QString error;
        const auto layout =
            PlateLayout::Parse(layoutText(rows, columns, lastWell.toUtf8() + "=Sample, last one\r\n"), error);
        QVERIFY2(layout, qPrintable(error));
        QCOMPARE(layout->wellCount(), rows * columns);
        QCOMPARE(PlateLayout::wellName(rows - 1, columns - 1), lastWell);
        QCOMPARE(layout->well(rows - 1, columns - 1).role, WellRole::Sample);
        QCOMPARE(layout->well(rows - 1, columns - 1).label, QStringLiteral("last one"));
        QCOMPARE(layout->roleCounts()[int(WellRole::Empty)], rows * columns - 1);
    }

    void malformedLayoutsAreRefusedWithTheReason_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("reason");
        QTest::newRow("empty file") << QByteArray() << "no [Layout] section";
        QTest::newRow("no rows") << QByteArray("[Layout]\nColumns=12\n") << "gives no rows";
        QTest::newRow("rows not a number") << QByteArray("[Layout]\nRows=eight\nColumns=12\n") << "Line 2";
        QTest::newRow("unsupported plate") << layoutText(8, 13, "") << "8 x 13";
        QTest::newRow("too large a plate") << layoutText(64, 96, "") << "not supported";
        QTest::newRow("unknown role") << layoutText(8, 12, "A1=reference,R\n") << "Line 6: \"reference\"";
        QTest::newRow("no role") << layoutText(8, 12, "A1=,label\n") << "Line 6";
        QTest::newRow("well off the plate") << layoutText(8, 12, "I1=sample\n") << "\"I1\" is not a well";
        QTest::newRow("column 0") << layoutText(8, 12, "A0=sample\n") << "\"A0\"";
        QTest::newRow("not a well name") << layoutText(8, 12, "12A=sample\n") << "\"12A\"";
        QTest::newRow("well twice") << layoutText(8, 12, "A1=sample\na1=blank\n")
                                    << "Line 7: well a1 is listed twice";
        QTest::newRow("line without =") << layoutText(8, 12, "A1 sample\n") << "expected name=value";
        QTest::newRow("text before a section") << QByteArray("Rows=8\n[Layout]\n") << "Line 1";
        QTest::newRow("not UTF-8") << layoutText(8, 12, "A1=sample,\xff\xfe\n") << "UTF-8";
        QTest::newRow("binary") << QByteArray("[Layout]\0\0\0", 11) << "UTF-8";
    }

    void malformedLayoutsAreRefusedWithTheReason()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, reason);
        QString error;
        QVERIFY(!PlateLayout::Parse(text, error));
        QVERIFY2(error.contains(reason), qPrintable(error));
    }

    void commentsUnknownKeysAndSectionsArePassedOver()
    {
        QString error;
        const auto layout =
            PlateLayout::Parse("\xef\xbb\xbf# made by hand\r\n[Layout]\r\nname = Mixed\r\n"
                               "Rows=2\r\nColumns=3\r\nVendor=Nebra\r\n[Notes]\r\nanything at all\r\n"
                               "[wells]\r\n; blank corner\r\nb3 = BLANK\r\n",
                               error);
        QVERIFY2(layout, qPrintable(error));
        QCOMPARE(layout->name(), QStringLiteral("Mixed"));
        QCOMPARE(layout->well(1, 2).role, WellRole::Blank);
        QVERIFY(layout->well(1, 2).label.isEmpty());
    }

    void aFileThatCannotBeReadIsRefused()
    {
        QString error;
        QVERIFY(!PlateLayout::Load(QStringLiteral("/nonexistent/plate.mlo"), error));
        QVERIFY(error.startsWith(QLatin1String("The file cannot be read")));
        QVERIFY(!PlateLayout::Load(QDir::tempPath(), error));
    }
};

QTEST_GUILESS_MAIN(PlateLayoutTest)
#include "PlateLayoutTest.moc"
