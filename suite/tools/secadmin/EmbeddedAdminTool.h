#pragma once

#include "AdminReport.h"
#include "DocumentRecord.h"
#include "SecuritySettings.h"
#include "SignatureReport.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace nebra {

class SecretBytes;
class SecurityAdministration;
class SecurityStore;

// nebra-secadmin's commands on the embedded security database. The caller
// has checked the arguments' count and says what a change did; this checks
// who may administer the database (AdminRights), opens it and runs the
// command.
class EmbeddedAdminTool
{
public:
    struct Options
    {
        SecuritySettings settings; // the database, key and head files
        QString fullName;          // add-user
        QString csvPath;           // audit --csv
        QString anchor;            // verify --anchor
        QString group;             // create --group
        QString adminGroup;        // create --admin-group
        bool reuseKey = false;     // create --reuse-key
        bool perUser = false;      // create --per-user
        // verify-documents: compares the documents with the records read; the exit status.
        std::function<int(const QHash<QString, DocumentRecord>&)> verifyDocuments;
        // signatures PATH: checks the signatures its reader gives; the exit status.
        SignatureCheck checkSignatures;
    };

    EmbeddedAdminTool(AdminReport& report, Options options);
    ~EmbeddedAdminTool();

    // The command's exit status (0 done, 1 failed, 2 wrong usage); -1 when
    // the command is not one of the embedded database's.
    int run(const QString& command, const QStringList& arguments);

private:
    // AnyHead opens the database even when the audit chain head is missing
    // or altered: how the administrator looks into it and seals it afresh.
    enum class Open
    {
        Create,
        AnyHead,
        IntactHead
    };
    struct Command
    {
        QString name;
        Open open;
        std::function<int(const QStringList&)> action;
    };
    using Change = std::function<bool(SecurityAdministration&, QString*)>;

    QList<Command> commands();
    QList<Command> userCommands();
    QList<Command> rightCommands();
    QList<Command> inquiryCommands();
    int create();
    int addUser(const QString& name);
    int setPassword(const QString& name, bool mustChange);
    // Runs one change with its audit entry; the caller says what was done.
    int change(const Change& action);
    int listUsers();
    int verify();
    static QString actor();

    AdminReport& m_report;
    Options m_options;
    std::unique_ptr<SecurityStore> m_store;
};

} // namespace nebra
