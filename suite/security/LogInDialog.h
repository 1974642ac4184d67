#pragma once

#include <QDialog>

class QLineEdit;

namespace nebra {

class SecretBytes;

// The security manager's log-in dialog: user name and password (never
// echoed), OK and Cancel. Object names "txtUserName" and "txtPassword".
class LogInDialog : public QDialog
{
    Q_OBJECT
public:
    explicit LogInDialog(QWidget* owner);

    QString userName() const;
    void setUserName(const QString& name);
    // Hands over the typed password and empties the field.
    SecretBytes takePassword();

private:
    QLineEdit* m_userName;
    QLineEdit* m_password;
};

} // namespace nebra
