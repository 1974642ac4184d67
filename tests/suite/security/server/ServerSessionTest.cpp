// What a workstation gets from the security server: log-in outcomes and
// lockout decided by the server, rights only for a session's token, audit
// entries only for an open session, and many workstations writing one trail
// at once, and the server's answer to each password change. The messages of a
// password change and a server lost mid-session are the manager's tests on this
// back end (NebraSecurityManagerTest_postgresql, ServerManagerTest): the manager
// words an incorrect and a locking current password alike, so their difference is
// checked here.

#include "ServerSession.h"
#include "PostgresServer.h"
#include "SecretBytes.h"
#include "ServerAdministration.h"
#include "ServerConnection.h"

#include <QProcess>
#include <QSet>
#include <QtTest>

using namespace nebra;

class ServerSessionTest : public QObject
{
    Q_OBJECT

private:
    // The newest audit entry, as the owner reads it: user and text.
    std::pair<QString, QString> newestEntry()
    {
        ServerResult q;
        QString error;
        if (!m_owner->exec(
                q, QStringLiteral("SELECT user_name, text FROM nebra.audit_trail ORDER BY seq DESC LIMIT 1"),
                {}, &error) ||
            !q.next())
            return {};
        return {q.value(0).toString(), q.value(1).toString()};
    }
    void admin(const std::function<bool(ServerAdministration&, QString*)>& change)
    {
        ServerAdministration administration(*m_owner, QStringLiteral("pc"));
        QString error;
        QVERIFY2(change(administration, &error), qPrintable(error));
    }

    std::unique_ptr<test::PostgresServer> m_server;
    std::unique_ptr<ServerConnection> m_owner;
    std::unique_ptr<ServerConnection> m_client;

private Q_SLOTS:
    void initTestCase()
    {
        m_server = std::make_unique<test::PostgresServer>();
        if (!m_server->problem().isEmpty())
            QSKIP(qPrintable(m_server->problem()));
        m_server->createSite();
        m_owner = test::PostgresServer::connect(m_server->superuser());
        m_client = test::PostgresServer::connect(m_server->client());
        admin([](ServerAdministration& a, QString* e) {
            return a.setPolicy(3, 4, e) &&
                   a.addUser(QStringLiteral("jsmith"), QStringLiteral("Jane Smith"),
                             SecretBytes("correct horse"), e) &&
                   a.grant(QStringLiteral("jsmith"), {QStringLiteral("Reader"), QStringLiteral("Run")}, e) &&
                   a.addRole(QStringLiteral("Analyst"), e) &&
                   a.grantToRole(QStringLiteral("Analyst"), {QStringLiteral("Reports"), QStringLiteral("*")},
                                 e) &&
                   a.assignRole(QStringLiteral("jsmith"), QStringLiteral("Analyst"), e) &&
                   a.addUser(QStringLiteral("bob"), {}, SecretBytes("bobs secret"), e) &&
                   a.setDisabled(QStringLiteral("bob"), true, e) &&
                   a.addUser(QStringLiteral("Ådne"), {}, SecretBytes("fjord fjell"), e) &&
                   a.addUser(QStringLiteral("nopass"), {}, SecretBytes(), e);
        });
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
        QTest::newRow("name in capitals") << "JSMITH" << QByteArray("correct horse") << LogInStatus::Success << "jsmith" << "Log in";
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
        ServerSession session(*m_client, QStringLiteral("pc"));
        const ServerLogIn in = session.logIn(name, SecretBytes(password));
        QCOMPARE(in.status, status);
        QCOMPARE(in.token.isEmpty(), status != LogInStatus::Success);
        const auto [user, text] = newestEntry();
        QCOMPARE(text, recordedText);
        if (recordedUser.isEmpty()) {
            QVERIFY(user.startsWith(QLatin1String("unknown user #")));
            QVERIFY(!user.contains(name));
        } else {
            QCOMPARE(user, recordedUser);
        }
        // Failures before the threshold are forgotten at the next success.
        QVERIFY(session.logIn(QStringLiteral("jsmith"), SecretBytes("correct horse")).status ==
                LogInStatus::Success);
    }

    void lockoutAtTheThreshold()
    {
        admin([](ServerAdministration& a, QString* e) {
            return a.addUser(QStringLiteral("lee"), {}, SecretBytes("lee password"), e);
        });
        ServerSession session(*m_client, QStringLiteral("pc"));
        for (int i = 0; i < 3; ++i)
            QCOMPARE(session.logIn(QStringLiteral("lee"), SecretBytes("guess")).status, LogInStatus::Refused);
        QCOMPARE(newestEntry().second, QStringLiteral("Account locked after 3 failed log ins"));
        // Locked: the right password gets the same answer as a wrong one.
        QCOMPARE(session.logIn(QStringLiteral("lee"), SecretBytes("lee password")).status,
                 LogInStatus::Locked);
        QCOMPARE(session.logIn(QStringLiteral("lee"), SecretBytes("guess")).status, LogInStatus::Locked);
        QCOMPARE(newestEntry().second, QStringLiteral("Log in refused: account locked"));
        admin([](ServerAdministration& a, QString* e) { return a.unlock(QStringLiteral("lee"), e); });
        QCOMPARE(session.logIn(QStringLiteral("lee"), SecretBytes("lee password")).status,
                 LogInStatus::Success);
    }

