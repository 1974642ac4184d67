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

    QString program(const char* name) const { return programs.program(QLatin1String(name)); }

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
        for (QAction* action : part<ToolBarsControl>(*window).menu(QStringLiteral("ID_File"))->actions())
            if (action->menu() && action->menu()->accessibleName() == QLatin1String("Recent documents"))
                return action->menu();
        return nullptr;
    }

    // Shows the document in its folder and opens it, as a user finds and opens one.
    void open(const QString& path)
    {
        part<FileView>(*window).ShowDocument(path);
        QVERIFY(waitForListing(part<FileListControl>(*window)));
        QCOMPARE(part<FileListControl>(*window).firstSelectedItem().path(), path);
        tool(*window, CommandId::Open).trigger();
        started();
    }

    int welcomeRecentLinks()
    {
        int links = -1;
        part<BrowserControl>(*window).view()->page()->runJavaScript(
            QStringLiteral("document.querySelectorAll('#organiser-recent a').length"),
            QWebEngineScript::ApplicationWorld, [&](const QVariant& result) { links = result.toInt(); });
        if (!QTest::qWaitFor([&] { return links >= 0; }, 10000))
            qWarning("The page did not answer");
        return links;
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
            return QTest::qWaitFor([&] { return pane.CurrentPage() == page; }, 5000) &&
                   QTest::qWaitFor(
                       [&] {
                           return part<BrowserControl>(window).LocationURL() == QUrl::fromLocalFile(page);
                       },
                       10000);
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
    void documentCommandsStartTheSuitesPrograms_data()
    {
        QTest::addColumn<int>("session"); // 0: none, 1: allowed, 2: refused
        // clang-format off
        QTest::newRow("no session") << 0;
        QTest::newRow("allowed") << 1;
        QTest::newRow("denied") << 2;
        // clang-format on
    }

    void documentCommandsStartTheSuitesPrograms()
    {
        QFETCH(int, session);
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
        const QList<QByteArrayList> run = argv({o.program("Assay Application"), protocol});
        part<ToolBarsControl>(window).action(QStringLiteral("ID_Run"))->trigger();
        QCOMPARE(o.messages.count(), session == 2 ? 1 : 0);
        if (session) {
            // The session also records the documents, on its own threads: the run's entry need not be last.
            QCOMPARE(o.security->auditTexts().contains("Run protocol: " + protocol), session == 1);
            QCOMPARE(session == 1 ? o.started() : o.programs.records(),
                     session == 1 ? run : QList<QByteArrayList>{});
            return;
        }
        QCOMPARE(o.started(), run);
        tree.clickButton(treeButton(CommandId::Run));
        QCOMPARE(o.started(), run);
        part<ToolBarsControl>(window).action(QStringLiteral("ID_New"))->trigger();
        QCOMPARE(o.dialogs.shown(), QStringList{QStringLiteral("frmNewAssayProtocol")});
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
            const QPoint centre = elementCentre(browser, QLatin1String(id));
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
    // each can be switched off.
    void eachAidCanBeSwitchedOff_data()
    {
        QTest::addColumn<bool>("on");
        // clang-format off
        QTest::newRow("on, as by default") << true;
        QTest::newRow("switched off") << false;
        // clang-format on
    }

    void eachAidCanBeSwitchedOff()
    {
        QFETCH(bool, on);
        Documents o;
        if (!on)
            for (const char* key : {"ShowFileListFilter", "ShowRecentDocuments", "ShowInFileManager"})
                o.set(QStringLiteral("Settings/") + QLatin1String(key), false);
        MainWindow& window = o.load();
        QCOMPARE(part<FileListControl>(window).filterBox()->isVisible(), on);
        QCOMPARE(o.recentMenu() != nullptr, on);
        QCOMPARE(part<FileListControl>(window).findChild<QAction*>(QStringLiteral("ShowInFileManager")) !=
                     nullptr,
                 on);
    }

    // Opening documents fills File > Recent, newest first; choosing one
    // shows it in its folder, selected; the welcome page lists them too and
    // its links do the same. (A vanished document is RecentDocumentsTest's,
    // one outside the tree FileViewTest's.)
    void recentDocumentsAreShownInTheirFolders()
    {
        Documents o;
        MainWindow& window = o.load();
        const QString bca = o.doc("Protocols/BCA Protein Assay.apr");
        const QString elisa = o.doc("Protocols/ELISA IgG Quantitation.apr");
        o.open(bca);
        o.open(elisa);
        QMenu* menu = o.recentMenu();
        QVERIFY(menu);
        Q_EMIT menu->aboutToShow();
        QCOMPARE(menu->actions().size(), 2);

        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::Layouts));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        part<FileListControl>(window).setNameFilter(QStringLiteral("Standard"));
        menu->actions().at(1)->trigger();
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QCOMPARE(part<FolderTreeControl>(window).currentNode().folderPath(), o.doc("Protocols"));
        QCOMPARE(part<FileListControl>(window).selectedCount(), 1);
        QCOMPARE(part<FileListControl>(window).firstSelectedItem().path(), bca);

        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::None));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QTRY_COMPARE_WITH_TIMEOUT(o.welcomeRecentLinks(), 2, 10000);
        bool cancel = false;
        Q_EMIT part<BrowserControl>(window).BeforeNavigate2(QUrl(QStringLiteral("organiser:%5CRecent%201")),
                                                            cancel);
        QVERIFY(cancel);
        QTRY_COMPARE_WITH_TIMEOUT(part<FileListControl>(window).firstSelectedItem().path(), elisa, 5000);
    }

    // A welcome link that waits for the page is forgotten once the tree leaves the root.
    void aQueuedWelcomeLinkDoesNotActOnAnotherFolder()
    {
        LoadedOrganiser site;
        MainWindow& window = site.load();
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        BrowserControl& browser = part<BrowserControl>(window);
        bool cancel = false;
        Q_EMIT browser.BeforeNavigate2(QUrl(QStringLiteral("organiser:\\Analyse data")), cancel);
        QVERIFY(cancel);
        tree.setCurrentNode(branch(tree, DocumentType::Protocols));
        Q_EMIT browser.CommandStateChange();
        QVERIFY(browser.WaitUntilComplete());
        Q_EMIT browser.CommandStateChange();
        QCOMPARE(tree.currentNode(), branch(tree, DocumentType::Protocols));
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
        QCOMPARE(o.messages.last().title, QStringLiteral("Time Out"));
        QCOMPARE(o.announced, 0);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowDocumentsTest)
#include "MainWindowDocumentsTest.moc"
