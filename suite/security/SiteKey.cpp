#include "SiteKey.h"

#include "SecureFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <sodium.h>

namespace nebra {

static_assert(SiteKey::Size == crypto_auth_KEYBYTES);
static_assert(SiteKey::MacSize == crypto_auth_BYTES);

bool ensureSodium()
{
    static const bool ready = sodium_init() >= 0;
    return ready;
}

SiteKey::~SiteKey()
{
    sodium_memzero(m_key.data(), m_key.size());
}

std::optional<SiteKey> SiteKey::load(const QString& path, QString* error)
{
    const QString shown = QDir::toNativeSeparators(path);
    if (!ensureSodium()) {
        *error = QStringLiteral("The cryptographic library cannot be initialised.");
        return std::nullopt;
    }
    QFile file(path);
    if (!file.exists()) {
        *error = QStringLiteral("The site key file \"%1\" does not exist.").arg(shown);
        return std::nullopt;
    }
    if (const QString exposed = SecureFiles::exposure(path, QStringLiteral("site key file"));
        !exposed.isEmpty()) {
        *error = exposed;
        return std::nullopt;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        *error =
            QStringLiteral("The site key file \"%1\" cannot be read (%2).").arg(shown, file.errorString());
        return std::nullopt;
    }
    QByteArray text = file.read(4 * Size).trimmed();
    SiteKey key;
    size_t length = 0;
    const bool ok = text.size() == 2 * Size &&
                    sodium_hex2bin(key.m_key.data(), key.m_key.size(), text.constData(), size_t(text.size()),
                                   nullptr, &length, nullptr) == 0 &&
                    length == size_t(Size);
    sodium_memzero(text.data(), size_t(text.size()));
    if (!ok) {
        *error = QStringLiteral("The file \"%1\" is not a site key file.").arg(shown);
        return std::nullopt;
    }
    return key;
}

bool SiteKey::create(const QString& path, QString* error)
{
    const QString shown = QDir::toNativeSeparators(path);
    if (!ensureSodium()) {
        *error = QStringLiteral("The cryptographic library cannot be initialised.");
        return false;
    }
    if (QFileInfo::exists(path)) {
        *error =
            QStringLiteral("The site key file \"%1\" already exists; it has not been replaced.").arg(shown);
        return false;
    }
    QDir().mkpath(QFileInfo(path).absolutePath());
    std::array<unsigned char, Size> key{};
    crypto_auth_keygen(key.data());
    QByteArray hex(2 * Size + 1, '\0');
    sodium_bin2hex(hex.data(), size_t(hex.size()), key.data(), key.size());
    sodium_memzero(key.data(), key.size());
    hex[2 * Size] = '\n';
    QSaveFile file(path);
    const bool ok =
        file.open(QIODevice::WriteOnly) &&
        file.setPermissions(SecureFiles::keyMode(path) == 0640
                                ? QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup
                                : QFileDevice::ReadOwner | QFileDevice::WriteOwner) &&
        file.write(hex) == hex.size() && file.commit();
    sodium_memzero(hex.data(), size_t(hex.size()));
    if (!ok)
        *error =
            QStringLiteral("The site key file \"%1\" cannot be written (%2).").arg(shown, file.errorString());
    return ok;
}

QByteArray SiteKey::mac(const QByteArray& message) const
{
    QByteArray out(MacSize, '\0');
    crypto_auth(reinterpret_cast<unsigned char*>(out.data()),
                reinterpret_cast<const unsigned char*>(message.constData()),
                static_cast<unsigned long long>(message.size()), m_key.data());
    return out;
}

bool SiteKey::verify(const QByteArray& mac, const QByteArray& message) const
{
    return mac.size() == MacSize &&
           crypto_auth_verify(reinterpret_cast<const unsigned char*>(mac.constData()),
                              reinterpret_cast<const unsigned char*>(message.constData()),
                              static_cast<unsigned long long>(message.size()), m_key.data()) == 0;
}

} // namespace nebra

namespace nebra {

bool SiteKey::sameMac(const QByteArray& a, const QByteArray& b)
{
    return a.size() == MacSize && b.size() == MacSize &&
           sodium_memcmp(a.constData(), b.constData(), MacSize) == 0;
}

} // namespace nebra
