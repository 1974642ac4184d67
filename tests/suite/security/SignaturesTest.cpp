#include "DialogScript.h"
#include "ManagerSite.h"

#include <QCryptographicHash>
#include <QSignalSpy>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

namespace {

const QString Report = QStringLiteral("/data/My Assays/Reports/Plate 7.pdf");
const QString Sign = QStringLiteral("Documents/Sign");

DocumentFingerprint fingerprint(const QString& path, const QByteArray& content)
{
    return {path, QCryptographicHash::hash(content, QCryptographicHash::Sha256), content.size(), 0};
}

} // namespace

// Signing through the manager, on the back end that NEBRA_TEST_SECURITY_BACKEND
// names (CTest runs it for each): the server words the entry itself, so the
// texts compared here prove that both stores record the same. The rows are
// attacked in StoreAttacksTest and ServerAttacksTest.
class SignaturesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aSessionSignsAndReadsItsSignatures()
    {
        ManagerSite site({Sign});
        std::unique_ptr<NebraSecurityManager> manager = loggedInManager();
        QVERIFY(manager);
        QVERIFY(!manager->HasSignedInSession());
        const SignResult first = manager->SignDocument(fingerprint(Report, "v1"), "Reviewed", " JSmith ",
                                                       SecretBytes("correct horse"));
        QVERIFY2(first.sequence > 0, qPrintable(first.error));
        QVERIFY(manager->HasSignedInSession());
        QCOMPARE(site.auditTexts().constLast(), "Signed: " + Report +
                                                    " sha256=" + fingerprint(Report, "v1").sha256.toHex() +
                                                    " meaning=Reviewed by Jane Smith (jsmith)");
        const SignResult later = manager->SignDocument(fingerprint(Report, "v1"), "Approved", "jsmith",
                                                       SecretBytes("correct horse"));
        QVERIFY2(later.sequence > first.sequence, qPrintable(later.error));

        QList<DocumentSignature> read;
        QString error;
        QVERIFY2(manager->ReadSignatures(Report, &read, &error), qPrintable(error));
        // As recorded, to the time (the tool's test reads the other fields back).
        QCOMPARE(read.size(), 2);
        QCOMPARE(SignatureEntries::caption(read.at(1)), SignatureEntries::caption(later.signature));
        QVERIFY(read.at(0).intact && read.at(1).intact);
        // The documents' writer reads every path's, for the list.
        const std::optional<DocumentWriter> writer = manager->DocumentWriters()(&error);
        QVERIFY2(writer, qPrintable(error));
        QHash<QString, QList<DocumentSignature>> all;
        QVERIFY2(writer->signatures(&all, &error), qPrintable(error));
        QCOMPARE(all.keys(), QStringList{Report});
        QCOMPARE(all.value(Report).size(), 2);

        // The next session asks for the user name again.
        manager->SessionLogOut();
        DialogScript dialogs;
        dialogs.logIn("jsmith", "correct horse");
        QVERIFY(manager->LogIn(nullptr));
        QVERIFY(!manager->HasSignedInSession());
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("user"); // who is logged in
        QTest::addColumn<QString>("meaning");
        QTest::addColumn<QString>("typedUser");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("refusal");
        QTest::addColumn<QString>("entry"); // the newest entry after it
        // clang-format off
        QTest::newRow("without the right") << "asmith" << "Approved" << "asmith" << "correct horse" << "You do not have the right to sign documents." << "Log in";
        QTest::newRow("a meaning outside the list") << "jsmith" << "Rejected" << "jsmith" << "correct horse" << "\"Rejected\" is not a meaning of a signature at this site: choose one of Authored, Reviewed, Approved." << "Log in";
        QTest::newRow("another user's name") << "jsmith" << "Approved" << "asmith" << "correct horse" << "Sign with the user name of the session (jsmith)." << "Log in";
        QTest::newRow("no full name") << "nfn" << "Approved" << "nfn" << "correct horse" << SignatureEntries::noFullNameText() << "Log in";
        QTest::newRow("wrong password") << "jsmith" << "Approved" << "jsmith" << "guess" << SignatureEntries::wrongPasswordText() << "Signing refused: password incorrect";
        // clang-format on
    }

    void refusals()
    {
        QFETCH(QString, user);
        QFETCH(QString, meaning);
        QFETCH(QString, typedUser);
        QFETCH(QString, password);
        QFETCH(QString, refusal);
        QFETCH(QString, entry);
        ManagerSite site({Sign});
        site.administer([](auto& admin, QString* e) {
            return admin.addUser("asmith", "Ann Smith", SecretBytes("correct horse"), e) &&
                   admin.addUser("nfn", "", SecretBytes("correct horse"), e) &&
                   admin.grant("nfn", {"Documents", "Sign"}, e);
        });
        const std::unique_ptr<NebraSecurityManager> manager = siteManager();
        DialogScript dialogs;
        dialogs.logIn(user, "correct horse");
        QVERIFY(manager && manager->LogIn(nullptr));
        const SignResult result = manager->SignDocument(fingerprint(Report, "v1"), meaning, typedUser,
                                                        SecretBytes(password.toUtf8()));
        QCOMPARE(result.sequence, 0);
        QCOMPARE(result.error, refusal);
        QVERIFY(!result.locked);
        QVERIFY(!manager->HasSignedInSession());
        QCOMPARE(site.auditTexts().constLast(), entry);
        QList<DocumentSignature> read;
        QString error;
        QVERIFY(manager->ReadSignatures(Report, &read, &error));
        QVERIFY(read.isEmpty());
    }

    void guessingThePasswordLocksAndEndsTheSession()
    {
        ManagerSite site({Sign});
        site.setPolicy("LockoutThreshold", 2);
        const std::unique_ptr<NebraSecurityManager> manager = loggedInManager();
        QVERIFY(manager);
        QSignalSpy loggedOut(manager.get(), &NebraSecurityManager::UserLoggedOut);
        QVERIFY(
            !manager->SignDocument(fingerprint(Report, "v1"), "Approved", "jsmith", SecretBytes("guess 1"))
                 .locked);
        const SignResult second =
            manager->SignDocument(fingerprint(Report, "v1"), "Approved", "jsmith", SecretBytes("guess 2"));
        QVERIFY(second.locked);
        QCOMPARE(loggedOut.count(), 1);
        QCOMPARE(manager->UserName(), QString());
        QCOMPARE(
            site.auditTexts().mid(site.auditTexts().size() - 2),
            QStringList({"Account locked after 2 failed log ins", "Session ended: the account was locked"}));
    }
};

QTEST_MAIN(SignaturesTest)
#include "SignaturesTest.moc"
