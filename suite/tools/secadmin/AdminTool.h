#pragma once

#include <QCommandLineOption>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class QIODevice;

namespace nebra {

class SecurityStore;
class SettingsStore;
struct SecuritySettings;

// nebra-secadmin: the security database's administration from the command
// line. "nebra-secadmin --help" lists the commands. Exit status: 0 done,
// 1 refused or failed (the reason on standard error; for verify, the
// first bad entry on standard output), 2 wrong usage.
class AdminTool
{
public:
    enum Exit
    {
        Done = 0,
        Failed = 1,
        Usage = 2
    };

    AdminTool(QIODevice& out, QIODevice& err);
    ~AdminTool();

    int run(const QStringList& arguments);

private:
    // Create: makes the database. AnyHead: opens it even when the audit chain
    // head is missing or altered. IntactHead: changes nothing then.
    enum class Access
    {
        Status, // reads the settings only; anyone may
        Create,
        AnyHead,
        IntactHead
    };
    struct Command
    {
        QString name;
        QString arguments;
        QString summary;
        Access access;
        int argumentCount;
        std::function<int(const QStringList&)> action;
    };

    QList<Command> commands();
    QList<Command> userCommands();
    QList<Command> rightCommands();
    QList<Command> inquiryCommands();
    QString commandHelp();
    // Reads the options; false when the program is to end at once with *exitCode.
    bool parse(const QStringList& arguments, QStringList* positional, int* exitCode);
    int execute(const Command& command, const QStringList& arguments);
    int fail(const QString& message);
    void say(const QString& text);
    static QString actor();

    int listUsers();
    int printAudit();
    int verify();
    int anchor();
    int status(const SettingsStore& store, const SecuritySettings& settings);
    int create(const SecuritySettings& settings);
    // --backend, --server, --server-port, --server-database, --server-user
    static QList<QCommandLineOption> serverOptions();
    int runOnServer(const Command& command, const QStringList& arguments, const SecuritySettings& settings);
    int reseal();
    int setPassword(const QString& name, bool mustChange);
    int addUser(const QString& name);
    int change(const std::function<bool(QString*)>& action, const QString& done);

    QIODevice& m_out;
    QIODevice& m_err;
    QString m_database;
    QString m_keyFile;
    QString m_fullName;
    QString m_csvPath;
    QString m_group;
    QString m_adminGroup;
    QString m_anchor;
    bool m_reuseKey = false;
    bool m_perUser = false;
    QString m_backend;
    QStringList m_server; // host, port, database, administrator's role, as given

    std::unique_ptr<SecurityStore> m_store;
};

} // namespace nebra
