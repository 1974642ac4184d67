#pragma once

#include "SecuritySettings.h"

#include <QByteArray>

namespace nebra {

class SecretBytes;

// Argon2id password hashes in libsodium's self-describing string form
// ("$argon2id$v=19$m=...,t=...,p=1$salt$hash"). The cost is fixed when the
// hasher is made; hashes made at a lower cost are reported by needsRehash()
// so that a log-in can upgrade them.
class PasswordHasher
{
public:
    explicit PasswordHasher(PasswordHashCost cost);

    PasswordHashCost cost() const { return m_cost; }

    // A new salted hash; empty when the memory for it cannot be had.
    QByteArray hash(const SecretBytes& password) const;
    bool verify(const QByteArray& storedHash, const SecretBytes& password) const;
    bool needsRehash(const QByteArray& storedHash) const;

    // Spends the time of one verify() against a hash of no real password, so
    // that an unknown user name takes as long to refuse as a wrong password.
    void verifyDummy(const SecretBytes& password) const;
    // Makes the dummy hash now, so that its making is not timed with the first refusal.
    void prepareDummy() const;

    // Argon2id of text with the salt given (16 bytes), at the hasher's cost:
    // the same for the same text and salt, and as slow to guess as a
    // password. 16 bytes; empty when the memory for it cannot be had.
    QByteArray derive(const QByteArray& text, const QByteArray& salt) const;

private:
    unsigned long long opsLimit() const;
    size_t memLimit() const;

    PasswordHashCost m_cost;
    mutable QByteArray m_dummyHash;
};

} // namespace nebra
