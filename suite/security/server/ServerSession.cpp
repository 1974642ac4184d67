#include "ServerSession.h"

#include "SecretBytes.h"
#include "ServerConnection.h"

#include <QDateTime>

namespace nebra {

namespace {

QString text(const SecretBytes& secret)
{
    return QString::fromUtf8(secret.data(), secret.size());
}

LogInStatus statusFrom(const QString& status)
{
    if (status == QLatin1String("success"))
        return LogInStatus::Success;
    if (status == QLatin1String("locked"))
        return LogInStatus::Locked;
    if (status == QLatin1String("disabled"))
        return LogInStatus::Disabled;
    return LogInStatus::Refused;
}

// The filter as the review functions take it: an empty text or 0 leaves a field unset.
QVariantList filterValues(const QString& token, const AuditFilter& filter)
{
    const auto utc = [](const QDateTime& time) {
        return time.isValid() ? time.toUTC().toString(Qt::ISODateWithMs) : QString(QLatin1String(""));
    };
    const auto given = [](const QString& value) {
        return value.isNull() ? QString(QLatin1String("")) : value;
    };
    return {token,
            utc(filter.from),
            utc(filter.to),
            given(filter.userName),
            given(filter.area),
            given(filter.text),
            filter.throughSequence};
}

QString columnName(AuditColumn column)
{
    switch (column) {
    case AuditColumn::Sequence:
        break;
    case AuditColumn::Time:
        return QStringLiteral("time");
    case AuditColumn::User:
        return QStringLiteral("user");
    case AuditColumn::Workstation:
        return QStringLiteral("workstation");
    case AuditColumn::Area:
        return QStringLiteral("area");
    case AuditColumn::Text:
        return QStringLiteral("text");
    }
    return QStringLiteral("sequence");
}

} // namespace

ServerSession::ServerSession(ServerConnection& connection, QString workstation)
    : m_connection(connection), m_workstation(std::move(workstation))
{
}

ServerLogIn ServerSession::logIn(const QString& userName, const SecretBytes& password)
{
    ServerLogIn result;
    ServerResult q;
    if (!m_connection.exec(q,
                           QStringLiteral("SELECT status, token, user_name, full_name, must_change_password, "
                                          "idle_minutes, password_minimum_length FROM nebra.log_in(?, ?, ?)"),
                           {userName, text(password), m_workstation}, &result.error) ||
        !q.next()) {
        result.status = LogInStatus::Error;
        if (result.error.isEmpty())
            result.error = QStringLiteral("The security server gave no answer to the log-in.");
        return result;
    }
    result.status = statusFrom(q.value(0).toString());
    result.token = q.value(1).toString();
    result.userName = q.value(2).toString();
    result.fullName = q.value(3).toString();
    result.mustChangePassword = q.value(4).toBool();
    result.idleMinutes = q.value(5).toInt();
    result.passwordMinimumLength = q.value(6).toInt();
    return result;
}

std::optional<bool> ServerSession::isAllowed(const QString& token, const QString& area,
                                             const QString& operation, QString* error)
{
    ServerResult q;
    if (!m_connection.exec(q, QStringLiteral("SELECT nebra.is_allowed(?, ?, ?)"), {token, area, operation},
                           error) ||
        !q.next())
        return std::nullopt;
    return q.value(0).toBool();
}

qint64 ServerSession::record(const QString& token, const QString& area, const QString& entry, QString* error)
{
    ServerResult q;
    if (!m_connection.exec(q, QStringLiteral("SELECT nebra.record_audit(?, ?, ?)"), {token, area, entry},
                           error) ||
        !q.next())
        return 0;
    return q.value(0).toLongLong();
}

qint64 ServerSession::recordDocument(const QString& token, const DocumentChange& change, QString* error)
{
    const DocumentFingerprint& f = change.fingerprint;
    const auto given = [](const QString& value) {
        return value.isNull() ? QString(QLatin1String("")) : value;
    };
    ServerResult q;
    if (!m_connection.exec(q, QStringLiteral("SELECT nebra.record_document(?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                           {token, DocumentEntries::eventName(change.event), f.path,
                            f.sha256.isNull() ? QByteArray("") : f.sha256, f.size, f.modifiedMs,
                            given(change.previousPath), given(change.program), given(change.reason)},
                           error) ||
        !q.next())
        return 0;
    return q.value(0).toLongLong();
}

bool ServerSession::documentRecords(const QString& token, QHash<QString, DocumentRecord>* records,
                                    QString* error)
{
    records->clear();
    ServerResult q;
    const bool read =
        token.isEmpty()
            ? m_connection.exec(q, QStringLiteral("SELECT * FROM nebra.admin_document_records()"), {}, error)
            : m_connection.exec(q, QStringLiteral("SELECT * FROM nebra.document_records(?)"), {token}, error);
    if (!read)
        return false;
    while (q.next()) {
        const DocumentRecord row = DocumentEntries::recordFrom([&q](int column) { return q.value(column); });
        records->insert(row.fingerprint.path, row);
    }
    return true;
}

SignResult ServerSession::sign(const QString& token, const SecretBytes& password,
                               const DocumentSignature& signature)
{
    SignResult result;
    ServerResult q;
    if (!m_connection.exec(q,
                           QStringLiteral("SELECT status, seq, user_name, full_name, signed_utc FROM "
                                          "nebra.sign_document(?, ?, ?, ?, ?)"),
                           {token, text(password), signature.path, signature.sha256, signature.meaning},
                           &result.error) ||
        !q.next()) {
        if (result.error.isEmpty())
            result.error = QStringLiteral("The security server gave no answer.");
        return result;
    }
    const QString status = q.value(0).toString();
    if (status == QLatin1String("signed")) {
        result.sequence = q.value(1).toLongLong();
        result.signature = signature;
        result.signature.userName = q.value(2).toString();
        result.signature.fullName = q.value(3).toString();
        result.signature.signedMs =
            QDateTime::fromString(q.value(4).toString(), Qt::ISODateWithMs).toMSecsSinceEpoch();
        result.signature.sequence = result.sequence;
    } else if (status == QLatin1String("no full name")) {
        result.error = SignatureEntries::noFullNameText();
    } else {
        result.locked = status == QLatin1String("locked");
        result.error = SignatureEntries::wrongPasswordText();
    }
    return result;
}

bool ServerSession::signatures(const QString& token, const QString& path,
                               QList<DocumentSignature>* signatures, QString* error)
{
    signatures->clear();
    const QString columns =
        QStringLiteral("seq, path, sha256, meaning, user_name, full_name, signed_utc, intact");
    const QVariant wanted = path.isNull() ? QVariant() : QVariant(path);
    ServerResult q;
    const bool read =
        token.isEmpty()
            ? m_connection.exec(
                  q, QStringLiteral("SELECT %1 FROM nebra.admin_document_signatures(?)").arg(columns),
                  {wanted}, error)
            : m_connection.exec(q,
                                QStringLiteral("SELECT %1 FROM nebra.document_signatures(?, ?)").arg(columns),
                                {token, wanted}, error);
    if (!read)
        return false;
    while (q.next())
        signatures->append(
            {q.value(1).toString(), q.value(2).toByteArray(), q.value(3).toString(), q.value(4).toString(),
             q.value(5).toString(),
             QDateTime::fromString(q.value(6).toString(), Qt::ISODateWithMs).toMSecsSinceEpoch(),
             q.value(0).toLongLong(), q.value(7).toBool()});
    return true;
}

ServerPasswordChange ServerSession::checkPassword(const QString& token, const SecretBytes& current,
                                                  QString* error)
{
    ServerResult q;
    if (!m_connection.exec(q, QStringLiteral("SELECT nebra.check_password(?, ?)"), {token, text(current)},
                           error) ||
        !q.next())
        return ServerPasswordChange::Error;
    const QString outcome = q.value(0).toString();
    if (outcome == QLatin1String("ok"))
        return ServerPasswordChange::Changed;
    return outcome == QLatin1String("locked") ? ServerPasswordChange::Locked
                                              : ServerPasswordChange::Incorrect;
}

ServerPasswordChange ServerSession::changePassword(const QString& token, const SecretBytes& current,
                                                   const SecretBytes& fresh, QString* error)
{
    ServerResult q;
    if (!m_connection.exec(q, QStringLiteral("SELECT nebra.change_password(?, ?, ?)"),
                           {token, text(current), text(fresh)}, error) ||
        !q.next())
        return ServerPasswordChange::Error;
    const QString outcome = q.value(0).toString();
    if (outcome == QLatin1String("changed"))
        return ServerPasswordChange::Changed;
    if (outcome == QLatin1String("locked"))
        return ServerPasswordChange::Locked;
    if (outcome == QLatin1String("same"))
        return ServerPasswordChange::Same;
    return ServerPasswordChange::Incorrect;
}

bool ServerSession::logOut(const QString& token, const QString& entry, QString* error)
{
    ServerResult q;
    return m_connection.exec(q, QStringLiteral("SELECT nebra.log_out(?, ?)"), {token, entry}, error);
}

std::optional<bool> ServerSession::touch(const QString& token, QString* error)
{
    ServerResult q;
    if (!m_connection.exec(q, QStringLiteral("SELECT nebra.touch_session(?)"), {token}, error) || !q.next())
        return std::nullopt;
    return q.value(0).toBool();
}

bool ServerSession::countAudit(const QString& token, const AuditFilter& filter, qint64* count, QString* error)
{
    ServerResult q;
    if (!m_connection.exec(q, QStringLiteral("SELECT nebra.review_audit_count(?, ?, ?, ?, ?, ?, ?)"),
                           filterValues(token, filter), error) ||
        !q.next())
        return false;
    *count = q.value(0).toLongLong();
    return true;
}

bool ServerSession::readAudit(const QString& token, const AuditFilter& filter, const AuditOrder& order,
                              qint64 offset, int limit, QList<AuditEntry>* entries, QString* error)
{
    entries->clear();
    QVariantList values = filterValues(token, filter);
    values << columnName(order.column) << (order.order == Qt::DescendingOrder) << offset << limit;
    ServerResult q;
    if (!m_connection.exec(
            q,
            QStringLiteral("SELECT seq, utc, user_name, workstation, area, entry_text, mac FROM "
                           "nebra.review_audit_page(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
            values, error))
        return false;
    while (q.next())
        entries->append({q.value(0).toLongLong(), q.value(1).toString(), q.value(2).toString(),
                         q.value(3).toString(), q.value(4).toString(), q.value(5).toString(),
                         q.value(6).toByteArray()});
    return true;
}

bool ServerSession::verifyAudit(const QString& token, AuditVerification* result, QString* error)
{
    ServerResult q;
    if (!m_connection.exec(q,
                           QStringLiteral("SELECT ok, entry_count, first_bad_seq, message FROM "
                                          "nebra.review_verify_audit(?)"),
                           {token}, error) ||
        !q.next())
        return false;
    *result = {
        q.value(0).toBool(), q.value(1).toLongLong(), q.value(2).toLongLong(), q.value(3).toString(), {}};
    return true;
}

} // namespace nebra
