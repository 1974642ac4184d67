#include "AuditTrailCommand.h"

#include "AuditTrailModel.h"
#include "AuditTrailWindow.h"
#include "Authenticator.h"
#include "Authorisation.h"
#include "CommandDispatcher.h"
#include "CommandSwitches.h"
#include "NebraSecurityManager.h"
#include "SecurityAdministration.h"
#include "SecuritySession.h"
#include "ToolBarsControl.h"
#include "ToolDefinitions.h"

#include <QAction>
#include <QMenu>
#include <QTimer>

namespace nebra {

namespace {
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

AuditTrailCommand::AuditTrailCommand(Parts parts, QObject* parent) : QObject(parent), m_parts(parts)
{
    hide();
}

void AuditTrailCommand::setMenuShown(bool shown)
{
    m_parts.switches.setCommandVisible(CommandId::AuditTrail, shown);
    if (QMenu* tools = m_parts.tools.menu(ToolDefinitions::toolId(CommandId::ToolsMenu)))
        tools->menuAction()->setVisible(shown);
}

void AuditTrailCommand::hide()
{
    m_parts.commands.setCommand(CommandId::AuditTrail, {});
    setMenuShown(false);
}

void AuditTrailCommand::offer()
{
    setMenuShown(true);
    m_parts.commands.setCommand(CommandId::AuditTrail, [this] { ShowAuditTrail(); });
}

void AuditTrailCommand::close()
{
    if (m_viewer)
        m_viewer->close();
}

void AuditTrailCommand::ShowAuditTrail()
{
    SecuritySession& session = m_parts.session;
    Authorisation& authorisation = m_parts.authorisation;
    if (!session.SecurityEnabled() ||
        !authorisation.CanPerformSecurityOperation(
            ReviewArea, QLatin1String(NebraSecurityManager::ReviewOperation), true))
        return;
    if (m_viewer) {
        m_viewer->showNormal();
        m_viewer->raise();
        m_viewer->activateWindow();
        return;
    }
    if (!authorisation.AddAuditTrailEntryOperation(ReviewArea, QStringLiteral("Audit trail viewer opened")))
        return;
    NebraSecurityManager* manager = session.NebraSecurityManagerObj();
    auto* model = new AuditTrailModel(readingThrough(*manager));
    AuditTrailWindowSources sources = viewerSources(*manager, *model);
    sources.record = [&authorisation, model](const QString& text) {
        const bool recorded = authorisation.AddAuditTrailEntryOperation(ReviewArea, text);
        // The table takes the new entry in once the export is done with the view.
        if (recorded)
            QTimer::singleShot(0, model, &AuditTrailModel::reload);
        return recorded;
    };
    m_viewer = new AuditTrailWindow(std::move(sources), &m_parts.owner);
    model->setParent(m_viewer);
    connect(model, &AuditTrailModel::readFailed, m_viewer, &AuditTrailWindow::showReadFailure);
    model->reload();
    m_viewer->show();
}

} // namespace nebra
