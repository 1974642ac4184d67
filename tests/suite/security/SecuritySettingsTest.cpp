#include "SecuritySettings.h"
#include "SettingsStore.h"
#include "TestFiles.h"
#include "UserFolders.h"

#include <QTemporaryDir>
#include <QTest>

using namespace nebra;

// The "[Security]" group as written in the settings file.
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
        QVERIFY(
            SecuritySettings::fromStore(store).databasePath.endsWith(QLatin1String("/Nebra/Security.db")));
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
        QVERIFY(std::any_of(s.origins.cbegin(), s.origins.cend(), [](const SecuritySettings::Origin& o) {
            return o.key == QLatin1String("SignatureMeanings");
        }));
    }
};

QTEST_GUILESS_MAIN(SecuritySettingsTest)
#include "SecuritySettingsTest.moc"
