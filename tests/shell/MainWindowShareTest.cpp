#include "Controls.h"
#include "DataFolders.h"
#include "FileListControl.h"
#include "FolderReaders.h"
#include "FolderTreeControl.h"
#include "FolderTreeModel.h"
#include "ListingWait.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "MountedShare.h"
#include "RecentDocumentsMenu.h"
#include "SecondProcess.h"
#include "ShellNotifications.h"
#include "ShortcutsBar.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>
#include <QTimer>

using namespace nebra;
using namespace nebra::test;

// The main window follows what another process does to its data folders,
// from start-up to shutdown: on a local disk, and on a share (a bindfs mount
// of a folder another process writes), answering and frozen. The rules
// themselves are tested where they live.
class MainWindowShareTest : public QObject
{
    Q_OBJECT

private:
    static constexpr int FollowedMs = 10000;
    std::unique_ptr<LoadedOrganiser> m_site;
    std::unique_ptr<FuseShare> m_share;
    QString m_backing; // "My Assays" as the other process sees it

    // Mounts the data folders' parent (or the folder named below it) from a
    // backing folder; false (skipped) without FUSE.
    bool shared(const QString& below = {})
    {
        if (const QString reason = FuseShare::unavailableReason(); !reason.isEmpty()) {
            QTest::qSkip(qPrintable(reason), __FILE__, __LINE__);
            return false;
        }
        m_site = std::make_unique<LoadedOrganiser>();
        const QString root = m_site->folders.root();
        m_backing = root + QStringLiteral("/backing/My Assays");
        writeFile(m_backing + QStringLiteral("/Protocols/Elisa.apr"));
        makeFolder(m_backing + QStringLiteral("/Results/Run1"));
        LoadedOrganiser::set(QStringLiteral("Settings/NetworkPollSeconds"), 1);
        LoadedOrganiser::set(QStringLiteral("Settings/NetworkTreePollSeconds"), 1);
        m_share = std::make_unique<FuseShare>();
        if (!m_share->mount(root + QStringLiteral("/backing") + below,
                            root + QStringLiteral("/Lab Data") + below)) {
            QTest::qFail("bindfs did not mount the share", __FILE__, __LINE__);
            return false;
        }
        return true;
    }

private Q_SLOTS:
    void cleanup()
    {
        if (m_share)
            m_share->thaw();
        m_site.reset(); // the window first, then the folders under the mount
        m_share.reset();
    }

    // Which change becomes which node is ShellNotificationsTest's; here the
    // window's tree and list follow the shown folder's removal, and stop at shutdown.
    void treeFollowsTheDisk()
    {
        LoadedOrganiser site;
        const QString results = site.doc(QStringLiteral("Results"));
        makeFolder(results + QStringLiteral("/Run1/sub"));
        writeFile(results + QStringLiteral("/Run1/run.ars"));
        MainWindow& window = site.load();
        QVERIFY(part<ShellNotifications>(window).isActive());
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        tree.setCurrentNode(branch(tree, DocumentType::Results).child(0));
        FileListControl& list = part<FileListControl>(window);
        QVERIFY(waitForListing(list));
        QCOMPARE(list.itemCount(), 2);

        runScript(results, QStringLiteral("rm -r Run1"));
        QTRY_VERIFY_WITH_TIMEOUT(!tree.nodes().findFolderPath(results + QStringLiteral("/Run1")).isValid(),
                                 FollowedMs);
        QCOMPARE(tree.currentNode().folderPath(), QStringLiteral("Organiser"));
        // The root keeps the list, which follows its own folder: a gone folder lists nothing.
        QTRY_COMPARE_WITH_TIMEOUT(list.itemCount(), 0, FollowedMs);
        QVERIFY(site.messages.requests().isEmpty());

        window.close(); // shutdown stops following the disk
        QTRY_VERIFY_WITH_TIMEOUT(!part<ShellNotifications>(window).isActive(), FollowedMs);
    }

