// Building the folder tree from the disk (the node store, the control and
// its first painting) beside a plain recursive readdir scan of the same
// folders using d_type, in the same run. Makes its own data: a tree of
// Results/<year>/<month>/run-N/raw folders of about 10,000 and 100,000
// folders.
//
//   bench_folder_tree [rounds] [work folder]

#include "BenchStats.h"
#include "FolderBranches.h"
#include "FolderTreeControl.h"
#include "FolderTreeModel.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTreeView>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <dirent.h>
#include <malloc.h>
#include <sys/stat.h>

using namespace nebra;

using nebra::bench::median;

namespace {

constexpr int Years = 5;
constexpr int Months = 12;

// Results/<year>/<month>/run-N/raw: 65 folders plus two per run.
int makeTree(const QString& results, int folders)
{
    const int runsPerMonth = std::max(1, (folders - Years - Years * Months) / (Years * Months * 2));
    int made = 0;
    for (int y = 0; y < Years; ++y)
        for (int m = 1; m <= Months; ++m)
            for (int r = 0; r < runsPerMonth; ++r) {
                QDir().mkpath(QStringLiteral("%1/%2/%3/run-%4/raw")
                                  .arg(results)
                                  .arg(2022 + y)
                                  .arg(m, 2, 10, QLatin1Char('0'))
                                  .arg(r));
                made += 2;
            }
    return made + Years + Years * Months;
}

int rawScan(const std::string& path)
{
    DIR* dir = ::opendir(path.c_str());
    if (!dir)
        return 0;
    std::vector<std::string> children;
    while (const dirent* entry = ::readdir(dir)) {
        if (entry->d_name[0] == '.' && (!entry->d_name[1] || (entry->d_name[1] == '.' && !entry->d_name[2])))
            continue;
        bool folder = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN) {
            struct stat st = {};
            folder = ::lstat((path + '/' + entry->d_name).c_str(), &st) == 0 && S_ISDIR(st.st_mode);
        }
        if (folder)
            children.push_back(path + '/' + entry->d_name);
    }
    ::closedir(dir);
    int count = int(children.size());
    for (const std::string& child : children)
        count += rawScan(child);
    return count;
}

double elapsedMs(const QElapsedTimer& timer)
{
    return timer.nsecsElapsed() / 1e6;
}

// The tree as the Organiser builds it: one branch node, filled in one
// update, then the control shown and painted once.
double organiserBuild(const QString& results, int& nodes)
{
    QElapsedTimer timer;
    timer.start();
    FolderTreeControl control;
    control.resize(300, 600);
    control.beginUpdate();
    const FolderNode branch = control.addNode(QStringLiteral("Results"));
    branch.setFolderPath(results);
    branch.setData(4);
    branch.setDisplayFlagA(true);
    FolderBranches(control.nodes(), [] {
        return 0xff000000u;
    }).AddSubFolderNodes(results, branch, FolderKind::Results);
    control.endUpdate();
    control.grab(); // lays out and paints the visible rows
    nodes = control.count() - 1;
    return elapsedMs(timer);
}

size_t heapInUse()
{
    return mallinfo2().uordblks;
}

void run(const QString& work, int folders, int rounds)
{
    const QString results = work + QStringLiteral("/Results %1").arg(folders);
    QElapsedTimer making;
    making.start();
    const int made = makeTree(results, folders);
    std::printf("\n%d folders (made in %.1f s)\n", made, making.elapsed() / 1000.0);
    const std::string rawPath = QFile::encodeName(results).toStdString();
    rawScan(rawPath); // warm the caches for both

    std::vector<double> raw, ours;
    int rawCount = 0, ourCount = 0;
    for (int i = 0; i < rounds; ++i) {
        QElapsedTimer timer;
        timer.start();
        rawCount = rawScan(rawPath);
        raw.push_back(elapsedMs(timer));
        ours.push_back(organiserBuild(results, ourCount));
    }
    // Memory of the node store alone, per folder node.
    const size_t before = heapInUse();
    {
        FolderTreeModel model;
        const FolderNode branch = model.addNode(QStringLiteral("Results"));
        model.beginUpdate();
        FolderBranches(model, [] { return 0u; }).AddSubFolderNodes(results, branch, FolderKind::Results);
        model.endUpdate();
        const size_t after = heapInUse();
        std::printf("  node store: %.0f bytes per folder node\n",
                    double(after - before) / (model.count() - 1));
    }
    std::printf("  raw readdir scan (d_type):        %8.1f ms  (%d folders)\n", median(raw), rawCount);
    std::printf("  tree build (store, view, paint):  %8.1f ms  (%d nodes)\n", median(ours), ourCount);
    std::printf("  ratio tree / raw:                 %8.2f  (target 1.5)\n", median(ours) / median(raw));
}

long peakKilobytes()
{
    FILE* status = std::fopen("/proc/self/status", "r");
    char line[256];
    long peak = 0;
    while (status && std::fgets(line, sizeof line, status))
        if (std::strncmp(line, "VmHWM:", 6) == 0)
            peak = std::atol(line + 6);
    if (status)
        std::fclose(status);
    return peak;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    QTemporaryDir temporary;
    const QString work = argc > 2 ? QString::fromLocal8Bit(argv[2]) : temporary.path();
    std::printf("Folder tree build, medians of %d rounds, warm caches\n", rounds);
    for (int folders : {10000, 100000})
        run(work, folders, rounds);
    std::printf("\npeak resident memory: %.1f MB\n", peakKilobytes() / 1024.0);
    return 0;
}
