#include "FolderBranches.h"
#include "FolderTreeModel.h"
#include "TestFiles.h"

#include <QAbstractItemModelTester>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

namespace {

constexpr quint32 Colour = 0xff336699;

// Each node as "indented text [kind]", in the tree's flat order.
QStringList outline(const FolderTreeModel& model)
{
    QStringList lines;
    for (int i = 0; i < model.count(); ++i) {
        const FolderNode node = model.node(i);
        lines.append(QString(node.level() * 2, QLatin1Char(' ')) + node.text() +
                     QStringLiteral(" [%1]").arg(node.data()));
    }
    return lines;
}

struct Branch
{
    QTemporaryDir dir;
    FolderTreeModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::QtTest};
    FolderBranches branches{model, [] { return Colour; }};
    FolderNode results;

    Branch()
    {
        results = model.addNode(QStringLiteral("Results"));
        results.setFolderPath(path(QStringLiteral("Results")));
        results.setData(4);
    }
    QString path(const QString& relative) const { return dir.filePath(relative); }
    void fill() { branches.AddSubFolderNodes(results.folderPath(), results, DocumentType::Results); }
};

} // namespace

class FolderBranchesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aBranchIsFilledFromTheDiskAndARenamedBranchComesBackChildless()
    {
        Branch branch;
        for (const char* folder :
             {"Results/2026/11/run-2/raw", "Results/2026/11/Run-1", "Results/2025", "Results/.cache",
              "Results/two words", "Results/line\nbreak", "Results/Ärger"})
            makeFolder(branch.path(QString::fromUtf8(folder)));
        writeFile(branch.path("Results/2026/a.ars"));
        branch.fill();
        QCOMPARE(outline(branch.model),
                 (QStringList{"Results [4]", "  .cache [4]", "  2025 [4]", "  2026 [4]", "    11 [4]",
                              "      Run-1 [4]", "      run-2 [4]", "        raw [4]", "  line\nbreak [4]",
                              "  two words [4]", QString::fromUtf8("  Ärger [4]")}));
        const FolderNode raw = branch.model.node(7);
        QCOMPARE(raw.folderPath(), branch.path("Results/2026/11/run-2/raw"));
        QCOMPARE(raw.colour(), Colour);
        // A renamed branch comes back childless at the end; letter case is ignored.
        QVERIFY(branch.branches.RenameExplorerBranch(branch.path("results/2026"), branch.path("Results/Z")));
        QCOMPARE(outline(branch.model),
                 (QStringList{"Results [4]", "  .cache [4]", "  2025 [4]", "  line\nbreak [4]",
                              "  two words [4]", QString::fromUtf8("  Ärger [4]"), "  Z [4]"}));
        QVERIFY(branch.branches.RemoveExplorerBranch(branch.path("Results/z")));
        QCOMPARE(branch.model.count(), 6);
    }

    void linksAreShownOnceAndLoopsEnd()
    {
        Branch branch;
        QTemporaryDir outside;
        makeFolder(branch.path("Results/real/inner"));
        makeFolder(outside.filePath("far"));
        const auto link = [&branch](const QString& target, const char* name) {
            QVERIFY(QFile::link(target, branch.path(QLatin1String(name))));
        };
        link(branch.path("Results"), "Results/loop");
        link(branch.path("Results/real"), "Results/a link");
        link(outside.path(), "Results/outside");
        // Links to a file, to nothing and to themselves are no folders.
        writeFile(branch.path("Results/file"));
        link(branch.path("Results/file"), "Results/file link");
        link(branch.path("Results/gone"), "Results/broken");
        link(branch.path("Results/self"), "Results/self");
        branch.fill();
        // The link to a folder shown elsewhere stays empty; the one to a folder nowhere else shows it.
        QCOMPARE(outline(branch.model),
                 (QStringList{"Results [4]", "  a link [4]", "  loop [4]", "  outside [4]", "    far [4]",
                              "  real [4]", "    inner [4]"}));
    }

    // Far down a walk opens folders by path instead of relative to an open
    // parent; the tree must not change where it does.
    void aDeepBranchIsFilledToItsEnd()
    {
        Branch branch;
        QTemporaryDir outside;
        makeFolder(outside.filePath("far"));
        QString relative = QStringLiteral("Results");
        for (int level = 0; level < 140; ++level)
            relative += QStringLiteral("/d%1").arg(level % 10);
        makeFolder(branch.path(relative + QStringLiteral("/B")));
        QVERIFY(QFile::link(outside.path(), branch.path(relative + QStringLiteral("/a link"))));
        branch.fill();
        QCOMPARE(branch.model.count(), 1 + 140 + 3);
        FolderNode node = branch.results;
        while (node.childCount() == 1)
            node = node.child(0);
        QCOMPARE(node.level(), 140);
        QCOMPARE(node.folderPath(), branch.path(relative));
        QCOMPARE(node.child(0).text(), QStringLiteral("a link"));
        QCOMPARE(node.child(0).child(0).text(), QStringLiteral("far"));
        QCOMPARE(node.child(1).folderPath(), branch.path(relative + QStringLiteral("/B")));
        QCOMPARE(branch.branches.FindNode(branch.path(relative + QStringLiteral("/b"))), node.child(1));
    }

    void aBranchIsAddedBelowItsParentIgnoringCaseOrRefused()
    {
        Branch branch;
        const QString run7 = branch.path("RESULTS/Run 7");
        QVERIFY(branch.branches.AddExplorerBranch(run7));
        QCOMPARE(outline(branch.model), (QStringList{"Results [4]", "  Run 7 [4]"}));
        const FolderNode node = branch.results.child(0);
        QCOMPARE(node.folderPath(), run7); // exactly as given
        QCOMPARE(node.colour(), Colour);
        QVERIFY(!branch.branches.AddExplorerBranch(run7));
        QVERIFY(!branch.branches.AddExplorerBranch(run7.toLower()));
        // A parent that is not in the tree, and a path without a separator.
        for (const QString& path : {QStringLiteral("/elsewhere/New Folder"), QStringLiteral("Run 7")}) {
            QVERIFY(!branch.branches.AddExplorerBranch(path));
            QVERIFY(!branch.branches.RemoveExplorerBranch(path));
            QVERIFY(!branch.branches.RenameExplorerBranch(path, branch.path("Results/x")));
        }
        QCOMPARE(branch.model.count(), 2);
    }
};

QTEST_GUILESS_MAIN(FolderBranchesTest)
#include "FolderBranchesTest.moc"
