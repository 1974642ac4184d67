#include "SecuritySession.h"
#include "Accessibility.h"
#include "AuditTrailWindow.h"
#include "Authorisation.h"
#include "CommandDispatcher.h"
#include "DocumentRecording.h"
#include "FileListControl.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "NebraSecurityManager.h"
#include "StatusBarControl.h"
#include "SuitePaths.h"
#include "TimeOutWarning.h"
#include "ToolBarsControl.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QDialog>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

namespace {

// The Organiser over a site where jsmith holds RunProtocol; the security
// manager's clock is polled at every turn of the event loop, so one turn
// shows whether the time-out has passed.
struct Session : LoadedOrganiser
{
    explicit Session(bool logIn = true) { secure({"AuthorisationsGeneral/RunProtocol"}, logIn); }

    // The one message box shown so far as "text|title".
    QString onlyMessage() const
    {
        if (messages.count() != 1)
            return QStringLiteral("%1 messages").arg(messages.count());
        return messages.last().text + QLatin1Char('|') + messages.last().title;
    }
};

} // namespace

// The security session in the running Organiser: start-up with and without
// a session, the session's controls, and the end of the program when the
// manager ends the session.
class SecuritySessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Without security no session control shows, no command of one does anything and no document is recorded.
    void withoutSecurityTheControlsAreHiddenAndCommandsDoNothing()
    {
        Session o(false);
        o.set("Settings/SecurityConfigured", false);
        writeFile(o.doc("Microplate Layouts/Plate A.mlo"), "v1");
        MainWindow* window = &o.load(0);
        QVERIFY(!part<SecuritySession>(*window).SecurityEnabled());
        QVERIFY(!part<StatusBarControl>(*window).isPanelVisible(SecuritySession::SessionPanel));
        for (const char* id :
             {"ID_LogOut", "ID_ChangePassword", "ID_AuditTrail", "ID_AcceptChange", "ID_Sign"})
            QVERIFY2(!part<ToolBarsControl>(*window).isToolVisible(QLatin1String(id)), id);
        QVERIFY(!part<ToolBarsControl>(*window).menu("ID_Tools")->menuAction()->isVisible());
        for (const char* id : {"ID_LogOut", "ID_ChangePassword", "ID_AuditTrail"})
            part<CommandDispatcher>(*window).ToolClick(QLatin1String(id));
        Q_EMIT part<StatusBarControl>(*window).panelClick(SecuritySession::SessionPanel);
        QVERIFY(!window->findChild<AuditTrailWindow*>());
        QVERIFY(!part<DocumentRecording>(*window).isRecording());
        QVERIFY(!part<FileListControl>(*window).columns().contains("Record"));
        QVERIFY(o.dialogs.shown().isEmpty());
        QCOMPARE(o.messages.count(), 0);
        QCOMPARE(o.processEnds, 0);
        // Created, user added, right granted: nothing from the Organiser.
        QCOMPARE(o.security->auditTexts().size(), 3);
    }

    void aFailedStartOfTheSessionEndsTheStartUp()
    {
        // clang-format off
        for (const auto& [how, message, icon] : std::initializer_list<std::tuple<QString, QString, MessageIcon>>{
            {"no database", "Cannot create NebraSecurity.NebraSecurityManager check that it is installed and registered with RegAsm NebraSecurity.dll|Tallyo Organiser", MessageIcon::NoIcon}, // no database
            {"cancel", "Security log in failed.|Security Manager", MessageIcon::Information}, // log-in refused
            // The log-in itself is recorded (area "Security"); the session's start is not.
            {"audit full", NebraSecurityManager::auditWriteFailureText() + "\n\nThe audit trail entry could not be recorded (database or disk is full).|Security Manager", MessageIcon::Critical} // start not recorded
        }) {
            // clang-format on
            Session o(false);
            if (how == QLatin1String("no database")) {
                QVERIFY(QFile::remove(o.security->settings().databasePath));
                QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral(
                                                       "^The security manager cannot be created: ")));
            }
            if (how == QLatin1String("audit full"))
                o.security->fillUp("General");
            else
                o.dialogs.cancel();
            o.dialogs.logIn("jsmith", "correct horse");
            QCOMPARE(o.start(0), MainWindow::LoadOutcome::Ended);
            QCOMPARE(o.onlyMessage(), message);
            QCOMPARE(o.messages.last().icon, icon);
            // The fixed text says nothing of the cause; the box's details do.
            if (how == QLatin1String("no database"))
                QVERIFY2(o.messages.last().details.contains(o.security->settings().databasePath),
                         qPrintable(o.messages.last().details));
            QCOMPARE(o.dialogs.shown().size(), how == QLatin1String("no database") ? 0 : 1);
            if (how == QLatin1String("audit full"))
                QCOMPARE(o.security->auditTexts().last(), "Session closed");
        }
    }

    // A session from its log-in, shown in the status bar and the tools, to
    // its end, which ends the program.
    void theEndOfTheSessionEndsTheProgram()
    {
        // clang-format off
        for (const auto& [how, message, audit] : std::initializer_list<std::tuple<QString, QString, QString>>{
            {"time-out", "Your session has timed out.  You have been logged out|Time Out", "Session timed out after 10 minutes without activity"}, // time-out
            // The unload after the log-out closes no session: it has ended already.
            {"ID_LogOut", "The program will now exit.|Logged Out", "Log out"}, // log-out
            {"reason 2", "0 messages", ""} // other reason
        }) {
            // clang-format on
            Session o;
            o.set("Security/TimeOutMinutes", 10);
            MainWindow* window = &o.load(0);
            QCOMPARE(part<SecuritySession>(*window).state(), SecuritySession::State::Active);
            QCOMPARE(part<StatusBarControl>(*window).panelText(SecuritySession::SessionPanel),
                     "Logged in as: jsmith (Jane Smith)");
            QVERIFY(part<StatusBarControl>(*window).isPanelVisible(SecuritySession::SessionPanel));
            for (const char* id : {"ID_LogOut", "ID_ChangePassword", "ID_AuditTrail"})
                QVERIFY2(part<ToolBarsControl>(*window).isToolVisible(QLatin1String(id)), id);
            QVERIFY(part<ToolBarsControl>(*window).menu("ID_Tools")->menuAction()->isVisible());
            SettingsStore store;
            SuitePaths paths(store);
            paths.Initialise();
            QVERIFY(QFileInfo(paths.SecuredFolder()).isDir());
            QString error;
            const AuditEntry last = o.security->open()->audit().entries(&error).last();
            QCOMPARE(last.area + QLatin1Char('|') + last.text, "General|Launch Welcome screen");
            QCOMPARE(o.messages.count(), 0);

            // A click on the session panel shows the session information box.
            QLabel* panel = nullptr;
            for (QLabel* label : window->statusBar()->findChildren<QLabel*>())
                if (label->accessibleName() == QLatin1String("Status panel 2"))
                    panel = label;
            QVERIFY(panel);
            QTest::mouseClick(panel, Qt::LeftButton);
            QCOMPARE(o.onlyMessage(), "Logged in as: jsmith\r\n\r\nJane Smith|Security Information");
            QCOMPARE(o.messages.last().icon, MessageIcon::Information);
            o.messages.clear();

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
                const bool allowed = authorisation.CanPerformSecurityOperation(Authorisation::GeneralArea,
                                                                               "RunProtocol", false);
                return authorisation.AddAuditTrailEntryOperationGeneral("Run protocol: late.apr") || allowed;
            };
            QVERIFY(tryToRun());
            QCOMPARE(o.security->auditTexts().last(), "Run protocol: late.apr");
            int passedWhileShown = 0;
            o.messages.whileShown([&](const MessageRequest&) { passedWhileShown += int(tryToRun()); });
            if (how == QLatin1String("time-out")) {
                o.now += 10 * 60 * 1000 - 1;
                QCoreApplication::processEvents();
                QCOMPARE(o.processEnds, 0);
                o.now += 1;
            } else if (how == QLatin1String("ID_LogOut")) {
                part<ToolBarsControl>(*window).action(how)->trigger();
            } else {
                part<SecuritySession>(*window).NebraSecurityManagerObj_UserLoggedOut("jsmith", 2);
            }
            QTRY_COMPARE_WITH_TIMEOUT(o.processEnds, 1, 5000);
            QCOMPARE(passedWhileShown, 0);
            QVERIFY(!tryToRun());
            QCOMPARE(o.onlyMessage(), message);
            if (o.messages.count() == 1)
                QCOMPARE(o.messages.last().icon, MessageIcon::Information);
            QVERIFY(!other.isVisible());
            QTRY_VERIFY_WITH_TIMEOUT(hidden.isNull(), 5000);
            QVERIFY(!window->isVisible());
            QVERIFY(!part<SecuritySession>(*window).SecurityEnabled());
            if (!audit.isEmpty())
                QCOMPARE(o.security->auditTexts().last(), audit);
        }
    }

    // Ten minutes' time-out, warned a minute before by default. Each row:
    // the warning's setting, what the user does once warned, and how the
    // session ends ("text|title" of the message, or "running").
    void theWarningBeforeTheTimeOut_data()
    {
        QTest::addColumn<int>("warningSeconds"); // -1: not set
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("outcome");
        const QString timedOut = "Your session has timed out.  You have been logged out|Time Out";
        // clang-format off
        QTest::newRow("countdown ends") << -1 << "nothing" << timedOut;
        QTest::newRow("stay logged in") << -1 << "stay" << "running";
        QTest::newRow("a command elsewhere") << -1 << "command" << "running";
        QTest::newRow("log out now") << -1 << "log out" << "The program will now exit.|Logged Out";
        QTest::newRow("switched off") << 0 << "none shown" << timedOut;
        QTest::newRow("five minutes") << 300 << "nothing" << timedOut;
        // clang-format on
    }

    void theWarningBeforeTheTimeOut()
    {
        QFETCH(int, warningSeconds);
        QFETCH(QString, action);
        QFETCH(QString, outcome);
        Session o;
        o.set("Security/TimeOutMinutes", 10);
        if (warningSeconds >= 0)
            o.set("Security/TimeOutWarningSeconds", warningSeconds);
        const int warnAt = 10 * 60 - (warningSeconds < 0 ? 60 : warningSeconds);
        MainWindow* window = &o.load(0);
        TimeOutWarning* warning = part<SecuritySession>(*window).timeOutWarning();
        QCOMPARE(warning == nullptr, action == QLatin1String("none shown"));
        o.now += qint64(warnAt) * 1000 - 1;
        QCoreApplication::processEvents();
        QVERIFY(!warning || !warning->isVisible());
        if (warning) {
            o.now += 1;
            QTRY_VERIFY_WITH_TIMEOUT(warning->isVisible(), 5000);
            QVERIFY(!warning->isModal());
            QCOMPARE(warning->windowTitle(), "Session Time-Out");
            verifyAccessibleNames(*warning, 2);
            o.now += 20 * 1000;
            const QString expected =
                QStringLiteral("Your session will time out in %1 seconds because of inactivity.")
                    .arg(10 * 60 - warnAt - 20);
            QTRY_COMPARE_WITH_TIMEOUT(warning->countdownText(), expected, 5000);
        }
        if (action == QLatin1String("stay"))
            warning->stayButton()->click();
        else if (action == QLatin1String("command"))
            part<ToolBarsControl>(*window).action("ID_HelpHelp")->trigger();
        else if (action == QLatin1String("log out"))
            warning->logOutButton()->click();
        if (outcome == QLatin1String("running")) {
            QTRY_VERIFY_WITH_TIMEOUT(!warning->isVisible(), 5000);
            o.now += 10 * 60 * 1000 - 1; // a full period again from the activity
            QCoreApplication::processEvents();
            QCOMPARE(o.processEnds, 0);
            QCOMPARE(o.messages.count(), 0);
            QVERIFY(part<SecuritySession>(*window).SecurityEnabled());
            return;
        }
        if (action != QLatin1String("log out"))
            o.now += 10 * 60 * 1000; // the countdown runs out
        QTRY_COMPARE_WITH_TIMEOUT(o.processEnds, 1, 5000);
        QCOMPARE(o.onlyMessage(), outcome);
        QVERIFY(!warning || !warning->isVisible());
    }
};

NEBRA_WEBENGINE_TEST_MAIN(SecuritySessionTest)
#include "SecuritySessionTest.moc"
