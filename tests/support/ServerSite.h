#pragma once

#include "PostgresServer.h"

namespace nebra::test {

// One throw-away server with the security store made, shared by the
// functions of a test case, and the owner's connection to it.
struct ServerSite
{
    PostgresServer server;
    std::unique_ptr<ServerConnection> owner;

    // Makes the store and runs setUp as its administrator. Empty when the site
    // is ready; else why there is none, which the test case skips with (a
    // QSKIP must stand in the test function itself).
    QString make(const std::function<bool(ServerAdministration&, QString*)>& setUp)
    {
        if (!server.problem().isEmpty())
            return server.problem();
        server.createSite();
        owner = PostgresServer::connect(server.superuser());
        admin(setUp);
        return {};
    }

    void admin(const std::function<bool(ServerAdministration&, QString*)>& change) const
    {
        administer(*owner, change);
    }
    void superuser(const QString& text) const { script(*owner, text); }
    std::pair<QString, QString> newestEntry() const { return test::newestEntry(*owner); }
};

} // namespace nebra::test
