#include "SecuritySession.h"
#include "Authorisation.h"
#include "CommandDispatcher.h"
#include "DialogScript.h"
#include "MainWindow.h"
#include "MessageRecorder.h"
#include "NebraSecurityManager.h"
#include "SecurityFixture.h"
#include "StatusBarControl.h"
#include "SuitePaths.h"
#include "TimeOutWarning.h"
#include "ToolBarsControl.h"
#include "WindowParts.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

Q_DECLARE_METATYPE(nebra::MessageIcon)

// The security session in the running Organiser: start-up with and without
// a session, the session's controls, and the end of the program when the
// manager ends the session.
class SecuritySessionTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<SecuritySite> m_site;
    std::unique_ptr<MessageRecorder> m_messages;
    std::unique_ptr<DialogScript> m_dialogs;
    qint64 m_now = 0;
    int m_processEnds = 0;

    // Poll interval 0: one turn of the event loop shows whether the time-out has passed.
    std::unique_ptr<MainWindow> load(bool security,
                                     MainWindow::LoadOutcome expected = MainWindow::LoadOutcome::Loaded)
    {
        if (security)
            m_dialogs->logIn(QStringLiteral("jsmith"), QStringLiteral("correct horse"));
        SettingsStore().setValue(QStringLiteral("Settings/SecurityConfigured"), security);
        MainWindowOptions options;
        options.instanceName =
            QStringLiteral("SecuritySessionTest-%1").arg(QCoreApplication::applicationPid());
        options.endProcess = [this] { ++m_processEnds; };
        options.securityManager.clock = [this] { return m_now; };
        options.securityManager.pollIntervalMs = 0;
        auto window = std::make_unique<MainWindow>(options);
        const MainWindow::LoadOutcome outcome = window->Load();
        if (outcome != expected)
            qWarning("Load ended with %d, not %d", int(outcome), int(expected));
        return outcome == expected ? std::move(window) : nullptr;
    }

    // The one message box shown so far as "text|title".
    QString onlyMessage() const
    {
        if (m_messages->count() != 1)
            return QStringLiteral("%1 messages").arg(m_messages->count());
        return m_messages->last().text + QLatin1Char('|') + m_messages->last().title;
    }

