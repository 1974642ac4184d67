#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace nebra {

struct Globals;
class NebraSecurityManager;

// The permission checks and audit entries that guard the Organiser's
// document operations. Inside a security session they go to the security
// manager; without one every check answers allowed, nothing is recorded
// and nothing is shown.
//
// Document operations call CanPerformGeneralOperation with the operation's
// name, stop without a further message when it answers false, and
// otherwise call AddAuditTrailEntryOperationGeneral before carrying the
// operation out.
class Authorisation
{
public:
    using ManagerSource = std::function<NebraSecurityManager*()>;

    static inline const QString GeneralArea = QStringLiteral("AuthorisationsGeneral");
    static inline const QString AuditArea = QStringLiteral("General");

    Authorisation(const Globals& globals, ManagerSource manager, QWidget* owner);

    // Asks the manager whether the user may perform operation in area. When
    // not, and showMessage is set, tells the user so.
    bool CanPerformSecurityOperation(const QString& area, const QString& operation, bool showMessage) const;
    // The same in area "AuthorisationsGeneral", with the message.
    bool CanPerformGeneralOperation(const QString& operation) const;

    void AddAuditTrailEntryOperation(const QString& area, const QString& entry) const;
    // The same in area "General".
    void AddAuditTrailEntryOperationGeneral(const QString& entry) const;

    static QString permissionDeniedText();

private:
    const Globals& m_globals;
    ManagerSource m_manager;
    QWidget* m_owner;
};

} // namespace nebra
