// Selection to preview loaded: a protocol's preview page beside a bare
// QWebEngineView load of the same page, and a 384-well layout beside reading,
// parsing and drawing the same wells and labels into an image of the
// viewer's size (the viewer's size changes a little each time, so each
// drawing is a first drawing at its size for both).

#include "BareLayoutDrawing.h"
#include "BenchStats.h"
#include "BrowserControl.h"
#include "PlateLayoutViewer.h"
#include "PreviewPane.h"
#include "SettingsStore.h"
#include "SuitePaths.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QGridLayout>
#include <QTemporaryDir>
#include <QTimer>
#include <QWebEngineView>

#include <unistd.h>

using namespace nebra;

namespace {
constexpr int Warm = 5;
constexpr int Runs = 40;

QString sourceData()
{
    const QString fromEnvironment = qEnvironmentVariable("NEBRA_TEST_DATA_DIR");
    return fromEnvironment.isEmpty() ? QStringLiteral(NEBRA_SOURCE_DATA_DIR) : fromEnvironment;
}

// Copies a document and its preview, the preview newer.
QString copyWithPreview(const QString& folder, const QString& base)
{
    const QString from = sourceData() + QStringLiteral("/Example Assays/Protocols/") + base;
    QFile::copy(from + QStringLiteral(".apr"), folder + '/' + base + QStringLiteral(".apr"));
    QFile::copy(from + QStringLiteral(".mht"), folder + '/' + base + QStringLiteral(".mht"));
    QFile preview(folder + '/' + base + QStringLiteral(".mht"));
    preview.open(QIODevice::ReadWrite);
    preview.setFileTime(QDateTime::currentDateTime().addSecs(60), QFileDevice::FileModificationTime);
    return folder + '/' + base + QStringLiteral(".apr");
}

bool bareLoad(QWebEngineView& view, const QUrl& url)
{
    QEventLoop loop;
    bool finished = false;
    QObject::connect(&view, &QWebEngineView::loadFinished, &loop, [&] {
        finished = true;
        loop.quit();
    });
    QTimer::singleShot(BrowserControl::DefaultWaitLimitMs, &loop, &QEventLoop::quit);
    view.load(url);
    if (!finished)
        loop.exec();
    return finished;
}
} // namespace

int main(int argc, char** argv)
{
    if (geteuid() == 0)
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    BrowserControl::RegisterOrganiserScheme();
    QApplication app(argc, argv);

    QTemporaryDir dir;
    SettingsStore store(dir.filePath(QStringLiteral("Suite.ini")));
    store.setValue(QStringLiteral("Paths/SuiteDataFolder"), sourceData());
    SuitePaths paths(store);
    paths.Initialise();
    const QStringList protocols{copyWithPreview(dir.path(), QStringLiteral("BCA Protein Assay")),
                                copyWithPreview(dir.path(), QStringLiteral("ELISA IgG Quantitation"))};
    const QString layout =
        sourceData() + QStringLiteral("/Example Assays/Microplate Layouts/Kinetic 384.mlo");

    QWidget host;
    auto* grid = new QGridLayout(&host);
    auto* browser = new BrowserControl(&host);
    auto* viewer = new PlateLayoutViewer(&host);
    grid->addWidget(browser, 0, 0);
    grid->addWidget(viewer, 0, 0);
    host.resize(900, 600);
    host.show();
    int type = 3;
    PreviewPane pane(*browser, *viewer, paths, {[&type] { return documentTypeFromData(type); }, {}});
    QWebEngineView bare;
    bare.resize(900, 600);
    bare.show();

    const bench::Samples oursPage = bench::timed(Warm, Runs, [&](int i) {
        const PreviewItem item{protocols[i % 2], false};
        pane.ShowPreview(&item);
        browser->WaitUntilComplete();
    });
    const bench::Samples barePage = bench::timed(Warm, Runs, [&](int i) {
        bareLoad(bare, QUrl::fromLocalFile(paths.PreviewFileFor(protocols[i % 2])));
    });
    type = 2;
    // Alternating, a new size each round.
    bench::Samples oursLayout;
    bench::Samples bareLayout;
    QElapsedTimer clock;
    for (int i = 0; i < Warm + Runs; ++i) {
        host.resize(900 + (i % 2) * 40, 600 + (i % 2) * 30);
        QCoreApplication::processEvents(); // the new size laid out, outside the timing
        const auto timeOurs = [&] {
            clock.start();
            const PreviewItem item{layout, false};
            pane.ShowPreview(&item);
            viewer->repaint();
            return clock.nsecsElapsed() / 1e6;
        };
        const auto timeBare = [&] {
            QImage image(viewer->size(), QImage::Format_ARGB32_Premultiplied);
            clock.start();
            bench::bareLayoutPreview(layout, image, viewer->font());
            return clock.nsecsElapsed() / 1e6;
        };
        const double first = i % 2 ? timeOurs() : timeBare();
        const double second = i % 2 ? timeBare() : timeOurs();
        if (i >= Warm) {
            oursLayout.ms << (i % 2 ? first : second);
            bareLayout.ms << (i % 2 ? second : first);
        }
    }

    std::printf("Selection to preview loaded, %d warm runs, then %d measured\n", Warm, Runs);
    bench::report("protocol preview page (.mht)", oursPage, barePage);
    bench::report("384-well layout (.mlo)", oursLayout, bareLayout);
    return 0;
}
