#include "Authorisation.h"
#include "BrowserControl.h"
#include "DocumentLauncher.h"
#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "NebraSecurityManager.h"
#include "OrganiserTree.h"
#include "PlateLayoutViewer.h"
#include "PreviewPane.h"
#include "RecordingPrograms.h"
#include "ToolBarsControl.h"
#include "WebEngineTestMain.h"

#include <QAction>
#include <QDateTime>
#include <QTreeView>
#include <QWebEnginePage>
#include <QWebEngineView>

using namespace nebra;
using namespace nebra::test;

namespace {

// The Organiser with examples of every kind of document (and an up-to-date
// preview of the newest protocol), the suite's programs recording their starts.
struct Documents : LoadedOrganiser
{
    RecordingPrograms programs;

    Documents()
    {
        SettingsStore store;
        programs.configure(store);
        place("Protocols/BCA Protein Assay.apr", 100);
        place("Protocols/ELISA IgG Quantitation.apr", 200);
        place("Protocols/ELISA IgG Quantitation.mht", 230);
        place("Protocols/Ünï Lab/Assay \"Gold\" #1.apr", 0, "Protocols/BCA Protein Assay.apr");
        place("Protocols/Ünï Lab/Assay \"Gold\" #1.mht", 0, "Protocols/BCA Protein Assay.mht");
        place("Microplate Layouts/ELISA 96 Standard Curve.mlo", 0);
        place("Reports/ELISA IgG Summary Report.mht", 0);
    }

    // Copies a document of the example assays, modified the given seconds after a day ago.
    void place(const QString& target, int seconds, const QString& example = {})
    {
        QFile source(qEnvironmentVariable("NEBRA_TEST_DATA_DIR") + "/Example Assays/" +
                     (example.isEmpty() ? target : example));
        QVERIFY2(source.open(QIODevice::ReadOnly), qPrintable(source.fileName()));
        writeFile(doc(target), source.readAll(), QDateTime::currentSecsSinceEpoch() - 86400 + seconds);
    }

    QString program(const char* name) const { return programs.program(QLatin1String(name)); }

    // Makes the document the file list's only selection, as a click on it does.
    void pick(const QString& path)
    {
        FileListControl& list = window->fileList();
        for (int i = 1; i <= list.itemCount(); ++i)
            if (list.item(i).path() == path)
                return list.view()->selectionModel()->setCurrentIndex(list.view()->model()->index(i - 1, 0),
                                                                      QItemSelectionModel::ClearAndSelect |
                                                                          QItemSelectionModel::Rows);
        QFAIL(qPrintable(path + " is not listed"));
    }

    // The argv of the starts of the suite's programs since the last call; waits for one.
    QList<QByteArrayList> started()
    {
        programs.waitForRecords(1);
        const QList<QByteArrayList> records = programs.records();
        programs.clear();
        return records;
    }
};

QList<QByteArrayList> argv(const QStringList& arguments)
{
    QByteArrayList list;
    for (const QString& argument : arguments)
        list.append(QFile::encodeName(argument));
    return {list};
}

} // namespace

