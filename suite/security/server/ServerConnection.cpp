#include "ServerConnection.h"

#include "SqlScript.h"

#include <QByteArrayList>
#include <QStringList>

#include <libpq-fe.h>

#include <vector>

namespace nebra {

namespace {

constexpr Oid ByteaType = 17;

QString where(const ServerSettings& settings)
{
    return QStringLiteral("%1 on %2 (port %3)").arg(settings.database, settings.host).arg(settings.port);
}

// Class 08 is a connection failure, 57P a server shutting down; no state at
// all means libpq itself lost the socket.
bool meansLostConnection(const QString& state)
{
    return state.isEmpty() || state.startsWith(QLatin1String("08")) || state.startsWith(QLatin1String("57P"));
}

// "?" marks become "$1", "$2" ... outside quoted text.
QByteArray numbered(const QString& statement)
{
    QByteArray out;
    const QByteArray in = statement.toUtf8();
    char quote = 0;
    int count = 0;
    for (const char c : in) {
        if (quote != 0) {
            quote = c == quote ? 0 : quote;
        } else if (c == '\'' || c == '"') {
            quote = c;
        } else if (c == '?') {
            out += '$' + QByteArray::number(++count);
            continue;
        }
        out += c;
    }
    return out;
}

// Each value as its parameter: bytes as binary bytea, the rest as text the
// server reads by the parameter's place in the statement.
struct Parameters
{
    explicit Parameters(const QVariantList& values)
    {
        for (const QVariant& value : values) {
            const bool binary = value.typeId() == QMetaType::QByteArray;
            texts.append(value.isNull()                      ? QByteArray()
                         : binary                            ? value.toByteArray()
                         : value.typeId() == QMetaType::Bool ? QByteArray(value.toBool() ? "true" : "false")
                                                             : value.toString().toUtf8());
            types.push_back(binary ? ByteaType : 0);
            formats.push_back(binary ? 1 : 0);
            lengths.push_back(int(texts.last().size()));
        }
        for (qsizetype i = 0; i < texts.size(); ++i)
            pointers.push_back(values[i].isNull() ? nullptr : texts[i].constData());
    }
    QByteArrayList texts;
    std::vector<Oid> types;
    std::vector<int> formats;
    std::vector<int> lengths;
    std::vector<const char*> pointers;
};

void ignoreNotice(void*, const char*) {}

} // namespace

ServerConnection::ServerConnection(const ServerSettings& settings) : m_settings(settings) {}

ServerConnection::~ServerConnection()
{
    PQfinish(m_connection);
}

std::unique_ptr<ServerConnection> ServerConnection::open(const ServerSettings& settings, QString* error)
{
    std::unique_ptr<ServerConnection> connection(new ServerConnection(settings));
    if (!connection->connect(error))
        return nullptr;
    return connection;
}

bool ServerConnection::connect(QString* error)
{
    PQfinish(m_connection);
    const ServerSettings& s = m_settings;
    // Bounds on every statement of this connection (0: none).
    const QByteArray options = QStringLiteral("-c lock_timeout=%1 -c statement_timeout=%2")
                                   .arg(qint64(s.lockTimeoutSeconds) * 1000)
                                   .arg(qint64(s.statementTimeoutSeconds) * 1000)
                                   .toUtf8();
    QList<std::pair<const char*, QByteArray>> given = {
        {"host", s.host.toUtf8()},
        {"port", QByteArray::number(s.port)},
        {"dbname", s.database.toUtf8()},
        {"user", s.user.toUtf8()},
        {"connect_timeout", QByteArray::number(qMax(1, s.connectTimeoutSeconds))},
        {"application_name", "nebra"},
        {"client_encoding", "UTF8"},
        {"options", options},
    };
    if (!s.password.isEmpty())
        given.append({"password", s.password.toUtf8()});
    if (!s.sslMode.isEmpty())
        given.append({"sslmode", s.sslMode.toUtf8()});
    if (!s.sslRootCert.isEmpty())
        given.append({"sslrootcert", s.sslRootCert.toUtf8()});
    std::vector<const char*> keys;
    std::vector<const char*> values;
    for (const auto& [key, value] : given) {
        keys.push_back(key);
        values.push_back(value.constData());
    }
    keys.push_back(nullptr);
    values.push_back(nullptr);
    m_connection = PQconnectdbParams(keys.data(), values.data(), 0);
    if (PQstatus(m_connection) == CONNECTION_OK) {
        PQsetNoticeProcessor(m_connection, ignoreNotice, nullptr);
        m_lost = false;
        return true;
    }
    *error = QStringLiteral("The security server cannot be reached: %1\n%2")
                 .arg(where(s), QString::fromUtf8(PQerrorMessage(m_connection)).trimmed());
    m_lost = true;
    return false;
}

bool ServerConnection::exec(ServerResult& result, const QString& statement, const QVariantList& values,
                            QString* error)
{
    const Parameters parameters(values);
    PGresult* answer = PQexecParams(m_connection, numbered(statement).constData(), int(values.size()),
                                    parameters.types.data(), parameters.pointers.data(),
                                    parameters.lengths.data(), parameters.formats.data(), 0);
    result = ServerResult(std::shared_ptr<pg_result>(answer, PQclear));
    return check(answer, statement, error);
}

bool ServerConnection::execScript(const QString& script, QString* error)
{
    // One statement per call, so that a failure is reported for the statement that failed.
    for (const QString& statement : SqlScript::statements(script)) {
        const std::shared_ptr<pg_result> answer(PQexec(m_connection, statement.toUtf8().constData()),
                                                PQclear);
        if (!check(answer.get(), statement.left(80), error))
            return false;
    }
    return true;
}

bool ServerConnection::check(pg_result* result, const QString& statement, QString* error)
{
    m_lost = false;
    m_lastState.clear();
    const ExecStatusType status = result ? PQresultStatus(result) : PGRES_FATAL_ERROR;
    if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK)
        return true;
    m_lastState = QString::fromLatin1(result ? PQresultErrorField(result, PG_DIAG_SQLSTATE) : nullptr);
    m_lost = PQstatus(m_connection) != CONNECTION_OK || meansLostConnection(m_lastState);
    QString text = QString::fromUtf8(result ? PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY) : nullptr);
    if (const char* detail = result ? PQresultErrorField(result, PG_DIAG_MESSAGE_DETAIL) : nullptr)
        text += QLatin1Char('\n') + QString::fromUtf8(detail);
    if (text.isEmpty())
        text = QString::fromUtf8(PQerrorMessage(m_connection)).trimmed();
    if (m_lost)
        *error = QStringLiteral("The connection to the security server was lost: %1").arg(text);
    else if (m_lastState == QLatin1String("55P03"))
        *error =
            QStringLiteral("The security server is busy: another connection holds what this needs and has "
                           "not let go in time (%1). Try again in a moment; if this keeps happening, ask "
                           "your security administrator.")
                .arg(text);
    else if (m_lastState == QLatin1String("57014"))
        *error =
            QStringLiteral("The security server did not answer within %1 s (%2). Try again in a moment; if "
                           "this keeps happening, ask your security administrator.")
                .arg(m_settings.statementTimeoutSeconds)
                .arg(text);
    else
        *error = text.isEmpty() ? QStringLiteral("The security server refused \"%1\".").arg(statement) : text;
    return false;
}

bool ServerConnection::isAlive()
{
    ServerResult result;
    QString ignored;
    return exec(result, QStringLiteral("SELECT 1"), {}, &ignored);
}

bool ServerConnection::reconnect(QString* error)
{
    return connect(error);
}

} // namespace nebra
