#include "SecuritySettings.h"
#include "SettingsStore.h"

#include <QTemporaryDir>
#include <QTest>

using namespace nebra;

// The "[Security]" group as written in the settings file.
class SecuritySettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void companionFilesFollowTheDatabase()
    {
        QTemporaryDir dir;
        SettingsStore store(dir.filePath("Suite.ini"));
        QVERIFY(
            SecuritySettings::fromStore(store).databasePath.endsWith(QLatin1String("/Nebra/Security.db")));
        QVERIFY(store.setValue(QStringLiteral("Security/DatabasePath"), QStringLiteral("/srv/lab/Site.db")));
        const SecuritySettings s = SecuritySettings::fromStore(SettingsStore(store.filePath()));
        QCOMPARE(s.siteKeyFile, QStringLiteral("/srv/lab/Site.db.key"));
        QCOMPARE(s.chainHeadFile, QStringLiteral("/srv/lab/Site.db.head"));
    }

    void valuesTakeEffectWithinTheirLimits_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<int>("expected");
        // clang-format off
        QTest::newRow("time-out") << "TimeOutMinutes" << "5" << 5;
        QTest::newRow("time-out not a number") << "TimeOutMinutes" << "soon" << 15;
        QTest::newRow("lockout") << "LockoutThreshold" << "3" << 3;
        QTest::newRow("hash memory never below 19") << "PasswordHashMemoryMiB" << "1" << 19;
        QTest::newRow("hash passes never below 2") << "PasswordHashPasses" << "1" << 2;
        // clang-format on
    }

    void valuesTakeEffectWithinTheirLimits()
    {
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(int, expected);
        QTemporaryDir dir;
        SettingsStore store(dir.filePath("Suite.ini"));
        QVERIFY(store.setValue(QStringLiteral("Security/") + key, value));
        const SecuritySettings s = SecuritySettings::fromStore(SettingsStore(store.filePath()));
        const QHash<QString, int> fields = {{"TimeOutMinutes", s.timeOutMinutes},
                                            {"LockoutThreshold", s.lockoutThreshold},
                                            {"PasswordHashMemoryMiB", s.hashCost.memoryMiB},
                                            {"PasswordHashPasses", s.hashCost.passes}};
        QCOMPARE(fields.value(key), expected);
    }
};

QTEST_GUILESS_MAIN(SecuritySettingsTest)
#include "SecuritySettingsTest.moc"
