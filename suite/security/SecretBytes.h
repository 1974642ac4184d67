#pragma once

#include <QByteArray>
#include <QString>

namespace nebra {

// A password or other secret as UTF-8 bytes, overwritten with zeros when it
// goes away. Move-only, so that no second copy is left behind by accident.
//
// Clearing memory is best effort: the text fields a password is typed into
// and QString's own buffers may still hold copies that Qt does not let us
// wipe; this class keeps the copies we make short-lived.
class SecretBytes
{
public:
    SecretBytes() = default;
    explicit SecretBytes(QByteArray bytes);
    ~SecretBytes();
    SecretBytes(SecretBytes&& other) noexcept;
    SecretBytes& operator=(SecretBytes&& other) noexcept;
    SecretBytes(const SecretBytes&) = delete;
    SecretBytes& operator=(const SecretBytes&) = delete;

    // Takes the text as UTF-8 and overwrites the characters of the string.
    static SecretBytes fromString(QString& text);

    const char* data() const { return m_bytes.constData(); }
    qsizetype size() const { return m_bytes.size(); }
    bool isEmpty() const { return m_bytes.isEmpty(); }

    // Number of characters (UTF-16 code units) of the secret as text.
    qsizetype characterCount() const;
    // Case-insensitive comparison of the secret as text with a plain text.
    bool equalsIgnoringCase(const QString& text) const;
    bool operator==(const SecretBytes& other) const;

    void wipe();

private:
    QByteArray m_bytes;
};

} // namespace nebra
