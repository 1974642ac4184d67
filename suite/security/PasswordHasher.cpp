#include "PasswordHasher.h"

#include "SecretBytes.h"
#include "SiteKey.h"

#include <sodium.h>

namespace nebra {

PasswordHasher::PasswordHasher(PasswordHashCost cost) : m_cost(cost)
{
    ensureSodium();
    m_cost.memoryMiB = qMax(m_cost.memoryMiB, PasswordHashCost::MinimumMemoryMiB);
    m_cost.passes = qMax(m_cost.passes, PasswordHashCost::MinimumPasses);
}

unsigned long long PasswordHasher::opsLimit() const
{
    return static_cast<unsigned long long>(m_cost.passes);
}

size_t PasswordHasher::memLimit() const
{
    return size_t(m_cost.memoryMiB) * 1024u * 1024u;
}

QByteArray PasswordHasher::hash(const SecretBytes& password) const
{
    char out[crypto_pwhash_STRBYTES] = {};
    if (crypto_pwhash_str_alg(out, password.data(), static_cast<unsigned long long>(password.size()),
                              opsLimit(), memLimit(), crypto_pwhash_ALG_ARGON2ID13) != 0)
        return {};
    return QByteArray(out);
}

bool PasswordHasher::verify(const QByteArray& storedHash, const SecretBytes& password) const
{
    // The stored text is handed to C code that reads up to its terminating
    // NUL; QByteArray guarantees one, and an over-long text cannot be ours.
    if (storedHash.isEmpty() || storedHash.size() >= crypto_pwhash_STRBYTES)
        return false;
    return crypto_pwhash_str_verify(storedHash.constData(), password.data(),
                                    static_cast<unsigned long long>(password.size())) == 0;
}

bool PasswordHasher::needsRehash(const QByteArray& storedHash) const
{
    if (storedHash.isEmpty() || storedHash.size() >= crypto_pwhash_STRBYTES)
        return true;
    return crypto_pwhash_str_needs_rehash(storedHash.constData(), opsLimit(), memLimit()) != 0;
}

void PasswordHasher::prepareDummy() const
{
    if (!m_dummyHash.isEmpty())
        return;
    unsigned char random[32];
    randombytes_buf(random, sizeof random);
    const SecretBytes unused(QByteArray(reinterpret_cast<const char*>(random), sizeof random).toBase64());
    sodium_memzero(random, sizeof random);
    m_dummyHash = hash(unused);
}

QByteArray PasswordHasher::derive(const QByteArray& text, const QByteArray& salt) const
{
    unsigned char out[16] = {};
    if (salt.size() != crypto_pwhash_SALTBYTES ||
        crypto_pwhash(out, sizeof out, text.constData(), static_cast<unsigned long long>(text.size()),
                      reinterpret_cast<const unsigned char*>(salt.constData()), opsLimit(), memLimit(),
                      crypto_pwhash_ALG_ARGON2ID13) != 0)
        return {};
    return QByteArray(reinterpret_cast<const char*>(out), sizeof out);
}

void PasswordHasher::verifyDummy(const SecretBytes& password) const
{
    prepareDummy();
    verify(m_dummyHash, password);
}

} // namespace nebra
