#include "Authenticator.h"
#include "SecurityFixture.h"

#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using nebra::test::SecurityFixture;

namespace {
// The status of a log-in of jsmith with the password given.
LogInStatus logIn(Authenticator& authenticator, const char* password)
{
    return authenticator.authenticate(QStringLiteral("jsmith"), SecretBytes(QByteArray(password))).status;
}
} // namespace

// Log-in decisions, lockout and hash upgrades, on a real database with the
// production hash cost.
class AuthenticatorTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SecurityFixture> m_fixture;

    bool isLocked(SecurityStore& store)
    {
        QString error;
        return store.users().find(QStringLiteral("jsmith"), &error)->locked;
    }

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_fixture = std::make_unique<SecurityFixture>(m_dir->path());
        m_fixture->create();
        m_fixture->addUser(QStringLiteral("jsmith"), QStringLiteral("correct horse"),
                           QStringLiteral("Jane Smith"));
    }

    void unknownUserAndWrongPasswordAreRefusedAlike()
    {
        const std::unique_ptr<SecurityStore> store = m_fixture->open();
        Authenticator authenticator(*store);
        const LogInResult unknown = authenticator.authenticate(
            QStringLiteral("nobody"), SecretBytes(QByteArrayLiteral("correct horse")));
        QCOMPARE(unknown.status, LogInStatus::Refused);
        QVERIFY(unknown.error.isEmpty());
        QCOMPARE(logIn(authenticator, "wrong horse"), LogInStatus::Refused);
        const QStringList texts = m_fixture->auditTexts();
        QCOMPARE(texts.mid(texts.size() - 2),
                 QStringList({"Failed log in: unknown user", "Failed log in: wrong password"}));
        QString error;
        QCOMPARE(store->users().find(QStringLiteral("jsmith"), &error)->failedLogIns, 1);
    }

    void lockoutAtTheThresholdSurvivesRestartUntilUnlocked_data()
    {
        QTest::addColumn<int>("threshold");
        QTest::newRow("default 5") << 5;
        QTest::newRow("site setting 2") << 2;
    }

    void lockoutAtTheThresholdSurvivesRestartUntilUnlocked()
    {
        QFETCH(int, threshold);
        m_fixture->settings().lockoutThreshold = threshold;
        {
            const std::unique_ptr<SecurityStore> store = m_fixture->open();
            Authenticator authenticator(*store);
            for (int i = 1; i < threshold; ++i)
                QCOMPARE(logIn(authenticator, "guess"), LogInStatus::Refused);
            QVERIFY(!isLocked(*store));
            QCOMPARE(logIn(authenticator, "guess"), LogInStatus::Refused);
        }
        QCOMPARE(m_fixture->auditTexts().last(),
                 QStringLiteral("Account locked after %1 failed log ins").arg(threshold));

        // A new process: the lock is still there, whatever password is typed.
        const std::unique_ptr<SecurityStore> store = m_fixture->open();
        Authenticator authenticator(*store);
        QCOMPARE(logIn(authenticator, "guess"), LogInStatus::Locked);
        QCOMPARE(logIn(authenticator, "correct horse"), LogInStatus::Locked);
        QString error;
        QVERIFY(
            SecurityAdministration(*store, QStringLiteral("admin")).unlock(QStringLiteral("jsmith"), &error));
        QCOMPARE(logIn(authenticator, "correct horse"), LogInStatus::Success);
    }

    void successLogsInAndResetsTheFailureCount()
    {
        m_fixture->settings().lockoutThreshold = 2;
        const std::unique_ptr<SecurityStore> store = m_fixture->open();
        Authenticator authenticator(*store);
        QCOMPARE(logIn(authenticator, "guess"), LogInStatus::Refused);
        const LogInResult result = authenticator.authenticate(
            QStringLiteral("JSMITH"), SecretBytes(QByteArrayLiteral("correct horse")));
        QCOMPARE(result.status, LogInStatus::Success);
        QCOMPARE(result.user.name, QStringLiteral("jsmith")); // names compare without regard to case
        QCOMPARE(result.user.fullName, QStringLiteral("Jane Smith"));
        QCOMPARE(m_fixture->auditTexts().last(), QStringLiteral("Log in"));
        // Counted per run of failures: one more failure does not lock.
        QCOMPARE(logIn(authenticator, "guess"), LogInStatus::Refused);
        QVERIFY(!isLocked(*store));
    }

    void disabledAccountAnswersAlikeWhateverThePassword()
    {
        const std::unique_ptr<SecurityStore> store = m_fixture->open();
        QString error;
        QVERIFY(SecurityAdministration(*store, QStringLiteral("admin"))
                    .setDisabled(QStringLiteral("jsmith"), true, &error));
        Authenticator authenticator(*store);
        QCOMPARE(logIn(authenticator, "guess"), LogInStatus::Disabled);
        QCOMPARE(logIn(authenticator, "correct horse"), LogInStatus::Disabled);
    }

    void logInUpgradesAWeakerHash()
    {
        QString error;
        const QByteArray before =
            m_fixture->open()->users().find(QStringLiteral("jsmith"), &error)->passwordHash;
        QVERIFY2(before.contains("m=19456,t=2"), before.constData()); // the production minimum
        m_fixture->settings().hashCost = {24, 3};
        const std::unique_ptr<SecurityStore> store = m_fixture->open();
        Authenticator authenticator(*store);
        QCOMPARE(logIn(authenticator, "correct horse"), LogInStatus::Success);
        const QByteArray after = store->users().find(QStringLiteral("jsmith"), &error)->passwordHash;
        QVERIFY2(after.contains("m=24576,t=3"), after.constData());
        QCOMPARE(logIn(authenticator, "correct horse"), LogInStatus::Success);
    }
};

QTEST_GUILESS_MAIN(AuthenticatorTest)
#include "AuthenticatorTest.moc"
