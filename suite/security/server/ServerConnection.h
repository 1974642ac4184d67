#pragma once

#include "ServerResult.h"
#include "ServerSettings.h"

#include <QString>
#include <QVariantList>

#include <memory>

struct pg_conn;

namespace nebra {

// One connection of this thread to the security store's database server
// (libpq). Values always travel apart from the statement's text (the
// extended protocol's parameters), so no password, password hash or session
// token is ever part of a statement the server shows other sessions
// (pg_stat_activity) or writes to its log. Every statement is bounded: a
// lock held elsewhere longer than the settings' lock time-out, or a
// statement running longer than their statement time-out, is given up with
// a message that says so.
//
// Errors come back as sentences for the user or administrator, with the
// server's own message; a connection that the server dropped is reported as
// lost, so the caller can refuse and try again later.
class ServerConnection
{
public:
    ~ServerConnection();
    ServerConnection(const ServerConnection&) = delete;
    ServerConnection& operator=(const ServerConnection&) = delete;

    // Null, with *error set, when the server cannot be reached or refuses the log-in.
    static std::unique_ptr<ServerConnection> open(const ServerSettings& settings, QString* error);

    const ServerSettings& settings() const { return m_settings; }

    // Runs one statement with positional values ("?", or "$1", "$2" ...),
    // sent as parameters. False, with *error set, when it fails;
    // lostConnection() tells whether the connection is gone.
    bool exec(ServerResult& result, const QString& statement, const QVariantList& values, QString* error);
    // Runs text that may hold several statements, one after the other, without values.
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
    explicit ServerConnection(const ServerSettings& settings);
    bool connect(QString* error);
    bool check(pg_result* result, const QString& statement, QString* error);

    ServerSettings m_settings;
    pg_conn* m_connection = nullptr;
    bool m_lost = false;
    QString m_lastState;
};

} // namespace nebra