private Q_SLOTS:
    void init()
    {
        m_site =
            std::make_unique<SecuritySite>(QStringList{QStringLiteral("AuthorisationsGeneral/RunProtocol")});
        m_messages = std::make_unique<MessageRecorder>();
        m_dialogs = std::make_unique<DialogScript>();
        m_processEnds = 0;
    }

    void cleanup()
    {
        m_dialogs.reset();
        m_messages.reset();
    }

    void withoutSecurityTheControlsAreHiddenAndCommandsDoNothing()
    {
        const std::unique_ptr<MainWindow> window = load(false);
        QVERIFY(window);
        QVERIFY(!part<SecuritySession>(*window).SecurityEnabled());
        QVERIFY(!part<StatusBarControl>(*window).isPanelVisible(SecuritySession::SessionPanel));
        QVERIFY(!part<ToolBarsControl>(*window).isToolVisible(QStringLiteral("ID_LogOut")));
        QVERIFY(!part<ToolBarsControl>(*window).isToolVisible(QStringLiteral("ID_ChangePassword")));
        for (const char* id : {"ID_LogOut", "ID_ChangePassword"})
            part<CommandDispatcher>(*window).ToolClick(QLatin1String(id));
        Q_EMIT part<StatusBarControl>(*window).panelClick(SecuritySession::SessionPanel);
        QVERIFY(m_dialogs->shown().isEmpty());
        QCOMPARE(m_messages->count(), 0);
        QCOMPARE(m_processEnds, 0);
        // Created, user added, right granted: nothing from the Organiser.
        QCOMPARE(m_site->fixture.auditTexts().size(), 3);
    }

    void aFailedStartOfTheSessionEndsTheStartUp_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("message");
        QTest::addColumn<MessageIcon>("icon");
        QTest::newRow("no database")
            << "no database"
            << "Cannot create NebraSecurity.NebraSecurityManager check that it is "
               "installed and registered with RegAsm NebraSecurity.dll|Tallyo Organiser"
            << MessageIcon::NoIcon;
        QTest::newRow("log-in refused")
            << "cancel"
            << "Security log in failed.|Security Manager" << MessageIcon::Information;
        // The log-in itself is recorded (area "Security"); the session's start is not.
        QTest::newRow("start not recorded") << "audit full"
                                            << NebraSecurityManager::auditWriteFailureText() +
                                                   "\n\nThe audit trail entry could not be recorded "
                                                   "(database or disk is full).|Security Manager"
                                            << MessageIcon::Critical;
    }

    void aFailedStartOfTheSessionEndsTheStartUp()
    {
        QFETCH(QString, how);
        QFETCH(QString, message);
        QFETCH(MessageIcon, icon);
        if (how == QLatin1String("no database")) {
            QVERIFY(QFile::remove(m_site->fixture.settings().databasePath));
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral(
                                                   "^The security manager cannot be created: ")));
        }
        if (how == QLatin1String("audit full"))
            m_site->fixture.fillUp(QStringLiteral("General"));
        else
            m_dialogs->cancel(); // ahead of the log-in step queued by load()
        QVERIFY(load(true, MainWindow::LoadOutcome::Ended));
        QCOMPARE(onlyMessage(), message);
        QCOMPARE(m_messages->last().icon, icon);
        QCOMPARE(m_dialogs->shown().size(), how == QLatin1String("no database") ? 0 : 1);
        if (how == QLatin1String("audit full"))
            QCOMPARE(m_site->fixture.auditTexts().last(), QStringLiteral("Session closed"));
    }

    void aSessionFromLogInToClosingTheWindow()
    {
        const std::unique_ptr<MainWindow> window = load(true);
        QVERIFY(window);
        QCOMPARE(part<SecuritySession>(*window).state(), SecuritySession::State::Active);
        QCOMPARE(part<StatusBarControl>(*window).panelText(SecuritySession::SessionPanel),
                 QStringLiteral("Logged in as: jsmith (Jane Smith)"));
        QVERIFY(part<StatusBarControl>(*window).isPanelVisible(SecuritySession::SessionPanel));
        QVERIFY(part<ToolBarsControl>(*window).isToolVisible(QStringLiteral("ID_LogOut")));
        QVERIFY(part<ToolBarsControl>(*window).isToolVisible(QStringLiteral("ID_ChangePassword")));
        SettingsStore store;
        SuitePaths paths(store);
        paths.Initialise();
        QVERIFY(QFileInfo(paths.SecuredFolder()).isDir());
        QString error;
        const AuditEntry last = m_site->fixture.open()->audit().entries(&error).last();
        QCOMPARE(last.area + QLatin1Char('|') + last.text, QStringLiteral("General|Launch Welcome screen"));
        QCOMPARE(m_messages->count(), 0);

        // A click on the session panel shows the session information box.
        QLabel* panel = nullptr;
        for (QLabel* label : window->statusBar()->findChildren<QLabel*>())
            if (label->accessibleName() == QLatin1String("Status panel 2"))
                panel = label;
        QVERIFY(panel);
        QTest::mouseClick(panel, Qt::LeftButton);
        QCOMPARE(onlyMessage(),
                 QStringLiteral("Logged in as: jsmith\r\n\r\nJane Smith|Security Information"));
        QCOMPARE(m_messages->last().icon, MessageIcon::Information);
    }

    void theEndOfTheSessionEndsTheProgram_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("message"); // "text|title"
        QTest::addColumn<QString>("audit");   // the last entry, or empty to skip
        QTest::newRow("time-out") << "time-out"
                                  << "Your session has timed out.  You have been logged out|Time Out"
                                  << "Session timed out after 10 minutes without activity";
        // The unload after the log-out closes no session: it has ended already.
        QTest::newRow("log-out") << "ID_LogOut"
                                 << "The program will now exit.|Logged Out"
                                 << "Log out";
        QTest::newRow("other reason") << "reason 2"
                                      << "0 messages"
                                      << "";
    }

    void theEndOfTheSessionEndsTheProgram()
    {
        QFETCH(QString, how);
        QFETCH(QString, message);
        QFETCH(QString, audit);
        SettingsStore().setValue(QStringLiteral("Security/TimeOutMinutes"), 10);
        const std::unique_ptr<MainWindow> window = load(true);
        QVERIFY(window);
        QDialog other; // another window of the program, open when the session ends
        other.show();
        // A window hidden between showings (as the Options dialog is) must not outlive the session.
        QPointer<QDialog> hidden = new QDialog;
        hidden->setAttribute(Qt::WA_DeleteOnClose);
        hidden->show();
        hidden->hide();
        // What a command run while the end is announced would get: a right of the
        // user is allowed and recorded until then, refused and unrecorded from then on.
        const Authorisation authorisation(part<SecuritySession>(*window), nullptr);
        const auto tryToRun = [&] {
            const bool allowed =
                authorisation.CanPerformSecurityOperation(Authorisation::GeneralArea, "RunProtocol", false);
            return authorisation.AddAuditTrailEntryOperationGeneral(
                       QStringLiteral("Run protocol: late.apr")) ||
                   allowed;
        };
        QVERIFY(tryToRun());
        QCOMPARE(m_site->fixture.auditTexts().last(), QStringLiteral("Run protocol: late.apr"));
        int passedWhileShown = 0;
        m_messages->whileShown([&](const MessageRequest&) { passedWhileShown += int(tryToRun()); });
        if (how == QLatin1String("time-out")) {
            m_now += 9 * 60 * 1000;
            QCoreApplication::processEvents();
            // A tool without a command still counts as activity: another ten minutes from here.
            part<ToolBarsControl>(*window).action(QStringLiteral("ID_HelpHelp"))->trigger();
            m_now += 10 * 60 * 1000 - 1;
            QCoreApplication::processEvents();
            QCOMPARE(m_processEnds, 0);
            m_now += 1;
        } else if (how == QLatin1String("ID_LogOut")) {
            part<ToolBarsControl>(*window).action(how)->trigger();
        } else {
            part<SecuritySession>(*window).NebraSecurityManagerObj_UserLoggedOut(QStringLiteral("jsmith"), 2);
        }
        QTRY_COMPARE_WITH_TIMEOUT(m_processEnds, 1, 5000);
        QCOMPARE(passedWhileShown, 0);
        QVERIFY(!tryToRun());
        QCOMPARE(onlyMessage(), message);
        if (m_messages->count() == 1)
            QCOMPARE(m_messages->last().icon, MessageIcon::Information);
        QVERIFY(!other.isVisible());
        QTRY_VERIFY_WITH_TIMEOUT(hidden.isNull(), 5000);
        QVERIFY(!window->isVisible());
        QVERIFY(!part<SecuritySession>(*window).SecurityEnabled());
        if (!audit.isEmpty())
            QCOMPARE(m_site->fixture.auditTexts().last(), audit);
    }

    // Ten minutes' time-out, warned a minute before by default. Each row:
    // the warning's setting, what the user does once warned, and how the
    // session ends ("text|title" of the message, or "running").
    void theWarningBeforeTheTimeOut_data()
    {
        QTest::addColumn<int>("warningSeconds"); // -1: not set
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("outcome");
        const QString timedOut =
            QStringLiteral("Your session has timed out.  You have been logged out|Time Out");
        QTest::newRow("countdown ends") << -1 << "nothing" << timedOut;
        QTest::newRow("stay logged in") << -1 << "stay"
                                        << "running";
        QTest::newRow("a command elsewhere") << -1 << "command"
                                             << "running";
        QTest::newRow("log out now") << -1 << "log out"
                                     << "The program will now exit.|Logged Out";
        QTest::newRow("switched off") << 0 << "none shown" << timedOut;
        QTest::newRow("five minutes") << 300 << "nothing" << timedOut;
    }

    void theWarningBeforeTheTimeOut()
    {
        QFETCH(int, warningSeconds);
        QFETCH(QString, action);
        QFETCH(QString, outcome);
        SettingsStore().setValue(QStringLiteral("Security/TimeOutMinutes"), 10);
        if (warningSeconds >= 0)
            SettingsStore().setValue(QStringLiteral("Security/TimeOutWarningSeconds"), warningSeconds);
        const int warnAt = 10 * 60 - (warningSeconds < 0 ? 60 : warningSeconds);
        const std::unique_ptr<MainWindow> window = load(true);
        QVERIFY(window);
        TimeOutWarning* warning = part<SecuritySession>(*window).timeOutWarning();
        QCOMPARE(warning == nullptr, action == QLatin1String("none shown"));
        m_now += qint64(warnAt) * 1000 - 1;
        QCoreApplication::processEvents();
        QVERIFY(!warning || !warning->isVisible());
        if (warning) {
            m_now += 1;
            QTRY_VERIFY_WITH_TIMEOUT(warning->isVisible(), 5000);
            QVERIFY(!warning->isModal());
            QCOMPARE(warning->windowTitle(), QStringLiteral("Session Time-Out"));
            m_now += 20 * 1000;
            const QString expected =
                QStringLiteral("Your session will time out in %1 seconds because of inactivity.")
                    .arg(10 * 60 - warnAt - 20);
            QTRY_COMPARE_WITH_TIMEOUT(warning->countdownText(), expected, 5000);
        }
        if (action == QLatin1String("stay"))
            warning->stayButton()->click();
        else if (action == QLatin1String("command"))
            part<ToolBarsControl>(*window).action(QStringLiteral("ID_HelpHelp"))->trigger();
        else if (action == QLatin1String("log out"))
            warning->logOutButton()->click();
        if (outcome == QLatin1String("running")) {
            QTRY_VERIFY_WITH_TIMEOUT(!warning->isVisible(), 5000);
            m_now += 10 * 60 * 1000 - 1; // a full period again from the activity
            QCoreApplication::processEvents();
            QCOMPARE(m_processEnds, 0);
            QCOMPARE(m_messages->count(), 0);
            QVERIFY(part<SecuritySession>(*window).SecurityEnabled());
            return;
        }
        if (action != QLatin1String("log out"))
            m_now += 10 * 60 * 1000; // the countdown runs out
        QTRY_COMPARE_WITH_TIMEOUT(m_processEnds, 1, 5000);
        QCOMPARE(onlyMessage(), outcome);
        QVERIFY(!warning || !warning->isVisible());
    }
};

int main(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    SecuritySessionTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "SecuritySessionTest.moc"
