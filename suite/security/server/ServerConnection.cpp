#include "ServerConnection.h"

#include "SqlScript.h"

#include <QAtomicInt>
#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>

namespace nebra {

namespace {

QString uniqueName()
{
    static QAtomicInt counter;
    return QStringLiteral("nebra-security-server-%1").arg(counter.fetchAndAddRelaxed(1));
}

QString connectOptions(const ServerSettings& settings)
{
    QStringList options{QStringLiteral("connect_timeout=%1").arg(qMax(1, settings.connectTimeoutSeconds)),
                        QStringLiteral("application_name=nebra")};
    if (!settings.sslMode.isEmpty())
        options.append(QStringLiteral("sslmode=") + settings.sslMode);
    if (!settings.sslRootCert.isEmpty())
        options.append(QStringLiteral("sslrootcert=") + settings.sslRootCert);
    return options.join(QLatin1Char(';'));
}

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

// The server's message as the administrator should read it: "ERROR:  There
// is no user ..." with the function's CONTEXT and the driver's "(P0001)"
// becomes the sentence alone (with the server's DETAIL, when it gives one).
QString sentence(const QString& databaseText)
{
    static const QRegularExpression severity(QStringLiteral("^(ERROR|FATAL|PANIC):\\s+"));
    static const QRegularExpression state(QStringLiteral("^\\(\\w{5}\\)$"));
    QStringList kept;
    for (QString line : databaseText.trimmed().split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        line = line.trimmed().remove(severity);
        if (line.startsWith(QLatin1String("CONTEXT:")))
            break; // where in the function it was raised, over as many lines as it takes
        if (!state.match(line).hasMatch())
            kept.append(line);
    }
    return kept.join(QLatin1Char('\n'));
}

} // namespace

ServerConnection::ServerConnection(const ServerSettings& settings, QString name)
    : m_settings(settings), m_name(std::move(name))
{
}

ServerConnection::~ServerConnection()
{
    {
        QSqlDatabase db = QSqlDatabase::database(m_name, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_name);
}

std::unique_ptr<ServerConnection> ServerConnection::open(const ServerSettings& settings, QString* error)
{
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QPSQL"))) {
        *error = QStringLiteral("The database driver for the security server (QPSQL) is not installed.");
        return nullptr;
    }
    std::unique_ptr<ServerConnection> connection(new ServerConnection(settings, uniqueName()));
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), connection->m_name);
    db.setHostName(settings.host);
    db.setPort(settings.port);
    db.setDatabaseName(settings.database);
    db.setUserName(settings.user);
    db.setPassword(settings.password);
    db.setConnectOptions(connectOptions(settings));
    if (!db.open()) {
        *error = QStringLiteral("The security server cannot be reached: %1\n%2")
                     .arg(where(settings), db.lastError().text().trimmed());
        return nullptr;
    }
    return connection;
}

QSqlDatabase ServerConnection::database() const
{
    return QSqlDatabase::database(m_name, false);
}

bool ServerConnection::exec(QSqlQuery& query, const QString& statement, const QVariantList& values,
                            QString* error)
{
    m_lost = false;
    m_lastState.clear();
    query = QSqlQuery(database());
    if (!query.prepare(statement))
        return fail(query, statement, error);
    for (const QVariant& value : values)
        query.addBindValue(value);
    if (!query.exec())
        return fail(query, statement, error);
    return true;
}

bool ServerConnection::execScript(const QString& script, QString* error)
{
    m_lost = false;
    m_lastState.clear();
    // One statement per call: the driver would not report an error after the first.
    QSqlQuery query(database());
    for (const QString& statement : SqlScript::statements(script))
        if (!query.exec(statement))
            return fail(query, statement.left(80), error);
    return true;
}

bool ServerConnection::fail(const QSqlQuery& query, const QString& statement, QString* error)
{
    const QSqlError e = query.lastError();
    m_lastState = e.nativeErrorCode();
    m_lost = meansLostConnection(m_lastState) || !database().isOpen();
    const QString text =
        e.databaseText().trimmed().isEmpty() ? e.text().trimmed() : sentence(e.databaseText());
    if (m_lost)
        *error = QStringLiteral("The connection to the security server was lost: %1").arg(text);
    else
        *error = text.isEmpty() ? QStringLiteral("The security server refused \"%1\".").arg(statement) : text;
    return false;
}

bool ServerConnection::isAlive()
{
    QSqlQuery query(database());
    QString ignored;
    return exec(query, QStringLiteral("SELECT 1"), {}, &ignored);
}

bool ServerConnection::reconnect(QString* error)
{
    QSqlDatabase db = database();
    db.close();
    if (!db.open()) {
        *error = QStringLiteral("The security server cannot be reached: %1\n%2")
                     .arg(where(m_settings), db.lastError().text().trimmed());
        return false;
    }
    m_lost = false;
    return true;
}

} // namespace nebra
