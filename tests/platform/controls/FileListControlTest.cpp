#include "FileListControl.h"
#include "MessageRecorder.h"
#include "TestFiles.h"
#include "UserFolders.h"

#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>

using namespace nebra;
using nebra::test::makeFolder;
using nebra::test::MessageRecorder;
using nebra::test::UserFolders;
using nebra::test::writeFile;

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
    void aHeaderClickAnnouncesThenSortsBothWays()
    {
        Listing listing;
        listing.list.sortByColumn(QStringLiteral("Date Modified"));
        QCOMPARE(listing.list.item(3).name(), QStringLiteral("new.apr"));
        QStringList heard;
        connect(&listing.list, &FileListControl::columnHeaderClicked, &listing.list,
                [&](const QString& name) { heard << name + QLatin1Char(' ') + listing.list.item(3).name(); });
        listing.list.clickColumnHeader(QStringLiteral("Date Modified"));
        QCOMPARE(heard, QStringList{QStringLiteral("Date Modified new.apr")}); // before the sort
        QCOMPARE(listing.list.sortOrder(), Qt::DescendingOrder);
        QCOMPARE(listing.list.item(2).name(), QStringLiteral("new.apr"));
        QCOMPARE(listing.list.item(1).name(), QStringLiteral("Sub")); // folders stay first
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
        QVERIFY(!listing.list.renameItem(item, newName));
        QCOMPARE(messages.count(), 1);
        QVERIFY2(messages.last().text.contains(message), qPrintable(messages.last().text));
        QCOMPARE(QFile::exists(listing.dir.filePath("old.apr")), !gone);
        QCOMPARE(QDir(listing.dir.path()).entryList(QDir::Files).size(), gone ? 2 : 3);
    }

    void theInPlaceEditorRenames()
    {
        Listing listing;
        listing.list.show();
        QVERIFY(QTest::qWaitForWindowExposed(&listing.list));
        listing.list.editItem(listing.named(QStringLiteral("old.apr")));
        auto* editor = listing.list.view()->findChild<QLineEdit*>();
        QVERIFY(editor);
        QSignalSpy renamed(&listing.list, &FileListControl::itemRenamed);
        editor->setText(QStringLiteral("Älter two.apr"));
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(listing.dir.filePath("Älter two.apr")), 5000);
        QVERIFY(!QFile::exists(listing.dir.filePath("old.apr")));
        QCOMPARE(renamed.count(), 1);
        QCOMPARE(renamed.first().at(1).toString(), listing.dir.filePath("old.apr"));
    }

    void deleteAsksThenMovesToTheTrash()
    {
        Listing listing;
        MessageRecorder messages;
        listing.named(QStringLiteral("old.apr")).setSelected(true);
        messages.answer(MessageButton::No);
        listing.list.deleteSelectedItems();
        QVERIFY(QFile::exists(listing.dir.filePath("old.apr")));
        QCOMPARE(messages.last().buttons, int(MessageButton::Yes | MessageButton::No));
        QVERIFY(messages.last().text.contains(QStringLiteral("\"old.apr\"")));

        QSignalSpy removed(&listing.list, &FileListControl::itemRemoved);
        messages.answer(MessageButton::Yes);
        listing.list.deleteSelectedItems();
        QVERIFY(!QFile::exists(listing.dir.filePath("old.apr")));
        QVERIFY(QFile::exists(listing.user.root() + QStringLiteral("/data/Trash/files/old.apr")));
        QCOMPARE(removed.count(), 1);
        QCOMPARE(listing.list.itemCount(), 2);
    }

    void changesOnDiskAreFollowedKeepingTheSelection()
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
    }

    void aVanishedFolderListsNothingAndSaysSo()
    {
        Listing listing;
        QVERIFY(listing.list.itemCount() > 0);
        listing.list.setFolder(listing.dir.filePath("gone"));
        QCOMPARE(listing.list.itemCount(), 0);
        QVERIFY(listing.list.listingError() != 0);
        auto* state = listing.list.findChild<QLabel*>();
        QVERIFY(state && !state->isHidden());
        QVERIFY(state->text().contains(QStringLiteral("gone")));
    }
};

QTEST_MAIN(FileListControlTest)
#include "FileListControlTest.moc"
