#include "AdminToolCases.h"
#include "SecurityFixture.h"
#include "UserFolders.h"

#include <QTest>

using namespace nebra;
using namespace nebra::test;

namespace {

// A database made with the tool's own defaults, which put the key and head beside it.
struct Site
{
    UserFolders folders;
    SecurityFixture fixture{folders.root() + "/site"};

    Site()
    {
        fixture.settings().siteKeyFile = fixture.settings().databasePath + ".key";
        fixture.settings().chainHeadFile = fixture.settings().databasePath + ".head";
        QCOMPARE(run({"create", "--per-user"}).exitCode, 0);
    }

    AdminRun run(const QStringList& arguments, const QByteArray& input = {}) const
    {
        return runAdminTool(QStringList{"--database", fixture.settings().databasePath} + arguments, input);
    }
};

} // namespace

// nebra-secadmin as an administrator runs it: a real process on a real
// database, passwords on standard input.
class AdminToolTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The cases the server's tool test runs too, one after the other on one database.
    void theSameCommandsAsOnTheServer()
    {
        Site o;
        const AdminToolCases cases(
            [&o](const QStringList& a, const QByteArray& input) { return o.run(a, input); });
        cases.administersUsersAndRights();
        QCOMPARE(o.fixture.auditTexts().first(), "Security database created");
        cases.anchorIsCheckedByVerify();
        const std::unique_ptr<SecurityStore> store = o.fixture.open();
        const QString text = "=HYPERLINK(\"http://x\",\"ELISA, IgG\")";
        QVERIFY(store->audit().append("jsmith", "General", text).sequence > 0);
        cases.auditExportsCsv(o.folders.root() + "/audit.csv", text);
        QString error;
        cases.verifyDocumentsListsWhatNeedsAReviewer(
            o.folders.root() + "/data", [&](const DocumentChange& change) {
                QVERIFY2(store->documents().record("jsmith", change, &error), qPrintable(error));
            });
        cases.signaturesTellWhetherTheDocumentStillMatches(o.folders.root(), [&](DocumentSignature s) {
            s.userName = QStringLiteral("jsmith");
            s.fullName = QStringLiteral("Jane Smith");
            return store->signatures().record(s).signature;
        });
        QCOMPARE(o.run({"verify"}).exitCode, 0);
    }

    // Passwords come only on standard input; a locked account is unlocked.
    void passwordsAreNeverTakenFromTheCommandLineAndUnlockAfterLockout()
    {
        Site o;
        const AdminRun withArgument = o.run({"add-user", "jsmith", "correct horse"});
        QCOMPARE(withArgument.exitCode, 2);
        QVERIFY(withArgument.err.contains(QLatin1String("never taken from the command line")));
        const AdminRun noInput = o.run({"add-user", "jsmith"});
        QCOMPARE(noInput.exitCode, 1);
        QCOMPARE(noInput.err, "nebra-secadmin: No password was given on standard input.\n");
        QCOMPARE(o.run({"list-users"}).out, QString());
        QCOMPARE(o.run({"fly"}).exitCode, 2);
        QCOMPARE(o.run({"add-user", "jsmith"}, "correct horse\n").exitCode, 0);
        {
            const std::unique_ptr<SecurityStore> store = o.fixture.open();
            bool locked = false;
            QString error;
            for (int i = 0; i < 5; ++i)
                QVERIFY(store->users().recordFailedLogIn("jsmith", 5, &locked, &error));
            QVERIFY(locked);
        }
        QVERIFY(o.run({"list-users"}).out.contains(QLatin1String("locked, 5 failed log-ins")));
        QCOMPARE(o.run({"unlock", "jsmith"}).exitCode, 0);
        QVERIFY(o.run({"list-users"}).out.contains(QLatin1String("\tenabled\t")));
        QCOMPARE(o.fixture.auditTexts().last(), "Account unlocked: jsmith");
    }

    // What verify finds is the trail's own test; here the tool says it, and
    // the head sealed afresh ends it.
    void verifyNamesTheFirstBadEntry()
    {
        Site o;
        QCOMPARE(o.run({"add-user", "jsmith"}, "correct horse\n").exitCode, 0);
        QCOMPARE(o.run({"add-user", "pjones"}, "battery staple\n").exitCode, 0);
        o.fixture.tamper({"DROP TRIGGER audit_trail_no_delete", "DELETE FROM audit_trail WHERE seq > 1"});
        const AdminRun verify = o.run({"verify"});
        QCOMPARE(verify.exitCode, 1);
        QVERIFY2(verify.out.startsWith("First bad entry: 2\nEntries 2 to 3 are missing"),
                 qPrintable(verify.out));
        QVERIFY(verify.out.endsWith(QLatin1String("The audit trail is NOT intact.\n")));
        QCOMPARE(o.run({"reseal-head"}).exitCode, 0);
        QCOMPARE(o.run({"verify"}).exitCode, 0);
    }
};

QTEST_GUILESS_MAIN(AdminToolTest)
#include "AdminToolTest.moc"
