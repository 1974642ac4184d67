#pragma once

#include <QByteArray>
#include <QString>

namespace nebra {

class SiteKey;

// The newest audit entry as last recorded, kept in a small file outside the
// database: the number of entries, the MAC of the newest one and the number
// of changes the database had committed then (see StoreState), sealed with
// the site key. The database may be one change ahead of the head (the head
// is written just after each commit, and a process may end in between),
// never behind it: behind means entries were cut off or the database was
// rolled back; further ahead means the head is an older copy.
//
//   nebra-audit-head 2
//   count=<n>
//   mac=<hex>
//   changes=<n>
//   seal=<hex>
//
// padded with line feeds to a fixed size. A head of format 1 (without the
// changes) still reads, as changes -1, until it is next written.
class AuditChainHead
{
public:
    struct Record
    {
        qint64 count = 0;
        QByteArray mac;      // empty while count is 0
        qint64 changes = -1; // -1: not recorded (a head of format 1)
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
    // with other writers, synced before it returns) when it records more
    // changes than the one on disk. Refuses, with *error set, when the file on disk is
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
