// Selection to preview loaded, beside a bare QWebEngineView load of the same file:
// a protocol's preview page and a 384-well layout.

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

template <typename Operation> bench::Samples time(Operation operation)
{
    bench::Samples samples;
    QElapsedTimer clock;
    for (int i = 0; i < Warm + Runs; ++i) {
        clock.start();
        operation(i);
        const double ms = clock.nsecsElapsed() / 1e6;
        if (i >= Warm)
            samples.ms << ms;
    }
    return samples;
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
    PreviewPane pane(*browser, *viewer, paths, {[&type] { return folderKindFromData(type); }, {}});
    QWebEngineView bare;
    bare.resize(900, 600);
    bare.show();

    const bench::Samples oursPage = time([&](int i) {
        const PreviewItem item{protocols[i % 2], false};
        pane.ShowPreview(&item);
        browser->WaitUntilComplete();
    });
    const bench::Samples barePage =
        time([&](int i) { bareLoad(bare, QUrl::fromLocalFile(paths.PreviewFileFor(protocols[i % 2]))); });
    type = 2;
    const bench::Samples oursLayout = time([&](int) {
        const PreviewItem item{layout, false};
        pane.ShowPreview(&item);
        viewer->repaint();
    });
    const bench::Samples bareLayout = time([&](int) { bareLoad(bare, QUrl::fromLocalFile(layout)); });

    std::printf("Selection to preview loaded, %d warm runs, then %d measured\n", Warm, Runs);
    bench::report("protocol preview page (.mht)", oursPage, barePage);
    bench::report("384-well layout (.mlo)", oursLayout, bareLayout);
    return 0;
}
