#include "FolderTreeControl.h"
#include "FolderTreeModel.h"

#include <QSignalSpy>
#include <QTest>
#include <QTreeView>

using namespace nebra;

namespace {

struct Tree
{
    FolderTreeControl control;
    FolderNode root, a, a1, b;

    Tree()
    {
        control.addButton(FolderTreeControl::BackButton, QStringLiteral("Back"));
        control.addButton(FolderTreeControl::ForwardButton, QStringLiteral("Forward"));
        control.addButton(FolderTreeControl::UpButton, QStringLiteral("Up"));
        control.addButton(605, QStringLiteral("New")); // a button of the program's own
        root = control.addNode(QStringLiteral("root"));
        a = control.addNode(root, QStringLiteral("a"));
        a1 = control.addNode(a, QStringLiteral("a1"));
        b = control.addNode(root, QStringLiteral("b"));
    }
};

} // namespace

class FolderTreeControlTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The buttons, and their keys as a file manager gives them.
    void backForwardAndUpWalkTheHistory()
    {
        Tree tree;
        tree.control.show();
        QVERIFY(QTest::qWaitForWindowActive(&tree.control));
        const auto press = [&tree](Qt::Key key) { QTest::keyClick(&tree.control, key, Qt::AltModifier); };
        QSignalSpy changed(&tree.control, &FolderTreeControl::currentNodeChanged);
        QSignalSpy selected(&tree.control, &FolderTreeControl::nodeSelected);
        QSignalSpy clicked(&tree.control, &FolderTreeControl::buttonClicked);
        tree.control.setCurrentNode(tree.a);
        tree.control.setCurrentNode(tree.b);
        tree.control.setCurrentNode(tree.b); // no change, no event
        QCOMPARE(selected.count(), 2);
        QCOMPARE(changed.last().at(1).toInt(), int(FolderTreeControl::SelectedChange));
        QVERIFY(tree.control.isButtonEnabled(FolderTreeControl::BackButton));
        QVERIFY(!tree.control.isButtonEnabled(FolderTreeControl::ForwardButton));

        tree.control.clickButton(FolderTreeControl::BackButton);
        QCOMPARE(tree.control.currentNode(), tree.a);
        QCOMPARE(changed.last().at(1).toInt(), int(FolderTreeControl::NavigationChange));
        QCOMPARE(clicked.last().at(0).toInt(), int(FolderTreeControl::BackButton));
        QVERIFY(tree.control.isButtonEnabled(FolderTreeControl::ForwardButton));
        press(Qt::Key_Right);
        QCOMPARE(tree.control.currentNode(), tree.b);

        tree.control.setCurrentNode(tree.a1);
        QVERIFY(!tree.control.isButtonEnabled(FolderTreeControl::ForwardButton)); // a new path drops forward
        press(Qt::Key_Up);
        QCOMPARE(tree.control.currentNode(), tree.a);
        QCOMPARE(changed.last().at(1).toInt(), int(FolderTreeControl::NavigationChange));
        press(Qt::Key_Left);
        QCOMPARE(tree.control.currentNode(), tree.a1);
    }

    void removedNodesDropOutOfTheHistory()
    {
        Tree tree;
        tree.control.setCurrentNode(tree.b);
        tree.control.setCurrentNode(tree.a1);
        tree.control.setCurrentNode(tree.root);
        QVERIFY(tree.control.removeNode(tree.a));
        tree.control.clickButton(FolderTreeControl::BackButton);
        QCOMPARE(tree.control.currentNode(), tree.b); // a1 went with a
        QVERIFY(!tree.control.isButtonEnabled(FolderTreeControl::BackButton));
    }
};

QTEST_MAIN(FolderTreeControlTest)
#include "FolderTreeControlTest.moc"
