#include "BrowserControl.h"
#include "DocumentLauncher.h"
#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "ListingWait.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "PlateLayoutViewer.h"
#include "PreviewPane.h"
#include "RecordingPrograms.h"
#include "ToolBarsControl.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QAction>
#include <QDateTime>
#include <QElapsedTimer>
#include <QTreeView>
#include <QWebEnginePage>
#include <QWebEngineScript>
#include <QWebEngineView>

#include <memory>

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
        FileListControl& list = part<FileListControl>(*window);
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

// The centre of the page's element with the id, in the view's coordinates, as the mouse clicks it.
QPoint elementCentre(BrowserControl& browser, const QString& id)
{
    auto centre = std::make_shared<QVariantList>();
    browser.view()->page()->runJavaScript(
        QStringLiteral("(function () { var r = document.getElementById('%1').getBoundingClientRect();"
                       " return [r.left + r.width / 2, r.top + r.height / 2]; })()")
            .arg(id),
        QWebEngineScript::ApplicationWorld, [centre](const QVariant& result) { *centre = result.toList(); });
    if (!QTest::qWaitFor([&] { return centre->size() == 2; }, BrowserControl::DefaultWaitLimitMs))
        return {-1, -1};
    return QPointF(centre->at(0).toDouble(), centre->at(1).toDouble()).toPoint();
}

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
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        PreviewPane& pane = part<PreviewPane>(window);
        const QString welcome = branch(window, DocumentType::None).page();
        QTRY_COMPARE_WITH_TIMEOUT(pane.CurrentPage(), welcome, 5000);

        // The newest protocol is selected and its preview shown; another pick, another page.
        tree.setCurrentNode(branch(window, DocumentType::Protocols));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QCOMPARE(part<FileListControl>(window).firstSelectedItem().path(),
                 o.doc("Protocols/ELISA IgG Quantitation.apr"));
        const QString preview = o.doc("Protocols/ELISA IgG Quantitation.mht");
        QTRY_COMPARE_WITH_TIMEOUT(pane.CurrentPage(), preview, 5000);
        QTRY_COMPARE_WITH_TIMEOUT(part<BrowserControl>(window).LocationURL(), QUrl::fromLocalFile(preview),
                                  10000);
        o.pick(o.doc("Protocols/BCA Protein Assay.apr"));
        QTRY_COMPARE_WITH_TIMEOUT(pane.CurrentPage(), pane.PreviewNotAvailablePage(), 5000);
        QVERIFY(QFileInfo(pane.PreviewNotAvailablePage()).isFile());
        // Quotes, a hash and non-ASCII letters in a sub-folder's document.
        tree.setCurrentNode(branch(window, DocumentType::Protocols).child(0));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        const QString odd = o.doc("Protocols/Ünï Lab/Assay \"Gold\" #1.mht");
        QTRY_COMPARE_WITH_TIMEOUT(pane.CurrentPage(), odd, 5000);
        QTRY_COMPARE_WITH_TIMEOUT(part<BrowserControl>(window).LocationURL(), QUrl::fromLocalFile(odd),
                                  10000);

        // A layout is drawn by the viewer; the browser keeps its page, and a report leaves both.
        tree.setCurrentNode(branch(window, DocumentType::Layouts));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        PlateLayoutViewer& viewer = part<PlateLayoutViewer>(window);
        QTRY_VERIFY(viewer.isVisible() && viewer.hasPlateLayout());
        tree.setCurrentNode(branch(window, DocumentType::Reports));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QCOMPARE(part<FileListControl>(window).firstSelectedItem().path(),
                 o.doc("Reports/ELISA IgG Summary Report.mht"));
        QVERIFY(viewer.isVisible());
        QTRY_COMPARE_WITH_TIMEOUT(pane.CurrentPage(), odd, 5000);
        // The root shows the welcome page again.
        tree.setCurrentNode(branch(window, DocumentType::None));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QTRY_COMPARE_WITH_TIMEOUT(pane.CurrentPage(), welcome, 5000);
        QVERIFY(!viewer.isVisible());
        QTRY_COMPARE_WITH_TIMEOUT(part<BrowserControl>(window).LocationURL(), QUrl::fromLocalFile(welcome),
                                  10000);
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
        const QString welcome = branch(window, DocumentType::None).page();
        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::Layouts));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QTRY_COMPARE(part<PlateLayoutViewer>(window).isVisible(), layouts);
        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::Protocols));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QTRY_COMPARE_WITH_TIMEOUT(part<PreviewPane>(window).CurrentPage(),
                                  protocols ? o.doc("Protocols/ELISA IgG Quantitation.mht") : welcome, 5000);
    }

    // The tool bar and the tree's buttons reach the launcher; New on Protocols the wizard picker.
    void documentCommandsStartTheSuitesPrograms()
    {
        Documents o;
        MainWindow& window = o.load();
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        tree.setCurrentNode(branch(window, DocumentType::Protocols));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        const QString protocol = o.doc("Protocols/ELISA IgG Quantitation.apr");

        part<ToolBarsControl>(window).action(QStringLiteral("ID_Run"))->trigger();
        QCOMPARE(o.started(), argv({o.program("Assay Application"), protocol}));
        tree.clickButton(treeButton(CommandId::Run));
        QCOMPARE(o.started(), argv({o.program("Assay Application"), protocol}));
        part<ToolBarsControl>(window).action(QStringLiteral("ID_Open"))->trigger();
        QCOMPARE(o.started(), argv({o.program("Assay Application"), "/edit " + protocol}));
        part<ToolBarsControl>(window).action(QStringLiteral("ID_New"))->trigger();
        QCOMPARE(o.dialogs.shown(), QStringList{QStringLiteral("frmNewAssayProtocol")});
        QCOMPARE(o.messages.count(), 0);
    }

    // Allowed and refused; an entry that cannot be written is the launcher's and Authorisation's test.
    void aRunInASessionIsCheckedAndAudited_data()
    {
        QTest::addColumn<bool>("allowed");
        // clang-format off
        QTest::newRow("allowed") << true;
        QTest::newRow("denied") << false;
        // clang-format on
    }

    void aRunInASessionIsCheckedAndAudited()
    {
        QFETCH(bool, allowed);
        Documents o;
        SecurityFixture& security =
            o.secure(allowed ? QStringList{"AuthorisationsGeneral/RunProtocol"} : QStringList{});
        MainWindow& window = o.load();
        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::Protocols));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        const QString protocol = o.doc("Protocols/ELISA IgG Quantitation.apr");
        part<ToolBarsControl>(window).action(QStringLiteral("ID_Run"))->trigger();
        // The session also records the documents, on its own threads: the run's entry need not be the last.
        QCOMPARE(security.auditTexts().contains("Run protocol: " + protocol), allowed);
        if (allowed)
            QCOMPARE(o.started(), argv({o.program("Assay Application"), protocol}));
        else
            QVERIFY(o.programs.records().isEmpty());
        QCOMPARE(o.messages.count(), allowed ? 0 : 1);
    }

    // Which link does what is the welcome page's own test; here a click on the
    // loaded page reaches it, and keeps the security session open.
    void theWelcomePageLinksAct()
    {
        Documents o;
        const QString pages = o.folders.root() + "/pages";
        writeFile(pages + "/Start.htm", R"(<html><body>
<p><a id="unknown" href="organiser:\Calibrate">Calibrate</a></p>
<p><a id="run" href="organiser:\Run a protocol">Run a protocol</a></p>
</body></html>)");
        o.set("Settings/PageFolder", pages);
        o.set("Settings/OrganiserFile", "Start.htm");
        o.secure();
        // Poll interval 0: one turn of the event loop shows whether the time-out has passed.
        MainWindow& window = o.load(0);
        BrowserControl& browser = part<BrowserControl>(window);
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        QCOMPARE(part<PreviewPane>(window).CurrentPage(), pages + "/Start.htm");
        QVERIFY(browser.WaitUntilComplete());
        int announced = 0;
        QObject scope;
        connect(&browser, &BrowserControl::BeforeNavigate2, &scope, [&](const QUrl&, bool&) { ++announced; });
        // Each click comes 14 minutes after the last: only the click keeps the session open.
        auto click = [&](const char* id) {
            const QPoint centre = elementCentre(browser, QLatin1String(id));
            o.now += 14 * 60 * 1000;
            const int before = announced;
            // A click the page has not taken (it may still be busy) is repeated, but not soon: a
            // second navigation announced late would cut off the program's next load.
            QElapsedTimer sinceClick;
            return QTest::qWaitFor(
                [&] {
                    if (announced == before && (!sinceClick.isValid() || sinceClick.elapsed() > 2000)) {
                        QTest::mouseMove(browser.view()->focusProxy(), centre);
                        QTest::mouseClick(browser.view()->focusProxy(), Qt::LeftButton, {}, centre);
                        sinceClick.start();
                    }
                    return announced > before;
                },
                BrowserControl::DefaultWaitLimitMs);
        };

        QVERIFY(click("unknown"));
        QCoreApplication::processEvents();
        QCOMPARE(tree.currentNode(), branch(window, DocumentType::None));
        QCOMPARE(browser.LocationURL(), QUrl::fromLocalFile(pages + "/Start.htm"));
        QVERIFY(click("run"));
        QTRY_COMPARE_WITH_TIMEOUT(tree.currentNode(), branch(window, DocumentType::Protocols), 10000);
        // Back on the root its page loads again; a click meanwhile waits until it is complete.
        tree.setCurrentNode(branch(window, DocumentType::None));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QCOMPARE(browser.ReadyState(), int(BrowserControl::Loading));
        bool cancel = false;
        Q_EMIT browser.BeforeNavigate2(QUrl(QStringLiteral("organiser:\\Run a protocol")), cancel);
        QVERIFY(cancel);
        QCOMPARE(tree.currentNode(), branch(window, DocumentType::None));
        QTRY_COMPARE_WITH_TIMEOUT(tree.currentNode(), branch(window, DocumentType::Protocols), 10000);
        QCOMPARE(o.processEnds, 0);
        QCOMPARE(o.messages.count(), 0);

        // The clock was watched all along: a quarter of an hour without activity ends the session.
        o.now += 15 * 60 * 1000;
        QTRY_COMPARE_WITH_TIMEOUT(o.processEnds, 1, 5000);
    }

    // The attack: a welcome page of the user's own choosing navigates itself
    // every few moments by script, to keep an idle session open. Pages run no
    // script, and a navigation is not the user's activity, so the session
    // times out all the same.
    void aPageThatNavigatesItselfDoesNotKeepTheSessionOpen()
    {
        Documents o;
        const QString pages = o.folders.root() + "/pages";
        writeFile(pages + "/Busy.htm", R"(<html><body><script>
setInterval(function () { location.href = 'organiser:\\Keep alive'; }, 20);
</script></body></html>)");
        o.set("Settings/PageFolder", pages);
        o.set("Settings/OrganiserFile", "Busy.htm");
        o.secure();
        BrowserControl& browser = part<BrowserControl>(o.load(0));
        QVERIFY(browser.WaitUntilComplete());
        int announced = 0;
        QObject scope;
        connect(&browser, &BrowserControl::BeforeNavigate2, &scope, [&](const QUrl&, bool&) { ++announced; });
        o.now += 10 * 60 * 1000;
        // A second for the page to show whether it acts by itself.
        static_cast<void>(QTest::qWaitFor([&] { return announced > 0; }, 1000));
        o.now += 10 * 60 * 1000;
        QTRY_COMPARE_WITH_TIMEOUT(o.processEnds, 1, 5000);
        QCOMPARE(o.messages.last().title, QStringLiteral("Time Out"));
        QCOMPARE(announced, 0);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowDocumentsTest)
#include "MainWindowDocumentsTest.moc"
