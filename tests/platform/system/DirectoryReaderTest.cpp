#include "DirectoryReader.h"
#include "SpecialFiles.h"
#include "TestFiles.h"
#include "WildcardFilter.h"

#include <QTemporaryDir>
#include <QTest>

#include <cerrno>

#include <unistd.h>

using namespace nebra;
using namespace nebra::test;

class DirectoryReaderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aFolderThatCannotBeReadListsNothing_data()
    {
        QTest::addColumn<QString>("relative");
        QTest::addColumn<int>("error");
        // clang-format off
        QTest::newRow("vanished") << "gone" << ENOENT;
        QTest::newRow("a file") << "file.apr" << ENOTDIR;
        QTest::newRow("empty path") << "" << ENOENT;
        QTest::newRow("no permission") << "locked" << EACCES;
        // clang-format on
    }

    void aFolderThatCannotBeReadListsNothing()
    {
        QFETCH(QString, relative);
        QFETCH(int, error);
        if (error == EACCES && ::geteuid() == 0)
            QSKIP("permissions do not bind root");
        QTemporaryDir dir;
        writeFile(dir.filePath("file.apr"));
        makeFolder(dir.filePath("locked/inside"));
        QFile::setPermissions(dir.filePath("locked"), QFileDevice::WriteOwner);
        const QByteArray path = relative.isEmpty() ? QByteArray() : QFile::encodeName(dir.filePath(relative));
        const DirectoryReader::SubfolderListing folders = DirectoryReader::subfolders(path);
        QCOMPARE(folders.error, error);
        QVERIFY(folders.folders.empty());
        const DirectoryReader::FileListing files = DirectoryReader::files(path, WildcardFilter());
        QCOMPARE(files.error, error);
        QVERIFY(files.records.empty());
        QFile::setPermissions(dir.filePath("locked"),
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }

    // No program of the suite can open a pipe, a socket or a device, and
    // reading a pipe blocks: none is listed, whatever its name.
    void filesAreFoldersAndMatchingFilesWithRawTimesButNoSpecialFiles()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("a.apr"), "12345", 1700000000, 123456789);
        writeFile(dir.filePath("b.mht"));
        writeFile(dir.filePath("no extension"));
        makeFolder(dir.filePath("sub.folder"));
        QVERIFY(QFile::link(dir.filePath("a.apr"), dir.filePath("link.apr")));
        QVERIFY(QFile::link(dir.filePath("gone.apr"), dir.filePath("broken.apr")));
        makeFifo(dir.filePath("pipe.apr"));
        const BoundSocket socket(dir.filePath("socket.apr"));
        QVERIFY(socket.isBound());
        QVERIFY(QFile::link(dir.filePath("pipe.apr"), dir.filePath("link to pipe.apr")));
        QVERIFY(QFile::link(QStringLiteral("/dev/null"), dir.filePath("device.apr")));

        QMap<QString, DirectoryReader::FileRecord> byName;
        for (const DirectoryReader::FileRecord& record :
             DirectoryReader::files(QFile::encodeName(dir.path()), WildcardFilter(QStringLiteral("*.apr")))
                 .records)
            byName.insert(record.name, record);
        QCOMPARE(byName.keys(), (QStringList{"a.apr", "broken.apr", "link.apr", "sub.folder"}));
        QCOMPARE(byName["a.apr"].mtimeSeconds, 1700000000);
        QCOMPARE(byName["a.apr"].mtimeNanoseconds, 123456789);
        QCOMPARE(byName["a.apr"].size, 5);
        QCOMPARE(byName["link.apr"].mtimeNanoseconds, 123456789); // the link's target
        QVERIFY(byName["sub.folder"].isFolder);
        QVERIFY(!byName["broken.apr"].isFolder);

        const auto all =
            DirectoryReader::files(QFile::encodeName(dir.path()), WildcardFilter(QStringLiteral("*.*")));
        QCOMPARE(all.records.size(), size_t(6)); // "no extension" too
    }
};

QTEST_GUILESS_MAIN(DirectoryReaderTest)
#include "DirectoryReaderTest.moc"
