// Following a file server by polling: what a poll costs, beside the plain
// reading of the same folders in the same run, on a FUSE share (bindfs over
// a folder of the work folder, as tests make them).
//
//  1. One poll of a tree of 10,000 folders: our snapshot and comparison
//     (the quiet tree, whose folders are trusted, and the full read every
//     30th poll does) beside a bare getdents64 + fstatat walk that opens
//     every folder and looks at every entry.
//  2. One poll of a folder of 20,000 files: our entries and comparison beside
//     getdents64 + fstatat of the same names, with the filter "*.*" (every
//     file) and "*.apr" (a fifth of them).
//  3. The processor share of a FolderPoller left alone at the default
//     intervals (list 2 s, tree 10 s) on the 10,000-folder tree, with the
//     list on a folder of 200 files and then on the 20,000.
//
// Processor time is the process's own (CLOCK_PROCESS_CPUTIME_ID: every
// thread, the kernel's work for its calls included); the bindfs daemon, which
// stands for the server, is measured apart. Before each timed poll the bench
// waits 1.2 s, so that the kernel's FUSE caches (one second) have expired as
// they have for a poll every few seconds.
//
//   bench_share_poll [runs] [work folder] [tree,files,idle] [idle seconds]

#include "BenchStats.h"
#include "DirectoryEntries.h"
#include "FolderEntries.h"
#include "FolderPoller.h"
#include "FolderReaders.h"
#include "FolderSnapshot.h"
#include "MountedShare.h"
#include "SnapshotDiff.h"
#include "WildcardFilter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <cstdio>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace nebra;

namespace {

double cpuMs()
{
    timespec t = {};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) / 1e6;
}

// The part of it spent in the kernel, for this process's calls.
double kernelMs()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_stime.tv_sec) * 1e3 + double(usage.ru_stime.tv_usec) / 1e3;
}

// The daemon's processor time (user + system) in milliseconds, from /proc.
double daemonCpuMs(qint64 pid)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = file.readAll();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return (fields.value(11).toDouble() + fields.value(12).toDouble()) * 1000.0 /
           double(::sysconf(_SC_CLK_TCK));
}

// The plain reading: every folder opened and read, every entry looked at.
int bareWalk(int fd, bool descend, const char* suffix)
{
    int entries = 0;
    readDirectoryEntries(fd, [&](const char* name, unsigned char, quint64) {
        const size_t length = std::strlen(name);
        if (suffix && (length < 4 || std::strcmp(name + length - 4, suffix) != 0))
            return;
        struct stat st = {};
        if (::fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) != 0)
            return;
        ++entries;
        if (descend && S_ISDIR(st.st_mode)) {
            const int child = ::openat(fd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (child >= 0) {
                entries += bareWalk(child, true, nullptr);
                ::close(child);
            }
        }
    });
    return entries;
}

int bareRead(const QByteArray& path, bool descend, const char* suffix = nullptr)
{
    const int fd = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const int entries = fd < 0 ? 0 : bareWalk(fd, descend, suffix);
    if (fd >= 0)
        ::close(fd);
    return entries;
}

struct Timing
{
    bench::Samples wall;
    bench::Samples cpu;
    bench::Samples kernel;
};

// Times each operation in turn, runs times, after the caches have expired.
void alternate(int runs, const std::vector<std::function<void()>>& operations, std::vector<Timing>& timings)
{
    timings.assign(operations.size(), {});
    for (int run = 0; run < runs; ++run) {
        for (size_t i = 0; i < operations.size(); ++i) {
            QThread::msleep(1200);
            QElapsedTimer wall;
            const double cpu = cpuMs();
            const double kernel = kernelMs();
            wall.start();
            operations[i]();
            timings[i].wall.ms << double(wall.nsecsElapsed()) / 1e6;
            timings[i].cpu.ms << cpuMs() - cpu;
            timings[i].kernel.ms << kernelMs() - kernel;
        }
    }
}

void print(const char* what, const Timing& ours, const Timing& bare)
{
    std::printf("%-36s wall %7.1f ms, CPU %6.1f ms (kernel %6.1f) | bare wall %7.1f ms, CPU %6.1f ms (kernel "
                "%6.1f) | ratio wall %.2f, CPU %.2f\n",
                what, ours.wall.median(), ours.cpu.median(), ours.kernel.median(), bare.wall.median(),
                bare.cpu.median(), bare.kernel.median(), ours.wall.median() / bare.wall.median(),
                ours.cpu.median() / bare.cpu.median());
}

