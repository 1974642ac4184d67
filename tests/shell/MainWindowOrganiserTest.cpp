#include "BrowserControl.h"
#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "FolderTreeModel.h"
#include "ListingWait.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "ShortcutsBar.h"
#include "ToolBarsControl.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QTest>

using namespace nebra;
using namespace nebra::test;

class MainWindowOrganiserTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The document commands' rules are their own tests; here a shortcut reaches the tree, and the
    // list and the commands follow it.
    void theTreeListAndCommandsWorkTogether()
    {
        LoadedOrganiser site;
        writeFile(site.doc(QStringLiteral("Protocols/Elisa.apr")));
        MainWindow& window = site.load();

        FolderTreeControl& tree = part<FolderTreeControl>(window);
        QCOMPARE(tree.caption(), QStringLiteral("Assay Folders"));
        QCOMPARE(tree.currentNode(), branch(tree, DocumentType::None));
        QVERIFY(!part<ToolBarsControl>(window).isToolEnabled(QStringLiteral("ID_New")));

        // A shortcut leads to its folder; the list and the commands follow.
        Q_EMIT part<ShortcutsBar>(window).itemClicked(QStringLiteral("3"));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QCOMPARE(tree.currentNode(), branch(tree, DocumentType::Protocols));
        QCOMPARE(part<FileListControl>(window).firstSelectedItem().name(), QStringLiteral("Elisa.apr"));
        QVERIFY(part<ToolBarsControl>(window).isToolEnabled(QStringLiteral("ID_Run")));
        QVERIFY(tree.isButtonEnabled(treeButton(CommandId::Run)));
        QVERIFY(tree.isButtonEnabled(FolderTreeControl::UpButton));
        QCOMPARE(site.messages.count(), 0);
    }

    // A welcome link that waits for the page is forgotten once the tree leaves the root.
    void aQueuedWelcomeLinkDoesNotActOnAnotherFolder()
    {
        LoadedOrganiser site;
        MainWindow& window = site.load();
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        BrowserControl& browser = part<BrowserControl>(window);
        bool cancel = false;
        Q_EMIT browser.BeforeNavigate2(QUrl(QStringLiteral("organiser:\\Analyse data")), cancel);
        QVERIFY(cancel);
        tree.setCurrentNode(branch(tree, DocumentType::Protocols));
        Q_EMIT browser.CommandStateChange();
        QVERIFY(browser.WaitUntilComplete());
        Q_EMIT browser.CommandStateChange();
        QCOMPARE(tree.currentNode(), branch(tree, DocumentType::Protocols));
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowOrganiserTest)
#include "MainWindowOrganiserTest.moc"
