#include "BrowserControl.h"
#include "DocumentLauncher.h"
#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "NebraSecurityManager.h"
#include "PlateLayoutViewer.h"
#include "PreviewPane.h"
#include "RecordingPrograms.h"
#include "SecurityFixture.h"
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

// The Organiser's daily job in the loaded main window: previews follow the
// selection, the document commands start the suite's programs (checked and
// audited in a security session), and the welcome page's links act.
class MainWindowDocumentsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<LoadedOrganiser> m_site;
    std::unique_ptr<RecordingPrograms> m_programs;
    qint64 m_now = 0;
    int m_processEnds = 0;

    QString doc(const QString& relative) const { return m_site->doc(relative); }
    QString program(const char* name) const { return m_programs->program(QLatin1String(name)); }
    static void set(const QString& key, const QVariant& value) { LoadedOrganiser::set(key, value); }

    // Copies a document of the example assays, modified the given seconds after a day ago.
    void place(const QString& target, int seconds, const QString& example = {})
    {
        QFile source(qEnvironmentVariable("NEBRA_TEST_DATA_DIR") + "/Example Assays/" +
                     (example.isEmpty() ? target : example));
        QVERIFY2(source.open(QIODevice::ReadOnly), qPrintable(source.fileName()));
        writeFile(doc(target), source.readAll(), QDateTime::currentSecsSinceEpoch() - 86400 + seconds);
    }

    // A security database whose one user has the rights given, and the log-in that user gives.
    std::unique_ptr<SecurityFixture> configureSession(const QStringList& rights)
    {
        auto security = std::make_unique<SecurityFixture>(m_site->folders.root() + "/site");
        security->create();
        security->addUser("jsmith", "correct horse", "Jane Smith", rights);
        SettingsStore store;
        security->writeSettings(store);
        store.setValue("Settings/SecurityConfigured", true);
        m_site->dialogs.logIn("jsmith", "correct horse");
        return security;
    }

    MainWindow& load(int pollIntervalMs = 1000)
    {
        return m_site->load([this, pollIntervalMs](MainWindowOptions& options) {
            options.endProcess = [this] { ++m_processEnds; };
            options.securityManager.clock = [this] { return m_now; };
            options.securityManager.pollIntervalMs = pollIntervalMs;
        });
    }

    // Makes the document the file list's only selection, as a click on it does.
    void pick(const QString& path)
    {
        FileListControl& list = part<FileListControl>(*m_site->window);
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
        m_programs->waitForRecords(1);
        const QList<QByteArrayList> records = m_programs->records();
        m_programs->clear();
        return records;
    }

    // The centre of the page's element with the id, in the view's coordinates, as the mouse clicks it.
    static QPoint elementCentre(BrowserControl& browser, const QString& id)
    {
        auto centre = std::make_shared<QVariantList>();
        browser.view()->page()->runJavaScript(
            QStringLiteral("(function () { var r = document.getElementById('%1').getBoundingClientRect();"
                           " return [r.left + r.width / 2, r.top + r.height / 2]; })()")
                .arg(id),
            QWebEngineScript::ApplicationWorld,
            [centre](const QVariant& result) { *centre = result.toList(); });
        if (!QTest::qWaitFor([&] { return centre->size() == 2; }, BrowserControl::DefaultWaitLimitMs))
            return {-1, -1};
        return QPointF(centre->at(0).toDouble(), centre->at(1).toDouble()).toPoint();
    }

    static QList<QByteArrayList> argv(const QStringList& arguments)
    {
        QByteArrayList list;
        for (const QString& argument : arguments)
            list.append(QFile::encodeName(argument));
        return {list};
    }

