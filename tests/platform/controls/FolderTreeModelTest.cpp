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

// Organiser / Results (a, raw below it, paths following their parents), Protocols,
// and a later node whose path is the Results path in other letter case.
struct PathTree
{
    FolderTreeModel model;
    FolderNode root, results, runA, raw, protocols, again;

    PathTree()
    {
        root = model.addNode(QStringLiteral("Organiser"));
        root.setFolderPath(QStringLiteral("Organiser"));
        results = model.addNode(root, QStringLiteral("Results"));
        results.setFolderPath(QStringLiteral("/data/Results"));
        runA = model.addNode(results, QStringLiteral("Run A"));
        model.setDerivedFolderPath(runA);
        raw = model.addNode(runA, QString::fromUtf8("Ärger"));
        model.setDerivedFolderPath(raw);
        protocols = model.addNode(root, QStringLiteral("Protocols"));
        protocols.setFolderPath(QStringLiteral("/data/Protocols"));
        again = model.addNode(root, QStringLiteral("Again"));
        again.setFolderPath(QStringLiteral("/DATA/results"));
    }
    QString found(const QString& path) const { return model.findFolderPath(path).text(); }
};

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

    // Nodes are found by path ignoring case, and paths stay put when captions and parents change.
    void nodesAreFoundByPath()
    {
        PathTree tree;
        // clang-format off
        for (const auto& [path, text] : {std::pair{"/data/Protocols", "Protocols"},
                                         {"/Data/RESULTS", "Results"}, // the first of two
                                         {"/data/Results/Run A", "Run A"}, // from the parent
                                         {"/DATA/results/run a/äRGER", "Ärger"},
                                         {"/data", ""}, // a prefix only
                                         {"/data/Protocols/x", ""}, // longer
                                         {"organiser", "Organiser"}})
            QCOMPARE(tree.found(QString::fromUtf8(path)), QString::fromUtf8(text));
        // clang-format on
        QAbstractItemModelTester tester(&tree.model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        // A new caption is no new folder.
        tree.runA.setText(QStringLiteral("Run B"));
        QCOMPARE(tree.runA.folderPath(), QStringLiteral("/data/Results/Run A"));
        QCOMPARE(tree.found(QStringLiteral("/data/results/run a")), QStringLiteral("Run B"));
        QCOMPARE(tree.found(QStringLiteral("/data/Results/Run B")), QString());
        // A parent's new path leaves its children's as they were.
        tree.results.setFolderPath(QStringLiteral("/moved"));
        QCOMPARE(tree.found(QStringLiteral("/MOVED")), QStringLiteral("Results"));
        QCOMPARE(tree.found(QStringLiteral("/data/results")), QStringLiteral("Again"));
        QCOMPARE(tree.raw.folderPath(), QString::fromUtf8("/data/Results/Run A/Ärger"));
        // Removed nodes are no longer found; a node inserted before another comes first.
        QVERIFY(tree.model.removeNode(tree.results));
        QCOMPARE(tree.found(QStringLiteral("/data/Results/Run A")), QString());
        const FolderNode first = tree.model.insertNode(tree.root, 0, QStringLiteral("First"));
        first.setFolderPath(QStringLiteral("/data/Results"));
        QCOMPARE(tree.found(QStringLiteral("/data/results")), QStringLiteral("First"));
        // Below a parent whose path ends with a separator no second one is added.
        first.setFolderPath(QStringLiteral("/"));
        const FolderNode child = tree.model.addNode(first, QStringLiteral("etc"));
        tree.model.setDerivedFolderPath(child);
        QCOMPARE(child.folderPath(), QStringLiteral("/etc"));
        QCOMPARE(tree.found(QStringLiteral("/ETC")), QStringLiteral("etc"));
    }
};

QTEST_GUILESS_MAIN(FolderTreeModelTest)
#include "FolderTreeModelTest.moc"
