#include "Authenticator.h"
#include "SecurityFixture.h"

#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using nebra::test::SecurityFixture;

namespace {
SecretBytes secret(const char* text)
{
    return SecretBytes(QByteArray(text));
}
} // namespace

// Log-in decisions, lockout and hash upgrades, on a real database with the
// production hash cost.
class tst_Authenticator : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void rightPasswordLogsIn();
    void unknownUserAndWrongPasswordAreRefusedAlike();
    void lockoutAtTheThresholdSurvivesRestartUntilUnlocked_data();
    void lockoutAtTheThresholdSurvivesRestartUntilUnlocked();
    void disabledAccountIsNamedOnlyWithTheRightPassword();
    void successResetsTheFailureCount();
    void logInUpgradesAWeakerHash();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SecurityFixture> m_fixture;
};

void tst_Authenticator::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_fixture = std::make_unique<SecurityFixture>(m_dir->path());
    m_fixture->create();
    m_fixture->addUser(QStringLiteral("jsmith"), QStringLiteral("correct horse"),
                       QStringLiteral("Jane Smith"));
}

void tst_Authenticator::rightPasswordLogsIn()
{
    const std::unique_ptr<SecurityStore> store = m_fixture->open();
    const LogInResult result =
        Authenticator(*store).authenticate(QStringLiteral("JSMITH"), secret("correct horse"));
    QCOMPARE(result.status, LogInStatus::Success);
    QCOMPARE(result.user.name, QStringLiteral("jsmith")); // names compare without regard to case
    QCOMPARE(result.user.fullName, QStringLiteral("Jane Smith"));
    QCOMPARE(m_fixture->auditTexts().last(), QStringLiteral("Log in"));
}

void tst_Authenticator::unknownUserAndWrongPasswordAreRefusedAlike()
{
    const std::unique_ptr<SecurityStore> store = m_fixture->open();
    Authenticator authenticator(*store);
    const LogInResult unknown = authenticator.authenticate(QStringLiteral("nobody"), secret("correct horse"));
    const LogInResult wrong = authenticator.authenticate(QStringLiteral("jsmith"), secret("wrong horse"));
    QCOMPARE(unknown.status, LogInStatus::Refused);
    QCOMPARE(wrong.status, LogInStatus::Refused);
    QVERIFY(unknown.error.isEmpty() && wrong.error.isEmpty());
    const QStringList texts = m_fixture->auditTexts();
    QCOMPARE(texts.mid(texts.size() - 2),
             QStringList({"Failed log in: unknown user", "Failed log in: wrong password"}));
    QString error;
    QCOMPARE(store->users().find(QStringLiteral("jsmith"), &error)->failedLogIns, 1);
}

void tst_Authenticator::lockoutAtTheThresholdSurvivesRestartUntilUnlocked_data()
{
    QTest::addColumn<int>("threshold");
    QTest::newRow("default 5") << 5;
    QTest::newRow("site setting 2") << 2;
}

void tst_Authenticator::lockoutAtTheThresholdSurvivesRestartUntilUnlocked()
{
    QFETCH(int, threshold);
    m_fixture->settings().lockoutThreshold = threshold;
    {
        const std::unique_ptr<SecurityStore> store = m_fixture->open();
        Authenticator authenticator(*store);
        for (int i = 1; i < threshold; ++i)
            QCOMPARE(authenticator.authenticate(QStringLiteral("jsmith"), secret("guess")).status,
                     LogInStatus::Refused);
        QString error;
        QVERIFY(!store->users().find(QStringLiteral("jsmith"), &error)->locked);
        QCOMPARE(authenticator.authenticate(QStringLiteral("jsmith"), secret("guess")).status,
                 LogInStatus::Refused);
    }
    QCOMPARE(m_fixture->auditTexts().last(),
             QStringLiteral("Account locked after %1 failed log ins").arg(threshold));

    // A new process: the lock is still there, and only the right password learns of it.
    const std::unique_ptr<SecurityStore> store = m_fixture->open();
    Authenticator authenticator(*store);
    QCOMPARE(authenticator.authenticate(QStringLiteral("jsmith"), secret("guess")).status,
             LogInStatus::Refused);
    QCOMPARE(authenticator.authenticate(QStringLiteral("jsmith"), secret("correct horse")).status,
             LogInStatus::Locked);

    QString error;
    QVERIFY(SecurityAdministration(*store, QStringLiteral("admin")).unlock(QStringLiteral("jsmith"), &error));
    QCOMPARE(authenticator.authenticate(QStringLiteral("jsmith"), secret("correct horse")).status,
             LogInStatus::Success);
}

void tst_Authenticator::disabledAccountIsNamedOnlyWithTheRightPassword()
{
    const std::unique_ptr<SecurityStore> store = m_fixture->open();
    QString error;
    QVERIFY(SecurityAdministration(*store, QStringLiteral("admin"))
                .setDisabled(QStringLiteral("jsmith"), true, &error));
    Authenticator authenticator(*store);
    QCOMPARE(authenticator.authenticate(QStringLiteral("jsmith"), secret("guess")).status,
             LogInStatus::Refused);
    QCOMPARE(authenticator.authenticate(QStringLiteral("jsmith"), secret("correct horse")).status,
             LogInStatus::Disabled);
}

void tst_Authenticator::successResetsTheFailureCount()
{
    m_fixture->settings().lockoutThreshold = 2;
    const std::unique_ptr<SecurityStore> store = m_fixture->open();
    Authenticator authenticator(*store);
    QCOMPARE(authenticator.authenticate(QStringLiteral("jsmith"), secret("guess")).status,
             LogInStatus::Refused);
    QCOMPARE(authenticator.authenticate(QStringLiteral("jsmith"), secret("correct horse")).status,
             LogInStatus::Success);
    // Counted per run of failures: one more failure does not lock.
    QCOMPARE(authenticator.authenticate(QStringLiteral("jsmith"), secret("guess")).status,
             LogInStatus::Refused);
    QString error;
    QVERIFY(!store->users().find(QStringLiteral("jsmith"), &error)->locked);
}

void tst_Authenticator::logInUpgradesAWeakerHash()
{
    QString error;
    const QByteArray before = m_fixture->open()->users().find(QStringLiteral("jsmith"), &error)->passwordHash;
    QVERIFY2(before.contains("m=19456,t=2"), before.constData()); // the production minimum
    m_fixture->settings().hashCost = {24, 3};
    const std::unique_ptr<SecurityStore> store = m_fixture->open();
    QCOMPARE(Authenticator(*store).authenticate(QStringLiteral("jsmith"), secret("correct horse")).status,
             LogInStatus::Success);
    const QByteArray after = store->users().find(QStringLiteral("jsmith"), &error)->passwordHash;
    QVERIFY2(after.contains("m=24576,t=3"), after.constData());
    QCOMPARE(Authenticator(*store).authenticate(QStringLiteral("jsmith"), secret("correct horse")).status,
             LogInStatus::Success);
}

QTEST_GUILESS_MAIN(tst_Authenticator)
#include "tst_Authenticator.moc"
