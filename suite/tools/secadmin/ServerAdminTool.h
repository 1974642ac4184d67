#pragma once

#include "DocumentRecord.h"
#include "ServerSettings.h"
#include "SignatureReport.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace nebra {

class AdminReport;
class ServerConnection;
class SecretBytes;
class SecurityStore;
class ServerAdministration;

// nebra-secadmin's commands on a security store on a database server. The
// server checks who may administer (members of nebra_admin; a superuser for
// "create") and records each change under the role the tool logged in as,
// so the tool only connects as the administrator and runs the
// administration functions. The caller has checked the arguments' count
// and says what a change did.
class ServerAdminTool
{
public:
    struct Options
    {
        ServerSettings server; // with the administrator's role as the user
        QString fullName;      // for add-user
        QString csvPath;       // for audit --csv
        QString anchor;        // for verify --anchor
        QString adminGroup;    // for create: written to the system-wide file
        // For create: the site's session rules, which the server enforces.
        int idleMinutes = 15;
        int passwordMinimumLength = 8;
        bool writePolicyFile = true;
        // verify-documents: compares the documents with the records read; the exit status.
        std::function<int(const QHash<QString, DocumentRecord>&)> verifyDocuments;
        // signatures PATH: checks the signatures its reader gives; the exit status.
        SignatureCheck checkSignatures;
        // For migrate: opens the embedded store to copy (null, with *error, when it cannot).
        std::function<std::unique_ptr<SecurityStore>(QString*)> openEmbedded;
    };

    ServerAdminTool(AdminReport& report, Options options);
    ~ServerAdminTool();

    // The command's exit status (0 done, 1 failed, 2 wrong usage); -1 when
    // the command is not one of the server's.
    int run(const QString& command, const QStringList& arguments);

private:
    struct Command
    {
        QString name;
        std::function<int(const QStringList&)> action;
    };
    using Change = std::function<bool(ServerAdministration&, QString*)>;

    QList<Command> commands();
    QList<Command> userCommands();
    QList<Command> rightCommands();
    QList<Command> inquiryCommands();
    int create();
    int verify();
    int migrate();
    int listUsers();
    // Asks for the new password, then runs action with it.
    int withPassword(const QString& name,
                     const std::function<bool(ServerAdministration&, const SecretBytes&, QString*)>& action);
    int change(const Change& action);
    ServerAdministration administration();

    AdminReport& m_report;
    Options m_options;
    std::unique_ptr<ServerConnection> m_connection;
};

} // namespace nebra
