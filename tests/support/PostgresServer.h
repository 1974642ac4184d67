#pragma once

#include "ServerAdministration.h"
#include "ServerConnection.h"
#include "ServerSchema.h"
#include "ServerSettings.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

namespace nebra::test {

// A throw-away database server for the tests: its own cluster (initdb) in a
// temporary folder, listening only on a Unix socket in that folder, never a
// system cluster. When the tests run as root the server runs as "nobody"
// (the server refuses to run as root, and needs an id with an account
// entry); its folders are handed to that id. The server is stopped when
// the object goes, and, should the test process die first, gets SIGTERM
// from the kernel (parent-death signal), so none is left behind.
class PostgresServer
{
public:
    static constexpr uid_t ServerUid = 65534; // nobody
    static constexpr gid_t ServerGid = 65534; // nogroup
    static inline const QString Superuser = "nebra_super";

    enum class Durability
    {
        Fast, // no fsync: for behaviour tests
        Full, // the server's defaults: for measurements
    };

    // Listening on 127.0.0.1 as well, with TLS only (the hba file given
    // admits TCP connections by hostssl lines alone). The files must be
    // readable by the server's id; the key of mode 0600.
    struct Tls
    {
        QString certificateFile;
        QString keyFile;
        QString hbaFile;
        int port = 0;
    };

    explicit PostgresServer(Durability durability = Durability::Fast, std::optional<Tls> tls = {})
        : m_durability(durability), m_tls(std::move(tls))
    {
        m_problem = prepare();
        if (m_problem.isEmpty())
            start();
    }

    ~PostgresServer() { stop(); }

    // Empty when the server runs; else why it does not (a test skips with it).
    QString problem() const { return m_problem; }
    bool isRunning() const { return m_server.state() == QProcess::Running; }
    QString socketFolder() const { return m_dir.path() + "/socket"; }
    QString logText() const { return QString::fromUtf8(readFile(m_dir.path() + "/server.log")); }

    // The settings of user on the database (the security store's unless another is named).
    ServerSettings settingsFor(const QString& user,
                               const QString& database = ServerSettings::DefaultDatabase) const
    {
        ServerSettings settings;
        settings.host = socketFolder();
        settings.port = m_tls ? m_tls->port : ServerSettings::DefaultPort;
        settings.database = database;
        settings.user = user;
        return settings;
    }
    ServerSettings superuser() const { return settingsFor(Superuser); }

    // A connection with the settings; the test program ends without one, as
    // every later step would fail on it.
    static std::unique_ptr<ServerConnection> connect(const ServerSettings& settings)
    {
        QString error;
        std::unique_ptr<ServerConnection> connection = ServerConnection::open(settings, &error);
        if (!connection)
            qFatal("Cannot connect to the test server: %s", qPrintable(error));
        return connection;
    }
    ServerSettings client() const { return settingsFor(ServerSettings::ClientRole); }

    // Makes the security store's roles, database and schema; fails the test when it cannot.
    void createSite() const
    {
        QString error;
        if (!ServerSchema::createSite(superuser(), &error))
            qFatal("Cannot create the security store on the test server: %s", qPrintable(error));
    }

    // Starts the server (again); false, with problem() set, when it does not come up in time.
    bool start()
    {
        QFile::remove(m_dir.path() + "/server.log");
        m_server.setStandardOutputFile(m_dir.path() + "/server.log", QIODevice::Append);
        m_server.setStandardErrorFile(m_dir.path() + "/server.log", QIODevice::Append);
        QStringList arguments =
            asServer({"--pdeathsig", "TERM"}) +
            QStringList{m_bin + "/postgres", "-D", dataFolder(),        "-k", socketFolder(), "-c",
                        "listen_addresses=", "-c", "max_connections=60"};
        if (m_durability == Durability::Fast)
            arguments += QStringList{"-c", "fsync=off"};
        if (m_tls)
            arguments += QStringList{"-p", QString::number(m_tls->port),
                                     "-c", "listen_addresses=127.0.0.1",
                                     "-c", "ssl=on",
                                     "-c", "ssl_cert_file=" + m_tls->certificateFile,
                                     "-c", "ssl_key_file=" + m_tls->keyFile,
                                     "-c", "hba_file=" + m_tls->hbaFile};
        m_server.start("setpriv", arguments);
        const bool ready = QTest::qWaitFor(
            [this] {
                return m_server.state() == QProcess::NotRunning ||
                       logText().contains(QLatin1String("ready to accept connections"));
            },
            60000);
        if (!ready || !isRunning()) {
            m_problem = "The test database server did not start:\n" + logText();
            return false;
        }
        return true;
    }

