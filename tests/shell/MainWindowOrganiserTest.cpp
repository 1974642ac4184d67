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
    void theTreeListAndCommandsWorkTogether()
    {
        LoadedOrganiser site;
        writeFile(site.doc(QStringLiteral("Protocols/Elisa.apr")));
        makeFolder(site.doc(QStringLiteral("Microplate Layouts/96 well")));
        MainWindow& window = site.load();
        MessageRecorder& messages = site.messages;

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
        QVERIFY(tree.isButtonEnabled(504));

        // New from the tool bar and from the tree's button reach the primary-folder rule.
        tree.setCurrentNode(organiser.layoutsNode().child(0));
        messages.answer(MessageButton::Cancel);
        window.toolBars().action(QStringLiteral("ID_New"))->trigger();
        QCOMPARE(messages.count(), 1);
        tree.clickButton(buttonKey(DocumentCommand::New));
        QCOMPARE(tree.currentNode(), organiser.layoutsNode());
        // Then the layout editor is started, and its missing program is reported.
        QCOMPARE(messages.count(), 3);
        QCOMPARE(messages.requests().at(1).title, QStringLiteral("Creating New Item"));
        QCOMPARE(messages.last().title, QStringLiteral("Program Not Started"));
        QVERIFY(messages.last().text.contains(QStringLiteral("LayoutEditorPath")));
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowOrganiserTest)
#include "MainWindowOrganiserTest.moc"
