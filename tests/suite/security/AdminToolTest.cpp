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

    struct Run
    {
        int exitCode = -1;
        QString out;
        QString err;
    };
    Run run(const QStringList& arguments, const QByteArray& input = {})
    {
        QProcess process;
        process.start(QStringLiteral(SECADMIN),
                      QStringList{QStringLiteral("--database"), m_fixture->settings().databasePath} +
                          arguments);
        if (!process.waitForStarted(10000))
            return {};
        process.write(input);
        process.closeWriteChannel();
        if (!process.waitForFinished(30000))
            return {};
        const QString err = QString::fromUtf8(process.readAllStandardError());
        if (process.exitCode() != 0)
            qDebug("nebra-secadmin %s: %s", qPrintable(arguments.join(QLatin1Char(' '))), qPrintable(err));
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()), err};
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
        QCOMPARE(run({"add-user", "jsmith", "--full-name", "Jane Smith"}, "correct horse\n").exitCode, 0);
        QCOMPARE(run({"add-role", "Analysts"}).exitCode, 0);
        QCOMPARE(run({"grant-role", "Analysts", "AuthorisationsGeneral", "RunProtocol"}).exitCode, 0);
        QCOMPARE(run({"assign-role", "jsmith", "Analysts"}).exitCode, 0);
        QCOMPARE(run({"grant", "jsmith", "Instrumentation", "SelectDriver"}).exitCode, 0);
        QCOMPARE(run({"disable-user", "jsmith"}).exitCode, 0);
        const Run list = run({"list-users"});
        QCOMPARE(list.exitCode, 0);
        QCOMPARE(
            list.out,
            QStringLiteral(
                "jsmith\tJane Smith\tdisabled\troles: Analysts\trights: Instrumentation/SelectDriver\n"));

        const Run refused = run({"add-user", "jsmith"}, "another password\n");
        QCOMPARE(refused.exitCode, 1);
        QCOMPARE(refused.err, QStringLiteral("nebra-secadmin: There is already a user \"jsmith\".\n"));

        const QStringList texts = m_fixture->auditTexts();
        QCOMPARE(texts,
                 QStringList(
                     {"Security database created", "User added: jsmith (Jane Smith)", "Role added: Analysts",
                      "Right granted to role Analysts: AuthorisationsGeneral/RunProtocol",
                      "Role Analysts given to jsmith",
                      "Right granted to jsmith: Instrumentation/SelectDriver", "User disabled: jsmith"}));
        QCOMPARE(run({"verify"}).exitCode, 0);
    }

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
        {
            const std::unique_ptr<SecurityStore> store = m_fixture->open();
            store->audit().append(QStringLiteral("jsmith"), QStringLiteral("General"),
                                  QStringLiteral("Open protocol for edit: ELISA, \"IgG\".apr"));
        }
        const QString csv = m_folders->root() + QStringLiteral("/audit.csv");
        QCOMPARE(run({"audit", "--csv", csv}).exitCode, 0);
        QFile file(csv);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = file.readAll().split('\n');
        QCOMPARE(lines.size(), 4); // header, two entries, the empty rest after the last line end
        QCOMPARE(lines[0], QByteArray("Sequence,Time (UTC),User,Workstation,Area,Text,MAC\r"));
        QVERIFY2(lines[2].startsWith("2,"), lines[2].constData());
        QVERIFY2(lines[2].contains(",jsmith,") &&
                     lines[2].contains(",General,\"Open protocol for edit: ELISA, \"\"IgG\"\".apr\","),
                 lines[2].constData());

        const Run printed = run({"audit"});
        QCOMPARE(printed.out.count(QLatin1Char('\n')), 2);
        QVERIFY(printed.out.contains(QLatin1String("\tjsmith\t")));
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
