#include "PlateLayoutViewer.h"

#include <QImage>
#include <QtTest>

using namespace nebra;

class PlateLayoutViewerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void drawsWellsByRoleScalesWithThePaneAndShowsTheNameAsWritten()
    {
        PlateLayoutViewer viewer;
        QVERIFY(viewer.LoadFile(qEnvironmentVariable("NEBRA_TEST_DATA_DIR") +
                                "/Example Assays/Microplate Layouts/ELISA 96 Standard Curve.mlo"));
        for (const QSize size : {QSize(300, 220), QSize(1200, 800)}) {
            viewer.resize(size);
            const QImage image = viewer.grab().toImage();
            for (WellRole role : {WellRole::Sample, WellRole::Standard, WellRole::Control, WellRole::Blank}) {
                // Each role covers a share of the pane that does not depend on the pane's size.
                int pixels = 0;
                for (int y = 0; y < image.height(); ++y)
                    for (int x = 0; x < image.width(); ++x)
                        pixels += image.pixelColor(x, y) == PlateLayoutViewer::roleColour(role);
                QVERIFY2(pixels > 0.002 * size.width() * size.height(),
                         qPrintable(PlateLayout::roleName(role)));
            }
        }
        QVERIFY(viewer.wellAt(QPoint(0, 0)).isEmpty() && viewer.wellAt(QPoint(1199, 799)).isEmpty());
        QVERIFY(!viewer.wellAt(QPoint(600, 400)).isEmpty());
        // The name is shown as written, and the title follows the width.
        viewer.setPlateLayout(PlateLayout(QStringLiteral("%2 and %1"), 8, 12));
        QCOMPARE(viewer.accessibleDescription(), QStringLiteral("%2 and %1: 96 wells, 8 rows by 12 columns"));
        // The elided title is kept between paints; it must still follow the
        // width and the layout.
        const QString longName = QStringLiteral("Standard curve ").repeated(20000); // 300 000 characters
        viewer.setPlateLayout(PlateLayout(longName, 8, 12));
        viewer.resize(300, 220);
        viewer.grab();
        const QString narrow = viewer.shownTitle();
        QVERIFY(narrow.endsWith(QChar(0x2026)) && narrow.size() < 60);
        viewer.resize(1200, 800);
        viewer.grab();
        const QString wide = viewer.shownTitle();
        QVERIFY(wide.endsWith(QChar(0x2026)) && wide.size() > narrow.size());
        QCOMPARE(wide.left(narrow.size() - 1), narrow.chopped(1));
        viewer.setPlateLayout(PlateLayout(QStringLiteral("Short"), 8, 12));
        viewer.grab();
        QCOMPARE(viewer.shownTitle(), QStringLiteral("Short"));
    }
};

QTEST_MAIN(PlateLayoutViewerTest)
#include "PlateLayoutViewerTest.moc"
