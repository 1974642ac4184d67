#include "FileListControl.h"
#include "FileListFilterBox.h"
#include "FolderReaders.h"
#include "ListingWait.h"
#include "MessageRecorder.h"
#include "MountedShare.h"
#include "TestFiles.h"
#include "UserFolders.h"

#include <QAccessible>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>

#include <sys/xattr.h>

using namespace nebra;
using namespace nebra::test;

namespace {

struct Listing
{
    UserFolders user; // the trash lives in the redirected data folder
    QTemporaryDir dir;
    FileListControl list;

    Listing()
    {
        writeFile(dir.filePath("old.apr"), {}, 1600000000);
        writeFile(dir.filePath("new.apr"), {}, 1700000000);
        writeFile(dir.filePath("new.mht"));
        makeFolder(dir.filePath("Sub"));
        list.resize(600, 300);
        list.setFilter(QStringLiteral("*.apr"));
        list.setFolder(dir.path());
        if (!waitForListing(list))
            qFatal("The listing did not arrive");
    }

    void showFolder(const QString& folder)
    {
        list.setFolder(folder);
        QVERIFY(waitForListing(list));
    }

    QModelIndex rowNamed(const QString& name) const
    {
        const QAbstractItemModel* model = list.view()->model();
        return model->match(model->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly).value(0);
    }

    FileListItem named(const QString& name) const
    {
        for (int i = 1; i <= list.itemCount(); ++i)
            if (list.item(i).name() == name)
                return list.item(i);
        return {};
    }
};

} // namespace

class FileListControlTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theColumnsAsSortedHeardAndCommented()
    {
        Listing listing;
        listing.list.sortByColumn(QStringLiteral("Date Modified"));
        QCOMPARE(listing.list.item(3).name(), QStringLiteral("new.apr"));
        QStringList announced;
        connect(
            &listing.list, &FileListControl::columnHeaderClicked, &listing.list,
            [&](const QString& name) { announced << name + QLatin1Char(' ') + listing.list.item(3).name(); });
        listing.list.clickColumnHeader(QStringLiteral("Date Modified"));
        QCOMPARE(announced, QStringList{QStringLiteral("Date Modified new.apr")}); // before the sort
        QCOMPARE(listing.list.sortOrder(), Qt::DescendingOrder);
        QCOMPARE(listing.list.item(2).name(), QStringLiteral("new.apr"));
        QCOMPARE(listing.list.item(1).name(), QStringLiteral("Sub")); // folders stay first
        // A screen reader walking the list hears the shown columns only, headers and cells.
        listing.list.show();
        QVERIFY(QTest::qWaitForWindowExposed(&listing.list));
        const auto heard = [&] {
            QAccessibleInterface* table = QAccessible::queryAccessibleInterface(listing.list.view());
            QStringList headers;
            for (int column = 0; column < table->tableInterface()->columnCount(); ++column)
                headers << table->child(column)->text(QAccessible::Name);
            for (int child = 0; child < table->childCount(); ++child)
                if (table->child(child)->text(QAccessible::Name) == QLatin1String("APR File"))
                    headers << QStringLiteral("a type cell");
            return headers;
        };
        QCOMPARE(heard(),
                 QStringList({"Name", "Size", "Type", "Date Modified", "a type cell", "a type cell"}));
        listing.list.setColumnShown(QStringLiteral("Type"), false);
        listing.list.setColumnShown(QStringLiteral("Size"), false);
        QCOMPARE(heard(), QStringList({"Name", "Date Modified"}));
        QVERIFY(listing.list.setColumnShown(QStringLiteral("Type"), true)); // back in its place
        QCOMPARE(heard(), QStringList({"Name", "Type", "Date Modified", "a type cell", "a type cell"}));
        // A comment column is filled from the files' comments after the listing.
        const QByteArray comment("Plate 3");
        if (::setxattr(QFile::encodeName(listing.dir.filePath("new.apr")).constData(), "user.xdg.comment",
                       comment.constData(), size_t(comment.size()), 0) != 0)
            QSKIP("this file system keeps no user extended attributes");
        listing.list.addColumn(QStringLiteral("Comment"));
        const QModelIndex name = listing.rowNamed(QStringLiteral("new.apr"));
        QTRY_COMPARE(name.siblingAtColumn(name.model()->columnCount() - 1).data().toString(),
                     QStringLiteral("Plate 3"));
    }

    void renameRefusesWhatTheFileSystemCannotTake_data()
    {
        QTest::addColumn<QString>("newName");
        QTest::addColumn<QString>("message");
        // clang-format off
        QTest::newRow("existing") << "new.apr" << "already exists";
        QTest::newRow("empty") << "" << "You must type a file name.";
        QTest::newRow("blanks") << "   " << "You must type a file name.";
        QTest::newRow("slash") << "a/b.apr" << "slash";
        QTest::newRow("dot dot") << ".." << "reserved";
        QTest::newRow("too long") << QString(300, QLatin1Char('x')) << "too long";
        QTest::newRow("file gone meanwhile") << "x.apr" << "No such file or directory";
        // clang-format on
    }

    void renameRefusesWhatTheFileSystemCannotTake()
    {
        QFETCH(QString, newName);
        QFETCH(QString, message);
        Listing listing;
        MessageRecorder messages;
        const FileListItem item = listing.named(QStringLiteral("old.apr"));
        const bool gone = QTest::currentDataTag() == QLatin1String("file gone meanwhile");
        if (gone)
            QFile::remove(item.path());
        listing.list.renameItem(item, newName); // the file system's answer comes later
        QTRY_COMPARE(messages.count(), 1);
        QVERIFY2(messages.last().text.contains(message), qPrintable(messages.last().text));
        QCOMPARE(QFile::exists(listing.dir.filePath("old.apr")), !gone);
        QCOMPARE(QDir(listing.dir.path()).entryList(QDir::Files).size(), gone ? 2 : 3);
    }

    // F2 selects the name without its extension, so typing a name keeps it.
    void f2ThenTypingRenamesKeepingTheExtensionAndTheFilterBoxNarrows()
    {
        Listing listing;
        listing.list.show();
        QVERIFY(QTest::qWaitForWindowExposed(&listing.list));
        QTreeView* view = listing.list.view();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                          view->visualRect(listing.rowNamed(QStringLiteral("old.apr"))).center());
        QTest::keyClick(view, Qt::Key_F2);
        auto* editor = listing.list.view()->findChild<QLineEdit*>();
        QVERIFY(editor);
        QCOMPARE(editor->selectedText(), QStringLiteral("old"));
        QSignalSpy renamed(&listing.list, &FileListControl::itemRenamed);
        QTest::keyClicks(editor, QStringLiteral("Älter two"));
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(listing.dir.filePath("Älter two.apr")), 5000);
        QVERIFY(!QFile::exists(listing.dir.filePath("old.apr")));
        QCOMPARE(renamed.count(), 1);
        QCOMPARE(renamed.first().at(1).toString(), listing.dir.filePath("old.apr"));

        // Typing in the filter box narrows the items; a hidden selected item
        // leaves the selection; Escape brings everything back; a folder made
        // meanwhile that the filter hides is still announced; a new folder
        // starts unfiltered.
        listing.list.setFilterBoxShown(true);
        listing.named(QStringLiteral("Älter two.apr")).setSelected(true);
        QSignalSpy selection(&listing.list, &FileListControl::selectionChanged);
        QSignalSpy added(&listing.list, &FileListControl::itemAdded);
        FileListFilterBox* box = listing.list.filterBox();
        box->setFocus();
        QTest::keyClicks(box, QStringLiteral("NEW"));
        QCOMPARE(listing.list.itemCount(), 1);
        QCOMPARE(listing.list.item(1).name(), QStringLiteral("new.apr"));
        QCOMPARE(listing.list.selectedCount(), 0);
        QCOMPARE(selection.size(), 1);
        makeFolder(listing.dir.filePath("Archive"));
        listing.list.refresh();
        QVERIFY(waitForListing(listing.list));
        QCOMPARE(added.size(), 1);
        QCOMPARE(added[0][0].value<FileListItem>().path(), listing.dir.filePath("Archive"));
        QCOMPARE(listing.list.itemCount(), 1);
        QTest::keyClick(box, Qt::Key_Escape);
        QCOMPARE(box->text(), QString());
        QCOMPARE(listing.list.itemCount(), 4);
        listing.list.setNameFilter(QStringLiteral("*.apr"));
        QCOMPARE(listing.list.itemCount(), 2);
        listing.list.setFolder(listing.dir.filePath("Sub"));
        QCOMPARE(listing.list.nameFilter(), QString());
        QCOMPARE(box->text(), QString());
    }

    // Changes on disk are followed, a vanished folder is said, and a delete
    // asks first, then moves to the trash.
    void changesOnDiskAVanishedFolderAndADelete()
    {
        Listing listing;
        listing.named(QStringLiteral("new.apr")).setSelected(true);
        QSignalSpy added(&listing.list, &FileListControl::itemAdded);
        QSignalSpy removed(&listing.list, &FileListControl::itemRemoved);
        writeFile(listing.dir.filePath("third.apr"));
        QVERIFY(QDir(listing.dir.filePath("Sub")).removeRecursively());
        QTRY_VERIFY_WITH_TIMEOUT(added.count() == 1 && removed.count() == 1, 5000);
        QCOMPARE(added.first().at(0).value<FileListItem>().name(), QStringLiteral("third.apr"));
        QVERIFY(removed.first().at(0).value<FileListItem>().isFolder());
        QCOMPARE(listing.list.selectedCount(), 1);
        QCOMPARE(listing.list.firstSelectedItem().name(), QStringLiteral("new.apr"));
        QVERIFY(listing.list.itemCount() > 0);
        listing.showFolder(listing.dir.filePath("gone"));
        QCOMPARE(listing.list.itemCount(), 0);
        QVERIFY(listing.list.listingError() != 0);
        auto* state = listing.list.findChild<QLabel*>();
        QVERIFY(state && !state->isHidden());
        QVERIFY(state->text().contains(QStringLiteral("gone")));

        // An empty folder and a filter that hides everything say so; rows hide the words.
        makeFolder(listing.dir.filePath("Sub")); // removed above
        listing.showFolder(listing.dir.filePath("Sub"));
        QCOMPARE(listing.list.itemCount(), 0);
        QCOMPARE(state->text(), QStringLiteral("No documents in this folder"));
        QVERIFY(!state->isHidden());
        listing.showFolder(listing.dir.path());
        listing.list.setNameFilter(QStringLiteral("nothing like it"));
        QCOMPARE(state->text(), QStringLiteral("No document matches the filter"));
        listing.list.setNameFilter(QString());
        QVERIFY(state->isHidden());

        // The folder shown is deleted: its documents go with it.
        writeFile(listing.dir.filePath("Sub/inside.apr"));
        listing.showFolder(listing.dir.filePath("Sub"));
        QCOMPARE(listing.list.itemCount(), 1);
        QVERIFY(QDir(listing.dir.filePath("Sub")).removeRecursively());
        QTRY_COMPARE_WITH_TIMEOUT(listing.list.itemCount(), 0, 5000);

        // A delete asks first, then moves to the trash.
        listing.showFolder(listing.dir.path());
        MessageRecorder messages;
        listing.named(QStringLiteral("old.apr")).setSelected(true);
        messages.answer(MessageButton::No);
        listing.list.deleteSelectedItems();
        QVERIFY(QFile::exists(listing.dir.filePath("old.apr")));
        QCOMPARE(messages.last().buttons, int(MessageButton::Yes | MessageButton::No));
        QVERIFY(messages.last().text.contains(QStringLiteral("\"old.apr\"")));

        removed.clear();
        messages.answer(MessageButton::Yes);
        listing.list.deleteSelectedItems();
        QTRY_COMPARE(removed.count(), 1);
        QVERIFY(!QFile::exists(listing.dir.filePath("old.apr")));
        QVERIFY(QFile::exists(listing.user.root() + QStringLiteral("/data/Trash/files/old.apr")));
        QCOMPARE(listing.list.itemCount(), 2);

        // A delete the file system refuses says which item and why.
        listing.named(QStringLiteral("new.apr")).setSelected(true);
        QVERIFY(QFile::remove(listing.dir.filePath("new.apr")));
        messages.answer(MessageButton::Yes);
        listing.list.deleteSelectedItems();
        QTRY_COMPARE(messages.last().title, QStringLiteral("Error Deleting File"));
        QVERIFY2(messages.last().text.contains(QStringLiteral("\"new.apr\": ")) &&
                     !messages.last().text.endsWith(QStringLiteral("\"new.apr\": ")),
                 qPrintable(messages.last().text));
    }

    // A share that stops answering: renaming and deleting return at once,
    // other folders still list at once, the list says that it waits, and
    // all is done and shown when the share answers.
    void aShareThatDoesNotAnswerIsWaitedFor()
    {
        UserFolders user;
        test::MountedShare share;
        if (!share.made())
            return;
        writeFile(share.backing + "/a.ars");
        writeFile(share.backing + "/b.ars");
        writeFile(share.dir.filePath("local/here.ars"));
        FileListControl list;
        list.setFolder(share.mount);
        QVERIFY(waitForListing(list));
        MessageRecorder messages;
        messages.answer(MessageButton::Yes);

        share.fuse.freeze();
        QElapsedTimer answered;
        answered.start();
        QVERIFY(list.renameItem(list.item(1), QStringLiteral("renamed.ars")));
        list.item(2).setSelected(true);
        list.deleteSelectedItems();
        QVERIFY(answered.elapsed() < 1000);
        auto* state = list.findChild<QLabel*>(); // the stuck rename alone says that the list waits
        QTRY_COMPARE_WITH_TIMEOUT(state->text(), FileListControl::waitingText(share.mount),
                                  FolderReaders::WaitingAfterMs + 3000);
        list.setFolder(share.dir.filePath("local"));
        QVERIFY(waitForListing(list, 1000));
        QCOMPARE(list.item(1).name(), QStringLiteral("here.ars"));
        QSignalSpy waiting(&list, &FileListControl::waiting);
        list.setFolder(share.mount);
        QVERIFY(waiting.wait(FolderReaders::WaitingAfterMs + 3000));
        QCOMPARE(list.itemCount(), 0);
        QCOMPARE(state->text(), QStringLiteral("Waiting for the folder %1 to answer...").arg(share.mount));
        share.fuse.thaw();
        QVERIFY(waitForListing(list, 10000)); // the rows come when the share answers
        QVERIFY(state->isHidden());
        QTRY_COMPARE_WITH_TIMEOUT(QDir(share.backing).entryList(QDir::Files), QStringList{"renamed.ars"},
                                  10000);
        list.refresh(); // the listing may have been read before the delete was done
        QVERIFY(waitForListing(list, 10000));
        QStringList files; // the share's trash folder may be listed too
        for (int i = 1; i <= list.itemCount(); ++i)
            if (!list.item(i).isFolder())
                files << list.item(i).name();
        QCOMPARE(files, QStringList{"renamed.ars"});
        QCOMPARE(messages.count(), 1); // the question only
    }
};

QTEST_MAIN(FileListControlTest)
#include "FileListControlTest.moc"
