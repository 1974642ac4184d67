#include "DocumentFolders.h"
#include "TestFiles.h"
#include "ToolSite.h"

#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTest>

#include <cerrno>
#include <cstring>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

using namespace nebra;
using namespace nebra::test;

namespace {

// A site of jsmith and mallory with the roles "Readers" (Reader/Run) and "Admins" (every right).
struct Site : ToolSite
{
    Site()
        : ToolSite({"--per-user"}, {{"add-role", "Readers"},
                                    {"grant-role", "Readers", "Reader", "Run"},
                                    {"add-role", "Admins"},
                                    {"grant-role", "Admins", "*", "*"}})
    {
    }

    // Attaches a database of the test's own as "saved", for rows kept and written back.
    QString attach() const { return QStringLiteral("ATTACH '%1/saved.db' AS saved").arg(folders.root()); }
};

} // namespace

// Attacks on the embedded store that need no site key, carried out with an
// SQLite connection and file copies of their own, as any member of the
// site group could: rows written back from before a revoke, rows removed,
// role names swapped, entries cut off with an older head file written
// back, an unknown user's label guessed back, and a full disk.
class StoreAttacksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // 2b, 7: rows edited with SQLite behind the suite's back, slipped in, or
    // kept from before an administrator took something away and written back
    // with their old MAC grant nothing: the right they would give is refused,
    // the password typed for a user they change is refused, and verify names
    // them.
    void rowsChangedBehindTheSuitesBackGrantNothing_data()
    {
        QTest::addColumn<QList<QStringList>>(
            "before");                     // tool commands; {"lock"}: jsmith guesses until locked
        QTest::addColumn<QString>("kept"); // a table kept, before takeAway runs
        QTest::addColumn<QStringList>("takeAway");
        QTest::addColumn<QString>("tampering");
        QTest::addColumn<QString>("user");     // who may not edit layouts now
        QTest::addColumn<QString>("password"); // typed for user afterwards, refused; empty: none
        const QStringList toJsmith{"grant", "jsmith", "Layouts", "Edit"};
        const QStringList toMallory{"grant", "mallory", "Layouts", "Edit"};
        using Commands = QList<QStringList>;
        // clang-format off
        QTest::newRow("locked account unlocked") << Commands{toJsmith, {"lock"}} << "" << QStringList{} << "UPDATE users SET locked = 0, failed_logins = 0 WHERE name = 'jsmith'" << "jsmith" << "correct horse";
        QTest::newRow("disabled account enabled") << Commands{toJsmith, {"disable-user", "jsmith"}} << "" << QStringList{} << "UPDATE users SET disabled = 0 WHERE name = 'jsmith'" << "jsmith" << "correct horse";
        QTest::newRow("password hash replaced") << Commands{toJsmith} << "" << QStringList{} << "UPDATE users SET password_hash = (SELECT password_hash FROM users WHERE name = 'mallory') WHERE name = 'jsmith'" << "jsmith" << "battery staple";
        QTest::newRow("every right slipped in") << Commands{} << "" << QStringList{} << "INSERT INTO user_rights(user_id, area, operation) SELECT id, '*', '*' FROM users WHERE name = 'mallory'" << "mallory" << "";
        QTest::newRow("admin role joined") << Commands{} << "" << QStringList{} << "INSERT INTO user_roles(user_id, role_id) SELECT u.id, r.id FROM users u, roles r WHERE u.name = 'mallory'" << "mallory" << "";
        QTest::newRow("right moved to another user") << Commands{toJsmith} << "" << QStringList{} << "UPDATE user_rights SET user_id = (SELECT id FROM users WHERE name = 'mallory')" << "mallory" << "";
        QTest::newRow("right, after revoke") << Commands{toMallory} << "user_rights" << QStringList{"revoke", "mallory", "Layouts", "Edit"} << "INSERT INTO main.user_rights SELECT * FROM saved.kept" << "mallory" << "";
        QTest::newRow("membership, after unassign-role") << Commands{{"assign-role", "mallory", "Admins"}} << "user_roles" << QStringList{"unassign-role", "mallory", "Admins"} << "INSERT INTO main.user_roles SELECT * FROM saved.kept" << "mallory" << "";
        QTest::newRow("user, after disable-user") << Commands{toMallory} << "users" << QStringList{"disable-user", "mallory"} << "UPDATE main.users SET disabled = 0, mac = (SELECT mac FROM saved.kept WHERE name = 'mallory') WHERE name = 'mallory'" << "mallory" << "battery staple";
        // clang-format on
    }

    void rowsChangedBehindTheSuitesBackGrantNothing()
    {
        QFETCH(QList<QStringList>, before);
        QFETCH(QString, kept);
        QFETCH(QStringList, takeAway);
        QFETCH(QString, tampering);
        QFETCH(QString, user);
        QFETCH(QString, password);
        Site o;
        for (const QStringList& command : before) {
            for (int i = 0; command == QStringList{"lock"} && i < SecuritySettings::DefaultLockoutThreshold;
                 ++i)
                QCOMPARE(o.logIn("jsmith", "guess"), LogInStatus::Refused);
            if (command != QStringList{"lock"})
                o.administer(command);
        }
        if (!kept.isEmpty()) {
            o.fixture.tamper(
                {o.attach(), QStringLiteral("CREATE TABLE saved.kept AS SELECT * FROM main.%1").arg(kept)});
            o.administer(takeAway);
        }
        o.fixture.tamper({o.attach(), tampering});

        QVERIFY(!o.allowed(user, "Layouts", "Edit"));
        if (!password.isEmpty())
            QCOMPARE(o.logIn(user, password), LogInStatus::Refused);
        QVERIFY(refusedSaying(o.secadmin({"verify"}), "altered"));
    }

    // 7: rows removed behind the suite's back are noticed by verify.
    void removedRowsAreReported()
    {
        for (const QString removal : {"DELETE FROM user_roles", "DELETE FROM users WHERE name = 'mallory'",
                                      "DELETE FROM role_rights WHERE area = 'Reader'"}) {
            Site o;
            o.administer({"assign-role", "jsmith", "Readers"});
            QCOMPARE(o.secadmin({"verify"}).exitCode, 0);
            o.fixture.tamper({removal});
            QVERIFY(refusedSaying(o.secadmin({"verify"}), "have been removed"));
        }
    }

    // A document's newest fingerprint edited, written back from before its
    // last change, or removed behind the suite's back: verify names the
    // record, and the trail, untouched, still tells the document's history.
    void documentRecordsChangedAreFound()
    {
        // clang-format off
        for (const auto& [tampering, said] : std::initializer_list<std::tuple<QString, QString>>{
            {"UPDATE main.document_records SET sha256 = zeroblob(32)", "has been changed outside the suite"}, // fingerprint edited
            {"INSERT OR REPLACE INTO main.document_records SELECT * FROM saved.kept", "is not its newest entry"}, // written back
            {"DELETE FROM main.document_records", "has been removed"} // removed
        }) {
            // clang-format on
            Site o;
            const QString path = QStringLiteral("/data/Results/plate 1.ars");
            const auto record = [&](DocumentEvent event, const QByteArray& sha) {
                const std::unique_ptr<SecurityStore> store = o.fixture.open();
                QString error;
                QVERIFY2(
                    store->documents().record("jsmith", {event, {path, sha, 10, 0}, {}, {}, {}}, &error) > 0,
                    qPrintable(error));
            };
            record(DocumentEvent::Recorded, QByteArray(32, 'a'));
            o.fixture.tamper({o.attach(), "CREATE TABLE saved.kept AS SELECT * FROM main.document_records"});
            record(DocumentEvent::ChangedOutside, QByteArray(32, 'b'));
            QCOMPARE(o.secadmin({"verify"}).exitCode, 0);
            o.fixture.tamper({o.attach(), tampering});

            const ProcessRun verify = o.secadmin({"verify"});
            QVERIFY(refusedSaying(verify, QStringLiteral("The record of document \"%1\" ").arg(path) + said));
            QVERIFY(verify.out.contains(QLatin1String("all are intact")));
            QVERIFY(o.fixture.auditTexts().constLast().startsWith(
                QStringLiteral("Document changed outside the suite: %1 sha256=6262").arg(path)));
        }
    }

    // A signed document and its signature copied onto another document,
    // moved there, or removed, by someone without the site key: the copy's
    // seal fails (the file copied with it is no signed document), and
    // verify names the row or the entry left without it.
    void signaturesCopiedMovedOrRemovedAreFound()
    {
        // clang-format off
        for (const auto& [tampering, said] : std::initializer_list<std::tuple<QStringList, QString>>{
            {QStringList{"INSERT INTO document_signatures SELECT 1, '%1', sha256, meaning, user_name, full_name, signed, mac FROM document_signatures"}, "has been changed outside the suite or does not match its entry"}, // copied
            {QStringList{"DROP TRIGGER document_signatures_no_update", "UPDATE document_signatures SET path = '%1'"}, "has been changed outside the suite or does not match its entry"}, // moved
            {QStringList{"DROP TRIGGER document_signatures_no_delete", "DELETE FROM document_signatures"}, "has been removed"} // removed
        }) {
            // clang-format on
            Site o;
            const QString signedOne = o.folders.root() + QStringLiteral("/report.pdf");
            const QString copy = o.folders.root() + QStringLiteral("/copy.pdf");
            writeFile(signedOne, "approved content");
            QVERIFY(QFile::copy(signedOne, copy));
            {
                const std::unique_ptr<SecurityStore> store = o.fixture.open();
                const SignResult result =
                    store->signatures().record({signedOne, DocumentFolders::fingerprint(signedOne)->sha256,
                                                "Approved", "jsmith", "J", 0, 0});
                QVERIFY2(result.sequence > 0, qPrintable(result.error));
            }
            QCOMPARE(o.secadmin({"signatures", signedOne}).exitCode, 0);
            o.fixture.tamper(QStringList(tampering).replaceInStrings("%1", copy));

            const ProcessRun copied = o.secadmin({"signatures", copy});
            QCOMPARE(copied.exitCode, 1);
            QVERIFY2(!copied.out.contains(QLatin1String(": valid")), qPrintable(copied.out));
            QVERIFY(refusedSaying(o.secadmin({"verify"}), said));
        }
    }

    // A row whose MAC cannot be written while every row is sealed afresh (a
    // fault injected in the database) fails the change as a whole: nothing of
    // it is kept, and the store still verifies. 7: two roles' names swapped:
    // the administrator's next assign-role is refused instead of giving the
    // other role, and the roles grant nothing.
    void roleRowsUnsealedOrSwappedGrantNothing()
    {
        Site o;
        o.fixture.tamper({"CREATE TRIGGER injected BEFORE UPDATE OF mac ON roles "
                          "BEGIN SELECT RAISE(ABORT, 'injected failure'); END"});
        QVERIFY(refusedSaying(o.secadmin({"grant", "mallory", "Layouts", "Edit"}), "injected failure"));
        o.fixture.tamper({"DROP TRIGGER injected"});
        QVERIFY(!o.allowed("mallory", "Layouts", "Edit"));
        QCOMPARE(o.secadmin({"verify"}).exitCode, 0);

        // Two roles' names swapped.
        o.administer({"assign-role", "jsmith", "Readers"});
        o.fixture.tamper({"UPDATE roles SET name = 'swap' WHERE name = 'Readers'",
                          "UPDATE roles SET name = 'Readers' WHERE name = 'Admins'",
                          "UPDATE roles SET name = 'Admins' WHERE name = 'swap'"});
        QVERIFY(
            refusedSaying(o.secadmin({"assign-role", "mallory", "Readers"}), "changed outside the suite"));
        QVERIFY(!o.allowed("mallory", "Instrumentation", "SelectDriver"));
        QVERIFY(!o.allowed("jsmith", "Reader", "Run"));
        QVERIFY(refusedSaying(o.secadmin({"verify"}), "The record of role \"Readers\" has been altered"));
    }

    // 3, 8: the newest entries cut off behind the head, with or without a copy
    // of the older head file written back; or only the older head written
    // back. The store does not open, verify names it, and no change is made
    // unrecorded.
    void cutOffEntriesOrAnOlderHeadAreFound()
    {
        // clang-format off
        for (const auto& [cutOff, olderHead, said] : std::initializer_list<std::tuple<bool, bool, QString>>{
            {true, false, "cut off"}, // entries cut off
            {true, true, "the newest entries have been cut off"}, // entries cut off, older head
            {false, true, "has been replaced by an older copy"} // older head alone
        }) {
            // clang-format on
            Site o;
            const QString head = o.fixture.settings().chainHeadFile;
            QVERIFY(QFile::copy(head, o.folders.root() + "/older.head"));
            const int kept = o.fixture.auditTexts().size();
            o.administer({"disable-user", "mallory"});
            o.administer({"grant", "jsmith", "*", "*"});
            if (cutOff)
                o.fixture.tamper({"DROP TRIGGER audit_trail_no_delete",
                                  QStringLiteral("DELETE FROM audit_trail WHERE seq > %1").arg(kept)});
            if (olderHead)
                QVERIFY(QFile::remove(head) && QFile::copy(o.folders.root() + "/older.head", head));

            QString error;
            QVERIFY(!SecurityStore::open(o.fixture.settings(), &error));
            QVERIFY2(error.contains(said), qPrintable(error));
            QVERIFY(refusedSaying(o.secadmin({"verify"}), said));
            QCOMPARE(o.secadmin({"grant", "mallory", "*", "*"}).exitCode, 1);
            QCOMPARE(o.logIn("jsmith", "correct horse"), LogInStatus::Error);
            QVERIFY(!o.allowed("mallory", "Layouts", "Edit"));
        }
    }

    // 9, 12: a password typed into the name field is recorded, and exported, only as a label
    // that costs a password hash's work per guess: an attacker holding the
    // key, with a dictionary that holds the password, gets nowhere in a second.
    void unknownNamesCannotBeGuessedBack()
    {
        Site o;
        QCOMPARE(o.logIn("Tr0ub4dor&3", "jsmith"), LogInStatus::Refused);
        QCOMPARE(o.logIn("tr0ub4dor&3", "jsmith"), LogInStatus::Refused);
        QString error;
        const QList<AuditEntry> entries = o.fixture.open()->audit().entries(&error);
        const QString label = entries.constLast().userName;
        QVERIFY2(label.startsWith(QLatin1String("unknown user #")), qPrintable(label));
        QCOMPARE(entries.at(entries.size() - 2).userName, label); // the same name, recognisably
        QVERIFY(!o.secadmin({"audit", "--csv", "-"}).out.contains("tr0ub4dor", Qt::CaseInsensitive));

        // A dictionary of 5000 words that holds the password as its 4001st.
        const std::unique_ptr<SecurityStore> store = o.fixture.open();
        const Authenticator attacker(*store);
        QElapsedTimer clock;
        clock.start();
        int tried = 0;
        bool found = false;
        for (; !found && tried < 5000 && clock.elapsed() < 1000; ++tried)
            found = attacker.unknownUserLabel(tried == 4000 ? "Tr0ub4dor&3"
                                                            : QStringLiteral("guess%1").arg(tried)) == label;
        QVERIFY2(!found, qPrintable(QStringLiteral("recovered after %1 guesses").arg(tried)));
        QVERIFY2(tried < 1000, qPrintable(QStringLiteral("%1 guesses a second").arg(tried)));
    }

    // 10: the disk fills up while entries are being recorded, so the
    // checkpoint at closing is cut short; once there is space again the store
    // opens with every entry that was committed, and verifies.
    void aFullDiskDoesNotLockTheStoreOut()
    {
        Site o;
        if (::geteuid() != 0)
            QSKIP(
                "Filling a small file system of its own needs root (a tmpfs in a private mount namespace).");
        if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            QSKIP(qPrintable(QStringLiteral("No private mount namespace for a small file system: %1")
                                 .arg(QString::fromLocal8Bit(strerror(errno)))));
        const QString disk = o.folders.root() + "/disk";
        QVERIFY(QDir().mkpath(disk));
        QVERIFY2(::mount("tmpfs", QFile::encodeName(disk).constData(), "tmpfs", 0, "size=512k") == 0,
                 strerror(errno));
        // Gone with the test, so that the test's folder can be removed.
        const auto unmount =
            qScopeGuard([&disk] { ::umount2(QFile::encodeName(disk).constData(), MNT_DETACH); });
        SecurityFixture small(disk);
        small.create();
        const QString spare = disk + "/spare";
        writeFile(spare, QByteArray(64 * 1024, '\0'));
        qint64 committed = 0;
        {
            const std::unique_ptr<SecurityStore> store = small.open();
            QVERIFY(store);
            for (;;) {
                const AuditAppendResult result =
                    store->audit().append("jsmith", "General", QString(300, QLatin1Char('x')));
                if (result.sequence == 0)
                    break;
                committed = result.sequence;
            }
            QVERIFY(committed > 10);
        } // closing checkpoints into the full disk
        QVERIFY(QFile::remove(spare));

        QString error;
        const std::unique_ptr<SecurityStore> reopened = SecurityStore::open(small.settings(), &error);
        QVERIFY2(reopened, qPrintable(error));
        const AuditVerification verification = reopened->audit().verify();
        QVERIFY2(verification.ok, qPrintable(verification.message));
        QCOMPARE(verification.entryCount, committed);
    }
};

QTEST_GUILESS_MAIN(StoreAttacksTest)
#include "StoreAttacksTest.moc"
