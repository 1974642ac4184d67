#include "AuditTrail.h"

#include "SecurityDatabase.h"
#include "SiteKey.h"
#include "StoreState.h"

#include <QDateTime>
#include <QSqlQuery>
#include <QSysInfo>
#include <QtEndian>

namespace nebra {

namespace {

void appendNumber(QByteArray& out, qint64 value)
{
    char bytes[8];
    qToBigEndian<qint64>(value, bytes);
    out.append(bytes, sizeof bytes);
}

// Each text field is written with its length first, so that no two
// different entries can produce the same message.
void appendText(QByteArray& out, const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    char length[4];
    qToBigEndian<quint32>(quint32(utf8.size()), length);
    out.append(length, sizeof length);
    out.append(utf8);
}

AuditEntry entryFrom(const QSqlQuery& q)
{
    return {q.value(0).toLongLong(), q.value(1).toString(), q.value(2).toString(),   q.value(3).toString(),
            q.value(4).toString(),   q.value(5).toString(), q.value(6).toByteArray()};
}

} // namespace

AuditTrail::AuditTrail(SecurityDatabase& database, const SiteKey& key, AuditChainHead& head,
                       StoreState& state)
    : m_database(database), m_key(key), m_head(head), m_state(state)
{
}

QString AuditTrail::workstationName()
{
    return QSysInfo::machineHostName();
}

QByteArray AuditTrail::genesisMac() const
{
    return m_key.mac(QByteArrayLiteral("nebra-audit-genesis-v1") + m_database.databaseId());
}

QByteArray AuditTrail::entryMessage(const AuditEntry& entry, const QByteArray& previousMac) const
{
    QByteArray message = QByteArrayLiteral("nebra-audit-v1");
    appendNumber(message, entry.sequence);
    for (const QString* field : {&entry.utc, &entry.userName, &entry.workstation, &entry.area, &entry.text})
        appendText(message, *field);
    message.append(previousMac);
    return message;
}

bool AuditTrail::newest(qint64* sequence, QByteArray* mac, QString* error) const
{
    QSqlQuery q = m_database.newQuery();
    if (!m_database.exec(q, QStringLiteral("SELECT seq, mac FROM audit_trail ORDER BY seq DESC LIMIT 1"), {},
                         error))
        return false;
    *sequence = q.next() ? q.value(0).toLongLong() : 0;
    *mac = *sequence > 0 ? q.value(1).toByteArray() : genesisMac();
    return true;
}

QString AuditAnchor::toString() const
{
    return QString::number(count) + QLatin1Char(':') + QString::fromLatin1(mac.toHex());
}

std::optional<AuditAnchor> AuditAnchor::parse(const QString& text)
{
    const QStringList parts = text.trimmed().split(QLatin1Char(':'));
    bool ok = false;
    AuditAnchor anchor;
    if (parts.size() == 2)
        anchor.count = parts[0].toLongLong(&ok);
    anchor.mac = QByteArray::fromHex(parts.value(1).toLatin1());
    if (!ok || anchor.count < 1 || anchor.mac.size() != SiteKey::MacSize)
        return std::nullopt;
    return anchor;
}

bool AuditTrail::agrees(qint64 newestSequence, const QByteArray& newestMac, QString* error) const
{
    AuditChainHead::Record head;
    StoreState::Record state;
    if (m_head.read(&head, error) != AuditChainHead::ReadStatus::Ok ||
        !extendsHead(newestSequence, newestMac, head, error))
        return false;
    if (m_state.check(&state, head, error))
        return true;
    *error = StoreState::forUsers(*error);
    return false;
}

bool AuditTrail::extendsHead(qint64 newestSequence, const QByteArray& newestMac,
                             const AuditChainHead::Record& head, QString* error) const
{
    if (newestSequence < head.count) {
        *error =
            QStringLiteral("The audit trail ends at entry %1, but its chain head knows of %2 entries: the "
                           "newest entries have been cut off. Ask your security administrator to run "
                           "\"nebra-secadmin verify\".")
                .arg(newestSequence)
                .arg(head.count);
        return false;
    }
    if (head.count == 0)
        return true;
    QByteArray mac = newestMac;
    if (newestSequence > head.count) {
        QSqlQuery q = m_database.newQuery();
        if (!m_database.exec(q, QStringLiteral("SELECT mac FROM audit_trail WHERE seq = ?"), {head.count},
                             error))
            return false;
        mac = q.next() ? q.value(0).toByteArray() : QByteArray();
    }
    if (SiteKey::sameMac(mac, head.mac))
        return true;
    *error = QStringLiteral("Audit trail entry %1 is not the one its chain head seals: the trail has been "
                            "replaced or rolled back. Ask your security administrator to run "
                            "\"nebra-secadmin verify\".")
                 .arg(head.count);
    return false;
}

bool AuditTrail::insert(const QList<AuditRecord>& records, AuditEntry* last, QString* error)
{
    for (const AuditRecord& record : records) {
        AuditEntry entry{0,
                         QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs),
                         record.userName,
                         workstationName(),
                         record.area,
                         record.text,
                         {}};
        entry.sequence = last->sequence + 1;
        entry.mac = m_key.mac(entryMessage(entry, last->mac));
        QSqlQuery q = m_database.newQuery();
        if (!m_database.exec(q,
                             QStringLiteral("INSERT INTO audit_trail(seq, utc, user_name, workstation, area, "
                                            "text, mac) VALUES(?, ?, ?, ?, ?, ?, ?)"),
                             {entry.sequence, entry.utc, entry.userName, entry.workstation, entry.area,
                              entry.text, entry.mac},
                             error))
            return false;
        *last = entry;
    }
    return true;
}

