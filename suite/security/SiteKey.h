#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <optional>

namespace nebra {

// The site's secret key for the audit trail's message authentication codes,
// kept in a file of its own outside the security database: one line of 64
// hexadecimal digits. Whoever can read the database but not this file cannot
// forge, edit or re-chain audit entries unnoticed.
class SiteKey
{
public:
    static constexpr int Size = 32;
    static constexpr int MacSize = 32;

    ~SiteKey();
    SiteKey(const SiteKey& other) = default;
    SiteKey& operator=(const SiteKey& other) = default;

    // Reads the key file; nothing and *error set when it is missing,
    // unreadable, readable by every user, or not a key file.
    static std::optional<SiteKey> load(const QString& path, QString* error);

    // Writes a new random key file readable by its owner only (and by the
    // site group in a shared folder, see SecureFiles). Refuses to replace an
    // existing file.
    static bool create(const QString& path, QString* error);

    // Keyed MAC (HMAC-SHA-512-256) of a message, MacSize bytes.
    QByteArray mac(const QByteArray& message) const;
    // Compares in constant time.
    bool verify(const QByteArray& mac, const QByteArray& message) const;
    // Compares two MACs in constant time.
    static bool sameMac(const QByteArray& a, const QByteArray& b);

private:
    SiteKey() = default;

    std::array<unsigned char, Size> m_key{};
};

// Initialises libsodium once; false when the library cannot be used.
bool ensureSodium();

} // namespace nebra
