#pragma once

#include "TimeOutWarning.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class QWidget;

namespace nebra {

class CommandSwitches;
class NebraSecurityManager;
class StatusBarControl;
class SuiteSettings;

// What the session asks of the program when the manager ends the session,
// in this order: close every other window, unload the main window, end the process.
class SessionEnding
{
public:
    virtual void UnloadAllExceptMain() = 0;
    virtual void unloadMainWindow() = 0;
    virtual void endProcess() = 0;

protected:
    ~SessionEnding() = default;
};

// The Organiser's side of the security session: log-in at start-up, the
// session panel (2) of the status bar and its information box, the security
// tools, the restarting of the manager's inactivity time-out, and the end
// of the program when the manager ends the session (time-out or log-out).
// Without a configured session the session's controls are hidden and every
// command here does nothing.
class SecuritySession : public QObject
{
    Q_OBJECT
public:
    enum class StartOutcome
    {
        Continue,
        EndProcess
    };

    enum class State
    {
        NotConfigured,
        Active,
        Ended
    };

    using ManagerFactory = std::function<std::unique_ptr<NebraSecurityManager>(QString* error)>;

    static constexpr int SessionPanel = 2;

    // Hides Change Password: the command is shown only by a session that allows it.
    SecuritySession(const SuiteSettings& settings, QWidget* owner, CommandSwitches& commands,
                    StatusBarControl& statusBar, ManagerFactory factory, SessionEnding& ending,
                    QObject* parent = nullptr);
    ~SecuritySession() override;

    // Called once by the start-up. EndProcess: the failure has been reported
    // and the program must end at once. A successful log-in is recorded as
    // "Launch Welcome screen" in the audit trail; when that entry cannot be
    // written the session is closed again and the program must end.
    StartOutcome StartSecuritySession();

    State state() const { return m_state; }
    // True exactly while the session is Active.
    bool SecurityEnabled() const { return m_state == State::Active; }
    void HideSecurityControls();
    void ChangePassword();
    void LogOut();
    void ResetLogOutTimeOutTimer();
    // The manager's UserLoggedOut: reason 0 time-out, 1 log-out.
    void NebraSecurityManagerObj_UserLoggedOut(const QString& userName, int reason);
    // The status bar's session panel was clicked.
    void ShowSessionInformation();
    // A click on a panel of the status bar: the session panel shows the information.
    void OnPanelClick(int panel);
    // Ends the session quietly as the main window unloads.
    void CloseSession();

    NebraSecurityManager* NebraSecurityManagerObj() const { return m_manager.get(); }
    // The warning before the time-out; null without a session or with
    // [Security] TimeOutWarningSeconds 0.
    TimeOutWarning* timeOutWarning() const { return m_timeOutWarning; }

    static QString creationFailureText();

private:
    void showSecurityControls();
    void createTimeOutWarning();

    const SuiteSettings& m_settings;
    QWidget* m_owner;
    CommandSwitches& m_commands;
    StatusBarControl& m_statusBar;
    ManagerFactory m_factory;
    SessionEnding& m_ending;
    std::unique_ptr<NebraSecurityManager> m_manager;
    State m_state = State::NotConfigured;
    QPointer<TimeOutWarning> m_timeOutWarning;
};

} // namespace nebra
