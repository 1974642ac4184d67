// The security store on a database server (its schema applied once however
// often create runs: ServerAdminToolTest): the client role can reach no
// table and no owner function, and the audit trail's chain exposes what an
// owner changes behind the triggers.

#include "ServerSchema.h"
#include "PostgresServer.h"
#include "SecretBytes.h"
#include "ServerAdministration.h"
#include "ServerConnection.h"
#include "ServerSession.h"

#include <QtTest>

using namespace nebra;

const QString InsufficientPrivilege = "42501";

class ServerSchemaTest : public QObject
{
    Q_OBJECT

private:
    test::ServerSite m_site;
    const test::PostgresServer& m_server = m_site.server;

private Q_SLOTS:
    void initTestCase()
    {
        // A user with a right, a role and a session, so that every table holds a row.
        const QString problem = m_site.make([](ServerAdministration& a, QString* e) {
            return a.addUser("jsmith", "Jane Smith", SecretBytes("correct horse"), e) &&
                   a.grant("jsmith", {"Reader", "Run"}, e) && a.addRole("Analyst", e) &&
                   a.grantToRole("Analyst", {"Reports", "*"}, e) && a.assignRole("jsmith", "Analyst", e);
        });
        if (!problem.isEmpty())
            QSKIP(qPrintable(problem));
    }

    void clientCannotTouchTablesOrOwnerCode_data()
    {
        QTest::addColumn<QString>("statement");
        // Every table there is, as the owner sees them (so that one added later is tried too), and a column.
        const QStringList tables =
            test::column(*m_site.owner,
                         "SELECT c.oid::regclass || ' ' || a.attname FROM pg_class c JOIN pg_attribute a ON "
                         "a.attrelid = c.oid AND a.attnum = 1 WHERE c.relkind = 'r' AND "
                         "c.relnamespace::regnamespace::text IN ('nebra', 'nebra_crypto', 'public')");
        QVERIFY(!tables.isEmpty());
        for (const QString& tableAndColumn : tables) {
            const QString table = tableAndColumn.section(QLatin1Char(' '), 0, 0);
            const QByteArray t = table.toUtf8();
            // clang-format off
            QTest::newRow(t + " select") << QStringLiteral("SELECT * FROM %1").arg(table);
            QTest::newRow(t + " insert") << QStringLiteral("INSERT INTO %1 DEFAULT VALUES").arg(table);
            QTest::newRow(t + " update") << QStringLiteral("UPDATE %1 SET %2 = %2").arg(table, tableAndColumn.section(QLatin1Char(' '), 1));
            QTest::newRow(t + " delete") << QStringLiteral("DELETE FROM %1").arg(table);
            QTest::newRow(t + " truncate") << QStringLiteral("TRUNCATE %1").arg(table);
        }
        QTest::newRow("create in public") << "CREATE TABLE public.mine(x int)";
        QTest::newRow("create in the store") << "CREATE TABLE nebra.mine(x int)";
        QTest::newRow("temporary table") << "CREATE TEMP TABLE mine(x int)";
        QTest::newRow("function in the store") << "CREATE FUNCTION nebra.name_key(p int) RETURNS text LANGUAGE sql AS 'SELECT 1::text'";
        QTest::newRow("append an entry") << "SELECT nebra.append_audit('x', 'pc', 'Security', 'forged')";
        QTest::newRow("verify") << "SELECT * FROM nebra.verify_audit()";
        QTest::newRow("add a user") << "SELECT nebra.admin_add_user('pc', 'eve', '', 'pw')";
        QTest::newRow("grant") << "SELECT nebra.admin_grant('pc', 'jsmith', '*', '*')";
        QTest::newRow("unlock") << "SELECT nebra.admin_unlock('pc', 'jsmith')";
        QTest::newRow("set a password") << "SELECT nebra.admin_set_password('pc', 'jsmith', 'mine', false)";
        QTest::newRow("policy") << "SELECT nebra.admin_set_policy('pc', 100, 4)";
        QTest::newRow("unknown user label") << "SELECT nebra.unknown_user_label('jsmith')";
        QTest::newRow("crypto") << "SELECT nebra_crypto.gen_random_bytes(4)";
        QTest::newRow("list users") << "SELECT * FROM nebra.admin_list_users()";
        QTest::newRow("read the trail") << "SELECT * FROM nebra.admin_audit_entries(0, 10)";
        QTest::newRow("read the document records") << "SELECT * FROM nebra.admin_document_records()";
        QTest::newRow("reseal the head") << "SELECT nebra.admin_reseal_head('pc')";
        QTest::newRow("unassign a role") << "SELECT nebra.admin_unassign_role('pc', 'jsmith', 'Analysts')";
        QTest::newRow("review without a session") << "SELECT nebra.review_audit_count('', '', '', '', '', '', 0)";
        QTest::newRow("review's filter text") << "SELECT nebra.review_where('', '', '', '', '', 0)";
        // What keeps statements' texts out of other sessions' sight and out of the log.
        QTest::newRow("show statements to others") << "SET track_activities = on";
        QTest::newRow("log failed statements") << "SET log_min_error_statement = error";
        // clang-format on
    }

