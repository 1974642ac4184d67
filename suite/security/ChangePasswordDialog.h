#pragma once

#include <QDialog>

class QLineEdit;

namespace nebra {

class SecretBytes;

// The security manager's change-password dialog: the current password
// (left out when the user has just proved it by logging in), the new one and
// its confirmation, none echoed. Object names "txtCurrentPassword",
// "txtNewPassword" and "txtConfirmPassword".
class ChangePasswordDialog : public QDialog
{
    Q_OBJECT
public:
    // forced: the password must be changed before the session can begin.
    ChangePasswordDialog(QWidget* owner, const QString& userName, int minimumLength, bool forced);

    // Each hands over the typed text and empties the field.
    SecretBytes takeCurrentPassword();
    SecretBytes takeNewPassword();
    SecretBytes takeConfirmation();

private:
    QLineEdit* addPasswordField(const QString& objectName, const QString& accessibleName);

    QLineEdit* m_current;
    QLineEdit* m_new;
    QLineEdit* m_confirm;
};

} // namespace nebra
