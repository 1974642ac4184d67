#pragma once

#include <QString>

namespace nebra {

// Where the security store's database server is and how to log in to it.
// On a shared PC the host is the folder of the server's Unix socket (peer
// or password authentication on the local socket); across the network it is
// a host name, with TLS that checks the server's certificate and name
// ("verify-full"). The client role's password comes only from the
// administrator's system-wide file.
struct ServerSettings
{
    static constexpr int DefaultPort = 5432;
    static inline const QString DefaultDatabase = QStringLiteral("nebra_security");
    static inline const QString ClientRole = QStringLiteral("nebra_client");
    static inline const QString OwnerRole = QStringLiteral("nebra_owner");

    QString host; // a socket folder ("/run/postgresql") or a host name
    int port = DefaultPort;
    QString database = DefaultDatabase;
    QString user = ClientRole;
    QString password;    // empty: the server knows the OS user (peer authentication)
    QString sslMode;     // empty on a local socket; "verify-full" across the network
    QString sslRootCert; // the certificate of the authority that signed the server's
    int connectTimeoutSeconds = 5;
    // Every statement gives up after waiting this long for a lock another
    // connection holds, or after running this long (0: no bound).
    int lockTimeoutSeconds = 5;
    int statementTimeoutSeconds = 30;

    bool isLocalSocket() const { return host.startsWith(QLatin1Char('/')); }
};

} // namespace nebra
