#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "FolderTreeModel.h"
#include "ListingWait.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "SecondProcess.h"
#include "ShellNotifications.h"
#include "ShortcutsBar.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QProcess>
#include <QTest>

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
    void treeFollowsTheDisk_data()
    {
        QTest::addColumn<QString>("script"); // run in the results folder
        QTest::addColumn<QStringList>("present");
        QTest::addColumn<QStringList>("absent");
        QTest::addColumn<QString>("current"); // the folder shown afterwards, "" for the root
        // clang-format off
        QTest::newRow("made in Results: a childless node") << "mkdir -p Run7 ../../elsewhere/x" << QStringList{"Run7", "Run1/sub"} << QStringList{} << "Run1";
        QTest::newRow("shown folder deleted: removed, to the root") << "rm -r Run1" << QStringList{} << QStringList{"Run1", "Run1/sub"} << "";
        QTest::newRow("shown folder renamed: to the root, a fresh node") << "mv Run1 Run9" << QStringList{"Run9"} << QStringList{"Run1", "Run9/sub"} << "";
        // clang-format on
    }
    void treeFollowsTheDisk()
    {
        QFETCH(QString, script);
        QFETCH(QStringList, present);
        QFETCH(QStringList, absent);
        QFETCH(QString, current);
        LoadedOrganiser site;
        const QString results = site.doc(QStringLiteral("Results"));
        makeFolder(results + QStringLiteral("/Run1/sub"));
        writeFile(results + QStringLiteral("/Run1/run.ars"));
        makeFolder(site.folders.root() + QStringLiteral("/elsewhere"));
        MainWindow& window = site.load();
        QVERIFY(part<ShellNotifications>(window).isActive());
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        tree.setCurrentNode(branch(tree, DocumentType::Results).child(0));
        FileListControl& list = part<FileListControl>(window);
        QCOMPARE(list.folder(), results + QStringLiteral("/Run1"));
        QVERIFY(waitForListing(list));
        QCOMPARE(list.itemCount(), 2);

        runScript(results, script);
        const auto settled = [&] {
            for (const QString& folder : present) {
                if (!tree.nodes().findFolderPath(results + QLatin1Char('/') + folder).isValid())
                    return false;
            }
            for (const QString& folder : absent) {
                if (tree.nodes().findFolderPath(results + QLatin1Char('/') + folder).isValid())
                    return false;
            }
            return true;
        };
        QTRY_VERIFY_WITH_TIMEOUT(settled(), Bound);
        const FolderNode shown = tree.currentNode();
        QCOMPARE(shown.folderPath(),
                 current.isEmpty() ? QStringLiteral("Organiser") : results + QLatin1Char('/') + current);
        QVERIFY(!tree.nodes().findFolderPath(site.folders.root() + QStringLiteral("/elsewhere/x")).isValid());
        // The root keeps the list, which follows its own folder: a gone folder lists nothing.
        QTRY_COMPARE_WITH_TIMEOUT(list.itemCount(), current.isEmpty() ? 0 : 2, Bound);
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
