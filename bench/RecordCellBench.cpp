// How soon the file list's "Record" cell shows a change another process made:
// from a document appended to on disk to the list's view painted with its
// cell "Changed outside the suite", median and p95 over the changes, beside
// the recorder's own part in the same run (the change to its state, the plain
// baseline the list adds to).
//
// The chain is the Organiser's: the kernel's notifications (FolderChangeSource)
// feed the recorder (DocumentRecorder) over an embedded store; its
// stateChanged updates the list (FileListControl::updateItem), whose column
// reads the recorder's state. Each change is made once the previous one
// showed, on a document scrolled into view.
//
//   QT_QPA_PLATFORM=offscreen bench_record_cell [changes] [documents] [folder]

#include "BenchStats.h"
#include "BenchStore.h"
#include "DocumentRecorder.h"
#include "EmbeddedSecurityBackend.h"
#include "FileListControl.h"
#include "FolderChangeSource.h"
#include "SecurityStore.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeView>

#include <cstdio>

using namespace nebra;

namespace {

// Quits its loop at the first paint of the view once the document shows as changed.
class PaintWatch : public QObject
{
public:
    std::function<bool()> shown;
    QEventLoop* loop = nullptr;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && loop && shown()) {
            // After the paint itself: the cell is on the screen then.
            QTimer::singleShot(0, loop, &QEventLoop::quit);
        }
        return QObject::eventFilter(watched, event);
    }
};

bool waitUntil(const std::function<bool()>& done, int ms = 60000)
{
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    return done();
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    const int changes = args.value(1, QStringLiteral("200")).toInt();
    const int count = args.value(2, QStringLiteral("500")).toInt();
    QTemporaryDir dir(args.value(3, QDir::currentPath()) + QStringLiteral("/record-cell-XXXXXX"));

    EmbeddedSecurityBackend backend(bench::newStoreIn(dir.path()));
    const QString results = dir.filePath(QStringLiteral("Results"));
    QDir().mkpath(results);
    QStringList paths;
    for (int i = 0; i < count; ++i) {
        QFile file(results + QStringLiteral("/plate %1.ars").arg(i, 5, 10, QLatin1Char('0')));
        if (!file.open(QIODevice::WriteOnly) || file.write(QByteArray(4096, char('a' + i % 26))) != 4096)
            qFatal("Cannot write %s", qPrintable(file.fileName()));
        paths.append(file.fileName());
    }

    DocumentRecorder recorder(DocumentFolders({{results, {QStringLiteral("*.ars")}}}),
                              backend.documentWriter(QStringLiteral("bench")), nullptr);
    bool idle = false;
    QObject::connect(&recorder, &DocumentRecorder::idle, [&] { idle = true; });
    recorder.start();
    if (!waitUntil([&] { return idle; }))
        qFatal("The first fingerprinting did not end");

    FileListControl list;
    list.addColumn(QStringLiteral("Record"), [&recorder](const QString& path, int role) {
        return role == Qt::DisplayRole ? QVariant(DocumentEntries::caption(recorder.state(path)))
                                       : QVariant();
    });
    QObject::connect(&recorder, &DocumentRecorder::stateChanged, &list, &FileListControl::updateItem);
    list.setFilter(QStringLiteral("*.ars"));
    list.setFolder(results);
    list.resize(900, 600);
    list.show();
    if (!waitUntil([&] { return !list.isListing() && list.itemCount() == count; }))
        qFatal("The list did not show %s", qPrintable(results));

    FolderChangeSource source;
    if (!source.open() || !source.watch({results}))
        qFatal("Cannot watch %s", qPrintable(results));
    while (source.isWalking())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QObject::connect(&source, &FolderChangeSource::changed, &recorder, &DocumentRecorder::noticeChange);
    PaintWatch watch;
    list.view()->viewport()->installEventFilter(&watch);

    QList<double> toState;
    QList<double> toCell;
    QElapsedTimer clock;
    for (int i = 0; i < changes; ++i) {
        const QString path = paths.at(i * (count / changes) % count);
        for (int row = 1; row <= list.itemCount(); ++row)
            if (list.item(row).path() == path)
                list.ensureItemVisible(list.item(row));
        QCoreApplication::processEvents();
        double stateMs = -1;
        auto changed = [&] { return recorder.state(path) == RecordState::ChangedOutside; };
        QEventLoop loop;
        const QMetaObject::Connection seen =
            QObject::connect(&recorder, &DocumentRecorder::stateChanged, [&](const QString& p) {
                if (p == path && changed() && stateMs < 0)
                    stateMs = clock.nsecsElapsed() / 1e6;
            });
        watch.shown = changed;
        watch.loop = &loop;
        QTimer::singleShot(30000, &loop, &QEventLoop::quit);
        idle = false;
        QFile file(path);
        clock.start();
        if (!file.open(QIODevice::Append) || file.write("changed") != 7)
            qFatal("Cannot change %s", qPrintable(path));
        file.close();
        loop.exec();
        toCell << clock.nsecsElapsed() / 1e6;
        toState << stateMs;
        watch.loop = nullptr;
        QObject::disconnect(seen);
        waitUntil([&] { return idle; }); // its entry written before the next change
    }
    std::printf("%d changes to %d listed documents in %s\n", changes, count, qPrintable(results));
    std::printf("change -> recorder's state: median %.2f ms, p95 %.2f ms\n", bench::median(toState),
                bench::percentile(toState, 0.95));
    std::printf("change -> \"Record\" cell painted: median %.2f ms, p95 %.2f ms; ratio of medians %.2f\n",
                bench::median(toCell), bench::percentile(toCell, 0.95),
                bench::median(toCell) / bench::median(toState));
    return 0;
}
