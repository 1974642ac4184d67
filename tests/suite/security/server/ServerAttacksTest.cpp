// Attacks on the security server by those who hold the client role's
// password or an administrator's role, each carried out against a real
// server: reading other workstations' passwords and tokens from the
// server's activity view and log, holding the audit trail in an open
// transaction, using a token long after its session went idle, choosing a
// weak password past the dialog, and recording changes under someone
// else's name or re-chaining the trail as an administrator.

#include "AdminToolCases.h"
#include "PostgresServer.h"
#include "SecretBytes.h"
#include "SecuritySettings.h"
#include "ServerAdministration.h"
#include "ServerConnection.h"
#include "ServerSecurityBackend.h"
#include "ServerSession.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QSet>
#include <QtTest>

#include <atomic>
#include <functional>
#include <thread>

using namespace nebra;

const QString InsufficientPrivilege = "42501";
const auto openConnection = &test::PostgresServer::connect;

class ServerAttacksTest : public QObject
{
    Q_OBJECT

private:
    test::ServerSite m_site;

    // What a second session of the client role sees of the others' statements while calls run.
    QString watchedWhile(const std::function<void()>& calls)
    {
        std::atomic<bool> watching{true};
        QSet<QString> seen;
        std::thread watcher([&] {
            const std::unique_ptr<ServerConnection> observer = openConnection(m_site.server.client());
            while (watching)
                for (const QString& text :
                     test::column(*observer, "SELECT coalesce(query, '') FROM pg_stat_activity "
                                             "WHERE pid <> pg_backend_pid()"))
                    seen.insert(text);
        });
        calls();
        watching = false;
        watcher.join();
        return seen.values().join(QLatin1Char('\n'));
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QString problem = m_site.make([](ServerAdministration& a, QString* e) {
            return a.setPolicy(5, 4, e) && a.addUser("jsmith", {}, SecretBytes("correct horse"), e) &&
                   a.grant("jsmith", {"Reader", "Run"}, e) &&
                   a.addUser("pjones", {}, SecretBytes("battery staple"), e);
        });
        if (!problem.isEmpty())
            QSKIP(qPrintable(problem));
    }

    // A colleague with the client role's password watches the server's view of
    // every session and its log while the security manager's back end logs
    // jsmith in, records entries and changes her password, some of it failing:
    // neither ever shows a password or a session token.
    void noSecretInQueryTextOrLog()
    {
        // A hash cost that keeps each call running for a while, so that the watcher sees it running.
        m_site.admin([](ServerAdministration& a, QString* e) { return a.setPolicy(5, 10, e); });
        SecuritySettings settings;
        settings.backend = SecuritySettings::Backend::Server;
        settings.server = m_site.server.client();
        QString error;
        const std::unique_ptr<ServerSecurityBackend> manager = ServerSecurityBackend::open(settings, &error);
        QVERIFY2(manager, qPrintable(error));
        const QString seen = watchedWhile([&] {
            QCOMPARE(manager->logIn("jsmith", SecretBytes("correct horse")).status, LogInStatus::Success);
            QVERIFY(manager->append({}, "Reader", "Plate read").sequence > 0);
            QVERIFY(manager->storeNewPassword({}, SecretBytes("correct horse"), SecretBytes("new password 1"),
                                              &error));
            QVERIFY(manager
                        ->signDocument({}, SecretBytes("new password 2"),
                                       {"/x.pdf", QByteArray(32, 'a'), "Approved", {}, {}, 0, 0})
                        .sequence == 0);
            // A fault in the trail makes each call fail, so the server logs them as errors.
            m_site.superuser(
                QStringLiteral("CREATE FUNCTION public.fail() RETURNS trigger LANGUAGE plpgsql AS "
                               "$$ BEGIN RAISE EXCEPTION 'injected failure'; END $$; "
                               "CREATE TRIGGER injected BEFORE INSERT ON nebra.audit_trail FOR EACH ROW "
                               "EXECUTE FUNCTION public.fail()"));
            QCOMPARE(manager->logIn("jsmith", SecretBytes("new password 1")).status, LogInStatus::Error);
            QCOMPARE(manager->append({}, "Reader", "Plate read").sequence, 0);
            QVERIFY(!manager->storeNewPassword({}, SecretBytes("new password 1"),
                                               SecretBytes("new password 2"), &error));
            m_site.superuser("DROP TRIGGER injected ON nebra.audit_trail; DROP FUNCTION public.fail()");
        });
        manager->endSession({}, "Log out");
        m_site.admin([](ServerAdministration& a, QString* e) {
            return a.setPolicy(5, 4, e) && a.setPassword("jsmith", SecretBytes("correct horse"), false, e);
        });

        const QString log = m_site.server.logText();
        QVERIFY2(log.contains(QLatin1String("injected failure")), qPrintable(log)); // the errors were logged
        for (const char* secret : {"correct horse", "new password 1", "new password 2"})
            QVERIFY2(!seen.contains(QLatin1String(secret)) && !log.contains(QLatin1String(secret)), secret);
        // Whatever looks like a session token is no token the server keeps.
        static const QRegularExpression hex(QStringLiteral("[0-9a-f]{64}"));
        for (const QRegularExpressionMatch& m : hex.globalMatch(seen + QLatin1Char('\n') + log)) {
            const QByteArray hash = QCryptographicHash::hash(QByteArray::fromHex(m.captured(0).toLatin1()),
                                                             QCryptographicHash::Sha256);
            QCOMPARE(test::column(*m_site.owner, "SELECT count(*) FROM nebra.sessions WHERE token_hash = ?",
                                  {hash}),
                     QStringList{"0"});
        }
        // The client role cannot set the server's hiding back: ServerSchemaTest.
    }

