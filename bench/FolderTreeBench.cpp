// Building the folder tree from the disk (the node store, the control and
// its first painting) beside the cheapest walk that makes the same captions
// (getdents64 on folders opened relative to their parents), and beside a
// plain QStandardItemModel over the same folders, in the same run; peak
// memory of our build and of the plain model, each in a fresh process.
// Makes its own data: a tree of Results/<year>/<month>/run-N/raw folders of
// about 10,000 and 100,000 folders.
//
//   bench_folder_tree [rounds] [work folder]

#include "BenchStats.h"
#include "FolderBranches.h"
#include "FolderTreeControl.h"
#include "FolderTreeModel.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTreeView>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

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

struct LinuxDirent64
{
    quint64 d_ino;
    qint64 d_off;
    unsigned short d_reclen;
    unsigned char d_type;
    char d_name[1];
};

// The limit: getdents64 on a folder opened relative to its parent, the
// subfolders' captions made and put in the order the tree shows, and
// nothing else (no identity, no path, no node).
int scanWalk(int fd, std::vector<QString>& captions)
{
    std::vector<std::pair<QString, QByteArray>> folders;
    alignas(8) char buffer[32768];
    long read = 0;
    while ((read = ::syscall(SYS_getdents64, fd, buffer, sizeof buffer)) > 0)
        for (long offset = 0; offset < read;) {
            const auto* entry = reinterpret_cast<const LinuxDirent64*>(buffer + offset);
            offset += entry->d_reclen;
            const char* name = entry->d_name;
            if (name[0] == '.' && (!name[1] || (name[1] == '.' && !name[2])))
                continue;
            bool folder = entry->d_type == DT_DIR;
            if (entry->d_type == DT_UNKNOWN) {
                struct stat st = {};
                folder = ::fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
            }
            if (folder)
                folders.emplace_back(QString::fromUtf8(name), QByteArray(name));
        }
    std::sort(folders.begin(), folders.end(),
              [](const auto& a, const auto& b) { return a.first.compare(b.first, Qt::CaseInsensitive) < 0; });
    int count = int(folders.size());
    for (auto& [caption, raw] : folders) {
        captions.push_back(std::move(caption));
        const int child = ::openat(fd, raw.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (child >= 0) {
            count += scanWalk(child, captions);
            ::close(child);
        }
    }
    return count;
}

int scanWalk(const std::string& path)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return 0;
    std::vector<QString> captions;
    const int count = scanWalk(fd, captions);
    ::close(fd);
    return count;
}

// CPU time of this thread (user and system), which other processes on a
// busy machine do not stretch as they stretch the wall-clock time.
double threadCpuMs()
{
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return ts.tv_sec * 1e3 + ts.tv_nsec / 1e6;
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
    }).AddSubFolderNodes(results, branch, DocumentType::Results);
    control.endUpdate();
    control.grab(); // lays out and paints the visible rows
    nodes = control.count() - 1;
    return elapsedMs(timer);
}

