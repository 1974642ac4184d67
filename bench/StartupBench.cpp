// Time from process start to a ready main window: the Organiser (maximised,
// embedded browser created) beside a bare QMainWindow with a QWebEngineView,
// each in a fresh process, alternating, on the platform QT_QPA_PLATFORM names.
//
//   bench_startup [runs]           drives both and prints medians and the ratio
//   bench_startup organiser|bare|bare-loaded   one child run (prints its ready time)

#include "BenchStats.h"
#include "MainWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMainWindow>
#include <QProcess>
#include <QTemporaryDir>
#include <QWebEngineView>
#include <QWindow>

#include <algorithm>
#include <cstdio>
#include <ctime>

using nebra::bench::median;

namespace {

long long monotonicNs()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts.tv_sec * 1'000'000'000LL + ts.tv_nsec;
}

void waitExposed(QWidget& window)
{
    QElapsedTimer timer;
    timer.start();
    while (!(window.windowHandle() && window.windowHandle()->isExposed()) && timer.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

int child(const QString& mode, int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    const QString page =
        QStringLiteral(NEBRA_SOURCE_DATA_DIR "/Example Assays/Protocols/ELISA IgG Quantitation.mht");
    if (mode == QLatin1String("organiser")) {
        nebra::MainWindow window;
        if (window.Load() != nebra::MainWindow::LoadOutcome::Loaded)
            return 1;
        waitExposed(window);
        std::printf("%lld\n", monotonicNs());
        return 0;
    }
    QMainWindow window;
    auto* view = new QWebEngineView(&window);
    window.setCentralWidget(view);
    window.showMaximized();
    if (mode == QLatin1String("bare-loaded")) {
        QEventLoop loop;
        QObject::connect(view, &QWebEngineView::loadFinished, &loop, &QEventLoop::quit);
        view->load(QUrl::fromLocalFile(page));
        loop.exec();
    }
    waitExposed(window);
    std::printf("%lld\n", monotonicNs());
    return 0;
}

double runOnce(const QString& self, const QString& mode, const QProcessEnvironment& env)
{
    QProcess process;
    process.setProcessEnvironment(env);
    const long long start = monotonicNs();
    process.start(self, {mode});
    process.waitForFinished(60000);
    const long long ready = process.readAllStandardOutput().trimmed().toLongLong();
    return ready > start ? (ready - start) / 1e6 : -1;
}

} // namespace

int main(int argc, char** argv)
{
    const QString mode = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    if (mode == QLatin1String("organiser") || mode.startsWith(QLatin1String("bare")))
        return child(mode, argc, argv);

    QCoreApplication app(argc, argv);
    const int runs = mode.toInt() > 0 ? mode.toInt() : 9;
    QTemporaryDir home;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
        env.insert(QLatin1String(name), home.path() + QLatin1Char('/') + QLatin1String(name));
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
        QDir().mkpath(home.path() + QLatin1Char('/') + QLatin1String(name));
    const QString self = QCoreApplication::applicationFilePath();
    QList<double> organiser, bare, bareLoaded;
    runOnce(self, QStringLiteral("organiser"), env); // first start creates the data folders; not counted
    for (int i = 0; i < runs; ++i) {
        organiser << runOnce(self, QStringLiteral("organiser"), env);
        bare << runOnce(self, QStringLiteral("bare"), env);
        bareLoaded << runOnce(self, QStringLiteral("bare-loaded"), env);
    }
    std::printf("start-up to ready window, median of %d runs (platform %s)\n", runs,
                qgetenv("QT_QPA_PLATFORM").isEmpty() ? "default" : qgetenv("QT_QPA_PLATFORM").constData());
    std::printf("  Organiser (maximised, browser created)   %8.1f ms\n", median(organiser));
    std::printf("  bare QMainWindow + QWebEngineView        %8.1f ms\n", median(bare));
    std::printf("  bare, page loaded                        %8.1f ms\n", median(bareLoaded));
    std::printf("  ratio Organiser / bare                   %8.2f\n", median(organiser) / median(bare));
    return 0;
}
