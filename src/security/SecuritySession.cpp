#include "SecuritySession.h"

#include "Globals.h"
#include "Messages.h"
#include "StatusBarControl.h"
#include "SuiteSettings.h"
#include "ToolBarsControl.h"

#include <QWidget>

namespace nebra {

SecuritySession::SecuritySession(Globals& globals, QWidget* owner, ToolBarsControl& tools,
                                 StatusBarControl& statusBar)
    : QObject(nullptr), m_globals(globals), m_owner(owner), m_tools(tools), m_statusBar(statusBar)
{
}

SecuritySession::StartOutcome SecuritySession::StartSecuritySession()
{
    if (!m_globals.settings->SecurityConfigured()) {
        HideSecurityControls();
        return StartOutcome::Continue;
    }
    // No security manager is available in this build.
    Messages::show({QStringLiteral("Cannot create NebraSecurity.NebraSecurityManager check that it is installed "
                                   "and registered with RegAsm NebraSecurity.dll"),
                    {}, MessageIcon::NoIcon, MessageButton::Ok, MessageButton::NoButton, m_owner});
    return StartOutcome::EndProcess;
}

void SecuritySession::HideSecurityControls()
{
    m_statusBar.setPanelVisible(2, false);
    m_tools.setToolVisible(QStringLiteral("ID_LogOut"), false);
}

void SecuritySession::ResetLogOutTimeOutTimer()
{
    if (!m_globals.SecurityEnabled)
        return;
}

void SecuritySession::CloseSession()
{
    m_globals.SecurityEnabled = false;
}

} // namespace nebra
