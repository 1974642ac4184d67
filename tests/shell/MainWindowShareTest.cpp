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

namespace {

constexpr int FollowedMs = 10000;

// The Organiser whose data folders' parent (or the folder named below it) is
// a share mounted from a backing folder that another process writes.
struct Shared : LoadedOrganiser
{
    FuseShare share;
    QString backing = folders.root() + "/backing/My Assays"; // as the other process sees it

    ~Shared()
    {
        if (share.daemonPid() > 0)
            share.thaw();
        window.reset(); // the window first, then the folders under the mount
    }

    // False (skipped) without FUSE.
    bool mount(const QString& below = {})
    {
        if (const QString reason = FuseShare::unavailableReason(); !reason.isEmpty()) {
            QTest::qSkip(qPrintable(reason), __FILE__, __LINE__);
            return false;
        }
        writeFile(backing + "/Protocols/Elisa.apr");
        makeFolder(backing + "/Results/Run1");
        set("Settings/NetworkPollSeconds", 1);
        set("Settings/NetworkTreePollSeconds", 1);
        if (!share.mount(folders.root() + "/backing" + below, folders.root() + "/Lab Data" + below)) {
            QTest::qFail("bindfs did not mount the share", __FILE__, __LINE__);
            return false;
        }
        return true;
    }
};

} // namespace

