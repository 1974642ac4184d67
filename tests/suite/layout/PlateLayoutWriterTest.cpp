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
    void generatedLayoutsSurviveARoundTrip()
    {
        for (const PlateFormat& format : PlateLayout::supportedFormats())
            for (const bool concentrations : {false, true}) {
                const PlateLayout layout = generated(format.rows, format.columns, concentrations);
                const QByteArray bytes = PlateLayoutWriter::Serialise(layout);
                QString error;
                const auto read = PlateLayout::Parse(bytes, error);
                QVERIFY2(read, qPrintable(error));
                QVERIFY2(*read == layout, qPrintable(layout.name()));
                QCOMPARE(PlateLayoutWriter::Serialise(*read), bytes);
                // Only a layout that needs the new section says it is of the new version.
                QCOMPARE(bytes.contains("Version=2\r\n"), concentrations);
                QCOMPARE(bytes.contains("[Concentrations]"), concentrations);
                QVERIFY(bytes.size() < PlateLayout::MaximumFileSize);
            }
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
};

QTEST_GUILESS_MAIN(PlateLayoutWriterTest)
#include "PlateLayoutWriterTest.moc"
