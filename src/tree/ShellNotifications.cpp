#include "ShellNotifications.h"

#include "DiagnosticLog.h"

namespace nebra {

void ShellNotifications::ActivateSHCNENotification()
{
    LogTraceBlock();
    if (m_active)
        return;
    m_active = true;
}

void ShellNotifications::TerminateSHCNENotification()
{
    if (!m_active)
        return;
    m_active = false;
}

} // namespace nebra
