#include "HelpCollection.h"
#include "HelpTopics.h"
#include "TestFiles.h"
#include "UserFolders.h"

#include <QDateTime>
#include <QFile>
#include <QHelpEngine>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using nebra::test::UserFolders;

class HelpCollectionTest : public QObject
{
    Q_OBJECT

private slots:
    // Packages keep their files' build times, so an upgrade may bring files
    // older than the working copy; they must still replace it. The installed
    // files are only read: the engine works on its copy.
    void aReplacedCollectionReplacesTheWorkingCopyAndIsNotWritten()
    {
        UserFolders folders;
        QTemporaryDir installed;
        const QString collection = installed.filePath("organiser.qhc");
        nebra::test::writeFile(collection, "an unfinished download");
        QString error;
        QVERIFY(!HelpCollection::open(collection, error));
        QVERIFY(error.contains("is damaged"));

        // The built guide installed, its files dated a year ago.
        for (const char* name : {"organiser.qhc", "organiser.qch"}) {
            const QString target = installed.filePath(QLatin1String(name));
            QFile::remove(target);
            QVERIFY(QFile::copy(QFileInfo(QStringLiteral(NEBRA_BUILT_HELP_FILE)).path() + u'/' +
                                    QLatin1String(name),
                                target));
            QFile file(target);
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.setFileTime(QDateTime::currentDateTime().addYears(-1),
                                     QFileDevice::FileModificationTime));
        }
        const QByteArray before = nebra::test::readFile(collection);
        error.clear();
        const auto engine = HelpCollection::open(collection, error);
        QVERIFY2(engine, qPrintable(error));
        QVERIFY(!engine->fileData(HelpTopics::pageUrl(HelpTopics::Reports)).isEmpty());
        QVERIFY(engine->collectionFile().startsWith(HelpCollection::cacheFolder()));
        engine->setCustomValue("probe", 1);
        QVERIFY(nebra::test::readFile(collection) == before);
    }
};

QTEST_MAIN(HelpCollectionTest)
#include "HelpCollectionTest.moc"
