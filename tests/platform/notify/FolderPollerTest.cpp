#include "FolderPoller.h"
#include "ChangeLines.h"
#include "FolderReaders.h"
#include "MountedShare.h"
#include "SecondProcess.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using nebra::test::runScript;

namespace {

constexpr int Bound = 10000;

// A share another "workstation" writes (the backing folder of the mount,
// changed by a second process behind the kernel's back), and a poller over it.
struct Poll
{
    test::MountedShare s;
    FolderReaders readers;
    FolderPoller poller{readers};
    QStringList changes; // "MKDIR <path>", "RENAMEFOLDER <old>|<new>", with $S for the share

    bool made()
    {
        if (!s.made())
            return false;
        runScript(s.dir.path(),
                  QStringLiteral("mkdir -p 'backing/My Assays/Results/A' 'backing/My Assays/Protocols'"));
        QObject::connect(&poller, &FolderPoller::changed, &poller, [this](const FolderChange& change) {
            changes << test::changeLine(change, s.mount, QStringLiteral("$S"));
        });
        return true;
    }

    // Starts polling the share and waits for its first poll, which only notes what is there.
    void watch(FolderWatchMode mode)
    {
        QSignalSpy polled(&poller, &FolderPoller::polled);
        poller.watch({s.mount}, mode);
        QTRY_VERIFY_WITH_TIMEOUT(polled.count() >= 1, Bound);
        QVERIFY(changes.isEmpty());
    }
};

} // namespace

class FolderPollerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachRootIsPolledOrLeftToTheKernel()
    {
        Poll o;
        if (!o.made())
            return;
        // Auto: the share only; notify: neither; poll: both.
        for (const auto& [mode, localPolled, sharePolled] : {std::tuple{FolderWatchMode::Auto, false, true},
                                                             {FolderWatchMode::Notify, false, false},
                                                             {FolderWatchMode::Poll, true, true}}) {
            QSignalSpy chosen(&o.poller, &FolderPoller::rootChosen);
            o.poller.watch({o.s.backing, o.s.mount}, mode);
            QTRY_COMPARE_WITH_TIMEOUT(chosen.count(), 2, Bound);
            QHash<QString, bool> polled;
            for (const QList<QVariant>& arguments : chosen)
                polled.insert(arguments[0].toString(), arguments[1].toBool());
            QCOMPARE(polled, (QHash<QString, bool>{{o.s.backing, localPolled}, {o.s.mount, sharePolled}}));
        }
    }

    void followsWhatAnotherWorkstationWrites()
    {
        Poll o;
        if (!o.made())
            return;
        o.poller.setIntervals(1, 1);
        o.poller.setListedFolder(o.s.mount + QStringLiteral("/My Assays/Protocols"), QStringLiteral("*.apr"));
        QSignalSpy listChanged(&o.poller, &FolderPoller::listedFolderChanged);
        o.watch(FolderWatchMode::Auto);
        QTRY_COMPARE_WITH_TIMEOUT(listChanged.count(), 1, 3000); // the first look: read again once
        listChanged.clear();

        // A folder made, a folder renamed (through the share's inode numbers) and a
        // file written; which change is which is SnapshotDiffTest's.
        runScript(
            o.s.backing + QStringLiteral("/My Assays"),
            QStringLiteral("mkdir 'Results/Run 7' && mv Results/A Results/B && echo x > Protocols/new.apr"));
        // The interval, the mount's one-second attribute cache, and a margin.
        QTRY_COMPARE_WITH_TIMEOUT(QSet<QString>(o.changes.begin(), o.changes.end()),
                                  (QSet<QString>{"MKDIR $S/My Assays/Results/Run 7",
                                                 "RENAMEFOLDER $S/My Assays/Results/A|$S/My Assays/Results/B",
                                                 "UPDATEITEM $S/My Assays/Protocols/new.apr"}),
                                  4000);
        QCOMPARE(listChanged.count(), 1);
    }

    void aShareThatStopsAnsweringIsWaitedForAndOneThatFailsRemovesNothing()
    {
        Poll o;
        if (!o.made())
            return;
        o.poller.setIntervals(0, 0); // polled only when told
        o.watch(FolderWatchMode::Poll);
        QSignalSpy waiting(&o.poller, &FolderPoller::waiting);
        QSignalSpy polled(&o.poller, &FolderPoller::polled);

        o.s.fuse.freeze();
        runScript(o.s.backing, QStringLiteral("mkdir new"));
        o.poller.pollNow();
        QTRY_COMPARE_WITH_TIMEOUT(waiting.count(), 1, FolderReaders::WaitingAfterMs + 1000);
        QCOMPARE(waiting.first().first().toString(), o.s.mount);
        o.s.fuse.thaw();
        QTRY_COMPARE_WITH_TIMEOUT(o.changes, QStringList{"MKDIR $S/new"}, Bound);

        o.s.fuse.killDaemon(); // every call on the mount now fails
        polled.clear();
        o.poller.pollNow();
        QTRY_COMPARE_WITH_TIMEOUT(polled.count(), 1, Bound);
        QCOMPARE(o.changes, QStringList{"MKDIR $S/new"});
    }
};

QTEST_GUILESS_MAIN(FolderPollerTest)
#include "FolderPollerTest.moc"
