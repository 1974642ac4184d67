#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "ListingWait.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "SecondProcess.h"
#include "ShellNotifications.h"
#include "ShortcutsBar.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

using namespace nebra;
using namespace nebra::test;

namespace {

constexpr int Bound = 10000;

} // namespace

// The main window's tree follows folders that another process makes, removes
// and renames, from start-up to shutdown.
class MainWindowNotificationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
                                 Bound);
        QCOMPARE(tree.currentNode().folderPath(), QStringLiteral("Organiser"));
        // The root keeps the list, which follows its own folder: a gone folder lists nothing.
        QTRY_COMPARE_WITH_TIMEOUT(list.itemCount(), 0, Bound);
        QVERIFY(site.messages.requests().isEmpty());

        window.close(); // shutdown stops following the disk
        QTRY_VERIFY_WITH_TIMEOUT(!part<ShellNotifications>(window).isActive(), Bound);
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
        QTRY_VERIFY_WITH_TIMEOUT(!branch(tree, DocumentType::Results).isValid(), Bound);
        runScript(site.doc({}), QStringLiteral("mv Away Results"));
        QTRY_VERIFY_WITH_TIMEOUT(tree.nodes().findFolderPath(results + QStringLiteral("/Run1")).isValid(),
                                 Bound);
        const FolderNode back = branch(tree, DocumentType::Results);
        QCOMPARE(tree.nodes().indexOf(back).row(), tree.nodes().indexOf(protocols).row() + 1);
        Q_EMIT part<ShortcutsBar>(window).itemClicked(QString::number(toData(DocumentType::Results)));
        QCOMPARE(tree.currentNode(), back);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowNotificationsTest)
#include "MainWindowNotificationsTest.moc"
