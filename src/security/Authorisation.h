#pragma once

#include <QString>

class QWidget;

namespace nebra {

class SecuritySession;

// The permission checks and audit entries that guard the Organiser's
// document operations. They follow the session's state: without a
// configured session every check answers allowed, nothing is recorded and
// nothing is shown; inside an active session they go to the security
// manager; once the session has ended nothing is allowed and nothing is
// recorded, so that no operation slips through while the windows close.
//
// Document operations call CanPerformGeneralOperation with the operation's
// name, stop without a further message when it answers false, and
// otherwise call AddAuditTrailEntryOperationGeneral before carrying the
// operation out, which they do only when the entry was written.
class Authorisation
{
public:
    static inline const QString GeneralArea = QStringLiteral("AuthorisationsGeneral");
    static inline const QString AuditArea = QStringLiteral("General");

    Authorisation(const SecuritySession& session, QWidget* owner);

    // Asks the manager whether the user may perform operation in area. When
    // not, and showMessage is set, tells the user so (an ended session
    // refuses silently: its end has been announced already).
    bool CanPerformSecurityOperation(const QString& area, const QString& operation, bool showMessage) const;
    // The same in area "AuthorisationsGeneral", with the message.
    bool CanPerformGeneralOperation(const QString& operation) const;

    // True when the operation may go ahead: without a configured session
    // (nothing to record), or once the manager has committed the entry.
    // False after the session has ended, and when the entry could not be
    // written; the manager has then told the user that the audit trail
    // could not be written.
    bool AddAuditTrailEntryOperation(const QString& area, const QString& entry) const;
    // The same in area "General".
    bool AddAuditTrailEntryOperationGeneral(const QString& entry) const;

    static QString permissionDeniedText();

private:
    const SecuritySession& m_session;
    QWidget* m_owner;
};

} // namespace nebra
