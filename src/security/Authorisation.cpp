#include "Authorisation.h"

#include "Messages.h"
#include "NebraSecurityManager.h"
#include "SecuritySession.h"

#include <QWidget>

namespace nebra {

Authorisation::Authorisation(const SecuritySession& session, QWidget* owner)
    : m_session(session), m_owner(owner)
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
    switch (m_session.state()) {
    case SecuritySession::State::NotConfigured:
        return true;
    case SecuritySession::State::Ended:
        return false;
    case SecuritySession::State::Active:
        break;
    }
    // An active session always has its manager; should it not, nothing is allowed.
    NebraSecurityManager* manager = m_session.NebraSecurityManagerObj();
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

bool Authorisation::AddAuditTrailEntryOperation(const QString& area, const QString& entry) const
{
    switch (m_session.state()) {
    case SecuritySession::State::NotConfigured:
        return true;
    case SecuritySession::State::Ended:
        return false;
    case SecuritySession::State::Active:
        break;
    }
    NebraSecurityManager* manager = m_session.NebraSecurityManagerObj();
    return manager && manager->AddAuditTrailEntry(area, entry);
}

bool Authorisation::AddAuditTrailEntryOperationGeneral(const QString& entry) const
{
    return AddAuditTrailEntryOperation(AuditArea, entry);
}

} // namespace nebra
