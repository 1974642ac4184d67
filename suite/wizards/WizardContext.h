#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

namespace nebra {

// The context of one wizard run, created afresh for each run: the name the
// wizard was chosen under, the companion object attached to it (the suite's
// folders and driver, see WizardCompanion) and, while a security session is
// open, the security manager, through which a wizard may check its own
// operations and write its own audit entries. Without a session
// SecurityManager is null. Wizards read it through its properties.
class WizardContext : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString WizardName READ WizardName CONSTANT)
    Q_PROPERTY(QObject* Companion READ Companion)
    Q_PROPERTY(QObject* SecurityManager READ SecurityManager)
public:
    explicit WizardContext(const QString& wizardName, QObject* parent = nullptr);

    QString WizardName() const { return m_wizardName; }

    // The companion becomes a child of the context.
    void AttachCompanion(QObject* companion);
    QObject* Companion() const { return m_companion; }

    void SetSecurityManager(QObject* manager) { m_securityManager = manager; }
    QObject* SecurityManager() const { return m_securityManager; }

private:
    QString m_wizardName;
    QPointer<QObject> m_companion;
    QPointer<QObject> m_securityManager;
};

} // namespace nebra
