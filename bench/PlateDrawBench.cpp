// Drawing a 1,536-well layout, beside the least such a drawing needs (the
// same wells and labels, nothing kept between drawings). The size changes
// by a few pixels from one drawing to the next, so every drawing is a first
// drawing at its size for both.

#include "BareLayoutDrawing.h"
#include "BenchStats.h"
#include "PlateLayoutViewer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>

using namespace nebra;

namespace {
PlateLayout fullPlate()
{
    PlateLayout layout(QStringLiteral("Screen 1536"), 32, 48);
    for (int r = 0; r < 32; ++r)
        for (int c = 0; c < 48; ++c)
            layout.setWell(r, c,
                           {static_cast<WellRole>((r + c) % PlateLayout::RoleCount),
                            QStringLiteral("U%1").arg(r * 48 + c + 1),
                            {}});
    return layout;
}

// A name of 1 MB, repainted at one size, beside the same plate with a short
// name: the elided title is kept between paints, so the long name costs
// once, not on every paint.
void repaintsWithALongName(PlateLayoutViewer& viewer)
{
    constexpr int Runs = 20;
    const QSize size(900, 640);
    viewer.resize(size);
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    const PlateLayout plate = fullPlate();
    PlateLayout longName(QStringLiteral("n").repeated(1024 * 1024), 32, 48);
    for (int r = 0; r < 32; ++r)
        for (int c = 0; c < 48; ++c)
            longName.setWell(r, c, plate.well(r, c));
    PlateLayoutViewer shortViewer;
    shortViewer.resize(size);
    shortViewer.setPlateLayout(plate);
    viewer.setPlateLayout(longName);
    viewer.render(&image); // the one elision of the long name
    shortViewer.render(&image);
    bench::Samples ours;
    bench::Samples bare;
    QElapsedTimer clock;
    for (int i = 0; i < Runs; ++i) {
        clock.start();
        viewer.render(&image);
        ours.ms << clock.nsecsElapsed() / 1e6;
        clock.start();
        shortViewer.render(&image);
        bare.ms << clock.nsecsElapsed() / 1e6;
    }
    bench::report("repaint, 1 MB name (baseline: a short name)", ours, bare);
}
} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    constexpr int Warm = 5;
    constexpr int Runs = 60;
    PlateLayoutViewer viewer;
    viewer.setPlateLayout(fullPlate());
    std::printf(
        "1,536-well layout drawn into a raster image, each at a new size, %d warm runs, then %d measured\n",
        Warm, Runs);
    const PlateLayout plate = fullPlate();
    for (const QSize base : {QSize(900, 640), QSize(1700, 1200)}) {
        bench::Samples ours;
        bench::Samples bare;
        QElapsedTimer clock;
        for (int i = 0; i < Warm + Runs; ++i) {
            const QSize size = base + QSize((i % 2) * 50, (i % 2) * 35);
            QImage image(size, QImage::Format_ARGB32_Premultiplied);
            const auto timeOurs = [&] {
                clock.start();
                viewer.resize(size);
                viewer.render(&image);
                return clock.nsecsElapsed() / 1e6;
            };
            const auto timeBare = [&] {
                clock.start();
                bench::bareLayoutDraw(plate, image, viewer.font());
                return clock.nsecsElapsed() / 1e6;
            };
            // Alternate which goes first.
            double oursMs = 0;
            double bareMs = 0;
            if (i % 2) {
                oursMs = timeOurs();
                bareMs = timeBare();
            } else {
                bareMs = timeBare();
                oursMs = timeOurs();
            }
            if (i >= Warm) {
                ours.ms << oursMs;
                bare.ms << bareMs;
            }
        }
        const QByteArray what = QStringLiteral("%1 x %2 px and +50 x +35%3")
                                    .arg(base.width())
                                    .arg(base.height())
                                    .arg(base.width() > 1600 ? QStringLiteral(", with labels") : QString())
                                    .toUtf8();
        bench::report(what.constData(), ours, bare);
    }
    repaintsWithALongName(viewer);
    return 0;
}