AuditAppendResult AuditTrail::commit(const std::function<bool(QList<AuditRecord>*, QString*)>& work,
                                     bool overHead)
{
    AuditEntry last;
    StoreState::Record state;
    QString error;
    const bool committed = m_database.writeTransaction(
        [&](QString* why) {
            if (!newest(&last.sequence, &last.mac, why) ||
                (!overHead && !agrees(last.sequence, last.mac, why)))
                return false;
            QList<AuditRecord> records;
            if (!work(&records, why) || !insert(records, &last, why))
                return false;
            // The work may have moved the record on (rows changed): read it afresh.
            if (!m_state.read(&state, why))
                return false;
            ++state.changes;
            state.entries = last.sequence;
            state.newestMac = last.sequence > 0 ? last.mac : QByteArray();
            return m_state.write(state, why);
        },
        &error);
    if (!committed)
        return {0, QStringLiteral("The audit trail entry could not be recorded (%1).").arg(error)};
    if (!overHead && !m_head.advance({last.sequence, last.mac, state.changes}, &error))
        return {last.sequence, error};
    return {last.sequence, {}};
}

AuditAppendResult AuditTrail::record(const std::function<bool(QList<AuditRecord>*, QString*)>& work)
{
    return commit(work, false);
}

AuditAppendResult AuditTrail::append(const QString& userName, const QString& area, const QString& text,
                                     const std::function<bool(QString*)>& change)
{
    return commit(
        [&](QList<AuditRecord>* records, QString* why) {
            records->append({userName, area, text});
            return !change || change(why);
        },
        false);
}

bool AuditTrail::forEachEntry(const std::function<bool(const AuditEntry&)>& visit, QString* error) const
{
    return m_database.readTransaction(
        [&](QString* why) {
            QSqlQuery q = m_database.newQuery();
            q.setForwardOnly(true);
            if (!m_database.exec(q,
                                 QStringLiteral("SELECT seq, utc, user_name, workstation, area, text, mac "
                                                "FROM audit_trail ORDER BY seq"),
                                 {}, why))
                return false;
            while (q.next())
                if (!visit(entryFrom(q)))
                    break;
            return true;
        },
        error);
}

QList<AuditEntry> AuditTrail::entries(QString* error) const
{
    QList<AuditEntry> all;
    forEachEntry(
        [&](const AuditEntry& entry) {
            all.append(entry);
            return true;
        },
        error);
    return all;
}

