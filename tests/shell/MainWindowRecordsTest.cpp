#include "AuditChainStatus.h"
#include "AuditFilterBar.h"
#include "AuditTrailWindow.h"
#include "Authorisation.h"
#include "CommandDispatcher.h"
#include "DocumentSigning.h"
#include "FileListControl.h"
#include "FileListModel.h"
#include "FolderTreeControl.h"
#include "ListingWait.h"
#include "LoadedOrganiser.h"
#include "NebraSecurityManager.h"
#include "SecondProcess.h"
#include "SignatureBand.h"
#include "ToolBarsControl.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>
#include <QTreeView>

using namespace nebra;
using namespace nebra::test;

namespace {

const QString Layout = "Microplate Layouts/Plate A.mlo";

// A security session over data folders with one layout, the layout editor a
// script that appends to the layout and runs until the test's folder goes.
struct Records : LoadedOrganiser
{
    QTemporaryDir tools;

    explicit Records(const QStringList& rights)
    {
        secure(rights);
        writeFile(doc(Layout), "v1", QDateTime::currentSecsSinceEpoch() - 600);
        const QString editor = tools.filePath("editor");
        writeFile(editor,
                  QStringLiteral("#!/bin/sh\nprintf v2 >> '%1'\nwhile [ -d '%2' ]; do sleep 0.05; done\n")
                      .arg(doc(Layout), tools.path())
                      .toUtf8());
        QVERIFY(QFile::setPermissions(editor, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        set("Paths/LayoutEditorPath", editor);
    }

    // The layout's first fingerprint written, the layouts listed and the layout selected.
    bool showLayout()
    {
        MainWindow& w = load();
        if (!QTest::qWaitFor([&] { return entryStarting("Document recorded: " + doc(Layout)); }, 20000))
            return false;
        part<FolderTreeControl>(w).setCurrentNode(branch(w, DocumentType::Layouts));
        return waitForListing(part<FileListControl>(w));
    }
    bool entryStarting(const QString& text) const
    {
        const QStringList texts = security->auditTexts();
        return std::any_of(texts.cbegin(), texts.cend(),
                           [&](const QString& t) { return t.startsWith(text); });
    }
    QString recordCell(FileListControl& list, int role = Qt::DisplayRole) const
    {
        auto* model = static_cast<FileListModel*>(list.view()->model());
        return model->index(0, model->columnOf("Record")).data(role).toString();
    }
    void changeOutside() { runScript(doc("Microplate Layouts"), "printf v3 >> 'Plate A.mlo'"); }
    QStringList band() const { return window->findChild<SignatureBand*>()->lines(); }

    QStringList userNames; // as each Sign Document dialog offered it: "typed" or "read-only <name>"
    // Runs Sign... and answers its dialog once the document has been read:
    // jsmith's password, the meaning, and the user name where it is typed;
    // meanwhile runs before OK.
    void sign(const QString& meaning, const std::function<void()>& meanwhile = {})
    {
        dialogs.then([this, meaning, meanwhile](QDialog& dialog) {
            const auto* sha256 = dialog.findChild<QLabel*>("lblSha256");
            if (!QTest::qWaitFor([&] { return !sha256->toolTip().isEmpty(); }, 10000))
                return int(QDialog::Rejected);
            auto* user = dialog.findChild<QLineEdit*>("txtUserName");
            userNames.append(user->isReadOnly() ? "read-only " + user->text() : "typed");
            if (!user->isReadOnly())
                user->setText("jsmith");
            dialog.findChild<QLineEdit*>("txtPassword")->setText("correct horse");
            dialog.findChild<QComboBox*>("cboMeaning")->setCurrentText(meaning);
            if (meanwhile)
                meanwhile();
            return dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->isEnabled()
                       ? int(QDialog::Accepted)
                       : int(QDialog::Rejected);
        });
        part<CommandDispatcher>(*window).run(CommandId::Sign);
    }
};

} // namespace

// The documents' records and the audit trail in the window. The records: which change the list and the trail
// show, how a reviewer accepts one, how a user signs one and what a change
// does to the signature (nothing of it without security: SecuritySessionTest). The rules are
// DocumentRecorderTest's, SignaturesTest's and SignatureBandTest's (and
// the manager's checks of a signing its own tests'); here the wiring, one row per path.
// Tools > Audit Trail... (shown only in a session: SecuritySessionTest):
// refused without the right, recorded when opened; the viewer's filter, chain
// status, exports and printing; closed at log-out.
class MainWindowRecordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A reviewer accepts a change with a reason. A document changed while its
    // Sign Document dialog was open is not signed; a signature then shows
    // until the document changes.
    void aReviewerAcceptsAChangeAndASignatureShowsUntilTheDocumentChanges()
    {
        Records o({"Documents/AcceptChange", "Documents/Sign"});
        QVERIFY(o.showLayout());
        FileListControl& list = part<FileListControl>(*o.window);
        o.changeOutside();
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell(list), "Changed outside the suite", 20000);
        QVERIFY(
            o.recordCell(list, Qt::AccessibleDescriptionRole).startsWith("Changed outside the suite, seen "));
        auto* line = o.window->findChild<QLabel*>("recordState");
        QVERIFY(line && line->isVisible());
        QVERIFY(line->text().startsWith("Record: Changed outside the suite, seen "));
        QTRY_VERIFY(tool(*o.window, CommandId::AcceptChange).isEnabled());
        o.dialogs.accept({{"txtReason", "Checked against the lab book"}});
        part<CommandDispatcher>(*o.window).run(CommandId::AcceptChange);
        QVERIFY(o.entryStarting("Document change accepted: " + o.doc(Layout)));
        QVERIFY(o.security->auditTexts().constLast().endsWith("reason: Checked against the lab book"));
        QCOMPARE(o.recordCell(list), "Recorded");
        QCOMPARE(o.messages.count(), 0);

