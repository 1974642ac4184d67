#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "OrganiserTree.h"
#include "ShortcutsBar.h"
#include "ToolBarsControl.h"
#include "WebEngineTestMain.h"

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

        FolderTreeControl& tree = window.folderTree();
        OrganiserTree& organiser = window.organiserTree();
        QCOMPARE(tree.caption(), QStringLiteral("Assay Folders"));
        QCOMPARE(tree.currentNode(), organiser.rootNode());
        QVERIFY(!window.toolBars().isToolEnabled(QStringLiteral("ID_New")));

        // A shortcut leads to its folder; the list and the commands follow.
        Q_EMIT window.shortcutsBar().itemClicked(QStringLiteral("3"));
        QCOMPARE(tree.currentNode(), organiser.protocolsNode());
        QCOMPARE(window.fileList().firstSelectedItem().name(), QStringLiteral("Elisa.apr"));
        QVERIFY(window.toolBars().isToolEnabled(QStringLiteral("ID_Run")));
        QVERIFY(tree.isButtonEnabled(buttonKey(DocumentCommand::Run)));
        QVERIFY(tree.isButtonEnabled(FolderTreeControl::UpButton));
        QCOMPARE(site.messages.count(), 0);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowOrganiserTest)
#include "MainWindowOrganiserTest.moc"