// The main window follows what another process does to its data folders,
// from start-up to shutdown: on a local disk, and on a share (a bindfs mount
// of a folder another process writes), answering and frozen. The rules
// themselves are tested where they live.
class MainWindowShareTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Which change becomes which node is ShellNotificationsTest's; here the
    // window's tree and list follow the shown folder's removal, and stop at
    // shutdown. A data folder moved away and back is a branch again, and its
    // shortcut leads to it.
    void treeFollowsTheDisk()
    {
        LoadedOrganiser site;
        const QString results = site.doc("Results");
        makeFolder(results + "/Run1/sub");
        writeFile(results + "/Run1/run.ars");
        MainWindow& window = site.load();
        QVERIFY(part<ShellNotifications>(window).isActive());
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        const FolderNode protocols = branch(tree, DocumentType::Protocols);
        runScript(site.doc({}), "mv Results Away");
        QTRY_VERIFY_WITH_TIMEOUT(!branch(tree, DocumentType::Results).isValid(), FollowedMs);
        runScript(site.doc({}), "mv Away Results");
        QTRY_VERIFY_WITH_TIMEOUT(tree.nodes().findFolderPath(results + "/Run1").isValid(), FollowedMs);
        const FolderNode back = branch(tree, DocumentType::Results);
        QCOMPARE(tree.nodes().indexOf(back).row(), tree.nodes().indexOf(protocols).row() + 1);
        Q_EMIT part<ShortcutsBar>(window).itemClicked(QString::number(toData(DocumentType::Results)));
        QCOMPARE(tree.currentNode(), back);

        tree.setCurrentNode(branch(tree, DocumentType::Results).child(0));
        FileListControl& list = part<FileListControl>(window);
        QVERIFY(waitForListing(list));
        QCOMPARE(list.itemCount(), 2);
        runScript(results, "rm -r Run1");
        QTRY_VERIFY_WITH_TIMEOUT(!tree.nodes().findFolderPath(results + "/Run1").isValid(), FollowedMs);
        QCOMPARE(tree.currentNode().folderPath(), "Organiser");
        // The root keeps the list, which follows its own folder: a gone folder lists nothing.
        QTRY_COMPARE_WITH_TIMEOUT(list.itemCount(), 0, FollowedMs);
        QVERIFY(site.messages.requests().isEmpty());

        window.close(); // shutdown stops following the disk
        QTRY_VERIFY_WITH_TIMEOUT(!part<ShellNotifications>(window).isActive(), FollowedMs);
    }

    // Start-up against a frozen server opens the window within the bound,
    // says so once, and builds the tree when the server answers; shutdown
    // with a read stuck on the server ends at once. The parent may answer
    // while the data folders below it do not.
    void aFrozenShareNeitherHoldsTheStartNorTheEnd()
    {
        for (const QString& mounted : {QString(), QStringLiteral("/My Assays")}) { // below the parent
            Shared o;
            if (!o.mount(mounted))
                return;
            o.share.freeze();
            QElapsedTimer clock;
            clock.start();
            QCOMPARE(o.start(), MainWindow::LoadOutcome::Loaded);
            QVERIFY2(clock.elapsed() < 8000, qPrintable(QString::number(clock.elapsed())));
            MainWindow& window = *o.window;
            FolderTreeControl& tree = part<FolderTreeControl>(window);
            QTRY_COMPARE_WITH_TIMEOUT(o.messages.count(), 1, 3000);
            QVERIFY(o.messages.last().text.contains("do not answer"));
            QVERIFY(branch(tree, DocumentType::Protocols).text().endsWith(" (unavailable)"));

            o.share.thaw();
            QTRY_VERIFY_WITH_TIMEOUT(!branch(tree, DocumentType::Results).text().endsWith(" (unavailable)"),
                                     10000);
            QTRY_VERIFY(tree.nodes().findFolderPath(o.doc("Results/Run1")).isValid());
            // Followed: polled as the root, or as a share below the local root.
            runScript(o.backing + "/Results", "mkdir Run2");
            QTRY_VERIFY_WITH_TIMEOUT(tree.nodes().findFolderPath(o.doc("Results/Run2")).isValid(), 5000);

            o.share.freeze();
            tree.setCurrentNode(branch(tree, DocumentType::Results).child(0)); // a read that will not answer
            QCoreApplication::processEvents();                                 // the listing is asked for
            clock.restart();
            window.close();
            o.window.reset();
            QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
        }
    }

    // OK in the Options dialog with a parent directory on a frozen server
    // leaves the window answering and refuses the folder it could not check,
    // with one message; once the server answers, OK takes it.
    void theOptionsCheckAFrozenShare()
    {
        Shared o;
        if (!o.mount("/Elsewhere"))
            return;
        MainWindow& window = o.load();
        const QString typed = o.folders.root() + "/Lab Data/Elsewhere/Data";
        o.share.freeze();
        QString refusedKept; // the parent directory after the refusal
        o.dialogs.then([&](QDialog& dialog) {
            control<QLineEdit>(dialog, "txtParentDirectoryPath")->setText(typed);
            QTimer::singleShot(100, &window, [&window] { tool(window, CommandId::About).trigger(); });
            control<QPushButton>(dialog, "OKButton")->click();
            refusedKept = o.stored("Paths/ParentDirectory").toString();
            o.share.thaw();
            control<QPushButton>(dialog, "OKButton")->click(); // the question to make it: Yes
            return dialog.result();
        });
        tool(window, CommandId::Options).trigger();
        QCOMPARE(o.messages.count(), 3); // About, the folder's silence, the question
        QCOMPARE(o.messages.requests().at(1).text, DataFolders::notAnsweringText(typed));
        QCOMPARE(refusedKept, o.folders.root() + "/Lab Data");
        QCOMPARE(o.stored("Paths/ParentDirectory").toString(), typed);
    }

    // Started while the server is frozen: the log-in goes on and File > Recent
    // lists its documents at once (a document whose check has not answered
    // stays listed). When the server answers, the vanished one leaves the
    // menu, the secured folder is made and the share is followed.
    void aStartOnAFrozenShareWaitsForNothing()
    {
        Shared o;
        if (!o.mount())
            return;
        o.set("Paths/SecuredFolder", o.folders.root() + "/Lab Data/Secured/Site");
        o.set("Settings/RecentDocuments",
              QStringList{o.doc("Protocols/Gone.apr"), o.doc("Protocols/Elisa.apr")});
        o.secure();
        o.share.freeze(); // from the start: no check has answered yet
        QCOMPARE(o.start(), MainWindow::LoadOutcome::Loaded);
        tool(*o.window, CommandId::About).trigger(); // answered at once
        QVERIFY(o.messages.last().title.startsWith(QLatin1String("About ")));
        auto& menu = part<RecentDocumentsMenu>(*o.window);
        Q_EMIT menu.aboutToShow();
        QCOMPARE(menu.actions().size(), 2);
        o.share.thaw();
        QTRY_COMPARE_WITH_TIMEOUT(menu.actions().size(), 1, 10000);
        QCOMPARE(menu.actions().first()->text(), "&1  Elisa.apr");
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(o.folders.root() + "/backing/Secured/Site").isDir(), 10000);

        // Another workstation's folder and document appear within the poll
        // interval; a frozen server leaves the window answering commands, and
        // the list fills in when the server answers again.
        MainWindow& window = *o.window;
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        FileListControl& list = part<FileListControl>(window);
        QTRY_VERIFY_WITH_TIMEOUT(tree.nodes().findFolderPath(o.doc("Results/Run1")).isValid(), 10000);
        tree.setCurrentNode(branch(tree, DocumentType::Results));
        QVERIFY(waitForListing(list));

        runScript(o.backing + "/Results", "mkdir Run2 && echo r > 'Run 3.ars'");
        QTRY_VERIFY_WITH_TIMEOUT(tree.nodes().findFolderPath(o.doc("Results/Run2")).isValid(), 3000);
        QTRY_COMPARE_WITH_TIMEOUT(list.itemCount(), 3, 3000); // Run1, Run2, Run 3.ars

        o.share.freeze();
        tree.setCurrentNode(branch(tree, DocumentType::Protocols));
        const QString waiting = FileListControl::waitingText(o.doc("Protocols"));
        QTRY_COMPARE_WITH_TIMEOUT(window.statusBar()->currentMessage(), waiting,
                                  FolderReaders::WaitingAfterMs + 3000);
        const int messages = o.messages.count();
        tool(window, CommandId::About).trigger();
        QCOMPARE(o.messages.count(), messages + 1);
        o.share.thaw();
        QVERIFY(waitForListing(list, 10000));
        QCOMPARE(list.firstSelectedItem().name(), "Elisa.apr");
        QVERIFY(window.statusBar()->currentMessage().isEmpty());
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowShareTest)
#include "MainWindowShareTest.moc"
