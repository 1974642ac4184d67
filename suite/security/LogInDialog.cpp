#include "LogInDialog.h"

#include "Dialogs.h"
#include "SecretBytes.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace nebra {

LogInDialog::LogInDialog(QWidget* owner) : QDialog(owner)
{
    setObjectName(QStringLiteral("frmLogIn"));
    setWindowTitle(QStringLiteral("Log In"));
    setAccessibleName(QStringLiteral("Log In"));
    setModal(true);

    auto* intro = new QLabel(QStringLiteral("Enter your user name and password."), this);
    intro->setAccessibleName(QStringLiteral("Instructions"));
    m_userName = new QLineEdit(this);
    m_userName->setObjectName(QStringLiteral("txtUserName"));
    m_userName->setAccessibleName(QStringLiteral("User name"));
    m_userName->setMaxLength(64);
    m_password = new QLineEdit(this);
    m_password->setObjectName(QStringLiteral("txtPassword"));
    m_password->setAccessibleName(QStringLiteral("Password"));
    m_password->setEchoMode(QLineEdit::Password);
    m_password->setMaxLength(1024);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("&User name:"), m_userName);
    form->addRow(QStringLiteral("&Password:"), m_password);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setAccessibleName(QStringLiteral("Log in buttons"));
    Dialogs::nameButtons(*buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addLayout(form);
    layout->addWidget(buttons);
}

QString LogInDialog::userName() const
{
    return m_userName->text();
}

void LogInDialog::setUserName(const QString& name)
{
    m_userName->setText(name);
    (name.isEmpty() ? m_userName : m_password)->setFocus();
}

SecretBytes LogInDialog::takePassword()
{
    QString text = m_password->text();
    m_password->clear();
    return SecretBytes::fromString(text);
}

} // namespace nebra
