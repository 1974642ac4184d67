#include "SecuritySession.h"

#include "CommandSwitches.h"
#include "Messages.h"
#include "NebraSecurityManager.h"
#include "SecuritySettings.h"
#include "StatusBarControl.h"
#include "SuiteSettings.h"

#include <QWidget>

namespace nebra {

namespace {
void inform(QWidget* owner, const QString& text, const QString& title)
{
    Messages::show({text, title, MessageIcon::Information, MessageButton::Ok, MessageButton::Ok, owner});
}
} // namespace

SecuritySession::SecuritySession(const SuiteSettings& settings, QWidget* owner, CommandSwitches& commands,
                                 StatusBarControl& statusBar, ManagerFactory factory, SessionEnding& ending,
                                 QObject* parent)
    : QObject(parent), m_settings(settings), m_owner(owner), m_commands(commands), m_statusBar(statusBar),
      m_factory(std::move(factory)), m_ending(ending)
{
    m_commands.setCommandVisible(CommandId::ChangePassword, false);
}

SecuritySession::~SecuritySession() = default;

QString SecuritySession::creationFailureText()
{
    return QStringLiteral("Cannot create NebraSecurity.NebraSecurityManager check that it is installed and "
                          "registered with RegAsm NebraSecurity.dll");
}

SecuritySession::StartOutcome SecuritySession::StartSecuritySession()
{
    if (!m_settings.SecurityConfigured()) {
        HideSecurityControls();
        return StartOutcome::Continue;
    }
    QString error;
    m_manager = m_factory(&error);
    if (!m_manager) {
        // The box's text is fixed; the reason is its details, and goes to
        // the log for an administrator who was not at the screen.
        qWarning("The security manager cannot be created: %s", qUtf8Printable(error));
        Messages::show({creationFailureText(),
                        {},
                        MessageIcon::NoIcon,
                        MessageButton::Ok,
                        MessageButton::NoButton,
                        m_owner,
                        error});
        return StartOutcome::EndProcess;
    }
    connect(m_manager.get(), &NebraSecurityManager::UserLoggedOut, this,
            &SecuritySession::NebraSecurityManagerObj_UserLoggedOut);
    if (!m_manager->LogIn(m_owner)) {
        inform(m_owner, QStringLiteral("Security log in failed."), QStringLiteral("Security Manager"));
        return StartOutcome::EndProcess;
    }
    m_state = State::Active;
    showSecurityControls();
    if (!m_manager->AddAuditTrailEntry(QStringLiteral("General"), QStringLiteral("Launch Welcome screen"))) {
        // A session whose start cannot be recorded is not begun; the manager
        // has said why.
        CloseSession();
        return StartOutcome::EndProcess;
    }
    createTimeOutWarning();
    return StartOutcome::Continue;
}

// Only a warning: the time-out itself stays the manager's, so a session
// that is not rescued ends exactly as it would without the warning.
void SecuritySession::createTimeOutWarning()
{
    const int seconds = m_manager->TimeOutWarningSeconds();
    if (seconds <= 0)
        return;
    TimeOutWarning::Hooks hooks;
    hooks.remainingMs = [this] { return m_manager ? m_manager->TimeOutRemainingMs() : 0; };
    hooks.stay = [this] { ResetLogOutTimeOutTimer(); };
    hooks.logOut = [this] { LogOut(); };
    m_timeOutWarning = new TimeOutWarning(std::move(hooks), qint64(seconds) * 1000, m_owner);
    connect(m_manager.get(), &NebraSecurityManager::TimeOutWarning, m_timeOutWarning, &TimeOutWarning::warn);
}

void SecuritySession::showSecurityControls()
{
    const bool groupLibrary =
        m_manager->AuthenticationLibrary() == QLatin1String(SecuritySettings::GroupLibrary);
    const bool changeAllowed = m_manager->PasswordChangeAllowed();
    m_commands.setCommandVisible(CommandId::ChangePassword, changeAllowed || groupLibrary);
    // The service library is asked about as well; the answer changes nothing.
    [[maybe_unused]] const bool serviceLibrary =
        m_manager->AuthenticationLibrary() == QLatin1String(SecuritySettings::ServiceLibrary);
    m_commands.setCommandVisible(CommandId::LogOut, true);
    m_statusBar.setPanelText(SessionPanel, QStringLiteral("Logged in as: ") + m_manager->UserName() +
                                               QStringLiteral(" (") + m_manager->UserDetail() +
                                               QLatin1Char(')'));
}

void SecuritySession::HideSecurityControls()
{
    m_statusBar.setPanelVisible(SessionPanel, false);
    m_commands.setCommandVisible(CommandId::LogOut, false);
}

void SecuritySession::ChangePassword()
{
    if (SecurityEnabled())
        m_manager->SessionChangePassword(m_owner);
}

void SecuritySession::LogOut()
{
    if (SecurityEnabled())
        m_manager->SessionLogOut();
}

void SecuritySession::ResetLogOutTimeOutTimer()
{
    if (SecurityEnabled())
        m_manager->ResetTimeOut();
}

void SecuritySession::ShowSessionInformation()
{
    if (!SecurityEnabled())
        return;
    inform(m_owner,
           QStringLiteral("Logged in as: ") + m_manager->UserName() + QStringLiteral("\r\n\r\n") +
               m_manager->UserDetail(),
           QStringLiteral("Security Information"));
}

void SecuritySession::OnPanelClick(int panel)
{
    if (panel == SessionPanel)
        ShowSessionInformation();
}

void SecuritySession::NebraSecurityManagerObj_UserLoggedOut(const QString& userName, int reason)
{
    Q_UNUSED(userName);
    // The manager has ended the session: from here on every check refuses,
    // also while the message below waits for the user.
    m_state = State::Ended;
    if (reason == NebraSecurityManager::TimedOut)
        inform(m_owner, QStringLiteral("Your session has timed out.  You have been logged out"),
               QStringLiteral("Time Out"));
    else if (reason == NebraSecurityManager::LoggedOut)
        inform(m_owner, QStringLiteral("The program will now exit."), QStringLiteral("Logged Out"));
    m_ending.UnloadAllExceptMain();
    m_ending.unloadMainWindow();
    m_ending.endProcess();
}

void SecuritySession::CloseSession()
{
    if (m_state != State::Active)
        return;
    m_manager->CloseSession();
    m_state = State::Ended;
}

} // namespace nebra
