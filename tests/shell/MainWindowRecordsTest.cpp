#include "Authorisation.h"
#include "CommandDispatcher.h"
#include "DocumentSigning.h"
#include "FileListControl.h"
#include "FileListModel.h"
#include "FolderTreeControl.h"
#include "ListingWait.h"
#include "LoadedOrganiser.h"
#include "SecondProcess.h"
#include "SignatureBand.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>

using namespace nebra;
using namespace nebra::test;

namespace {

const QString Layout = QStringLiteral("Microplate Layouts/Plate A.mlo");

// A security session over data folders with one layout, the layout editor a
// script that appends to the layout and runs until the test's folder goes.
struct Records : LoadedOrganiser
{
    QTemporaryDir tools;

    explicit Records(const QStringList& rights)
    {
        secure(rights);
        writeFile(doc(Layout), "v1", QDateTime::currentSecsSinceEpoch() - 600);
        const QString editor = tools.filePath(QStringLiteral("editor"));
        writeFile(editor,
                  QStringLiteral("#!/bin/sh\nprintf v2 >> '%1'\nwhile [ -d '%2' ]; do sleep 0.05; done\n")
                      .arg(doc(Layout), tools.path())
                      .toUtf8());
        QVERIFY(QFile::setPermissions(editor, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        set(QStringLiteral("Paths/LayoutEditorPath"), editor);
    }

    // The layout's first fingerprint written, the layouts listed and the layout selected.
    bool showLayout()
    {
        MainWindow& w = load();
        if (!QTest::qWaitFor(
                [&] { return entryStarting(QStringLiteral("Document recorded: ") + doc(Layout)); }, 20000))
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
        return model->index(0, model->columnOf(QStringLiteral("Record"))).data(role).toString();
    }
    void changeOutside()
    {
        runScript(doc("Microplate Layouts"), QStringLiteral("printf v3 >> 'Plate A.mlo'"));
    }
    QStringList band() const { return window->findChild<SignatureBand*>()->lines(); }

    QStringList userNames; // as each Sign Document dialog offered it: "typed" or "read-only <name>"
    // Runs Sign... and answers its dialog once the document has been read:
    // jsmith's password, the meaning, and the user name where it is typed;
    // meanwhile runs before OK.
    void sign(const QString& meaning, const std::function<void()>& meanwhile = {})
    {
        dialogs.then([this, meaning, meanwhile](QDialog& dialog) {
            const auto* sha256 = dialog.findChild<QLabel*>(QStringLiteral("lblSha256"));
            if (!QTest::qWaitFor([&] { return !sha256->toolTip().isEmpty(); }, 10000))
                return int(QDialog::Rejected);
            auto* user = dialog.findChild<QLineEdit*>(QStringLiteral("txtUserName"));
            userNames.append(user->isReadOnly() ? QStringLiteral("read-only ") + user->text()
                                                : QStringLiteral("typed"));
            if (!user->isReadOnly())
                user->setText(QStringLiteral("jsmith"));
            dialog.findChild<QLineEdit*>(QStringLiteral("txtPassword"))
                ->setText(QStringLiteral("correct horse"));
            dialog.findChild<QComboBox*>(QStringLiteral("cboMeaning"))->setCurrentText(meaning);
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

// The documents' records in the window: which change the list and the trail
// show, how a reviewer accepts one, how a user signs one and what a change
// does to the signature (nothing of it without security: SecuritySessionTest). The rules are
// DocumentRecorderTest's, DocumentRecordsTest's and SignatureBandTest's (and
// the manager's checks of a signing its own tests'); here the wiring, one row per path.
class MainWindowRecordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Who made a change is DocumentRecorderTest's; here the layout editor the
    // window starts is known to the recorder (a change outside: the reviewer's test below).
    void aChangeByTheStartedEditorIsRecordedAsItsOwn()
    {
        Records o({QStringLiteral("AuthorisationsGeneral/EditLayout")});
        QVERIFY(o.showLayout());
        FileListControl& list = part<FileListControl>(*o.window);
        QCOMPARE(o.recordCell(list), QStringLiteral("Recorded"));
        part<CommandDispatcher>(*o.window).run(CommandId::Open);
        QTRY_VERIFY_WITH_TIMEOUT(o.entryStarting("Document changed: " + o.doc(Layout) + " sha256="), 20000);
        QVERIFY(o.security->auditTexts().constLast().endsWith(QLatin1String(" by editor")));
        QCOMPARE(o.recordCell(list), QStringLiteral("Recorded"));
    }

    void aReviewerAcceptsAChangeWithAReason_data()
    {
        QTest::addColumn<bool>("mayAccept");
        // clang-format off
        QTest::newRow("with the right") << true;
        QTest::newRow("without it") << false;
        // clang-format on
    }
    void aReviewerAcceptsAChangeWithAReason()
    {
        QFETCH(bool, mayAccept);
        Records o(mayAccept ? QStringList{QStringLiteral("Documents/AcceptChange")} : QStringList());
        QVERIFY(o.showLayout());
        FileListControl& list = part<FileListControl>(*o.window);
        o.changeOutside();
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell(list), QStringLiteral("Changed outside the suite"), 20000);
        QVERIFY(
            o.recordCell(list, Qt::AccessibleDescriptionRole).startsWith("Changed outside the suite, seen "));
        auto* line = o.window->findChild<QLabel*>(QStringLiteral("recordState"));
        QVERIFY(line && line->isVisible());
        QVERIFY(line->text().startsWith(QLatin1String("Record: Changed outside the suite, seen ")));
        QTRY_COMPARE(tool(*o.window, CommandId::AcceptChange).isEnabled(), mayAccept);

        o.dialogs.accept({{QStringLiteral("txtReason"), QStringLiteral("Checked against the lab book")}});
        const int messages = o.messages.count();
        part<CommandDispatcher>(*o.window).run(CommandId::AcceptChange);
        const QString accepted = QStringLiteral("Document change accepted: ") + o.doc(Layout);
        QCOMPARE(o.entryStarting(accepted), mayAccept);
        QCOMPARE(o.messages.count() - messages, mayAccept ? 0 : 1); // the refusal
        QCOMPARE(o.recordCell(list),
                 mayAccept ? QStringLiteral("Recorded") : QStringLiteral("Changed outside the suite"));
        if (mayAccept)
            QVERIFY(o.security->auditTexts().constLast().endsWith(
                QLatin1String("reason: Checked against the lab book")));
    }

    void aSignatureShowsUntilTheDocumentChanges()
    {
        Records o({QStringLiteral("Documents/Sign")});
        QVERIFY(o.showLayout());
        FileListControl& list = part<FileListControl>(*o.window);
        QVERIFY(tool(*o.window, CommandId::Sign).isEnabled());
        const QString signedEntry = QStringLiteral("Signed: ") + o.doc(Layout) + QStringLiteral(" sha256=");
        o.sign(QStringLiteral("Reviewed"));
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell(list), QStringLiteral("Signed (Reviewed)"), 10000);
        QVERIFY(o.entryStarting(signedEntry));
        o.sign(QStringLiteral("Approved"));
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell(list), QStringLiteral("Signed (Approved)"), 10000);
        QCOMPARE(o.userNames, QStringList({"typed", "read-only jsmith"}));
        QCOMPARE(o.band().size(), 2);
        QVERIFY2(o.band().constLast().startsWith(QLatin1String("Approved by Jane Smith (jsmith), ")),
                 qPrintable(o.band().constLast()));
        auto* line = o.window->findChild<QLabel*>(QStringLiteral("recordState"));
        QCOMPARE(line->text(), QStringLiteral("Record: Signed (Approved)"));

        o.changeOutside();
        const QString voided = DocumentState::voidText();
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell(list), voided, 20000);
        auto* model = static_cast<FileListModel*>(list.view()->model());
        QVERIFY(
            !model->index(0, model->columnOf(QStringLiteral("Record"))).data(Qt::DecorationRole).isNull());
        QCOMPARE(line->text(), QStringLiteral("Record: ") + voided);
        for (const QString& text : o.band())
            QVERIFY2(text.startsWith(voided), qPrintable(text));
        // The band follows the selection: no document, no signatures.
        list.view()->clearSelection();
        QTRY_VERIFY(o.band().isEmpty());
    }

    void nothingIsSigned_data()
    {
        QTest::addColumn<bool>("maySign");
        QTest::addColumn<QString>("message");
        // clang-format off
        QTest::newRow("without the right") << false << Authorisation::permissionDeniedText();
        QTest::newRow("changed while the dialog was open") << true << DocumentSigning::changedText();
        // clang-format on
    }
    void nothingIsSigned()
    {
        QFETCH(bool, maySign);
        QFETCH(QString, message);
        Records o(maySign ? QStringList{QStringLiteral("Documents/Sign")} : QStringList());
        QVERIFY(o.showLayout());
        const int messages = o.messages.count();
        o.sign(QStringLiteral("Approved"), [&o] { o.changeOutside(); });
        QTRY_COMPARE_WITH_TIMEOUT(o.messages.count(), messages + 1, 10000);
        QCOMPARE(o.messages.last().text, message);
        QCOMPARE(o.dialogs.shown().contains(QStringLiteral("frmSignDocument")), maySign);
        QVERIFY(!o.entryStarting(QStringLiteral("Signed: ")));
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowRecordsTest)
#include "MainWindowRecordsTest.moc"