        QVERIFY(tool(*o.window, CommandId::Sign).isEnabled());
        o.sign("Approved", [&o] { o.changeOutside(); });
        QTRY_COMPARE_WITH_TIMEOUT(o.messages.count(), 1, 10000);
        QCOMPARE(o.messages.last().text, DocumentSigning::changedText());
        QVERIFY(!o.entryStarting("Signed: "));

        o.sign("Reviewed");
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell(list), "Signed (Reviewed)", 10000);
        QVERIFY(o.entryStarting("Signed: " + o.doc(Layout) + " sha256="));
        o.sign("Approved");
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell(list), "Signed (Approved)", 10000);
        QCOMPARE(o.userNames, QStringList({"typed", "typed", "read-only jsmith"}));
        QCOMPARE(o.band().size(), 2); // each line's wording is SignatureBandTest's
        QCOMPARE(line->text(), "Record: Signed (Approved)");

        o.changeOutside();
        const QString voided = DocumentState::voidText();
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell(list), voided, 20000);
        auto* model = static_cast<FileListModel*>(list.view()->model());
        QVERIFY(!model->index(0, model->columnOf("Record")).data(Qt::DecorationRole).isNull());
        QCOMPARE(line->text(), "Record: " + voided);
        QVERIFY(o.band().constFirst().startsWith(voided));
        // The band follows the selection: no document, no signatures.
        list.view()->clearSelection();
        QTRY_VERIFY(o.band().isEmpty());
    }

    // Without the rights, accepting a change, signing and the audit trail are
    // each refused with the permission message, and nothing is recorded. Who
    // made a change is DocumentRecorderTest's; here the layout editor the
    // window starts is known to the recorder.
    void withoutTheRightsEachCommandIsRefusedAndTheEditorsChangeIsItsOwn()
    {
        Records o({"AuthorisationsGeneral/EditLayout"});
        QVERIFY(o.showLayout());
        FileListControl& list = part<FileListControl>(*o.window);
        QCOMPARE(o.recordCell(list), "Recorded");
        o.changeOutside();
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell(list), "Changed outside the suite", 20000);
        QVERIFY(!tool(*o.window, CommandId::AcceptChange).isEnabled());
        part<CommandDispatcher>(*o.window).run(CommandId::AcceptChange);
        o.sign("Approved");
        tool(*o.window, CommandId::AuditTrail).trigger();
        QCOMPARE(o.messages.count(), 3);
        for (const MessageRequest& refusal : o.messages.requests())
            QCOMPARE(refusal.text, Authorisation::permissionDeniedText());
        QCOMPARE(o.dialogs.shown().size(), 1); // the log-in
        QVERIFY(!o.window->findChild<AuditTrailWindow*>());
        for (const char* entry : {"Document change accepted: ", "Signed: ", "Audit trail viewer opened"})
            QVERIFY2(!o.entryStarting(QLatin1String(entry)), entry);
        QCOMPARE(o.recordCell(list), "Changed outside the suite");

        part<CommandDispatcher>(*o.window).run(CommandId::Open);
        QTRY_VERIFY_WITH_TIMEOUT(o.entryStarting("Document changed: " + o.doc(Layout) + " sha256="), 20000);
        QVERIFY(o.security->auditTexts().constLast().endsWith(" by editor"));
        QCOMPARE(o.recordCell(list), "Recorded");
    }

    // What an export writes is the export's own test; here each way out of
    // the viewer reaches it, a file is replaced only when the user says so,
    // and an export the trail cannot record is not made.
    void theTrailOpensRecordedFiltersExportsAndClosesAtLogOut()
    {
        LoadedOrganiser site;
        site.secure({"Security/ViewAuditTrail"});
        QAction* command = part<ToolBarsControl>(site.load()).action("ID_AuditTrail");
        command->trigger();
        AuditTrailWindow* viewer = site.window->findChild<AuditTrailWindow*>();
        QVERIFY(viewer);
        const auto rows = [viewer] { return viewer->table().model()->rowCount(); };
        QTRY_VERIFY_WITH_TIMEOUT(!viewer->chainStatus().checking(), 10000);
        QPointer<AuditTrailWindow> open(viewer);
        QVERIFY(viewer->isVisible());
        QCOMPARE(site.security->auditTexts().last(), "Audit trail viewer opened");
        const int all = site.security->auditTexts().size();
        QTRY_COMPARE_WITH_TIMEOUT(rows(), all, 5000);
        // Newest first: the opening itself heads the table.
        QCOMPARE(viewer->table().model()->index(0, 5).data().toString(), "Audit trail viewer opened");
        QVERIFY(viewer->chainStatus().statusText().startsWith(QStringLiteral("Intact, %1 entries").arg(all)));

        auto* text = viewer->filterBar().findChild<QLineEdit*>("txtText");
        QSignalSpy filtered(&viewer->filterBar(), &AuditFilterBar::filterChanged);
        QTest::keyClicks(text, "WELCOME");
        QTRY_COMPARE_WITH_TIMEOUT(rows(), 1, 5000);
        QCOMPARE(filtered.size(), 1); // once typing pauses, not at every key
        QCOMPARE(viewer->table().model()->index(0, 5).data().toString(), "Launch Welcome screen");
        viewer->filterBar().findChild<QPushButton*>("cmdClear")->click();
        QTRY_COMPARE_WITH_TIMEOUT(rows(), all, 5000);

        const auto exportTo = [&](const QString& kind) {
            const QString file = site.folders.root() + '/' + kind + (kind == "csv" ? ".csv" : ".pdf");
            if (kind == "print") {
                site.dialogs.then([file](QDialog& dialog) {
                    auto* print = qobject_cast<QPrintDialog*>(&dialog);
                    if (!print)
                        return int(QDialog::Rejected);
                    print->printer()->setOutputFormat(QPrinter::PdfFormat);
                    print->printer()->setOutputFileName(file);
                    return int(QDialog::Accepted);
                });
                viewer->Print();
            } else {
                site.dialogs.chooseFile(file);
                kind == QLatin1String("csv") ? viewer->ExportCsv() : viewer->ExportPdf();
            }
            return file;
        };
        for (const char* kind : {"csv", "pdf", "print"}) {
            const int entries = site.security->auditTexts().size();
            const QString file = exportTo(QLatin1String(kind));
            QVERIFY2(QFileInfo::exists(file), kind);
            QCOMPARE(site.security->auditTexts().size(), entries + 1);
            const QString recorded = site.security->auditTexts().last();
            QVERIFY2(recorded.contains(
                         QStringLiteral("\"%1\": %2 entries, filter: all entries").arg(file).arg(rows())),
                     qPrintable(recorded));
        }
        QCOMPARE(site.messages.count(), 0);

        const QString csv = site.folders.root() + "/csv.csv";
        writeFile(csv, "old");
        for (const int answer : {int(MessageButton::No), int(MessageButton::Yes)}) {
            site.messages.answer(answer);
            exportTo("csv");
            QCOMPARE(site.messages.last().text,
                     QStringLiteral("\"%1\" already exists.\nDo you want to replace it?").arg(csv));
            QCOMPARE(site.messages.last().defaultButton, int(MessageButton::No));
            QCOMPARE(readFile(csv).startsWith("Sequence,"), answer == MessageButton::Yes);
        }
        QCOMPARE(site.messages.count(), 2);

        // A trail that cannot record the printout: the manager has said why; nothing else is shown.
        site.security->fillUp("Security");
        const int entries = site.security->auditTexts().size();
        QVERIFY(!QFileInfo::exists(exportTo("print")));
        QCOMPARE(site.security->auditTexts().size(), entries);
        QCOMPARE(site.messages.count(), 3);
        QVERIFY(site.messages.last().text.startsWith(NebraSecurityManager::auditWriteFailureText()));
        site.security->tamper({"DROP TRIGGER full"});

        // A tampered trail shows its first bad entry.
        site.security->tamper({"DROP TRIGGER audit_trail_no_update",
                               "UPDATE audit_trail SET text = 'User added: mallory' WHERE seq = 2"});
        viewer->findChild<QPushButton*>("cmdCheckAgain")->click();
        QTRY_VERIFY_WITH_TIMEOUT(!viewer->chainStatus().checking(), 10000);
        QVERIFY2(viewer->chainStatus().statusText().startsWith("NOT intact from entry 2: "),
                 qPrintable(viewer->chainStatus().statusText()));

        part<ToolBarsControl>(*site.window).action("ID_LogOut")->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(site.processEnds, 1, 5000);
        QTRY_VERIFY_WITH_TIMEOUT(open.isNull(), 5000);
        QVERIFY(!command->isEnabled());
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowRecordsTest)
#include "MainWindowRecordsTest.moc"
