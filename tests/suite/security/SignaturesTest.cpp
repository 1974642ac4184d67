#include "DialogScript.h"
#include "DocumentRecord.h"
#include "ManagerSite.h"

#include <QCryptographicHash>
#include <QSignalSpy>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

Q_DECLARE_METATYPE(nebra::DocumentChange)

namespace {

const QString Sign = "Documents/Sign";
const QString Protocol = QStringLiteral("/data/My Assays/Protocols/ELISA.apr");

DocumentFingerprint fingerprint(const QString& path, const QByteArray& content)
{
    return {path, QCryptographicHash::hash(content, QCryptographicHash::Sha256), content.size(),
            1764132300123};
}

DocumentChange change(DocumentEvent event, const QByteArray& content, const QString& program = {})
{
    return {event, fingerprint(Protocol, content), {}, program, {}};
}

} // namespace

// Document entries, the newest record per path and signing, through the
// manager, on the back end that NEBRA_TEST_SECURITY_BACKEND names (CTest runs
// it for each): the server words each entry itself, so the texts compared here
// are the proof that both stores say the same. The seals of the embedded
// tables are attacked in StoreAttacksTest, the server's in ServerAttacksTest.
class SignaturesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aSessionSignsAndReadsItsSignatures()
    {
        ManagerSite site({Sign});
        std::unique_ptr<NebraSecurityManager> manager = loggedInManager();
        QVERIFY(manager && !manager->HasSignedInSession());
        const SignResult first = manager->SignDocument(fingerprint(Protocol, "v1"), "Reviewed", " JSmith ",
                                                       SecretBytes("correct horse"));
        QVERIFY2(first.sequence > 0, qPrintable(first.error));
        QVERIFY(manager->HasSignedInSession());
        QCOMPARE(site.auditTexts().constLast(), "Signed: " + Protocol +
                                                    " sha256=" + fingerprint(Protocol, "v1").sha256.toHex() +
                                                    " meaning=Reviewed by Jane Smith (jsmith)");
        const SignResult later = manager->SignDocument(fingerprint(Protocol, "v1"), "Approved", "jsmith",
                                                       SecretBytes("correct horse"));
        QVERIFY2(later.sequence > first.sequence, qPrintable(later.error));

        QList<DocumentSignature> read;
        QString error;
        QVERIFY2(manager->ReadSignatures(Protocol, &read, &error), qPrintable(error));
        // As recorded, to the time (the tool's test reads the other fields back).
        QCOMPARE(read.size(), 2);
        QCOMPARE(SignatureEntries::caption(read.at(1)), SignatureEntries::caption(later.signature));
        QVERIFY(read.at(0).intact && read.at(1).intact);
        // The documents' writer reads every path's, for the list.
        const std::optional<DocumentWriter> writer = manager->DocumentWriters()(&error);
        QVERIFY2(writer, qPrintable(error));
        QHash<QString, QList<DocumentSignature>> all;
        QVERIFY2(writer->signatures(&all, &error), qPrintable(error));
        QCOMPARE(all.keys(), QStringList{Protocol});
        QCOMPARE(all.value(Protocol).size(), 2);

        // The next session asks for the user name again.
        manager->SessionLogOut();
        DialogScript dialogs;
        dialogs.logIn("jsmith", "correct horse");
        QVERIFY(manager->LogIn(nullptr) && !manager->HasSignedInSession());
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
        const SignResult result = manager->SignDocument(fingerprint(Protocol, "v1"), meaning, typedUser,
                                                        SecretBytes(password.toUtf8()));
        QCOMPARE(result.sequence, 0);
        QCOMPARE(result.error, refusal);
        QVERIFY(!result.locked && !manager->HasSignedInSession());
        QCOMPARE(site.auditTexts().constLast(), entry);
        QList<DocumentSignature> read;
        QString error;
        QVERIFY(manager->ReadSignatures(Protocol, &read, &error) && read.isEmpty());
    }

    void guessingThePasswordLocksAndEndsTheSession()
    {
        ManagerSite site({Sign});
        site.setPolicy("LockoutThreshold", 2);
        const std::unique_ptr<NebraSecurityManager> manager = loggedInManager();
        QVERIFY(manager);
        QSignalSpy loggedOut(manager.get(), &NebraSecurityManager::UserLoggedOut);
        for (const bool locks : {false, true})
            QCOMPARE(
                manager->SignDocument(fingerprint(Protocol, "v1"), "Approved", "jsmith", SecretBytes("guess"))
                    .locked,
                locks);
        QCOMPARE(loggedOut.count(), 1);
        QCOMPARE(manager->UserName(), QString());
        QCOMPARE(site.auditTexts().last(2), QStringList({"Account locked after 2 failed log ins",
                                                         "Session ended: the account was locked"}));
    }

    void eachEventIsAnEntryAndTheNewestRecord_data()
    {
        QTest::addColumn<DocumentChange>("change");
        QTest::addColumn<QString>("entry");
        QTest::addColumn<int>("state");
        const QString fp = QStringLiteral("%1 sha256=%2 size=2 modified=2025-11-26T04:45:00.123Z")
                               .arg(Protocol, QString::fromLatin1(fingerprint({}, "v2").sha256.toHex()));
        DocumentChange renamed{
            DocumentEvent::Renamed, fingerprint(Protocol + QStringLiteral(".old"), "v2"), Protocol, {}, {}};
        // clang-format off
        QTest::newRow("first seen") << change(DocumentEvent::Recorded, "v2") << "Document recorded: " + fp << int(RecordState::Recorded);
        QTest::newRow("by a suite program") << change(DocumentEvent::ChangedBySuite, "v2", "Layout Editor") << "Document changed: " + fp + " by Layout Editor" << int(RecordState::Recorded);
        QTest::newRow("outside") << change(DocumentEvent::ChangedOutside, "v2") << "Document changed outside the suite: " + fp + " (seen while jsmith was logged in)" << int(RecordState::ChangedOutside);
        QTest::newRow("unwatched") << change(DocumentEvent::ChangedUnwatched, "v2") << "Document changed while nothing recorded it: " + fp + " (found while jsmith was logged in)" << int(RecordState::ChangedUnwatched);
        QTest::newRow("removed") << DocumentChange{DocumentEvent::Removed, {Protocol, {}, -1, 0}, {}, {}, {}} << "Document removed: " + Protocol << int(RecordState::NotRecorded);
        QTest::newRow("renamed") << renamed << "Document renamed: " + Protocol + " -> " + Protocol + ".old" << int(RecordState::Recorded);
        // clang-format on
    }

    void eachEventIsAnEntryAndTheNewestRecord()
    {
        QFETCH(DocumentChange, change);
        QFETCH(QString, entry);
        QFETCH(int, state);
        ManagerSite site({});
        const std::unique_ptr<NebraSecurityManager> manager = loggedInManager();
        QVERIFY(manager);
        QString error;
        const std::optional<DocumentWriter> writer = manager->DocumentWriters()(&error);
        QVERIFY2(writer, qPrintable(error));
        QList<qint64> sequences;
        QVERIFY2(writer->record({::change(DocumentEvent::Recorded, "v1"), change}, &sequences, &error),
                 qPrintable(error));
        QCOMPARE(sequences.size(), 2);
        QCOMPARE(site.auditTexts().constLast(), entry);
        QCOMPARE(DocumentEntries::text(change, QStringLiteral("jsmith")), entry);

        QHash<QString, DocumentRecord> records;
        QVERIFY2(writer->records(&records, &error), qPrintable(error));
        QCOMPARE(records.size(), 1);
        const DocumentRecord newest = records.value(change.fingerprint.path);
        QCOMPARE(newest.sequence, sequences.constLast());
        QCOMPARE(newest.event, change.event);
        QCOMPARE(newest.fingerprint.sha256, change.fingerprint.sha256);
        QCOMPARE(newest.fingerprint.modifiedMs, change.fingerprint.modifiedMs);
        QVERIFY(newest.intact);
        QCOMPARE(int(DocumentEntries::stateOf(newest)), state);
    }

    void acceptingNeedsTheRightAndAReason()
    {
        // clang-format off
        for (const auto& [rights, reason, refusal] : std::initializer_list<std::tuple<QStringList, QString, QString>>{
            {QStringList{"Documents/AcceptChange"}, " Corrected a typing error ", ""}, // reviewer
            {QStringList{"Documents/AcceptChange"}, " ", "Give the reason for accepting the change."}, // no reason
            {QStringList{"Documents/Other"}, "Looks fine", "You do not have the right to accept changes of documents."} // no right
        }) {
            // clang-format on
            ManagerSite site(rights);
            const std::unique_ptr<NebraSecurityManager> manager = loggedInManager();
            QVERIFY(manager);
            QString error;
            const std::optional<DocumentWriter> writer = manager->DocumentWriters()(&error);
            QVERIFY2(writer, qPrintable(error));
            QList<qint64> sequences;
            QVERIFY(writer->record({change(DocumentEvent::ChangedOutside, "v2")}, &sequences, &error));
            const qsizetype entries = site.auditTexts().size();

            const AuditAppendResult result =
                manager->AcceptDocumentChange(fingerprint(Protocol, "v2"), reason);
            QCOMPARE(result.error, refusal);
            QCOMPARE(result.sequence > 0, refusal.isEmpty());
            QHash<QString, DocumentRecord> records;
            QVERIFY(writer->records(&records, &error));
            const DocumentRecord newest = records.value(Protocol);
            // Accepted, the history keeps both: the change seen and its acceptance.
            const QStringList texts = site.auditTexts();
            QCOMPARE(texts.size(), entries + (refusal.isEmpty() ? 1 : 0));
            QCOMPARE(newest.event,
                     refusal.isEmpty() ? DocumentEvent::Accepted : DocumentEvent::ChangedOutside);
            QCOMPARE(DocumentEntries::stateOf(newest),
                     refusal.isEmpty() ? RecordState::Recorded : RecordState::ChangedOutside);
            if (refusal.isEmpty())
                QVERIFY(texts.constLast().endsWith(QLatin1String(" reason: Corrected a typing error")));
        }
    }
};

QTEST_MAIN(SignaturesTest)
#include "SignaturesTest.moc"