    // The rights themselves are the manager's test, on either back end; here
    // what only a server session has: a forged token, and the session once ended, have none.
    void rightsNeedTheSessionsToken()
    {
        ServerSession session(*m_client, QStringLiteral("pc"));
        const ServerLogIn in = session.logIn(QStringLiteral("jsmith"), SecretBytes("correct horse"));
        QString error;
        const auto allowed = [&](const QString& token) {
            return session.isAllowed(token, QStringLiteral("Reports"), QStringLiteral("Print"), &error);
        };
        QCOMPARE(allowed(in.token), std::optional<bool>(true));
        QCOMPARE(allowed(QString(64, QLatin1Char('0'))), std::optional<bool>(false));
        QVERIFY(allowed(QStringLiteral("not a token")) != std::optional<bool>(true));
        QVERIFY(session.logOut(in.token, QStringLiteral("Log out"), &error));
        QCOMPARE(allowed(in.token), std::optional<bool>(false));
    }

    void entriesNeedAnOpenSession()
    {
        ServerSession session(*m_client, QStringLiteral("pc 7"));
        const ServerLogIn in = session.logIn(QStringLiteral("jsmith"), SecretBytes("correct horse"));
        QString error;
        const qint64 first =
            session.record(in.token, QStringLiteral("Reader"), QStringLiteral("Plate read"), &error);
        QCOMPARE(session.record(in.token, QStringLiteral("Reader"), QStringLiteral("Plate read"), &error),
                 first + 1);
        QCOMPARE(newestEntry(), std::make_pair(QStringLiteral("jsmith"), QStringLiteral("Plate read")));
        QVERIFY(session.logOut(in.token, QStringLiteral("Log out"), &error));
        QCOMPARE(session.record(in.token, QStringLiteral("Reader"), QStringLiteral("After the end"), &error),
                 0);
        QVERIFY(!error.isEmpty());
        QCOMPARE(newestEntry().second, QStringLiteral("Log out"));
    }

    // Wrong current passwords count like failed log-ins: at the site's threshold of 3 the change
    // answers Locked.
    void passwordChangeAnswers()
    {
        admin([](ServerAdministration& a, QString* e) {
            return a.addUser(QStringLiteral("kim"), {}, SecretBytes("first secret"), e);
        });
        ServerSession session(*m_client, QStringLiteral("pc"));
        ServerLogIn in = session.logIn(QStringLiteral("kim"), SecretBytes("first secret"));
        QString error;
        const auto change = [&](const char* current, const char* fresh) {
            return session.changePassword(in.token, SecretBytes(current), SecretBytes(fresh), &error);
        };
        QCOMPARE(change("first secret", "first secret"), ServerPasswordChange::Same);
        QCOMPARE(change("first secret", "second secret"), ServerPasswordChange::Changed);
        in = session.logIn(QStringLiteral("kim"), SecretBytes("second secret"));
        QCOMPARE(in.status, LogInStatus::Success);
        QCOMPARE(change("guess", "x"), ServerPasswordChange::Incorrect);
        QCOMPARE(change("guess", "x"), ServerPasswordChange::Incorrect);
        QCOMPARE(change("guess", "x"), ServerPasswordChange::Locked);
    }

    // Eight workstations log in, record and log out for a while, all at once:
    // every entry a writer was told is committed is there once, under that
    // writer's text, the sequence has no gaps and the chain holds.
    void workstationsWritingAtOnceLoseNothing()
    {
        ServerAdministration administration(*m_owner, QStringLiteral("pc"));
        const qint64 before = administration.verify().entryCount;
        std::vector<std::unique_ptr<QProcess>> writers;
        for (int i = 0; i < 8; ++i) {
            writers.push_back(std::make_unique<QProcess>());
            writers.back()->start(QStringLiteral(SERVER_WRITER),
                                  {m_server->socketFolder(), ServerSettings::DefaultDatabase,
                                   QStringLiteral("jsmith"), QStringLiteral("correct horse"),
                                   QStringLiteral("3000")});
        }
        qint64 reported = 0;
        QSet<qint64> sequences;
        for (const auto& writer : writers) {
            QVERIFY(writer->waitForFinished(120000));
            QVERIFY2(writer->exitCode() == 0, writer->readAllStandardError().constData());
            const QList<QByteArray> lines = writer->readAllStandardOutput().split('\n');
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
        ServerResult q;
        QString error;
        QVERIFY(m_owner->exec(
            q,
            QStringLiteral("SELECT seq FROM nebra.audit_trail WHERE seq > ? AND text LIKE 'Plate read by %'"),
            {before}, &error));
        QSet<qint64> stored;
        while (q.next())
            stored.insert(q.value(0).toLongLong());
        QCOMPARE(stored, sequences);
    }
};

QTEST_GUILESS_MAIN(ServerSessionTest)
#include "ServerSessionTest.moc"
