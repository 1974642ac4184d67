#include "BrowserControl.h"
#include "FileListControl.h"
#include "FileListFilterBox.h"
#include "FileView.h"
#include "FolderTreeControl.h"
#include "ListingWait.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "PlateLayoutViewer.h"
#include "PreviewPane.h"
#include "RecordedSuite.h"
#include "ShortcutsBar.h"
#include "ToolBarsControl.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QMenu>
#include <QWebEnginePage>
#include <QWebEngineScript>
#include <QWebEngineView>

#include <optional>

using namespace nebra;
using namespace nebra::test;

namespace {

// The Organiser with example protocols and a layout (and an up-to-date
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
    }

    // Copies a document of the example assays, modified the given seconds after a day ago.
    void place(const QString& target, int seconds, const QString& example = {})
    {
        QFile source(qEnvironmentVariable("NEBRA_TEST_DATA_DIR") + "/Example Assays/" +
                     (example.isEmpty() ? target : example));
        QVERIFY2(source.open(QIODevice::ReadOnly), qPrintable(source.fileName()));
        writeFile(doc(target), source.readAll(), QDateTime::currentSecsSinceEpoch() - 86400 + seconds);
    }

    // In a session of jsmith, the welcome page of the user's own choosing loaded;
    // `announced` counts the page's navigations from then on. The security
    // manager's clock is polled at every turn of the event loop.
    int announced = 0;
    BrowserControl& showOwnWelcomePage(const QByteArray& html)
    {
        const QString pages = folders.root() + "/pages";
        writeFile(pages + "/Start.htm", html);
        set("Settings/PageFolder", pages);
        set("Settings/OrganiserFile", "Start.htm");
        secure();
        BrowserControl& browser = part<BrowserControl>(load(0));
        if (!browser.WaitUntilComplete() || part<PreviewPane>(*window).CurrentPage() != pages + "/Start.htm")
            qFatal("The welcome page was not shown");
        QObject::connect(&browser, &BrowserControl::BeforeNavigate2, window.get(),
                         [this](const QUrl&, bool&) { ++announced; });
        return browser;
    }

    // The argv of the starts of the suite's programs since the last call; waits for one.
    QList<QByteArrayList> started()
    {
        programs.waitForRecords(1);
        const QList<QByteArrayList> records = programs.records();
        programs.clear();
        return records;
    }

    QMenu* recentMenu() const
    {
        for (QAction* action : part<ToolBarsControl>(*window).menu("ID_File")->actions())
            if (action->menu() && action->menu()->accessibleName() == QLatin1String("Recent documents"))
                return action->menu();
        return nullptr;
    }
};