// The Organiser's daily job in the loaded main window: previews follow the
// selection, the document commands start the suite's programs (checked and
// audited in a security session), and the welcome page's links act. What
// each part decides is tested with the part; here, that the window joins them.
class MainWindowDocumentsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePreviewFollowsTheSelection()
    {
        Documents o;
        MainWindow& window = o.load();
        FolderTreeControl& tree = window.folderTree();
        const OrganiserTree& organiser = window.organiserTree();
        PreviewPane& pane = *window.previewPane();
        const QString welcome = organiser.rootNode().page();
        QCOMPARE(pane.CurrentPage(), welcome);

        // The newest protocol is selected and its preview shown; another pick, another page.
        tree.setCurrentNode(organiser.protocolsNode());
        QCOMPARE(window.fileList().firstSelectedItem().path(), o.doc("Protocols/ELISA IgG Quantitation.apr"));
        const QString preview = o.doc("Protocols/ELISA IgG Quantitation.mht");
        QCOMPARE(pane.CurrentPage(), preview);
        QTRY_COMPARE_WITH_TIMEOUT(window.browser()->LocationURL(), QUrl::fromLocalFile(preview), 10000);
        o.pick(o.doc("Protocols/BCA Protein Assay.apr"));
        QCOMPARE(pane.CurrentPage(), pane.PreviewNotAvailablePage());
        QVERIFY(QFileInfo(pane.PreviewNotAvailablePage()).isFile());
        // Quotes, a hash and non-ASCII letters in a sub-folder's document.
        tree.setCurrentNode(organiser.protocolsNode().child(0));
        const QString odd = o.doc("Protocols/Ünï Lab/Assay \"Gold\" #1.mht");
        QCOMPARE(pane.CurrentPage(), odd);
        QTRY_COMPARE_WITH_TIMEOUT(window.browser()->LocationURL(), QUrl::fromLocalFile(odd), 10000);

        // A layout is drawn by the viewer; the browser keeps its page, and a report leaves both.
        tree.setCurrentNode(organiser.layoutsNode());
        PlateLayoutViewer& viewer = window.plateLayoutViewer();
        QVERIFY(viewer.isVisible() && viewer.hasPlateLayout());
        tree.setCurrentNode(organiser.reportsNode());
        QCOMPARE(window.fileList().firstSelectedItem().path(), o.doc("Reports/ELISA IgG Summary Report.mht"));
        QVERIFY(viewer.isVisible());
        QCOMPARE(pane.CurrentPage(), odd);
        // The root shows the welcome page again.
        tree.setCurrentNode(organiser.rootNode());
        QCOMPARE(pane.CurrentPage(), welcome);
        QVERIFY(!viewer.isVisible());
        QTRY_COMPARE_WITH_TIMEOUT(window.browser()->LocationURL(), QUrl::fromLocalFile(welcome), 10000);
    }

    void theSettingsChooseWhatIsPreviewed_data()
    {
        QTest::addColumn<bool>("driversInUse");
        QTest::addColumn<bool>("showPreview");
        QTest::addColumn<bool>("protocols");
        QTest::addColumn<bool>("layouts");
        // clang-format off
        QTest::newRow("with instrument drivers") << true << true << true << true;
        QTest::newRow("without instrument drivers: layouts only") << false << true << false << true;
        QTest::newRow("preview off") << true << false << false << false;
        // clang-format on
    }

    void theSettingsChooseWhatIsPreviewed()
    {
        QFETCH(bool, driversInUse);
        QFETCH(bool, showPreview);
        QFETCH(bool, protocols);
        QFETCH(bool, layouts);
        Documents o;
        o.set("Settings/InstrumentDriversInUse", driversInUse);
        o.set("Settings/ShowPreviewPane", showPreview);
        MainWindow& window = o.load();
        const OrganiserTree& organiser = window.organiserTree();
        const QString welcome = organiser.rootNode().page();
        window.folderTree().setCurrentNode(organiser.layoutsNode());
        QCOMPARE(window.plateLayoutViewer().isVisible(), layouts);
        window.folderTree().setCurrentNode(organiser.protocolsNode());
        QCOMPARE(window.previewPane()->CurrentPage(),
                 protocols ? o.doc("Protocols/ELISA IgG Quantitation.mht") : welcome);
    }

    // The tool bar and the tree's buttons reach the launcher; New on Protocols the wizard picker.
    void documentCommandsStartTheSuitesPrograms()
    {
        Documents o;
        MainWindow& window = o.load();
        FolderTreeControl& tree = window.folderTree();
        tree.setCurrentNode(window.organiserTree().protocolsNode());
        const QString protocol = o.doc("Protocols/ELISA IgG Quantitation.apr");

        window.toolBars().action(QStringLiteral("ID_Run"))->trigger();
        QCOMPARE(o.started(), argv({o.program("Assay Application"), protocol}));
        tree.clickButton(buttonKey(DocumentCommand::Run));
        QCOMPARE(o.started(), argv({o.program("Assay Application"), protocol}));
        window.toolBars().action(QStringLiteral("ID_Open"))->trigger();
        QCOMPARE(o.started(), argv({o.program("Assay Application"), "/edit " + protocol}));
        window.toolBars().action(QStringLiteral("ID_New"))->trigger();
        QCOMPARE(o.dialogs.shown(), QStringList{QStringLiteral("frmNewAssayProtocol")});
        QCOMPARE(o.messages.count(), 0);
    }

    void aRunInASessionIsCheckedAndAudited_data()
    {
        QTest::addColumn<bool>("allowed");
        QTest::addColumn<bool>("auditFull"); // the store refuses the entry
        // clang-format off
        QTest::newRow("allowed") << true << false;
        QTest::newRow("denied") << false << false;
        QTest::newRow("allowed, the audit trail full") << true << true;
        // clang-format on
    }

    void aRunInASessionIsCheckedAndAudited()
    {
        QFETCH(bool, allowed);
        QFETCH(bool, auditFull);
        Documents o;
        SecurityFixture& security =
            o.secure(allowed ? QStringList{"AuthorisationsGeneral/RunProtocol"} : QStringList{});
        MainWindow& window = o.load();
        window.folderTree().setCurrentNode(window.organiserTree().protocolsNode());
        const QString protocol = o.doc("Protocols/ELISA IgG Quantitation.apr");
        if (auditFull)
            security.fillUp("General");

        window.toolBars().action(QStringLiteral("ID_Run"))->trigger();
        QCOMPARE(security.auditTexts().last() == "Run protocol: " + protocol, allowed && !auditFull);
        if (allowed && !auditFull) {
            QCOMPARE(o.started(), argv({o.program("Assay Application"), protocol}));
            QCOMPARE(o.messages.count(), 0);
            return;
        }
        QVERIFY(window.launcher()->lastCommandLine().text.isEmpty());
        QCOMPARE(o.messages.count(), 1);
        QVERIFY(o.messages.last().text.startsWith(auditFull ? NebraSecurityManager::auditWriteFailureText()
                                                            : Authorisation::permissionDeniedText()));
    }

    // Which link does what is the welcome page's own test; here a click on the
    // loaded page reaches it, and keeps the security session open.
    void theWelcomePageLinksAct()
    {
        Documents o;
        const QString pages = o.folders.root() + "/pages";
        writeFile(pages + "/Start.htm", R"(<html><body>
<a id="unknown" href="organiser:\Calibrate">Calibrate</a>
<a id="run" href="organiser:\Run a protocol">Run a protocol</a>
</body></html>)");
        o.set("Settings/PageFolder", pages);
        o.set("Settings/OrganiserFile", "Start.htm");
        o.secure();
        // Poll interval 0: one turn of the event loop shows whether the time-out has passed.
        MainWindow& window = o.load(0);
        BrowserControl& browser = *window.browser();
        FolderTreeControl& tree = window.folderTree();
        QCOMPARE(window.previewPane()->CurrentPage(), pages + "/Start.htm");
        QVERIFY(browser.WaitUntilComplete());
        int announced = 0;
        connect(&browser, &BrowserControl::BeforeNavigate2, this, [&](const QUrl&, bool&) { ++announced; });
        // Each click comes 14 minutes after the last: only its reset keeps the session open.
        auto click = [&](const char* id) {
            o.now += 14 * 60 * 1000;
            const int before = announced;
            browser.view()->page()->runJavaScript(
                QStringLiteral("document.getElementById('%1').click()").arg(id));
            return QTest::qWaitFor([&] { return announced > before; }, BrowserControl::DefaultWaitLimitMs);
        };

        QVERIFY(click("unknown"));
        QCoreApplication::processEvents();
        QCOMPARE(tree.currentNode(), window.organiserTree().rootNode());
        QCOMPARE(browser.LocationURL(), QUrl::fromLocalFile(pages + "/Start.htm"));
        QVERIFY(click("run"));
        QTRY_COMPARE_WITH_TIMEOUT(tree.currentNode(), window.organiserTree().protocolsNode(), 10000);
        // Back on the root its page loads again; a click meanwhile waits until it is complete.
        tree.setCurrentNode(window.organiserTree().rootNode());
        QCOMPARE(browser.ReadyState(), int(BrowserControl::Loading));
        bool cancel = false;
        Q_EMIT browser.BeforeNavigate2(QUrl(QStringLiteral("organiser:\\Run a protocol")), cancel);
        QVERIFY(cancel);
        QCOMPARE(tree.currentNode(), window.organiserTree().rootNode());
        QTRY_COMPARE_WITH_TIMEOUT(tree.currentNode(), window.organiserTree().protocolsNode(), 10000);
        QCOMPARE(o.processEnds, 0);
        QCOMPARE(o.messages.count(), 0);

        // The clock was watched all along: a quarter of an hour without activity ends the session.
        o.now += 15 * 60 * 1000;
        QTRY_COMPARE_WITH_TIMEOUT(o.processEnds, 1, 5000);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowDocumentsTest)
#include "MainWindowDocumentsTest.moc"
