// The main window's Tools > Audit Trail... command and the audit trail
// viewer it opens. The command belongs to a security session: it is hidden
// without one and disabled again when the session ends.

#include "MainWindow.h"

#include "AuditTrailModel.h"
#include "AuditTrailWindow.h"
#include "Authenticator.h"
#include "Authorisation.h"
#include "CommandDispatcher.h"
#include "NebraSecurityManager.h"
#include "SecurityAdministration.h"
#include "SecuritySession.h"
#include "ToolBarsControl.h"

#include <QAction>
#include <QMenu>
#include <QTimer>

namespace nebra {

namespace {
const QString AuditTrailTool = QStringLiteral("ID_AuditTrail");
const QString ToolsMenu = QStringLiteral("ID_Tools");
const QString ReviewArea = QLatin1String(NebraSecurityManager::ReviewArea);

// The viewer reads through the manager, which refuses a user without the right.
AuditSource readingThrough(NebraSecurityManager& manager)
{
    AuditSource source;
    source.count = [&manager](const AuditFilter& filter, qint64* count, QString* error) {
        return manager.CountAuditEntries(filter, count, error);
    };
    source.read = [&manager](const AuditFilter& filter, const AuditOrder& order, qint64 offset, int limit,
                             QList<AuditEntry>* entries, QString* error) {
        return manager.ReadAuditEntries(filter, order, offset, limit, entries, error);
    };
    return source;
}

AuditTrailWindowSources viewerSources(NebraSecurityManager& manager, AuditTrailModel& model)
{
    AuditTrailWindowSources sources;
    sources.model = &model;
    sources.setFilter = [&model](const AuditFilter& filter) { model.setFilter(filter); };
    sources.entries = [&model](const AuditEntryVisitor& visit, QString* error) {
        return model.forEachEntry(visit, error);
    };
    // The right is asked again at each check; the check itself reads on a connection of its own.
    sources.verifier = [&manager] { return manager.AuditTrailVerifier(); };
    // The suite keeps no site name; the workstation names the site.
    sources.site = AuditTrail::workstationName();
    sources.printedBy = manager.UserName() + QStringLiteral(" (") + manager.UserDetail() + QLatin1Char(')');
    sources.areas = {Authorisation::AuditArea, Authenticator::Area, SecurityAdministration::Area};
    return sources;
}
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

// Offered to every user of a session; whether they may use it is asked when they do.
void MainWindow::offerAuditTrailCommand()
{
    m_toolBars->setToolVisible(AuditTrailTool, true);
    if (QMenu* tools = m_toolBars->menu(ToolsMenu))
        tools->menuAction()->setVisible(true);
    m_commands->setCommand(AuditTrailTool, [this] { ShowAuditTrail(); });
}

void MainWindow::closeAuditTrail()
{
    if (m_auditTrail)
        m_auditTrail->close();
}

void MainWindow::ShowAuditTrail()
{
    if (!m_security || !m_security->SecurityEnabled())
        return;
    if (!m_authorisation->CanPerformSecurityOperation(
            ReviewArea, QLatin1String(NebraSecurityManager::ReviewOperation), true))
        return;
    if (m_auditTrail) {
        m_auditTrail->showNormal();
        m_auditTrail->raise();
        m_auditTrail->activateWindow();
        return;
    }
    if (!m_authorisation->AddAuditTrailEntryOperation(ReviewArea,
                                                      QStringLiteral("Audit trail viewer opened")))
        return;
    NebraSecurityManager* manager = m_security->NebraSecurityManagerObj();
    auto* model = new AuditTrailModel(readingThrough(*manager));
    AuditTrailWindowSources sources = viewerSources(*manager, *model);
    sources.record = [this, model](const QString& text) {
        const bool recorded = m_authorisation->AddAuditTrailEntryOperation(ReviewArea, text);
        // The table takes the new entry in once the export is done with the view.
        if (recorded)
            QTimer::singleShot(0, model, &AuditTrailModel::reload);
        return recorded;
    };
    m_auditTrail = new AuditTrailWindow(std::move(sources), this);
    model->setParent(m_auditTrail);
    connect(model, &AuditTrailModel::readFailed, m_auditTrail, &AuditTrailWindow::showReadFailure);
    model->reload();
    m_auditTrail->show();
}

} // namespace nebra
