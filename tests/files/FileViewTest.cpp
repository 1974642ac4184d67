#include "FileView.h"
#include "MessageRecorder.h"
#include "OrganiserTree.h"
#include "OrganiserWorld.h"

#include <QSignalSpy>
#include <QTreeView>

using namespace nebra;
using nebra::test::makeFolder;
using nebra::test::MessageRecorder;
using nebra::test::OrganiserWorld;
using nebra::test::writeFile;

namespace {

// The world with its tree built and the file list's logic connected, as the
// main window connects them. The sort timer reads the clock below.
struct Organiser
{
    OrganiserWorld world;
    double clock = 1000.0;
    OrganiserTree tree{*world.tree, *world.list, *world.shortcuts, world.globals};
    FileView view{*world.tree, *world.list, *world.tools, world.globals, {}, [this] { return clock; }};
    QStringList previews; // "show <name>" or "clear"

    void build()
    {
        view.connectEvents();
        view.setPreviewHandlers([this](const FileListItem& item) { previews << "show " + item.name(); },
                                [this](bool) { previews << QStringLiteral("clear"); });
        QObject::connect(&view, &FileView::folderAppeared, world.tree,
                         [this](const QString& path) { tree.AddExplorerBranch(path); });
        QObject::connect(&view, &FileView::folderVanished, world.tree,
                         [this](const QString& path) { tree.RemoveExplorerBranch(path); });
        tree.InitialiseOrganiserTree();
    }

    FileListItem item(const QString& name) const
    {
        for (int i = 1; i <= world.list->itemCount(); ++i)
            if (world.list->item(i).name() == name)
                return world.list->item(i);
        return {};
    }

    QString commands() const // New, Open, Run as "tree/tools" bits, e.g. "110/110"
    {
        QString text;
        for (int key : {605, 606, 607})
            text += world.tree->isButtonEnabled(key) ? '1' : '0';
        text += '/';
        for (const char* id : {"ID_New", "ID_Open", "ID_Run"})
            text += world.tools->isToolEnabled(QLatin1String(id)) ? '1' : '0';
        return text;
    }
};

} // namespace

class FileViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aFolderOpensWithItsNewestDocumentSelected()
    {
        Organiser o;
        writeFile(o.world.data("Protocols/Old.apr"), {}, 1600000000);
        writeFile(o.world.data("Protocols/Newest.apr"), {}, 1700000000, 500);
        writeFile(o.world.data("Protocols/Same second.apr"), {}, 1700000000, 100);
        writeFile(o.world.data("Protocols/Newest.mht"), {}, 1800000000);
        makeFolder(o.world.data("Protocols/Sub"));
        o.build();
        o.world.tree->setCurrentNode(o.tree.protocolsNode());
        QCOMPARE(o.world.list->filter(), QStringLiteral("*.apr"));
        QCOMPARE(o.world.list->itemCount(), 4);
        QCOMPARE(o.world.list->selectedCount(), 1);
        QCOMPARE(o.world.list->firstSelectedItem().name(), QStringLiteral("Newest.apr"));
        QCOMPARE(o.world.list->sortColumn(), QStringLiteral("Date Modified"));
        QCOMPARE(o.previews, QStringList{QStringLiteral("show Newest.apr")});
        QCOMPARE(o.view.CurrentDocumentTypeName(), QStringLiteral("Assay Protocol"));
        QCOMPARE(o.commands(), QStringLiteral("111/111"));
    }

    void theRootKeepsTheListAndTheTypeName()
    {
        Organiser o;
        writeFile(o.world.data("Protocols/P.apr"));
        o.build();
        o.world.tree->setCurrentNode(o.tree.protocolsNode());
        o.world.tree->setCurrentNode(o.tree.rootNode());
        QCOMPARE(o.view.CurrentDocumentTypeName(), QStringLiteral("Assay Protocol"));
        QCOMPARE(o.world.list->folder(), o.world.globals.paths->ProtocolsFolder());
        QCOMPARE(o.commands(), QStringLiteral("000/000"));
        o.world.tree->setCurrentNode(o.tree.resultsNode());
        QCOMPARE(o.view.CurrentDocumentTypeName(), QStringLiteral("Assay Results"));
        QCOMPARE(o.previews.last(), QStringLiteral("clear")); // an empty folder clears the preview
    }

    void commandsFollowTypeAndSelection_data()
    {
        QTest::addColumn<QString>("branch");
        QTest::addColumn<QStringList>("selected");
        QTest::addColumn<QString>("expected");
        QTest::newRow("protocols, one file") << "Protocols" << QStringList{"A.apr"} << "111/111";
        QTest::newRow("protocols, two files") << "Protocols" << QStringList{"A.apr", "B.apr"} << "100/100";
        QTest::newRow("protocols, one folder") << "Protocols" << QStringList{"Sub"} << "100/100";
        QTest::newRow("layouts, one file") << "Microplate Layouts" << QStringList{"A.mlo"} << "110/110";
        QTest::newRow("results, one file") << "Results" << QStringList{"A.ars"} << "010/010";
        QTest::newRow("reports, none") << "Reports" << QStringList{} << "000/000";
    }

    void commandsFollowTypeAndSelection()
    {
        QFETCH(QString, branch);
        QFETCH(QStringList, selected);
        QFETCH(QString, expected);
        Organiser o;
        for (const char* name : {"Protocols/A.apr", "Protocols/B.apr", "Microplate Layouts/A.mlo",
                                 "Results/A.ars", "Reports/A.mht"})
            writeFile(o.world.data(QLatin1String(name)));
        makeFolder(o.world.data("Protocols/Sub"));
        o.build();
        const QMap<QString, FolderNode> nodes{{"Protocols", o.tree.protocolsNode()},
                                              {"Microplate Layouts", o.tree.layoutsNode()},
                                              {"Results", o.tree.resultsNode()},
                                              {"Reports", o.tree.reportsNode()}};
        o.world.tree->setCurrentNode(nodes[branch]);
        o.world.list->firstSelectedItem().setSelected(false);
        for (const QString& name : selected)
            o.item(name).setSelected(true);
        QCOMPARE(o.commands(), expected);
    }

    void reportsListEveryFile()
    {
        Organiser o;
        for (const char* name : {"Reports/Summary.mht", "Reports/no extension", "Reports/data.csv"})
            writeFile(o.world.data(QLatin1String(name)));
        o.build();
        o.world.tree->setCurrentNode(o.tree.reportsNode());
        QCOMPARE(o.world.list->filter(), QStringLiteral("*.*"));
        QCOMPARE(o.world.list->itemCount(), 3);
        QVERIFY(o.item(QStringLiteral("no extension")).isValid());
    }

    void renamingKeepsTheExtension_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("newName");
        QTest::addColumn<bool>("showExtensions");
        QTest::addColumn<QString>("result"); // the file's name afterwards
        // clang-format off
        QTest::newRow("same extension in capitals") << "Protocols/P.apr" << "Q.APR" << true << "Q.APR";
        QTest::newRow("to .txt") << "Protocols/P.apr" << "Q.txt" << true << "P.apr";
        QTest::newRow("without extension") << "Protocols/P.apr" << "Q" << true << "P.apr";
        QTest::newRow("extensions hidden") << "Protocols/P.apr" << "Q" << false << "Q.apr";
        QTest::newRow("a report") << "Reports/R.mht" << "S.mht" << true << "R.mht";
        // clang-format on
    }

    void renamingKeepsTheExtension()
    {
        QFETCH(QString, file);
        QFETCH(QString, newName);
        QFETCH(bool, showExtensions);
        QFETCH(QString, result);
        Organiser o;
        MessageRecorder messages;
        writeFile(o.world.data(file));
        o.build();
        o.world.list->setShowExtensions(showExtensions);
        o.world.tree->setCurrentNode(file.startsWith("Reports") ? o.tree.reportsNode()
                                                                : o.tree.protocolsNode());
        o.world.list->renameItem(o.world.list->item(1), newName);
        const QString folder = QFileInfo(o.world.data(file)).path();
        QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList{result});
        if (result == QFileInfo(file).fileName()) {
            QCOMPARE(messages.count(), 1);
            QCOMPARE(messages.last().text, QStringLiteral("Changing a  file extension is not allowed."));
            QCOMPARE(messages.last().title, QStringLiteral("File Rename Error"));
            QCOMPARE(messages.last().icon, MessageIcon::Warning);
            QCOMPARE(messages.last().buttons, int(MessageButton::Ok));
        } else {
            QCOMPARE(messages.count(), 0);
        }
    }

    void thePreviewFileFollowsARenamedDocument_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("newName");
        QTest::addColumn<QStringList>("after");
        // clang-format off
        QTest::newRow("results: renamed along")
            << QStringList{"Run.ars", "Run.mht"} << "Run 2.ars" << QStringList{"Run 2.ars", "Run 2.mht"};
        QTest::newRow("results: new name taken")
            << QStringList{"A.ars", "A.mht", "B.mht"} << "B.ars" << QStringList{"A.mht", "B.ars", "B.mht"};
        QTest::newRow("protocol: dropped")
            << QStringList{"P.apr", "P.mht"} << "Q.apr" << QStringList{"Q.apr"};
        // clang-format on
    }

    void thePreviewFileFollowsARenamedDocument()
    {
        QFETCH(QStringList, files);
        QFETCH(QString, newName);
        QFETCH(QStringList, after);
        Organiser o;
        const QString folder = files.first().endsWith(".apr") ? "Protocols/" : "Results/";
        for (const QString& name : files)
            writeFile(o.world.data(folder + name), name.toUtf8());
        o.build();
        o.world.tree->setCurrentNode(files.first().endsWith(".apr") ? o.tree.protocolsNode()
                                                                    : o.tree.resultsNode());
        QVERIFY(o.world.list->renameItem(o.item(files.first()), newName));
        QCOMPARE(QDir(o.world.data(folder)).entryList(QDir::Files), after);
        if (after.contains("B.mht")) { // the other document's preview is left alone
            QFile kept(o.world.data(folder + "B.mht"));
            QVERIFY(kept.open(QIODevice::ReadOnly));
            QCOMPARE(kept.readAll(), QByteArray("B.mht"));
        }
    }

    void sizeAndTypeNeverShow()
    {
        Organiser o;
        o.build();
        o.world.list->addColumn(QStringLiteral("Extra"));
        for (const QString& column : {QStringLiteral("Size"), QStringLiteral("Type")}) {
            QVERIFY(!o.world.list->isColumnShown(column));
            QVERIFY(!o.world.list->setColumnShown(column, true));
        }
        QVERIFY(o.world.list->isColumnShown(QStringLiteral("Comment")));
        QVERIFY(o.world.list->isColumnShown(QStringLiteral("Date Modified")));
    }

    void doubleClickingASubFolderMovesTheTree()
    {
        Organiser o;
        makeFolder(o.world.data("Results/2026"));
        o.build();
        makeFolder(o.world.data("Results/Later")); // no node for it
        o.world.tree->setCurrentNode(o.tree.resultsNode());
        for (const QString& name : {QStringLiteral("Later"), QStringLiteral("2026")}) {
            bool handled = false;
            o.view.OnItemActivated(o.item(name), handled);
            QVERIFY(handled);
        }
        QCOMPARE(o.world.tree->currentNode(), o.tree.resultsNode().child(0));
        QCOMPARE(o.world.list->folder(), o.world.data("Results/2026"));
        bool handled = false;
        writeFile(o.world.data("Results/2026/r.ars"));
        o.world.list->refresh();
        o.view.OnItemActivated(o.item(QStringLiteral("r.ars")), handled);
        QVERIFY(!handled); // files are left to the list
    }

    void afterAHeaderClickTheSelectionComesBackIntoView()
    {
        Organiser o;
        for (int i = 0; i < 300; ++i)
            writeFile(o.world.data(QStringLiteral("Protocols/%1.apr").arg(i)), {}, 1600000000 + i);
        o.build();
        o.world.window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&o.world.window));
        o.world.tree->setCurrentNode(o.tree.protocolsNode());
        QTreeView* view = o.world.list->view();
        auto selectedInView = [&] {
            const QModelIndex index = view->selectionModel()->selectedRows().value(0);
            return view->viewport()->rect().intersects(view->visualRect(index));
        };
        QVERIFY(selectedInView());
        o.world.list->clickColumnHeader(QStringLiteral("Date Modified")); // newest now first
        QVERIFY(o.view.TimerSortByColumn().isArmed());
        QVERIFY(!selectedInView());
        o.clock += 0.1;
        QTRY_VERIFY_WITH_TIMEOUT(!o.view.TimerSortByColumn().isArmed(), 2000);
        QVERIFY(selectedInView());
    }

    void subFoldersAppearingInTheListReachTheTree()
    {
        Organiser o;
        o.build();
        o.world.tree->setCurrentNode(o.tree.resultsNode());
        makeFolder(o.world.data("Results/New Run"));
        QTRY_COMPARE_WITH_TIMEOUT(o.tree.resultsNode().childCount(), 1, 5000);
        QCOMPARE(o.tree.resultsNode().child(0).folderPath(), o.world.data("Results/New Run"));
        QVERIFY(QDir(o.world.data("Results/New Run")).removeRecursively());
        QTRY_COMPARE_WITH_TIMEOUT(o.tree.resultsNode().childCount(), 0, 5000);
    }
};

QTEST_MAIN(FileViewTest)
#include "FileViewTest.moc"
