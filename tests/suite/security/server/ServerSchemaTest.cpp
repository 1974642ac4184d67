// The security store on a database server: its schema comes up the same
// however often it is applied, the client role can reach no table and no
// owner function, and the audit trail's chain exposes what an owner changes
// behind the triggers.

#include "ServerSchema.h"
#include "PostgresServer.h"
#include "SecretBytes.h"
#include "ServerAdministration.h"
#include "ServerConnection.h"
#include "ServerSession.h"

#include <QtTest>

using namespace nebra;

namespace {

const QString InsufficientPrivilege = QStringLiteral("42501");

// Every table of the store: a column, and a row the client might try to slip in.
const QList<std::pair<QString, QString>>& tables()
{
    static const QList<std::pair<QString, QString>> list = {
        {QStringLiteral("nebra.site_key"), QStringLiteral("id (2, '\\x00')")},
        {QStringLiteral("nebra.policy"), QStringLiteral("id (2, 100, 4)")},
        {QStringLiteral("nebra.users"),
         QStringLiteral("id (99, 'eve', 'eve', '', '', false, 0, false, false)")},
        {QStringLiteral("nebra.roles"), QStringLiteral("id (99, 'evil', 'evil')")},
        {QStringLiteral("nebra.user_rights"), QStringLiteral("user_id (1, '*', '*')")},
        {QStringLiteral("nebra.role_rights"), QStringLiteral("role_id (1, '*', '*')")},
        {QStringLiteral("nebra.user_roles"), QStringLiteral("user_id (1, 1)")},
        {QStringLiteral("nebra.sessions"), QStringLiteral("token_hash ('\\x00', 1, 'pc', now(), NULL)")},
        {QStringLiteral("nebra.audit_trail"), QStringLiteral("seq (99, '', '', '', '', '', '\\x00')")},
        {QStringLiteral("nebra.audit_head"), QStringLiteral("id (2, 0, '\\x00')")},
        {QStringLiteral("nebra.schema_version"), QStringLiteral("version (99, 'x')")},
        {QStringLiteral("nebra.document_records"), QStringLiteral("path ('/x', '', 0, 0, 'accepted', 1)")},
    };
    return list;
}

} // namespace

class ServerSchemaTest : public QObject
{
    Q_OBJECT

private:
    // A fresh site database of its own, so that tampering in one row leaves the others alone.
    ServerSettings freshSite(const QString& database)
    {
        ServerSettings settings = m_server->superuser();
        settings.database = database;
        QString error;
        if (!ServerSchema::createSite(settings, &error))
            qFatal("%s", qPrintable(error));
        return settings;
    }

    std::unique_ptr<test::PostgresServer> m_server;

private Q_SLOTS:
    void initTestCase()
    {
        m_server = std::make_unique<test::PostgresServer>();
        if (!m_server->problem().isEmpty())
            QSKIP(qPrintable(m_server->problem()));
        m_server->createSite();
        // A user with a right, a role and a session, so that every table holds a row.
        const std::unique_ptr<ServerConnection> owner = test::PostgresServer::connect(m_server->superuser());
        ServerAdministration admin(*owner, QStringLiteral("pc"));
        QString error;
        QVERIFY2(admin.addUser(QStringLiteral("jsmith"), QStringLiteral("Jane Smith"),
                               SecretBytes("correct horse"), &error) &&
                     admin.grant(QStringLiteral("jsmith"), {QStringLiteral("Reader"), QStringLiteral("Run")},
                                 &error) &&
                     admin.addRole(QStringLiteral("Analyst"), &error) &&
                     admin.grantToRole(QStringLiteral("Analyst"),
                                       {QStringLiteral("Reports"), QStringLiteral("*")}, &error) &&
                     admin.assignRole(QStringLiteral("jsmith"), QStringLiteral("Analyst"), &error),
                 qPrintable(error));
    }

    void schemaIsAppliedOnce()
    {
        QString error;
        QVERIFY2(ServerSchema::createSite(m_server->superuser(), &error), qPrintable(error));
        const std::unique_ptr<ServerConnection> owner = test::PostgresServer::connect(m_server->superuser());
        QCOMPARE(ServerSchema::version(*owner, &error), ServerSchema::latestVersion());
        ServerResult q;
        QVERIFY(owner->exec(
            q, QStringLiteral("SELECT count(*), count(DISTINCT version) FROM nebra.schema_version"), {},
            &error));
        QVERIFY(q.next());
        QCOMPARE(q.value(0).toInt(), ServerSchema::migrations().size());
        QCOMPARE(q.value(1).toInt(), ServerSchema::migrations().size());
        QVERIFY(owner->exec(q, QStringLiteral("SELECT count(*) FROM nebra.policy"), {}, &error));
        QVERIFY(q.next());
        QCOMPARE(q.value(0).toInt(), 1);
    }