// The plain item model over the same folders: one QStandardItem per folder
// holding its caption, shown in a QTreeView painted once.
void plainItems(int fd, QStandardItem* parent)
{
    std::vector<QString> captions;
    std::vector<QByteArray> raw;
    {
        // List the folder, then open each child below it.
        alignas(8) char buffer[32768];
        long read = 0;
        std::vector<std::pair<QString, QByteArray>> folders;
        while ((read = ::syscall(SYS_getdents64, fd, buffer, sizeof buffer)) > 0)
            for (long offset = 0; offset < read;) {
                const auto* entry = reinterpret_cast<const LinuxDirent64*>(buffer + offset);
                offset += entry->d_reclen;
                const char* name = entry->d_name;
                if (entry->d_type != DT_DIR || (name[0] == '.' && (!name[1] || (name[1] == '.' && !name[2]))))
                    continue;
                folders.emplace_back(QString::fromUtf8(name), QByteArray(name));
            }
        std::sort(folders.begin(), folders.end(), [](const auto& a, const auto& b) {
            return a.first.compare(b.first, Qt::CaseInsensitive) < 0;
        });
        for (auto& [caption, name] : folders) {
            captions.push_back(std::move(caption));
            raw.push_back(std::move(name));
        }
    }
    for (size_t i = 0; i < captions.size(); ++i) {
        auto* item = new QStandardItem(captions[i]);
        parent->appendRow(item);
        const int child = ::openat(fd, raw[i].constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (child >= 0) {
            plainItems(child, item);
            ::close(child);
        }
    }
}

double plainBuild(const QString& results, int& nodes)
{
    QElapsedTimer timer;
    timer.start();
    QStandardItemModel model;
    QTreeView view;
    view.resize(300, 600);
    auto* branch = new QStandardItem(QStringLiteral("Results"));
    model.appendRow(branch);
    const int fd = ::open(QFile::encodeName(results).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    plainItems(fd, branch);
    ::close(fd);
    view.setModel(&model);
    view.expand(model.index(0, 0));
    view.grab();
    std::function<int(QStandardItem*)> count = [&count](QStandardItem* item) {
        int n = item->rowCount();
        for (int r = 0; r < item->rowCount(); ++r)
            n += count(item->child(r));
        return n;
    };
    nodes = count(branch);
    return elapsedMs(timer);
}

size_t heapInUse()
{
    return mallinfo2().uordblks;
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

// One build in a fresh process, for its peak resident memory.
int memoryChild(const QString& mode, const QString& results)
{
    int nodes = 0;
    const long before = peakKilobytes();
    const double ms =
        mode == QLatin1String("ours") ? organiserBuild(results, nodes) : plainBuild(results, nodes);
    std::printf("%ld %ld %d %.1f\n", before, peakKilobytes(), nodes, ms);
    return 0;
}

void memoryRow(const QString& self, const QString& mode, const QString& results, const char* label)
{
    QProcess child;
    child.start(self, {QStringLiteral("memory-") + mode, results});
    child.waitForFinished(300000);
    const QList<QByteArray> fields = child.readAllStandardOutput().simplified().split(' ');
    if (fields.size() < 4)
        return;
    std::printf("  %s peak resident %.1f MB (%.1f MB before the build), %s nodes, %s ms\n", label,
                fields[1].toDouble() / 1024, fields[0].toDouble() / 1024, fields[2].constData(),
                fields[3].constData());
}

void run(const QString& work, int folders, int rounds)
{
    const QString results = work + QStringLiteral("/Results %1").arg(folders);
    QElapsedTimer making;
    making.start();
    const int made = makeTree(results, folders);
    std::printf("\n%d folders (made in %.1f s)\n", made, making.elapsed() / 1000.0);
    const std::string rawPath = QFile::encodeName(results).toStdString();
    scanWalk(rawPath); // warm the caches for both

    std::vector<double> walk, ours, plain, walkCpu, ourCpu, plainCpu;
    int walkCount = 0, ourCount = 0, plainCount = 0;
    for (int i = 0; i < rounds; ++i) {
        // Alternate which goes first, so neither always runs on the other's warm caches.
        const auto timeWalk = [&] {
            QElapsedTimer timer;
            const double cpu = threadCpuMs();
            timer.start();
            walkCount = scanWalk(rawPath);
            walk.push_back(elapsedMs(timer));
            walkCpu.push_back(threadCpuMs() - cpu);
        };
        if (i % 2 == 0)
            timeWalk();
        double cpu = threadCpuMs();
        ours.push_back(organiserBuild(results, ourCount));
        ourCpu.push_back(threadCpuMs() - cpu);
        if (i % 2 == 1)
            timeWalk();
        cpu = threadCpuMs();
        plain.push_back(plainBuild(results, plainCount));
        plainCpu.push_back(threadCpuMs() - cpu);
    }
    // Memory of the node store alone, per folder node (strings and the path index included).
    const size_t before = heapInUse();
    {
        FolderTreeModel model;
        const FolderNode branch = model.addNode(QStringLiteral("Results"));
        branch.setFolderPath(results);
        model.beginUpdate();
        FolderBranches(model, [] { return 0u; }).AddSubFolderNodes(results, branch, DocumentType::Results);
        model.endUpdate();
        const size_t after = heapInUse();
        std::printf("  node store: %.0f bytes per folder node\n",
                    double(after - before) / (model.count() - 1));
    }
    std::printf("  getdents64 + openat walk, captions sorted: %8.1f ms  (%d folders)\n", median(walk),
                walkCount);
    std::printf("  tree build (store, view, paint):           %8.1f ms  (%d nodes)\n", median(ours),
                ourCount);
    std::printf("  plain QStandardItemModel + QTreeView:      %8.1f ms  (%d items)\n", median(plain),
                plainCount);
    std::printf("  ratio tree / walk:                         %8.2f  (target 1.3)\n",
                median(ours) / median(walk));
    std::printf("  CPU time: walk %.1f ms, tree %.1f ms, plain model %.1f ms; ratio tree / walk %.2f\n",
                median(walkCpu), median(ourCpu), median(plainCpu), median(ourCpu) / median(walkCpu));
    const QString self = QCoreApplication::applicationFilePath();
    memoryRow(self, QStringLiteral("ours"), results, "tree build:      ");
    memoryRow(self, QStringLiteral("plain"), results, "QStandardItemModel:");
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QString first = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    if (first.startsWith(QLatin1String("memory-")) && argc > 2)
        return memoryChild(first.mid(7), QString::fromLocal8Bit(argv[2]));
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    QTemporaryDir temporary;
    const QString work = argc > 2 ? QString::fromLocal8Bit(argv[2]) : temporary.path();
    std::printf("Folder tree build, medians of %d rounds, warm caches, the two alternating\n", rounds);
    for (int folders : {10000, 100000})
        run(work, folders, rounds);
    return 0;
}
