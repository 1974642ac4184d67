#include "CommandDispatcher.h"
#include "DialogScript.h"
#include "MainWindow.h"
#include "MessageRecorder.h"
#include "NebraSecurityManager.h"
#include "Resources.h"
#include "SecurityFixture.h"
#include "SecuritySession.h"
#include "StatusBarControl.h"
#include "SuitePaths.h"
#include "ToolBarsControl.h"
#include "UserFolders.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QStatusBar>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

// The security session in the running Organiser: start-up with and without
// a session, the session's controls, and the end of the program when the
// manager ends the session.
class tst_SecuritySession : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void withoutSecurityTheControlsAreHiddenAndCommandsDoNothing();
    void creationFailureEndsTheStartUp_data();
    void creationFailureEndsTheStartUp();
    void refusedLogInEndsTheStartUp();
    void logInStartsTheSession();
    void timeOutEndsTheProgram();
    void commandsRestartTheTimeOut();
    void logOutEndsTheProgram();
    void otherReasonEndsTheProgramWithoutMessage();
    void changePasswordRunsTheManagersDialog();
    void closingTheWindowClosesTheSession();

private:
    std::unique_ptr<MainWindow> load(bool security,
                                     MainWindow::LoadOutcome expected = MainWindow::LoadOutcome::Loaded,
                                     int pollIntervalMs = 5);
    QStringList messageTexts() const;

    std::unique_ptr<UserFolders> m_folders;
    std::unique_ptr<SecurityFixture> m_fixture;
    std::unique_ptr<MessageRecorder> m_messages;
    std::unique_ptr<DialogScript> m_dialogs;
    qint64 m_now = 0;
    int m_processEnds = 0;
};

void tst_SecuritySession::init()
{
    m_folders = std::make_unique<UserFolders>();
    m_fixture = std::make_unique<SecurityFixture>(m_folders->root() + QStringLiteral("/site"));
    m_fixture->create();
    m_fixture->addUser(QStringLiteral("jsmith"), QStringLiteral("correct horse"),
                       QStringLiteral("Jane Smith"));
    SettingsStore store;
    m_fixture->writeSettings(store);
    m_messages = std::make_unique<MessageRecorder>();
    m_dialogs = std::make_unique<DialogScript>();
    m_processEnds = 0;
}

void tst_SecuritySession::cleanup()
{
    m_dialogs.reset();
    m_messages.reset();
}

std::unique_ptr<MainWindow> tst_SecuritySession::load(bool security, MainWindow::LoadOutcome expected,
                                                      int pollIntervalMs)
{
    SettingsStore store;
    store.setValue(QStringLiteral("Settings/SecurityConfigured"), security);
    MainWindowOptions options;
    options.instanceName = QStringLiteral("tst_SecuritySession-%1").arg(QCoreApplication::applicationPid());
    options.endProcess = [this] { ++m_processEnds; };
    options.securityManager.clock = [this] { return m_now; };
    options.securityManager.pollIntervalMs = pollIntervalMs;
    auto window = std::make_unique<MainWindow>(options);
    const MainWindow::LoadOutcome outcome = window->Load();
    if (outcome != expected)
        qWarning("Load ended with %d, not %d", int(outcome), int(expected));
    return outcome == expected ? std::move(window) : nullptr;
}

QStringList tst_SecuritySession::messageTexts() const
{
    QStringList texts;
    for (const MessageRequest& request : m_messages->requests())
        texts.append(request.text);
    return texts;
}

void tst_SecuritySession::withoutSecurityTheControlsAreHiddenAndCommandsDoNothing()
{
    const std::unique_ptr<MainWindow> window = load(false);
    QVERIFY(window);
    QVERIFY(!window->globals().SecurityEnabled);
    QVERIFY(!window->statusBarControl().isPanelVisible(SecuritySession::SessionPanel));
    QVERIFY(!window->toolBars().isToolVisible(QStringLiteral("ID_LogOut")));
    QVERIFY(!window->toolBars().isToolVisible(QStringLiteral("ID_ChangePassword")));
    QVERIFY(!window->globals().paths->SecurityManager());
    for (const char* id : {"ID_LogOut", "ID_ChangePassword"})
        window->commands().ToolClick(QLatin1String(id));
    Q_EMIT window->statusBarControl().panelClick(SecuritySession::SessionPanel);
    QVERIFY(m_dialogs->shown().isEmpty());
    QCOMPARE(m_messages->count(), 0);
    QCOMPARE(m_processEnds, 0);
    QCOMPARE(m_fixture->auditTexts().size(), 2); // created, user added: nothing from the Organiser
}

