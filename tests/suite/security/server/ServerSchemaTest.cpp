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

namespace {

const QString InsufficientPrivilege = "42501";

// Every table of the store: a column, and a row the client might try to slip in.
const QList<std::pair<QString, QString>>& tables()
{
    static const QList<std::pair<QString, QString>> list = {
        {"nebra.site_key", "id (2, '\\x00')"},
        {"nebra.policy", "id (2, 100, 4)"},
        {"nebra.users", "id (99, 'eve', 'eve', '', '', false, 0, false, false)"},
        {"nebra.roles", "id (99, 'evil', 'evil')"},
        {"nebra.user_rights", "user_id (1, '*', '*')"},
        {"nebra.role_rights", "role_id (1, '*', '*')"},
        {"nebra.user_roles", "user_id (1, 1)"},
        {"nebra.sessions", "token_hash ('\\x00', 1, 'pc', now(), NULL)"},
        {"nebra.audit_trail", "seq (99, '', '', '', '', '', '\\x00')"},
        {"nebra.audit_head", "id (2, 0, '\\x00')"},
        {"nebra.schema_version", "version (99, 'x')"},
        {"nebra.document_records", "path ('/x', '', 0, 0, 'accepted', 1)"},
        {"nebra.document_signatures", "seq (99, '/x', '\\x00', 'Approved', 'eve', 'Eve', '')"},
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
        const ServerSettings settings = m_server.settingsFor(test::PostgresServer::Superuser, database);
        QString error;
        if (!ServerSchema::createSite(settings, &error))
            qFatal("%s", qPrintable(error));
        return settings;
    }

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

    // A table added later must be added to the list the privilege test tries.
    void everyTableIsTried()
    {
        const std::unique_ptr<ServerConnection> owner = test::PostgresServer::connect(m_server.superuser());
        const QStringList present =
            test::column(*owner, "SELECT schemaname || '.' || tablename FROM pg_tables "
                                 "WHERE schemaname IN ('nebra', 'nebra_crypto', 'public') ORDER BY 1");
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

    void triggersRefuseEvenTheOwner_data()
    {
        QTest::addColumn<QString>("statement");
        // clang-format off
        QTest::newRow("edit an entry") << "UPDATE nebra.audit_trail SET text = 'nothing' WHERE seq = 1";
        QTest::newRow("delete an entry") << "DELETE FROM nebra.audit_trail WHERE seq = 1";
        QTest::newRow("empty the trail") << "TRUNCATE nebra.audit_trail";
        QTest::newRow("rewind the head") << "UPDATE nebra.audit_head SET seq = seq - 1";
        // clang-format on
    }

    void triggersRefuseEvenTheOwner()
    {
        QFETCH(QString, statement);
        const std::unique_ptr<ServerConnection> owner = test::PostgresServer::connect(m_server.superuser());
        QString error;
        QVERIFY(!owner->execScript("SET ROLE nebra_owner; " + statement, &error));
        QCOMPARE(owner->lastState(), InsufficientPrivilege);
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
        const ServerSettings site = freshSite(
            QString::fromLatin1(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('_')));
        const std::unique_ptr<ServerConnection> owner = test::PostgresServer::connect(site);
        ServerAdministration admin(*owner, "pc");
        QString error;
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
