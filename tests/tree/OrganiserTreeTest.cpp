#include "OrganiserTree.h"
#include "DiagnosticLog.h"
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

struct Row
{
    QString text;
    QString path;
    int data;
};

QList<Row> childRows(const FolderNode& node)
{
    QList<Row> rows;
    for (int i = 0; i < node.childCount(); ++i)
        rows.append({node.child(i).text(), node.child(i).folderPath(), node.child(i).data()});
    return rows;
}

} // namespace

class OrganiserTreeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theTreeIsBuiltFromTheDataFolders()
    {
        OrganiserWorld world;
        makeFolder(world.data(QStringLiteral("Results/2026/Run 1")));
        makeFolder(world.data(QStringLiteral("Protocols/Elisa")));
        makeFolder(world.data(QStringLiteral("Microplate Layouts/96")));
        makeFolder(world.data(QStringLiteral("Reports/March")));
        makeFolder(world.data(QStringLiteral("Read Configurations/Reader One/Kinetic")));
        QAbstractItemModelTester tester(&world.tree->nodes(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        OrganiserTree organiser(*world.tree, *world.list, *world.shortcuts, world.globals);
        organiser.InitialiseOrganiserTree();

        QCOMPARE(world.tree->caption(), QStringLiteral("Assay Folders"));
        const FolderNode root = world.tree->node(0);
        QCOMPARE(root, organiser.rootNode());
        QCOMPARE(root.text(), QStringLiteral("Organiser"));
        QCOMPARE(root.folderPath(), QStringLiteral("Organiser"));
        QCOMPARE(root.level(), 0);
        QCOMPARE(root.displayStyle(), 7);
        QVERIFY(root.displayFlagA() && root.displayFlagB());
        QVERIFY(root.page().endsWith(QStringLiteral("/Organiser.mht")));

        const SuitePaths& paths = *world.globals.paths;
        const QString instrument = paths.ReadConfigurationsFolder() + QStringLiteral("/Reader One");
        const QList<Row> top = childRows(root);
        QCOMPARE(top.size(), 5);
        const QList<Row> expected{{"Reader One", instrument, 1},
                                  {"Microplate Layouts", paths.LayoutsFolder(), 2},
                                  {"Protocols", paths.ProtocolsFolder(), 3},
                                  {"Results", paths.ResultsFolder(), 4},
                                  {"Reports", paths.ReportsFolder(), 5}};
        for (int i = 0; i < 5; ++i) {
            QCOMPARE(top[i].text, expected[i].text);
            QCOMPARE(top[i].path, expected[i].path);
            QCOMPARE(top[i].data, expected[i].data);
            const FolderNode node = root.child(i);
            QVERIFY(node.displayFlagA() && node.displayFlagB());
            QCOMPARE(node.displayStyle(), 6);
            QCOMPARE(node.colour(), world.list->colour());
            QCOMPARE(node.childCount(), 1);
            QCOMPARE(node.child(0).data(), expected[i].data); // children take their branch's kind
        }
        QCOMPARE(organiser.resultsNode().child(0).child(0).folderPath(),
                 paths.ResultsFolder() + QStringLiteral("/2026/Run 1"));
        for (int key : {500, 501, 504})
            QVERIFY(!world.tree->isButtonEnabled(key));
        QCOMPARE(world.tree->currentNode(), root);
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
        OrganiserWorld world;
        world.globals.InstrumentDriversInUse = driversInUse;
        world.globals.settings->SetCurrentHLD(storedIndex);
        world.globals.store->setValue(QStringLiteral("Settings/InstrumentFlags"), flags);
        OrganiserTree organiser(*world.tree, *world.list, *world.shortcuts, world.globals);
        organiser.InitialiseOrganiserTree();
        QCOMPARE(organiser.instrumentNode().text(), caption);
        QCOMPARE(organiser.rootNode().childCount(), driversInUse ? 5 : 4);
        QCOMPARE(world.globals.settings->CurrentHLD(), indexAfter);
        if (driversInUse)
            QVERIFY(organiser.instrumentNode().folderPath().endsWith(QStringLiteral("/Reader ") +
                                                                     (indexAfter == 2 ? "Two" : "One")));
    }

    void theBuildWritesItsMilestones()
    {
        OrganiserWorld world;
        world.globals.settings->SetDiagnosticLogLevel(1);
        DiagnosticLog log([&world] { return world.globals.settings->DiagnosticLogLevel(); });
        QVERIFY(log.Open(world.dir.filePath(QStringLiteral("log"))));
        DiagnosticLog::setProcessWide(&log);
        OrganiserTree organiser(*world.tree, *world.list, *world.shortcuts, world.globals);
        organiser.InitialiseOrganiserTree();
        DiagnosticLog::setProcessWide(nullptr);
        QCOMPARE(log.blockCounter(), qint16(1));
        QCOMPARE(log.traceCounter(), qint16(10));
    }

    void recreatingResultsFollowsTheDiskAndKeepsTheSelection()
    {
        OrganiserWorld world;
        OrganiserTree organiser(*world.tree, *world.list, *world.shortcuts, world.globals);
        organiser.InitialiseOrganiserTree();
        QCOMPARE(organiser.resultsNode().childCount(), 0);
        makeFolder(world.data(QStringLiteral("Results/Run 1/raw")));
        organiser.RecreateResultsNode(); // no children yet: only fills
        QCOMPARE(childRows(organiser.resultsNode()).size(), 1);

        world.tree->setCurrentNode(organiser.protocolsNode());
        QSignalSpy selected(world.tree, &FolderTreeControl::nodeSelected);
        QVERIFY(QDir(world.data(QStringLiteral("Results/Run 1"))).removeRecursively());
        makeFolder(world.data(QStringLiteral("Results/Run 2")));
        makeFolder(world.data(QStringLiteral("Results/Run 3")));
        organiser.RecreateResultsNode();
        const QList<Row> rows = childRows(organiser.resultsNode());
        QCOMPARE(rows.size(), 2);
        QCOMPARE(rows[0].text, QStringLiteral("Run 2"));
        QCOMPARE(rows[1].data, 4);
        QCOMPARE(world.tree->currentNode(), organiser.protocolsNode());
        QCOMPARE(selected.count(), 0);
    }

    void theRootCannotBeRemovedOrRenamedByPath()
    {
        OrganiserWorld world;
        OrganiserTree organiser(*world.tree, *world.list, *world.shortcuts, world.globals);
        organiser.InitialiseOrganiserTree();
        const QString pretend = world.dir.filePath(QStringLiteral("Organiser"));
        QVERIFY(!organiser.RemoveExplorerBranch(pretend));
        QVERIFY(!organiser.RenameExplorerBranch(pretend, pretend + QStringLiteral("2")));
        QVERIFY(organiser.rootNode().isValid());
        QVERIFY(organiser.DoesPathAlreadyExistInTree(world.globals.paths->ResultsFolder().toUpper()));
    }

    void theListTestsRespectLetterCase()
    {
        OrganiserWorld world;
        writeFile(world.data(QStringLiteral("Protocols/Elisa.apr")));
        OrganiserTree organiser(*world.tree, *world.list, *world.shortcuts, world.globals);
        world.list->setFolder(world.globals.paths->ProtocolsFolder());
        QVERIFY(organiser.IsFileInFileView(QStringLiteral("Elisa.apr")));
        QVERIFY(!organiser.IsFileInFileView(QStringLiteral("elisa.apr")));
        QVERIFY(organiser.IsThisCurrentFolder(world.globals.paths->ProtocolsFolder()));
        QVERIFY(!organiser.IsThisCurrentFolder(world.globals.paths->ProtocolsFolder().toUpper()));
    }

    void anotherDriverReplacesTheInstrumentNodeInPlace()
    {
        OrganiserWorld world;
        OrganiserTree organiser(*world.tree, *world.list, *world.shortcuts, world.globals);
        organiser.InitialiseOrganiserTree();
        world.tree->setCurrentNode(organiser.instrumentNode());
        makeFolder(world.globals.paths->ReadConfigurationsFolder() + QStringLiteral("/Reader Two/Plates"));
        world.globals.settings->SetCurrentHLD(2);
        organiser.SetupHLDNode(QStringLiteral("Reader Two"));
        const FolderNode node = organiser.instrumentNode();
        QCOMPARE(organiser.rootNode().child(0), node);
        QCOMPARE(organiser.rootNode().childCount(), 5);
        QCOMPARE(node.text(), QStringLiteral("Reader Two"));
        QCOMPARE(node.child(0).text(), QStringLiteral("Plates"));
        QCOMPARE(world.tree->currentNode(), node);
        QCOMPARE(world.shortcuts->itemCaptions(1).at(1), QStringLiteral("Reader Two"));
        QCOMPARE(organiser.nodeForKind(1), node);
    }
};

QTEST_MAIN(OrganiserTreeTest)
#include "OrganiserTreeTest.moc"
