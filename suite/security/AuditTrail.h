#pragma once

#include "AuditChainHead.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace nebra {

class SecurityDatabase;
class SiteKey;
class StoreState;

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
    QByteArray newestMac; // of entry entryCount, when ok
};

// What one audit entry says; the trail adds the sequence, time, workstation and MAC.
struct AuditRecord
{
    QString userName;
    QString area;
    QString text;
};

// A point of the chain (entry count and that entry's MAC) that the
// administrator keeps outside this computer: "COUNT:MAC" in hexadecimal.
struct AuditAnchor
{
    qint64 count = 0;
    QByteArray mac;

    QString toString() const;
    static std::optional<AuditAnchor> parse(const QString& text);
};

// The tamper-evident audit trail. Each entry carries a keyed MAC (site key)
// over its own fields and the MAC of the entry before it, so an entry that
// is edited, deleted, moved or slipped in breaks the chain at that point;
// the database's sealed record of itself (StoreState) and the chain head
// outside the database catch newest entries cut off, also when an older
// copy of the head is written back. No entry is added to a trail that has
// lost entries those know of: the loss stays visible instead of being
// chained over. Every write transaction moves the store's record and the
// head on by one change.
class AuditTrail
{
public:
    AuditTrail(SecurityDatabase& database, const SiteKey& key, AuditChainHead& head, StoreState& state);

    // Records an entry. When this returns with a sequence number the entry is
    // committed to the disk; the chain head is advanced just after.
    // With change, the change runs in the entry's own transaction: both are
    // committed, or neither.
    AuditAppendResult append(const QString& userName, const QString& area, const QString& text,
                             const std::function<bool(QString*)>& change = {});
    // Runs work in one write transaction: it makes its changes and lists the
    // entries that record them (in order); all are committed together or
    // nothing is. Refused while the trail does not extend its chain head.
    AuditAppendResult record(const std::function<bool(QList<AuditRecord>*, QString*)>& work);

    // Visits the entries in order, from one read snapshot; stops when visit returns false.
    bool forEachEntry(const std::function<bool(const AuditEntry&)>& visit, QString* error) const;
    QList<AuditEntry> entries(QString* error) const;

    // Checks every entry's MAC, the order and gaplessness of the sequence,
    // that no entry the chain head or the store's record knows of is gone,
    // and that the head is not an older copy.
    // With an anchor, also that the trail still holds the anchored entry.
    AuditVerification verify(const std::optional<AuditAnchor>& anchor = {}) const;

    // False, with *error set, when the chain head file is missing, altered or
    // an older copy, the database no longer holds the entry it seals, or the
    // store's record of itself is altered or does not match the trail.
    bool checkHead(QString* error) const;
    // Records the administrator's entry and seals the chain head afresh at it
    // (see AuditChainHead::reset), even after entries were cut off.
    bool resealHead(const QString& actor, const QString& area, const QString& text, QString* error);
    // The head of an empty trail; written when the database is created.
    bool initialiseHead(QString* error);

    static QString workstationName();

private:
    QByteArray entryMessage(const AuditEntry& entry, const QByteArray& previousMac) const;
    QByteArray genesisMac() const;
    bool newest(qint64* sequence, QByteArray* mac, QString* error) const;
    AuditVerification verifyChain(const AuditChainHead::Record& head,
                                  const std::optional<AuditAnchor>& anchor, qint64* count) const;
    bool extendsHead(qint64 newestSequence, const QByteArray& newestMac, const AuditChainHead::Record& head,
                     QString* error) const;
    // The head as read, the trail extending it and the store's record agreeing with both.
    bool agrees(qint64 newestSequence, const QByteArray& newestMac, QString* error) const;
    // Inserts the entries after the newest one; sets *last to the newest inserted.
    bool insert(const QList<AuditRecord>& records, AuditEntry* last, QString* error);
    AuditAppendResult commit(const std::function<bool(QList<AuditRecord>*, QString*)>& work, bool overHead);

    SecurityDatabase& m_database;
    const SiteKey& m_key;
    AuditChainHead& m_head;
    StoreState& m_state;
};

} // namespace nebra