    // A client logs in inside a transaction of its own and leaves it open,
    // holding the trail's head. Another workstation, even one that set no lock
    // time-out of its own, is refused with a message within the server's bound;
    // the open transaction is ended by the server, and the lab carries on.
    void anOpenTransactionDoesNotBlockTheLab()
    {
        const std::unique_ptr<ServerConnection> attacker = openConnection(m_site.server.client());
        const QString attackerPid = test::column(*attacker, "SELECT pg_backend_pid()").value(0);
        test::script(*attacker, "BEGIN; SELECT status FROM nebra.log_in('nobody', 'guess', 'attacker')");

        ServerSettings patient = m_site.server.client();
        patient.lockTimeoutSeconds = 0;
        patient.statementTimeoutSeconds = 0;
        std::atomic<bool> done{false};
        ServerLogIn answer;
        std::thread victim([&] {
            const std::unique_ptr<ServerConnection> c = openConnection(patient);
            answer = ServerSession(*c, "pc 2").logIn("pjones", SecretBytes("battery staple"));
            done = true;
        });
        const bool answered = QTest::qWaitFor([&] { return done.load(); }, 20000);
        if (!answered) // free the waiting workstation before failing, so the test ends
            m_site.superuser("SELECT pg_terminate_backend(" + attackerPid + ")");
        victim.join();
        QVERIFY2(answered, "a log-in waited without bound behind another connection's open transaction");
        QCOMPARE(answer.status, LogInStatus::Error);
        QVERIFY2(answer.error.startsWith("The security server is busy"), qPrintable(answer.error));

        QTRY_COMPARE_WITH_TIMEOUT(
            test::column(*m_site.owner, "SELECT count(*) FROM pg_stat_activity WHERE pid = " + attackerPid),
            QStringList{"0"}, 30000); // ended by the server, idle in a transaction
        const std::unique_ptr<ServerConnection> workstation = openConnection(m_site.server.client());
        QCOMPARE(ServerSession(*workstation, "pc 2").logIn("pjones", SecretBytes("battery staple")).status,
                 LogInStatus::Success);
    }

