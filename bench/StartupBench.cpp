// Start-up of the Organiser, each sample a fresh process, alternating with
// the baselines, on the platform QT_QPA_PLATFORM names:
//   - to the first paint of the loaded window, beside an empty QMainWindow
//     shown maximised, to its first paint;
//   - to the welcome page loaded, beside a QMainWindow whose only content is
//     a QWebEngineView loading the same page.
//
//   bench_startup [runs]                drives all three and prints medians and ratios
//   bench_startup organiser|empty|view URL   one child run (prints its times)

#include "BenchStats.h"
#include "BrowserControl.h"
#include "MainWindow.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QMainWindow>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <QWebEngineView>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>

using nebra::bench::median;

namespace {

long long monotonicNs()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts.tv_sec * 1'000'000'000LL + ts.tv_nsec;
}

long long processCpuNs()
{
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return ts.tv_sec * 1'000'000'000LL + ts.tv_nsec;
}

// Notes the time once the window has been painted and its paint handed on
// (the first event-loop turn after its paint event), and the processor time
// the process had used by then (all its threads), which other processes'
// load does not stretch.
class FirstPaint : public QObject
{
public:
    explicit FirstPaint(QWidget& window) : m_window(window) { qApp->installEventFilter(this); }
    long long at = 0;
    long long cpu = 0;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && watched == &m_window && !m_queued) {
            m_queued = true;
            QTimer::singleShot(0, this, [this] {
                at = monotonicNs();
                cpu = processCpuNs();
            });
        }
        return false;
    }

private:
    QWidget& m_window;
    bool m_queued = false;
};

void runUntil(const std::function<bool()>& done)
{
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < 30000)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
}

int organiser()
{
    const long long made = monotonicNs();
    nebra::MainWindow window;
    FirstPaint paint(window);
    if (window.Load() != nebra::MainWindow::LoadOutcome::Loaded)
        return 1;
    const long long loaded = monotonicNs();
    auto& browser = *window.findChild<nebra::BrowserControl*>();
    runUntil([&] { return paint.at != 0 && browser.ReadyState() == nebra::BrowserControl::Complete; });
    std::printf("%lld %lld %s %lld %lld %lld\n", paint.at, monotonicNs(),
                browser.LocationURL().toEncoded().constData(), made, loaded, paint.cpu);
    return 0;
}

int empty()
{
    QMainWindow window;
    FirstPaint paint(window);
    window.showMaximized();
    runUntil([&] { return paint.at != 0; });
    std::printf("%lld %lld\n", paint.at, paint.cpu);
    return 0;
}

int view(const QUrl& url)
{
    QMainWindow window;
    auto* view = new QWebEngineView(&window);
    window.setCentralWidget(view);
    window.showMaximized();
    bool loaded = false;
    QObject::connect(view, &QWebEngineView::loadFinished, view, [&loaded] { loaded = true; });
    view->load(url);
    runUntil([&] { return loaded; });
    std::printf("%lld\n", monotonicNs());
    return 0;
}

int child(const QString& mode, int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    nebra::BrowserControl::RegisterOrganiserScheme();
    QApplication app(argc, argv);
    if (mode == QLatin1String("organiser"))
        return organiser();
    if (mode == QLatin1String("empty"))
        return empty();
    return view(QUrl::fromEncoded(argc > 2 ? argv[2] : ""));
}

// The child's output fields; times as milliseconds since the child was started.
QList<QByteArray> runOnce(const QString& self, const QStringList& arguments, const QProcessEnvironment& env,
                          long long& start)
{
    QProcess process;
    process.setProcessEnvironment(env);
    start = monotonicNs();
    process.start(self, arguments);
    process.waitForFinished(60000);
    return process.readAllStandardOutput().simplified().split(' ');
}

double since(long long start, const QByteArray& field)
{
    const long long at = field.toLongLong();
    return at > start ? (at - start) / 1e6 : -1;
}

} // namespace

int main(int argc, char** argv)
{
    const QString mode = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    if (mode == QLatin1String("organiser") || mode == QLatin1String("empty") || mode == QLatin1String("view"))
        return child(mode, argc, argv);

    QCoreApplication app(argc, argv);
    const int runs = mode.toInt() > 0 ? mode.toInt() : 9;
    QTemporaryDir home;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_DATA_HOME"}) {
        env.insert(QLatin1String(name), home.path() + QLatin1Char('/') + QLatin1String(name));
        QDir().mkpath(home.path() + QLatin1Char('/') + QLatin1String(name));
    }
    // The runtime folder is a memory file system on a desktop (/run/user/<uid>), where the
    // single-instance lock's sync costs nothing; on the disk it would cost a disk sync.
    QTemporaryDir runtime(QStringLiteral("/dev/shm/organiser-XXXXXX"));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime.path());
    const QString self = QCoreApplication::applicationFilePath();
    long long start = 0;
    // The first start creates the data folders; not counted. It names the welcome page.
    const QList<QByteArray> first = runOnce(self, {QStringLiteral("organiser")}, env, start);
    const QString page = first.size() > 2 ? QString::fromLatin1(first[2]) : QString();
    QList<double> paint, welcome, emptyPaint, viewLoaded, application, load, paintCpu, emptyCpu;
    const auto sample = [&](int which) {
        if (which == 0) {
            const QList<QByteArray> out = runOnce(self, {QStringLiteral("organiser")}, env, start);
            paint << since(start, out.value(0));
            welcome << since(start, out.value(1));
            application << since(start, out.value(3));
            load << since(start, out.value(4)) - since(start, out.value(3));
            paintCpu << out.value(5).toLongLong() / 1e6;
        } else if (which == 1) {
            const QList<QByteArray> out = runOnce(self, {QStringLiteral("empty")}, env, start);
            emptyPaint << since(start, out.value(0));
            emptyCpu << out.value(1).toLongLong() / 1e6;
        } else {
            viewLoaded << since(start, runOnce(self, {QStringLiteral("view"), page}, env, start).value(0));
        }
    };
    // Each round starts with the next of the three, so none always runs first.
    for (int i = 0; i < runs; ++i)
        for (int k = 0; k < 3; ++k)
            sample((i + k) % 3);
    std::printf("start-up, median of %d runs each, alternating (platform %s)\n", runs,
                qgetenv("QT_QPA_PLATFORM").isEmpty() ? "default" : qgetenv("QT_QPA_PLATFORM").constData());
    std::printf("  Organiser, QApplication made                %8.1f ms\n", median(application));
    std::printf("  Organiser, MainWindow made and loaded      %8.1f ms\n", median(load));
    std::printf("  Organiser, loaded window first painted      %8.1f ms\n", median(paint));
    std::printf("  empty QMainWindow, first painted            %8.1f ms\n", median(emptyPaint));
    std::printf("  ratio                                       %8.2f  (target 1.5)\n",
                median(paint) / median(emptyPaint));
    std::printf("  processor time to first paint, Organiser    %8.1f ms\n", median(paintCpu));
    std::printf("  processor time to first paint, empty        %8.1f ms\n", median(emptyCpu));
    std::printf("  ratio of processor times                    %8.2f\n", median(paintCpu) / median(emptyCpu));
    std::printf("  Organiser, welcome page loaded              %8.1f ms\n", median(welcome));
    std::printf("  QWebEngineView loading the same page        %8.1f ms\n", median(viewLoaded));
    std::printf("  ratio                                       %8.2f  (target 1.1)\n",
                median(welcome) / median(viewLoaded));
    std::printf("  page: %s\n", qPrintable(page));
    return 0;
}
