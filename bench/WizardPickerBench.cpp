// New protocol: from the request to the wizard picker shown with its preview
// loaded, beside a bare dialog with a list and a QWebEngineView loading the
// same page. Each sample makes the dialog afresh, as every request does.

#include "BenchStats.h"
#include "BrowserControl.h"
#include "NewAssayProtocolDialog.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "WizardHost.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QListWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QVBoxLayout>
#include <QWebEngineView>

#include <unistd.h>

using namespace nebra;

namespace {
constexpr int Warm = 3;

void barePicker(const QUrl& page)
{
    QDialog dialog;
    auto* layout = new QVBoxLayout(&dialog);
    auto* list = new QListWidget;
    list->setViewMode(QListView::IconMode);
    list->addItem(QStringLiteral("Generic"));
    auto* view = new QWebEngineView;
    layout->addWidget(list);
    layout->addWidget(view);
    QEventLoop loop;
    QObject::connect(view, &QWebEngineView::loadFinished, &loop, &QEventLoop::quit);
    QTimer::singleShot(BrowserControl::DefaultWaitLimitMs, &loop, &QEventLoop::quit);
    view->load(page);
    dialog.show();
    loop.exec();
}
} // namespace

int main(int argc, char** argv)
{
    if (geteuid() == 0)
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    BrowserControl::RegisterOrganiserScheme();
    QApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(1, atoi(argv[1])) : 20;

    QTemporaryDir home;
    SettingsStore store(home.filePath(QStringLiteral("Suite.ini")));
    store.setValue(QStringLiteral("Paths/SuiteDataFolder"), QStringLiteral(NEBRA_SOURCE_DATA_DIR));
    SuitePaths paths(store);
    SuiteSettings settings(store);
    WizardHost host(paths, settings, WizardCatalogue::FileIn(paths.SuiteDataFolder()),
                    WizardPlugins::DefaultFolder());

    const bench::Samples ours = bench::timed(Warm, runs, [&](int) {
        NewAssayProtocolDialog dialog(host, paths, settings, {});
        dialog.LoadList();
        dialog.show();
        dialog.findChild<BrowserControl*>(QStringLiteral("WebBrowser1"))->WaitUntilComplete();
    });
    const QUrl page =
        QUrl::fromLocalFile(paths.WizardsParentFolder() + QStringLiteral("/Wizards/Generic/Index.html"));
    const bench::Samples bare = bench::timed(Warm, runs, [&](int) { barePicker(page); });
    bench::report("New protocol: picker shown, preview loaded", ours, bare);
    return 0;
}