    // A table added later must be added to the list the privilege test tries.
    void everyTableIsTried()
    {
        const std::unique_ptr<ServerConnection> owner = test::PostgresServer::connect(m_server->superuser());
        ServerResult q;
        QString error;
        QVERIFY(
            owner->exec(q,
                        QStringLiteral("SELECT schemaname || '.' || tablename FROM pg_tables "
                                       "WHERE schemaname IN ('nebra', 'nebra_crypto', 'public') ORDER BY 1"),
                        {}, &error));
        QStringList present;
        while (q.next())
            present.append(q.value(0).toString());
        QStringList tried;
        for (const auto& [table, row] : tables())
            tried.append(table);
        tried.sort();
        QCOMPARE(present, tried);
    }

    void clientCannotTouchTablesOrOwnerCode_data()
    {
        QTest::addColumn<QString>("statement");
        for (const auto& [table, row] : tables()) {
            const QByteArray t = table.toUtf8();
            // clang-format off
            QTest::newRow(t + " select") << QStringLiteral("SELECT * FROM %1").arg(table);
            QTest::newRow(t + " insert") << QStringLiteral("INSERT INTO %1 VALUES %2").arg(table, row.section(QLatin1Char(' '), 1));
            QTest::newRow(t + " update") << QStringLiteral("UPDATE %1 SET %2 = %2").arg(table, row.section(QLatin1Char(' '), 0, 0));
            QTest::newRow(t + " delete") << QStringLiteral("DELETE FROM %1").arg(table);
            QTest::newRow(t + " truncate") << QStringLiteral("TRUNCATE %1").arg(table);
        }
        QTest::newRow("create in public") << QStringLiteral("CREATE TABLE public.mine(x int)");
        QTest::newRow("create in the store") << QStringLiteral("CREATE TABLE nebra.mine(x int)");
        QTest::newRow("temporary table") << QStringLiteral("CREATE TEMP TABLE mine(x int)");
        QTest::newRow("function in the store") << QStringLiteral("CREATE FUNCTION nebra.name_key(p int) RETURNS text LANGUAGE sql AS 'SELECT 1::text'");
        QTest::newRow("append an entry") << QStringLiteral("SELECT nebra.append_audit('x', 'pc', 'Security', 'forged')");
        QTest::newRow("verify") << QStringLiteral("SELECT * FROM nebra.verify_audit()");
        QTest::newRow("add a user") << QStringLiteral("SELECT nebra.admin_add_user('pc', 'eve', '', 'pw')");
        QTest::newRow("grant") << QStringLiteral("SELECT nebra.admin_grant('pc', 'jsmith', '*', '*')");
        QTest::newRow("unlock") << QStringLiteral("SELECT nebra.admin_unlock('pc', 'jsmith')");
        QTest::newRow("set a password") << QStringLiteral("SELECT nebra.admin_set_password('pc', 'jsmith', 'mine', false)");
        QTest::newRow("policy") << QStringLiteral("SELECT nebra.admin_set_policy('pc', 100, 4)");
        QTest::newRow("unknown user label") << QStringLiteral("SELECT nebra.unknown_user_label('jsmith')");
        QTest::newRow("crypto") << QStringLiteral("SELECT nebra_crypto.gen_random_bytes(4)");
        QTest::newRow("list users") << QStringLiteral("SELECT * FROM nebra.admin_list_users()");
        QTest::newRow("read the trail") << QStringLiteral("SELECT * FROM nebra.admin_audit_entries(0, 10)");
        QTest::newRow("reseal the head") << QStringLiteral("SELECT nebra.admin_reseal_head('pc')");
        QTest::newRow("unassign a role") << QStringLiteral("SELECT nebra.admin_unassign_role('pc', 'jsmith', 'Analysts')");
        QTest::newRow("review without a session") << QStringLiteral("SELECT nebra.review_audit_count('', '', '', '', '', '', 0)");
        QTest::newRow("review's filter text") << QStringLiteral("SELECT nebra.review_where('', '', '', '', '', 0)");
        // clang-format on
    }

    void clientCannotTouchTablesOrOwnerCode()
    {
        QFETCH(QString, statement);
        const std::unique_ptr<ServerConnection> client = test::PostgresServer::connect(m_server->client());
        QString error;
        QVERIFY2(!client->execScript(statement, &error), qPrintable(statement));
        QCOMPARE(client->lastState(), InsufficientPrivilege);
    }

    void clientCanRunItsFunctions()
    {
        const std::unique_ptr<ServerConnection> client = test::PostgresServer::connect(m_server->client());
        ServerSession session(*client, QStringLiteral("pc"));
        const ServerLogIn in = session.logIn(QStringLiteral("jsmith"), SecretBytes("correct horse"));
        QCOMPARE(in.status, LogInStatus::Success);
        QString error;
        QCOMPARE(session.isAllowed(in.token, QStringLiteral("Reports"), QStringLiteral("Print"), &error),
                 true);
        QVERIFY2(session.record(in.token, QStringLiteral("Reader"), QStringLiteral("Plate read"), &error) > 0,
                 qPrintable(error));
        // Reading the trail needs a right of its own, which the server checks itself.
        qint64 count = 0;
        QVERIFY(!session.countAudit(in.token, {}, &count, &error));
        QCOMPARE(client->lastState(), InsufficientPrivilege);
        QVERIFY2(session.logOut(in.token, QStringLiteral("Log out"), &error), qPrintable(error));
    }

