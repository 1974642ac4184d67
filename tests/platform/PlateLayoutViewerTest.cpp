#include "PlateLayoutViewer.h"

#include <QImage>
#include <QTemporaryFile>
#include <QtTest>

using namespace nebra;

class PlateLayoutViewerTest : public QObject
{
    Q_OBJECT

private:
    static QString example(const char* name)
    {
        return qEnvironmentVariable("NEBRA_TEST_DATA_DIR") +
               QStringLiteral("/Example Assays/Microplate Layouts/") + QLatin1String(name);
    }

    static int pixelsOf(const QImage& image, const QColor& colour)
    {
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                count += image.pixelColor(x, y) == colour;
        return count;
    }

private Q_SLOTS:
    void drawsWellsInTheColoursOfTheirRoles()
    {
        PlateLayoutViewer viewer;
        viewer.resize(600, 420);
        QVERIFY(viewer.LoadFile(example("ELISA 96 Standard Curve.mlo")));
        const QImage image = viewer.grab().toImage();
        for (WellRole role : {WellRole::Sample, WellRole::Standard, WellRole::Control, WellRole::Blank})
            QVERIFY2(pixelsOf(image, PlateLayoutViewer::roleColour(role)) > 100,
                     qPrintable(PlateLayout::roleName(role)));
        QVERIFY(viewer.accessibleDescription().contains(QLatin1String("96 wells")));
    }

    void scalesWithThePane()
    {
        PlateLayoutViewer viewer;
        QVERIFY(viewer.LoadFile(example("Kinetic 384.mlo")));
        for (const QSize size : {QSize(300, 220), QSize(1200, 800)}) {
            viewer.resize(size);
            const QImage image = viewer.grab().toImage();
            const int sample = pixelsOf(image, PlateLayoutViewer::roleColour(WellRole::Sample));
            // Each well covers a share of the pane that does not depend on the pane's size.
            const double share = double(sample) / (size.width() * size.height());
            QVERIFY2(share > 0.08 && share < 0.5, qPrintable(QString::number(share)));
        }
        viewer.resize(1200, 800);
        QCOMPARE(viewer.wellAt(QPoint(0, 0)), QString());
        const QString corner = viewer.wellAt(QPoint(600, 400));
        QVERIFY2(corner.startsWith(QLatin1Char('H')) || corner.startsWith(QLatin1Char('I')),
                 qPrintable(corner));
    }

    void anUnreadableLayoutShowsTheNotice()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write("[Layout]\nRows=9\nColumns=9\n");
        file.close();
        PlateLayoutViewer viewer;
        viewer.resize(400, 300);
        QVERIFY(viewer.LoadFile(example("BCA Protein 96.mlo")));
        QVERIFY(!viewer.LoadFile(file.fileName()));
        QVERIFY(!viewer.hasPlateLayout());
        QVERIFY(viewer.errorText().contains(QLatin1String("9 x 9")));
        QVERIFY(viewer.accessibleDescription().startsWith(PlateLayoutViewer::unreadableTitle()));
        const QImage image = viewer.grab().toImage();
        QCOMPARE(pixelsOf(image, PlateLayoutViewer::roleColour(WellRole::Sample)), 0);
        QVERIFY(pixelsOf(image, viewer.bkColour()) < image.width() * image.height()); // the notice is drawn
    }
};

QTEST_MAIN(PlateLayoutViewerTest)
#include "PlateLayoutViewerTest.moc"
