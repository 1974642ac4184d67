#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "MainWindow.h"
#include "MessageRecorder.h"
#include "OrganiserTree.h"
#include "SecondProcess.h"
#include "ShellNotifications.h"
#include "TestFiles.h"
#include "UserFolders.h"
#include "WebEngineTestMain.h"

#include <QProcess>
#include <QSettings>
#include <QTest>

using namespace nebra;
using nebra::test::makeFolder;
using nebra::test::MessageRecorder;
using nebra::test::UserFolders;

using nebra::test::runScript;

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
        QTest::newRow("made in Results: a childless node")
            << "mkdir -p Run7 ../../elsewhere/x" << QStringList{"Run7", "Run1/sub"} << QStringList{}
            << "Run1";
        QTest::newRow("shown folder deleted: removed, to the root")
            << "rm -r Run1" << QStringList{} << QStringList{"Run1", "Run1/sub"} << "";
        QTest::newRow("shown folder renamed: to the root, a fresh node")
            << "mv Run1 Run9" << QStringList{"Run9"} << QStringList{"Run1", "Run9/sub"} << "";
        QTest::newRow("renamed out of the data folders")
            << "mv Run1/sub ../../elsewhere/" << QStringList{"Run1"} << QStringList{"Run1/sub"} << "Run1";
    }
    void treeFollowsTheDisk()
    {
        QFETCH(QString, script);
        QFETCH(QStringList, present);
        QFETCH(QStringList, absent);
        QFETCH(QString, current);
        UserFolders folders;
        const QString data = folders.root() + QStringLiteral("/Data");
        const QString results = data + QStringLiteral("/My Assays/Results");
        QSettings(folders.settingsFile(), QSettings::IniFormat)
            .setValue(QStringLiteral("Paths/ParentDirectory"), data);
        makeFolder(results + QStringLiteral("/Run1/sub"));
        makeFolder(folders.root() + QStringLiteral("/elsewhere"));
        MessageRecorder messages;
        MainWindow window;
        QCOMPARE(window.Load(), MainWindow::LoadOutcome::Loaded);
        QVERIFY(window.shellNotifications().isActive());
        OrganiserTree& organiser = window.organiserTree();
        FolderTreeControl& tree = window.folderTree();
        tree.setCurrentNode(organiser.resultsNode().child(0));
        QCOMPARE(window.fileList().folder(), results + QStringLiteral("/Run1"));

        runScript(results, script);
        const auto settled = [&] {
            for (const QString& folder : present) {
                if (!organiser.DoesPathAlreadyExistInTree(results + QLatin1Char('/') + folder))
                    return false;
            }
            for (const QString& folder : absent) {
                if (organiser.DoesPathAlreadyExistInTree(results + QLatin1Char('/') + folder))
                    return false;
            }
            return true;
        };
        QTRY_VERIFY_WITH_TIMEOUT(settled(), Bound);
        const FolderNode shown = tree.currentNode();
        QCOMPARE(shown.folderPath(),
                 current.isEmpty() ? QStringLiteral("Organiser") : results + QLatin1Char('/') + current);
        QVERIFY(!organiser.DoesPathAlreadyExistInTree(folders.root() + QStringLiteral("/elsewhere/x")));
        QVERIFY(messages.requests().isEmpty());

        window.close(); // shutdown stops following the disk
        QTRY_VERIFY_WITH_TIMEOUT(!window.shellNotifications().isActive(), Bound);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowNotificationsTest)
#include "MainWindowNotificationsTest.moc"
