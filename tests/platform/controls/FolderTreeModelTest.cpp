#include "FolderTreeModel.h"

#include <QAbstractItemModelTester>
#include <QTest>

using namespace nebra;

namespace {

QStringList flatTexts(const FolderTreeModel& model)
{
    QStringList texts;
    for (int i = 0; i < model.count(); ++i)
        texts.append(model.node(i).text());
    return texts;
}

} // namespace

class FolderTreeModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void removingANodeTakesItsSubtreeAndInvalidatesHandles()
    {
        FolderTreeModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const FolderNode root = model.addNode(QStringLiteral("root"));
        const FolderNode a = model.addNode(root, QStringLiteral("a"));
        const FolderNode a1 = model.addNode(a, QStringLiteral("a1"));
        const FolderNode b = model.addNode(root, QStringLiteral("b"));
        QVERIFY(model.removeNode(a));
        QVERIFY(!a.isValid());
        QVERIFY(!a1.isValid());
        QCOMPARE(a1.text(), QString());
        a1.setText(QStringLiteral("ignored")); // harmless on a removed node
        QVERIFY(!model.removeNode(a));
        QCOMPARE(flatTexts(model), (QStringList{"root", "b"}));
        QCOMPARE(model.indexOf(b).row(), 0);
        // A slot used again does not bring old handles back.
        const FolderNode c = model.addNode(root, QStringLiteral("c"));
        QVERIFY(c.isValid());
        QVERIFY(!a.isValid() && !a1.isValid());
        model.removeChildren(root);
        QCOMPARE(root.childCount(), 0);
        QCOMPARE(model.count(), 1);
        model.clear();
        QCOMPARE(model.count(), 0);
        QVERIFY(!root.isValid());
    }
};

QTEST_GUILESS_MAIN(FolderTreeModelTest)
#include "FolderTreeModelTest.moc"