    // A data folder moved away and back is a branch again, and its shortcut leads to it.
    void aDataFolderMovedAwayAndBackComesBack()
    {
        LoadedOrganiser site;
        const QString results = site.doc(QStringLiteral("Results"));
        makeFolder(results + QStringLiteral("/Run1"));
        MainWindow& window = site.load();
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        const FolderNode protocols = branch(tree, DocumentType::Protocols);
        runScript(site.doc({}), QStringLiteral("mv Results Away"));
        QTRY_VERIFY_WITH_TIMEOUT(!branch(tree, DocumentType::Results).isValid(), FollowedMs);
        runScript(site.doc({}), QStringLiteral("mv Away Results"));
        QTRY_VERIFY_WITH_TIMEOUT(tree.nodes().findFolderPath(results + QStringLiteral("/Run1")).isValid(),
                                 FollowedMs);
        const FolderNode back = branch(tree, DocumentType::Results);
        QCOMPARE(tree.nodes().indexOf(back).row(), tree.nodes().indexOf(protocols).row() + 1);
        Q_EMIT part<ShortcutsBar>(window).itemClicked(QString::number(toData(DocumentType::Results)));
        QCOMPARE(tree.currentNode(), back);
    }
    // Another workstation's folder and document appear within the poll
    // interval; a frozen server leaves the window answering commands, and
    // the list fills in when the server answers again.
    void aShareIsFollowedAndAFrozenOneWaitedFor()
    {
        if (!shared())
            return;
        MainWindow& window = m_site->load();
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        FileListControl& list = part<FileListControl>(window);
        tree.setCurrentNode(branch(tree, DocumentType::Results));
        QVERIFY(waitForListing(list));

        runScript(m_backing + QStringLiteral("/Results"),
                  QStringLiteral("mkdir Run2 && echo r > 'Run 3.ars'"));
        QTRY_VERIFY_WITH_TIMEOUT(
            tree.nodes().findFolderPath(m_site->doc(QStringLiteral("Results/Run2"))).isValid(), 3000);
        QTRY_COMPARE_WITH_TIMEOUT(list.itemCount(), 3, 3000); // Run1, Run2, Run 3.ars

        m_share->freeze();
        tree.setCurrentNode(branch(tree, DocumentType::Protocols));
        const QString waiting = FileListControl::waitingText(m_site->doc(QStringLiteral("Protocols")));
        QTRY_COMPARE_WITH_TIMEOUT(window.statusBar()->currentMessage(), waiting,
                                  FolderReaders::WaitingAfterMs + 3000);
        const int messages = m_site->messages.count();
        tool(window, CommandId::About).trigger();
        QCOMPARE(m_site->messages.count(), messages + 1);
        m_share->thaw();
        QVERIFY(waitForListing(list, 10000));
        QCOMPARE(list.firstSelectedItem().name(), QStringLiteral("Elisa.apr"));
        QVERIFY(window.statusBar()->currentMessage().isEmpty());
    }

    // Start-up against a frozen server opens the window within the bound,
    // says so once, and builds the tree when the server answers; shutdown
    // with a read stuck on the server ends at once. The parent may answer
    // while the data folders below it do not.
    void aFrozenShareNeitherHoldsTheStartNorTheEnd_data()
    {
        QTest::addColumn<QString>("mounted"); // below the parent
        QTest::newRow("parent") << QString();
        QTest::newRow("data folders") << QStringLiteral("/My Assays");
    }
    void aFrozenShareNeitherHoldsTheStartNorTheEnd()
    {
        QFETCH(QString, mounted);
        if (!shared(mounted))
            return;
        m_share->freeze();
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(m_site->start(), MainWindow::LoadOutcome::Loaded);
        QVERIFY2(clock.elapsed() < 8000, qPrintable(QString::number(clock.elapsed())));
        MainWindow& window = *m_site->window;
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        QTRY_COMPARE_WITH_TIMEOUT(m_site->messages.count(), 1, 3000);
        QVERIFY(m_site->messages.last().text.contains(QStringLiteral("do not answer")));
        QVERIFY(branch(tree, DocumentType::Protocols).text().endsWith(QStringLiteral(" (unavailable)")));

        m_share->thaw();
        QTRY_VERIFY_WITH_TIMEOUT(
            !branch(tree, DocumentType::Results).text().endsWith(QStringLiteral(" (unavailable)")), 10000);
        QTRY_VERIFY(tree.nodes().findFolderPath(m_site->doc(QStringLiteral("Results/Run1"))).isValid());
        // Followed: polled as the root, or as a share below the local root.
        runScript(m_backing + QStringLiteral("/Results"), QStringLiteral("mkdir Run2"));
        QTRY_VERIFY_WITH_TIMEOUT(
            tree.nodes().findFolderPath(m_site->doc(QStringLiteral("Results/Run2"))).isValid(), 5000);

        m_share->freeze();
        tree.setCurrentNode(branch(tree, DocumentType::Results).child(0)); // a read that will not answer
        QCoreApplication::processEvents();                                 // the listing is asked for
        clock.restart();
        window.close();
        m_site->window.reset();
        QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
    }

