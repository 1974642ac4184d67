#include "DataFolders.h"
#include "HLDCollection.h"
#include "MessageRecorder.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using nebra::test::MessageRecorder;

namespace {

const QString YesNoTitle = QStringLiteral("Folder Specification Error");

// A complete world for the folder routines: a settings file, an example
// source and a driver catalogue, all in one temporary folder.
struct Fixture
{
    QTemporaryDir dir;
    SettingsStore store{dir.filePath(QStringLiteral("Suite.ini"))};
    SuiteSettings settings{store};
    SuitePaths paths{store};
    HLDCollection drivers;
    QString examples = dir.filePath(QStringLiteral("Example Assays"));

    Fixture()
    {
        paths.Initialise();
        paths.SetParentDirectory(dir.filePath(QStringLiteral("Parent")));
    }

    DataFolders folders(QString source = {})
    {
        return DataFolders(paths, settings, [this]() -> const HLDCollection& { return drivers; },
                           defaultFileSystemObjectFactory(), source.isEmpty() ? examples : source);
    }

    void addExample(const QString& relative)
    {
        const QString path = examples + QLatin1Char('/') + relative;
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(relative.toUtf8());
    }

    void seedExamples()
    {
        for (const char* name : {"Microplate Layouts/a.mlo", "Microplate Layouts/ignored.txt", "Results/r.ars",
                                 "Results/r.mht", "Results/QC Example/qc.ars", "Protocols/p.apr",
                                 "Protocols/p.mht", "Protocols/NoExtension"})
            addExample(QLatin1String(name));
    }

    void setDrivers(const QStringList& names)
    {
        QJsonArray list;
        for (const QString& name : names)
            list.append(QJsonObject{{QStringLiteral("FullName"), name}});
        const QString file = dir.filePath(QStringLiteral("drivers.json"));
        QFile out(file);
        QVERIFY(out.open(QIODevice::WriteOnly));
        out.write(QJsonDocument(QJsonObject{{QStringLiteral("drivers"), list}}).toJson());
        out.close();
        drivers = HLDCollection(file);
    }

    QStringList files(const QString& folder) const
    {
        return QDir(folder).entryList(QDir::Files, QDir::Name);
    }
};

} // namespace

class DataFoldersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstStartCreatesTheTreeAndSeedsIt()
    {
        Fixture f;
        f.seedExamples();
        f.setDrivers({QStringLiteral("Reader One"), QStringLiteral("Reader Two")});
        f.folders().CreateAnyMissingNebraDirectories();

        QVERIFY(f.folders().DoAllDataFoldersExist());
        QCOMPARE(f.files(f.paths.LayoutsFolder()), QStringList{"a.mlo"});
        QCOMPARE(f.files(f.paths.ResultsFolder()), (QStringList{"r.ars", "r.mht"}));
        QCOMPARE(f.files(f.paths.ResultsFolder() + "/QC Example"), QStringList{"qc.ars"});
        QCOMPARE(f.files(f.paths.ProtocolsFolder()), (QStringList{"NoExtension", "p.apr", "p.mht"}));
        QVERIFY(f.files(f.paths.ReportsFolder()).isEmpty());
        QCOMPARE(QDir(f.paths.ReadConfigurationsFolder()).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 (QStringList{"Reader One", "Reader Two"}));
    }

    void withoutExamplesTheTreeIsCreatedEmptyAndSilently()
    {
        Fixture f;
        MessageRecorder messages;
        f.folders().CreateAnyMissingNebraDirectories();
        QVERIFY(f.folders().DoAllDataFoldersExist());
        QVERIFY(f.files(f.paths.ProtocolsFolder()).isEmpty());
        QVERIFY(QDir(f.paths.ResultsFolder() + "/QC Example").exists());
        QCOMPARE(messages.count(), 0);
    }

    void existingFoldersAreNeverReseeded()
    {
        Fixture f;
        f.seedExamples();
        f.folders().CreateAnyMissingNebraDirectories();
        // The user empties the protocols and deletes only the results.
        for (const QString& name : f.files(f.paths.ProtocolsFolder()))
            QVERIFY(QFile::remove(f.paths.ProtocolsFolder() + "/" + name));
        QVERIFY(QDir(f.paths.ResultsFolder()).removeRecursively());
        QFile::remove(f.paths.LayoutsFolder() + "/a.mlo");
        f.folders().CreateAnyMissingNebraDirectories();

        QVERIFY(f.files(f.paths.ProtocolsFolder()).isEmpty());
        QVERIFY(f.files(f.paths.LayoutsFolder()).isEmpty());
        QCOMPARE(f.files(f.paths.ResultsFolder()), (QStringList{"r.ars", "r.mht"}));
        QCOMPARE(f.files(f.paths.ResultsFolder() + "/QC Example"), QStringList{"qc.ars"});
    }

    void driverFoldersSkipIllegalNamesAndCanBeSwitchedOff()
    {
        Fixture f;
        f.setDrivers({QStringLiteral("Good"), QStringLiteral("Bad/Name"), QStringLiteral(".."),
                      QStringLiteral("Also Good")});
        f.folders().CreateAnyMissingNebraDirectories();
        QCOMPARE(QDir(f.paths.ReadConfigurationsFolder()).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 (QStringList{"Also Good", "Good"}));

        Fixture skip;
        skip.setDrivers({QStringLiteral("Good")});
        skip.store.setValue(QStringLiteral("Settings/SkipDriverFolders"), true);
        skip.folders().CreateAnyMissingNebraDirectories();
        QVERIFY(QDir(skip.paths.ReadConfigurationsFolder()).isEmpty());
    }

    void subfolderChecksTestEveryFolder()
    {
        Fixture f;
        const QString candidate = f.dir.filePath(QStringLiteral("Candidate"));
        QVERIFY(!f.folders().AreAllSubfoldersPresent(candidate));
        for (const char* sub : {"/My Assays/Microplate Layouts", "/My Assays/Read Configurations",
                                "/My Assays/Results", "/My Assays/Reports"})
            QVERIFY(QDir().mkpath(candidate + QLatin1String(sub)));
        QVERIFY(!f.folders().AreAllSubfoldersPresent(candidate));
        QVERIFY(QDir().mkpath(candidate + "/My Assays/Protocols"));
        QVERIFY(f.folders().AreAllSubfoldersPresent(candidate));
        QVERIFY(!f.folders().DoAllDataFoldersExist());
    }

    void typedPathIsTrimmedAndLosesOneTrailingSeparator_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("blanks") << QStringLiteral("  %1  ");
        QTest::newRow("separator") << QStringLiteral("%1/");
        QTest::newRow("both") << QStringLiteral(" %1/ ");
    }

    void typedPathIsTrimmedAndLosesOneTrailingSeparator()
    {
        QFETCH(QString, typed);
        Fixture f;
        MessageRecorder messages;
        QString text = typed.arg(f.paths.ParentDirectory());
        QVERIFY(f.folders().ApplyParentDirectory(text));
        QCOMPARE(text, f.paths.ParentDirectory());
        QCOMPARE(messages.count(), 0); // unchanged: nothing checked, nothing created
        QVERIFY(!QDir(f.paths.ParentDirectory()).exists());
    }

    void multiLevelPathIsRefusedAndCreatesNothing()
    {
        Fixture f;
        MessageRecorder messages;
        const QString before = f.paths.ParentDirectory();
        QString text = f.dir.filePath(QStringLiteral("New/Deeper"));
        QVERIFY(!f.folders().ApplyParentDirectory(text));
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().title, YesNoTitle);
        QCOMPARE(messages.last().icon, MessageIcon::Warning);
        QCOMPARE(messages.last().buttons, int(MessageButton::Ok));
        QCOMPARE(messages.last().text, QStringLiteral("The specified parent directory path is invalid.\r\n"
                                                      "Either it contains illegal characters or\r\n"
                                                      "a multiple level directory structure needs to be created."));
        QVERIFY(!QDir(f.dir.filePath(QStringLiteral("New"))).exists());
        QCOMPARE(f.paths.ParentDirectory(), before);
    }

    void newFolderAskedAndAnswered_data()
    {
        QTest::addColumn<int>("answer");
        QTest::newRow("yes") << int(MessageButton::Yes);
        QTest::newRow("no") << int(MessageButton::No);
    }

    void newFolderAskedAndAnswered()
    {
        QFETCH(int, answer);
        Fixture f;
        MessageRecorder messages;
        messages.answer(answer);
        const QString before = f.paths.ParentDirectory();
        QString text = f.dir.filePath(QStringLiteral("Fresh"));
        QCOMPARE(f.folders().ApplyParentDirectory(text), answer == MessageButton::Yes);
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().icon, MessageIcon::Question);
        QCOMPARE(messages.last().buttons, int(MessageButton::Yes | MessageButton::No));
        QCOMPARE(messages.last().text,
                 QStringLiteral("The specified parent directory for data files does not exist.\r\n"
                                "Would you like it and its subfolders to be created now?"));
        if (answer == MessageButton::Yes) {
            QCOMPARE(f.paths.ParentDirectory(), text);
            QVERIFY(f.folders().DoAllDataFoldersExist());
        } else {
            QVERIFY(!QFileInfo::exists(text)); // the test creation leaves no trace
            QCOMPARE(f.paths.ParentDirectory(), before);
        }
    }

    void existingFolderWithMissingSubfolders_data()
    {
        QTest::addColumn<int>("answer");
        QTest::newRow("yes") << int(MessageButton::Yes);
        QTest::newRow("no") << int(MessageButton::No);
    }

    void existingFolderWithMissingSubfolders()
    {
        QFETCH(int, answer);
        Fixture f;
        const QString existing = f.dir.filePath(QStringLiteral("Existing"));
        QVERIFY(QDir().mkpath(existing + "/My Assays/Results"));
        MessageRecorder messages;
        messages.answer(answer);
        QString text = existing;
        QCOMPARE(f.folders().ApplyParentDirectory(text), answer == MessageButton::Yes);
        QCOMPARE(messages.last().text, QStringLiteral("The specified parent directory has one or more missing "
                                                      "subfolders.\r\nWould you like them to be created now?"));
        QCOMPARE(f.folders().AreAllSubfoldersPresent(existing), answer == MessageButton::Yes);
    }

    void completeExistingFolderIsTakenWithoutAQuestion()
    {
        Fixture f;
        f.folders().CreateAnyMissingNebraDirectories();
        // Typed in another letter case: that is a change, and it is validated again.
        const QString other = f.dir.filePath(QStringLiteral("parent"));
        QVERIFY(QDir().mkpath(other + "/My Assays"));
        for (const char* sub : {"Microplate Layouts", "Read Configurations", "Results", "Reports", "Protocols"})
            QVERIFY(QDir().mkpath(other + "/My Assays/" + QLatin1String(sub)));
        MessageRecorder messages;
        QString text = other;
        QVERIFY(f.folders().ApplyParentDirectory(text));
        QCOMPARE(messages.count(), 0);
        QCOMPARE(f.paths.ParentDirectory(), other);
    }
};

QTEST_GUILESS_MAIN(DataFoldersTest)
#include "DataFoldersTest.moc"