    // Stops the server (fast shutdown: open sessions are ended).
    void stop()
    {
        if (!isRunning())
            return;
        QProcess pgCtl;
        pgCtl.start("setpriv", asServer({}) + QStringList{m_bin + "/pg_ctl", "stop", "-D", dataFolder(), "-m",
                                                          "fast", "-w"});
        if (!pgCtl.waitForFinished(60000) || !m_server.waitForFinished(60000)) {
            m_server.kill();
            m_server.waitForFinished(10000);
        }
    }

private:
    static QString binFolder()
    {
        QDir lib("/usr/lib/postgresql");
        QStringList versions = lib.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        std::sort(versions.begin(), versions.end(),
                  [](const QString& a, const QString& b) { return a.toInt() > b.toInt(); });
        for (const QString& version : versions)
            if (QFile::exists(lib.filePath(version + "/bin/initdb")))
                return lib.filePath(version + "/bin");
        return {};
    }

    QString dataFolder() const { return m_dir.path() + "/data"; }

    // setpriv's arguments that run a program as the server's id when we are root.
    static QStringList asServer(QStringList arguments)
    {
        if (::geteuid() == 0)
            arguments << QStringLiteral("--reuid=%1").arg(ServerUid)
                      << QStringLiteral("--regid=%1").arg(ServerGid) << "--clear-groups";
        return arguments;
    }

    // Hands the folders to the server's id and makes the cluster: empty when
    // all went well, else why not.
    QString prepare()
    {
        m_bin = binFolder();
        if (m_bin.isEmpty())
            return "PostgreSQL's server programs are not installed (scripts/install-deps.sh)";
        QDir(m_dir.path()).mkdir("socket");
        ::chmod(qPrintable(m_dir.path()), 0755);
        // The data folder is made by initdb itself, as the server's id.
        for (const QString& folder : {socketFolder(), m_dir.path()})
            if (::geteuid() == 0 && ::chown(qPrintable(folder), ServerUid, ServerGid) != 0)
                return "Cannot hand the test server's folder to the server's id";
        QProcess initdb;
        initdb.setProcessChannelMode(QProcess::MergedChannels);
        initdb.start("setpriv", asServer({}) + QStringList{m_bin + "/initdb", "-D", dataFolder(), "-U",
                                                           Superuser, "--auth=trust", "--encoding=UTF8",
                                                           "--locale=C.UTF-8", "--no-sync"});
        if (!initdb.waitForFinished(120000) || initdb.exitCode() != 0)
            return "initdb failed: " + QString::fromLocal8Bit(initdb.readAll());
        return {};
    }

    Durability m_durability;
    std::optional<Tls> m_tls;
    QTemporaryDir m_dir{QDir::tempPath() + "/nebra-pg-XXXXXX"};
    QString m_bin;
    QString m_problem;
    QProcess m_server;
};

// The first column of every row the query returns, as text. A query that
// fails returns its error instead, so that the comparison that follows shows it.
inline QStringList column(ServerConnection& connection, const QString& query, const QVariantList& values = {})
{
    ServerResult q;
    QString error;
    if (!connection.exec(q, query, values, &error))
        return {"failed: " + error};
    QStringList texts;
    while (q.next())
        texts.append(q.value(0).toString());
    return texts;
}

// The newest audit entry as the connection reads it: user and text.
inline std::pair<QString, QString> newestEntry(ServerConnection& connection)
{
    const QString entry =
        column(connection, "SELECT user_name || '|' || text FROM nebra.audit_trail ORDER BY seq DESC LIMIT 1")
            .value(0);
    return {entry.section('|', 0, 0), entry.section('|', 1)};
}

// An administrator's change through the connection; the test fails when it is refused.
inline void administer(ServerConnection& connection,
                       const std::function<bool(ServerAdministration&, QString*)>& change)
{
    ServerAdministration administration(connection, "pc");
    QString error;
    QVERIFY2(change(administration, &error), qPrintable(error));
}

// Runs a script the test relies on; the test fails when it does not run.
inline void script(ServerConnection& connection, const QString& text)
{
    QString error;
    QVERIFY2(connection.execScript(text, &error), qPrintable(error));
}

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
