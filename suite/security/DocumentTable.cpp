#include "DocumentTable.h"

#include "AuditTrail.h"
#include "MacMessage.h"
#include "SecurityDatabase.h"
#include "SiteKey.h"
#include "StoreState.h"

#include <QSqlQuery>
#include <QVariant>

namespace nebra {

namespace {

const QString Columns = QStringLiteral("path, sha256, size, modified, event, seq, changes, mac");

// The path(s) an entry of the area names: the one it recorded, and for a
// rename the one it left. Empty for a text that is not a document entry.
QStringList pathsOf(const QString& text)
{
    static const QStringList fingerprinted = {QStringLiteral("Document recorded: "),
                                              QStringLiteral("Document changed: "),
                                              QStringLiteral("Document changed outside the suite: "),
                                              QStringLiteral("Document changed while nothing recorded it: "),
                                              QStringLiteral("Document change accepted: ")};
    for (const QString& prefix : fingerprinted)
        if (text.startsWith(prefix)) {
            const qsizetype end = text.indexOf(QLatin1String(" sha256="), prefix.size());
            return {text.mid(prefix.size(), end - prefix.size())};
        }
    static const QString removed = QStringLiteral("Document removed: ");
    if (text.startsWith(removed))
        return {text.mid(removed.size())};
    static const QString renamed = QStringLiteral("Document renamed: ");
    if (text.startsWith(renamed)) {
        const qsizetype arrow = text.indexOf(QLatin1String(" -> "), renamed.size());
        return {text.mid(arrow + 4), text.mid(renamed.size(), arrow - renamed.size())};
    }
    return {};
}

} // namespace

DocumentTable::DocumentTable(SecurityDatabase& database, const SiteKey& key, StoreState& state,
                             AuditTrail& trail)
    : m_database(database), m_key(key), m_state(state), m_trail(trail)
{
}

QByteArray DocumentTable::seal(const DocumentRecord& record, qint64 changes) const
{
    const DocumentFingerprint& f = record.fingerprint;
    return m_key.mac(MacMessage("nebra-document-v1")
                         .add(m_database.databaseId())
                         .add(changes)
                         .add(record.sequence)
                         .add(f.path)
                         .add(f.sha256)
                         .add(f.size)
                         .add(f.modifiedMs)
                         .add(DocumentEntries::eventName(record.event))
                         .bytes());
}

qint64 DocumentTable::record(const QString& userName, const DocumentChange& change, QString* error)
{
    return record(userName, QList<DocumentChange>{change}, error).value(0);
}

QList<qint64> DocumentTable::record(const QString& userName, const QList<DocumentChange>& changes,
                                    QString* error)
{
    const QString area = QString::fromLatin1(DocumentEntries::Area);
    // Inside the entries' transaction, before them: they will follow the
    // store's newest, committed as the store's next change.
    const AuditAppendResult result = m_trail.record([&](QList<AuditRecord>* records, QString* why) {
        StoreState::Record state;
        if (!m_state.read(&state, why))
            return false;
        for (const DocumentChange& change : changes) {
            if (!writeRow(change, state.entries + 1 + records->size(), state.changes + 1, why))
                return false;
            records->append({userName, area, DocumentEntries::text(change, userName)});
        }
        return true;
    });
    QList<qint64> sequences;
    if (result.sequence == 0)
        *error = result.error;
    else
        for (qint64 s = result.sequence - changes.size() + 1; s <= result.sequence; ++s)
            sequences.append(s);
    return sequences;
}

bool DocumentTable::writeRow(const DocumentChange& change, qint64 sequence, qint64 changes, QString* error)
{
    const DocumentRecord row{change.fingerprint, change.event, sequence, true};
    QSqlQuery q = m_database.newQuery();
    if (change.event == DocumentEvent::Renamed &&
        !m_database.exec(q, QStringLiteral("DELETE FROM document_records WHERE path = ?"),
                         {change.previousPath}, error))
        return false;
    const DocumentFingerprint& f = row.fingerprint;
    return m_database.exec(
        q,
        QStringLiteral("INSERT OR REPLACE INTO document_records(%1) VALUES(?, ?, ?, ?, ?, ?, ?, ?)")
            .arg(Columns),
        {f.path, f.sha256.isNull() ? QByteArray("") : f.sha256, f.size, f.modifiedMs,
         DocumentEntries::eventName(row.event), row.sequence, changes, seal(row, changes)},
        error);
}

bool DocumentTable::read(QHash<QString, DocumentRecord>* records, QString* error) const
{
    QSqlQuery q = m_database.newQuery();
    if (!m_database.exec(q, QStringLiteral("SELECT %1 FROM document_records").arg(Columns), {}, error))
        return false;
    records->clear();
    while (q.next()) {
        DocumentRecord row = DocumentEntries::recordFrom([&q](int column) { return q.value(column); });
        row.intact =
            row.intact && SiteKey::sameMac(q.value(7).toByteArray(), seal(row, q.value(6).toLongLong()));
        records->insert(row.fingerprint.path, row);
    }
    return true;
}

QStringList DocumentTable::alteredRows(QString* error) const
{
    QHash<QString, qint64> newest; // path -> the entry that last recorded it
    const bool read = m_trail.forEachEntry(
        [&](const AuditEntry& entry) {
            if (entry.area != QLatin1String(DocumentEntries::Area))
                return true;
            const QStringList paths = pathsOf(entry.text);
            if (!paths.isEmpty())
                newest.insert(paths.first(), entry.sequence);
            if (paths.size() > 1)
                newest.remove(paths.at(1));
            return true;
        },
        error);
    QHash<QString, DocumentRecord> rows;
    if (!read || !this->read(&rows, error))
        return {};
    QStringList found;
    for (const DocumentRecord& row : std::as_const(rows)) {
        const QString& path = row.fingerprint.path;
        if (!row.intact)
            found.append(QStringLiteral("The record of document \"%1\" has been changed outside the suite.")
                             .arg(path));
        else if (newest.value(path) != row.sequence)
            found.append(QStringLiteral("The record of document \"%1\" is not its newest entry in the audit "
                                        "trail (entry %2): it has been written back or slipped in.")
                             .arg(path)
                             .arg(newest.value(path)));
    }
    for (auto it = newest.cbegin(); it != newest.cend(); ++it)
        if (!rows.contains(it.key()))
            found.append(
                QStringLiteral("The record of document \"%1\" has been removed (entry %2 recorded it).")
                    .arg(it.key())
                    .arg(it.value()));
    found.sort();
    return found;
}

} // namespace nebra
