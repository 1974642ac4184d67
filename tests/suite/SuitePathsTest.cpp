#include "SuitePaths.h"
#include "HLDCollection.h"
#include "SettingsStore.h"
#include "TestFiles.h"

#include <QCoreApplication>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;

class SuitePathsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dataFoldersFollowTheParentDirectoryDriversAreListedAndPreviewsSitBeside()
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
        // The shipped driver catalogue lists the example drivers.
        const HLDCollection drivers(paths.DriverCatalogueFile());
        QVERIFY(drivers.errorString().isEmpty() && drivers.Count() >= 2);
        QCOMPARE(drivers.Item(1).FullName, drivers.Items().first().FullName);
        // Which entries of a catalogue become drivers (how a bad or unreadable catalogue is refused is
        // shared with the wizard catalogue and tested there).
        nebra::test::writeFile(dir.filePath("drivers.json"),
                               R"({"drivers":[{"FullName":"A"},{"Version":"1"},{"FullName":"B C"}]})");
        const HLDCollection named(dir.filePath("drivers.json"));
        QStringList read;
        for (const HLDElement& driver : named.Items())
            read << driver.FullName;
        QCOMPARE(read, (QStringList{"A", "B C"}));
        QVERIFY(named.errorString().isEmpty());
        QCOMPARE(HLDCollection(dir.filePath("missing.json")).Count(), 0);
        // A document's preview sits beside it.
        QCOMPARE(paths.PreviewFileFor("/d/My Assays/Protocols/ELISA.apr"),
                 "/d/My Assays/Protocols/ELISA.mht");
        QCOMPARE(paths.PreviewFileFor("/d/Run 1.2.ars"), "/d/Run 1.2.mht");
        QCOMPARE(paths.PreviewFileFor("/d/plain"), "/d/plain.mht");
    }

    void layoutEditorDefaultsToTheSuitesOwn_data()
    {
        QTest::addColumn<bool>("written");
        QTest::addColumn<QString>("setting");
        QTest::addColumn<bool>("installed");
        QTest::addColumn<QString>("expected"); // "EDITOR": the one beside the program
        // clang-format off
        QTest::newRow("no setting, editor installed") << false << "" << true << "EDITOR";
        QTest::newRow("no setting, no editor") << false << "" << false << "";
        QTest::newRow("empty on purpose") << true << "" << true << "";
        QTest::newRow("blanks on purpose") << true << "  " << true << "";
        QTest::newRow("explicit wins") << true << "/opt/other/editor" << true << "/opt/other/editor";
        // clang-format on
    }

    void layoutEditorDefaultsToTheSuitesOwn()
    {
        QFETCH(bool, written);
        QFETCH(QString, setting);
        QFETCH(bool, installed);
        QFETCH(QString, expected);
        // The program's folder is the test's own: an editor is put there for the rows that need one.
        QFile editor(QCoreApplication::applicationDirPath() + QStringLiteral("/nebra-layout-editor"));
        if (installed) {
            nebra::test::writeFile(editor.fileName());
            QVERIFY(editor.setPermissions(editor.permissions() | QFileDevice::ExeOwner));
        }
        const auto cleanUp = qScopeGuard([&] { editor.remove(); });
        QTemporaryDir dir;
        SettingsStore store(dir.filePath("Suite.ini"));
        if (written)
            QVERIFY(store.setValue(QStringLiteral("Paths/LayoutEditorPath"), setting));
        SuitePaths paths(store);
        paths.Initialise();
        QCOMPARE(paths.LayoutEditorPath(), expected == "EDITOR" ? editor.fileName() : expected);
    }
};

QTEST_GUILESS_MAIN(SuitePathsTest)
#include "SuitePathsTest.moc"
