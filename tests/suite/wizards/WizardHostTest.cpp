#include "WizardHost.h"
#include "AssayProtocolWizard.h"
#include "SettingsStore.h"
#include "SharedWizardState.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "UserFolders.h"

#include <QtTest>

using namespace nebra;

namespace {

// A host over the test's plug-ins and its own settings.
struct Host
{
    test::UserFolders folders;
    SettingsStore store{folders.settingsFile()};
    SuitePaths paths{store};
    SuiteSettings settings{store};
    WizardHost host{paths, settings, QString(), QStringLiteral(NEBRA_TEST_WIZARD_PLUGINS)};

    QVariant stateValue(const char* key)
    {
        return static_cast<SharedWizardState*>(host.SharedState())->Value(QLatin1String(key));
    }
};

} // namespace

class WizardHostTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void loadFailuresGiveTheReason()
    {
        Host o;
        // clang-format off
        for (const auto& [progId, reasonPart] : {std::pair{"NebraTest.NotInstalled", "declares the ProgID \"NebraTest.NotInstalled\""},
                                                 {"NebraTest.WrongInterface", "does not implement the wizard interface"},
                                                 {"NebraTest.Unresolved", "nebra_test_function_nobody_defines"}}) {
            // clang-format on
            QString reason;
            QVERIFY(!o.host.CreateWizard(QLatin1String(progId), &reason));
            QVERIFY2(reason.contains(QLatin1String(reasonPart)), qPrintable(reason));
        }
    }

    // Without a security session and in one.
    void runGetsContextAndSharedStateThatOutlivesRuns()
    {
        for (const bool withManager : {false, true}) {
            Host o;
            QString reason;
            AssayProtocolWizard* wizard = o.host.CreateWizard("NebraTest.Scripted", &reason);
            QVERIFY2(wizard && !o.host.HasSharedState(), qPrintable(reason));
            QVERIFY(!o.host.SendRequest(SharedWizardState::EndOfRun));
            QObject manager;
            qputenv("NEBRA_TEST_WIZARD_SCRIPT", R"({"result":1,"newFile":"/p/New.apr"})");
            std::unique_ptr<QObject> context =
                o.host.CreateContext("Kinetic", withManager ? &manager : nullptr);
            QObject* companion = context->property("Companion").value<QObject*>();
            QVERIFY(companion);
            QCOMPARE(companion->property("ProtocolsFolder").toString(), o.paths.ProtocolsFolder());
            QCOMPARE(companion->property("LayoutsFolder").toString(), o.paths.LayoutsFolder());
            QCOMPARE(o.host.Run(*wizard, nullptr, context), int(WizardResult::Created));
            QCOMPARE(wizard->NewFileName(), "/p/New.apr");
            QCOMPARE(o.stateValue("LastRun").toString(), "Kinetic");
            QCOMPARE(o.stateValue("Secured").toBool(), withManager);
            QCOMPARE(o.stateValue("Modal").toBool(), true);
            // The state lives from the first run on; the end-of-run request drops the run's scratch
            // values and keeps the rest.
            QObject* state = o.host.SharedState();
            QCOMPARE(o.stateValue("run/Scratch").toInt(), 1);
            QVERIFY(o.host.SendRequest(SharedWizardState::EndOfRun));
            QVERIFY(!o.stateValue("run/Scratch").isValid());
            QCOMPARE(o.stateValue("LastRun").toString(), "Kinetic");
            QVERIFY(!o.host.SendRequest(1047));
            context = o.host.CreateContext("Other", nullptr);
            o.host.Run(*wizard, nullptr, context);
            QCOMPARE(o.host.SharedState(), state);
            QVERIFY(o.host.SendRequest(SharedWizardState::EndOfRun));
            QCOMPARE(state->property("RunCount").toInt(), 2);
        }
    }
};

QTEST_MAIN(WizardHostTest)
#include "WizardHostTest.moc"
