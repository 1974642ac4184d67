#include "ChangePasswordDialog.h"

#include "Dialogs.h"
#include "SecretBytes.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace nebra {

namespace {
SecretBytes take(QLineEdit* field)
{
    QString text = field->text();
    field->clear();
    return SecretBytes::fromString(text);
}
} // namespace

ChangePasswordDialog::ChangePasswordDialog(QWidget* owner, const QString& userName, int minimumLength,
                                           bool forced)
    : QDialog(owner)
{
    setObjectName(QStringLiteral("frmChangePassword"));
    setWindowTitle(QStringLiteral("Change Password"));
    setAccessibleName(QStringLiteral("Change Password"));
    setModal(true);

    QString intro =
        forced ? QStringLiteral("%1, your password must be changed before you continue.").arg(userName)
               : QStringLiteral("Change the password of %1.").arg(userName);
    intro += QStringLiteral("\nThe new password needs at least %1 characters and must not be your user name.")
                 .arg(minimumLength);
    auto* introLabel = new QLabel(intro, this);
    introLabel->setAccessibleName(QStringLiteral("Instructions"));
    introLabel->setWordWrap(true);

    m_current = addPasswordField(QStringLiteral("txtCurrentPassword"), QStringLiteral("Current password"));
    m_new = addPasswordField(QStringLiteral("txtNewPassword"), QStringLiteral("New password"));
    m_confirm =
        addPasswordField(QStringLiteral("txtConfirmPassword"), QStringLiteral("Confirm new password"));
    auto* form = new QFormLayout;
    if (!forced)
        form->addRow(QStringLiteral("C&urrent password:"), m_current);
    else
        m_current->hide();
    form->addRow(QStringLiteral("&New password:"), m_new);
    form->addRow(QStringLiteral("&Confirm new password:"), m_confirm);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setAccessibleName(QStringLiteral("Change password buttons"));
    Dialogs::nameButtons(*buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(introLabel);
    layout->addLayout(form);
    layout->addWidget(buttons);
}

QLineEdit* ChangePasswordDialog::addPasswordField(const QString& objectName, const QString& accessibleName)
{
    auto* field = new QLineEdit(this);
    field->setObjectName(objectName);
    field->setAccessibleName(accessibleName);
    field->setEchoMode(QLineEdit::Password);
    field->setMaxLength(1024);
    return field;
}

SecretBytes ChangePasswordDialog::takeCurrentPassword()
{
    return take(m_current);
}

SecretBytes ChangePasswordDialog::takeNewPassword()
{
    return take(m_new);
}

SecretBytes ChangePasswordDialog::takeConfirmation()
{
    return take(m_confirm);
}

} // namespace nebra
