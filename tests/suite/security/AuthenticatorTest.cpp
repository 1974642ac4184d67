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

bool isLocked(SecurityStore& store)
{
    QString error;
    return store.users().find(QStringLiteral("jsmith"), &error)->locked;
}

// A database of its own holding jsmith ("correct horse", "Jane Smith").
struct Site
{
    QTemporaryDir dir;
    SecurityFixture fixture{dir.path()};

    Site()
    {
        fixture.create();
        fixture.addUser(QStringLiteral("jsmith"), QStringLiteral("correct horse"),
                        QStringLiteral("Jane Smith"));
    }
};

} // namespace

// Log-in decisions, lockout and hash upgrades, on a real database with the
// production hash cost. That a locked or disabled account answers alike
// whatever the password is proven by the attack on it (SecurityAttacksTest).
class AuthenticatorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void unknownUserAndWrongPasswordAreRefusedAlike()
    {
        Site o;
        const std::unique_ptr<SecurityStore> store = o.fixture.open();
        Authenticator authenticator(*store);
        const LogInResult unknown = authenticator.authenticate(
            QStringLiteral("nobody"), SecretBytes(QByteArrayLiteral("correct horse")));
        QCOMPARE(unknown.status, LogInStatus::Refused);
        QVERIFY(unknown.error.isEmpty());
        QCOMPARE(logIn(authenticator, "wrong horse"), LogInStatus::Refused);
        const QStringList texts = o.fixture.auditTexts();
        QCOMPARE(texts.mid(texts.size() - 2),
                 QStringList({"Failed log in: unknown user", "Failed log in: wrong password"}));
        QString error;
        QCOMPARE(store->users().find(QStringLiteral("jsmith"), &error)->failedLogIns, 1);
    }

    void lockoutAtTheThresholdSurvivesRestartUntilUnlocked_data()
    {
        QTest::addColumn<int>("threshold");
        // clang-format off
        QTest::newRow("default 5") << 5;
        QTest::newRow("site setting 2") << 2;
        // clang-format on
    }

    void lockoutAtTheThresholdSurvivesRestartUntilUnlocked()
    {
        Site o;
        QFETCH(int, threshold);
        o.fixture.settings().lockoutThreshold = threshold;
        {
            const std::unique_ptr<SecurityStore> store = o.fixture.open();
            Authenticator authenticator(*store);
            for (int i = 1; i < threshold; ++i)
                QCOMPARE(logIn(authenticator, "guess"), LogInStatus::Refused);
            QVERIFY(!isLocked(*store));
            QCOMPARE(logIn(authenticator, "guess"), LogInStatus::Refused);
        }
        QCOMPARE(o.fixture.auditTexts().last(),
                 QStringLiteral("Account locked after %1 failed log ins").arg(threshold));

        // A new process: the lock is still there, whatever password is typed.
        const std::unique_ptr<SecurityStore> store = o.fixture.open();
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
        Site o;
        o.fixture.settings().lockoutThreshold = 2;
        const std::unique_ptr<SecurityStore> store = o.fixture.open();
        Authenticator authenticator(*store);
        QCOMPARE(logIn(authenticator, "guess"), LogInStatus::Refused);
        const LogInResult result = authenticator.authenticate(
            QStringLiteral("JSMITH"), SecretBytes(QByteArrayLiteral("correct horse")));
        QCOMPARE(result.status, LogInStatus::Success);
        QCOMPARE(result.user.name, QStringLiteral("jsmith")); // names compare without regard to case
        QCOMPARE(result.user.fullName, QStringLiteral("Jane Smith"));
        QCOMPARE(o.fixture.auditTexts().last(), QStringLiteral("Log in"));
        // Counted per run of failures: one more failure does not lock.
        QCOMPARE(logIn(authenticator, "guess"), LogInStatus::Refused);
        QVERIFY(!isLocked(*store));
    }

    void logInUpgradesAWeakerHash()
    {
        Site o;
        QString error;
        const QByteArray before =
            o.fixture.open()->users().find(QStringLiteral("jsmith"), &error)->passwordHash;
        QVERIFY2(before.contains("m=19456,t=2"), before.constData()); // the production minimum
        o.fixture.settings().hashCost = {24, 3};
        const std::unique_ptr<SecurityStore> store = o.fixture.open();
        Authenticator authenticator(*store);
        QCOMPARE(logIn(authenticator, "correct horse"), LogInStatus::Success);
        const QByteArray after = store->users().find(QStringLiteral("jsmith"), &error)->passwordHash;
        QVERIFY2(after.contains("m=24576,t=3"), after.constData());
        QCOMPARE(logIn(authenticator, "correct horse"), LogInStatus::Success);
    }
};

QTEST_GUILESS_MAIN(AuthenticatorTest)
#include "AuthenticatorTest.moc"
