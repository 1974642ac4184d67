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

using namespace nebra;
using namespace nebra::test;

Q_DECLARE_METATYPE(SecuritySession::State)

// The permission checks and audit entries of document operations, in each
// state of a real session.
class AuthorisationTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<SecuritySite> m_site;
    std::unique_ptr<MessageRecorder> m_messages;
    std::unique_ptr<MainWindow> m_window; // not loaded: its controls, and what a session's end closes
    std::unique_ptr<CommandControls> m_switches;
    std::unique_ptr<SettingsStore> m_store;
    std::unique_ptr<SuiteSettings> m_settings;
    std::unique_ptr<SecuritySession> m_session;
    std::unique_ptr<Authorisation> m_authorisation;

    // A session brought to the state: NotConfigured without security, Active
    // after jsmith's log-in, Ended after jsmith has logged out again.
    void startSession(SecuritySession::State state)
    {
        m_store = std::make_unique<SettingsStore>();
        m_store->setValue(QStringLiteral("Settings/SecurityConfigured"),
                          state != SecuritySession::State::NotConfigured);
        m_settings = std::make_unique<SuiteSettings>(*m_store);
        m_switches = std::make_unique<CommandControls>(part<ToolBarsControl>(*m_window),
                                                       part<FolderTreeControl>(*m_window));
        auto factory = [](QString* error) {
            return NebraSecurityManager::create(SettingsStore(), {}, error);
        };
        m_session = std::make_unique<SecuritySession>(*m_settings, nullptr, *m_switches,
                                                      part<StatusBarControl>(*m_window), factory, *m_window);
        DialogScript dialogs;
        dialogs.logIn(QStringLiteral("jsmith"), QStringLiteral("correct horse"));
        QCOMPARE(m_session->StartSecuritySession(), SecuritySession::StartOutcome::Continue);
        if (state == SecuritySession::State::Ended)
            m_session->LogOut();
        QCOMPARE(m_session->state(), state);
        m_authorisation = std::make_unique<Authorisation>(*m_session, nullptr);
        m_messages = std::make_unique<MessageRecorder>();
    }

private Q_SLOTS:
    void init()
    {
        m_site = std::make_unique<SecuritySite>(
            QStringList{"AuthorisationsGeneral/RunProtocol", "Instrumentation/SelectDriver"});
        MainWindowOptions options;
        options.instanceName = QStringLiteral("AuthorisationTest-%1").arg(QCoreApplication::applicationPid());
        options.endProcess = [] {};
        m_window = std::make_unique<MainWindow>(options);
    }

    void cleanup()
    {
        m_messages.reset();
        m_authorisation.reset();
        m_session.reset();
        m_switches.reset();
        m_window.reset();
    }

    // The calling order of every document operation: check, then record.
    void onlyAnAllowedOperationIsRecorded_data()
    {
        QTest::addColumn<SecuritySession::State>("state");
        QTest::addColumn<QString>("operation");
        QTest::addColumn<bool>("showMessage");
        QTest::addColumn<bool>("allowed");
        using State = SecuritySession::State;
        QTest::newRow("no session: everything, silently")
            << State::NotConfigured << "EditLayout" << true << true;
        QTest::newRow("a right of the user") << State::Active << "RunProtocol" << true << true;
        QTest::newRow("refused with the message") << State::Active << "EditLayout" << true << false;
        QTest::newRow("refused silently") << State::Active << "EditLayout" << false << false;
        QTest::newRow("ended: even a right, silently") << State::Ended << "RunProtocol" << true << false;
    }

    void onlyAnAllowedOperationIsRecorded()
    {
        QFETCH(SecuritySession::State, state);
        QFETCH(QString, operation);
        QFETCH(bool, showMessage);
        QFETCH(bool, allowed);
        startSession(state);
        const QStringList before = m_site->fixture.auditTexts();
        QCOMPARE(m_authorisation->CanPerformSecurityOperation(QStringLiteral("AuthorisationsGeneral"),
                                                              operation, showMessage),
                 allowed);
        // Nothing to record goes ahead; an ended session records nothing and refuses.
        QCOMPARE(m_authorisation->AddAuditTrailEntryOperationGeneral(
                     QStringLiteral("Run protocol: ELISA IgG.apr")),
                 state != SecuritySession::State::Ended);
        QString error;
        const AuditEntry last = m_site->fixture.open()->audit().entries(&error).last();
        if (state == SecuritySession::State::Active)
            QCOMPARE(last.userName + '|' + last.area + '|' + last.text,
                     QStringLiteral("jsmith|General|Run protocol: ELISA IgG.apr"));
        else
            QCOMPARE(m_site->fixture.auditTexts(), before);
        const bool refusalShown = !allowed && showMessage && state == SecuritySession::State::Active;
        QCOMPARE(m_messages->count(), int(refusalShown));
        if (m_messages->count() == 0)
            return;
        const MessageRequest& box = m_messages->last();
        QCOMPARE(box.text,
                 QStringLiteral("You do not have permission to perform this operation.  Please contact "
                                "your security administrator for further information."));
        QCOMPARE(box.title, QStringLiteral("Security Manager"));
        QCOMPARE(box.icon, MessageIcon::Information);
        QCOMPARE(box.buttons, int(MessageButton::Ok));
    }

    void anEntryThatCannotBeWrittenRefusesTheOperation()
    {
        startSession(SecuritySession::State::Active);
        m_site->fixture.fillUp();
        QVERIFY(!m_authorisation->AddAuditTrailEntryOperationGeneral(QStringLiteral("Run protocol: a.apr")));
        QCOMPARE(m_messages->count(), 1);
        QVERIFY2(m_messages->last().text.startsWith(NebraSecurityManager::auditWriteFailureText()),
                 qPrintable(m_messages->last().text));
        QCOMPARE(m_messages->last().icon, MessageIcon::Critical);
        QVERIFY(!m_site->fixture.auditTexts().contains(QStringLiteral("Run protocol: a.apr")));
    }

    void otherAreasAreAskedAsGiven()
    {
        startSession(SecuritySession::State::Active);
        QVERIFY(m_authorisation->CanPerformSecurityOperation(QStringLiteral("Instrumentation"),
                                                             QStringLiteral("SelectDriver"), true));
        QVERIFY(!m_authorisation->CanPerformSecurityOperation(QStringLiteral("ParentDirectoryDataFiles"),
                                                              QStringLiteral("Edit"), false));
        // The general check asks only its own area, and shows the refusal.
        QVERIFY(!m_authorisation->CanPerformGeneralOperation(QStringLiteral("SelectDriver")));
        QCOMPARE(m_messages->count(), 1);
    }
};

QTEST_MAIN(AuthorisationTest)
#include "AuthorisationTest.moc"
