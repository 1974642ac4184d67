#pragma once

#include "AuditChainHead.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

namespace nebra {

class SecurityDatabase;
class SiteKey;

struct AuditEntry
{
    qint64 sequence = 0; // 1, 2, 3, ... without gaps
    QString utc;         // ISO 8601 with milliseconds, "Z"
    QString userName;
    QString workstation; // host name
    QString area;
    QString text;
    QByteArray mac; // over the fields above and the previous entry's MAC
};

struct AuditAppendResult
{
    qint64 sequence = 0; // above 0: the entry is committed
    QString error;       // empty on full success; may be set with a committed entry
};

struct AuditVerification
{
    bool ok = true;
    qint64 entryCount = 0;
    qint64 firstBadSequence = 0; // 0 when no single entry is to blame
    QString message;
};

// The tamper-evident audit trail. Each entry carries a keyed MAC (site key)
// over its own fields and the MAC of the entry before it, so an entry that
// is edited, deleted, moved or slipped in breaks the chain at that point;
// the chain head outside the database catches newest entries cut off.
class AuditTrail
{
public:
    AuditTrail(SecurityDatabase& database, const SiteKey& key, const QString& headPath);

    // Records an entry. When this returns with a sequence number the entry is
    // committed to the disk; the chain head is advanced just after.
    AuditAppendResult append(const QString& userName, const QString& area, const QString& text);

    // Visits the entries in order, from one read snapshot; stops when visit returns false.
    bool forEachEntry(const std::function<bool(const AuditEntry&)>& visit, QString* error) const;
    QList<AuditEntry> entries(QString* error) const;

    // Checks every entry's MAC, the order and gaplessness of the sequence,
    // and that no entry the chain head knows of is gone.
    AuditVerification verify() const;

    // False, with *error set, when the chain head file is missing or altered.
    bool checkHead(QString* error) const;
    // Seals the chain head afresh at the newest entry (see AuditChainHead::reset).
    bool resealHead(QString* error);
    // The head of an empty trail; written when the database is created.
    bool initialiseHead(QString* error);

    static QString workstationName();

private:
    QByteArray entryMessage(const AuditEntry& entry, const QByteArray& previousMac) const;
    QByteArray genesisMac() const;
    bool newest(qint64* sequence, QByteArray* mac, QString* error) const;
    AuditVerification verifyChain(const AuditChainHead::Record& head, qint64* count) const;

    SecurityDatabase& m_database;
    const SiteKey& m_key;
    AuditChainHead m_head;
};

} // namespace nebra
