#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "FolderTreeModel.h"
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
    void theTreeListAndCommandsWorkTogether()
    {
        LoadedOrganiser site;
        writeFile(site.doc(QStringLiteral("Protocols/Elisa.apr")));
        makeFolder(site.doc(QStringLiteral("Microplate Layouts/96 well")));
        MainWindow& window = site.load();
        MessageRecorder& messages = site.messages;

        FolderTreeControl& tree = part<FolderTreeControl>(window);
        QCOMPARE(tree.caption(), QStringLiteral("Assay Folders"));
        QCOMPARE(tree.currentNode(), branch(tree, DocumentType::None));
        QVERIFY(!part<ToolBarsControl>(window).isToolEnabled(QStringLiteral("ID_New")));

        // A shortcut leads to its folder; the list and the commands follow.
        Q_EMIT part<ShortcutsBar>(window).itemClicked(QStringLiteral("3"));
        QCOMPARE(tree.currentNode(), branch(tree, DocumentType::Protocols));
        QCOMPARE(part<FileListControl>(window).firstSelectedItem().name(), QStringLiteral("Elisa.apr"));
        QVERIFY(part<ToolBarsControl>(window).isToolEnabled(QStringLiteral("ID_Run")));
        QVERIFY(tree.isButtonEnabled(treeButton(CommandId::Run)));
        QVERIFY(tree.isButtonEnabled(FolderTreeControl::UpButton));

        // New from the tool bar and from the tree's button reach the primary-folder rule.
        tree.setCurrentNode(branch(tree, DocumentType::Layouts).child(0));
        messages.answer(MessageButton::Cancel);
        part<ToolBarsControl>(window).action(QStringLiteral("ID_New"))->trigger();
        QCOMPARE(messages.count(), 1);
        tree.clickButton(treeButton(CommandId::New));
        QCOMPARE(tree.currentNode(), branch(tree, DocumentType::Layouts));
        // Then the layout editor is started, and its missing program is reported.
        QCOMPARE(messages.count(), 3);
        QCOMPARE(messages.requests().at(1).title, QStringLiteral("Creating New Item"));
        QCOMPARE(messages.last().title, QStringLiteral("Program Not Started"));
        QVERIFY(messages.last().text.contains(QStringLiteral("LayoutEditorPath")));
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowOrganiserTest)
#include "MainWindowOrganiserTest.moc"
