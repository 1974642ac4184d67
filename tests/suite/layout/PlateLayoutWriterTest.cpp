#include "PlateLayoutWriter.h"
#include "PlateLayout.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace nebra;

namespace {
// A plate with every role, labels with commas and blanks inside, and concentrations on some standards.
PlateLayout generated(int rows, int columns, bool concentrations)
{
    QRandomGenerator random(quint32(rows * columns));
    PlateLayout layout(QStringLiteral("Generated %1").arg(rows * columns), rows, columns);
    for (int i = 0; i < layout.wellCount(); ++i) {
        const auto role = static_cast<WellRole>(random.bounded(PlateLayout::RoleCount));
        Well well{role, role == WellRole::Empty ? QString() : QStringLiteral("L %1, x").arg(i), {}};
        if (concentrations && role == WellRole::Standard)
            well.concentration = 1000.0 / (i + 3);
        layout.setWell(i, well);
    }
    return layout;
}
} // namespace

class PlateLayoutWriterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void generatedLayoutsSurviveARoundTrip_data()
    {
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("columns");
        QTest::addColumn<bool>("concentrations");
        for (const PlateFormat& format : PlateLayout::supportedFormats())
            for (bool concentrations : {false, true})
                // clang-format off
                QTest::addRow("%d wells%s", format.rows * format.columns, concentrations ? ", concentrations" : "") << format.rows << format.columns << concentrations;
        // clang-format on
    }

    void generatedLayoutsSurviveARoundTrip()
    {
        QFETCH(int, rows);
        QFETCH(int, columns);
        QFETCH(bool, concentrations);
        const PlateLayout layout = generated(rows, columns, concentrations);
        const QByteArray bytes = PlateLayoutWriter::Serialise(layout);
        QString error;
        const auto read = PlateLayout::Parse(bytes, error);
        QVERIFY2(read, qPrintable(error));
        QVERIFY(*read == layout);
        QCOMPARE(PlateLayoutWriter::Serialise(*read), bytes);
        // Only a layout that needs the new section says it is of the new version.
        QCOMPARE(bytes.contains("Version=2\r\n"), concentrations);
        QCOMPARE(bytes.contains("[Concentrations]"), concentrations);
        QVERIFY(bytes.size() < PlateLayout::MaximumFileSize);
    }

    void readersOfTheFirstVersionSeeTheSameWells()
    {
        // What an older reader does: it passes over the Version key and the unknown section.
        const PlateLayout layout = generated(8, 12, true);
        QByteArray bytes = PlateLayoutWriter::Serialise(layout);
        const qsizetype section = bytes.indexOf("\r\n[Concentrations]");
        const QByteArray firstVersion = bytes.left(section + 2).replace("Version=2\r\n", "");
        QString error;
        const auto old = PlateLayout::Parse(firstVersion, error);
        QVERIFY2(old, qPrintable(error));
        for (int i = 0; i < layout.wellCount(); ++i) {
            QCOMPARE(old->wells()[i].role, layout.wells()[i].role);
            QCOMPARE(old->wells()[i].label, layout.wells()[i].label);
        }
    }

    void concentrationsAreCheckedLikeWells_data()
    {
        QTest::addColumn<QByteArray>("section");
        QTest::addColumn<QString>("reason");
        // clang-format off
        QTest::newRow("not a number") << QByteArray("A1=lots\n") << "Line 8: \"lots\" is not a concentration";
        QTest::newRow("negative") << QByteArray("A1=-1\n") << "is not a concentration";
        QTest::newRow("off the plate") << QByteArray("Z1=1\n") << "\"Z1\" is not a well of a 8 x 12 plate";
        QTest::newRow("twice") << QByteArray("A1=1\na1=2\n") << "Line 9: the concentration of a1 is given twice";
        QTest::newRow("bad version") << QByteArray() << "\"two\" is not a format version";
        // clang-format on
    }

    void concentrationsAreCheckedLikeWells()
    {
        QFETCH(QByteArray, section);
        QFETCH(QString, reason);
        const QByteArray version = section.isEmpty() ? "two" : "2";
        const QByteArray text = "[Layout]\nVersion=" + version +
                                "\nRows=8\nColumns=12\n[Wells]\nA1=standard,S1\n[Concentrations]\n" + section;
        QString error;
        QVERIFY(!PlateLayout::Parse(text, error));
        QVERIFY2(error.contains(reason), qPrintable(error));
    }
};

QTEST_GUILESS_MAIN(PlateLayoutWriterTest)
#include "PlateLayoutWriterTest.moc"
