#pragma once

#include "AdminReport.h"
#include "DocumentRecord.h"
#include "SignatureReport.h"

#include <QCommandLineOption>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class QCommandLineParser;
class QIODevice;

namespace nebra {

class SettingsStore;
struct SecuritySettings;

// nebra-secadmin: the security store's administration from the command
// line, on the embedded database (EmbeddedAdminTool) or on a security
// server (ServerAdminTool) as the system-wide policy or --backend says.
// "nebra-secadmin --help" lists the commands. Exit status: 0 done, 1
// refused or failed (the reason on standard error; for verify, the first
// bad entry on standard output), 2 wrong usage.
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

    // The program: the application object, then run() on its arguments with
    // standard output and error. Returns the exit status.
    static int main(int argc, char** argv);

    int run(const QStringList& arguments);

private:
    struct Command
    {
        QString name;
        QString arguments;
        QString summary;
        int argumentCount = 0;
        QString done; // said when a change succeeds, on either back end
        bool lastOptional = false;
    };

    static QList<Command> commands();
    static QList<Command> changeCommands();
    static QList<Command> inquiryCommands();
    static QString commandHelp();
    // Reads the options; false when the program is to end at once with *exitCode.
    bool parse(const QStringList& arguments, QStringList* positional, int* exitCode);
    void keep(const QCommandLineParser& parser);
    int execute(const Command& command, const QStringList& arguments);
    int onEmbedded(const Command& command, const QStringList& arguments, const SecuritySettings& settings);
    int onServer(const Command& command, const QStringList& arguments, const SecuritySettings& settings);
    int status(const SettingsStore& store, const SecuritySettings& settings);
    // verify-documents on the records a back end read: the documents under the folder given, or
    // under the data folders' parent directory.
    std::function<int(const QHash<QString, DocumentRecord>&)> documentCheck(const QStringList& arguments);
    // signatures PATH on the signatures a back end reads.
    SignatureCheck signatureCheck(const QStringList& arguments);
    // --database, --key-file ... --per-user
    static QList<QCommandLineOption> storeOptions();
    // --backend, --server, --server-port, --server-database, --server-user
    static QList<QCommandLineOption> serverOptions();

    AdminReport m_report;
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
};

} // namespace nebra