    // The Organiser that held the token was killed a while ago: once the site's
    // idle time-out has passed (the session's last use moved back), the token
    // checks nothing, records nothing and reads nothing; the server records the
    // time-out once, and the token stays dead.
    void idleTokensEndOnTheServer()
    {
        const std::unique_ptr<ServerConnection> client = openConnection(m_site.server.client());
        ServerSession session(*client, "pc");
        const ServerLogIn in = session.logIn("jsmith", SecretBytes("correct horse"));
        QCOMPARE(in.status, LogInStatus::Success);
        QCOMPARE(in.idleMinutes, SecuritySettings::DefaultTimeOutMinutes);
        QString error;
        QCOMPARE(session.touch(in.token, &error), std::optional<bool>(true));
        m_site.superuser("UPDATE nebra.sessions SET last_used_utc = last_used_utc - interval '16 minutes' "
                         "WHERE ended_utc IS NULL");

        QCOMPARE(session.isAllowed(in.token, "Reader", "Run", &error), std::optional<bool>(false));
        const std::pair<QString, QString> timedOut{
            "jsmith", "Session timed out on the server after 15 minutes without activity"};
        QCOMPARE(m_site.newestEntry(), timedOut);
        QCOMPARE(session.record(in.token, "Reader", "Forged", &error), 0);
        qint64 count = 0;
        QVERIFY(!session.countAudit(in.token, {}, &count, &error));
        QCOMPARE(session.touch(in.token, &error), std::optional<bool>(false));
        QCOMPARE(m_site.newestEntry(), timedOut); // recorded once
    }

    // A client calls change_password itself, past the Organiser's dialog: the
    // server applies the rules the administration tool applies.
    void changePasswordKeepsThePolicy()
    {
        m_site.admin([](ServerAdministration& a, QString* e) { return a.setSessionPolicy(15, 6, e); });
        const std::unique_ptr<ServerConnection> client = openConnection(m_site.server.client());
        ServerSession session(*client, "pc");
        const ServerLogIn in = session.logIn("pjones", SecretBytes("battery staple"));
        QCOMPARE(in.passwordMinimumLength, 6);
        // clang-format off
        for (const auto& [fresh, refusal] : {
                 std::pair{QByteArray("x"), QString("The password must be at least 6 characters long.")},
                 std::pair{QByteArray("PJONES"), QString("The password must not be the user name.")},
                 std::pair{QByteArray(257, 'a'), QString("The password must be at most 256 characters long.")},
                 std::pair{QByteArray("six ch"), QString()}}) {
            // clang-format on
            QString error;
            QCOMPARE(
                session.changePassword(in.token, SecretBytes("battery staple"), SecretBytes(fresh), &error),
                refusal.isEmpty() ? ServerPasswordChange::Changed : ServerPasswordChange::Error);
            QCOMPARE(error, refusal);
        }
        m_site.admin([](ServerAdministration& a, QString* e) { return a.setSessionPolicy(15, 8, e); });
    }

    // An administrator runs the tool under another login name's environment,
    // and tries to read the site key and rewrite the trail: the change is
    // recorded under the role the server logged in, and the key and the tables
    // stay out of reach. An administrator made a member of the owner role by
    // an earlier version loses that membership at the next create.
    void administratorsAreWhoTheServerSays()
    {
        m_site.superuser(QStringLiteral(
            "CREATE ROLE bob LOGIN IN ROLE nebra_admin; CREATE ROLE carol LOGIN IN ROLE nebra_owner"));
        const test::ProcessRun tool =
            test::runProgram(QStringLiteral(SECADMIN),
                             {"grant", "jsmith", "Reader", "Print", "--backend", "postgresql", "--server",
                              m_site.server.socketFolder(), "--server-user", "bob"},
                             {}, {"env", "SUDO_USER=alice", "USER=alice"});
        QVERIFY2(tool.exitCode == 0, qPrintable(tool.err));
        QCOMPARE(m_site.newestEntry(),
                 std::make_pair(QString("bob"), QString("Right granted to jsmith: Reader/Print")));

        QString error;
        // Making the site again moves carol.
        QVERIFY2(ServerSchema::createSite(m_site.server.superuser(), &error), qPrintable(error));
        for (const char* role : {"bob", "carol"}) {
            const std::unique_ptr<ServerConnection> administrator =
                openConnection(m_site.server.settingsFor(QLatin1String(role)));
            for (const char* statement : {"SELECT mac_key FROM nebra.site_key", "SET ROLE nebra_owner",
                                          "UPDATE nebra.audit_trail SET text = 'nothing' WHERE seq = 1",
                                          "SELECT nebra.append_audit('bob', 'pc', 'General', 'forged')"}) {
                QVERIFY2(!administrator->execScript(QLatin1String(statement), &error), statement);
                QCOMPARE(administrator->lastState(), InsufficientPrivilege);
            }
            QVERIFY2(ServerAdministration(*administrator, "pc").verify().ok, role);
        }
    }

