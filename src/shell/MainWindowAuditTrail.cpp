// The main window's Tools > Audit Trail... command and the audit trail
// viewer it opens. The command belongs to a security session: it is hidden
// without one and disabled again when the session ends.

#include "MainWindow.h"

#include "AuditTrailWindow.h"
#include "CommandDispatcher.h"
#include "ToolBarsControl.h"

#include <QAction>
#include <QMenu>

namespace nebra {

namespace {
const QString AuditTrailTool = QStringLiteral("ID_AuditTrail");
const QString ToolsMenu = QStringLiteral("ID_Tools");
} // namespace

AuditTrailWindow* MainWindow::auditTrailWindow() const
{
    return m_auditTrail;
}

void MainWindow::hideAuditTrailCommand()
{
    m_commands->setCommand(AuditTrailTool, {});
    m_toolBars->setToolVisible(AuditTrailTool, false);
    if (QMenu* tools = m_toolBars->menu(ToolsMenu))
        tools->menuAction()->setVisible(false);
}

void MainWindow::offerAuditTrailCommand() {}

void MainWindow::closeAuditTrail()
{
    if (m_auditTrail)
        m_auditTrail->close();
}

void MainWindow::ShowAuditTrail() {}

} // namespace nebra
