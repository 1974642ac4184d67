#include "SecuritySettings.h"
#include "SettingsStore.h"

#include <QTemporaryDir>
#include <QTest>

using namespace nebra;

// The "[Security]" group as written in the settings file.
class tst_SecuritySettings : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void defaults();
    void valuesTakeEffect_data();
    void valuesTakeEffect();
};

void tst_SecuritySettings::defaults()
{
    QTemporaryDir dir;
    SettingsStore store(dir.filePath(QStringLiteral("Suite.ini")));
    const SecuritySettings s = SecuritySettings::fromStore(store);
    QCOMPARE(s.databasePath, SecuritySettings::defaultDatabasePath());
    QVERIFY(s.databasePath.endsWith(QLatin1String("/Nebra/Security.db")));
    QCOMPARE(s.siteKeyFile, s.databasePath + QStringLiteral(".key"));
    QCOMPARE(s.chainHeadFile, s.databasePath + QStringLiteral(".head"));
    QCOMPARE(s.timeOutMinutes, 15);
    QCOMPARE(s.lockoutThreshold, 5);
    QCOMPARE(s.passwordMinimumLength, 8);
    QCOMPARE(s.authenticationLibrary,
             QStringLiteral("WindowsServiceAuthenticationLibrary.WindowsServiceXmlAuthentication"));
    QCOMPARE(s.hashCost.memoryMiB, 19);
    QCOMPARE(s.hashCost.passes, 2);
}

void tst_SecuritySettings::valuesTakeEffect_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("expected");

    // clang-format off
    QTest::newRow("time-out")              << "TimeOutMinutes" << "5" << "timeOut" << "5";
    QTest::newRow("time-out not a number") << "TimeOutMinutes" << "soon" << "timeOut" << "15";
    QTest::newRow("lockout")               << "LockoutThreshold" << "3" << "lockout" << "3";
    QTest::newRow("minimum length")        << "PasswordMinimumLength" << "12" << "length" << "12";
    QTest::newRow("library")               << "AuthenticationLibrary" << SecuritySettings::GroupLibrary
                                           << "library" << SecuritySettings::GroupLibrary;
    QTest::newRow("hash memory never below 19") << "PasswordHashMemoryMiB" << "1" << "memory" << "19";
    QTest::newRow("hash passes never below 2")  << "PasswordHashPasses" << "1" << "passes" << "2";
    // clang-format on
}

void tst_SecuritySettings::valuesTakeEffect()
{
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(QString, field);
    QFETCH(QString, expected);
    QTemporaryDir dir;
    SettingsStore store(dir.filePath(QStringLiteral("Suite.ini")));
    QVERIFY(store.setValue(QStringLiteral("Security/") + key, value));
    const SecuritySettings s = SecuritySettings::fromStore(SettingsStore(store.filePath()));
    const QHash<QString, QString> fields = {
        {"timeOut", QString::number(s.timeOutMinutes)},
        {"lockout", QString::number(s.lockoutThreshold)},
        {"length", QString::number(s.passwordMinimumLength)},
        {"library", s.authenticationLibrary},
        {"memory", QString::number(s.hashCost.memoryMiB)},
        {"passes", QString::number(s.hashCost.passes)},
        {"key", s.siteKeyFile},
    };
    QCOMPARE(fields.value(field), expected);
}

QTEST_GUILESS_MAIN(tst_SecuritySettings)
#include "tst_SecuritySettings.moc"
