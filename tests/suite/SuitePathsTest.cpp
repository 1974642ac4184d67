#include "SuitePaths.h"
#include "HLDCollection.h"
#include "SettingsStore.h"
#include "TestFiles.h"

#include <QTemporaryDir>
#include <QTest>

using namespace nebra;

class SuitePathsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dataFoldersFollowTheParentDirectory()
    {
        QTemporaryDir dir;
        SettingsStore store(dir.filePath("Suite.ini"));
        SuitePaths paths(store);
        paths.Initialise();
        QVERIFY(paths.SetParentDirectory(QStringLiteral("/srv/lab data/")));
        const QString assays = QStringLiteral("/srv/lab data/My Assays");
        QCOMPARE(paths.ParentDirectory(), QStringLiteral("/srv/lab data"));
        QCOMPARE(paths.MyAssaysFolder(), assays);
        // Every data folder moves with the parent.
        for (const QString& folder : {paths.LayoutsFolder(), paths.ReadConfigurationsFolder(),
                                      paths.ResultsFolder(), paths.ProtocolsFolder(), paths.ReportsFolder()})
            QVERIFY2(folder.startsWith(assays + QLatin1Char('/')), qPrintable(folder));
    }

    void previewFileSitsBesideTheDocument_data()
    {
        QTest::addColumn<QString>("document");
        QTest::addColumn<QString>("preview");
        // clang-format off
        QTest::newRow("protocol") << "/d/My Assays/Protocols/ELISA.apr" << "/d/My Assays/Protocols/ELISA.mht";
        QTest::newRow("dots in name") << "/d/Run 1.2.ars" << "/d/Run 1.2.mht";
        QTest::newRow("no extension") << "/d/plain" << "/d/plain.mht";
        // clang-format on
    }

    void previewFileSitsBesideTheDocument()
    {
        QFETCH(QString, document);
        QFETCH(QString, preview);
        QTemporaryDir dir;
        SettingsStore store(dir.filePath("Suite.ini"));
        QCOMPARE(SuitePaths(store).PreviewFileFor(document), preview);
    }

    void driverCatalogue_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<bool>("error");
        QTest::newRow("two drivers") << QByteArray(R"({"drivers":[{"FullName":"A"},{"FullName":"B C"}]})")
                                     << QStringList{"A", "B C"} << false;
        QTest::newRow("nameless entry skipped")
            << QByteArray(R"({"drivers":[{"Version":"1"},{"FullName":"A"}]})") << QStringList{"A"} << false;
        QTest::newRow("not json") << QByteArray("drivers: A") << QStringList{} << true;
        QTest::newRow("wrong shape") << QByteArray(R"({"drivers":"A"})") << QStringList{} << true;
    }

    void driverCatalogue()
    {
        QFETCH(QByteArray, json);
        QFETCH(QStringList, names);
        QFETCH(bool, error);
        QTemporaryDir dir;
        nebra::test::writeFile(dir.filePath("drivers.json"), json);
        const HLDCollection drivers(dir.filePath("drivers.json"));
        QStringList read;
        for (const HLDElement& driver : drivers.Items())
            read << driver.FullName;
        QCOMPARE(read, names);
        QCOMPARE(!drivers.errorString().isEmpty(), error);
        QCOMPARE(HLDCollection(dir.filePath("missing.json")).Count(), 0);
    }

    void shippedCatalogueListsTheExampleDrivers()
    {
        QTemporaryDir dir;
        SettingsStore store(dir.filePath("Suite.ini"));
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
