#include "Authenticator.h"
#include "SecurityFixture.h"
#include "TestFiles.h"

#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

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

// The previous version's database is brought up to date when first opened,
// keeping what held and what did not.
class StoreUpgradeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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

QTEST_GUILESS_MAIN(StoreUpgradeTest)
#include "StoreUpgradeTest.moc"