    // OK in the Options dialog with a parent directory on a frozen server
    // leaves the window answering and refuses the folder it could not check,
    // with one message; once the server answers, OK takes it.
    void theOptionsCheckAFrozenShare()
    {
        if (!shared(QStringLiteral("/Elsewhere")))
            return;
        MainWindow& window = m_site->load();
        const QString typed = m_site->folders.root() + QStringLiteral("/Lab Data/Elsewhere/Data");
        m_share->freeze();
        QString refusedKept; // the parent directory after the refusal
        m_site->dialogs.then([&](QDialog& dialog) {
            control<QLineEdit>(dialog, "txtParentDirectoryPath")->setText(typed);
            QTimer::singleShot(100, &window, [&window] { tool(window, CommandId::About).trigger(); });
            control<QPushButton>(dialog, "OKButton")->click();
            refusedKept = LoadedOrganiser::stored(QStringLiteral("Paths/ParentDirectory")).toString();
            m_share->thaw();
            control<QPushButton>(dialog, "OKButton")->click(); // the question to make it: Yes
            return dialog.result();
        });
        tool(window, CommandId::Options).trigger();
        QCOMPARE(m_site->messages.count(), 3); // About, the folder's silence, the question
        QCOMPARE(m_site->messages.requests().at(1).text, DataFolders::notAnsweringText(typed));
        QCOMPARE(refusedKept, m_site->folders.root() + QStringLiteral("/Lab Data"));
        QCOMPARE(LoadedOrganiser::stored(QStringLiteral("Paths/ParentDirectory")).toString(), typed);
    }

    // Started while the server is frozen: the log-in goes on and File > Recent
    // lists its documents at once (a document whose check has not answered
    // stays listed). When the server answers, the vanished one leaves the
    // menu and the secured folder is made.
    void aStartOnAFrozenShareWaitsForNothing()
    {
        if (!shared())
            return;
        const QString secured = m_site->folders.root() + QStringLiteral("/Lab Data/Secured/Site");
        LoadedOrganiser::set(QStringLiteral("Paths/SecuredFolder"), secured);
        LoadedOrganiser::set(QStringLiteral("Settings/RecentDocuments"),
                             QStringList{m_site->doc(QStringLiteral("Protocols/Gone.apr")),
                                         m_site->doc(QStringLiteral("Protocols/Elisa.apr"))});
        m_site->secure();
        m_share->freeze(); // from the start: no check has answered yet
        QCOMPARE(m_site->start(), MainWindow::LoadOutcome::Loaded);
        tool(*m_site->window, CommandId::About).trigger(); // answered at once
        QVERIFY(m_site->messages.last().title.startsWith(QLatin1String("About ")));
        auto& menu = part<RecentDocumentsMenu>(*m_site->window);
        Q_EMIT menu.aboutToShow();
        QCOMPARE(menu.actions().size(), 2);
        m_share->thaw();
        QTRY_COMPARE_WITH_TIMEOUT(menu.actions().size(), 1, 10000);
        QCOMPARE(menu.actions().first()->text(), QStringLiteral("&1  Elisa.apr"));
        QTRY_VERIFY_WITH_TIMEOUT(
            QFileInfo(m_site->folders.root() + QStringLiteral("/backing/Secured/Site")).isDir(), 10000);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowShareTest)
#include "MainWindowShareTest.moc"
