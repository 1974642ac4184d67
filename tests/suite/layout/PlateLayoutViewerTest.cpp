#include "PlateLayoutViewer.h"

#include <QImage>
#include <QtTest>

using namespace nebra;

class PlateLayoutViewerTest : public QObject
{
    Q_OBJECT

private:
    static int pixelsOf(const QImage& image, const QColor& colour)
    {
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                count += image.pixelColor(x, y) == colour;
        return count;
    }

private Q_SLOTS:
    void drawsWellsByRoleAndScalesWithThePane()
    {
        PlateLayoutViewer viewer;
        QVERIFY(viewer.LoadFile(qEnvironmentVariable("NEBRA_TEST_DATA_DIR") +
                                "/Example Assays/Microplate Layouts/ELISA 96 Standard Curve.mlo"));
        for (const QSize size : {QSize(300, 220), QSize(1200, 800)}) {
            viewer.resize(size);
            const QImage image = viewer.grab().toImage();
            for (WellRole role : {WellRole::Sample, WellRole::Standard, WellRole::Control, WellRole::Blank}) {
                // Each role covers a share of the pane that does not depend on the pane's size.
                const int pixels = pixelsOf(image, PlateLayoutViewer::roleColour(role));
                QVERIFY2(pixels > 0.002 * size.width() * size.height(),
                         qPrintable(PlateLayout::roleName(role)));
            }
        }
        QCOMPARE(viewer.wellAt(QPoint(0, 0)), QString());
        QCOMPARE(viewer.wellAt(QPoint(1199, 799)), QString());
        QVERIFY(!viewer.wellAt(QPoint(600, 400)).isEmpty());
    }
};

QTEST_MAIN(PlateLayoutViewerTest)
#include "PlateLayoutViewerTest.moc"
