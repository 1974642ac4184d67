#include "Authorisation.h"

#include "Globals.h"
#include "Messages.h"
#include "NebraSecurityManager.h"

#include <QWidget>

namespace nebra {

Authorisation::Authorisation(const Globals& globals, ManagerSource manager, QWidget* owner)
    : m_globals(globals), m_manager(std::move(manager)), m_owner(owner)
{
}

QString Authorisation::permissionDeniedText()
{
    return QStringLiteral(
        "You do not have permission to perform this operation.  Please contact your security "
        "administrator for further information.");
}

bool Authorisation::CanPerformSecurityOperation(const QString& area, const QString& operation,
                                                bool showMessage) const
{
    if (!m_globals.SecurityEnabled)
        return true;
    // A session without a manager cannot happen; should it, nothing is allowed.
    NebraSecurityManager* manager = m_manager();
    const bool allowed = manager && manager->IsOperationAllowed(area, operation);
    if (!allowed && showMessage)
        Messages::show({permissionDeniedText(), QStringLiteral("Security Manager"), MessageIcon::Information,
                        MessageButton::Ok, MessageButton::Ok, m_owner});
    return allowed;
}

bool Authorisation::CanPerformGeneralOperation(const QString& operation) const
{
    return CanPerformSecurityOperation(GeneralArea, operation, true);
}

void Authorisation::AddAuditTrailEntryOperation(const QString& area, const QString& entry) const
{
    if (!m_globals.SecurityEnabled)
        return;
    if (NebraSecurityManager* manager = m_manager())
        manager->AddAuditTrailEntry(area, entry);
}

void Authorisation::AddAuditTrailEntryOperationGeneral(const QString& entry) const
{
    AddAuditTrailEntryOperation(AuditArea, entry);
}

} // namespace nebra
