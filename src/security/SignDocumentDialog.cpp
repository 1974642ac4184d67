#include "SignDocumentDialog.h"

#include "Dialogs.h"
#include "SecretBytes.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace nebra {

namespace {

QLabel* shownText(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setTextInteractionFlags(Qt::TextSelectableByKeyboard | Qt::TextSelectableByMouse);
    return label;
}

} // namespace

SignDocumentDialog::SignDocumentDialog(const QString& document, const QStringList& meanings,
                                       const QString& userName, QWidget* owner)
    : QDialog(owner)
{
    setObjectName(QStringLiteral("frmSignDocument"));
    setWindowTitle(QStringLiteral("Sign Document"));
    setAccessibleName(QStringLiteral("Sign Document"));
    setModal(true);

    const QFileInfo file(document);
    m_sha256 = shownText(QStringLiteral("Reading the document..."), this);
    m_sha256->setAccessibleName(QStringLiteral("SHA-256"));
    m_sha256->setObjectName(QStringLiteral("lblSha256"));
    m_meaning = new QComboBox(this);
    m_meaning->setObjectName(QStringLiteral("cboMeaning"));
    m_meaning->setAccessibleName(QStringLiteral("Meaning"));
    m_meaning->addItems(meanings);
    m_userName = new QLineEdit(userName, this);
    m_userName->setObjectName(QStringLiteral("txtUserName"));
    m_userName->setAccessibleName(QStringLiteral("User name"));
    m_userName->setMaxLength(64);
    m_userName->setReadOnly(!userName.isEmpty());
    m_password = new QLineEdit(this);
    m_password->setObjectName(QStringLiteral("txtPassword"));
    m_password->setAccessibleName(QStringLiteral("Password"));
    m_password->setEchoMode(QLineEdit::Password);
    m_password->setMaxLength(1024);

    auto* form = new QFormLayout;
    QLabel* name = shownText(file.fileName(), this);
    name->setAccessibleName(QStringLiteral("Document"));
    form->addRow(QStringLiteral("Document:"), name);
    QLabel* folder = shownText(QDir::toNativeSeparators(file.absolutePath()), this);
    folder->setAccessibleName(QStringLiteral("Folder"));
    form->addRow(QStringLiteral("Folder:"), folder);
    form->addRow(QStringLiteral("SHA-256:"), m_sha256);
    form->addRow(QStringLiteral("&Meaning:"), m_meaning);
    form->addRow(QStringLiteral("&User name:"), m_userName);
    form->addRow(QStringLiteral("&Password:"), m_password);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setAccessibleName(QStringLiteral("Sign document buttons"));
    Dialogs::nameButtons(*buttons);
    m_ok = buttons->button(QDialogButtonBox::Ok);
    connect(m_password, &QLineEdit::textChanged, this, &SignDocumentDialog::updateOk);
    connect(m_userName, &QLineEdit::textChanged, this, &SignDocumentDialog::updateOk);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    (userName.isEmpty() ? m_userName : m_password)->setFocus();
    updateOk();
}

void SignDocumentDialog::setFingerprint(const std::optional<DocumentFingerprint>& fingerprint)
{
    m_fingerprint = fingerprint;
    const QString hex = fingerprint ? QString::fromLatin1(fingerprint->sha256.toHex()) : QString();
    m_sha256->setText(fingerprint ? hex.left(ShownDigits) + QStringLiteral("...")
                                  : QStringLiteral("The document cannot be read."));
    m_sha256->setToolTip(hex);
    updateOk();
}

void SignDocumentDialog::updateOk()
{
    m_ok->setEnabled(m_fingerprint.has_value() && !m_userName->text().trimmed().isEmpty() &&
                     !m_password->text().isEmpty());
}

QString SignDocumentDialog::meaning() const
{
    return m_meaning->currentText();
}

QString SignDocumentDialog::userName() const
{
    return m_userName->text().trimmed();
}

SecretBytes SignDocumentDialog::takePassword()
{
    QString text = m_password->text();
    m_password->clear();
    return SecretBytes::fromString(text);
}

} // namespace nebra
