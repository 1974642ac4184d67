// Following the disk: three measurements, each beside a plain baseline in the
// same run.
//
//  1. Latency from mkdir(2) in a watched tree of 10,000 folders to the new
//     node in the tree model (change source, notifications, branch
//     operations), beside a bare inotify descriptor's latency to the event.
//  2. Start-up cost of watching a tree of 100,000 folders: time and kernel
//     memory (unreclaimable slab) beside a bare recursive walk that adds one
//     inotify watch per folder.
//  3. The storm: another process makes 10,000 folders and removes 10,000
//     while the main thread is busy; then the time until the tree equals the
//     disk, the differences left, the overflows and the rescan's time.
//
//   bench_folder_changes [creations] [work folder] [latency,storm,startup]

#include "BenchStats.h"
#include "FolderBranches.h"
#include "FolderTreeModel.h"
#include "ShellNotifications.h"
#include "TreePathRules.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>

#include <ctime>
#include <dirent.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace nebra;
using nebra::bench::percentile;

namespace {

void run(const QString& folder, const QString& script)
{
    QProcess::execute(QStringLiteral("/bin/bash"),
                      {QStringLiteral("-c"), QStringLiteral("cd '%1' && %2").arg(folder, script)});
}

// <root>/<name>/{1..a}/{1..b}: a * b + a folders.
void makeTree(const QString& root, const QString& name, int a, int b)
{
    QDir().mkpath(root);
    run(root, QStringLiteral("mkdir -p %1/{1..%2}/{1..%3}").arg(name).arg(a).arg(b));
}

// The process's CPU time: on a shared machine the wall clock also counts the others' work.
double cpuMs()
{
    timespec t = {};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) / 1e6;
}

long slabKiB()
{
    QFile file(QStringLiteral("/proc/meminfo"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith("SUnreclaim:"))
            return line.mid(11).trimmed().split(' ').value(0).toLong();
    }
    return 0;
}

int bareWatchWalk(int fd, const QByteArray& path)
{
    if (::inotify_add_watch(fd, path.constData(),
                            IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE | IN_ATTRIB |
                                IN_ONLYDIR) < 0)
        return 0;
    int count = 1;
    DIR* dir = ::opendir(path.constData());
    if (!dir)
        return count;
    while (const dirent* entry = ::readdir(dir)) {
        if (entry->d_type == DT_DIR && std::strcmp(entry->d_name, ".") != 0 &&
            std::strcmp(entry->d_name, "..") != 0)
            count += bareWatchWalk(fd, path + '/' + entry->d_name);
    }
    ::closedir(dir);
    return count;
}

// A tree of nodes over root, and the notifications that keep it current.
struct World
{
    QString root;
    FolderTreeModel model;
    FolderBranches branches{model, [] { return quint32(0); }};
    ShellNotifications notifications;
    std::function<void(const QString&)> added;

    // Activates and waits until the roots' watches are in place.
    void activate()
    {
        notifications.ActivateSHCNENotification();
        while (notifications.source().isWalking())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    explicit World(const QString& folder) : root(folder)
    {
        const FolderNode top = model.addNode(QStringLiteral("Organiser"));
        top.setFolderPath(QStringLiteral("Organiser"));
        const FolderNode data = model.addNode(top, QStringLiteral("data"));
        data.setFolderPath(root);
        model.beginUpdate();
        branches.AddSubFolderNodes(root, data, DocumentType::Results);
        model.endUpdate();
        NotificationTargets targets;
        targets.IsThisFolderANebraFolder = [this](const QString& p) {
            return TreePathRules::IsThisFolderANebraFolder(p, root);
        };
        targets.AddExplorerBranch = [this](const QString& p) {
            const bool done = branches.AddExplorerBranch(p);
            if (done && added)
                added(p);
            return done;
        };
        targets.RemoveExplorerBranch = [this](const QString& p) { return branches.RemoveExplorerBranch(p); };
        targets.RenameExplorerBranch = [this](const QString& a, const QString& b) {
            return branches.RenameExplorerBranch(a, b);
        };
        notifications.setTargets(targets);
        notifications.setWatchedRoots([this] { return QStringList{root}; });
    }

    QSet<QString> treeFolders() const
    {
        QSet<QString> paths;
        for (int i = 2; i < model.count(); ++i)
            paths.insert(model.node(i).folderPath());
        return paths;
    }
};

QSet<QString> diskFolders(const QString& root)
{
    QSet<QString> paths;
    std::function<void(const QString&)> walk = [&](const QString& folder) {
        for (const QString& name : QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden)) {
            paths.insert(folder + QLatin1Char('/') + name);
            walk(folder + QLatin1Char('/') + name);
        }
    };
    walk(root);
    return paths;
}

