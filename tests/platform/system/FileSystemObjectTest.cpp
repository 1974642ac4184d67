#include "FileSystemObject.h"
#include "TestFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;

using nebra::test::writeFile;

class FileSystemObjectTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void copyWithoutOverwriteKeepsTheExistingFile()
    {
        QTemporaryDir source;
        QTemporaryDir target;
        writeFile(source.filePath("a.mlo"), "new");
        writeFile(source.filePath("b.mlo"), "new");
        writeFile(target.filePath("a.mlo"), "mine");
        const FileSystemObject fs;
        QVERIFY(!fs.CopyFile(source.filePath("*.mlo"), target.path(), false));
        QCOMPARE(test::readFile(target.filePath("a.mlo")), QByteArray("mine"));
        QVERIFY(QFile::exists(target.filePath("b.mlo"))); // the others still arrive
        QVERIFY(fs.CopyFile(source.filePath("*.mlo"), target.path(), true));
        QCOMPARE(test::readFile(target.filePath("a.mlo")), QByteArray("new"));
        // No temporary file of the copies is left behind.
        QCOMPARE(QDir(target.path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
    }
};

QTEST_GUILESS_MAIN(FileSystemObjectTest)
#include "FileSystemObjectTest.moc"
