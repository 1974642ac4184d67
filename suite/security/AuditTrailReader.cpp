#include "AuditTrailReader.h"

#include "SecurityDatabase.h"

#include <QSqlQuery>
#include <QStringList>

namespace nebra {

namespace {

const QString Columns = QStringLiteral("seq, utc, user_name, workstation, area, text, mac");

// WHERE conditions with their values; nothing of the filter is spliced into the text.
struct Conditions
{
    QStringList terms;
    QVariantList values;

    void add(const QString& term, const QVariant& value)
    {
        terms.append(term);
        values.append(value);
    }
    QString where() const
    {
        return terms.isEmpty() ? QString() : QStringLiteral(" WHERE ") + terms.join(QStringLiteral(" AND "));
    }
};

// The entries' times are ISO 8601 UTC text of one fixed width, so text order is time order.
QString utcText(const QDateTime& time)
{
    return time.toUTC().toString(Qt::ISODateWithMs);
}

Conditions conditionsOf(const AuditFilter& filter)
{
    Conditions c;
    if (filter.from.isValid())
        c.add(QStringLiteral("utc >= ?"), utcText(filter.from));
    if (filter.to.isValid())
        c.add(QStringLiteral("utc < ?"), utcText(filter.to));
    if (!filter.userName.isEmpty())
        c.add(QStringLiteral("user_name = ? COLLATE NOCASE"), filter.userName);
    if (!filter.area.isEmpty())
        c.add(QStringLiteral("area = ?"), filter.area);
    if (!filter.text.isEmpty())
        c.add(QStringLiteral("instr(lower(text), lower(?)) > 0"), filter.text);
    if (filter.throughSequence > 0)
        c.add(QStringLiteral("seq <= ?"), filter.throughSequence);
    return c;
}

// One of a fixed set of orderings; each matches an index where one exists.
QString orderBy(const AuditOrder& order)
{
    const QString direction =
        order.order == Qt::DescendingOrder ? QStringLiteral("DESC") : QStringLiteral("ASC");
    QString key;
    switch (order.column) {
    case AuditColumn::Sequence:
        return QStringLiteral(" ORDER BY seq ") + direction;
    case AuditColumn::Time:
        key = QStringLiteral("utc");
        break;
    case AuditColumn::User:
        key = QStringLiteral("user_name COLLATE NOCASE");
        break;
    case AuditColumn::Workstation:
        key = QStringLiteral("workstation");
        break;
    case AuditColumn::Area:
        key = QStringLiteral("area");
        break;
    case AuditColumn::Text:
        key = QStringLiteral("text");
        break;
    }
    return QStringLiteral(" ORDER BY %1 %2, seq %2").arg(key, direction);
}

// The newest sequence number of the view when nothing but the snapshot bound narrows it.
QString newestOf(const Conditions& bound)
{
    return QStringLiteral("(SELECT coalesce(max(seq), 0) FROM audit_trail%1)").arg(bound.where());
}

AuditEntry entryFrom(const QSqlQuery& q)
{
    return {q.value(0).toLongLong(), q.value(1).toString(), q.value(2).toString(),   q.value(3).toString(),
            q.value(4).toString(),   q.value(5).toString(), q.value(6).toByteArray()};
}

} // namespace

AuditTrailReader::AuditTrailReader(SecurityDatabase& database) : m_database(database) {}

bool AuditTrailReader::count(const AuditFilter& filter, qint64* count, QString* error) const
{
    const Conditions c = conditionsOf(filter);
    // Sequence numbers run 1, 2, 3... without gaps (verify proves it), so
    // the newest one is the count, found without reading every entry.
    const QString sql = filter.isEmpty() ? QStringLiteral("SELECT ") + newestOf(c)
                                         : QStringLiteral("SELECT count(*) FROM audit_trail") + c.where();
    QSqlQuery q = m_database.newQuery();
    if (!m_database.exec(q, sql, c.values, error))
        return false;
    *count = q.next() ? q.value(0).toLongLong() : 0;
    return true;
}

bool AuditTrailReader::read(const AuditFilter& filter, const AuditOrder& order, qint64 offset, int limit,
                            QList<AuditEntry>* entries, QString* error) const
{
    entries->clear();
    Conditions c = conditionsOf(filter);
    QString sql = QStringLiteral("SELECT %1 FROM audit_trail").arg(Columns);
    if (filter.isEmpty() && order.column == AuditColumn::Sequence) {
        // Row n of the view is an entry found by its sequence number: no
        // entries are stepped over however deep the page.
        if (order.order == Qt::AscendingOrder) {
            c.add(QStringLiteral("seq > ?"), offset);
        } else {
            const Conditions bound = c;
            c.terms.append(QStringLiteral("seq <= %1 - ?").arg(newestOf(bound)));
            c.values += bound.values;
            c.values.append(offset);
        }
        sql += c.where() + orderBy(order) + QStringLiteral(" LIMIT ?");
        c.values.append(limit);
    } else {
        sql += c.where() + orderBy(order) + QStringLiteral(" LIMIT ? OFFSET ?");
        c.values << limit << offset;
    }
    return m_database.readTransaction(
        [&](QString* why) {
            QSqlQuery q = m_database.newQuery();
            q.setForwardOnly(true);
            if (!m_database.exec(q, sql, c.values, why))
                return false;
            while (q.next())
                entries->append(entryFrom(q));
            return true;
        },
        error);
}

} // namespace nebra
