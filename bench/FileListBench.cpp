// Listing one folder in the file list (filter, listing, sorting by "Date
// Modified", the newest selected and scrolled into view) beside a plain
// readdir that stats only the matching names and sorts on the raw st_mtim,
// in the same run. For context it also times QDir sorting by time. Makes
// its own data: flat folders of 10,000 and 100,000 files, 20% of them
// "*.apr", with varied modification times.
//
// Then the filter box on the whole 100,000-file folder ("*.*"): each
// keystroke (typing, Backspace, Escape) timed from the key event to the
// list repainted, beside the listing of that folder in the same run.
//
//   bench_file_list [rounds] [work folder] [filter]   ("filter": only the filter box)

#include "BenchStats.h"
#include "FileListControl.h"
#include "FileListFilterBox.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QKeyEvent>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTreeView>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace nebra;

using nebra::bench::median;
using nebra::bench::percentile;

namespace {

void makeFolder(const QString& folder, int files)
{
    QDir().mkpath(folder);
    const QByteArray base = QFile::encodeName(folder);
    QRandomGenerator random(files);
    const char* others[] = {".txt", ".mht", ".dat", ".csv"};
    for (int i = 0; i < files; ++i) {
        const bool match = i % 5 == 0;
        const QByteArray name = base + "/plate " + QByteArray::number(i) + (match ? ".apr" : others[i % 4]);
        const int fd = ::open(name.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        const struct timespec times[2] = {
            {1600000000 + random.bounded(100000000), long(random.bounded(999999999))},
            {1600000000 + random.bounded(100000000), long(random.bounded(999999999))}};
        ::futimens(fd, times);
        ::close(fd);
    }
}

struct RawEntry
{
    std::string name;
    struct timespec mtime;
};

size_t rawListing(const std::string& folder)
{
    std::vector<RawEntry> entries;
    DIR* dir = ::opendir(folder.c_str());
    const int fd = ::dirfd(dir);
    while (const dirent* entry = ::readdir(dir)) {
        const size_t length = std::strlen(entry->d_name);
        if (length < 4 || ::strcasecmp(entry->d_name + length - 4, ".apr") != 0)
            continue;
        struct stat st = {};
        if (::fstatat(fd, entry->d_name, &st, 0) == 0)
            entries.push_back({entry->d_name, st.st_mtim});
    }
    ::closedir(dir);
    std::sort(entries.begin(), entries.end(), [](const RawEntry& a, const RawEntry& b) {
        return a.mtime.tv_sec != b.mtime.tv_sec ? a.mtime.tv_sec < b.mtime.tv_sec
                                                : a.mtime.tv_nsec < b.mtime.tv_nsec;
    });
    return entries.size();
}

double elapsedMs(const QElapsedTimer& timer)
{
    return timer.nsecsElapsed() / 1e6;
}

// Runs the event loop until the listing the list asked for is shown.
void waitListed(FileListControl& list)
{
    QEventLoop loop;
    QObject::connect(&list, &FileListControl::listed, &loop, &QEventLoop::quit);
    if (list.isListing())
        loop.exec();
}

// What showing a protocols folder asks of the list: the listing read on a
// reader thread and delivered back, then sorted and its newest selected.
double organiserListing(FileListControl& list, const QString& folder, int& count)
{
    QElapsedTimer timer;
    timer.start();
    list.setFilter(QStringLiteral("*.apr"));
    list.setFolder(folder);
    waitListed(list);
    list.sortByColumn(QStringLiteral("Date Modified"));
    count = list.itemCount();
    const FileListItem newest = list.item(count);
    newest.ensureVisible();
    newest.setSelected(true);
    return elapsedMs(timer);
}

void run(const QString& work, int files, int rounds)
{
    const QString folder = work + QStringLiteral("/Flat %1").arg(files);
    makeFolder(folder, files);
    const std::string rawFolder = QFile::encodeName(folder).toStdString();
    rawListing(rawFolder); // warm the caches for all

    FileListControl list;
    list.resize(600, 400);
    list.addColumn(QStringLiteral("Comment"));
    list.show();
    std::vector<double> raw, ours, painted, qdir;
    size_t rawCount = 0;
    int ourCount = 0;
    for (int i = 0; i < rounds; ++i) {
        QElapsedTimer timer;
        timer.start();
        rawCount = rawListing(rawFolder);
        raw.push_back(elapsedMs(timer));
        list.setFolder(QString()); // a different folder in between, as when the user moves
        waitListed(list);
        ours.push_back(organiserListing(list, folder, ourCount));
        timer.start();
        list.grab();
        painted.push_back(elapsedMs(timer));
        timer.start();
        QDir(folder).entryInfoList({QStringLiteral("*.apr")}, QDir::Files, QDir::Time | QDir::Reversed);
        qdir.push_back(elapsedMs(timer));
    }
    std::printf("\n%d files, %zu matching \"*.apr\"\n", files, rawCount);
    std::printf("  raw readdir + stat matches + sort st_mtim:  %8.1f ms\n", median(raw));
    std::printf("  file list (listing, sort, select newest):   %8.1f ms  (%d items)\n", median(ours),
                ourCount);
    std::printf("  ratio file list / raw:                      %8.2f  (target 2)\n",
                median(ours) / median(raw));
    std::printf("  first paint of the list afterwards:         %8.1f ms\n", median(painted));
    std::printf("  for context, QDir sorted by time:           %8.1f ms  (TZ %s)\n", median(qdir),
                qEnvironmentVariableIsSet("TZ") ? "set" : "unset");
}

double threadCpuMs()
{
    struct timespec now = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

// Wall time of one keystroke; its processor time is added to cpu, which on a
// busy machine tells what the keystroke itself costs.
double keystroke(FileListControl& list, std::vector<double>& cpu, int key, const QString& text = {})
{
    const double cpuStart = threadCpuMs();
    QElapsedTimer timer;
    timer.start();
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(list.filterBox(), &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(list.filterBox(), &release);
    list.filterBox()->repaint();
    list.view()->viewport()->repaint();
    const double wall = elapsedMs(timer);
    cpu.push_back(threadCpuMs() - cpuStart);
    return wall;
}

// Typing "plate 12" letter by letter, Backspace back to "plate", a wildcard
// typed, and Escape: narrowing, widening and clearing.
void runFilter(const QString& work, int files, int rounds)
{
    const QString folder = work + QStringLiteral("/Flat %1").arg(files);
    FileListControl list;
    list.resize(600, 400);
    list.setFilterBoxShown(true);
    list.show();
    std::vector<double> listing, preparing, keys, cpu;
    for (int i = 0; i < rounds; ++i) {
        list.setFolder(QString());
        waitListed(list);
        QElapsedTimer timer;
        timer.start();
        list.setFilter(QStringLiteral("*.*"));
        list.setFolder(folder);
        waitListed(list);
        list.sortByColumn(QStringLiteral("Date Modified"));
        list.itemCount();
        list.view()->viewport()->repaint();
        listing.push_back(elapsedMs(timer));
        timer.start();
        QCoreApplication::processEvents(); // the idle work after a listing, before the user types
        preparing.push_back(elapsedMs(timer));
        for (const QString& typed : {QStringLiteral("plate 12"), QStringLiteral("")}) {
            for (QChar c : typed)
                keys.push_back(keystroke(list, cpu, 0, QString(c)));
        }
        for (int back = 0; back < 3; ++back)
            keys.push_back(keystroke(list, cpu, Qt::Key_Backspace));
        for (QChar c : QStringLiteral("*7.apr"))
            keys.push_back(keystroke(list, cpu, 0, QString(c)));
        keys.push_back(keystroke(list, cpu, Qt::Key_Escape));
    }
    std::printf("\nFilter box on %d files (\"*.*\", all listed), %zu keystrokes\n", list.itemCount(),
                keys.size());
    std::printf("  listing the folder (sorted, painted):        %8.1f ms\n", median(listing));
    std::printf("  names prepared for the filter after it:      %8.1f ms\n", median(preparing));
    std::printf("  keystroke to repaint, median:                %8.2f ms\n", median(keys));
    std::printf("  keystroke to repaint, p99:                   %8.2f ms  (target 16)\n",
                percentile(keys, 0.99));
    std::printf("  processor time per keystroke, median, p99:  %8.2f ms, %.2f ms\n", median(cpu),
                percentile(cpu, 0.99));
    std::printf("  ratio p99 keystroke / listing:               %8.3f\n",
                percentile(keys, 0.99) / median(listing));
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
    std::printf("File list, medians of %d rounds, warm caches\n", rounds);
    const bool filterOnly = argc > 3 && qstrcmp(argv[3], "filter") == 0;
    if (!filterOnly)
        for (int files : {10000, 100000})
            run(work, files, rounds);
    else if (!QFileInfo::exists(work + QStringLiteral("/Flat 100000")))
        makeFolder(work + QStringLiteral("/Flat 100000"), 100000);
    runFilter(work, 100000, rounds * 4);
    return 0;
}
