#include "OrganiserTree.h"
#include "FolderTreeModel.h"
#include "OrganiserWorld.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace nebra;
using nebra::test::makeFolder;
using nebra::test::OrganiserWorld;
using nebra::test::writeFile;

namespace {

// The world and the tree logic on its controls; build() fills the tree.
struct Organiser
{
    explicit Organiser(bool instrumentDriversInUse = true)
        : tree(*world.tree, *world.list, *world.shortcuts, world.treeSources(instrumentDriversInUse))
    {
    }

    OrganiserWorld world;
    OrganiserTree tree;

    void build() { tree.InitialiseOrganiserTree(); }
};

// Each child as "text [kind] path".
QStringList childRows(const FolderNode& node)
{
    QStringList rows;
    for (int i = 0; i < node.childCount(); ++i)
        rows.append(QStringLiteral("%1 [%2] %3")
                        .arg(node.child(i).text())
                        .arg(node.child(i).data())
                        .arg(node.child(i).folderPath()));
    return rows;
}

} // namespace

class OrganiserTreeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theTreeIsBuiltFromTheDataFolders()
    {
        Organiser o;
        for (const char* folder : {"Results/2026/Run 1", "Protocols/Elisa", "Microplate Layouts/96",
                                   "Reports/March", "Read Configurations/Reader One/Kinetic"})
            makeFolder(o.world.data(QLatin1String(folder)));
        QAbstractItemModelTester tester(&o.world.tree->nodes(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        o.build();

        QCOMPARE(o.world.tree->caption(), QStringLiteral("Assay Folders"));
        const FolderNode root = o.world.tree->node(0);
        QCOMPARE(root, o.tree.rootNode());
        QCOMPARE(root.text() + QLatin1Char(' ') + root.folderPath(), QStringLiteral("Organiser Organiser"));
        QVERIFY(root.page().endsWith(QStringLiteral("/Organiser.mht")));
        const QString folders = o.world.paths.MyAssaysFolder();
        QCOMPARE(childRows(root).join(QLatin1Char('\n')).replace(folders, QStringLiteral("~")),
                 QStringLiteral("Reader One [1] ~/Read Configurations/Reader One\n"
                                "Microplate Layouts [2] ~/Microplate Layouts\n"
                                "Protocols [3] ~/Protocols\n"
                                "Results [4] ~/Results\n"
                                "Reports [5] ~/Reports"));
        for (int i = 0; i < 5; ++i) // every branch is filled, its folders of its kind
            QCOMPARE(root.child(i).child(0).data(), i + 1);
        QCOMPARE(o.tree.resultsNode().child(0).child(0).folderPath(),
                 folders + QStringLiteral("/Results/2026/Run 1"));
        for (int key : {500, 501, 504})
            QVERIFY(!o.world.tree->isButtonEnabled(key));
        QCOMPARE(o.world.tree->currentNode(), root);
    }

    void theInstrumentNodeFollowsTheSettings_data()
    {
        QTest::addColumn<bool>("driversInUse");
        QTest::addColumn<int>("storedIndex");
        QTest::addColumn<int>("flags");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<int>("indexAfter");
        QTest::newRow("second driver") << true << 2 << 0 << "Reader Two" << 2;
        QTest::newRow("index 0 means the first") << true << 0 << 0 << "Reader One" << 1;
        QTest::newRow("index past the drivers") << true << 9 << 0 << "Reader One" << 1;
        QTest::newRow("generic caption") << true << 1 << 0x20 << "Instrument Data" << 1;
        QTest::newRow("no drivers in use") << false << 2 << 0 << "" << 2;
    }

    void theInstrumentNodeFollowsTheSettings()
    {
        QFETCH(bool, driversInUse);
        QFETCH(int, storedIndex);
        QFETCH(int, flags);
        QFETCH(QString, caption);
        QFETCH(int, indexAfter);
        Organiser o(driversInUse);
        o.world.settings.SetCurrentHLD(storedIndex);
        o.world.store.setValue(QStringLiteral("Settings/InstrumentFlags"), flags);
        o.build();
        QCOMPARE(o.tree.instrumentNode().text(), caption);
        QCOMPARE(o.tree.rootNode().childCount(), driversInUse ? 5 : 4);
        QCOMPARE(o.world.settings.CurrentHLD(), indexAfter);
        if (driversInUse)
            QVERIFY(o.tree.instrumentNode().folderPath().endsWith(indexAfter == 2 ? "/Reader Two"
                                                                                  : "/Reader One"));
    }

    void recreatingResultsFollowsTheDiskAndKeepsTheSelection()
    {
        Organiser o;
        o.build();
        makeFolder(o.world.data("Results/Run 0"));
        makeFolder(o.world.data("Results/Run 1/raw"));
        o.tree.RecreateResultsNode(); // no children yet: only fills
        QCOMPARE(o.tree.resultsNode().childCount(), 2);

        o.world.tree->setCurrentNode(o.tree.protocolsNode());
        QSignalSpy selected(o.world.tree, &FolderTreeControl::nodeSelected);
        for (const char* run : {"Results/Run 0", "Results/Run 1"})
            QVERIFY(QDir(o.world.data(QLatin1String(run))).removeRecursively());
        makeFolder(o.world.data("Results/Run 2"));
        o.tree.RecreateResultsNode();
        QCOMPARE(childRows(o.tree.resultsNode()), QStringList{"Run 2 [4] " + o.world.data("Results/Run 2")});
        QCOMPARE(o.world.tree->currentNode(), o.tree.protocolsNode());
        QCOMPARE(selected.count(), 0);
    }

    void lookupsByPathAndName()
    {
        Organiser o;
        o.build();
        // The root's "Organiser" never matches a real folder.
        const QString pretend = o.world.dir.filePath("Organiser");
        QVERIFY(!o.tree.RemoveExplorerBranch(pretend));
        QVERIFY(!o.tree.RenameExplorerBranch(pretend, pretend + QStringLiteral("2")));
        QVERIFY(o.tree.rootNode().isValid());
        // A file is in the list only by its exact name.
        writeFile(o.world.data("Protocols/Elisa.apr"));
        o.world.list->setFolder(o.world.paths.ProtocolsFolder());
        QVERIFY(o.tree.IsFileInFileView(QStringLiteral("Elisa.apr")));
        QVERIFY(!o.tree.IsFileInFileView(QStringLiteral("elisa.apr")));
        QVERIFY(o.tree.IsThisCurrentFolder(o.world.paths.ProtocolsFolder()));
    }

    void anotherDriverReplacesTheInstrumentNodeInPlace()
    {
        Organiser o;
        o.build();
        QAbstractItemModelTester tester(&o.world.tree->nodes(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        o.world.tree->setCurrentNode(o.tree.instrumentNode());
        makeFolder(o.world.paths.ReadConfigurationsFolder() + QStringLiteral("/Reader Two/Plates"));
        o.world.settings.SetCurrentHLD(2);
        o.tree.SetupHLDNode(QStringLiteral("Reader Two"));
        const FolderNode node = o.tree.instrumentNode();
        QCOMPARE(o.tree.rootNode().child(0), node);
        QCOMPARE(o.tree.rootNode().childCount(), 5);
        QCOMPARE(node.text(), QStringLiteral("Reader Two"));
        QCOMPARE(node.child(0).text(), QStringLiteral("Plates"));
        QCOMPARE(o.world.tree->currentNode(), node);
        QCOMPARE(o.world.shortcuts->itemCaptions(1).at(1), QStringLiteral("Reader Two"));
        QCOMPARE(o.tree.nodeForKind(FolderKind::ReadConfigurations), node);
    }
};

QTEST_MAIN(OrganiserTreeTest)
#include "OrganiserTreeTest.moc"
