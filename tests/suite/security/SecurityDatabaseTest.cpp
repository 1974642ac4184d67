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
        message.replace(QLatin1String("%1"), s.databasePath)
            .replace(QLatin1String("%2"), s.siteKeyFile)
            .replace(QLatin1String("%3"), s.chainHeadFile);
        QCOMPARE(error, message);
    }
};

QTEST_GUILESS_MAIN(SecurityDatabaseTest)
#include "SecurityDatabaseTest.moc"