void latency(const QString& work, int creations)
{
    const QString root = work + QStringLiteral("/latency");
    makeTree(root, QStringLiteral("t"), 100, 99); // 10,000 folders with t
    World world(root);
    world.activate();
    bool seen = false;
    world.added = [&seen](const QString&) { seen = true; };
    std::vector<double> ours, bare;
    for (int i = 0; i < creations; ++i) {
        const QByteArray path =
            QFile::encodeName(QStringLiteral("%1/t/%2/n%3").arg(root).arg(1 + i % 100).arg(i));
        seen = false;
        QElapsedTimer timer;
        timer.start();
        if (::mkdir(path.constData(), 0755) != 0)
            continue;
        while (!seen)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        ours.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    world.notifications.TerminateSHCNENotification();
    // The bare descriptor, on the same folders.
    const int fd = ::inotify_init1(IN_CLOEXEC);
    for (int d = 1; d <= 100; ++d)
        ::inotify_add_watch(fd, QFile::encodeName(QStringLiteral("%1/t/%2").arg(root).arg(d)).constData(),
                            IN_CREATE);
    char buffer[4096];
    for (int i = 0; i < creations; ++i) {
        const QByteArray path =
            QFile::encodeName(QStringLiteral("%1/t/%2/b%3").arg(root).arg(1 + i % 100).arg(i));
        QElapsedTimer timer;
        timer.start();
        ::mkdir(path.constData(), 0755);
        pollfd p{fd, POLLIN, 0};
        ::poll(&p, 1, 1000);
        if (::read(fd, buffer, sizeof buffer) <= 0)
            std::printf("bare read failed\n");
        bare.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    ::close(fd);
    std::printf("latency mkdir -> node (%d creations, %d nodes)\n", creations, world.model.count());
    std::printf("  ours: median %.3f ms  p99 %.3f ms  max %.3f ms\n", percentile(ours, 0.5),
                percentile(ours, 0.99), percentile(ours, 1.0));
    std::printf("  bare inotify: median %.3f ms  p99 %.3f ms | ratio of medians %.1f\n",
                percentile(bare, 0.5), percentile(bare, 0.99),
                percentile(ours, 0.5) / std::max(1e-9, percentile(bare, 0.5)));
}

void startUp(const QString& work)
{
    const QString root = work + QStringLiteral("/startup");
    makeTree(root, QStringLiteral("t"), 400, 249); // 100,000 folders with t
    const QByteArray rawRoot = QFile::encodeName(root);
    std::vector<double> ours, bare, held;
    long oursKiB = 0, bareKiB = 0;
    int oursWatches = 0, bareWatches = 0;
    for (int round = 0; round < 3; ++round) {
        {
            const long before = slabKiB();
            QElapsedTimer timer;
            timer.start();
            const int fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
            bareWatches = bareWatchWalk(fd, rawRoot);
            bare.push_back(double(timer.nsecsElapsed()) / 1e6);
            bareKiB = slabKiB() - before;
            ::close(fd);
        }
        {
            const long before = slabKiB();
            QElapsedTimer timer;
            timer.start();
            FolderChangeSource source;
            source.open();
            source.watch({root});
            held.push_back(double(timer.nsecsElapsed()) / 1e6); // the walk runs on a reader thread
            while (source.isWalking())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            ours.push_back(double(timer.nsecsElapsed()) / 1e6);
            oursKiB = slabKiB() - before;
            oursWatches = source.watchCount();
        }
    }
    std::printf("start-up, watching %d folders (bare walk: %d), median of 3\n", oursWatches, bareWatches);
    std::printf("  ours %.0f ms, kernel slab +%ld KiB | bare %.0f ms, kernel slab +%ld KiB | ratio %.2f\n",
                percentile(ours, 0.5), oursKiB, percentile(bare, 0.5), bareKiB,
                percentile(ours, 0.5) / std::max(1e-9, percentile(bare, 0.5)));
    std::printf("  the calling thread held by open + watch: %.1f ms\n", percentile(held, 0.5));
}

void storm(const QString& work)
{
    const QString root = work + QStringLiteral("/storm");
    makeTree(root, QStringLiteral("old"), 100, 99); // 10,000 folders
    World world(root);
    world.activate();
    QElapsedTimer timer;
    timer.start();
    // The main thread does nothing while the other process works: the queue fills.
    run(root, QStringLiteral("mkdir -p new/{1..100}/{1..99} && rm -r old"));
    const double stormMs = double(timer.nsecsElapsed()) / 1e6;
    timer.restart();
    const double cpuBefore = cpuMs();
    const QSet<QString> disk = diskFolders(root);
    while (world.treeFolders() != disk && timer.elapsed() < 600000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
    const double settleMs = double(timer.nsecsElapsed()) / 1e6;
    const double settleCpuMs = cpuMs() - cpuBefore;
    const QSet<QString> tree = world.treeFolders();
    const auto stats = world.notifications.source().statistics();
    // Each folder made is one event on its parent; each removed one is three
    // (its parent's, its own end, its watch's end).
    const qint64 expected = 10000 + 3 * 10000;
    std::printf("storm: 10,000 made + 10,000 removed by another process in %.0f ms\n", stormMs);
    std::printf("  settled in %.0f ms (%.0f ms of CPU): %lld missing, %lld extra | overflows %d, rescans %d, "
                "last rescan %.0f ms\n",
                settleMs, settleCpuMs, qlonglong((disk - tree).size()), qlonglong((tree - disk).size()),
                stats.overflows, stats.rescans, stats.lastRescanMs);
    std::printf("  kernel events read %lld of about %lld: about %lld dropped\n",
                qlonglong(stats.kernelEvents), qlonglong(expected),
                qlonglong(std::max<qint64>(0, expected - stats.kernelEvents)));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int creations = argc > 1 ? std::atoi(argv[1]) : 1000;
    QTemporaryDir temporary(argc > 2 ? QString::fromLocal8Bit(argv[2]) + QStringLiteral("/bench-XXXXXX")
                                     : QDir::tempPath() + QStringLiteral("/bench-XXXXXX"));
    const QString work = temporary.path();
    const QString parts = argc > 3 ? QString::fromLatin1(argv[3]) : QStringLiteral("latency,storm,startup");
    if (parts.contains(QLatin1String("latency")))
        latency(work, creations);
    if (parts.contains(QLatin1String("storm")))
        storm(work);
    if (parts.contains(QLatin1String("startup")))
        startUp(work);
    return 0;
}
