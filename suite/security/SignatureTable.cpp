#include "SignatureTable.h"

#include "AuditTrail.h"
#include "MacMessage.h"
#include "SecurityDatabase.h"
#include "SiteKey.h"
#include "StoreState.h"

#include <QDateTime>
#include <QSet>
#include <QSqlQuery>
#include <QVariant>

namespace nebra {

namespace {

// The row and, beside it, what its entry says (NULL when the entry is gone).
const QString Select =
    QStringLiteral("SELECT s.seq, s.path, s.sha256, s.meaning, s.user_name, s.full_name, s.signed, s.mac, "
                   "a.area, a.text, a.user_name, a.utc FROM document_signatures s "
                   "LEFT JOIN audit_trail a ON a.seq = s.seq %1 ORDER BY s.seq");

} // namespace

SignatureTable::SignatureTable(SecurityDatabase& database, const SiteKey& key, StoreState& state,
                               AuditTrail& trail)
    : m_database(database), m_key(key), m_state(state), m_trail(trail)
{
}

QByteArray SignatureTable::seal(const DocumentSignature& s) const
{
    return m_key.mac(MacMessage("nebra-signature-v1")
                         .add(m_database.databaseId())
                         .add(s.sequence)
                         .add(s.path)
                         .add(s.sha256)
                         .add(s.meaning)
                         .add(s.userName)
                         .add(s.fullName)
                         .add(s.signedMs)
                         .bytes());
}

SignResult SignatureTable::record(const DocumentSignature& signature)
{
    SignResult result;
    result.signature = signature;
    DocumentSignature& row = result.signature;
    const AuditAppendResult appended = m_trail.record([&](QList<AuditRecord>* records, QString* why) {
        // The entry will follow the store's newest one, in this transaction.
        StoreState::Record state;
        if (!m_state.read(&state, why))
            return false;
        row.sequence = state.entries + 1;
        row.signedMs = QDateTime::currentMSecsSinceEpoch();
        QSqlQuery q = m_database.newQuery();
        if (!m_database.exec(
                q,
                QStringLiteral("INSERT INTO document_signatures(seq, path, sha256, meaning, "
                               "user_name, full_name, signed, mac) VALUES(?, ?, ?, ?, ?, ?, ?, ?)"),
                {row.sequence, row.path, row.sha256, row.meaning, row.userName, row.fullName, row.signedMs,
                 seal(row)},
                why))
            return false;
        records->append(
            {row.userName, QString::fromLatin1(SignatureEntries::Area), SignatureEntries::text(row)});
        return true;
    });
    if (appended.sequence == 0 || appended.sequence != row.sequence) {
        result.error = appended.error.isEmpty() ? QStringLiteral("The signature could not be recorded.")
                                                : appended.error;
        return result;
    }
    result.sequence = appended.sequence;
    // As read from now on: at the time of its entry.
    QList<DocumentSignature> recorded;
    QString ignored;
    if (select(
            QStringLiteral("WHERE s.seq = ?"), {row.sequence},
            [&recorded](const DocumentSignature& s) { recorded.append(s); }, &ignored) &&
        !recorded.isEmpty())
        row = recorded.first();
    return result;
}

bool SignatureTable::select(const QString& where, const QVariantList& values,
                            const std::function<void(const DocumentSignature&)>& visit, QString* error) const
{
    QSqlQuery q = m_database.newQuery();
    if (!m_database.exec(q, Select.arg(where), values, error))
        return false;
    while (q.next()) {
        DocumentSignature s{
            q.value(1).toString(), q.value(2).toByteArray(), q.value(3).toString(),   q.value(4).toString(),
            q.value(5).toString(), q.value(6).toLongLong(),  q.value(0).toLongLong(), true};
        // The entry is the evidence; the row must say what it says, by the same user.
        s.intact = SiteKey::sameMac(q.value(7).toByteArray(), seal(s)) &&
                   q.value(8).toString() == QLatin1String(SignatureEntries::Area) &&
                   q.value(9).toString() == SignatureEntries::text(s) && q.value(10).toString() == s.userName;
        // Shown at the time its entry shows, to the millisecond.
        const QDateTime entryTime = QDateTime::fromString(q.value(11).toString(), Qt::ISODateWithMs);
        if (entryTime.isValid())
            s.signedMs = entryTime.toMSecsSinceEpoch();
        visit(s);
    }
    return true;
}

bool SignatureTable::read(const QString& path, QList<DocumentSignature>* signatures, QString* error) const
{
    signatures->clear();
    return select(
        QStringLiteral("WHERE s.path = ?"), {path},
        [signatures](const DocumentSignature& s) { signatures->append(s); }, error);
}

bool SignatureTable::read(QHash<QString, QList<DocumentSignature>>* signatures, QString* error) const
{
    signatures->clear();
    return select(
        {}, {}, [signatures](const DocumentSignature& s) { (*signatures)[s.path].append(s); }, error);
}

QStringList SignatureTable::alteredRows(QString* error) const
{
    QStringList found;
    QSet<qint64> rows;
    const bool selected = select(
        {}, {},
        [&](const DocumentSignature& s) {
            rows.insert(s.sequence);
            if (!s.intact)
                found.append(SignatureEntries::alteredText(s));
        },
        error);
    if (!selected)
        return {};
    const bool walked = m_trail.forEachEntry(
        [&](const AuditEntry& entry) {
            if (entry.area == QLatin1String(SignatureEntries::Area) && !rows.contains(entry.sequence))
                found.append(SignatureEntries::removedText(entry.sequence));
            return true;
        },
        error);
    return walked ? found : QStringList();
}

} // namespace nebra