    void clientCannotTouchTablesOrOwnerCode()
    {
        QFETCH(QString, statement);
        const std::unique_ptr<ServerConnection> client = test::PostgresServer::connect(m_server.client());
        QString error;
        QVERIFY2(!client->execScript(statement, &error), qPrintable(statement));
        QCOMPARE(client->lastState(), InsufficientPrivilege);
    }

    void triggersRefuseEvenTheOwner()
    {
        QString error;
        for (const QString statement :
             {"UPDATE nebra.audit_trail SET text = 'nothing' WHERE seq = 1",
              "DELETE FROM nebra.audit_trail WHERE seq = 1", "TRUNCATE nebra.audit_trail",
              "UPDATE nebra.audit_head SET seq = seq - 1"}) {
            QVERIFY2(!m_site.owner->execScript("SET ROLE nebra_owner; " + statement, &error),
                     qPrintable(statement));
            QCOMPARE(m_site.owner->lastState(), InsufficientPrivilege);
        }
    }

    void tamperingBehindTheTriggersIsDetected_data()
    {
        QTest::addColumn<QString>("tampering");
        QTest::addColumn<qint64>("firstBad"); // 0: the cut-off is only seen at the head
        // clang-format off
        QTest::newRow("text edited") << "UPDATE nebra.audit_trail SET text = 'nothing' WHERE seq = 3" << qint64(3);
        QTest::newRow("user edited") << "UPDATE nebra.audit_trail SET user_name = 'x' WHERE seq = 2" << qint64(2);
        QTest::newRow("entry removed") << "DELETE FROM nebra.audit_trail WHERE seq = 2" << qint64(2);
        QTest::newRow("newest cut off") << "DELETE FROM nebra.audit_trail WHERE seq >= 4" << qint64(0);
        QTest::newRow("entry slipped in") << "INSERT INTO nebra.audit_trail SELECT seq + 100, utc, user_name, workstation, area, text, mac FROM nebra.audit_trail WHERE seq = 1" << qint64(6);
        QTest::newRow("entries swapped") << "UPDATE nebra.audit_trail SET seq = seq + 1000 WHERE seq IN (2, 3); UPDATE nebra.audit_trail SET seq = CASE seq WHEN 1002 THEN 3 ELSE 2 END WHERE seq > 1000" << qint64(2);
        // clang-format on
    }

    // The owner drops the triggers, changes the trail and puts them back: verify
    // on the server finds the change, and no client appends onto the damage.
    void tamperingBehindTheTriggersIsDetected()
    {
        QFETCH(QString, tampering);
        QFETCH(qint64, firstBad);
        // A fresh site database of its own, so that tampering in one row leaves the others alone.
        const ServerSettings site = m_server.settingsFor(
            test::PostgresServer::Superuser, QString::fromLatin1(QTest::currentDataTag()).replace(' ', '_'));
        QString error;
        QVERIFY2(ServerSchema::createSite(site, &error), qPrintable(error));
        const std::unique_ptr<ServerConnection> owner = test::PostgresServer::connect(site);
        ServerAdministration admin(*owner, "pc");
        for (int i = 0; i < 4; ++i) // entries 2..5 after the creation's
            QVERIFY2(admin.addRole(QStringLiteral("role%1").arg(i), &error), qPrintable(error));
        QVERIFY(admin.addUser("jsmith", {}, SecretBytes("correct horse"), &error));
        QVERIFY(admin.verify().ok);

        test::script(*owner, "SET ROLE nebra_owner; ALTER TABLE nebra.audit_trail DISABLE TRIGGER USER; " +
                                 tampering +
                                 "; ALTER TABLE nebra.audit_trail ENABLE TRIGGER USER; RESET ROLE");
        const AuditVerification verification = admin.verify();
        QVERIFY(!verification.ok);
        QCOMPARE(verification.firstBadSequence, firstBad);
        QVERIFY(!verification.message.isEmpty());

        if (firstBad == 0 || QByteArray(QTest::currentDataTag()) == "entry slipped in") {
            const std::unique_ptr<ServerConnection> client = test::PostgresServer::connect(
                m_server.settingsFor(ServerSettings::ClientRole, site.database));
            ServerSession session(*client, "pc");
            QCOMPARE(session.logIn("jsmith", SecretBytes("correct horse")).status, LogInStatus::Error);
        }
    }
};

QTEST_GUILESS_MAIN(ServerSchemaTest)
#include "ServerSchemaTest.moc"
