#include "Authorisation.h"
#include "CommandControls.h"
#include "DialogScript.h"
#include "MainWindow.h"
#include "MessageRecorder.h"
#include "NebraSecurityManager.h"
#include "SecurityFixture.h"
#include "SecuritySession.h"
#include "StatusBarControl.h"
#include "SuiteSettings.h"
#include "ToolBarsControl.h"
#include "WindowParts.h"

#include <QTest>

#include <optional>

using namespace nebra;
using namespace nebra::test;

Q_DECLARE_METATYPE(SecuritySession::State)

namespace {

// A real session brought to the state: NotConfigured without security,
// Active after jsmith's log-in, Ended after jsmith has logged out again;
// jsmith holds RunProtocol and SelectDriver.
struct Checked
{
    SecuritySite site{{"AuthorisationsGeneral/RunProtocol", "Instrumentation/SelectDriver"}};
    MainWindow window{[] { // not loaded: its controls, and what a session's end closes
        MainWindowOptions options;
        options.instanceName = QStringLiteral("AuthorisationTest-%1").arg(QCoreApplication::applicationPid());
        options.endProcess = [] {};
        return options;
    }()};
    CommandControls switches{part<ToolBarsControl>(window), part<FolderTreeControl>(window)};
    SettingsStore store;
    SuiteSettings settings{store};
    std::optional<SecuritySession> session;
    std::optional<Authorisation> authorisation;
    std::optional<MessageRecorder> messages;

    explicit Checked(SecuritySession::State state)
    {
        store.setValue("Settings/SecurityConfigured", state != SecuritySession::State::NotConfigured);
        const auto factory = [](QString* e) { return NebraSecurityManager::create(SettingsStore(), {}, e); };
        session.emplace(settings, nullptr, switches, part<StatusBarControl>(window), factory, window);
        DialogScript dialogs;
        dialogs.logIn("jsmith", "correct horse");
        QCOMPARE(session->StartSecuritySession(), SecuritySession::StartOutcome::Continue);
        if (state == SecuritySession::State::Ended)
            session->LogOut();
        QCOMPARE(session->state(), state);
        authorisation.emplace(*session, nullptr);
        messages.emplace();
    }
};

} // namespace

// The permission checks and audit entries of document operations, in each
// state of a real session.
class AuthorisationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The calling order of every document operation: check, then record.
    void onlyAnAllowedOperationIsRecorded_data()
    {
        QTest::addColumn<SecuritySession::State>("state");
        QTest::addColumn<QString>("operation");
        QTest::addColumn<bool>("showMessage");
        QTest::addColumn<bool>("allowed");
        using State = SecuritySession::State;
        // clang-format off
        QTest::newRow("no session: everything, silently") << State::NotConfigured << "EditLayout" << true << true;
        QTest::newRow("a right of the user") << State::Active << "RunProtocol" << true << true;
        QTest::newRow("refused with the message") << State::Active << "EditLayout" << true << false;
        QTest::newRow("refused silently") << State::Active << "EditLayout" << false << false;
        QTest::newRow("ended: even a right, silently") << State::Ended << "RunProtocol" << true << false;
        // clang-format on
    }

    void onlyAnAllowedOperationIsRecorded()
    {
        QFETCH(SecuritySession::State, state);
        QFETCH(QString, operation);
        QFETCH(bool, showMessage);
        QFETCH(bool, allowed);
        Checked o(state);
        const QStringList before = o.site.fixture.auditTexts();
        QCOMPARE(
            o.authorisation->CanPerformSecurityOperation("AuthorisationsGeneral", operation, showMessage),
            allowed);
        // Nothing to record goes ahead; an ended session records nothing and refuses.
        QCOMPARE(o.authorisation->AddAuditTrailEntryOperationGeneral("Run protocol: ELISA IgG.apr"),
                 state != SecuritySession::State::Ended);
        QString error;
        const AuditEntry last = o.site.fixture.open()->audit().entries(&error).last();
        if (state == SecuritySession::State::Active)
            QCOMPARE(last.userName + '|' + last.area + '|' + last.text,
                     "jsmith|General|Run protocol: ELISA IgG.apr");
        else
            QCOMPARE(o.site.fixture.auditTexts(), before);
        const bool refusalShown = !allowed && showMessage && state == SecuritySession::State::Active;
        QCOMPARE(o.messages->count(), int(refusalShown));
        if (o.messages->count() == 0)
            return;
        const MessageRequest& box = o.messages->last();
        QCOMPARE(box.text + '|' + box.title,
                 QStringLiteral("You do not have permission to perform this operation.  Please contact "
                                "your security administrator for further information.|Security Manager"));
        QCOMPARE(box.icon, MessageIcon::Information);
        QCOMPARE(box.buttons, int(MessageButton::Ok));
    }

    // Other areas are asked as given; an entry that cannot be written refuses the operation.
    void otherAreasAndAnEntryThatCannotBeWritten()
    {
        Checked o(SecuritySession::State::Active);
        QVERIFY(o.authorisation->CanPerformSecurityOperation("Instrumentation", "SelectDriver", true));
        QVERIFY(!o.authorisation->CanPerformSecurityOperation("ParentDirectoryDataFiles", "Edit", false));
        // The general check asks only its own area, and shows the refusal.
        QVERIFY(!o.authorisation->CanPerformGeneralOperation("SelectDriver"));
        QCOMPARE(o.messages->count(), 1);

        o.site.fixture.fillUp();
        QVERIFY(!o.authorisation->AddAuditTrailEntryOperationGeneral("Run protocol: a.apr"));
        QCOMPARE(o.messages->count(), 2); // the manager's, NebraSecurityManagerTest's to word
        QVERIFY(!o.site.fixture.auditTexts().contains("Run protocol: a.apr"));
    }
};

QTEST_MAIN(AuthorisationTest)
#include "AuthorisationTest.moc"
