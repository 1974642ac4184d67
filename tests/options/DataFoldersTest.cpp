#include "DataFolders.h"
#include "HLDCollection.h"
#include "MessageRecorder.h"
#include "ParentDirectoryRules.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "TestFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace nebra;
using nebra::test::makeFolder;
using nebra::test::MessageRecorder;
using nebra::test::writeFile;

namespace {

// The folders below "My Assays".
const QStringList Kinds = {"Microplate Layouts", "Read Configurations", "Results", "Reports", "Protocols"};

// A complete world for the folder routines: a settings file, an example
// source and a driver catalogue, all in one temporary folder.
struct Fixture
{
    QTemporaryDir dir;
    SettingsStore store{dir.filePath("Suite.ini")};
    SuiteSettings settings{store};
    SuitePaths paths{store};
    HLDCollection drivers;
    QString examples = dir.filePath("Example Assays");

    Fixture()
    {
        paths.Initialise();
        paths.SetParentDirectory(dir.filePath("Parent"));
    }

    DataFolders folders()
    {
        return DataFolders(
            paths, settings, [this]() -> const HLDCollection& { return drivers; },
            defaultFileSystemObjectFactory(), examples);
    }

    void setDrivers(const QStringList& names)
    {
        const QString file = dir.filePath("drivers.json");
        writeFile(file,
                  "{\"drivers\":[{\"FullName\":\"" + names.join("\"},{\"FullName\":\"").toUtf8() + "\"}]}");
        drivers = HLDCollection(file);
    }

    QStringList files(const QString& folder) const { return QDir(folder).entryList(QDir::Files, QDir::Name); }
    QStringList subfolders(const QString& folder) const
    {
        return QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    }
};

} // namespace

class DataFoldersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Only the folders made in this run are seeded with the examples; every
    // subfolder is checked; without examples the tree is made silently.
    void theTreeIsMadeAndOnlyNewFoldersAreSeeded()
    {
        Fixture seeded;
        for (const char* name :
             {"Microplate Layouts/a.mlo", "Microplate Layouts/ignored.txt", "Results/r.ars", "Results/r.mht",
              "Results/QC Example/qc.ars", "Protocols/p.apr", "Protocols/p.mht", "Protocols/NoExtension"})
            writeFile(seeded.examples + QLatin1Char('/') + QLatin1String(name), name);
        seeded.setDrivers({"Reader One", "Reader Two"});
        seeded.folders().CreateAnyMissingNebraDirectories();
        QVERIFY(seeded.folders().DoAllDataFoldersExist());
        QCOMPARE(seeded.files(seeded.paths.LayoutsFolder()), QStringList{"a.mlo"});
        QCOMPARE(seeded.files(seeded.paths.ProtocolsFolder()),
                 (QStringList{"NoExtension", "p.apr", "p.mht"}));
        QVERIFY(seeded.files(seeded.paths.ReportsFolder()).isEmpty());
        QCOMPARE(seeded.subfolders(seeded.paths.ReadConfigurationsFolder()),
                 (QStringList{"Reader One", "Reader Two"}));

        // The user empties the layouts and protocols and deletes only the results.
        for (const QString& folder : {seeded.paths.LayoutsFolder(), seeded.paths.ProtocolsFolder()})
            for (const QString& name : seeded.files(folder))
                QVERIFY(QFile::remove(folder + QLatin1Char('/') + name));
        QVERIFY(QDir(seeded.paths.ResultsFolder()).removeRecursively());
        seeded.folders().CreateAnyMissingNebraDirectories();
        QVERIFY(seeded.files(seeded.paths.ProtocolsFolder()).isEmpty());
        QVERIFY(seeded.files(seeded.paths.LayoutsFolder()).isEmpty());
        QCOMPARE(seeded.files(seeded.paths.ResultsFolder()), (QStringList{"r.ars", "r.mht"}));
        QCOMPARE(seeded.files(seeded.paths.ResultsFolder() + "/QC Example"), QStringList{"qc.ars"});

        Fixture f;
        const QString candidate = f.dir.filePath("Candidate");
        for (const QString& kind : Kinds) {
            QVERIFY(!f.folders().AreAllSubfoldersPresent(candidate));
            QVERIFY(QDir().mkpath(candidate + "/My Assays/" + kind));
        }
        QVERIFY(f.folders().AreAllSubfoldersPresent(candidate));
        QVERIFY(!f.folders().DoAllDataFoldersExist());
        MessageRecorder messages;
        f.setDrivers({"Good", "Bad/Name", "..", "Also Good"});
        f.folders().CreateAnyMissingNebraDirectories();
        QVERIFY(f.folders().DoAllDataFoldersExist());
        QVERIFY(f.files(f.paths.ProtocolsFolder()).isEmpty());
        QVERIFY(QDir(f.paths.ResultsFolder() + "/QC Example").exists());
        QCOMPARE(f.subfolders(f.paths.ReadConfigurationsFolder()), (QStringList{"Also Good", "Good"}));
        QCOMPARE(messages.count(), 0);

        Fixture skip;
        skip.setDrivers({"Good"});
        skip.store.setValue("Settings/SkipDriverFolders", true);
        skip.folders().CreateAnyMissingNebraDirectories();
        QVERIFY(QDir(skip.paths.ReadConfigurationsFolder()).isEmpty());
    }

    // A typed parent directory is checked, asked about and applied; what the
    // file system could never hold or would refuse to make is refused before
    // anything is made. A refused or unchanged one leaves the settings file untouched.
    void aTypedParentDirectoryIsCheckedAndApplied_data()
    {
        QTest::addColumn<QString>("typed");        // %1: the test's folder, where "Parent" is current
        QTest::addColumn<QStringList>("existing"); // folders made before, below the test's folder
        QTest::addColumn<int>("answer");
        QTest::addColumn<QString>("parentAfter"); // below the test's folder
        QTest::addColumn<QString>("message");     // the one box shown, or none
        const QString missing =
            QStringLiteral("The specified parent directory for data files does not exist.\r\n"
                           "Would you like it and its subfolders to be created now?");
        const QString incomplete = QStringLiteral("The specified parent directory has one or more missing "
                                                  "subfolders.\r\nWould you like them to be created now?");
        const QString tooLong = "The specified parent directory path is too long.";
        QStringList complete;
        for (const QString& kind : Kinds)
            complete << "parent/My Assays/" + kind;
        const QStringList none;
        // clang-format off
        QTest::newRow("blanks and one separator") << " %1/Parent/ " << none << 0 << "Parent" << "";
        QTest::newRow("two missing levels") << "%1/New/Deeper" << none << 0 << "Parent" << "The specified parent directory path is invalid.\r\nEither it contains illegal characters or\r\na multiple level directory structure needs to be created.";
        QTest::newRow("new, yes") << "%1/Fresh" << none << int(MessageButton::Yes) << "Fresh" << missing;
        QTest::newRow("new, no") << "%1/Fresh" << none << int(MessageButton::No) << "Parent" << missing;
        QTest::newRow("incomplete, yes") << "%1/Old" << QStringList{"Old/My Assays/Results"} << int(MessageButton::Yes) << "Old" << incomplete;
        QTest::newRow("incomplete, no") << "%1/Old" << QStringList{"Old/My Assays/Results"} << int(MessageButton::No) << "Parent" << incomplete;
        QTest::newRow("complete, other letter case") << "%1/parent" << complete << 0 << "parent" << "";
        QTest::newRow("empty") << "   " << none << 0 << "Parent" << "Please type the parent directory for data files.";
        QTest::newRow("relative") << "Data/Assays" << none << 0 << "Parent" << "The specified parent directory path is incomplete.\r\nType the full path of the folder, beginning with /.";
        QTest::newRow("a name too long") << "%1/" + QString(300, 'a') << none << 0 << "Parent" << tooLong;
        QTest::newRow("a path too long") << "%1" + QString("/abcdefghij").repeated(400) << none << 0 << "Parent" << tooLong;
        QTest::newRow("a file") << "%1/notes.txt" << none << 0 << "Parent" << "The specified parent directory is a file, not a folder.";
        QTest::newRow("new in a read-only folder") << "%1/Locked/New" << none << 0 << "Parent" << "The specified parent directory cannot be created:\r\nthe folder it belongs in cannot be written to.";
        QTest::newRow("read-only, subfolders missing") << "%1/Locked" << none << 0 << "Parent" << ParentDirectoryRules::readOnlySubfoldersText();
        // clang-format on
    }

    void aTypedParentDirectoryIsCheckedAndApplied()
    {
        QFETCH(QString, typed);
        QFETCH(QStringList, existing);
        QFETCH(int, answer);
        QFETCH(QString, parentAfter);
        QFETCH(QString, message);
        if (typed.contains(QLatin1String("Locked")) && ::geteuid() == 0)
            QSKIP("The administrator writes into read-only folders; run as a user to test them");
        Fixture f;
        for (const QString& folder : existing)
            QVERIFY(QDir().mkpath(f.dir.filePath(folder)));
        writeFile(f.dir.filePath("notes.txt"), "not a folder");
        makeFolder(f.dir.filePath("Locked")); // cannot be written to
        QFile::setPermissions(f.dir.filePath("Locked"), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
        const QStringList before = f.subfolders(f.dir.path());
        const QByteArray settingsBefore = test::readFile(f.dir.filePath("Suite.ini"));
        MessageRecorder messages;
        if (answer)
            messages.answer(answer);
        QString text = typed.contains("%1") ? typed.arg(f.dir.path()) : typed;
        const bool changed = parentAfter != QLatin1String("Parent");
        QCOMPARE(f.folders().ApplyParentDirectory(text), changed || message.isEmpty());
        QCOMPARE(f.paths.ParentDirectory(), f.dir.filePath(parentAfter));
        if (changed) {
            QVERIFY(f.folders().DoAllDataFoldersExist());
        } else { // nothing checked, nothing made, and a refused test folder is gone again
            QCOMPARE(f.subfolders(f.dir.path()), before);
            QVERIFY(f.subfolders(f.dir.filePath("Locked")).isEmpty());
            QCOMPARE(test::readFile(f.dir.filePath("Suite.ini")), settingsBefore);
        }
        QCOMPARE(messages.count(), message.isEmpty() ? 0 : 1);
        if (message.isEmpty()) {
            QCOMPARE(text, f.paths.ParentDirectory()); // trimmed in the dialog's text too
            return;
        }
        QCOMPARE(messages.last().text + '|' + messages.last().title, message + "|Folder Specification Error");
        QCOMPARE(messages.last().icon, answer ? MessageIcon::Question : MessageIcon::Warning);
        QCOMPARE(messages.last().buttons,
                 answer ? int(MessageButton::Yes | MessageButton::No) : int(MessageButton::Ok));
    }
};

QTEST_GUILESS_MAIN(DataFoldersTest)
#include "DataFoldersTest.moc"
