#include "AcceptChangeDialog.h"

#include "Dialogs.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace nebra {

AcceptChangeDialog::AcceptChangeDialog(const QString& document, const QString& state, QWidget* owner)
    : QDialog(owner)
{
    setObjectName(QStringLiteral("frmAcceptChange"));
    setWindowTitle(QStringLiteral("Accept Change"));
    setAccessibleName(QStringLiteral("Accept Change"));
    setModal(true);

    auto* intro = new QLabel(QStringLiteral("%1\n\n%2. Accepting records its present content as reviewed; "
                                            "the history keeps the change.")
                                 .arg(document, state),
                             this);
    intro->setWordWrap(true);
    intro->setAccessibleName(QStringLiteral("Document"));
    m_reason = new QLineEdit(this);
    m_reason->setObjectName(QStringLiteral("txtReason"));
    m_reason->setAccessibleName(QStringLiteral("Reason"));
    m_reason->setMaxLength(1000);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("&Reason:"), m_reason);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setAccessibleName(QStringLiteral("Accept change buttons"));
    Dialogs::nameButtons(*buttons);
    QPushButton* ok = buttons->button(QDialogButtonBox::Ok);
    ok->setEnabled(false);
    connect(m_reason, &QLineEdit::textChanged, ok,
            [ok](const QString& text) { ok->setEnabled(!text.trimmed().isEmpty()); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addLayout(form);
    layout->addWidget(buttons);
}

QString AcceptChangeDialog::reason() const
{
    return m_reason->text().trimmed();
}

} // namespace nebra
