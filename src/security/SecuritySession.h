#pragma once

#include <QObject>

class QWidget;

namespace nebra {

struct Globals;
class StatusBarControl;
class ToolBarsControl;

// The Organiser's side of the security session: log-in at start-up, the
// session panel of the status bar, the security tools, and the end of the
// program when the session ends.
class SecuritySession : public QObject
{
    Q_OBJECT
public:
    enum class StartOutcome { Continue, EndProcess };

    SecuritySession(Globals& globals, QWidget* owner, ToolBarsControl& tools, StatusBarControl& statusBar);

    StartOutcome StartSecuritySession();
    void HideSecurityControls();
    void ResetLogOutTimeOutTimer();
    void CloseSession();

private:
    Globals& m_globals;
    QWidget* m_owner;
    ToolBarsControl& m_tools;
    StatusBarControl& m_statusBar;
};

} // namespace nebra
