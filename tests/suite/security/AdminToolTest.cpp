#include "AdminToolCases.h"
#include "SecurityFixture.h"
#include "UserFolders.h"

#include <QProcess>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

// nebra-secadmin as an administrator runs it: a real process on a real
// database, passwords on standard input.
class AdminToolTest : public QObject
{
    Q_OBJECT

    using Run = AdminRun;
    Run run(const QStringList& arguments, const QByteArray& input = {})
    {
        return runAdminTool(
            QStringList{QStringLiteral("--database"), m_fixture->settings().databasePath} + arguments, input);
    }
    AdminToolCases cases()
    {
        return AdminToolCases(
            [this](const QStringList& a, const QByteArray& input) { return run(a, input); });
    }
    std::unique_ptr<UserFolders> m_folders;
    std::unique_ptr<SecurityFixture> m_fixture;

private Q_SLOTS:
    void init()
    {
        m_folders = std::make_unique<UserFolders>();
        m_fixture = std::make_unique<SecurityFixture>(m_folders->root() + QStringLiteral("/site"));
        // The tool's own defaults put the key and head beside the database.
        m_fixture->settings().siteKeyFile = m_fixture->settings().databasePath + QStringLiteral(".key");
        m_fixture->settings().chainHeadFile = m_fixture->settings().databasePath + QStringLiteral(".head");
        QCOMPARE(run({QStringLiteral("create"), QStringLiteral("--per-user")}).exitCode, 0);
    }

    void administersUsersAndRights()
    {
        cases().administersUsersAndRights();
        QCOMPARE(m_fixture->auditTexts().first(), QStringLiteral("Security database created"));
        QCOMPARE(run({"verify"}).exitCode, 0);
    }

    void anchorIsCheckedByVerify() { cases().anchorIsCheckedByVerify(); }

    void passwordsAreNeverTakenFromTheCommandLine()
    {
        const Run withArgument = run({"add-user", "jsmith", "correct horse"});
        QCOMPARE(withArgument.exitCode, 2);
        QVERIFY(withArgument.err.contains(QLatin1String("never taken from the command line")));
        const Run noInput = run({"add-user", "jsmith"});
        QCOMPARE(noInput.exitCode, 1);
        QCOMPARE(noInput.err, QStringLiteral("nebra-secadmin: No password was given on standard input.\n"));
        QCOMPARE(run({"list-users"}).out, QString());
        QCOMPARE(run({QStringLiteral("fly")}).exitCode, 2);
    }

    void unlockAfterLockout()
    {
        QCOMPARE(run({"add-user", "jsmith"}, "correct horse\n").exitCode, 0);
        {
            const std::unique_ptr<SecurityStore> store = m_fixture->open();
            bool locked = false;
            QString error;
            for (int i = 0; i < 5; ++i)
                QVERIFY(store->users().recordFailedLogIn(QStringLiteral("jsmith"), 5, &locked, &error));
            QVERIFY(locked);
        }
        QVERIFY(run({"list-users"}).out.contains(QLatin1String("locked, 5 failed log-ins")));
        QCOMPARE(run({"unlock", "jsmith"}).exitCode, 0);
        QVERIFY(run({"list-users"}).out.contains(QLatin1String("\tenabled\t")));
        QCOMPARE(m_fixture->auditTexts().last(), QStringLiteral("Account unlocked: jsmith"));
    }

    void auditExportsCsv()
    {
        const QString text = QStringLiteral("=HYPERLINK(\"http://x\",\"ELISA, IgG\")");
        {
            const std::unique_ptr<SecurityStore> store = m_fixture->open();
            store->audit().append(QStringLiteral("jsmith"), QStringLiteral("General"), text);
        }
        cases().auditExportsCsv(m_folders->root() + QStringLiteral("/audit.csv"), text);
    }

    void verifyNamesTheFirstBadEntry_data()
    {
        QTest::addColumn<QStringList>("statements");
        QTest::addColumn<QString>("firstBad");
        QTest::newRow("edited")
            << QStringList{"DROP TRIGGER audit_trail_no_update",
                           "UPDATE audit_trail SET text = 'User added: mallory' WHERE seq = 3"}
            << "First bad entry: 3\nEntry 3 has been altered";
        QTest::newRow("cut off") << QStringList{"DROP TRIGGER audit_trail_no_delete",
                                                "DELETE FROM audit_trail WHERE seq > 1"}
                                 << "First bad entry: 2\nEntries 2 to 3 are missing";
    }

    void verifyNamesTheFirstBadEntry()
    {
        QFETCH(QStringList, statements);
        QFETCH(QString, firstBad);
        QCOMPARE(run({"add-user", "jsmith"}, "correct horse\n").exitCode, 0);
        QCOMPARE(run({"add-user", "pjones"}, "battery staple\n").exitCode, 0);
        m_fixture->tamper(statements);
        const Run verify = run({"verify"});
        QCOMPARE(verify.exitCode, 1);
        QVERIFY2(verify.out.startsWith(firstBad), qPrintable(verify.out));
        QVERIFY(verify.out.endsWith(QLatin1String("The audit trail is NOT intact.\n")));
        // Changes are refused while the trail is cut off, until the administrator re-seals it.
        if (QTest::currentDataTag() == QLatin1String("cut off")) {
            QCOMPARE(run({"reseal-head"}).exitCode, 0);
            QCOMPARE(run({"verify"}).exitCode, 0);
        }
    }
};

QTEST_GUILESS_MAIN(AdminToolTest)
#include "AdminToolTest.moc"
