#include "Authenticator.h"
#include "SecurityFixture.h"
#include "TestFiles.h"

#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

// A security database that the previous version of the suite made
// (data/schema2: roles without a MAC, rows sealed without the store's count
// of changes, a chain head without it; jsmith with Reader/Run, mallory in
// the role Readers with Reports/Print, and a right */* slipped in for
// mallory behind the suite's back) is brought up to date when first
// opened, keeping what held and what did not.
class StoreUpgradeTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<SecurityFixture> m_fixture;

    // A number the database holds, read without opening it as a store (which would bring it up to date).
    qint64 number(const QString& statement) const
    {
        QString error;
        const std::unique_ptr<SecurityDatabase> database =
            SecurityDatabase::open(m_fixture->settings().databasePath, &error);
        QSqlQuery q = database ? database->newQuery() : QSqlQuery();
        return database && database->exec(q, statement, {}, &error) && q.next() ? q.value(0).toLongLong()
                                                                                : -1;
    }
    qint64 schemaVersion() const
    {
        return number(QStringLiteral("SELECT value FROM meta WHERE key = 'schema_version'"));
    }

private Q_SLOTS:
    void init()
    {
        m_fixture = std::make_unique<SecurityFixture>(m_dir.path() + QStringLiteral("/site"));
        const SecuritySettings& s = m_fixture->settings();
        const QString data = QStringLiteral(STORE_DATA "/schema2/Security.db");
        for (const auto& [from, to] :
             {std::pair{data, s.databasePath}, std::pair{data + ".key", s.siteKeyFile},
              std::pair{data + ".head", s.chainHeadFile}}) {
            QFile::remove(to);
            writeFile(to, readFile(from));
            QVERIFY(QFile::setPermissions(to, QFileDevice::ReadOwner | QFileDevice::WriteOwner));
        }
    }

    void upgradesOnFirstOpening()
    {
        const qint64 entries = number(QStringLiteral("SELECT count(*) FROM audit_trail"));
        QCOMPARE(schemaVersion(), qint64(SecurityDatabase::UpgradableVersion));
        QString error;
        const std::unique_ptr<SecurityStore> store = SecurityStore::open(m_fixture->settings(), &error);
        QVERIFY2(store, qPrintable(error));
        QCOMPARE(schemaVersion(), qint64(SecurityDatabase::SchemaVersion));
        QVERIFY(readFile(m_fixture->settings().chainHeadFile).startsWith("nebra-audit-head 2\n"));
        const AuditVerification verification = store->audit().verify();
        QVERIFY2(verification.ok, qPrintable(verification.message));
        QCOMPARE(verification.entryCount, entries);
        const QStringList altered = store->users().alteredRows(&error);
        QCOMPARE(altered, QStringList{"The right */* of user id 2 has been altered or slipped in."});

        QCOMPARE(
            Authenticator(*store).authenticate(QStringLiteral("jsmith"), SecretBytes("correct horse")).status,
            LogInStatus::Success);
        QVERIFY(store->users().isOperationAllowed(QStringLiteral("jsmith"), QStringLiteral("Reader"),
                                                  QStringLiteral("Run"), &error));
        QVERIFY(store->users().isOperationAllowed(QStringLiteral("mallory"), QStringLiteral("Reports"),
                                                  QStringLiteral("Print"), &error));
        QVERIFY(!store->users().isOperationAllowed(QStringLiteral("mallory"), QStringLiteral("Layouts"),
                                                   QStringLiteral("Edit"), &error));
        QVERIFY(store->audit().verify().ok);
    }

    // Entries cut off before the upgrade stay for the administrator to find: nothing is changed.
    void notWhileTheHeadDoesNotSealTheTrail()
    {
        m_fixture->tamper({"DROP TRIGGER audit_trail_no_delete",
                           "DELETE FROM audit_trail WHERE seq = (SELECT max(seq) FROM audit_trail)"});
        QString error;
        QVERIFY(!SecurityStore::open(m_fixture->settings(), &error));
        QVERIFY2(error.contains(QLatin1String("cannot be brought up to date")), qPrintable(error));
        QCOMPARE(schemaVersion(), qint64(SecurityDatabase::UpgradableVersion));
    }
};

QTEST_GUILESS_MAIN(StoreUpgradeTest)
#include "StoreUpgradeTest.moc"