    // A workstation holding the client role's password and a session of a user
    // without the right: it can neither read nor write the fingerprint table
    // past the server's functions, nor accept a change of a document.
    void documentRecordsOnlyThroughTheServer()
    {
        // The table and the owner's reading of it are tried with every other in ServerSchemaTest.
        const std::unique_ptr<ServerConnection> client = openConnection(m_site.server.client());
        QString error;
        ServerSession session(*client, QStringLiteral("pc"));
        const ServerLogIn in = session.logIn(QStringLiteral("jsmith"), SecretBytes("correct horse"));
        QCOMPARE(in.status, LogInStatus::Success);
        const DocumentFingerprint fingerprint{QStringLiteral("/x.apr"), QByteArray(32, 'a'), 1, 0};
        QCOMPARE(
            session.recordDocument(in.token, {DocumentEvent::Accepted, fingerprint, {}, {}, "fine"}, &error),
            0);
        QCOMPARE(client->lastState(), InsufficientPrivilege);
        QHash<QString, DocumentRecord> records;
        QVERIFY2(session.documentRecords(in.token, &records, &error), qPrintable(error));
        QVERIFY(!records.contains(QStringLiteral("/x.apr")));
    }

    // The owner's copy of a signature onto another document is no signature
    // of it: the server reads it as not matching its entry, and verify names
    // it. (The client role cannot write the table at all: ServerSchemaTest.)
    void aSignatureCopiedOntoAnotherDocumentIsCaught()
    {
        m_site.admin([](ServerAdministration& a, QString* e) {
            return a.addUser("asigner", "Ann Signer", SecretBytes("signing pass"), e) &&
                   a.grant("asigner", {"Documents", "Sign"}, e);
        });
        const std::unique_ptr<ServerConnection> client = openConnection(m_site.server.client());
        ServerSession session(*client, QStringLiteral("pc"));
        const ServerLogIn in = session.logIn(QStringLiteral("asigner"), SecretBytes("signing pass"));
        QCOMPARE(in.status, LogInStatus::Success);
        const SignResult signedOne =
            session.sign(in.token, SecretBytes("signing pass"),
                         {"/signed.pdf", QByteArray(32, 's'), "Approved", {}, {}, 0, 0});
        QVERIFY2(signedOne.sequence > 0, qPrintable(signedOne.error));
        m_site.superuser(
            "INSERT INTO nebra.document_signatures SELECT 1, '/copy.pdf', sha256, meaning, user_name, "
            "full_name, signed_utc FROM nebra.document_signatures WHERE path = '/signed.pdf'");

        QList<DocumentSignature> read;
        QString error;
        QVERIFY2(session.signatures(in.token, QStringLiteral("/copy.pdf"), &read, &error), qPrintable(error));
        QCOMPARE(read.size(), 1);
        QVERIFY(!read.first().intact);
        const QStringList found = ServerAdministration(*m_site.owner, "pc").alteredSignatures(&error);
        QCOMPARE(found, QStringList{SignatureEntries::alteredText({"/copy.pdf", {}, {}, {}, {}, 0, 1})});
    }
};

QTEST_GUILESS_MAIN(ServerAttacksTest)
#include "ServerAttacksTest.moc"
