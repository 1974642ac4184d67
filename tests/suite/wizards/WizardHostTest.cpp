#include "WizardHost.h"
#include "AssayProtocolWizard.h"
#include "SettingsStore.h"
#include "SharedWizardState.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "UserFolders.h"

#include <QtTest>

#include <memory>

using namespace nebra;

class WizardHostTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<test::UserFolders> m_folders;
    std::unique_ptr<SettingsStore> m_store;
    std::unique_ptr<SuitePaths> m_paths;
    std::unique_ptr<SuiteSettings> m_settings;
    std::unique_ptr<WizardHost> m_host;

    AssayProtocolWizard* scripted()
    {
        QString reason;
        AssayProtocolWizard* wizard = m_host->CreateWizard(QStringLiteral("NebraTest.Scripted"), &reason);
        if (!wizard)
            qWarning("%s", qPrintable(reason));
        return wizard;
    }
    QVariant stateValue(const char* key)
    {
        return static_cast<SharedWizardState*>(m_host->SharedState())->Value(QLatin1String(key));
    }

private Q_SLOTS:
    void init()
    {
        m_folders = std::make_unique<test::UserFolders>();
        m_store = std::make_unique<SettingsStore>(m_folders->settingsFile());
        m_paths = std::make_unique<SuitePaths>(*m_store);
        m_settings = std::make_unique<SuiteSettings>(*m_store);
        m_host = std::make_unique<WizardHost>(*m_paths, *m_settings, QString(),
                                              QStringLiteral(NEBRA_TEST_WIZARD_PLUGINS));
    }

    void loadFailuresGiveTheReason_data()
    {
        QTest::addColumn<QString>("progId");
        QTest::addColumn<QString>("reasonPart");
        QTest::newRow("no plug-in declares it") << "NebraTest.NotInstalled"
                                                << "declares the ProgID \"NebraTest.NotInstalled\"";
        QTest::newRow("another interface") << "NebraTest.WrongInterface"
                                           << "does not implement the wizard interface";
        QTest::newRow("unresolved symbol") << "NebraTest.Unresolved"
                                           << "nebra_test_function_nobody_defines";
    }
    void loadFailuresGiveTheReason()
    {
        QFETCH(QString, progId);
        QFETCH(QString, reasonPart);
        QString reason;
        QVERIFY(!m_host->CreateWizard(progId, &reason));
        QVERIFY2(reason.contains(reasonPart), qPrintable(reason));
    }

    void runGetsContextAndSharedState_data()
    {
        QTest::addColumn<bool>("withManager");
        QTest::newRow("no security session") << false;
        QTest::newRow("security session") << true;
    }
    void runGetsContextAndSharedState()
    {
        QFETCH(bool, withManager);
        AssayProtocolWizard* wizard = scripted();
        QVERIFY(wizard);
        QVERIFY(!m_host->HasSharedState());
        QObject manager;
        qputenv("NEBRA_TEST_WIZARD_SCRIPT", R"({"result":1,"newFile":"/p/New.apr"})");
        std::unique_ptr<QObject> context =
            m_host->CreateContext(QStringLiteral("Kinetic"), withManager ? &manager : nullptr);
        QObject* companion = context->property("Companion").value<QObject*>();
        QVERIFY(companion);
        QCOMPARE(companion->property("ProtocolsFolder").toString(), m_paths->ProtocolsFolder());
        QCOMPARE(companion->property("LayoutsFolder").toString(), m_paths->LayoutsFolder());

        QCOMPARE(m_host->Run(*wizard, nullptr, context), int(WizardResult::Created));
        QCOMPARE(wizard->NewFileName(), QStringLiteral("/p/New.apr"));
        QCOMPARE(stateValue("LastRun").toString(), QStringLiteral("Kinetic"));
        QCOMPARE(stateValue("Secured").toBool(), withManager);
        QCOMPARE(stateValue("Modal").toBool(), true);
    }

    // The state lives from the first run on; the end-of-run request drops
    // the run's scratch values and keeps the rest.
    void sharedStateOutlivesRuns()
    {
        AssayProtocolWizard* wizard = scripted();
        QVERIFY(wizard);
        QVERIFY(!m_host->SendRequest(SharedWizardState::EndOfRun));
        qputenv("NEBRA_TEST_WIZARD_SCRIPT", R"({"result":0})");
        auto context = m_host->CreateContext(QStringLiteral("Generic"), nullptr);
        m_host->Run(*wizard, nullptr, context);
        QObject* state = m_host->SharedState();
        QCOMPARE(stateValue("run/Scratch").toInt(), 1);
        QVERIFY(m_host->SendRequest(SharedWizardState::EndOfRun));
        QVERIFY(!stateValue("run/Scratch").isValid());
        QCOMPARE(stateValue("LastRun").toString(), QStringLiteral("Generic"));
        QVERIFY(!m_host->SendRequest(1047));

        context = m_host->CreateContext(QStringLiteral("Other"), nullptr);
        m_host->Run(*wizard, nullptr, context);
        QCOMPARE(m_host->SharedState(), state);
        QVERIFY(m_host->SendRequest(SharedWizardState::EndOfRun));
        QCOMPARE(state->property("RunCount").toInt(), 2);
    }
};

QTEST_MAIN(WizardHostTest)
#include "WizardHostTest.moc"
