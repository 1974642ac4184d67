// How soon a change another workstation makes on a file server shows: from
// a document or folder written to the backing folder of a FUSE share (bindfs,
// as tests make them) to its row in the file list or its folder reported to
// the tree, median and p95 over the changes, beside the poll interval the
// Organiser uses for each (target: p95 within the interval plus 0.5 s).
//
// The list is a FileListControl on a folder of the share, re-read when the
// poller reports it changed; the tree is the poller's report of the new
// folder (SHCNE_MKDIR), from which the tree adds its node at once. Changes
// alternate between the two, each made once the previous one showed, so a
// change lands at a random point of the interval as a user's does.
//
//   bench_share_latency [changes] [list seconds] [tree seconds] [work folder]

#include "BenchStats.h"
#include "FileListControl.h"
#include "FolderPoller.h"
#include "FolderReaders.h"
#include "MountedShare.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace nebra;

namespace {

// Runs the event loop until shown() holds, rechecked whenever signal fires; -1 after 30 s.
template <typename Sender, typename Signal>
double timeUntil(Sender* sender, Signal signal, std::function<bool()> shown)
{
    QElapsedTimer clock;
    clock.start();
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, [&] {
        if (shown())
            loop.quit();
    });
    QTimer::singleShot(30000, &loop, &QEventLoop::quit);
    if (!shown())
        loop.exec();
    return shown() ? clock.nsecsElapsed() / 1e6 : -1;
}

bool listShows(const FileListControl& list, const QString& name)
{
    for (int i = list.itemCount(); i >= 1; --i) {
        if (list.item(i).name() == name)
            return true;
    }
    return false;
}

void report(const char* what, const std::vector<double>& ms, int seconds)
{
    std::printf(
        "  %-28s %4zu changes  median %7.0f ms  p95 %7.0f ms  max %7.0f ms  (interval %d s, target p95 "
        "%d ms)\n",
        what, ms.size(), bench::median(ms), bench::percentile(ms, 0.95),
        ms.empty() ? 0.0 : *std::max_element(ms.begin(), ms.end()), seconds, seconds * 1000 + 500);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int changes = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 200;
    const int listSeconds = argc > 2 ? QString::fromLocal8Bit(argv[2]).toInt() : 2;
    const int treeSeconds = argc > 3 ? QString::fromLocal8Bit(argv[3]).toInt() : 2;
    QTemporaryDir work(argc > 4 ? QString::fromLocal8Bit(argv[4]) + QStringLiteral("/share-latency-XXXXXX")
                                : QDir::tempPath() + QStringLiteral("/share-latency-XXXXXX"));
    if (const QString reason = test::FuseShare::unavailableReason(); !reason.isEmpty()) {
        std::fprintf(stderr, "No FUSE share can be made: %s\n", qPrintable(reason));
        return 2;
    }
    const QString backing = work.filePath(QStringLiteral("backing"));
    const QString mount = work.filePath(QStringLiteral("share"));
    QDir().mkpath(backing + QStringLiteral("/Results/list"));
    test::FuseShare share;
    if (!share.mount(backing, mount)) {
        std::fprintf(stderr, "bindfs did not mount the share\n");
        return 2;
    }

    FolderReaders readers;
    FolderPoller poller(readers);
    poller.setIntervals(listSeconds, treeSeconds);
    FileListControl list;
    QSet<QString> made;
    QObject::connect(&poller, &FolderPoller::listedFolderChanged, &list, &FileListControl::refresh);
    QObject::connect(&poller, &FolderPoller::changed, &poller, [&made](const FolderChange& change) {
        if (change.event == ShellEvent::SHCNE_MKDIR)
            made.insert(change.path1);
    });
    const QString listed = mount + QStringLiteral("/Results/list");
    list.setFolder(listed);
    timeUntil(&list, &FileListControl::listed, [&list] { return !list.isListing(); });
    // The first poll of each only notes what is there.
    QSet<QString> polled;
    QObject::connect(&poller, &FolderPoller::polled, &poller,
                     [&polled](const QString& folder) { polled.insert(folder); });
    poller.watch({mount}, FolderWatchMode::Poll);
    poller.setListedFolder(listed, QStringLiteral("*.*"));
    timeUntil(&poller, &FolderPoller::polled, [&] {
        return polled.contains(QDir::cleanPath(mount)) && polled.contains(QDir::cleanPath(listed));
    });

    std::vector<double> rows, nodes;
    for (int i = 0; i < changes; ++i) {
        if (i % 2 == 0) {
            const QString name = QStringLiteral("run %1.ars").arg(i);
            QFile file(backing + QStringLiteral("/Results/list/") + name);
            if (!file.open(QIODevice::WriteOnly))
                return 1;
            file.close();
            rows.push_back(timeUntil(&list, &FileListControl::listed, [&] { return listShows(list, name); }));
        } else {
            const QString name = QStringLiteral("Run %1").arg(i);
            QDir().mkdir(backing + QStringLiteral("/Results/") + name);
            const QString path = mount + QStringLiteral("/Results/") + name;
            nodes.push_back(timeUntil(&poller, &FolderPoller::changed, [&] { return made.contains(path); }));
        }
    }
    std::printf("Change on the backing folder of a bindfs share to the Organiser showing it\n");
    report("row in the file list", rows, listSeconds);
    report("folder reported to the tree", nodes, treeSeconds);
    std::vector<double> all = rows;
    all.insert(all.end(), nodes.begin(), nodes.end());
    const long missed = std::count(all.begin(), all.end(), -1.0);
    std::printf("  missed (not shown in 30 s): %ld\n", missed);
    return missed == 0 ? 0 : 1;
}
