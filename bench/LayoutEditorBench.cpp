// The layout editor on a 1,536-well plate: select all and assign a role, from
// the input events to the finished repaint, beside the viewer's own paint of
// the same plate; and opening and saving a layout beside the reader and
// writer alone. Run on the offscreen platform:
//   QT_QPA_PLATFORM=offscreen build/bench/layout_editor_bench

#include "BenchStats.h"
#include "LayoutCanvas.h"
#include "LayoutDocument.h"
#include "LayoutEditorWindow.h"
#include "PlateLayoutViewer.h"
#include "PlateLayoutWriter.h"
#include "WellSelection.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;

namespace {
constexpr int Warm = 5;
constexpr int Runs = 100;

PlateLayout labelledPlate()
{
    PlateLayout layout(QStringLiteral("Screen 1536"), 32, 48);
    for (int i = 0; i < layout.wellCount(); ++i)
        layout.setWell(i,
                       {static_cast<WellRole>(i % PlateLayout::RoleCount), QStringLiteral("U%1").arg(i + 1),
                        i % 7 == 0 ? std::optional<double>(1000.0 / (i + 1)) : std::nullopt});
    return layout;
}

void selectAndAssign(const QString& path)
{
    LayoutDocument document;
    QString error;
    document.open(path, error);
    LayoutEditorWindow window(document);
    window.resize(1280, 800);
    PlateLayoutViewer viewer;
    viewer.setPlateLayout(document.layout());
    viewer.show();
    window.show();
    window.activateWindow();
    if (!QTest::qWaitForWindowExposed(&viewer) || !QTest::qWaitForWindowActive(&window))
        return;
    viewer.resize(window.canvas()->size());
    bench::Samples ours;
    bench::Samples bare;
    QElapsedTimer clock;
    for (int i = 0; i < Warm + Runs; ++i) {
        window.selection().press(0, 0, WellSelection::Extend::Replace);
        window.canvas()->setFocus();
        window.canvas()->repaint();
        // Ctrl+A, then Ctrl+1 ... Ctrl+5: sample, standard, control, blank, empty in turn.
        const auto roleKey = Qt::Key(Qt::Key_1 + i % PlateLayout::RoleCount);
        clock.start();
        QTest::keyClick(&window, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&window, roleKey, Qt::ControlModifier);
        window.canvas()->repaint();
        const double oursMs = clock.nsecsElapsed() / 1e6;
        clock.start();
        viewer.repaint();
        const double bareMs = clock.nsecsElapsed() / 1e6;
        if (i >= Warm) {
            ours.ms << oursMs;
            bare.ms << bareMs;
        }
    }
    bench::report("Ctrl+A, Ctrl+<role>, to the repaint", ours, bare);
    std::printf("%-44s ours p99 %8.3f ms | viewer paint p99 %8.3f ms | %d selected, canvas %dx%d px\n", "",
                bench::percentile(ours.ms, 0.99), bench::percentile(bare.ms, 0.99),
                window.selection().count(), window.canvas()->width(), window.canvas()->height());
}

void openAndSave(const QString& path, const QString& folder)
{
    const QString mine = folder + QStringLiteral("/mine.mlo");
    const QString plain = folder + QStringLiteral("/plain.mlo");
    bench::Samples ours;
    bench::Samples bare;
    QElapsedTimer clock;
    QString error;
    for (int i = 0; i < Warm + Runs; ++i) {
        QFile::remove(mine);
        QFile::remove(plain);
        clock.start();
        LayoutDocument document;
        document.open(path, error);
        document.saveAs(mine, error);
        const double oursMs = clock.nsecsElapsed() / 1e6;
        clock.start();
        const std::optional<PlateLayout> layout = PlateLayout::Load(path, error);
        PlateLayoutWriter::Save(*layout, plain, error);
        const double bareMs = clock.nsecsElapsed() / 1e6;
        if (i >= Warm) {
            ours.ms << oursMs;
            bare.ms << bareMs;
        }
    }
    bench::report("open + save 1,536 wells with labels", ours, bare);
}
} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Screen 1536.mlo"));
    QString error;
    if (!PlateLayoutWriter::Save(labelledPlate(), path, error))
        return 1;
    std::printf("Layout editor, 1,536-well plate (%lld bytes on disk), %d warm runs, then %d measured\n",
                QFileInfo(path).size(), Warm, Runs);
    selectAndAssign(path);
    openAndSave(path, dir.path());
    return 0;
}
