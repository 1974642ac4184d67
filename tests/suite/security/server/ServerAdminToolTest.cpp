// nebra-secadmin against a security server: create makes the store (again
// without harm) and points the system-wide file at it, the same commands
// administer it, and verify runs on the server. (Two OS users' workstations
// sharing one trail: ServerSessionTest.)

#include "AdminToolCases.h"
#include "PostgresServer.h"
#include "SecurityFixture.h"
#include "ServerConnection.h"
#include "ServerSession.h"
#include "SettingsStore.h"
#include "UserFolders.h"

#include <QProcess>
#include <QtTest>

using namespace nebra;

class ServerAdminToolTest : public QObject
{
    Q_OBJECT

    test::AdminRun run(const QStringList& arguments, const QByteArray& input = {})
    {
        return test::runAdminTool(arguments + QStringList{"--server-user", test::PostgresServer::Superuser},
                                  input);
    }
    // The tool on a store of its own on the same server: database name.
    QStringList on(const QString& database) const
    {
        return {"--backend",         "postgresql", "--server", m_server.socketFolder(),
                "--server-database", database};
    }
    std::unique_ptr<ServerConnection> connectTo(const QString& database, const QString& role)
    {
        return test::PostgresServer::connect(m_server.settingsFor(role, database));
    }
    test::UserFolders m_folders;
    test::PostgresServer m_server;

private Q_SLOTS:
    void initTestCase()
    {
        if (!m_server.problem().isEmpty())
            QSKIP(qPrintable(m_server.problem()));
    }

    // Two administrators set up the same empty server at once: one makes it,
    // the other waits and finds it made; every change is applied once.
    void twoCreatesAtOnce()
    {
        QProcess racers[2];
        for (QProcess& racer : racers)
            racer.start(SECADMIN, QStringList{"create", "--per-user"} + on("raced") +
                                      QStringList{"--server-user", test::PostgresServer::Superuser});
        for (QProcess& racer : racers) {
            QVERIFY(racer.waitForFinished(60000));
            QVERIFY2(racer.exitCode() == 0, racer.readAllStandardError().constData());
        }
        const std::unique_ptr<ServerConnection> owner = connectTo("raced", test::PostgresServer::Superuser);
        const QString migrations = QString::number(ServerSchema::migrations().size());
        QCOMPARE(test::column(*owner,
                              "SELECT count(*) || ' ' || count(DISTINCT version) || ' ' || max(version) "
                              "FROM nebra.schema_version"),
                 QStringList{migrations + ' ' + migrations + ' ' +
                             QString::number(ServerSchema::latestVersion())});
        QCOMPARE(test::column(*owner, "SELECT count(*) FROM nebra.policy"), QStringList{"1"});
        QCOMPARE(run(QStringList{"verify"} + on("raced")).exitCode, 0);
    }

    // A site moves from its embedded store to a new store on the server: the
    // trail comes along in order and verifies on both, rights and roles too;
    // passwords must be set anew.
    void migrateFromTheEmbeddedStore()
    {
        test::SecurityFixture site(m_folders.root() + "/embedded");
        // Where the tool looks for them beside --database.
        site.settings().siteKeyFile = site.settings().databasePath + ".key";
        site.settings().chainHeadFile = site.settings().databasePath + ".head";
        site.create();
        site.addUser("jsmith", "correct horse", "Jane Smith", {"Reader/Run"});
        const QStringList before = site.auditTexts();
        const QStringList server = on("migrated");
        QCOMPARE(run(QStringList{"create", "--per-user"} + server).exitCode, 0);
        const QStringList embedded{"--database", site.settings().databasePath};
        const test::AdminRun migrated = run(QStringList{"migrate"} + embedded + server);
        QVERIFY2(migrated.exitCode == 0, qPrintable(migrated.err));
        QVERIFY(migrated.out.contains(QLatin1String("reset-password")));
        // Once is all: the store is no longer empty.
        QCOMPARE(run(QStringList{"migrate"} + embedded + server).exitCode, 1);

        QCOMPARE(run(QStringList{"verify"} + server).exitCode, 0);
        QCOMPARE(run(QStringList{"verify", "--backend", "sqlite"} + embedded).exitCode, 0);
        QCOMPARE(test::column(*connectTo("migrated", test::PostgresServer::Superuser),
                              "SELECT text FROM nebra.audit_trail ORDER BY seq LIMIT ?", {before.size()}),
                 before);

        QCOMPARE(run(QStringList{"reset-password", "jsmith"} + server, "battery staple\n").exitCode, 0);
        const std::unique_ptr<ServerConnection> client = connectTo("migrated", ServerSettings::ClientRole);
        ServerSession session(*client, "pc");
        const ServerLogIn in = session.logIn("jsmith", SecretBytes("battery staple"));
        QCOMPARE(in.status, LogInStatus::Success);
        QVERIFY(in.mustChangePassword);
        QString error;
        QCOMPARE(session.isAllowed(in.token, "Reader", "Run", &error), std::optional<bool>(true));
    }

