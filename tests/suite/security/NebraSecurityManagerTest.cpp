#include "NebraSecurityManager.h"
#include "DialogScript.h"
#include "ManagerSite.h"
#include "MessageRecorder.h"

#include <QSignalSpy>
#include <QTest>

#include <thread>

using namespace nebra;
using namespace nebra::test;

namespace {

// A site of jsmith, who holds RunProtocol, with the manager's boxes and dialogs answered.
struct Manager
{
    ManagerSite site{{"AuthorisationsGeneral/RunProtocol"}};
    MessageRecorder messages;
    DialogScript dialogs;
};

} // namespace

// The manager through its own operations, with its dialogs answered through
// the dialog seam, on the back end that NEBRA_TEST_SECURITY_BACKEND names
// (CTest runs it for each). The time-out is tested through the running Organiser.
class NebraSecurityManagerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void logInRefusals()
    {
        const QString wrong = "The user name or password is incorrect.";
        // The attempts (user and password pairs; "cancel" cancels), the messages and the dialogs shown.
        // clang-format off
        for (const auto& [attempts, messages, dialogs] : std::initializer_list<std::tuple<QStringList, QStringList, int>>{
            {QStringList{"cancel"}, QStringList(), 1}, // cancelled
            {QStringList{"jsmith", "guess", "cancel"}, QStringList{wrong}, 2}, // wrong, then cancelled
            {QStringList{"jsmith", "a", "nobody", "b", "jsmith", "c"}, QStringList{wrong, wrong, wrong}, 3}, // three wrong attempts end it
            {QStringList{"jsmith", "", "cancel"}, QStringList{"Enter your user name and your password."}, 2} // empty password
        }) {
            // clang-format on
            Manager o;
            const std::unique_ptr<NebraSecurityManager> manager = siteManager();
            for (int i = 0; i < attempts.size(); i += 2) // "cancel" comes last
                attempts[i] == "cancel" ? o.dialogs.cancel() : o.dialogs.logIn(attempts[i], attempts[i + 1]);
            QVERIFY(!manager->LogIn(nullptr));
            QCOMPARE(o.dialogs.shown().size(), dialogs);
            QStringList shown;
            for (const MessageRequest& request : o.messages.requests()) {
                shown.append(request.text);
                QCOMPARE(request.title, "Security Manager");
            }
            QCOMPARE(shown, messages);
            QVERIFY(manager->UserName().isEmpty());
            QVERIFY(!manager->IsOperationAllowed("AuthorisationsGeneral", "RunProtocol"));
        }
    }

    void rightsComeDirectlyOrThroughRoles()
    {
        Manager o;
        const std::unique_ptr<NebraSecurityManager> manager = loggedInManager();
        QVERIFY(manager);
        const auto allowed = [&manager](const char* operation, const char* area = "AuthorisationsGeneral") {
            return manager->IsOperationAllowed(area, operation);
        };
        QVERIFY(allowed("RunProtocol") && !allowed("EditLayout"));
        // Changes by the administrator take effect within the running session.
        o.site.administer([](auto& admin, QString* error) {
            return admin.addRole("Editors", error) &&
                   admin.grantToRole("Editors", {"AuthorisationsGeneral", "*"}, error) &&
                   admin.assignRole("jsmith", "Editors", error);
        });
        QVERIFY(allowed("EditLayout") && !allowed("SelectDriver", "Instrumentation"));
        o.site.administer(
            [](auto& admin, QString* error) { return admin.setDisabled("jsmith", true, error); });
        QVERIFY(!allowed("RunProtocol"));
        QCOMPARE(o.messages.count(), 0);
    }

    void changePassword_data()
    {
        QTest::addColumn<QStringList>("fields"); // current, new, confirmation
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("passwordAfter");
        const QString kept = "correct horse";
        // clang-format off
        QTest::newRow("changed") << QStringList{kept, "battery staple", "battery staple"} << "Your password has been changed." << "battery staple";
        QTest::newRow("wrong current password") << QStringList{"guess", "battery staple", "battery staple"} << "The current password is incorrect." << kept;
        QTest::newRow("confirmation differs") << QStringList{kept, "battery staple", "battery stable"} << "The new password and its confirmation do not match." << kept;
        QTest::newRow("shorter than the site minimum of 10") << QStringList{kept, "short one", "short one"} << "The password must be at least 10 characters long." << kept;
        QTest::newRow("unchanged") << QStringList{kept, kept, kept} << "The new password must differ from the current one." << kept;
        // The new hash is not stored without its entry ("full" fills the store up first).
        QTest::newRow("change not recorded") << QStringList{kept, "battery staple", "battery staple", "full"} << "The audit trail entry could not be recorded (database or disk is full)." << kept;
        // clang-format on
    }

    void changePassword()
    {
        QFETCH(QStringList, fields);
        QFETCH(QString, message);
        QFETCH(QString, passwordAfter);
        Manager o;
        o.site.setPolicy("PasswordMinimumLength", 10);
        const std::unique_ptr<NebraSecurityManager> manager = loggedInManager();
        QVERIFY(manager);
        const QString reason = fields.size() > 3 ? o.site.breakAppends() : QString();
        o.dialogs.changePassword(fields[0], fields[1], fields[2]);
        if (passwordAfter == QLatin1String("correct horse"))
            o.dialogs.cancel(); // the dialog comes back after a refusal
        manager->SessionChangePassword(nullptr);
        QCOMPARE(o.messages.count(), 1);
        // The server, gone, cannot say whether it was the entry that failed; only why.
        if (!reason.isEmpty() && ManagerSite::isServer())
            QVERIFY2(o.messages.last().text.contains(reason), qPrintable(o.messages.last().text));
        else
            QCOMPARE(o.messages.last().text, message);
        QCOMPARE(o.dialogs.remaining(), 0);
        if (!reason.isEmpty())
            o.site.repairAppends();
        manager->SessionLogOut();

        o.dialogs.logIn("jsmith", passwordAfter);
        QVERIFY(manager->LogIn(nullptr));
    }

    void auditEntryThatCannotBeCommittedIsReported()
    {
        Manager o;
        const std::unique_ptr<NebraSecurityManager> manager = loggedInManager();
        QVERIFY(manager && manager->AddAuditTrailEntry("General", "Run protocol: a.apr"));
        // The store fills up (every insert fails as SQLite reports a full disk), or the server goes away.
        const QString reason = o.site.breakAppends();
        QVERIFY(!manager->AddAuditTrailEntry("General", "Run protocol: b.apr"));
        QCOMPARE(o.messages.count(), 1);
        const QString text = o.messages.last().text;
        QVERIFY2(text.startsWith(NebraSecurityManager::auditWriteFailureText() +
                                 "\n\nThe audit trail entry could not be recorded ("),
                 qPrintable(text));
        QVERIFY2(text.contains(reason), qPrintable(text));
        QCOMPARE(o.messages.last().icon, MessageIcon::Critical);
    }

    void guessingTheCurrentPasswordEndsTheSession()
    {
        Manager o;
        o.site.setPolicy("LockoutThreshold", 2);
        const std::unique_ptr<NebraSecurityManager> manager = loggedInManager();
        QVERIFY(manager);
        QSignalSpy loggedOut(manager.get(), &NebraSecurityManager::UserLoggedOut);
        o.dialogs.changePassword("guess 1", "battery staple", "battery staple");
        o.dialogs.changePassword("guess 2", "battery staple", "battery staple");
        manager->SessionChangePassword(nullptr);
        QCOMPARE(o.messages.count(), 2);
        QCOMPARE(loggedOut.count(), 1);
        QCOMPARE(manager->UserName(), QString());
        QVERIFY(!manager->IsOperationAllowed("AuthorisationsGeneral", "RunProtocol"));
        QCOMPARE(o.site.auditTexts().last(2), QStringList({"Account locked after 2 failed log ins",
                                                           "Session ended: the account was locked"}));
    }

    void resetPasswordMustBeChangedAtLogIn()
    {
        Manager o;
        o.site.administer([](auto& admin, QString* error) {
            return admin.setPassword("jsmith", SecretBytes("temporary1"), true, error);
        });
        const std::unique_ptr<NebraSecurityManager> manager = siteManager();
        o.dialogs.logIn("jsmith", "temporary1");
        o.dialogs.cancel(); // the forced change
        QVERIFY(!manager->LogIn(nullptr));
        QCOMPARE(o.site.auditTexts().last(), "Log in abandoned: the password had to be changed first");

        o.dialogs.logIn("jsmith", "temporary1");
        o.dialogs.accept({{"txtNewPassword", "my own secret"}, {"txtConfirmPassword", "my own secret"}});
        QVERIFY(manager->LogIn(nullptr));
        QCOMPARE(o.dialogs.shown(),
                 QStringList({"frmLogIn", "frmChangePassword", "frmLogIn", "frmChangePassword"}));
        manager->SessionLogOut();
        o.dialogs.logIn("jsmith", "my own secret");
        QVERIFY(manager->LogIn(nullptr));
        QCOMPARE(o.dialogs.remaining(), 0); // no further change asked for
    }

    void reviewingTheTrailNeedsTheRight()
    {
        for (const bool session : {false, true}) {
            Manager o;
            const std::unique_ptr<NebraSecurityManager> manager = session ? loggedInManager() : siteManager();
            QVERIFY(manager);
            const QString error =
                session ? "You do not have the right to view the audit trail." : "No user is logged in.";
            qint64 count = -1;
            QList<AuditEntry> entries{AuditEntry{}};
            QString why;
            QVERIFY(!manager->CountAuditEntries({}, &count, &why));
            QCOMPARE(why, error);
            why.clear();
            QVERIFY(!manager->ReadAuditEntries({}, {}, 0, 10, &entries, &why));
            QCOMPARE(why, error);
            QVERIFY(entries.isEmpty());
            const AuditVerification verification = manager->VerifyAuditTrail();
            QVERIFY(!verification.ok);
            QCOMPARE(verification.message, error);
            QCOMPARE(manager->AuditTrailVerifier()().message, error);
            QCOMPARE(o.messages.count(), 0);
        }
    }

    // The same views on either back end: filters, orders and pages, and the chain check.
    void reviewerReadsTheTrail()
    {
        Manager o;
        o.site.administer([](auto& admin, QString* error) {
            return admin.grant(
                "jsmith", {NebraSecurityManager::ReviewArea, NebraSecurityManager::ReviewOperation}, error);
        });
        const std::unique_ptr<NebraSecurityManager> manager = loggedInManager();
        QVERIFY(manager);
        for (int i = 1; i <= 5; ++i)
            QVERIFY(manager->AddAuditTrailEntry(i % 2 ? "General" : "Reader",
                                                QStringLiteral("Run protocol: P%1.apr").arg(i)));
        QString error;
        qint64 all = 0, runs = 0;
        QVERIFY2(manager->CountAuditEntries({}, &all, &error), qPrintable(error));
        QCOMPARE(all, qint64(o.site.auditTexts().size()));
        AuditFilter filter;
        filter.userName = "JSMITH";
        filter.text = "run PROTOCOL";
        QVERIFY2(manager->CountAuditEntries(filter, &runs, &error), qPrintable(error));
        QCOMPARE(runs, 5);

        // A page of a view, as "sequence user text" of each entry (or the error).
        const auto view = [&manager](const AuditFilter& f, const AuditOrder& order, qint64 offset,
                                     int limit) {
            QList<AuditEntry> page;
            QString why;
            QStringList seen;
            if (!manager->ReadAuditEntries(f, order, offset, limit, &page, &why))
                return QStringList{why};
            for (const AuditEntry& entry : std::as_const(page))
                seen.append(QStringLiteral("%1 %2 %3").arg(entry.sequence).arg(entry.userName, entry.text));
            return seen;
        };
        // The run of protocol P<p>, back entries before the newest.
        const auto ran = [all](qint64 back, int p) {
            return QStringLiteral("%1 jsmith Run protocol: P%2.apr").arg(all - back).arg(p);
        };
        // Newest first, across a page boundary; the last page, short; then the general ones by text.
        QCOMPARE(view({}, {}, 1, 2), QStringList({ran(1, 4), ran(2, 3)}));
        QCOMPARE(view({}, {AuditColumn::Sequence, Qt::AscendingOrder}, all - 2, 5),
                 QStringList({ran(1, 4), ran(0, 5)}));
        filter.area = "General";
        QCOMPARE(view(filter, {AuditColumn::Text, Qt::DescendingOrder}, 0, 10),
                 QStringList({ran(0, 5), ran(2, 3), ran(4, 1)}));
        // A view pinned to an earlier moment leaves the later entries out.
        AuditFilter pinned;
        pinned.throughSequence = all - 2;
        QCOMPARE(view(pinned, {}, 0, 1), QStringList{ran(2, 3)});
        pinned.area = "Reader";
        QVERIFY2(manager->CountAuditEntries(pinned, &runs, &error), qPrintable(error));
        QCOMPARE(runs, 1); // P2; P4 came after

        const AuditVerification verification = manager->VerifyAuditTrail();
        QVERIFY2(verification.ok, qPrintable(verification.message));
        QCOMPARE(verification.entryCount, all);
        // The long check may run on a thread of its own, on a connection of its own.
        AuditVerification onThread;
        std::thread([&onThread, verify = manager->AuditTrailVerifier()] { onThread = verify(); }).join();
        QVERIFY2(onThread.ok, qPrintable(onThread.message));
        QCOMPARE(onThread.entryCount, all);
    }
};

QTEST_MAIN(NebraSecurityManagerTest)
#include "NebraSecurityManagerTest.moc"
