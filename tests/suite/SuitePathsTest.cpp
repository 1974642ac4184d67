#include "HLDCollection.h"
#include "SettingsStore.h"
#include "SuitePaths.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;

class SuitePathsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dataFoldersFollowTheParentDirectory_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("parent");
        QTest::newRow("plain") << QStringLiteral("/srv/lab data") << QStringLiteral("/srv/lab data");
        QTest::newRow("trailing separator") << QStringLiteral("/srv/lab/") << QStringLiteral("/srv/lab");
    }

    void dataFoldersFollowTheParentDirectory()
    {
        QFETCH(QString, stored);
        QFETCH(QString, parent);
        QTemporaryDir dir;
        SettingsStore store(dir.filePath(QStringLiteral("Suite.ini")));
        SuitePaths paths(store);
        paths.Initialise();
        QVERIFY(paths.SetParentDirectory(stored));
        QCOMPARE(paths.ParentDirectory(), parent);
        QCOMPARE(paths.MyAssaysFolder(), parent + "/My Assays");
        QCOMPARE(paths.LayoutsFolder(), parent + "/My Assays/Microplate Layouts");
        QCOMPARE(paths.ReadConfigurationsFolder(), parent + "/My Assays/Read Configurations");
        QCOMPARE(paths.ResultsFolder(), parent + "/My Assays/Results");
        QCOMPARE(paths.ProtocolsFolder(), parent + "/My Assays/Protocols");
        QCOMPARE(paths.ReportsFolder(), parent + "/My Assays/Reports");
    }

    void previewFileSitsBesideTheDocument_data()
    {
        QTest::addColumn<QString>("document");
        QTest::addColumn<QString>("preview");
        QTest::newRow("protocol") << "/d/My Assays/Protocols/ELISA.apr" << "/d/My Assays/Protocols/ELISA.mht";
        QTest::newRow("dots in name") << "/d/Run 1.2.ars" << "/d/Run 1.2.mht";
        QTest::newRow("no extension") << "/d/plain" << "/d/plain.mht";
    }

    void previewFileSitsBesideTheDocument()
    {
        QFETCH(QString, document);
        QFETCH(QString, preview);
        QTemporaryDir dir;
        SettingsStore store(dir.filePath(QStringLiteral("Suite.ini")));
        QCOMPARE(SuitePaths(store).PreviewFileFor(document), preview);
    }

    void driverCatalogue_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<bool>("error");
        QTest::newRow("two drivers") << QByteArray(R"({"drivers":[{"FullName":"A"},{"FullName":"B C"}]})")
                                     << QStringList{"A", "B C"} << false;
        QTest::newRow("nameless entry skipped") << QByteArray(R"({"drivers":[{"Version":"1"},{"FullName":"A"}]})")
                                                << QStringList{"A"} << false;
        QTest::newRow("not json") << QByteArray("drivers: A") << QStringList{} << true;
        QTest::newRow("wrong shape") << QByteArray(R"({"drivers":"A"})") << QStringList{} << true;
    }

    void driverCatalogue()
    {
        QFETCH(QByteArray, json);
        QFETCH(QStringList, names);
        QFETCH(bool, error);
        QTemporaryDir dir;
        QFile file(dir.filePath(QStringLiteral("drivers.json")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(json);
        file.close();
        const HLDCollection drivers(file.fileName());
        QStringList read;
        for (const HLDElement& driver : drivers.Items())
            read << driver.FullName;
        QCOMPARE(read, names);
        QCOMPARE(!drivers.errorString().isEmpty(), error);
        QCOMPARE(HLDCollection(dir.filePath(QStringLiteral("missing.json"))).Count(), 0);
    }

    void shippedCatalogueListsTheExampleDrivers()
    {
        QTemporaryDir dir;
        SettingsStore store(dir.filePath(QStringLiteral("Suite.ini")));
        SuitePaths paths(store);
        paths.Initialise();
        const HLDCollection drivers(paths.DriverCatalogueFile());
        QVERIFY(drivers.errorString().isEmpty());
        QVERIFY(drivers.Count() >= 2);
        QCOMPARE(drivers.Item(1).FullName, drivers.Items().first().FullName);
    }
};

QTEST_GUILESS_MAIN(SuitePathsTest)
#include "SuitePathsTest.moc"