private Q_SLOTS:
    void init()
    {
        m_site = std::make_unique<LoadedOrganiser>();
        m_programs = std::make_unique<RecordingPrograms>();
        m_now = 0;
        m_processEnds = 0;
        set("Paths/AssayApplicationPath", program("Assay Application"));
        set("Paths/LayoutEditorPath", program("Layout Editor"));
        set("Paths/ReadConfigurationEditorPath", program("Read Configuration Editor"));
        place("Protocols/Kinetic Enzyme Activity.apr", 0);
        place("Protocols/BCA Protein Assay.apr", 100);
        place("Protocols/BCA Protein Assay.mht", 40); // a minute older than its protocol
        place("Protocols/ELISA IgG Quantitation.apr", 200);
        place("Protocols/ELISA IgG Quantitation.mht", 230);
        place("Protocols/Ünï Lab/Assay \"Gold\" #1.apr", 0, "Protocols/BCA Protein Assay.apr");
        place("Protocols/Ünï Lab/Assay \"Gold\" #1.mht", 0, "Protocols/BCA Protein Assay.mht");
        place("Microplate Layouts/ELISA 96 Standard Curve.mlo", 0);
        place("Reports/ELISA IgG Summary Report.mht", 0);
    }

    void cleanup()
    {
        m_site.reset();
        m_programs.reset();
    }

    void thePreviewFollowsTheSelection()
    {
        MainWindow& window = load();
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        PreviewPane& pane = part<PreviewPane>(window);
        const QString welcome = branch(tree, DocumentType::None).page();
        QCOMPARE(pane.CurrentPage(), welcome);

        // The newest protocol is selected and its up-to-date preview shown.
        tree.setCurrentNode(branch(window, DocumentType::Protocols));
        QCOMPARE(part<FileListControl>(window).firstSelectedItem().path(),
                 doc("Protocols/ELISA IgG Quantitation.apr"));
        const QString preview = doc("Protocols/ELISA IgG Quantitation.mht");
        QCOMPARE(pane.CurrentPage(), preview);
        QTRY_COMPARE_WITH_TIMEOUT(part<BrowserControl>(window).LocationURL(), QUrl::fromLocalFile(preview),
                                  10000);
        // A preview a minute older than its protocol, and none at all: the not-available page.
        pick(doc("Protocols/BCA Protein Assay.apr"));
        QCOMPARE(pane.CurrentPage(), pane.PreviewNotAvailablePage());
        QVERIFY(QFileInfo(pane.PreviewNotAvailablePage()).isFile());
        pick(doc("Protocols/Kinetic Enzyme Activity.apr"));
        QCOMPARE(pane.CurrentPage(), pane.PreviewNotAvailablePage());
        // Quotes, a hash and non-ASCII letters in a sub-folder's document.
        tree.setCurrentNode(branch(window, DocumentType::Protocols).child(0));
        const QString odd = doc("Protocols/Ünï Lab/Assay \"Gold\" #1.mht");
        QCOMPARE(pane.CurrentPage(), odd);
        QTRY_COMPARE_WITH_TIMEOUT(part<BrowserControl>(window).LocationURL(), QUrl::fromLocalFile(odd),
                                  10000);

        // A layout is drawn by the viewer; the browser keeps its page.
        tree.setCurrentNode(branch(window, DocumentType::Layouts));
        PlateLayoutViewer& viewer = part<PlateLayoutViewer>(window);
        QVERIFY(viewer.isVisible());
        QVERIFY(viewer.hasPlateLayout());
        QCOMPARE(pane.CurrentPage(), odd);
        // A report leaves the pane as it was.
        tree.setCurrentNode(branch(window, DocumentType::Reports));
        QCOMPARE(part<FileListControl>(window).firstSelectedItem().path(),
                 doc("Reports/ELISA IgG Summary Report.mht"));
        QVERIFY(viewer.isVisible());
        QCOMPARE(pane.CurrentPage(), odd);
        // The root shows the welcome page again.
        tree.setCurrentNode(branch(window, DocumentType::None));
        QCOMPARE(pane.CurrentPage(), welcome);
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
        QTest::newRow("with instrument drivers") << true << true << true << true;
        QTest::newRow("without instrument drivers: layouts only") << false << true << false << true;
        QTest::newRow("preview off") << true << false << false << false;
    }

    void theSettingsChooseWhatIsPreviewed()
    {
        QFETCH(bool, driversInUse);
        QFETCH(bool, showPreview);
        QFETCH(bool, protocols);
        QFETCH(bool, layouts);
        set("Settings/InstrumentDriversInUse", driversInUse);
        set("Settings/ShowPreviewPane", showPreview);
        MainWindow& window = load();
        const QString welcome = branch(window, DocumentType::None).page();
        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::Layouts));
        QCOMPARE(part<PlateLayoutViewer>(window).isVisible(), layouts);
        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::Protocols));
        QCOMPARE(part<PreviewPane>(window).CurrentPage(),
                 protocols ? doc("Protocols/ELISA IgG Quantitation.mht") : welcome);
    }

    void documentCommandsStartTheSuitesPrograms()
    {
        MainWindow& window = load();
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        tree.setCurrentNode(branch(window, DocumentType::Protocols));
        const QString protocol = doc("Protocols/ELISA IgG Quantitation.apr");

        part<ToolBarsControl>(window).action(QStringLiteral("ID_Run"))->trigger();
        QCOMPARE(started(), argv({program("Assay Application"), protocol}));
        tree.clickButton(treeButton(CommandId::Run));
        QCOMPARE(started(), argv({program("Assay Application"), protocol}));
        part<ToolBarsControl>(window).action(QStringLiteral("ID_Open"))->trigger();
        QCOMPARE(started(), argv({program("Assay Application"), "/edit " + protocol}));
        // Another program of the suite moves the assay application while the Organiser runs.
        QFile settings(m_site->folders.settingsFile());
        QVERIFY(settings.open(QIODevice::ReadWrite));
        const QByteArray text = settings.readAll();
        settings.seek(0);
        settings.write(
            QByteArray(text).replace("Programs/Assay Application", "Programs/Read Configuration Editor"));
        settings.close();
        part<ToolBarsControl>(window).action(QStringLiteral("ID_Run"))->trigger();
        QCOMPARE(started(), argv({program("Read Configuration Editor"), protocol}));

        tree.setCurrentNode(branch(window, DocumentType::Protocols).child(0));
        tree.clickButton(treeButton(CommandId::Run));
        QCOMPARE(started(), argv({program("Read Configuration Editor"),
                                  doc("Protocols/Ünï Lab/Assay \"Gold\" #1.apr")}));

        // Without a session the layout editor is told nothing: it is started without an argument.
        tree.setCurrentNode(branch(window, DocumentType::Layouts));
        tree.clickButton(treeButton(CommandId::New));
        QCOMPARE(started(), argv({program("Layout Editor")}));
        QCOMPARE(m_site->messages.count(), 0);
    }

    // New on Protocols opens the wizard picker (its list and buttons have tests of their own).
    void newOnProtocolsOpensTheWizardPicker()
    {
        MainWindow& window = load();
        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::Protocols));
        QVERIFY(part<ToolBarsControl>(window).action(QStringLiteral("ID_New"))->isEnabled());
        part<ToolBarsControl>(window).action(QStringLiteral("ID_New"))->trigger();
        QCOMPARE(m_site->dialogs.shown(), QStringList{QStringLiteral("frmNewAssayProtocol")});
        QCOMPARE(m_site->messages.count(), 0);
    }

    void aRunInASessionIsCheckedAndAudited_data()
    {
        QTest::addColumn<bool>("allowed");
        QTest::addColumn<bool>("programThere");
        QTest::addColumn<bool>("auditFull"); // the store refuses the entry
        QTest::newRow("allowed") << true << true << false;
        QTest::newRow("denied") << false << true << false;
        QTest::newRow("allowed, the program missing") << true << false << false;
        QTest::newRow("allowed, the audit trail full") << true << true << true;
    }

    void aRunInASessionIsCheckedAndAudited()
    {
        QFETCH(bool, allowed);
        QFETCH(bool, programThere);
        QFETCH(bool, auditFull);
        const auto security =
            configureSession(allowed ? QStringList{"AuthorisationsGeneral/RunProtocol"} : QStringList{});
        if (!programThere)
            set("Paths/AssayApplicationPath", program("Missing Application"));
        MainWindow& window = load();
        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::Protocols));
        const QString protocol = doc("Protocols/ELISA IgG Quantitation.apr");
        if (auditFull)
            security->fillUp("General");

        part<ToolBarsControl>(window).action(QStringLiteral("ID_Run"))->trigger();
        // The entry is written before the start, so a start that fails leaves it too.
        QCOMPARE(security->auditTexts().last() == "Run protocol: " + protocol, allowed && !auditFull);
        if (auditFull) {
            QCOMPARE(m_site->messages.count(), 1);
            QVERIFY(m_site->messages.last().text.startsWith(NebraSecurityManager::auditWriteFailureText()));
            QVERIFY(m_programs->records().isEmpty());
        } else if (allowed && programThere) {
            QCOMPARE(started(), argv({program("Assay Application"), protocol}));
            QCOMPARE(m_site->messages.count(), 0);
        } else {
            QCOMPARE(m_site->messages.count(), 1);
            QCOMPARE(m_site->messages.last().title,
                     allowed ? DocumentLauncher::startFailureTitle() : QStringLiteral("Security Manager"));
            QVERIFY(m_programs->records().isEmpty());
        }
    }

    // Which link does what is the welcome page's own test; here a click on the
    // loaded page reaches it, and keeps the security session open.
    void theWelcomePageLinksAct()
    {
        const QString pages = m_site->folders.root() + "/pages";
        writeFile(pages + "/Start.htm", R"(<html><body>
<p><a id="unknown" href="organiser:\Calibrate">Calibrate</a></p>
<p><a id="run" href="organiser:\Run a protocol">Run a protocol</a></p>
</body></html>)");
        set("Settings/PageFolder", pages);
        set("Settings/OrganiserFile", "Start.htm");
        const auto security = configureSession({});
        // Poll interval 0: one turn of the event loop shows whether the time-out has passed.
        MainWindow& window = load(0);
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
            m_now += 14 * 60 * 1000;
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
        QCOMPARE(m_site->messages.count(), 0);
        QVERIFY(click("run"));
        QTRY_COMPARE_WITH_TIMEOUT(tree.currentNode(), branch(window, DocumentType::Protocols), 10000);
        QCOMPARE(part<PreviewPane>(window).CurrentPage(), doc("Protocols/ELISA IgG Quantitation.mht"));
        // Back on the root its page loads again; a click meanwhile waits until it is complete.
        tree.setCurrentNode(branch(window, DocumentType::None));
        QCOMPARE(part<PreviewPane>(window).CurrentPage(), pages + "/Start.htm");
        QCOMPARE(browser.ReadyState(), int(BrowserControl::Loading));
        bool cancel = false;
        Q_EMIT browser.BeforeNavigate2(QUrl(QStringLiteral("organiser:\\Run a protocol")), cancel);
        QVERIFY(cancel);
        QCOMPARE(tree.currentNode(), branch(window, DocumentType::None));
        QTRY_COMPARE_WITH_TIMEOUT(tree.currentNode(), branch(window, DocumentType::Protocols), 10000);
        QCOMPARE(m_processEnds, 0);

        // The clock was watched all along: a quarter of an hour without activity ends the session.
        m_now += 15 * 60 * 1000;
        QTRY_COMPARE_WITH_TIMEOUT(m_processEnds, 1, 5000);
    }

    // The attack: a welcome page of the user's own choosing navigates itself
    // every few moments by script, to keep an idle session open. Pages run no
    // script, and a navigation is not the user's activity, so the session
    // times out all the same.
    void aPageThatNavigatesItselfDoesNotKeepTheSessionOpen()
    {
        const QString pages = m_site->folders.root() + "/pages";
        writeFile(pages + "/Busy.htm", R"(<html><body><script>
setInterval(function () { location.href = 'organiser:\\Keep alive'; }, 20);
</script></body></html>)");
        set("Settings/PageFolder", pages);
        set("Settings/OrganiserFile", "Busy.htm");
        const auto security = configureSession({});
        MainWindow& window = load(0);
        BrowserControl& browser = part<BrowserControl>(window);
        QVERIFY(browser.WaitUntilComplete());
        int announced = 0;
        QObject scope;
        connect(&browser, &BrowserControl::BeforeNavigate2, &scope, [&](const QUrl&, bool&) { ++announced; });
        m_now += 10 * 60 * 1000;
        // A second for the page to show whether it acts by itself.
        static_cast<void>(QTest::qWaitFor([&] { return announced > 0; }, 1000));
        m_now += 10 * 60 * 1000;
        QTRY_COMPARE_WITH_TIMEOUT(m_processEnds, 1, 5000);
        QCOMPARE(m_site->messages.last().title, QStringLiteral("Time Out"));
        QCOMPARE(announced, 0);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowDocumentsTest)
#include "MainWindowDocumentsTest.moc"
