#include "Authenticator.h"
#include "SecurityFixture.h"
#include "TestFiles.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace nebra;
using nebra::test::readFile;
using nebra::test::SecurityFixture;
using nebra::test::writeFile;

namespace {

// A security database that the previous version of the suite made
// (data/schema2: roles without a MAC, rows sealed without the store's count
// of changes, a chain head without it; jsmith with Reader/Run, mallory in
// the role Readers with Reports/Print, and a right */* slipped in for
// mallory behind the suite's back), copied into a folder of its own.
struct OldStore
{
    QTemporaryDir dir;
    SecurityFixture fixture{dir.path() + "/site"};

    OldStore()
    {
        const SecuritySettings& s = fixture.settings();
        const QString data = QStringLiteral(STORE_DATA "/schema2/Security.db");
        for (const auto& [from, to] :
             {std::pair{data, s.databasePath}, std::pair{data + ".key", s.siteKeyFile},
              std::pair{data + ".head", s.chainHeadFile}}) {
            writeFile(to, readFile(from));
            QVERIFY(QFile::setPermissions(to, QFileDevice::ReadOwner | QFileDevice::WriteOwner));
        }
    }

    // A number the database holds, read without opening it as a store (which would bring it up to date).
    qint64 number(const QString& statement) const
    {
        QString error;
        const std::unique_ptr<SecurityDatabase> database =
            SecurityDatabase::open(fixture.settings().databasePath, &error);
        QSqlQuery q = database ? database->newQuery() : QSqlQuery();
        return database && database->exec(q, statement, {}, &error) && q.next() ? q.value(0).toLongLong()
                                                                                : -1;
    }
    qint64 schemaVersion() const { return number("SELECT value FROM meta WHERE key = 'schema_version'"); }
};

} // namespace

