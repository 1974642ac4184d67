#include "OrganiserTree.h"
#include "FolderTreeModel.h"
#include "ListingWait.h"
#include "MountedShare.h"
#include "OrganiserWorld.h"

#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

namespace {

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
        TreeWorld o;
        for (const char* folder : {"Results/2026/Run 1", "Protocols/Elisa", "Microplate Layouts/96",
                                   "Reports/March", "Read Configurations/Reader One/Kinetic"})
            makeFolder(o.data(QLatin1String(folder)));
        QAbstractItemModelTester tester(&o.tree->nodes(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        o.build();

        QCOMPARE(o.tree->caption(), "Assay Folders");
        const FolderNode root = o.tree->node(0);
        QCOMPARE(root, o.organiser.rootNode());
        QCOMPARE(root.text() + QLatin1Char(' ') + root.folderPath(), QStringLiteral("Organiser Organiser"));
        QVERIFY(root.page().endsWith(QStringLiteral("/Organiser.mht")));
        const QString folders = o.paths.MyAssaysFolder();
        QCOMPARE(childRows(root).join(QLatin1Char('\n')).replace(folders, QStringLiteral("~")),
                 QStringLiteral("Reader One [1] ~/Read Configurations/Reader One\n"
                                "Microplate Layouts [2] ~/Microplate Layouts\n"
                                "Protocols [3] ~/Protocols\n"
                                "Results [4] ~/Results\n"
                                "Reports [5] ~/Reports"));
        for (int i = 0; i < 5; ++i) // every branch is filled, its folders of its kind
            QCOMPARE(root.child(i).child(0).data(), i + 1);
        QCOMPARE(o.organiser.node(DocumentType::Results).child(0).child(0).folderPath(),
                 folders + QStringLiteral("/Results/2026/Run 1"));
        for (int key :
             {FolderTreeControl::BackButton, FolderTreeControl::ForwardButton, FolderTreeControl::UpButton})
            QVERIFY(!o.tree->isButtonEnabled(key));
        QCOMPARE(o.tree->currentNode(), root);
    }

    void theInstrumentNodeFollowsTheSettings_data()
    {
        QTest::addColumn<bool>("driversInUse");
        QTest::addColumn<int>("storedIndex");
        QTest::addColumn<int>("flags");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<int>("indexAfter");
        // clang-format off
        QTest::newRow("second driver") << true << 2 << 0 << "Reader Two" << 2;
        QTest::newRow("index 0 means the first") << true << 0 << 0 << "Reader One" << 1;
        QTest::newRow("index past the drivers") << true << 9 << 0 << "Reader One" << 1;
        QTest::newRow("generic caption") << true << 1 << 0x20 << "Instrument Data" << 1;
        QTest::newRow("no drivers in use") << false << 2 << 0 << "" << 2;
        // clang-format on
    }

    void theInstrumentNodeFollowsTheSettings()
    {
        QFETCH(bool, driversInUse);
        QFETCH(int, storedIndex);
        QFETCH(int, flags);
        QFETCH(QString, caption);
        QFETCH(int, indexAfter);
        TreeWorld o(driversInUse);
        o.settings.SetCurrentHLD(storedIndex);
        o.store.setValue(QStringLiteral("Settings/InstrumentFlags"), flags);
        o.build();
        QCOMPARE(o.organiser.node(DocumentType::ReadConfigurations).text(), caption);
        QCOMPARE(o.organiser.rootNode().childCount(), driversInUse ? 5 : 4);
        QCOMPARE(o.settings.CurrentHLD(), indexAfter);
        if (driversInUse)
            QVERIFY(o.organiser.node(DocumentType::ReadConfigurations)
                        .folderPath()
                        .endsWith(indexAfter == 2 ? "/Reader Two" : "/Reader One"));
    }

    // A branch on a share that stops answering: the build returns at once,
    // the other branches fill, the branch says that it waits, and it fills
    // when the share answers.
    void aBranchOnAShareThatDoesNotAnswerIsWaitedFor()
    {
        TreeWorld o;
        makeFolder(o.data("Protocols/Elisa"));
        test::MountedShare share;
        share.mount = o.data("Results");
        if (!share.made())
            return;
        makeFolder(share.backing + "/Run 1");
        share.fuse.freeze();
        QElapsedTimer answered;
        answered.start();
        o.organiser.InitialiseOrganiserTree();
        QVERIFY(answered.elapsed() < 1000);
        const FolderNode results = o.organiser.node(DocumentType::Results);
        QTRY_COMPARE_WITH_TIMEOUT(results.text(), OrganiserTree::waitingCaption("Results"), 5000);
        QCOMPARE(o.organiser.node(DocumentType::Protocols).childCount(), 1);
        QVERIFY(o.tree->isBusy());
        share.fuse.thaw();
        QVERIFY(o.filled());
        QCOMPARE(childRows(results), QStringList{"Run 1 [4] " + o.data("Results/Run 1")});
        QCOMPARE(results.text(), QStringLiteral("Results"));
        QVERIFY(!o.tree->isBusy());
    }

    void recreatingResultsFollowsTheDiskAndKeepsTheSelectionAndLookups()
    {
        TreeWorld o;
        o.build();
        makeFolder(o.data("Results/Run 0"));
        makeFolder(o.data("Results/Run 1/raw"));
        o.organiser.RecreateResultsNode(); // no children yet: only fills
        QVERIFY(o.filled());
        QCOMPARE(o.organiser.node(DocumentType::Results).childCount(), 2);

        o.tree->setCurrentNode(o.organiser.node(DocumentType::Protocols));
        QSignalSpy selected(o.tree, &FolderTreeControl::nodeSelected);
        for (const char* run : {"Results/Run 0", "Results/Run 1"})
            QVERIFY(QDir(o.data(QLatin1String(run))).removeRecursively());
        makeFolder(o.data("Results/Run 2"));
        o.organiser.RecreateResultsNode();
        QVERIFY(o.filled());
        QCOMPARE(childRows(o.organiser.node(DocumentType::Results)),
                 QStringList{"Run 2 [4] " + o.data("Results/Run 2")});
        QCOMPARE(o.tree->currentNode(), o.organiser.node(DocumentType::Protocols));
        QCOMPARE(selected.count(), 0);
        QVERIFY(!o.tree->nodes().isUpdating()); // the views hear of later changes again
        // The root's "Organiser" never matches a real folder.
        const QString pretend = o.dir.filePath("Organiser");
        QVERIFY(!o.organiser.RemoveExplorerBranch(pretend));
        QVERIFY(!o.organiser.RenameExplorerBranch(pretend, pretend + QStringLiteral("2")));
        QVERIFY(o.organiser.rootNode().isValid());
        // A file is in the list only by its exact name.
        writeFile(o.data("Protocols/Elisa.apr"));
        o.list->setFolder(o.paths.ProtocolsFolder());
        QVERIFY(nebra::test::waitForListing(*o.list));
        QVERIFY(o.organiser.IsFileInFileView("Elisa.apr") && !o.organiser.IsFileInFileView("elisa.apr"));
        QVERIFY(o.organiser.IsThisCurrentFolder(o.paths.ProtocolsFolder()));
    }

    // Another driver replaces the node in place; the first driver makes the node (the catalogue had no
    // drivers when the tree was built).
    void aChangedDriverSetsUpTheInstrumentNode()
    {
        for (const bool nodeBefore : {true, false}) {
            TreeWorld o;
            const QString catalogue = o.dir.filePath("drivers.json");
            const QByteArray drivers = readFile(catalogue);
            if (!nodeBefore)
                writeFile(catalogue, R"({"drivers":[]})");
            o.build();
            QAbstractItemModelTester tester(&o.tree->nodes(),
                                            QAbstractItemModelTester::FailureReportingMode::QtTest);
            o.tree->setCurrentNode(
                o.organiser.node(nodeBefore ? DocumentType::ReadConfigurations : DocumentType::None));
            writeFile(catalogue, drivers);
            makeFolder(o.paths.ReadConfigurationsFolder() + QStringLiteral("/Reader Two/Plates"));
            o.settings.SetCurrentHLD(2);
            o.organiser.HandleChangedHLD();
            QVERIFY(o.filled());
            const FolderNode node = o.organiser.node(DocumentType::ReadConfigurations);
            QCOMPARE(o.organiser.rootNode().child(0), node);
            QCOMPARE(o.organiser.rootNode().childCount(), 5);
            QCOMPARE(node.text(), QStringLiteral("Reader Two"));
            QCOMPARE(node.child(0).text(), QStringLiteral("Plates"));
            QCOMPARE(o.tree->currentNode() == node, nodeBefore);
            QCOMPARE(o.shortcuts->itemCaptions(1).at(1), QStringLiteral("Reader Two"));
        }
    }
};

QTEST_MAIN(OrganiserTreeTest)
#include "OrganiserTreeTest.moc"
