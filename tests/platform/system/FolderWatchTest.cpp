#include "FolderWatch.h"
#include "FolderReaders.h"
#include "MountedShare.h"
#include "TestFiles.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

class FolderWatchTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A change is reported; a folder missing when asked, or removed, is
    // watched again when asked once it is back.
    void changesOfTheFolderWatchedAreReported()
    {
        QTemporaryDir dir;
        const QString folder = dir.filePath("Results");
        FolderReaders readers;
        FolderWatch watch(readers);
        QSignalSpy changed(&watch, &FolderWatch::changed);
        watch.watch(folder);
        QTRY_VERIFY(watch.folder().isEmpty()); // not there: not watched
        makeFolder(folder);
        watch.watch(folder);
        QTRY_VERIFY((writeFile(folder + "/run.ars"), !changed.isEmpty()));

        QVERIFY(QDir(folder).removeRecursively());
        QTRY_VERIFY(watch.folder().isEmpty());
        makeFolder(folder);
        changed.clear();
        watch.watch(folder);
        QTRY_VERIFY((writeFile(folder + "/again.ars"), !changed.isEmpty()));
    }

    // The watch of a folder on a frozen server is asked for at once and in
    // force once the server answers.
    void aFrozenServerHoldsOnlyTheWatch()
    {
        test::MountedShare share;
        if (!share.made())
            return;
        makeFolder(share.backing + "/Results");
        FolderReaders readers;
        FolderWatch watch(readers);
        QSignalSpy changed(&watch, &FolderWatch::changed);
        share.fuse.freeze();
        QElapsedTimer clock;
        clock.start();
        watch.watch(share.mount + "/Results");
        QVERIFY(clock.elapsed() < 1000);
        share.fuse.thaw();
        QTRY_VERIFY_WITH_TIMEOUT((writeFile(share.mount + "/Results/run.ars"), !changed.isEmpty()), 10000);
    }
};

QTEST_GUILESS_MAIN(FolderWatchTest)
#include "FolderWatchTest.moc"
