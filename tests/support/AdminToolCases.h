#pragma once

// What nebra-secadmin must do alike on either back end, run by the
// embedded database's test and the security server's test with their own
// way of starting the tool.

#include "DocumentFolders.h"
#include "DocumentSignature.h"
#include "SecondProcess.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTest>

#include <functional>

namespace nebra::test {

using AdminRun = ProcessRun;

// Starts nebra-secadmin with the arguments and the standard input.
inline AdminRun runAdminTool(const QStringList& arguments, const QByteArray& input = {})
{
    return runProgram(QStringLiteral(SECADMIN), arguments, input);
}

class AdminToolCases
{
public:
    using Runner = std::function<AdminRun(const QStringList&, const QByteArray&)>;
    explicit AdminToolCases(Runner run) : m_run(std::move(run)) {}

    AdminRun run(const QStringList& arguments, const QByteArray& input = {}) const
    {
        return m_run(arguments, input);
    }

    // The texts of the newest count entries, as audit prints them.
    QStringList newestTexts(int count) const
    {
        QStringList texts;
        for (const QString& line : run({"audit"}).out.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            texts.append(line.section(QLatin1Char('\t'), 5));
        return texts.mid(qMax(0, texts.size() - count));
    }

    // Users, roles and rights given and taken away: each change said, listed and recorded.
    void administersUsersAndRights() const
    {
        // clang-format off
        const QList<QPair<QStringList, QString>> changes = {
            {{"add-role", "Analysts"}, "Role added."},
            {{"grant-role", "Analysts", "AuthorisationsGeneral", "RunProtocol"}, "Right granted to the role."},
            {{"assign-role", "jsmith", "Analysts"}, "Role given."},
            {{"grant", "jsmith", "Instrumentation", "SelectDriver"}, "Right granted."},
            {{"revoke-role", "Analysts", "AuthorisationsGeneral", "RunProtocol"}, "Right revoked from the role."},
            {{"unassign-role", "jsmith", "Analysts"}, "Role taken away."},
            {{"assign-role", "jsmith", "Analysts"}, "Role given."},
            {{"disable-user", "jsmith"}, "User disabled."}};
        // clang-format on
        QCOMPARE(run({"add-user", "jsmith", "--full-name", "Jane Smith"}, "correct horse\n").out,
                 "User added.\n");
        for (const auto& [arguments, said] : changes) {
            const AdminRun changed = run(arguments);
            QVERIFY2(changed.exitCode == 0, qPrintable(arguments.join(QLatin1Char(' ')) + changed.err));
            QCOMPARE(changed.out, said + QLatin1Char('\n'));
        }
        QCOMPARE(run({"list-users"}).out,
                 QStringLiteral("jsmith\tJane Smith\tdisabled\troles: Analysts\trights: "
                                "Instrumentation/SelectDriver\n"));
        QCOMPARE(newestTexts(9),
                 QStringList({"User added: jsmith (Jane Smith)", "Role added: Analysts",
                              "Right granted to role Analysts: AuthorisationsGeneral/RunProtocol",
                              "Role Analysts given to jsmith",
                              "Right granted to jsmith: Instrumentation/SelectDriver",
                              "Right revoked from role Analysts: AuthorisationsGeneral/RunProtocol",
                              "Role Analysts taken from jsmith", "Role Analysts given to jsmith",
                              "User disabled: jsmith"}));
        const AdminRun refused = run({"add-user", "jsmith"}, "another password\n");
        QCOMPARE(refused.exitCode, 1);
        QCOMPARE(refused.err, "nebra-secadmin: There is already a user \"jsmith\".\n");
        QVERIFY(refusedSaying(run({"unassign-role", "jsmith", "Nobody"}), "no role \"Nobody\""));
    }

    // The anchor printed now is held by the trail later; another one is not.
    void anchorIsCheckedByVerify() const
    {
        const AdminRun anchor = run({"anchor"});
        QCOMPARE(anchor.exitCode, 0);
        const QString kept = anchor.out.trimmed();
        QVERIFY(kept.contains(QLatin1Char(':')));
        QCOMPARE(run({"add-role", "Reviewers"}).exitCode, 0);
        const AdminRun held = run({"verify", "--anchor", kept});
        QCOMPARE(held.exitCode, 0);
        QVERIFY2(held.out.endsWith(
                     QStringLiteral("still holds the anchor's entry %1.\n").arg(kept.section(':', 0, 0))),
                 qPrintable(held.out));
        QString forged = kept;
        forged[forged.size() - 1] = forged.back() == QLatin1Char('0') ? QLatin1Char('1') : QLatin1Char('0');
        QVERIFY(refusedSaying(run({"verify", "--anchor", forged}), "is not the entry of the anchor"));
        QVERIFY(refusedSaying(run({"verify", "--anchor", "9999:" + kept.section(':', 1)}),
                              "no longer reaches the anchor's entry 9999"));
        QCOMPARE(run({"verify", "--anchor", "12"}).exitCode, 2);
    }

    // The CSV export: header, one row per entry, the newest entry's text
    // (written beforehand by the caller as newestText) neutralised as a formula.
    void auditExportsCsv(const QString& path, const QString& newestText) const
    {
        QCOMPARE(run({"audit", "--csv", path}).exitCode, 0);
        const QList<QByteArray> lines = readFile(path).split('\n');
        QCOMPARE(lines.first(), QByteArray("Sequence,Time (UTC),User,Workstation,Area,Text,MAC,Signature\r"));
        QCOMPARE(lines.size(), newestTexts(100000).size() + 2); // the header and the empty rest
        const QByteArray newest = lines[lines.size() - 2];
        QVERIFY2(newest.contains(",General,\"'" + newestText.toUtf8().replace("\"", "\"\"") + "\","),
                 newest.constData());
        const AdminRun toOut = run({"audit", "--csv", "-"});
        QCOMPARE(toOut.out.toUtf8().split('\n').size(), lines.size());
    }

    // verify-documents over the data folders under parent (made the
    // settings' parent directory here), each document recorded through
    // record as a workstation would: a line for each kind of difference,
    // the exit status, a folder of its own, and CSV.
    void
    verifyDocumentsListsWhatNeedsAReviewer(const QString& parent,
                                           const std::function<void(const DocumentChange&)>& record) const
    {
        SettingsStore settings;
        SuitePaths paths(settings);
        QVERIFY(paths.SetParentDirectory(parent));
        const QString results = paths.ResultsFolder();
        const auto recordAs = [&](const QString& name, DocumentEvent event) {
            const std::optional<DocumentFingerprint> f =
                DocumentFolders::fingerprint(results + QLatin1Char('/') + name);
            QVERIFY(f);
            record({event, *f, {}, {}, QStringLiteral("reviewed")});
        };
        const QList<QPair<QString, DocumentEvent>> recorded = {
            {"done/kept.ars", DocumentEvent::Recorded},     {"done/accepted.ars", DocumentEvent::Accepted},
            {"altered.ars", DocumentEvent::Recorded},       {"outside.ars", DocumentEvent::ChangedOutside},
            {"missing.ars", DocumentEvent::ChangedBySuite}, {"gone.ars", DocumentEvent::Recorded}};
        for (const auto& [name, event] : recorded) {
            writeFile(results + QLatin1Char('/') + name, name.toUtf8());
            recordAs(name, event);
        }
        recordAs(QStringLiteral("gone.ars"), DocumentEvent::Removed);
        writeFile(results + QStringLiteral("/altered.ars"), "changed behind the suite's back");
        writeFile(results + QStringLiteral("/new.ars"), "new");
        writeFile(results + QStringLiteral("/new.mht"), "a preview, no document");
        QVERIFY(QFile::remove(results + QStringLiteral("/missing.ars")));
        QVERIFY(QFile::remove(results + QStringLiteral("/gone.ars")));

        const AdminRun all = run({"verify-documents"});
        QCOMPARE(all.exitCode, 1);
        QCOMPARE(all.out, QStringLiteral("altered: %1/altered.ars\n"
                                         "accepted change: %1/done/accepted.ars\n"
                                         "missing: %1/missing.ars\n"
                                         "unrecorded: %1/new.ars\n"
                                         "changed outside the suite: %1/outside.ars\n")
                              .arg(results));
        const AdminRun done = run({"verify-documents", results + QStringLiteral("/done"), "--csv", "-"});
        QCOMPARE(done.exitCode, 0);
        QCOMPARE(done.out,
                 QStringLiteral("finding,path\r\naccepted change,%1/done/accepted.ars\r\n").arg(results));
    }

    // signatures PATH on a document in folder signed through sign (by jsmith,
    // "Jane Smith", as a workstation would): valid while the file is as
    // signed, void once it changed, and a copy elsewhere is not signed.
    void signaturesTellWhetherTheDocumentStillMatches(
        const QString& folder, const std::function<DocumentSignature(const DocumentSignature&)>& sign) const
    {
        const QString report = folder + QStringLiteral("/plate 7.pdf");
        writeFile(report, "v1");
        QStringList lines;
        for (const char* meaning : {"Reviewed", "Approved"}) {
            const std::optional<DocumentFingerprint> f = DocumentFolders::fingerprint(report);
            QVERIFY(f);
            const DocumentSignature signature =
                sign({report, f->sha256, QLatin1String(meaning), {}, {}, 0, 0});
            QVERIFY(signature.sequence > 0);
            lines.append(SignatureEntries::caption(signature));
        }
        QVERIFY(lines.first().startsWith(QLatin1String("Reviewed by Jane Smith (jsmith), ")));
        const AdminRun valid = run({"signatures", report});
        QCOMPARE(valid.out, lines.join(QLatin1String(": valid\n")) + QStringLiteral(": valid\n"));
        QCOMPARE(valid.exitCode, 0);
        QVERIFY(QFile::copy(report, folder + QStringLiteral("/copy.pdf")));
        const AdminRun copy = run({"signatures", folder + QStringLiteral("/copy.pdf")});
        QCOMPARE(copy.out, QStringLiteral("No signature of \"%1/copy.pdf\" is recorded.\n").arg(folder));
        QCOMPARE(copy.exitCode, 1);

        writeFile(report, "v2");
        const AdminRun changed = run({"signatures", report});
        QCOMPARE(changed.out, lines.join(QLatin1String(": void: document changed\n")) +
                                  QStringLiteral(": void: document changed\n"));
        QCOMPARE(changed.exitCode, 1);
        QCOMPARE(run({"verify"}).exitCode, 0);
    }

private:
    Runner m_run;
};

} // namespace nebra::test
