#include "AuditTrail.h"

#include "SecurityDatabase.h"
#include "SiteKey.h"

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

AuditTrail::AuditTrail(SecurityDatabase& database, const SiteKey& key, const QString& headPath)
    : m_database(database), m_key(key), m_head(headPath, key, database.databaseId())
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

AuditAppendResult AuditTrail::append(const QString& userName, const QString& area, const QString& text)
{
    AuditEntry entry;
    entry.userName = userName;
    entry.workstation = workstationName();
    entry.area = area;
    entry.text = text;
    QString error;
    const bool committed = m_database.writeTransaction(
        [&](QString* why) {
            qint64 previous = 0;
            QByteArray previousMac;
            if (!newest(&previous, &previousMac, why))
                return false;
            entry.sequence = previous + 1;
            entry.utc = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
            entry.mac = m_key.mac(entryMessage(entry, previousMac));
            QSqlQuery q = m_database.newQuery();
            return m_database.exec(
                q,
                QStringLiteral("INSERT INTO audit_trail(seq, utc, user_name, workstation, area, "
                               "text, mac) VALUES(?, ?, ?, ?, ?, ?, ?)"),
                {entry.sequence, entry.utc, entry.userName, entry.workstation, entry.area, entry.text,
                 entry.mac},
                why);
        },
        &error);
    if (!committed)
        return {0, QStringLiteral("The audit trail entry could not be recorded (%1).").arg(error)};
    if (!m_head.advance({entry.sequence, entry.mac}, &error))
        return {entry.sequence, error};
    return {entry.sequence, {}};
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
AuditVerification AuditTrail::verifyChain(const AuditChainHead::Record& head, qint64* count) const
{
    AuditVerification result;
    qint64 expected = 1;
    QByteArray previousMac = genesisMac();
    auto fail = [&](qint64 sequence, const QString& message) {
        result = {false, expected - 1, sequence, message};
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
            previousMac = entry.mac;
            ++expected;
            return true;
        },
        &error);
    *count = expected - 1;
    if (!read)
        return {false, *count, 0, QStringLiteral("The audit trail cannot be read (%1).").arg(error)};
    return result;
}

AuditVerification AuditTrail::verify() const
{
    // The head is read before the entries: writers only ever add entries, so
    // a head read first can never be ahead of the snapshot read after it.
    AuditChainHead::Record head;
    QString error;
    if (m_head.read(&head, &error) != AuditChainHead::ReadStatus::Ok)
        return {false, 0, 0, error};
    qint64 count = 0;
    const AuditVerification chain = verifyChain(head, &count);
    if (!chain.ok)
        return chain;
    if (count + 1 == head.count)
        return {false, count, count + 1,
                QStringLiteral("Entry %1 is missing: the newest entry has been cut off.").arg(head.count)};
    if (count < head.count)
        return {false, count, count + 1,
                QStringLiteral("Entries %1 to %2 are missing: the newest entries have been cut off.")
                    .arg(QString::number(count + 1), QString::number(head.count))};
    return {true, count, 0, QStringLiteral("The audit trail holds %1 entries; all are intact.").arg(count)};
}

bool AuditTrail::checkHead(QString* error) const
{
    AuditChainHead::Record head;
    return m_head.read(&head, error) == AuditChainHead::ReadStatus::Ok;
}

bool AuditTrail::resealHead(QString* error)
{
    qint64 sequence = 0;
    QByteArray mac;
    return newest(&sequence, &mac, error) &&
           m_head.reset({sequence, sequence > 0 ? mac : QByteArray()}, error);
}

bool AuditTrail::initialiseHead(QString* error)
{
    return m_head.reset({0, {}}, error);
}

} // namespace nebra
