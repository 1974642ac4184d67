// What a workstation gets from the security server: log-in outcomes and
// lockout decided by the server, rights and audit entries only for an open
// session's token, and many workstations, of more than one OS user, writing
// one trail at once, and the server's answer to each password change. The
// messages of a password change and a server lost mid-session are the
// manager's tests on this back end (NebraSecurityManagerTest_postgresql,
// ServerManagerTest).

#include "ServerSession.h"
#include "PostgresServer.h"
#include "SecretBytes.h"
#include "ServerAdministration.h"
#include "ServerConnection.h"

#include <QProcess>
#include <QSet>
#include <QtTest>

#include <unistd.h>

using namespace nebra;

class ServerSessionTest : public QObject
{
    Q_OBJECT

private:
    test::ServerSite m_site;
    std::unique_ptr<ServerConnection> m_client;

private Q_SLOTS:
    void initTestCase()
    {
        const QString problem = m_site.make([](ServerAdministration& a, QString* e) {
            return a.setPolicy(3, 4, e) &&
                   a.addUser("jsmith", "Jane Smith", SecretBytes("correct horse"), e) &&
                   a.grant("jsmith", {"Reader", "Run"}, e) && a.addRole("Analyst", e) &&
                   a.grantToRole("Analyst", {"Reports", "*"}, e) && a.assignRole("jsmith", "Analyst", e) &&
                   a.addUser("bob", {}, SecretBytes("bobs secret"), e) && a.setDisabled("bob", true, e) &&
                   a.addUser("Ådne", {}, SecretBytes("fjord fjell"), e) &&
                   a.addUser("nopass", {}, SecretBytes(), e) &&
                   a.addUser("lee", {}, SecretBytes("lee password"), e) &&
                   a.addUser("kim", {}, SecretBytes("first secret"), e);
        });
        if (!problem.isEmpty())
            QSKIP(qPrintable(problem));
        m_client = test::PostgresServer::connect(m_site.server.client());
    }