    // create, twice without harm, points the system-wide file at the server;
    // then the tool, without --backend, follows that file for the commands
    // that administer, read and undo, as on the embedded database.
    void createTwiceThenTheSameCommandsAsOnTheEmbeddedDatabase()
    {
        for (int i = 0; i < 2; ++i) {
            const test::AdminRun created =
                run({"create", "--backend", "postgresql", "--server", m_server.socketFolder()});
            QVERIFY2(created.exitCode == 0, qPrintable(created.err));
            QVERIFY(created.out.contains(QLatin1String("schema version")));
        }
        // Every workstation now finds the server there, and only the client role.
        SettingsStore system(m_folders.systemSettingsFile());
        QCOMPARE(system.value("Security/Backend", {}).toString(), "postgresql");
        QCOMPARE(system.value("Security/Server", {}).toString(), m_server.socketFolder());
        QCOMPARE(system.value("Security/ServerUser", {}).toString(), ServerSettings::ClientRole);
        const test::AdminToolCases cases(
            [this](const QStringList& a, const QByteArray& input) { return run(a, input); });
        cases.administersUsersAndRights();
        cases.anchorIsCheckedByVerify();
        // An entry a workstation wrote, which a spreadsheet would take for a formula.
        QCOMPARE(cases.run({"add-user", "pjones"}, "battery staple\n").exitCode, 0);
        const std::unique_ptr<ServerConnection> client =
            connectTo(ServerSettings::DefaultDatabase, ServerSettings::ClientRole);
        ServerSession session(*client, "pc");
        const ServerLogIn in = session.logIn("pjones", SecretBytes("battery staple"));
        QCOMPARE(in.status, LogInStatus::Success);
        const QString text = "=HYPERLINK(\"http://x\",\"ELISA, IgG\")";
        QString error;
        QVERIFY2(session.record(in.token, "General", text, &error) > 0, qPrintable(error));
        cases.auditExportsCsv(m_folders.root() + "/audit.csv", text);
        QCOMPARE(cases.run({"grant", "pjones", "Documents", "AcceptChange"}).exitCode, 0);
        cases.verifyDocumentsListsWhatNeedsAReviewer(
            m_folders.root() + "/data", [&](const DocumentChange& change) {
                QVERIFY2(session.recordDocument(in.token, change, &error), qPrintable(error));
            });
        QCOMPARE(cases.run({"grant", "jsmith", "Documents", "Sign"}).exitCode, 0);
        QCOMPARE(cases.run({"enable-user", "jsmith"}).exitCode, 0);
        const ServerLogIn signer = session.logIn("jsmith", SecretBytes("correct horse"));
        QCOMPARE(signer.status, LogInStatus::Success);
        cases.signaturesTellWhetherTheDocumentStillMatches(m_folders.root(), [&](const DocumentSignature& s) {
            return session.sign(signer.token, SecretBytes("correct horse"), s).signature;
        });
    }

    // Entries removed behind the triggers' back stop every append until the
    // administrator, having looked, seals the head afresh at what is left.
    void resealHeadAfterEntriesWereRemoved()
    {
        const test::AdminToolCases cases(
            [&](const QStringList& a, const QByteArray& input) { return run(a + on("resealed"), input); });
        QCOMPARE(cases.run({"create", "--per-user"}).exitCode, 0);
        for (const char* role : {"A", "B", "C"})
            QCOMPARE(cases.run({"add-role", role}).exitCode, 0);
        const std::unique_ptr<ServerConnection> owner =
            connectTo("resealed", test::PostgresServer::Superuser);
        test::script(*owner, QStringLiteral("SET ROLE nebra_owner; "
                                            "ALTER TABLE nebra.audit_trail DISABLE TRIGGER USER; "
                                            "DELETE FROM nebra.audit_trail WHERE seq > 1; "
                                            "ALTER TABLE nebra.audit_trail ENABLE TRIGGER USER"));
        QVERIFY(refusedSaying(cases.run({"verify"}),
                              "The chain head seals entry 3, but the trail ends at entry 1"));
        QVERIFY(refusedSaying(cases.run({"add-role", "D"}), "does not end at its chain head"));

        const test::AdminRun resealed = cases.run({"reseal-head"});
        QCOMPARE(resealed.exitCode, 0);
        QVERIFY(resealed.out.startsWith(QLatin1String("Before: The chain head seals entry 3")));
        QCOMPARE(cases.run({"verify"}).exitCode, 0);
        QCOMPARE(cases.newestTexts(1), QStringList{"Audit chain head sealed afresh by the administrator"});
        QCOMPARE(cases.run({"add-role", "D"}).exitCode, 0);
        // The head's guard is back in force.
        QCOMPARE(
            test::column(*owner, "SELECT tgenabled FROM pg_trigger WHERE tgname = 'audit_head_forward_only'"),
            QStringList{"O"});
    }
};

QTEST_GUILESS_MAIN(ServerAdminToolTest)
#include "ServerAdminToolTest.moc"
