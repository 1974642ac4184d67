#include "PlateLayout.h"
#include "SpecialFiles.h"
#include "TestFiles.h"

#include <QTemporaryDir>
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
    // The examples are read by LayoutDocumentTest, which saves them again byte for byte.
    void passesOverUnknownSectionsAndKeys()
    {
        QString error;
        const auto layout = PlateLayout::Parse("\xef\xbb\xbf[layout]\r\nName=N\r\nRows=2\r\nColumns="
                                               "3\r\nOwner=x\r\n[Notes]\r\nb3=?\r\n[WELLS]\r\nb3=blank\r\n",
                                               error);
        QVERIFY2(layout, qPrintable(error));
        QCOMPARE(layout->name(), QStringLiteral("N"));
        QCOMPARE(layout->well(1, 2).role, WellRole::Blank);
    }

    void supportsEveryPlateFrom6To1536Wells()
    {
        QString error;
        // clang-format off
        for (const auto& [rows, columns, last] : {std::tuple{2, 3, "B3"}, {3, 4, "C4"}, {4, 6, "D6"}, {6, 8, "F8"}, {8, 12, "H12"}, {16, 24, "P24"}, {32, 48, "AF48"}}) {
            // clang-format on
            const auto layout = PlateLayout::Parse(
                plate(rows, columns, QByteArray(last).toLower() + "=Sample, U1, U2\r\n"), error);
            QVERIFY2(layout, qPrintable(error));
            QCOMPARE(layout->well(rows - 1, columns - 1).role, WellRole::Sample);
            QCOMPARE(layout->well(rows - 1, columns - 1).label, QStringLiteral("U1, U2"));
            QCOMPARE(layout->roleCounts()[int(WellRole::Empty)], rows * columns - 1);
            QCOMPARE(PlateLayout::wellName(rows - 1, columns - 1), QLatin1String(last));
        }
    }

    void malformedLayoutsAreRefusedWithTheReason_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("reason");
        // clang-format off
        QTest::newRow("empty file") << QByteArray() << "no [Layout] section";
        QTest::newRow("no rows") << QByteArray("[Layout]\nColumns=12\n") << "gives no rows";
        QTest::newRow("unsupported plate") << plate(8, 13, "") << "8 x 13";
        QTest::newRow("unknown role") << plate(8, 12, "A1=reference,R\n") << "Line 6: \"reference\"";
        QTest::newRow("well off the plate") << plate(8, 12, "I1=sample\n") << "\"I1\" is not a well";
        QTest::newRow("not a well name") << plate(8, 12, "12A=sample\n") << "\"12A\"";
        QTest::newRow("well twice") << plate(8, 12, "A1=sample\na1=blank\n") << "Line 7: well a1 is listed twice";
        QTest::newRow("line without =") << plate(8, 12, "A1 sample\n") << "expected name=value";
        QTest::newRow("binary") << QByteArray("[Layout]\0\xff\xfe", 11) << "UTF-8";
        // The well name is quoted as written, never read as a placeholder.
        QTest::newRow("placeholder as a well") << plate(8, 12, "%1=sample\n") << "Line 6: \"%1\" is not a well of a 8 x 12 plate.";
        QTest::newRow("placeholder as a role") << plate(8, 12, "A1=%2 and %1\n") << "Line 6: \"%2 and %1\"";
        QTest::newRow("[Wells] first") << QByteArray("[Wells]\nA1=sample\n[Layout]\nRows=8\nColumns=12\n") << "Line 1: [Wells] comes before the [Layout] section.";
        QTest::newRow("other section first") << QByteArray("[Notes]\nx=y\n[Layout]\nRows=8\nColumns=12\n") << "Line 1: [Notes] comes before";
        QTest::newRow("second [Layout]") << plate(8, 12, "A1=sample\n[Layout]\nRows=32\nColumns=48\n") << "Line 7: a second [Layout] section.";
        QTest::newRow("rows twice") << QByteArray("[Layout]\nRows=8\nColumns=12\nrows=16\n") << "Line 4: rows is given a second time (first on line 2).";
        // toUpper() would fold these into A to Z and digits into a number.
        QTest::newRow("dotless i") << plate(16, 24, "\xc4\xb1" "1=sample\n") << "is not a well of a 16 x 24";
        QTest::newRow("long s") << plate(32, 48, "\xc5\xbf" "1=sample\n") << "is not a well of a 32 x 48";
        QTest::newRow("Arabic-Indic digit") << plate(8, 12, "A\xd9\xa1=sample\n") << "is not a well";
        QTest::newRow("leading zero") << plate(8, 12, "A01=sample\n") << "\"A01\" is not a well";
        QTest::newRow("signed column") << plate(8, 12, "A+1=sample\n") << "\"A+1\" is not a well";
        // The concentrations of the second version are checked like the wells.
        const QByteArray v2 = "[Layout]\nVersion=2\nRows=8\nColumns=12\n[Wells]\nA1=standard,S1\n[Concentrations]\n";
        QTest::newRow("concentration not a number") << v2 + "A1=lots\n" << "Line 8: \"lots\" is not a concentration";
        QTest::newRow("negative concentration") << v2 + "A1=-1\n" << "is not a concentration";
        QTest::newRow("concentration off the plate") << v2 + "Z1=1\n" << "\"Z1\" is not a well of a 8 x 12 plate";
        QTest::newRow("concentration twice") << v2 + "A1=1\na1=2\n" << "Line 9: the concentration of a1 is given twice";
        QTest::newRow("bad version") << QByteArray(v2).replace("=2", "=two") << "\"two\" is not a format version";
        // clang-format on
    }

    void malformedLayoutsAreRefusedWithTheReason()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, reason);
        QString error;
        QVERIFY(!PlateLayout::Parse(text, error));
        QVERIFY2(error.contains(reason), qPrintable(error));
    }

    // A file over the limit is refused whatever its content, a valid layout padded to exactly the
    // limit is read; a pipe is refused without blocking (which files are not regular is RegularFileTest's).
    void theSizeLimitIsJudgedOnWhatWasReadAndAPipeIsRefused()
    {
        QTemporaryDir dir;
        QString error;
        for (const qint64 size : {PlateLayout::MaximumFileSize, PlateLayout::MaximumFileSize + 1}) {
            QByteArray text = plate(8, 12, "A1=sample\n# ");
            text += QByteArray(size - text.size() - 1, 'x') + '\n';
            test::writeFile(dir.filePath("big.mlo"), text);
            const bool read = size == PlateLayout::MaximumFileSize;
            QCOMPARE(bool(PlateLayout::Load(dir.filePath("big.mlo"), error)), read);
            QCOMPARE(error,
                     read ? "" : "The file is too large for a plate layout (more than 1048576 bytes).");
        }
        test::makeFifo(dir.filePath("pipe.mlo"));
        const test::PipeWatchdog watchdog(dir.filePath("pipe.mlo"));
        QVERIFY(!PlateLayout::Load(dir.filePath("pipe.mlo"), error));
        QCOMPARE(error, "This is not a file that can be read (a folder, pipe, socket or device).");
        QVERIFY2(!watchdog.released(), "the reader blocked on the pipe");
    }
};

QTEST_GUILESS_MAIN(PlateLayoutTest)
#include "PlateLayoutTest.moc"
