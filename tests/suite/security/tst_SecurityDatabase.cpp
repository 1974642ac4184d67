#include "SecurityFixture.h"

#include <QFile>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace nebra;
using nebra::test::SecurityFixture;

// Opening and creating the security database and its companion files.
class tst_SecurityDatabase : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void createdDatabaseIsDurable();
    void createRefusesAnExistingFile();
    void openFails_data();
    void openFails();
    void readOnlyDatabaseIsRefused();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SecurityFixture> m_fixture;
};

void tst_SecurityDatabase::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_fixture = std::make_unique<SecurityFixture>(m_dir->path());
}

void tst_SecurityDatabase::createdDatabaseIsDurable()
{
    m_fixture->create();
    const std::unique_ptr<SecurityStore> store = m_fixture->open();
    QVERIFY(store);
    QSqlQuery q = store->database().newQuery();
    QString error;
    QVERIFY(store->database().exec(q, QStringLiteral("PRAGMA journal_mode"), {}, &error) && q.next());
    QCOMPARE(q.value(0).toString(), QStringLiteral("wal"));
    QVERIFY(store->database().exec(q, QStringLiteral("PRAGMA synchronous"), {}, &error) && q.next());
    QCOMPARE(q.value(0).toInt(), 2); // FULL
    QCOMPARE(QFile::permissions(m_fixture->settings().siteKeyFile),
             QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadUser |
                 QFileDevice::WriteUser);
}

void tst_SecurityDatabase::createRefusesAnExistingFile()
{
    m_fixture->create();
    const QByteArray before = [&] {
        QFile f(m_fixture->settings().databasePath);
        f.open(QIODevice::ReadOnly);
        return f.readAll();
    }();
    QString error;
    QVERIFY(!SecurityStore::create(m_fixture->settings(), QStringLiteral("tester"), &error));
    QCOMPARE(error, QStringLiteral("The security database \"%1\" already exists; it has not been changed.")
                        .arg(m_fixture->settings().databasePath));
    QFile after(m_fixture->settings().databasePath);
    QVERIFY(after.open(QIODevice::ReadOnly));
    QCOMPARE(after.readAll(), before);
}

void tst_SecurityDatabase::openFails_data()
{
    QTest::addColumn<QString>("damage");
    QTest::addColumn<QString>("message"); // %1 database, %2 key file, %3 head file

    QTest::newRow("missing") << "delete"
                             << "The security database \"%1\" does not exist.";
    QTest::newRow("not SQLite")
        << "text"
        << "The security database \"%1\" is not a security database (it is not an SQLite file).";
    QTest::newRow("empty file") << "empty"
                                << "The security database \"%1\" is not a security database.";
    QTest::newRow("another SQLite database") << "foreign"
                                             << "The security database \"%1\" is not a security database.";
    QTest::newRow("truncated") << "truncate"
                               << "The security database \"%1\" is truncated.";
    QTest::newRow("key file missing") << "no key"
                                      << "The site key file \"%2\" does not exist.";
    QTest::newRow("key of another site")
        << "other key"
        << "The site key file \"%2\" does not belong to the security database \"%1\".";
    QTest::newRow("key file garbled") << "garbled key"
                                      << "The file \"%2\" is not a site key file.";
    QTest::newRow("chain head missing") << "no head"
                                        << "The audit chain head file \"%3\" is missing.";
}

void tst_SecurityDatabase::openFails()
{
    QFETCH(QString, damage);
    QFETCH(QString, message);
    m_fixture->create();
    const SecuritySettings& s = m_fixture->settings();
    auto overwrite = [](const QString& path, const QByteArray& bytes) {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(bytes);
    };
    if (damage == QLatin1String("delete")) {
        QVERIFY(QFile::remove(s.databasePath));
    } else if (damage == QLatin1String("text")) {
        overwrite(s.databasePath, "This is a text file, not a database.\n");
    } else if (damage == QLatin1String("empty")) {
        overwrite(s.databasePath, {});
    } else if (damage == QLatin1String("foreign")) {
        QVERIFY(QFile::remove(s.databasePath));
        SecurityFixture(m_dir->path()).tamper({QStringLiteral("CREATE TABLE plates(id INTEGER)")});
    } else if (damage == QLatin1String("truncate")) {
        QVERIFY(QFile::resize(s.databasePath, QFileInfo(s.databasePath).size() / 2));
    } else if (damage == QLatin1String("no key")) {
        QVERIFY(QFile::remove(s.siteKeyFile));
    } else if (damage == QLatin1String("other key")) {
        QVERIFY(QFile::remove(s.siteKeyFile));
        QString error;
        QVERIFY(SiteKey::create(s.siteKeyFile, &error));
    } else if (damage == QLatin1String("garbled key")) {
        overwrite(s.siteKeyFile, "not hexadecimal\n");
    } else if (damage == QLatin1String("no head")) {
        QVERIFY(QFile::remove(s.chainHeadFile));
    }
    QString error;
    QVERIFY(!SecurityStore::open(s, &error));
    message.replace(QLatin1String("%1"), s.databasePath)
        .replace(QLatin1String("%2"), s.siteKeyFile)
        .replace(QLatin1String("%3"), s.chainHeadFile);
    QCOMPARE(error, message);
}

void tst_SecurityDatabase::readOnlyDatabaseIsRefused()
{
    if (geteuid() == 0)
        QSKIP("The superuser may write to a read-only file, so it cannot be refused as one.");
    m_fixture->create();
    QVERIFY(QFile::setPermissions(m_fixture->settings().databasePath, QFileDevice::ReadOwner));
    QString error;
    QVERIFY(!SecurityStore::open(m_fixture->settings(), &error));
    QCOMPARE(error, QStringLiteral(
                        "The security database \"%1\" is read-only, so the audit trail cannot be written.")
                        .arg(m_fixture->settings().databasePath));
}

QTEST_GUILESS_MAIN(tst_SecurityDatabase)
#include "tst_SecurityDatabase.moc"
