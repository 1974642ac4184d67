#include "FileView.h"
#include "ListingWait.h"
#include "MessageRecorder.h"
#include "OrganiserTree.h"
#include "OrganiserWorld.h"
#include "StyleIcons.h"

#include <QTreeView>

using namespace nebra;
using namespace nebra::test;

namespace {

// The world with its tree built and the file list's logic connected, as the
// main window connects them. The sort timer reads the clock below.
struct Organiser : TreeWorld
{
    explicit Organiser(bool driversInUse = true) : TreeWorld(driversInUse), driversInUse(driversInUse) {}

    const bool driversInUse;
    double clock = 1000.0;
    FileView view{*tree, *list, *switches, settings, paths, driversInUse, [this] { return clock; }};
    QStringList previews; // "show <name>" or "clear"

    // Writes the files (relative to My Assays), builds the tree and selects the node.
    void open(const QStringList& files, DocumentType type)
    {
        for (const QString& file : files)
            writeFile(data(file), file.toUtf8());
        view.connectEvents();
        view.setCanCreateProtocol(true);
        view.setPreviewHandlers([this](const FileListItem& item) { previews << "show " + item.name(); },
                                [this](bool) { previews << QStringLiteral("clear"); });
        QObject::connect(&view, &FileView::folderAppeared, tree,
                         [this](const QString& path) { organiser.AddExplorerBranch(path); });
        QObject::connect(&view, &FileView::folderVanished, tree,
                         [this](const QString& path) { organiser.RemoveExplorerBranch(path); });
        build();
        tree->setCurrentNode(organiser.node(type));
        QVERIFY(waitForListing(*list));
    }

    FileListItem item(const QString& name) const
    {
        for (int i = 1; i <= list->itemCount(); ++i)
            if (list->item(i).name() == name)
                return list->item(i);
        return {};
    }

    QString commands() const // New, Open, Run as "tree/tools" bits, e.g. "110/110"
    {
        QString text;
        const CommandId documentCommands[] = {CommandId::New, CommandId::Open, CommandId::Run};
        for (const CommandId command : documentCommands)
            text += tree->isButtonEnabled(ToolDefinitions::command(command).treeButton) ? '1' : '0';
        text += '/';
        for (const CommandId command : documentCommands)
            text += switches->isCommandEnabled(command) ? '1' : '0';
        return text;
    }

    QStringList files(const QString& folder) const { return QDir(data(folder)).entryList(QDir::Files); }
};

} // namespace

class FileViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachFolderListsItsDocumentsNewestSelected()
    {
        Organiser o;
        writeFile(o.data("Protocols/Old.apr"), {}, 1600000000);
        writeFile(o.data("Protocols/Newest.apr"), {}, 1700000000, 500);
        writeFile(o.data("Protocols/Same second.apr"), {}, 1700000000, 100);
        writeFile(o.data("Protocols/Newest.mht"), {}, 1800000000);
        makeFolder(o.data("Protocols/Sub"));
        o.open({"Reports/no extension", "Reports/data.csv"}, DocumentType::Protocols);
        QCOMPARE(o.list->filter(), QStringLiteral("*.apr"));
        QCOMPARE(o.list->itemCount(), 4);
        QCOMPARE(o.list->selectedCount(), 1);
        QCOMPARE(o.list->sortColumn(), QStringLiteral("Date Modified"));
        QCOMPARE(o.previews, QStringList{QStringLiteral("show Newest.apr")});
        QCOMPARE(o.view.CurrentDocumentTypeName(), QStringLiteral("Assay Protocol"));
        const qint64 plainPage = StyleIcons::icon(QStyle::SP_FileIcon).cacheKey();
        const qint64 protocolPicture = o.list->documentIcon().cacheKey();
        QVERIFY(protocolPicture != plainPage);
        QCOMPARE(o.commands(), QStringLiteral("111/111"));
        // Without a wizard to start, New cannot make a protocol.
        o.view.setCanCreateProtocol(false);
        o.view.UpdateDocumentCommands();
        QCOMPARE(o.commands(), QStringLiteral("011/011"));
        o.view.setCanCreateProtocol(true);
        o.view.UpdateDocumentCommands();
        // Open and Run need exactly one file: not two, not a folder.
        o.item(QStringLiteral("Old.apr")).setSelected(true);
        QCOMPARE(o.commands(), QStringLiteral("100/100"));
        for (const char* name : {"Old.apr", "Newest.apr", "Sub"})
            o.item(QLatin1String(name)).setSelected(QLatin1String(name) == QLatin1String("Sub"));
        QCOMPARE(o.commands(), QStringLiteral("100/100"));
        // Size and Type never show, whatever the user tries.
        for (const QString& column : {QStringLiteral("Size"), QStringLiteral("Type")})
            QVERIFY(!o.list->setColumnShown(column, true));
        QVERIFY(o.list->isColumnShown(QStringLiteral("Comment")));

        // The root keeps the list and the type name, with the commands off.
        o.tree->setCurrentNode(o.organiser.rootNode());
        QVERIFY(waitForListing(*o.list));
        QCOMPARE(o.view.CurrentDocumentTypeName(), QStringLiteral("Assay Protocol"));
        QCOMPARE(o.list->folder(), o.paths.ProtocolsFolder());
        QCOMPARE(o.commands(), QStringLiteral("000/000"));
        // Every file, with or without extension.
        o.tree->setCurrentNode(o.organiser.node(DocumentType::Reports));
        QCOMPARE(o.list->filter(), QStringLiteral("*.*"));
        QVERIFY(waitForListing(*o.list));
        QCOMPARE(o.list->itemCount(), 2);
        QCOMPARE(o.list->documentIcon().cacheKey(), plainPage); // a report may be any kind of file
        o.tree->setCurrentNode(o.organiser.node(DocumentType::Results));
        QVERIFY(waitForListing(*o.list));
        QCOMPARE(o.view.CurrentDocumentTypeName(), QStringLiteral("Assay Results"));
        QVERIFY(!(QList<qint64>{plainPage, protocolPicture}.contains(o.list->documentIcon().cacheKey())));
        QCOMPARE(o.previews.last(), QStringLiteral("clear")); // an empty folder clears the preview
    }

    // Layouts are previewed always, protocols only with instrument drivers in use; nothing with the pane off.
    void thePreviewFollowsTheSettings()
    {
        // clang-format off
        for (const auto& [driversInUse, previewOn, previews] : {std::tuple{true, true, QStringList{"show L.mlo", "show P.apr"}}, {false, true, QStringList{"show L.mlo"}}, {true, false, QStringList{}}}) {
            // clang-format on
            Organiser o(driversInUse);
            o.settings.SetShowPreviewPane(previewOn);
            o.open({"Microplate Layouts/L.mlo", "Protocols/P.apr"}, DocumentType::Layouts);
            o.tree->setCurrentNode(o.organiser.node(DocumentType::Protocols));
            QVERIFY(waitForListing(*o.list));
            QCOMPARE(o.previews, previews);
        }
    }

    // A document in a folder the tree is still reading is shown once the folder has arrived;
    // one outside the tree is reported.
    void aDocumentWaitsForItsFolderOrIsReportedAndRenamingKeepsTheExtension()
    {
        Organiser o;
        MessageRecorder messages;
        o.open({"Protocols/P.apr"}, DocumentType::Protocols);
        writeFile(o.data("Results/Run 1/R.ars"));
        o.organiser.RecreateResultsNode();
        o.view.ShowDocument(o.data("Results/Run 1/R.ars"));
        QTRY_COMPARE(o.tree->currentNode().folderPath(), o.data("Results/Run 1"));
        QTRY_COMPARE(o.list->firstSelectedItem().name(), QStringLiteral("R.ars"));
        QCOMPARE(messages.count(), 0);
        o.view.ShowDocument(o.dir.filePath("elsewhere.apr"));
        QTRY_COMPARE(messages.count(), 1);
        QCOMPARE(messages.last().title, QStringLiteral("Recent Documents"));
        o.tree->setCurrentNode(o.organiser.node(DocumentType::Protocols));
        QVERIFY(waitForListing(*o.list));
        QVERIFY(!o.list->renameItem(o.item(QStringLiteral("P.apr")), QStringLiteral("Q.txt")));
        QCOMPARE(o.files("Protocols"), QStringList{"P.apr"});
        QCOMPARE(messages.count(), 2);
        QCOMPARE(messages.last().text, QStringLiteral("Changing a  file extension is not allowed."));
        QCOMPARE(messages.last().title, QStringLiteral("File Rename Error"));
        QCOMPARE(messages.last().icon, MessageIcon::Warning);
        QCOMPARE(messages.last().buttons, int(MessageButton::Ok));
        // With extensions hidden the rule does not apply, and the file keeps its extension.
        o.list->setShowExtensions(false);
        QVERIFY(o.list->renameItem(o.list->item(1), QStringLiteral("Q")));
        QTRY_COMPARE(o.files("Protocols"), QStringList{"Q.apr"});
        QCOMPARE(messages.count(), 2);
    }

    // Results: the preview renamed along, or left when the new name is taken; a protocol's dropped.
    void thePreviewFileFollowsARenamedDocument()
    {
        // clang-format off
        for (auto [files, newName, after] : {std::tuple{QStringList{"Run.ars", "Run.mht"}, QString("Run 2.ars"), QStringList{"Run 2.ars", "Run 2.mht"}}, {QStringList{"A.ars", "A.mht", "B.mht"}, QString("B.ars"), QStringList{"A.mht", "B.ars", "B.mht"}}, {QStringList{"P.apr", "P.mht"}, QString("Q.apr"), QStringList{"Q.apr"}}}) {
            // clang-format on
            Organiser o;
            const bool protocol = files.first().endsWith(".apr");
            const QString folder = protocol ? "Protocols/" : "Results/";
            for (QString& name : files)
                name.prepend(folder);
            o.open(files, protocol ? DocumentType::Protocols : DocumentType::Results);
            QVERIFY(o.list->renameItem(o.item(QFileInfo(files.first()).fileName()), newName));
            QTRY_COMPARE(o.files(folder), after);
            if (after.contains("B.mht")) // the other document's preview is left alone
                QCOMPARE(test::readFile(o.data(folder + "B.mht")), QByteArray("Results/B.mht"));
        }
    }

    void doubleClickingASubFolderMovesTheTreeAndSubFoldersAppearingInTheListReachIt()
    {
        Organiser o;
        makeFolder(o.data("Results/2026"));
        o.open({}, DocumentType::None);
        makeFolder(o.data("Results/Later")); // no node for it
        o.tree->setCurrentNode(o.organiser.node(DocumentType::Results));
        QVERIFY(waitForListing(*o.list));
        for (const QString& name : {QStringLiteral("Later"), QStringLiteral("2026")}) {
            bool handled = false;
            o.view.OnItemActivated(o.item(name), handled);
            QVERIFY(handled);
        }
        QCOMPARE(o.tree->currentNode(), o.organiser.node(DocumentType::Results).child(0));
        QCOMPARE(o.list->folder(), o.data("Results/2026"));
        bool handled = false;
        writeFile(o.data("Results/2026/r.ars"));
        o.list->refresh();
        QVERIFY(waitForListing(*o.list));
        o.view.OnItemActivated(o.item(QStringLiteral("r.ars")), handled);
        QVERIFY(!handled); // files are left to the list
        // Sub-folders appearing in the list reach the tree.
        const FolderNode shown = o.tree->currentNode();
        makeFolder(o.data("Results/2026/New Run"));
        QTRY_COMPARE_WITH_TIMEOUT(shown.childCount(), 1, 5000);
        QCOMPARE(shown.child(0).folderPath(), o.data("Results/2026/New Run"));
        QVERIFY(QDir(o.data("Results/2026/New Run")).removeRecursively());
        QTRY_COMPARE_WITH_TIMEOUT(shown.childCount(), 0, 5000);
    }

    void afterAHeaderClickTheSelectionComesBackIntoView()
    {
        Organiser o;
        for (int i = 0; i < 300; ++i)
            writeFile(o.data(QStringLiteral("Protocols/%1.apr").arg(i)), {}, 1600000000 + i);
        o.window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&o.window));
        o.open({}, DocumentType::Protocols);
        QTreeView* view = o.list->view();
        auto selectedInView = [&] {
            const QModelIndex index = view->selectionModel()->selectedRows().value(0);
            return view->viewport()->rect().intersects(view->visualRect(index));
        };
        QVERIFY(selectedInView());
        o.list->clickColumnHeader(QStringLiteral("Date Modified")); // newest now first
        QVERIFY(o.view.TimerSortByColumn().isArmed() && !selectedInView());
        o.clock += 0.1;
        QTRY_VERIFY_WITH_TIMEOUT(!o.view.TimerSortByColumn().isArmed(), 2000);
        QVERIFY(selectedInView());
    }
};

QTEST_MAIN(FileViewTest)
#include "FileViewTest.moc"
