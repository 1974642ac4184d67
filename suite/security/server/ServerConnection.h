#pragma once

#include "ServerSettings.h"

#include <QSqlDatabase>
#include <QString>
#include <QVariantList>

#include <memory>

class QSqlQuery;

namespace nebra {

// One connection of this thread to the security store's database server.
// Errors come back as sentences for the administrator, with the server's
// own message; a connection that the server dropped is reported as lost, so
// the caller can refuse and try again later.
class ServerConnection
{
public:
    ~ServerConnection();
    ServerConnection(const ServerConnection&) = delete;
    ServerConnection& operator=(const ServerConnection&) = delete;

    // Null, with *error set, when the server cannot be reached or refuses the log-in.
    static std::unique_ptr<ServerConnection> open(const ServerSettings& settings, QString* error);

    const ServerSettings& settings() const { return m_settings; }
    QSqlDatabase database() const;

    // Runs a statement with positional ("?") values. False, with *error
    // set, when it fails; *lost tells whether the connection is gone.
    bool exec(QSqlQuery& query, const QString& statement, const QVariantList& values, QString* error);
    // Runs text that may hold several statements, without values.
    bool execScript(const QString& script, QString* error);

    // True while the server answers.
    bool isAlive();
    // Drops the connection and opens it again; false, with *error, when the server does not answer.
    bool reconnect(QString* error);
    // Whether the last failure was the connection going away rather than the statement.
    bool lostConnection() const { return m_lost; }

    // The SQLSTATE of the last failure ("42501" for a missing privilege), empty when none.
    QString lastState() const { return m_lastState; }

private:
    ServerConnection(const ServerSettings& settings, QString name);
    bool fail(const QSqlQuery& query, const QString& statement, QString* error);

    ServerSettings m_settings;
    QString m_name;
    bool m_lost = false;
    QString m_lastState;
};

} // namespace nebra
