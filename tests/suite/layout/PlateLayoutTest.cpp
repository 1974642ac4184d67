#include "PlateLayout.h"

#include <QDir>
#include <QtTest>

using namespace nebra;

namespace {
QByteArray plate(int rows, int columns, const QByteArray& wells)
{
    return "[Layout]\nName=Test\nRows=" + QByteArray::number(rows) +
           "\nColumns=" + QByteArray::number(columns) + "\n[Wells]\n" + wells;
}
} // namespace

class PlateLayoutTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheExampleLayouts()
    {
        const QDir folder(qEnvironmentVariable("NEBRA_TEST_DATA_DIR") + "/Example Assays/Microplate Layouts");
        QString error;
        for (const QString& name : folder.entryList({QStringLiteral("*.mlo")}))
            QVERIFY2(PlateLayout::Load(folder.filePath(name), error), qPrintable(name + ": " + error));
        QVERIFY(folder.entryList({QStringLiteral("*.mlo")}).size() >= 3);
    }

    void supportsEveryPlateFrom6To1536Wells_data()
    {
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("columns");
        QTest::addColumn<QString>("lastWell");
        // clang-format off
        for (const auto& [rows, columns, last] : {std::tuple{2, 3, "B3"}, {3, 4, "C4"}, {4, 6, "D6"}, {6, 8, "F8"},
                                                  {8, 12, "H12"}, {16, 24, "P24"}, {32, 48, "AF48"}})
            QTest::addRow("%d wells", rows * columns) << rows << columns << QString::fromLatin1(last);
        // clang-format on
    }

    void supportsEveryPlateFrom6To1536Wells()
    {
        QFETCH(int, rows);
        QFETCH(int, columns);
        QFETCH(QString, lastWell);
        QString error;
        const auto layout = PlateLayout::Parse(
            plate(rows, columns, lastWell.toLower().toUtf8() + "=Sample, U1, U2\r\n"), error);
        QVERIFY2(layout, qPrintable(error));
        QCOMPARE(layout->well(rows - 1, columns - 1).role, WellRole::Sample);
        QCOMPARE(layout->well(rows - 1, columns - 1).label, QStringLiteral("U1, U2"));
        QCOMPARE(layout->roleCounts()[int(WellRole::Empty)], rows * columns - 1);
        QCOMPARE(PlateLayout::wellName(rows - 1, columns - 1), lastWell);
    }

    void malformedLayoutsAreRefusedWithTheReason_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("reason");
        QTest::newRow("empty file") << QByteArray() << "no [Layout] section";
        QTest::newRow("no rows") << QByteArray("[Layout]\nColumns=12\n") << "gives no rows";
        QTest::newRow("unsupported plate") << plate(8, 13, "") << "8 x 13";
        QTest::newRow("unknown role") << plate(8, 12, "A1=reference,R\n") << "Line 6: \"reference\"";
        QTest::newRow("well off the plate") << plate(8, 12, "I1=sample\n") << "\"I1\" is not a well";
        QTest::newRow("not a well name") << plate(8, 12, "12A=sample\n") << "\"12A\"";
        QTest::newRow("well twice") << plate(8, 12, "A1=sample\na1=blank\n")
                                    << "Line 7: well a1 is listed twice";
        QTest::newRow("line without =") << plate(8, 12, "A1 sample\n") << "expected name=value";
        QTest::newRow("binary") << QByteArray("[Layout]\0\xff\xfe", 11) << "UTF-8";
    }

    void malformedLayoutsAreRefusedWithTheReason()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, reason);
        QString error;
        QVERIFY(!PlateLayout::Parse(text, error));
        QVERIFY2(error.contains(reason), qPrintable(error));
    }
};

QTEST_GUILESS_MAIN(PlateLayoutTest)
#include "PlateLayoutTest.moc"