// Opening and creating the security database and its companion files (a
// database or key left open to everyone is refused too, naming the fix).
class SecurityDatabaseTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aCreatedDatabaseIsNeverCreatedAgain()
    {
        QTemporaryDir dir;
        SecurityFixture fixture(dir.path());
        fixture.create();
        const QString path = fixture.settings().databasePath;
        const QByteArray before = readFile(path);
        QString error;
        QVERIFY(!SecurityStore::create(fixture.settings(), "tester", &error));
        QCOMPARE(error,
                 QStringLiteral("The security database \"%1\" already exists; it has not been changed.")
                     .arg(path));
        QCOMPARE(readFile(path), before);
        // The site key that seals the audit chain is for its owner only.
        QCOMPARE(QFile::permissions(fixture.settings().siteKeyFile),
                 QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadUser |
                     QFileDevice::WriteUser);
    }

    void openFails_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<QString>("message"); // %1 database, %2 key file, %3 head file
        const QString notOurs = "The security database \"%1\" is not a security database.";
        // An administrator left it open to everyone.
        const QString exposed =
            "The %1 can be read or changed by every user of this computer, so it is not used. "
            "Ask your security administrator to run \"chmod o-rwx %2\".";
        // clang-format off
        QTest::newRow("missing") << "delete" << "The security database \"%1\" does not exist.";
        QTest::newRow("not SQLite") << "text" << "The security database \"%1\" is not a security database (it is not an SQLite file).";
        QTest::newRow("empty file") << "empty" << notOurs;
        QTest::newRow("another SQLite database") << "foreign" << notOurs;
        QTest::newRow("truncated") << "truncate" << "The security database \"%1\" is truncated.";
        QTest::newRow("read-only") << "read-only" << "The security database \"%1\" is read-only, so the audit trail cannot be written.";
        QTest::newRow("key file missing") << "no key" << "The site key file \"%2\" does not exist.";
        QTest::newRow("key of another site") << "other key" << "The site key file \"%2\" does not belong to the security database \"%1\".";
        QTest::newRow("key file garbled") << "garbled key" << "The file \"%2\" is not a site key file.";
        QTest::newRow("chain head missing") << "no head" << "The audit chain head file \"%3\" is missing.";
        QTest::newRow("database readable by everyone") << "exposed database" << exposed.arg("security database \"%1\"", "%1");
        QTest::newRow("key readable by everyone") << "exposed key" << exposed.arg("site key file \"%2\"", "%2");
        // clang-format on
    }

    void openFails()
    {
        QFETCH(QString, damage);
        QFETCH(QString, message);
        QTemporaryDir dir;
        SecurityFixture fixture(dir.path());
        if (damage == QLatin1String("read-only") && geteuid() == 0)
            QSKIP("The superuser may write to a read-only file, so it cannot be refused as one.");
        fixture.create();
        const SecuritySettings& s = fixture.settings();
        if (damage == QLatin1String("delete") || damage == QLatin1String("foreign")) {
            QVERIFY(QFile::remove(s.databasePath));
            if (damage == QLatin1String("foreign"))
                SecurityFixture(dir.path()).tamper({"CREATE TABLE plates(id INTEGER)"});
        } else if (damage == QLatin1String("text") || damage == QLatin1String("empty")) {
            writeFile(s.databasePath, damage == QLatin1String("text") ? "This is a text file.\n" : "");
        } else if (damage == QLatin1String("truncate")) {
            QVERIFY(QFile::resize(s.databasePath, QFileInfo(s.databasePath).size() / 2));
        } else if (damage == QLatin1String("read-only")) {
            QVERIFY(QFile::setPermissions(s.databasePath, QFileDevice::ReadOwner));
        } else if (damage == QLatin1String("no head")) {
            QVERIFY(QFile::remove(s.chainHeadFile));
        } else if (!damage.startsWith(QLatin1String("exposed"))) {
            QVERIFY(QFile::remove(s.siteKeyFile));
            QString error;
            if (damage == QLatin1String("other key"))
                QVERIFY(SiteKey::create(s.siteKeyFile, &error));
            else if (damage == QLatin1String("garbled key"))
                writeFile(s.siteKeyFile, "not hexadecimal\n");
        }
        // Files written here get the umask's mode; only what the row damages is to be refused.
        for (const QString& path : {s.databasePath, s.siteKeyFile})
            QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        if (damage.startsWith(QLatin1String("exposed")))
            QVERIFY(QFile::setPermissions(
                damage.endsWith(QLatin1String("key")) ? s.siteKeyFile : s.databasePath,
                QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadOther));
        QString error;
        QVERIFY(!SecurityStore::open(s, &error));
        message.replace("%1", s.databasePath).replace("%2", s.siteKeyFile).replace("%3", s.chainHeadFile);
        QCOMPARE(error, message);
    }

    // The previous version's database is brought up to date when first opened,
    // keeping what held and what did not.
    void upgradesOnFirstOpening()
    {
        OldStore o;
        const qint64 entries = o.number("SELECT count(*) FROM audit_trail");
        QCOMPARE(o.schemaVersion(), qint64(SecurityDatabase::UpgradableVersion));
        QString error;
        const std::unique_ptr<SecurityStore> store = SecurityStore::open(o.fixture.settings(), &error);
        QVERIFY2(store, qPrintable(error));
        QCOMPARE(o.schemaVersion(), qint64(SecurityDatabase::SchemaVersion));
        QVERIFY(readFile(o.fixture.settings().chainHeadFile).startsWith("nebra-audit-head 2\n"));
        const AuditVerification verification = store->audit().verify();
        QVERIFY2(verification.ok, qPrintable(verification.message));
        QCOMPARE(verification.entryCount, entries);
        const QStringList altered = store->users().alteredRows(&error);
        QCOMPARE(altered, QStringList{"The right */* of user id 2 has been altered or slipped in."});

        QCOMPARE(Authenticator(*store).authenticate("jsmith", SecretBytes("correct horse")).status,
                 LogInStatus::Success);
        QVERIFY(store->users().isOperationAllowed("jsmith", "Reader", "Run", &error));
        QVERIFY(store->users().isOperationAllowed("mallory", "Reports", "Print", &error));
        QVERIFY(!store->users().isOperationAllowed("mallory", "Layouts", "Edit", &error));
        QVERIFY(store->audit().verify().ok);
    }

    // Entries cut off before the upgrade stay for the administrator to find: nothing is changed.
    void notWhileTheHeadDoesNotSealTheTrail()
    {
        OldStore o;
        o.fixture.tamper({"DROP TRIGGER audit_trail_no_delete",
                          "DELETE FROM audit_trail WHERE seq = (SELECT max(seq) FROM audit_trail)"});
        QString error;
        QVERIFY(!SecurityStore::open(o.fixture.settings(), &error));
        QVERIFY2(error.contains(QLatin1String("cannot be brought up to date")), qPrintable(error));
        QCOMPARE(o.schemaVersion(), qint64(SecurityDatabase::UpgradableVersion));
    }
};

QTEST_GUILESS_MAIN(SecurityDatabaseTest)
#include "SecurityDatabaseTest.moc"
