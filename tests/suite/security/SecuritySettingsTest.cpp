#include "SecuritySettings.h"
#include "PasswordPolicy.h"
#include "SecretBytes.h"
#include "SettingsStore.h"
#include "TestFiles.h"
#include "UserFolders.h"

#include <QTemporaryDir>
#include <QTest>

using namespace nebra;

// The "[Security]" group as written in the settings file, and the rules a
// new password must keep under the minimum length it sets.
class SecuritySettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesTakeEffectWithinTheirLimits_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("expected");
        // clang-format off
        QTest::newRow("time-out") << "TimeOutMinutes" << "5" << "5";
        QTest::newRow("time-out not a number") << "TimeOutMinutes" << "soon" << "15";
        QTest::newRow("lockout") << "LockoutThreshold" << "3" << "3";
        QTest::newRow("hash memory never below 19") << "PasswordHashMemoryMiB" << "1" << "19";
        QTest::newRow("hash passes never below 2") << "PasswordHashPasses" << "1" << "2";
        QTest::newRow("key and head follow the database") << "DatabasePath" << "/srv/lab/Site.db" << "/srv/lab/Site.db.key /srv/lab/Site.db.head";
        // clang-format on
    }

    void valuesTakeEffectWithinTheirLimits()
    {
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QString, expected);
        QTemporaryDir dir;
        SettingsStore store(dir.filePath("Suite.ini"));
        QVERIFY(SecuritySettings::fromStore(store).databasePath.endsWith("/Nebra/Security.db"));
        QVERIFY(store.setValue("Security/" + key, value));
        const SecuritySettings s = SecuritySettings::fromStore(SettingsStore(store.filePath()));
        const QHash<QString, QString> fields = {
            {"TimeOutMinutes", QString::number(s.timeOutMinutes)},
            {"LockoutThreshold", QString::number(s.lockoutThreshold)},
            {"PasswordHashMemoryMiB", QString::number(s.hashCost.memoryMiB)},
            {"PasswordHashPasses", QString::number(s.hashCost.passes)},
            {"DatabasePath", s.siteKeyFile + ' ' + s.chainHeadFile}};
        QCOMPARE(fields.value(key), expected);
    }

    // What a signature may mean and which back end holds the store are the
    // site's to say: a user's own file never decides them, not even on a
    // personal installation.
    void siteValuesComeFromTheSystemFileOnly_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("system"); // empty: no site policy
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("effective");
        // clang-format off
        QTest::newRow("the site's meanings, tidied") << "SignatureMeanings" << "SignatureMeanings= Approved ;;Verified; Approved" << "" << "Approved;Verified";
        QTest::newRow("a user's meaning under a site policy") << "SignatureMeanings" << "DatabasePath=/srv/site.db" << "Waived" << "Authored;Reviewed;Approved";
        QTest::newRow("a user's meaning on a personal installation") << "SignatureMeanings" << "" << "Waived" << "Authored;Reviewed;Approved";
        QTest::newRow("an empty list of meanings") << "SignatureMeanings" << "SignatureMeanings=;" << "" << "Authored;Reviewed;Approved";
        QTest::newRow("a user's server on a personal installation") << "Backend" << "" << "postgresql" << "sqlite";
        QTest::newRow("a user's server under a site policy") << "Backend" << "Backend=sqlite" << "postgresql" << "sqlite";
        QTest::newRow("the site's server") << "Backend" << "Backend=postgresql" << "sqlite" << "postgresql";
        QTest::newRow("an unknown back end") << "Backend" << "Backend=oracle" << "" << "refused";
        // clang-format on
    }

    void siteValuesComeFromTheSystemFileOnly()
    {
        QFETCH(QString, key);
        QFETCH(QString, system);
        QFETCH(QString, user);
        QFETCH(QString, effective);
        test::UserFolders folders;
        // As the administrator writes it.
        if (!system.isEmpty())
            test::writeFile(folders.systemSettingsFile(),
                            "[Settings]\nSecurityConfigured=true\n[Security]\n" + system.toUtf8() + "\n");
        SettingsStore store;
        QVERIFY(store.setValue("Security/" + key, user));
        const SecuritySettings s = SecuritySettings::fromStore(store);
        const QString backend = !s.policyError.isEmpty()                         ? "refused"
                                : s.backend == SecuritySettings::Backend::Server ? "postgresql"
                                                                                 : "sqlite";
        QCOMPARE(key == QLatin1String("Backend") ? backend : s.signatureMeanings.join(';'), effective);
        // "nebra-secadmin status" prints where the meanings came from.
        QVERIFY(std::any_of(s.origins.cbegin(), s.origins.cend(),
                            [](const SecuritySettings::Origin& o) { return o.key == "SignatureMeanings"; }));
    }

    // The rules a new password must keep, with the site's minimum length.
    void passwordPolicy_data()
    {
        QTest::addColumn<int>("minimum");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("problem");
        const QString tooShort = "The password must be at least %1 characters long.";
        // clang-format off
        QTest::newRow("exactly the minimum") << 8 << "12345678" << "";
        QTest::newRow("one short") << 8 << "1234567" << tooShort.arg(8);
        QTest::newRow("minimum setting takes effect") << 12 << "elevenchars" << tooShort.arg(12);
        QTest::newRow("minimum counts characters, not bytes") << 4 << "äöüß" << "";
        QTest::newRow("empty") << 1 << "" << "The password must not be empty.";
        QTest::newRow("user name in other case") << 4 << "JSmith" << "The password must not be the user name.";
        QTest::newRow("longer than the hashing limit") << 8 << QString(257, QLatin1Char('x')) << "The password must be at most 256 characters long.";
        // clang-format on
    }

    void passwordPolicy()
    {
        QFETCH(int, minimum);
        QFETCH(QString, password);
        QFETCH(QString, problem);
        QCOMPARE(PasswordPolicy(minimum).check("jsmith", SecretBytes(password.toUtf8())), problem);
    }
};

QTEST_GUILESS_MAIN(SecuritySettingsTest)
#include "SecuritySettingsTest.moc"