void tst_SecuritySession::creationFailureEndsTheStartUp_data()
{
    QTest::addColumn<QString>("damage");
    QTest::newRow("database missing") << "missing";
    QTest::newRow("not a security database") << "text";
}

void tst_SecuritySession::creationFailureEndsTheStartUp()
{
    QFETCH(QString, damage);
    const QString database = m_fixture->settings().databasePath;
    QVERIFY(QFile::remove(database));
    if (damage == QLatin1String("text")) {
        QFile file(database);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("Protocols\n");
    }
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("^The security manager cannot be created: ")));
    QVERIFY(load(true, MainWindow::LoadOutcome::Ended));
    QCOMPARE(m_messages->count(), 1);
    const MessageRequest& box = m_messages->last();
    QCOMPARE(box.text,
             QStringLiteral("Cannot create NebraSecurity.NebraSecurityManager check that it is installed and "
                            "registered with RegAsm NebraSecurity.dll"));
    QCOMPARE(box.title, Resources().LoadResString(Resources::ProductTitle));
    QCOMPARE(box.icon, MessageIcon::NoIcon);
    QCOMPARE(box.buttons, int(MessageButton::Ok));
    QVERIFY(m_dialogs->shown().isEmpty());
}

void tst_SecuritySession::refusedLogInEndsTheStartUp()
{
    m_dialogs->cancel();
    QVERIFY(load(true, MainWindow::LoadOutcome::Ended));
    QCOMPARE(m_messages->count(), 1);
    QCOMPARE(m_messages->last().text, QStringLiteral("Security log in failed."));
    QCOMPARE(m_messages->last().title, QStringLiteral("Security Manager"));
    QCOMPARE(m_messages->last().icon, MessageIcon::Information);
}

void tst_SecuritySession::logInStartsTheSession()
{
    m_dialogs->logIn(QStringLiteral("jsmith"), QStringLiteral("correct horse"));
    const std::unique_ptr<MainWindow> window = load(true);
    QVERIFY(window);
    QVERIFY(window->globals().SecurityEnabled);
    QCOMPARE(window->statusBarControl().panelText(SecuritySession::SessionPanel),
             QStringLiteral("Logged in as: jsmith (Jane Smith)"));
    QVERIFY(window->statusBarControl().isPanelVisible(SecuritySession::SessionPanel));
    QVERIFY(window->toolBars().isToolVisible(QStringLiteral("ID_LogOut")));
    QVERIFY(window->toolBars().isToolVisible(QStringLiteral("ID_ChangePassword")));
    QCOMPARE(window->globals().paths->SecurityManager(),
             window->securitySession()->NebraSecurityManagerObj());
    QVERIFY(QFileInfo(window->globals().paths->SecuredFolder()).isDir());
    QString error;
    const AuditEntry last = m_fixture->open()->audit().entries(&error).last();
    QCOMPARE(last.area, QStringLiteral("General"));
    QCOMPARE(last.text, QStringLiteral("Launch Welcome screen"));
    QCOMPARE(m_messages->count(), 0);

    // A click on the session panel shows the session information box.
    QLabel* panel = nullptr;
    for (QLabel* label : window->statusBar()->findChildren<QLabel*>())
        if (label->accessibleName() == QLatin1String("Status panel 2"))
            panel = label;
    QVERIFY(panel);
    QTest::mouseClick(panel, Qt::LeftButton);
    QCOMPARE(m_messages->count(), 1);
    QCOMPARE(m_messages->last().text, QStringLiteral("Logged in as: jsmith\r\n\r\nJane Smith"));
    QCOMPARE(m_messages->last().title, QStringLiteral("Security Information"));
    QCOMPARE(m_messages->last().icon, MessageIcon::Information);
}

