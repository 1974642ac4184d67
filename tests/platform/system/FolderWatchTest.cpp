#include "FolderWatch.h"
#include "FolderReaders.h"
#include "FuseShare.h"
#include "TestFiles.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using nebra::test::makeFolder;
using nebra::test::writeFile;

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
        if (const QString reason = test::FuseShare::unavailableReason(); !reason.isEmpty())
            QSKIP(qPrintable(reason));
        QTemporaryDir dir;
        test::FuseShare share;
        makeFolder(dir.filePath("backing/Results"));
        QVERIFY(share.mount(dir.filePath("backing"), dir.filePath("share")));
        FolderReaders readers;
        FolderWatch watch(readers);
        QSignalSpy changed(&watch, &FolderWatch::changed);
        share.freeze();
        QElapsedTimer clock;
        clock.start();
        watch.watch(dir.filePath("share/Results"));
        QVERIFY(clock.elapsed() < 1000);
        share.thaw();
        QTRY_VERIFY_WITH_TIMEOUT((writeFile(dir.filePath("share/Results/run.ars")), !changed.isEmpty()),
                                 10000);
    }
};

QTEST_GUILESS_MAIN(FolderWatchTest)
#include "FolderWatchTest.moc"