// What the script gives on the page shown, once it has answered; invalid if it does not.
QVariant evaluate(BrowserControl& browser, const QString& script)
{
    auto result = std::make_shared<std::optional<QVariant>>();
    browser.view()->page()->runJavaScript(script, QWebEngineScript::ApplicationWorld,
                                          [result](const QVariant& value) { *result = value; });
    if (!QTest::qWaitFor([&] { return result->has_value(); }, BrowserControl::DefaultWaitLimitMs))
        return {};
    return **result;
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
    // Which documents are previewed under which settings is FileViewTest's; here the
    // layout viewer and the browser show them.
    void thePreviewFollowsTheSelection()
    {
        Documents o;
        MainWindow& window = o.load();
        PreviewPane& pane = part<PreviewPane>(window);
        PlateLayoutViewer& viewer = part<PlateLayoutViewer>(window);
        const auto show = [&window](const FolderNode& node) {
            part<FolderTreeControl>(window).setCurrentNode(node);
            return waitForListing(part<FileListControl>(window));
        };
        // The page and, once loaded, the browser's address.
        const auto shows = [&](const QString& page) {
            const QUrl url = QUrl::fromLocalFile(page);
            BrowserControl& browser = part<BrowserControl>(window);
            return QTest::qWaitFor([&] { return pane.CurrentPage() == page && browser.LocationURL() == url; },
                                   15000);
        };
        const QString welcome = branch(window, DocumentType::None).page();
        QVERIFY(shows(welcome));

        // A layout is drawn by the viewer; the browser keeps its page.
        QVERIFY(show(branch(window, DocumentType::Layouts)));
        QTRY_VERIFY(viewer.isVisible() && viewer.hasPlateLayout());
        // The newest protocol is selected and its preview shown.
        QVERIFY(show(branch(window, DocumentType::Protocols)));
        QCOMPARE(part<FileListControl>(window).firstSelectedItem().path(),
                 o.doc("Protocols/ELISA IgG Quantitation.apr"));
        QVERIFY(shows(o.doc("Protocols/ELISA IgG Quantitation.mht")));
        // Quotes, a hash and non-ASCII letters in a sub-folder's document.
        QVERIFY(show(branch(window, DocumentType::Protocols).child(0)));
        QVERIFY(shows(o.doc("Protocols/Ünï Lab/Assay \"Gold\" #1.mht")));
        // The root shows the welcome page again, and no layout.
        QVERIFY(show(branch(window, DocumentType::Layouts)));
        QTRY_VERIFY(viewer.isVisible());
        QVERIFY(show(branch(window, DocumentType::None)));
        QVERIFY(shows(welcome));
        QVERIFY(!viewer.isVisible());
    }

    // The tool bar and the tree's buttons reach the launcher, New on Protocols the
    // wizard picker; in a session a run is checked and audited (allowed and refused
    // paths; an entry that cannot be written is the launcher's and Authorisation's test).
    void documentCommandsStartTheSuitesPrograms()
    {
        for (const int session : {0, 1, 2}) { // 0: no session, 1: allowed, 2: refused
            Documents o;
            if (session)
                o.secure(session == 1 ? QStringList{"AuthorisationsGeneral/RunProtocol"} : QStringList{});
            MainWindow& window = o.load();
            FolderTreeControl& tree = part<FolderTreeControl>(window);
            // A shortcut leads to its folder; the list and the commands follow.
            Q_EMIT part<ShortcutsBar>(window).itemClicked(QString::number(toData(DocumentType::Protocols)));
            QVERIFY(waitForListing(part<FileListControl>(window)));
            QCOMPARE(tree.currentNode(), branch(tree, DocumentType::Protocols));
            QVERIFY(tree.isButtonEnabled(treeButton(CommandId::Run)));
            const QString protocol = o.doc("Protocols/ELISA IgG Quantitation.apr");
            const QList<QByteArrayList> run{
                {QFile::encodeName(o.programs.program("Assay Application")), QFile::encodeName(protocol)}};
            part<ToolBarsControl>(window).action("ID_Run")->trigger();
            QCOMPARE(o.messages.count(), session == 2 ? 1 : 0);
            if (session) {
                // The session also records the documents, on its own threads: the run's entry need not be
                // last.
                QCOMPARE(o.security->auditTexts().contains("Run protocol: " + protocol), session == 1);
                QCOMPARE(session == 1 ? o.started() : o.programs.records(),
                         session == 1 ? run : QList<QByteArrayList>{});
                continue;
            }
            QCOMPARE(o.started(), run);
            tree.clickButton(treeButton(CommandId::Run));
            QCOMPARE(o.started(), run);
            part<ToolBarsControl>(window).action("ID_New")->trigger();
            QCOMPARE(o.dialogs.shown(), QStringList{"frmNewAssayProtocol"});
        }
    }

    // Which link does what is the welcome page's own test; here a click on the
    // loaded page reaches it, and keeps the security session open.
    void theWelcomePageLinksAct()
    {
        Documents o;
        BrowserControl& browser = o.showOwnWelcomePage(R"(<html><body>
<p><a id="unknown" href="organiser:\Calibrate">Calibrate</a></p>
<p><a id="run" href="organiser:\Run a protocol">Run a protocol</a></p>
</body></html>)");
        MainWindow& window = *o.window;
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        // Each click comes 14 minutes after the last: only the click keeps the session open.
        auto click = [&](const char* id) {
            // The centre of the page's element, in the view's coordinates, as the mouse clicks it.
            const QVariantList at =
                evaluate(browser, QStringLiteral("(function () { var r = "
                                                 "document.getElementById('%1').getBoundingClientRect();"
                                                 " return [r.left + r.width / 2, r.top + r.height / 2]; })()")
                                      .arg(QLatin1String(id)))
                    .toList();
            const QPoint centre =
                at.size() == 2 ? QPointF(at[0].toDouble(), at[1].toDouble()).toPoint() : QPoint(-1, -1);
            o.now += 14 * 60 * 1000;
            const int before = o.announced;
            // A click the page has not taken (it may still be busy) is repeated, but not soon: a
            // second navigation announced late would cut off the program's next load.
            QElapsedTimer sinceClick;
            return QTest::qWaitFor(
                [&] {
                    if (o.announced == before && (!sinceClick.isValid() || sinceClick.elapsed() > 2000)) {
                        QTest::mouseMove(browser.view()->focusProxy(), centre);
                        QTest::mouseClick(browser.view()->focusProxy(), Qt::LeftButton, {}, centre);
                        sinceClick.start();
                    }
                    return o.announced > before;
                },
                BrowserControl::DefaultWaitLimitMs);
        };

        QVERIFY(click("unknown"));
        QCOMPARE(tree.currentNode(), branch(window, DocumentType::None));
        QVERIFY(click("run"));
        QTRY_COMPARE_WITH_TIMEOUT(tree.currentNode(), branch(window, DocumentType::Protocols), 10000);
        QCOMPARE(o.processEnds, 0);
        QCOMPARE(o.messages.count(), 0);

        // The clock was watched all along: a quarter of an hour without activity ends the session.
        o.now += 15 * 60 * 1000;
        QTRY_COMPARE_WITH_TIMEOUT(o.processEnds, 1, 5000);
    }

    // Finding documents: the filter box, the recent documents in the File menu
    // and on the welcome page, and the file list's "Show in file manager";
    // each can be switched off (on by default: the test below).
    void eachAidCanBeSwitchedOff()
    {
        Documents o;
        for (const char* key : {"ShowFileListFilter", "ShowRecentDocuments", "ShowInFileManager"})
            o.set(QStringLiteral("Settings/") + QLatin1String(key), false);
        MainWindow& window = o.load();
        QVERIFY(!part<FileListControl>(window).filterBox()->isVisible());
        QVERIFY(!o.recentMenu());
        QVERIFY(!part<FileListControl>(window).findChild<QAction*>("ShowInFileManager"));

        // A welcome link that waits for the page is forgotten once the tree leaves the root.
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        BrowserControl& browser = part<BrowserControl>(window);
        bool cancel = false;
        Q_EMIT browser.BeforeNavigate2(QUrl("organiser:\\Analyse data"), cancel);
        QVERIFY(cancel);
        tree.setCurrentNode(branch(tree, DocumentType::Protocols));
        Q_EMIT browser.CommandStateChange();
        QVERIFY(browser.WaitUntilComplete());
        Q_EMIT browser.CommandStateChange();
        QCOMPARE(tree.currentNode(), branch(tree, DocumentType::Protocols));
    }

    // Opening documents fills File > Recent, newest first; choosing one
    // shows it in its folder, selected; the welcome page lists them too and
    // its links do the same. (A vanished document is RecentDocumentsTest's,
    // one outside the tree FileViewTest's.)
    void recentDocumentsAreShownInTheirFolders()
    {
        Documents o;
        MainWindow& window = o.load();
        QVERIFY(part<FileListControl>(window).filterBox()->isVisible());
        QVERIFY(part<FileListControl>(window).findChild<QAction*>("ShowInFileManager"));
        const QString bca = o.doc("Protocols/BCA Protein Assay.apr");
        const QString elisa = o.doc("Protocols/ELISA IgG Quantitation.apr");
        for (const QString& path : {bca, elisa}) { // found in its folder and opened, as a user does
            part<FileView>(window).ShowDocument(path);
            QVERIFY(waitForListing(part<FileListControl>(window)));
            QCOMPARE(part<FileListControl>(window).firstSelectedItem().path(), path);
            tool(window, CommandId::Open).trigger();
            o.started();
        }
        QMenu* menu = o.recentMenu();
        QVERIFY(menu);
        Q_EMIT menu->aboutToShow();
        QCOMPARE(menu->actions().size(), 2);

        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::Layouts));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        part<FileListControl>(window).setNameFilter("Standard");
        menu->actions().at(1)->trigger();
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QCOMPARE(part<FolderTreeControl>(window).currentNode().folderPath(), o.doc("Protocols"));
        QCOMPARE(part<FileListControl>(window).selectedCount(), 1);
        QCOMPARE(part<FileListControl>(window).firstSelectedItem().path(), bca);

        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::None));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QTRY_COMPARE_WITH_TIMEOUT(
            evaluate(part<BrowserControl>(window), "document.querySelectorAll('#organiser-recent a').length")
                .toInt(),
            2, 10000);
        bool cancel = false;
        Q_EMIT part<BrowserControl>(window).BeforeNavigate2(QUrl("organiser:%5CRecent%201"), cancel);
        QVERIFY(cancel);
        QTRY_COMPARE_WITH_TIMEOUT(part<FileListControl>(window).firstSelectedItem().path(), elisa, 5000);
    }

    // The attack: a welcome page of the user's own choosing navigates itself
    // every few moments by script, to keep an idle session open. Pages run no
    // script, and a navigation is not the user's activity, so the session
    // times out all the same.
    void aPageThatNavigatesItselfDoesNotKeepTheSessionOpen()
    {
        Documents o;
        o.showOwnWelcomePage(R"(<html><body><script>
setInterval(function () { location.href = 'organiser:\\Keep alive'; }, 20);
</script></body></html>)");
        o.now += 10 * 60 * 1000;
        // A second for the page to show whether it acts by itself.
        static_cast<void>(QTest::qWaitFor([&] { return o.announced > 0; }, 1000));
        o.now += 10 * 60 * 1000;
        QTRY_COMPARE_WITH_TIMEOUT(o.processEnds, 1, 5000);
        QCOMPARE(o.messages.last().title, "Time Out");
        QCOMPARE(o.announced, 0);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowDocumentsTest)
#include "MainWindowDocumentsTest.moc"