    void triggersRefuseEvenTheOwner_data()
    {
        QTest::addColumn<QString>("statement");
        // clang-format off
        QTest::newRow("edit an entry") << QStringLiteral("UPDATE nebra.audit_trail SET text = 'nothing' WHERE seq = 1");
        QTest::newRow("delete an entry") << QStringLiteral("DELETE FROM nebra.audit_trail WHERE seq = 1");
        QTest::newRow("empty the trail") << QStringLiteral("TRUNCATE nebra.audit_trail");
        QTest::newRow("rewind the head") << QStringLiteral("UPDATE nebra.audit_head SET seq = seq - 1");
        // clang-format on
    }

    void triggersRefuseEvenTheOwner()
    {
        QFETCH(QString, statement);
        const std::unique_ptr<ServerConnection> owner = test::PostgresServer::connect(m_server->superuser());
        QString error;
        QVERIFY(!owner->execScript(QStringLiteral("SET ROLE nebra_owner; ") + statement, &error));
        QCOMPARE(owner->lastState(), InsufficientPrivilege);
    }

    void tamperingBehindTheTriggersIsDetected_data()
    {
        QTest::addColumn<QString>("tampering");
        QTest::addColumn<qint64>("firstBad"); // 0: the cut-off is only seen at the head
        // clang-format off
        QTest::newRow("text edited") << QStringLiteral("UPDATE nebra.audit_trail SET text = 'nothing' WHERE seq = 3") << qint64(3);
        QTest::newRow("user edited") << QStringLiteral("UPDATE nebra.audit_trail SET user_name = 'x' WHERE seq = 2") << qint64(2);
        QTest::newRow("entry removed") << QStringLiteral("DELETE FROM nebra.audit_trail WHERE seq = 2") << qint64(2);
        QTest::newRow("newest cut off") << QStringLiteral("DELETE FROM nebra.audit_trail WHERE seq >= 4") << qint64(0);
        QTest::newRow("entry slipped in") << QStringLiteral("INSERT INTO nebra.audit_trail SELECT seq + 100, utc, user_name, workstation, area, text, mac FROM nebra.audit_trail WHERE seq = 1") << qint64(6);
        QTest::newRow("entries swapped") << QStringLiteral("UPDATE nebra.audit_trail SET seq = seq + 1000 WHERE seq IN (2, 3); UPDATE nebra.audit_trail SET seq = CASE seq WHEN 1002 THEN 3 ELSE 2 END WHERE seq > 1000") << qint64(2);
        // clang-format on
    }

    // The owner drops the triggers, changes the trail and puts them back: verify
    // on the server finds the change, and no client appends onto the damage.
    void tamperingBehindTheTriggersIsDetected()
    {
        QFETCH(QString, tampering);
        QFETCH(qint64, firstBad);
        const ServerSettings site = freshSite(
            QString::fromLatin1(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('_')));
        const std::unique_ptr<ServerConnection> owner = test::PostgresServer::connect(site);
        ServerAdministration admin(*owner, QStringLiteral("pc"));
        QString error;
        for (int i = 0; i < 4; ++i) // entries 2..5 after the creation's
            QVERIFY2(admin.addRole(QStringLiteral("role%1").arg(i), &error), qPrintable(error));
        QVERIFY(admin.addUser(QStringLiteral("jsmith"), {}, SecretBytes("correct horse"), &error));
        QVERIFY(admin.verify().ok);

        QVERIFY2(owner->execScript(
                     QStringLiteral("SET ROLE nebra_owner; "
                                    "ALTER TABLE nebra.audit_trail DISABLE TRIGGER USER; ") +
                         tampering +
                         QStringLiteral("; ALTER TABLE nebra.audit_trail ENABLE TRIGGER USER; RESET ROLE"),
                     &error),
                 qPrintable(error));
        const AuditVerification verification = admin.verify();
        QVERIFY(!verification.ok);
        QCOMPARE(verification.firstBadSequence, firstBad);
        QVERIFY(!verification.message.isEmpty());

        if (firstBad == 0 || QByteArray(QTest::currentDataTag()) == "entry slipped in") {
            ServerSettings clientSite = m_server->client();
            clientSite.database = site.database;
            const std::unique_ptr<ServerConnection> client = test::PostgresServer::connect(clientSite);
            ServerSession session(*client, QStringLiteral("pc"));
            QCOMPARE(session.logIn(QStringLiteral("jsmith"), SecretBytes("correct horse")).status,
                     LogInStatus::Error);
        }
    }
};

QTEST_GUILESS_MAIN(ServerSchemaTest)
#include "ServerSchemaTest.moc"