void treePoll(const QString& share, int runs)
{
    const QByteArray root = QFile::encodeName(share + QStringLiteral("/t"));
    const auto previous = std::make_shared<FolderSnapshot>(FolderSnapshot::take(root));
    QThread::msleep(1000 * (FolderSnapshot::RacySeconds + 1)); // the tree is quiet now
    *previous = FolderSnapshot::take(root, previous.get());
    int changes = 0;
    const auto poll = [&](bool fullRead) {
        const FolderSnapshot now = FolderSnapshot::take(root, previous.get(), fullRead);
        changes += int(SnapshotDiff::folders(*previous, now, share).size());
    };
    std::vector<Timing> t;
    alternate(runs, {[&] { poll(false); }, [&] { poll(true); }, [&] { bareRead(root, true); }}, t);
    std::printf("tree of %d folders on the share, %d runs, %d changes found (0 expected)\n",
                previous->count(), runs, changes);
    print("poll, quiet tree (trusted folders)", t[0], t[2]);
    print("poll, full read (every 30th poll)", t[1], t[2]);
}

void filesPoll(const QString& share, int runs)
{
    const QByteArray folder = QFile::encodeName(share + QStringLiteral("/f"));
    for (const char* pattern : {"*.*", "*.apr"}) {
        const WildcardFilter filter(QString::fromLatin1(pattern));
        const FolderEntries previous = FolderEntries::take(folder, filter);
        int changes = 0;
        const auto poll = [&] {
            const FolderEntries now = FolderEntries::take(folder, filter);
            changes += int(SnapshotDiff::entries(previous, now, share).changes.size());
        };
        const char* suffix = std::strcmp(pattern, "*.apr") == 0 ? ".apr" : nullptr;
        std::vector<Timing> t;
        alternate(runs, {poll, [&] { bareRead(folder, false, suffix); }}, t);
        std::printf("folder of 20,000 files, filter %s: %zu entries, %d changes found (0 expected)\n",
                    pattern, previous.entries().size(), changes);
        print("poll of the listed folder", t[0], t[1]);
    }
}

void idle(const QString& share, qint64 daemon, const QString& listed, int seconds)
{
    FolderReaders readers;
    FolderPoller poller(readers);
    poller.setIntervals(2, 10);
    QEventLoop loop;
    // The first polls only note what is there, and read every folder: not part of the idle time.
    QSet<QString> first;
    const QMetaObject::Connection noted =
        QObject::connect(&poller, &FolderPoller::polled, [&](const QString& folder) {
            first.insert(folder);
            if (first.size() == 2)
                loop.quit();
        });
    poller.watch({share}, FolderWatchMode::Auto);
    poller.setListedFolder(listed, QStringLiteral("*.apr"));
    loop.exec();
    QObject::disconnect(noted);
    int polls = 0;
    int changes = 0;
    QObject::connect(&poller, &FolderPoller::polled, [&polls] { ++polls; });
    QObject::connect(&poller, &FolderPoller::changed, [&changes] { ++changes; });
    const double cpu = cpuMs();
    const double daemonCpu = daemonCpuMs(daemon);
    QElapsedTimer wall;
    wall.start();
    QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
    loop.exec();
    const double elapsed = double(wall.elapsed());
    std::printf(
        "idle %d s, list on %s: %d polls, %d changes; processor share: ours %.3f%%, bindfs daemon %.3f%%\n",
        seconds, qPrintable(listed.mid(share.size())), polls, changes, 100.0 * (cpuMs() - cpu) / elapsed,
        100.0 * (daemonCpuMs(daemon) - daemonCpu) / elapsed);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? std::atoi(argv[1]) : 5;
    QTemporaryDir temporary(argc > 2 ? QString::fromLocal8Bit(argv[2]) + QStringLiteral("/bench-XXXXXX")
                                     : QDir::tempPath() + QStringLiteral("/bench-XXXXXX"));
    const QString parts = argc > 3 ? QString::fromLatin1(argv[3]) : QStringLiteral("tree,files,idle");
    const int idleSeconds = argc > 4 ? std::atoi(argv[4]) : 60;
    if (const QString reason = test::FuseShare::unavailableReason(); !reason.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(reason));
        return 1;
    }
    const QString backing = temporary.filePath(QStringLiteral("backing"));
    QDir().mkpath(backing);
    QProcess::execute(QStringLiteral("/bin/bash"),
                      {QStringLiteral("-c"), QStringLiteral("cd '%1' && mkdir -p t/{1..100}/{1..99} f p && "
                                                            "(cd f && touch {1..4000}.apr {1..16000}.txt) && "
                                                            "(cd p && touch {1..40}.apr {1..160}.txt)")
                                                 .arg(backing)});
    const QString share = temporary.filePath(QStringLiteral("share"));
    test::FuseShare mount;
    if (!mount.mount(backing, share))
        return 1;
    if (parts.contains(QLatin1String("tree")))
        treePoll(share, runs);
    if (parts.contains(QLatin1String("files")))
        filesPoll(share, runs);
    if (parts.contains(QLatin1String("idle"))) {
        idle(share, mount.daemonPid(), share + QStringLiteral("/p"), idleSeconds);
        idle(share, mount.daemonPid(), share + QStringLiteral("/f"), idleSeconds);
    }
    return 0;
}
