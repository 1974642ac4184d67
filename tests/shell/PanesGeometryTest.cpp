#include "PanesGeometry.h"

#include <QTest>

using namespace nebra;

// The resize rule's thresholds and arithmetic, in twips and through the
// conversion at a few screen resolutions.
class PanesGeometryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePanesFollowTheWindowOnlyAboveBothThresholds_data()
    {
        QTest::addColumn<QSize>("outer");
        QTest::addColumn<int>("innerWidth");
        QTest::addColumn<int>("statusBar");
        QTest::addColumn<bool>("follows"); // false: the panes keep their size
        QTest::addColumn<QSize>("panes");
        QTest::newRow("large") << QSize(12000, 9000) << 11880 << 300 << true << QSize(11880, 7810);
        QTest::newRow("just above both") << QSize(501, 1451) << 400 << 0 << true << QSize(400, 561);
        QTest::newRow("width at the threshold") << QSize(500, 9000) << 400 << 300 << false << QSize();
        QTest::newRow("height at the threshold") << QSize(12000, 1450) << 11880 << 300 << false << QSize();
        QTest::newRow("both below") << QSize(300, 1000) << 200 << 300 << false << QSize();
        QTest::newRow("status bar taller than the room")
            << QSize(600, 1500) << 500 << 900 << true << QSize(500, -290);
    }

    void thePanesFollowTheWindowOnlyAboveBothThresholds()
    {
        QFETCH(QSize, outer);
        QFETCH(int, innerWidth);
        QFETCH(int, statusBar);
        QFETCH(bool, follows);
        QFETCH(QSize, panes);
        const std::optional<QSize> size = PanesGeometry::PanesSize(outer, innerWidth, statusBar);
        QCOMPARE(size.has_value(), follows);
        if (size)
            QCOMPARE(*size, panes);
    }

    void pixelsConvertAtTheScreensResolution_data()
    {
        QTest::addColumn<int>("dpi");
        QTest::addColumn<int>("pixels");
        QTest::addColumn<int>("twips");
        QTest::newRow("96 dpi") << 96 << 100 << 1500;
        QTest::newRow("120 dpi") << 120 << 100 << 1200;
        QTest::newRow("144 dpi") << 144 << 33 << 330;
        QTest::newRow("unknown counts as 96") << 0 << 2 << 30;
    }

    void pixelsConvertAtTheScreensResolution()
    {
        QFETCH(int, dpi);
        QFETCH(int, pixels);
        QFETCH(int, twips);
        const PanesGeometry geometry(dpi, dpi);
        QCOMPARE(geometry.toTwipsX(pixels), twips);
        QCOMPARE(geometry.toTwipsY(pixels), twips);
        QCOMPARE(geometry.toPixelsX(twips), pixels);
    }
};

QTEST_GUILESS_MAIN(PanesGeometryTest)
#include "PanesGeometryTest.moc"
