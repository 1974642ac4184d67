#include "FolderPoller.h"
#include "ChangeLines.h"
#include "FolderReaders.h"
#include "FuseShare.h"
#include "SecondProcess.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using nebra::test::runScript;

namespace {

constexpr int Bound = 10000;

} // namespace

// A share another "workstation" writes: the backing folder of a bindfs mount,
// changed by a second process behind the kernel's back.
class FolderPollerTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_backing;
    QString m_mount;
    std::unique_ptr<test::FuseShare> m_share;
    std::unique_ptr<FolderReaders> m_readers;
    std::unique_ptr<FolderPoller> m_poller;
    QStringList m_changes; // "MKDIR <path>", "RENAMEFOLDER <old>|<new>", with $S for the share

    bool share()
    {
        if (const QString reason = test::FuseShare::unavailableReason(); !reason.isEmpty()) {
            QTest::qSkip(qPrintable(reason), __FILE__, __LINE__);
            return false;
        }
        m_backing = m_dir.filePath(QStringLiteral("backing"));
        m_mount = m_dir.filePath(QStringLiteral("share"));
        runScript(m_dir.path(),
                  QStringLiteral("mkdir -p 'backing/My Assays/Results/A' 'backing/My Assays/Protocols' "
                                 "&& echo p > 'backing/My Assays/Protocols/old.apr'"));
        m_share = std::make_unique<test::FuseShare>();
        if (!m_share->mount(m_backing, m_mount)) {
            QTest::qFail("bindfs did not mount the share", __FILE__, __LINE__);
            return false;
        }
        m_readers = std::make_unique<FolderReaders>();
        m_poller = std::make_unique<FolderPoller>(*m_readers);
        connect(m_poller.get(), &FolderPoller::changed, this, [this](const FolderChange& change) {
            m_changes << test::changeLine(change, m_mount, QStringLiteral("$S"));
        });
        return true;
    }

    // Starts polling the share and waits for its first poll, which only notes what is there.
    void watchShare(FolderWatchMode mode)
    {
        QSignalSpy polled(m_poller.get(), &FolderPoller::polled);
        m_poller->watch({m_mount}, mode);
        QTRY_VERIFY_WITH_TIMEOUT(polled.count() >= 1, Bound);
        QVERIFY(m_changes.isEmpty());
    }

private Q_SLOTS:
    void cleanup()
    {
        m_poller.reset();
        m_readers.reset();
        m_share.reset();
        m_changes.clear();
    }

    void eachRootIsPolledOrLeftToTheKernel_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("localPolled");
        QTest::addColumn<bool>("sharePolled");
        QTest::newRow("auto: the share only") << int(FolderWatchMode::Auto) << false << true;
        QTest::newRow("notify: neither") << int(FolderWatchMode::Notify) << false << false;
        QTest::newRow("poll: both") << int(FolderWatchMode::Poll) << true << true;
    }

    void eachRootIsPolledOrLeftToTheKernel()
    {
        QFETCH(int, mode);
        QFETCH(bool, localPolled);
        QFETCH(bool, sharePolled);
        if (!share())
            return;
        QSignalSpy chosen(m_poller.get(), &FolderPoller::rootChosen);
        m_poller->watch({m_backing, m_mount}, FolderWatchMode(mode));
        QTRY_COMPARE_WITH_TIMEOUT(chosen.count(), 2, Bound);
        QHash<QString, bool> polled;
        for (const QList<QVariant>& arguments : chosen)
            polled.insert(arguments[0].toString(), arguments[1].toBool());
        QCOMPARE(polled.value(m_backing), localPolled);
        QCOMPARE(polled.value(m_mount), sharePolled);
    }

    void followsWhatAnotherWorkstationWrites()
    {
        if (!share())
            return;
        m_poller->setIntervals(1, 1);
        m_poller->setListedFolder(m_mount + QStringLiteral("/My Assays/Protocols"), QStringLiteral("*.apr"));
        QSignalSpy listChanged(m_poller.get(), &FolderPoller::listedFolderChanged);
        watchShare(FolderWatchMode::Auto);
        QTRY_COMPARE_WITH_TIMEOUT(listChanged.count(), 1, 3000); // the first look: read again once
        listChanged.clear();

        runScript(
            m_backing + QStringLiteral("/My Assays"),
            QStringLiteral("mkdir 'Results/Run 7' && mv Results/A Results/B && echo x > Protocols/new.apr "
                           "&& rm Protocols/old.apr"));
        const QStringList expected{
            QStringLiteral("MKDIR $S/My Assays/Results/Run 7"),
            QStringLiteral("RENAMEFOLDER $S/My Assays/Results/A|$S/My Assays/Results/B"),
            QStringLiteral("UPDATEITEM $S/My Assays/Protocols/new.apr"),
            QStringLiteral("DELETE $S/My Assays/Protocols/old.apr")};
        // The interval, the mount's one-second attribute cache, and a margin.
        QTRY_COMPARE_WITH_TIMEOUT(QSet<QString>(m_changes.begin(), m_changes.end()),
                                  QSet<QString>(expected.begin(), expected.end()), 4000);
        QCOMPARE(listChanged.count(), 1);
    }

    void aShareThatStopsAnsweringIsWaitedForAndOneThatFailsRemovesNothing()
    {
        if (!share())
            return;
        m_poller->setIntervals(0, 0); // polled only when told
        watchShare(FolderWatchMode::Poll);
        QSignalSpy waiting(m_poller.get(), &FolderPoller::waiting);
        QSignalSpy polled(m_poller.get(), &FolderPoller::polled);

        m_share->freeze();
        runScript(m_backing, QStringLiteral("mkdir new"));
        m_poller->pollNow();
        QTRY_COMPARE_WITH_TIMEOUT(waiting.count(), 1, FolderReaders::WaitingAfterMs + 1000);
        QCOMPARE(waiting.first().first().toString(), m_mount);
        m_share->thaw();
        QTRY_COMPARE_WITH_TIMEOUT(m_changes, QStringList{"MKDIR $S/new"}, Bound);

        m_share->killDaemon(); // every call on the mount now fails
        polled.clear();
        m_poller->pollNow();
        QTRY_COMPARE_WITH_TIMEOUT(polled.count(), 1, Bound);
        QCOMPARE(m_changes, QStringList{"MKDIR $S/new"});
    }
};

QTEST_GUILESS_MAIN(FolderPollerTest)
#include "FolderPollerTest.moc"