void tst_SecuritySession::timeOutEndsTheProgram()
{
    m_dialogs->logIn(QStringLiteral("jsmith"), QStringLiteral("correct horse"));
    const std::unique_ptr<MainWindow> window = load(true);
    QVERIFY(window);
    QDialog other; // another window of the program, open when the session ends
    other.show();
    m_now += 15 * 60 * 1000;
    QTRY_COMPARE_WITH_TIMEOUT(m_processEnds, 1, 5000);
    QCOMPARE(messageTexts(),
             QStringList{QStringLiteral("Your session has timed out.  You have been logged out")});
    QCOMPARE(m_messages->last().title, QStringLiteral("Time Out"));
    QCOMPARE(m_messages->last().icon, MessageIcon::Information);
    QVERIFY(!other.isVisible());
    QVERIFY(!window->isVisible());
    QVERIFY(!window->globals().SecurityEnabled);
    QCOMPARE(m_fixture->auditTexts().last(),
             QStringLiteral("Session timed out after 15 minutes without activity"));
}

void tst_SecuritySession::commandsRestartTheTimeOut()
{
    m_dialogs->logIn(QStringLiteral("jsmith"), QStringLiteral("correct horse"));
    // Poll interval 0: one turn of the event loop shows whether the time-out has passed.
    const std::unique_ptr<MainWindow> window = load(true, MainWindow::LoadOutcome::Loaded, 0);
    QVERIFY(window);
    m_now += 14 * 60 * 1000;
    QCoreApplication::processEvents();
    // A tool without a command still counts as activity.
    window->toolBars().action(QStringLiteral("ID_HelpHelp"))->trigger();
    m_now += 14 * 60 * 1000;
    QCoreApplication::processEvents();
    QCOMPARE(m_processEnds, 0);
    QCOMPARE(m_messages->count(), 0);
    m_now += 60 * 1000;
    QTRY_COMPARE_WITH_TIMEOUT(m_processEnds, 1, 5000);
    QCOMPARE(messageTexts(),
             QStringList{QStringLiteral("Your session has timed out.  You have been logged out")});
}

void tst_SecuritySession::logOutEndsTheProgram()
{
    m_dialogs->logIn(QStringLiteral("jsmith"), QStringLiteral("correct horse"));
    const std::unique_ptr<MainWindow> window = load(true);
    QVERIFY(window);
    window->toolBars().action(QStringLiteral("ID_LogOut"))->trigger();
    QCOMPARE(m_processEnds, 1);
    QCOMPARE(messageTexts(), QStringList{QStringLiteral("The program will now exit.")});
    QCOMPARE(m_messages->last().title, QStringLiteral("Logged Out"));
    QVERIFY(!window->isVisible());
    const QStringList texts = m_fixture->auditTexts();
    QCOMPARE(texts.last(), QStringLiteral("Log out")); // and no "Session closed" from the unload after it
}

void tst_SecuritySession::otherReasonEndsTheProgramWithoutMessage()
{
    m_dialogs->logIn(QStringLiteral("jsmith"), QStringLiteral("correct horse"));
    const std::unique_ptr<MainWindow> window = load(true);
    QVERIFY(window);
    window->securitySession()->NebraSecurityManagerObj_UserLoggedOut(QStringLiteral("jsmith"), 2);
    QCOMPARE(m_messages->count(), 0);
    QCOMPARE(m_processEnds, 1);
    QVERIFY(!window->isVisible());
}

void tst_SecuritySession::changePasswordRunsTheManagersDialog()
{
    m_dialogs->logIn(QStringLiteral("jsmith"), QStringLiteral("correct horse"));
    const std::unique_ptr<MainWindow> window = load(true);
    QVERIFY(window);
    m_dialogs->changePassword(QStringLiteral("correct horse"), QStringLiteral("battery staple"),
                              QStringLiteral("battery staple"));
    window->toolBars().action(QStringLiteral("ID_ChangePassword"))->trigger();
    QCOMPARE(m_dialogs->shown(), QStringList({"frmLogIn", "frmChangePassword"}));
    QCOMPARE(messageTexts(), QStringList{QStringLiteral("Your password has been changed.")});
    QCOMPARE(m_fixture->auditTexts().last(), QStringLiteral("Password changed"));
}

void tst_SecuritySession::closingTheWindowClosesTheSession()
{
    m_dialogs->logIn(QStringLiteral("jsmith"), QStringLiteral("correct horse"));
    const std::unique_ptr<MainWindow> window = load(true);
    QVERIFY(window);
    window->close();
    QVERIFY(!window->globals().SecurityEnabled);
    QCOMPARE(m_fixture->auditTexts().last(), QStringLiteral("Session closed"));
    QCOMPARE(m_processEnds, 0);
    QCOMPARE(m_messages->count(), 0);
}

int main(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    tst_SecuritySession test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_SecuritySession.moc"
