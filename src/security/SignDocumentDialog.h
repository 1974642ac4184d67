#pragma once

#include "DocumentRecord.h"

#include <QDialog>

#include <optional>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace nebra {

class SecretBytes;

// Asks a signer for a signature's meaning, the user name and the password,
// showing the document's name, its folder and the start of the SHA-256 it
// signs. OK stays disabled until the fingerprint has been read
// (setFingerprint, from a reader off the window's thread) and a password
// is typed. At the session's first signing the user name is typed; after
// it the name is filled in and read-only.
class SignDocumentDialog : public QDialog
{
    Q_OBJECT
public:
    // userName: the session's user once they have signed, else empty (typed).
    SignDocumentDialog(const QString& document, const QStringList& meanings, const QString& userName,
                       QWidget* owner);

    // The document's content as read when the dialog opened; none: it could not be read.
    void setFingerprint(const std::optional<DocumentFingerprint>& fingerprint);
    const std::optional<DocumentFingerprint>& fingerprint() const { return m_fingerprint; }

    QString meaning() const;
    QString userName() const;
    SecretBytes takePassword();

    // How many hex digits of the SHA-256 the dialog shows.
    static constexpr int ShownDigits = 16;

private:
    void updateOk();

    std::optional<DocumentFingerprint> m_fingerprint;
    QLabel* m_sha256;
    QComboBox* m_meaning;
    QLineEdit* m_userName;
    QLineEdit* m_password;
    QPushButton* m_ok = nullptr;
};

} // namespace nebra