    void logIn_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("password");
        QTest::addColumn<LogInStatus>("status");
        QTest::addColumn<QString>("recordedUser"); // empty: a keyed label, never what was typed
        QTest::addColumn<QString>("recordedText");
        // clang-format off
        QTest::newRow("right password") << "jsmith" << QByteArray("correct horse") << LogInStatus::Success << "jsmith" << "Log in";
        QTest::newRow("non-ASCII name in capitals") << "ÅDNE" << QByteArray("fjord fjell") << LogInStatus::Success << "Ådne" << "Log in";
        QTest::newRow("wrong password") << "jsmith" << QByteArray("Correct horse") << LogInStatus::Refused << "jsmith" << "Failed log in: wrong password";
        QTest::newRow("unknown user") << "correct horse" << QByteArray("jsmith") << LogInStatus::Refused << "" << "Failed log in: unknown user";
        QTest::newRow("no password set") << "nopass" << QByteArray("") << LogInStatus::Refused << "nopass" << "Failed log in: no password set";
        QTest::newRow("disabled, right password") << "bob" << QByteArray("bobs secret") << LogInStatus::Disabled << "bob" << "Log in refused: account disabled";
        QTest::newRow("disabled, wrong password") << "bob" << QByteArray("guess") << LogInStatus::Disabled << "bob" << "Log in refused: account disabled";
        // clang-format on
    }

    void logIn()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, password);
        QFETCH(LogInStatus, status);
        QFETCH(QString, recordedUser);
        QFETCH(QString, recordedText);
        ServerSession session(*m_client, "pc");
        const ServerLogIn in = session.logIn(name, SecretBytes(password));
        QCOMPARE(in.status, status);
        QCOMPARE(in.token.isEmpty(), status != LogInStatus::Success);
        const auto [user, text] = m_site.newestEntry();
        QCOMPARE(text, recordedText);
        if (recordedUser.isEmpty())
            QVERIFY(user.startsWith(QLatin1String("unknown user #")) && !user.contains(name));
        else
            QCOMPARE(user, recordedUser);
        // Failures before the threshold are forgotten at the next success.
        QVERIFY(session.logIn("jsmith", SecretBytes("correct horse")).status == LogInStatus::Success);
    }

    void lockoutAtTheThreshold()
    {
        ServerSession session(*m_client, "pc");
        for (int i = 0; i < 3; ++i)
            QCOMPARE(session.logIn("lee", SecretBytes("guess")).status, LogInStatus::Refused);
        QCOMPARE(m_site.newestEntry().second, "Account locked after 3 failed log ins");
        // Locked: the right password gets the same answer as a wrong one.
        QCOMPARE(session.logIn("lee", SecretBytes("lee password")).status, LogInStatus::Locked);
        QCOMPARE(session.logIn("lee", SecretBytes("guess")).status, LogInStatus::Locked);
        QCOMPARE(m_site.newestEntry().second, "Log in refused: account locked");
        m_site.admin([](ServerAdministration& a, QString* e) { return a.unlock("lee", e); });
        QCOMPARE(session.logIn("lee", SecretBytes("lee password")).status, LogInStatus::Success);
    }

    // The rights themselves are the manager's test, on either back end; here
    // what only a server session has: a forged token, and the session once
    // ended, have no rights and record nothing, and the trail is read only
    // with the reviewer's right, whatever the client checked.
    void rightsAndEntriesNeedTheSessionsToken()
    {
        ServerSession session(*m_client, "pc 7");
        const ServerLogIn in = session.logIn("jsmith", SecretBytes("correct horse"));
        QString error;
        const auto allowed = [&](const QString& token) {
            return session.isAllowed(token, "Reports", "Print", &error);
        };
        QCOMPARE(allowed(in.token), std::optional<bool>(true));
        QCOMPARE(allowed(QString(64, QLatin1Char('0'))), std::optional<bool>(false));
        QVERIFY(allowed("not a token") != std::optional<bool>(true));
        const qint64 first = session.record(in.token, "Reader", "Plate read", &error);
        QCOMPARE(session.record(in.token, "Reader", "Plate read", &error), first + 1);
        QCOMPARE(m_site.newestEntry(), std::make_pair(QString("jsmith"), QString("Plate read")));
        // Reading the trail needs a right of its own, which the server checks itself.
        qint64 count = 0;
        QVERIFY(!session.countAudit(in.token, {}, &count, &error));
        QCOMPARE(m_client->lastState(), "42501"); // insufficient privilege
        AuditVerification verification;
        QVERIFY(!session.verifyAudit(in.token, &verification, &error)); // a refusal is no verdict
        QVERIFY(session.logOut(in.token, "Log out", &error));
        QCOMPARE(allowed(in.token), std::optional<bool>(false));
        QCOMPARE(session.record(in.token, "Reader", "After the end", &error), 0);
        QVERIFY(!error.isEmpty());
        QCOMPARE(m_site.newestEntry().second, "Log out");
    }

    // Wrong current passwords count like failed log-ins: at the site's threshold of 3 the change
    // answers Locked.
    void passwordChangeAnswers()
    {
        ServerSession session(*m_client, "pc");
        ServerLogIn in = session.logIn("kim", SecretBytes("first secret"));
        QString error;
        const auto change = [&](const char* current, const char* fresh) {
            return session.changePassword(in.token, SecretBytes(current), SecretBytes(fresh), &error);
        };
        QCOMPARE(change("first secret", "first secret"), ServerPasswordChange::Same);
        QCOMPARE(change("first secret", "second secret"), ServerPasswordChange::Changed);
        in = session.logIn("kim", SecretBytes("second secret"));
        QCOMPARE(in.status, LogInStatus::Success);
        QCOMPARE(change("guess", "x"), ServerPasswordChange::Incorrect);
        QCOMPARE(change("guess", "x"), ServerPasswordChange::Incorrect);
        QCOMPARE(change("guess", "x"), ServerPasswordChange::Locked);
    }

    // Eight workstations log in, record and log out for a while, all at once
    // (one of them, when the test may, as another OS user): every entry a
    // writer was told is committed is there once, under that writer's text,
    // the sequence has no gaps and the chain holds.
    void workstationsWritingAtOnceLoseNothing()
    {
        ServerAdministration administration(*m_site.owner, "pc");
        const qint64 before = administration.verify().entryCount;
        QProcess writers[8];
        for (QProcess& writer : writers) {
            const QStringList asAnotherUser{"--reuid=64123", "--regid=64123", "--clear-groups"};
            writer.start("setpriv",
                         (&writer == writers && ::geteuid() == 0 ? asAnotherUser : QStringList{}) +
                             QStringList{"--", STORE_WORKER, "server", m_site.server.socketFolder(),
                                         ServerSettings::DefaultDatabase, "jsmith", "correct horse", "3000"});
        }
        qint64 reported = 0;
        QSet<qint64> sequences;
        for (QProcess& writer : writers) {
            QVERIFY(writer.waitForFinished(120000));
            QVERIFY2(writer.exitCode() == 0, writer.readAllStandardError().constData());
            const QList<QByteArray> lines = writer.readAllStandardOutput().split('\n');
            for (const QByteArray& line : lines) {
                reported += line.isEmpty() ? 0 : 1;
                if (line.startsWith("R "))
                    sequences.insert(line.mid(2).toLongLong());
            }
            QVERIFY(lines.size() > 5);
        }
        const AuditVerification verification = administration.verify();
        QVERIFY2(verification.ok, qPrintable(verification.message));
        QCOMPARE(verification.entryCount - before, reported);
        QSet<qint64> stored;
        for (const QString& seq : test::column(
                 *m_site.owner,
                 "SELECT seq FROM nebra.audit_trail WHERE seq > ? AND text LIKE 'Plate read by %'", {before}))
            stored.insert(seq.toLongLong());
        QCOMPARE(stored, sequences);
    }
};

QTEST_GUILESS_MAIN(ServerSessionTest)
#include "ServerSessionTest.moc"
