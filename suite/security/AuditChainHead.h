#pragma once

#include <QByteArray>
#include <QString>

namespace nebra {

class SiteKey;

// The newest audit entry as last recorded, kept in a small file outside the
// database: the number of entries and the MAC of the newest one, sealed with
// the site key. The database may hold more entries than the head says (the
// head is written just after each commit, and a process may end in
// between), never fewer: fewer means the newest entries were cut off.
//
//   nebra-audit-head 1
//   count=<n>
//   mac=<hex>
//   seal=<hex>
//
// padded with line feeds to a fixed size.
class AuditChainHead
{
public:
    struct Record
    {
        qint64 count = 0;
        QByteArray mac; // empty while count is 0
    };

    enum class ReadStatus
    {
        Ok,
        Missing,
        Invalid
    };

    AuditChainHead(QString path, const SiteKey& key, QByteArray databaseId);

    QString path() const { return m_path; }

    ReadStatus read(Record* record, QString* error) const;

    // Writes the record over the one in the file (under a lock file shared
    // with other writers, synced before it returns) when it is newer than
    // the one on disk. Refuses, with *error set, when the file on disk is
    // missing or altered.
    bool advance(const Record& record, QString* error);
    // Replaces the file (atomically) with the record, unconditionally: when
    // the database is created, and when an administrator re-seals the head
    // after looking into a problem.
    bool reset(const Record& record, QString* error);

private:
    QByteArray sealedMessage(const Record& record) const;
    QByteArray recordText(const Record& record) const;
    QString cannotWrite(const QString& reason) const;
    bool write(const Record& record, QString* error);
    bool overwrite(const Record& record, QString* error);

    QString m_path;
    const SiteKey& m_key;
    QByteArray m_databaseId;
};

} // namespace nebra
