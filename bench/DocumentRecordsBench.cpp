// Documents in the audit trail, each part beside a plain baseline in the same run:
//   first   the first fingerprinting of every document (read, SHA-256, one audit entry each) beside
//           sha256sum over the same files;
//   rescan  a rescan of the unchanged documents beside a bare fstatat walk of the same folders;
//   latency a document changed on disk (inotify) to its "Changed outside the suite" state, and to
//           its entry committed.
//
//   bench_document_records [documents] [megabytes] [folder] [changes]
//   (defaults: 10000 documents, 2048 MB in all, the current folder, 200 changes)

#include "BenchStats.h"
#include "BenchStore.h"
#include "DocumentRecorder.h"
#include "EmbeddedSecurityBackend.h"
#include "FolderChangeSource.h"
#include "SecurityStore.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

using namespace nebra;

namespace {

// Waits for signal, at most a minute; false when it did not come.
template <typename Signal> bool waitFor(const DocumentRecorder& recorder, Signal signal, int ms = 600000)
{
    QEventLoop loop;
    QObject::connect(&recorder, signal, &loop, &QEventLoop::quit);
    QTimer::singleShot(ms, &loop, [&] { loop.exit(1); });
    return loop.exec() == 0;
}

// Results under the folder: 100 subfolders of documents of random content.
QStringList makeDocuments(const QString& results, int count, qint64 bytes)
{
    QStringList paths;
    const qint64 each = bytes / count;
    QByteArray content(each, Qt::Uninitialized);
    for (int i = 0; i < count; ++i) {
        const QString folder = results + QStringLiteral("/%1").arg(i % 100);
        if (i < 100)
            QDir().mkpath(folder);
        for (qint64 j = 0; j < each; j += 8)
            *reinterpret_cast<quint64*>(content.data() + j) = QRandomGenerator::global()->generate64();
        QFile file(folder + QStringLiteral("/plate %1.ars").arg(i));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != each)
            qFatal("Cannot write %s", qPrintable(file.fileName()));
        paths.append(file.fileName());
    }
    return paths;
}

double sha256sumMs(const QStringList& paths)
{
    QElapsedTimer clock;
    clock.start();
    QProcess process;
    process.start(QStringLiteral("xargs"), {QStringLiteral("-0"), QStringLiteral("sha256sum")});
    process.waitForStarted();
    process.write(paths.join(QChar(0)).toUtf8());
    process.closeWriteChannel();
    while (process.state() != QProcess::NotRunning) {
        process.waitForFinished(100);
        process.readAllStandardOutput();
    }
    return clock.nsecsElapsed() / 1e6;
}

// The plain walk: every folder read, every entry stat-ed, nothing else.
int bareWalk(const QByteArray& folder)
{
    int files = 0;
    DIR* dir = ::opendir(folder.constData());
    if (!dir)
        return 0;
    while (const dirent* entry = ::readdir(dir)) {
        if (entry->d_name[0] == '.')
            continue;
        struct stat st;
        if (::fstatat(::dirfd(dir), entry->d_name, &st, 0) != 0)
            continue;
        if (S_ISDIR(st.st_mode))
            files += bareWalk(folder + '/' + entry->d_name);
        else
            ++files;
    }
    ::closedir(dir);
    return files;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const int count = args.value(1, QStringLiteral("10000")).toInt();
    const qint64 bytes = args.value(2, QStringLiteral("2048")).toLongLong() << 20;
    QTemporaryDir dir(args.value(3, QDir::currentPath()) + QStringLiteral("/documents-XXXXXX"));
    const int changes = args.value(4, QStringLiteral("200")).toInt();

    EmbeddedSecurityBackend backend(bench::newStoreIn(dir.path()));
    const QString results = dir.filePath(QStringLiteral("Results"));
    const QStringList paths = makeDocuments(results, count, bytes);
    DocumentFolders folders({{results, {QStringLiteral("*.ars")}}});
    std::printf("%d documents, %.0f MB, in %s; %d threads read\n", count, bytes / 1048576.0,
                qPrintable(dir.path()), QThread::idealThreadCount());

    // First fingerprinting, sha256sum before and after (the files are in the page cache for both).
    const double sumBefore = sha256sumMs(paths);
    DocumentRecorder recorder(folders, backend.documentWriter(QStringLiteral("bench")), nullptr);
    QElapsedTimer clock;
    clock.start();
    recorder.start();
    if (!waitFor(recorder, &DocumentRecorder::idle))
        qFatal("The first fingerprinting did not end");
    const double firstMs = clock.nsecsElapsed() / 1e6;
    const double sumAfter = sha256sumMs(paths);
    const double sumMs = (sumBefore + sumAfter) / 2;
    clock.start();
    for (const QString& path : paths)
        DocumentFolders::fingerprint(path);
    const double oneThreadMs = clock.nsecsElapsed() / 1e6;
    std::printf("reading and hashing alone, one thread: %.0f ms (%.0f MB/s)\n", oneThreadMs,
                bytes / 1048.576 / oneThreadMs);
    std::printf("first fingerprinting: %.0f ms (%.0f MB/s); sha256sum %.0f ms (%.0f MB/s); ratio %.2f\n",
                firstMs, bytes / 1048.576 / firstMs, sumMs, bytes / 1048.576 / sumMs, firstMs / sumMs);

    // Rescan of the unchanged documents, beside the bare walk; medians of 5.
    const bench::Samples rescan = bench::timed(1, 5, [&](int) {
        recorder.rescan();
        waitFor(recorder, &DocumentRecorder::idle);
    });
    int walked = 0;
    const bench::Samples walk =
        bench::timed(1, 5, [&](int) { walked = bareWalk(QFile::encodeName(results)); });
    std::printf("rescan of %d unchanged: %.1f ms; bare fstatat walk of %d: %.1f ms; ratio %.2f\n", count,
                rescan.median(), walked, walk.median(), rescan.median() / walk.median());

    // A document changed on disk to its state, and to its entry, through the kernel's notifications.
    FolderChangeSource source;
    if (!source.open() || !source.watch({results}))
        qFatal("Cannot watch %s", qPrintable(results));
    while (source.isWalking())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QObject::connect(&source, &FolderChangeSource::changed, &recorder, &DocumentRecorder::noticeChange);
    QList<double> toState;
    QList<double> toEntry;
    for (int i = 0; i < changes; ++i) {
        const QString path = paths.at(i * (count / changes));
        QFile file(path);
        clock.start();
        if (!file.open(QIODevice::Append) || file.write("changed") != 7)
            qFatal("Cannot change %s", qPrintable(path));
        file.close();
        QEventLoop loop;
        QObject::connect(&recorder, &DocumentRecorder::stateChanged, &loop, [&](const QString& changed) {
            if (changed == path && recorder.state(path) == RecordState::ChangedOutside)
                loop.quit();
        });
        loop.exec();
        toState << clock.nsecsElapsed() / 1e6;
        waitFor(recorder, &DocumentRecorder::idle);
        toEntry << clock.nsecsElapsed() / 1e6;
    }
    std::printf("change -> \"Changed outside the suite\" (%d changes): median %.2f ms, p95 %.2f ms\n",
                changes, bench::median(toState), bench::percentile(toState, 0.95));
    std::printf("change -> entry committed: median %.2f ms, p95 %.2f ms\n", bench::median(toEntry),
                bench::percentile(toEntry, 0.95));
    return 0;
}