// Walks the chain from the first entry. Sets *count to the number of
// entries found intact in order; the result is ok while nothing is wrong.
AuditVerification AuditTrail::verifyChain(const AuditChainHead::Record& head,
                                          const std::optional<AuditAnchor>& anchor, qint64* count) const
{
    AuditVerification result;
    qint64 expected = 1;
    QByteArray previousMac = genesisMac();
    auto fail = [&](qint64 sequence, const QString& message) {
        result = {false, expected - 1, sequence, message, {}};
        return false;
    };
    QString error;
    const bool read = forEachEntry(
        [&](const AuditEntry& entry) {
            if (entry.sequence != expected)
                return fail(expected,
                            expected + 1 == entry.sequence
                                ? QStringLiteral("Entry %1 is missing.").arg(expected)
                                : QStringLiteral("Entries %1 to %2 are missing.")
                                      .arg(QString::number(expected), QString::number(entry.sequence - 1)));
            if (!m_key.verify(entry.mac, entryMessage(entry, previousMac)))
                return fail(entry.sequence, QStringLiteral("Entry %1 has been altered, or entries have been "
                                                           "moved or inserted before it.")
                                                .arg(entry.sequence));
            if (entry.sequence == head.count && entry.mac != head.mac)
                return fail(
                    entry.sequence,
                    QStringLiteral("Entry %1 does not match the audit chain head.").arg(entry.sequence));
            if (anchor && entry.sequence == anchor->count && !SiteKey::sameMac(entry.mac, anchor->mac))
                return fail(
                    entry.sequence,
                    QStringLiteral("Entry %1 is not the entry of the anchor: the audit trail has been "
                                   "replaced or rolled back.")
                        .arg(entry.sequence));
            previousMac = entry.mac;
            ++expected;
            return true;
        },
        &error);
    *count = expected - 1;
    if (result.ok)
        result.newestMac = previousMac;
    if (!read)
        return {false, *count, 0, QStringLiteral("The audit trail cannot be read (%1).").arg(error), {}};
    return result;
}

AuditVerification AuditTrail::verify(const std::optional<AuditAnchor>& anchor) const
{
    // The head and the store's record are read before the entries: writers
    // only ever add entries, so neither can be ahead of the snapshot after.
    AuditChainHead::Record head;
    StoreState::Record state;
    QString error;
    if (m_head.read(&head, &error) != AuditChainHead::ReadStatus::Ok || !m_state.read(&state, &error))
        return {false, 0, 0, error, {}};
    qint64 count = 0;
    const AuditVerification chain = verifyChain(head, anchor, &count);
    if (!chain.ok)
        return chain;
    const auto missing = [&](qint64 known) -> AuditVerification {
        return {false,
                count,
                count + 1,
                count + 1 == known
                    ? QStringLiteral("Entry %1 is missing: the newest entry has been cut off.").arg(known)
                    : QStringLiteral("Entries %1 to %2 are missing: the newest entries have been cut off.")
                          .arg(QString::number(count + 1), QString::number(known)),
                {}};
    };
    if (anchor && count < anchor->count)
        return {
            false,
            count,
            count + 1,
            QStringLiteral("The audit trail ends at entry %1 and no longer reaches the anchor's entry %2: "
                           "it has been cut off or rolled back.")
                .arg(count)
                .arg(anchor->count),
            {}};
    if (count < qMax(head.count, state.entries))
        return missing(qMax(head.count, state.entries));
    StoreState::Record checked;
    if (!m_state.check(&checked, &error))
        return {false, count, 0, error, {}};
    return {true, count, 0, QStringLiteral("The audit trail holds %1 entries; all are intact.").arg(count),
            chain.newestMac};
}

bool AuditTrail::checkHead(QString* error) const
{
    return m_database.readTransaction(
        [&](QString* why) {
            qint64 sequence = 0;
            QByteArray mac;
            return newest(&sequence, &mac, why) && agrees(sequence, mac, why);
        },
        error);
}

bool AuditTrail::resealHead(const QString& actor, const QString& area, const QString& text, QString* error)
{
    const AuditAppendResult result = commit(
        [&](QList<AuditRecord>* records, QString*) {
            records->append({actor, area, text});
            return true;
        },
        true);
    if (result.sequence == 0) {
        *error = result.error;
        return false;
    }
    qint64 sequence = 0;
    QByteArray mac;
    StoreState::Record state;
    return newest(&sequence, &mac, error) && m_state.read(&state, error) &&
           m_head.reset({sequence, mac, state.changes}, error);
}

bool AuditTrail::initialiseHead(QString* error)
{
    return m_head.reset({0, {}, 0}, error);
}

} // namespace nebra
