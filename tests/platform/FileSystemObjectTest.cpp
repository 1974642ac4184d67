#include "FileSystemObject.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;

using nebra::test::writeFile;

class FileSystemObjectTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void createFolderMakesOneLevelOnly_data()
    {
        QTest::addColumn<QString>("relative");
        QTest::addColumn<bool>("created");
        QTest::newRow("one level") << QStringLiteral("New") << true;
        QTest::newRow("blanks and accents") << QStringLiteral("Données de test") << true;
        QTest::newRow("leading dot") << QStringLiteral(".hidden") << true;
        QTest::newRow("two levels") << QStringLiteral("Missing/Deeper") << false;
        QTest::newRow("dot dot") << QStringLiteral("..") << false;
        QTest::newRow("existing") << QStringLiteral("Existing") << false;
        QTest::newRow("empty leaf") << QString() << false;
    }

    void createFolderMakesOneLevelOnly()
    {
        QFETCH(QString, relative);
        QFETCH(bool, created);
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("Existing")));
        const FileSystemObject fs;
        QCOMPARE(fs.CreateFolder(dir.path() + QLatin1Char('/') + relative), created);
        if (created)
            QVERIFY(fs.FolderExists(dir.path() + QLatin1Char('/') + relative));
    }

    void copyWithoutOverwriteKeepsTheExistingFile()
    {
        QTemporaryDir source;
        QTemporaryDir target;
        writeFile(source.filePath(QStringLiteral("a.mlo")), "new");
        writeFile(source.filePath(QStringLiteral("b.mlo")), "new");
        writeFile(target.filePath(QStringLiteral("a.mlo")), "mine");
        const FileSystemObject fs;
        QVERIFY(!fs.CopyFile(source.filePath(QStringLiteral("*.mlo")), target.path(), false));
        QFile mine(target.filePath(QStringLiteral("a.mlo")));
        QVERIFY(mine.open(QIODevice::ReadOnly));
        QCOMPARE(mine.readAll(), QByteArray("mine"));
        QVERIFY(QFile::exists(target.filePath(QStringLiteral("b.mlo")))); // the others still arrive
        QVERIFY(fs.CopyFile(source.filePath(QStringLiteral("*.mlo")), target.path(), true));
        mine.close();
        QVERIFY(mine.open(QIODevice::ReadOnly));
        QCOMPARE(mine.readAll(), QByteArray("new"));
        // No temporary file of the copies is left behind.
        QCOMPARE(QDir(target.path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
    }
};

QTEST_GUILESS_MAIN(FileSystemObjectTest)
#include "FileSystemObjectTest.moc"
