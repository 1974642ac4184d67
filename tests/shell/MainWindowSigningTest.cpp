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

#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeView>

using namespace nebra;
using namespace nebra::test;

namespace {

const QString Layout = QStringLiteral("Microplate Layouts/Plate A.mlo");

// A security session over data folders with one layout, shown in the list.
struct Signing : LoadedOrganiser
{
    QStringList userNames; // as each Sign Document dialog offered it: "typed" or "read-only <name>"

    explicit Signing(const QStringList& rights)
    {
        secure(rights);
        writeFile(doc(Layout), "v1", QDateTime::currentSecsSinceEpoch() - 600);
    }
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
    QVariant recordCell(int role = Qt::DisplayRole) const
    {
        auto* model = static_cast<FileListModel*>(part<FileListControl>(*window).view()->model());
        return model->index(0, model->columnOf(QStringLiteral("Record"))).data(role);
    }
    QStringList band() const { return window->findChild<SignatureBand*>()->lines(); }
    void changeOutside()
    {
        runScript(doc("Microplate Layouts"), QStringLiteral("printf v2 >> 'Plate A.mlo'"));
    }

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

// Signing in the window: the dialog, the signature in the column and the
// band, and a document that changed. The band's lines are SignatureBandTest's,
// the valid and void states DocumentRecorderTest's, the manager's checks
// (password, lockout, meanings, full name) SignaturesTest's; here the
// wiring, one row per path.
class MainWindowSigningTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aSignatureShowsUntilTheDocumentChanges()
    {
        Signing o({QStringLiteral("Documents/Sign")});
        QVERIFY(o.showLayout());
        QVERIFY(tool(*o.window, CommandId::Sign).isEnabled());
        const QString signedEntry = QStringLiteral("Signed: ") + o.doc(Layout) + QStringLiteral(" sha256=");
        o.sign(QStringLiteral("Reviewed"));
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell().toString(), QStringLiteral("Signed (Reviewed)"), 10000);
        QVERIFY(o.entryStarting(signedEntry));
        o.sign(QStringLiteral("Approved"));
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell().toString(), QStringLiteral("Signed (Approved)"), 10000);
        QCOMPARE(o.userNames, QStringList({"typed", "read-only jsmith"}));
        QCOMPARE(o.band().size(), 2);
        QVERIFY2(o.band().constLast().startsWith(QLatin1String("Approved by Jane Smith (jsmith), ")),
                 qPrintable(o.band().constLast()));
        auto* line = o.window->findChild<QLabel*>(QStringLiteral("recordState"));
        QCOMPARE(line->text(), QStringLiteral("Record: Signed (Approved)"));

        o.changeOutside();
        const QString voided = DocumentState::voidText();
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell().toString(), voided, 20000);
        QVERIFY(!o.recordCell(Qt::DecorationRole).isNull()); // the warning icon
        QCOMPARE(line->text(), QStringLiteral("Record: ") + voided);
        for (const QString& text : o.band())
            QVERIFY2(text.startsWith(voided), qPrintable(text));
        // The band follows the selection: no document, no signatures.
        part<FileListControl>(*o.window).view()->clearSelection();
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
        Signing o(maySign ? QStringList{QStringLiteral("Documents/Sign")} : QStringList());
        QVERIFY(o.showLayout());
        const int messages = o.messages.count();
        o.sign(QStringLiteral("Approved"), [&o] { o.changeOutside(); });
        QTRY_COMPARE_WITH_TIMEOUT(o.messages.count(), messages + 1, 10000);
        QCOMPARE(o.messages.last().text, message);
        QCOMPARE(o.dialogs.shown().contains(QStringLiteral("frmSignDocument")), maySign);
        QVERIFY(!o.entryStarting(QStringLiteral("Signed: ")));
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowSigningTest)
#include "MainWindowSigningTest.moc"
