#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

class QSqlQuery;

namespace nebra {

class AuditChainHead;
class RowSeals;
class SecurityDatabase;
class SiteKey;
class StoreState;

// Brings a security database of the previous schema up to date when it is
// first opened: roles get their MAC, every row whose MAC of the previous
// kind holds is sealed anew (one that does not stays unsealed, as altered),
// and the store's record of itself is made from the trail as it stands.
// Refused, with nothing changed, while the chain head does not seal the
// trail's entries: what was cut off stays for the administrator to find.
class StoreUpgrade
{
public:
    StoreUpgrade(SecurityDatabase& database, const SiteKey& key, AuditChainHead& head, StoreState& state,
                 RowSeals& seals);

    bool run(QString* error);

private:
    struct Kind
    {
        int keys; // the first columns, which name the row
        QString select;
        QString update;
        std::function<QByteArray(const QSqlQuery&)> old; // empty: the row had no MAC
        std::function<QByteArray(const QSqlQuery&)> fresh;
    };
    QList<Kind> kinds() const;
    bool headHolds(qint64* entries, QByteArray* newestMac, QString* error) const;
    // Each row of the previous schema: its new MAC when its old one holds, else empty.
    bool sealRows(QString* error);

    SecurityDatabase& m_database;
    const SiteKey& m_key;
    AuditChainHead& m_head;
    StoreState& m_state;
    RowSeals& m_seals;
};

} // namespace nebra
