#include "Authenticator.h"
#include "SecurityFixture.h"

#include <QTest>

using namespace nebra;

namespace {

// The status of a log-in of jsmith with the password given.
LogInStatus logIn(Authenticator& authenticator, const char* password)
{
    return authenticator.authenticate("jsmith", SecretBytes(QByteArray(password))).status;
}

bool isLocked(SecurityStore& store)
{
    QString error;
    return store.users().find("jsmith", &error)->locked;
}

} // namespace

// Log-in decisions, lockout and hash upgrades, on a real database with the
// production hash cost. That a disabled account answers alike whatever the
// password is proven by the attack on it (SecurityAttacksTest).
class AuthenticatorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Refused alike, recorded apart; a success resets the count of failures.
    void unknownUserAndWrongPasswordAreRefusedAlike()
    {
        test::SecuritySite o; // jsmith, "correct horse", "Jane Smith"
        o.fixture.settings().lockoutThreshold = 3;
        const std::unique_ptr<SecurityStore> store = o.fixture.open();
        Authenticator authenticator(*store);
        const LogInResult unknown = authenticator.authenticate("nobody", SecretBytes("correct horse"));
        QCOMPARE(unknown.status, LogInStatus::Refused);
        QVERIFY(unknown.error.isEmpty());
        QCOMPARE(logIn(authenticator, "wrong horse"), LogInStatus::Refused);
        QCOMPARE(o.fixture.auditTexts().last(2),
                 QStringList({"Failed log in: unknown user", "Failed log in: wrong password"}));
        QString error;
        QCOMPARE(store->users().find("jsmith", &error)->failedLogIns, 1);
        const LogInResult result = authenticator.authenticate("JSMITH", SecretBytes("correct horse"));
        QCOMPARE(result.status, LogInStatus::Success);
        QCOMPARE(result.user.name, "jsmith"); // names compare without regard to case
        QCOMPARE(result.user.fullName, "Jane Smith");
        QCOMPARE(o.fixture.auditTexts().last(), "Log in");
        // Counted per run of failures, a wrong current password in Change Password like a failed log-in.
        const auto wrongCurrent = [&](bool locks) {
            bool locked = !locks;
            QVERIFY(!authenticator.checkCurrentPassword("jsmith", SecretBytes("guess"), &locked, &error));
            QCOMPARE(locked, locks);
            QCOMPARE(isLocked(*store), locks);
        };
        wrongCurrent(false);
        QCOMPARE(logIn(authenticator, "guess"), LogInStatus::Refused);
        QVERIFY(!isLocked(*store));
        wrongCurrent(true);
        QCOMPARE(logIn(authenticator, "correct horse"), LogInStatus::Locked);
    }

    void lockoutAtTheThresholdSurvivesRestartUntilUnlocked()
    {
        for (const int threshold : {5, 2}) {
            test::SecuritySite o;
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

            // A new process: the lock is still there, whatever password is typed, and each attempt is
            // recorded.
            const std::unique_ptr<SecurityStore> store = o.fixture.open();
            Authenticator authenticator(*store);
            const int entries = o.fixture.auditTexts().size();
            QCOMPARE(logIn(authenticator, "guess"), LogInStatus::Locked);
            QCOMPARE(logIn(authenticator, "correct horse"), LogInStatus::Locked);
            QCOMPARE(o.fixture.auditTexts().mid(entries), QStringList(2, "Log in refused: account locked"));
            QString error;
            QVERIFY(SecurityAdministration(*store, "admin").unlock("jsmith", &error));
            QCOMPARE(logIn(authenticator, "correct horse"), LogInStatus::Success);
        }
    }

    void logInUpgradesAWeakerHash()
    {
        test::SecuritySite o;
        QString error;
        const QByteArray before = o.fixture.open()->users().find("jsmith", &error)->passwordHash;
        QVERIFY2(before.contains("m=19456,t=2"), before.constData()); // the production minimum
        o.fixture.settings().hashCost = {24, 3};
        const std::unique_ptr<SecurityStore> store = o.fixture.open();
        Authenticator authenticator(*store);
        QCOMPARE(logIn(authenticator, "correct horse"), LogInStatus::Success);
        const QByteArray after = store->users().find("jsmith", &error)->passwordHash;
        QVERIFY2(after.contains("m=24576,t=3"), after.constData());
        QCOMPARE(logIn(authenticator, "correct horse"), LogInStatus::Success);
    }
};

QTEST_GUILESS_MAIN(AuthenticatorTest)
#include "AuthenticatorTest.moc"
