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
#include "SecurityFixture.h"
#include "ToolBarsControl.h"
#include "WebEngineTestMain.h"

#include <QAction>
#include <QDateTime>
#include <QTreeView>
#include <QWebEnginePage>
#include <QWebEngineView>

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
        FileListControl& list = m_site->window->fileList();
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
        FolderTreeControl& tree = window.folderTree();
        const OrganiserTree& organiser = window.organiserTree();
        PreviewPane& pane = *window.previewPane();
        const QString welcome = organiser.rootNode().page();
        QCOMPARE(pane.CurrentPage(), welcome);

        // The newest protocol is selected and its up-to-date preview shown.
        tree.setCurrentNode(organiser.protocolsNode());
        QCOMPARE(window.fileList().firstSelectedItem().path(), doc("Protocols/ELISA IgG Quantitation.apr"));
        const QString preview = doc("Protocols/ELISA IgG Quantitation.mht");
        QCOMPARE(pane.CurrentPage(), preview);
        QTRY_COMPARE_WITH_TIMEOUT(window.browser()->LocationURL(), QUrl::fromLocalFile(preview), 10000);
        // A preview a minute older than its protocol, and none at all: the not-available page.
        pick(doc("Protocols/BCA Protein Assay.apr"));
        QCOMPARE(pane.CurrentPage(), pane.PreviewNotAvailablePage());
        QVERIFY(QFileInfo(pane.PreviewNotAvailablePage()).isFile());
        pick(doc("Protocols/Kinetic Enzyme Activity.apr"));
        QCOMPARE(pane.CurrentPage(), pane.PreviewNotAvailablePage());
        // Quotes, a hash and non-ASCII letters in a sub-folder's document.
        tree.setCurrentNode(organiser.protocolsNode().child(0));
        const QString odd = doc("Protocols/Ünï Lab/Assay \"Gold\" #1.mht");
        QCOMPARE(pane.CurrentPage(), odd);
        QTRY_COMPARE_WITH_TIMEOUT(window.browser()->LocationURL(), QUrl::fromLocalFile(odd), 10000);

        // A layout is drawn by the viewer; the browser keeps its page.
        tree.setCurrentNode(organiser.layoutsNode());
        PlateLayoutViewer& viewer = window.plateLayoutViewer();
        QVERIFY(viewer.isVisible());
        QVERIFY(viewer.hasPlateLayout());
        QCOMPARE(pane.CurrentPage(), odd);
        // A report leaves the pane as it was.
        tree.setCurrentNode(organiser.reportsNode());
        QCOMPARE(window.fileList().firstSelectedItem().path(), doc("Reports/ELISA IgG Summary Report.mht"));
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
        const OrganiserTree& organiser = window.organiserTree();
        const QString welcome = organiser.rootNode().page();
        window.folderTree().setCurrentNode(organiser.layoutsNode());
        QCOMPARE(window.plateLayoutViewer().isVisible(), layouts);
        window.folderTree().setCurrentNode(organiser.protocolsNode());
        QCOMPARE(window.previewPane()->CurrentPage(),
                 protocols ? doc("Protocols/ELISA IgG Quantitation.mht") : welcome);
    }

    void documentCommandsStartTheSuitesPrograms()
    {
        MainWindow& window = load();
        FolderTreeControl& tree = window.folderTree();
        tree.setCurrentNode(window.organiserTree().protocolsNode());
        const QString protocol = doc("Protocols/ELISA IgG Quantitation.apr");

        window.toolBars().action(QStringLiteral("ID_Run"))->trigger();
        QCOMPARE(started(), argv({program("Assay Application"), protocol}));
        tree.clickButton(buttonKey(DocumentCommand::Run));
        QCOMPARE(started(), argv({program("Assay Application"), protocol}));
        window.toolBars().action(QStringLiteral("ID_Open"))->trigger();
        QCOMPARE(window.launcher()->lastCommandLine().text,
                 '"' + program("Assay Application") + "\" /edit " + protocol);
        QCOMPARE(started(), argv({program("Assay Application"), "/edit " + protocol}));
        // Another program of the suite moves the assay application while the Organiser runs.
        QFile settings(m_site->folders.settingsFile());
        QVERIFY(settings.open(QIODevice::ReadWrite));
        const QByteArray text = settings.readAll();
        settings.seek(0);
        settings.write(
            QByteArray(text).replace("Programs/Assay Application", "Programs/Read Configuration Editor"));
        settings.close();
        window.toolBars().action(QStringLiteral("ID_Run"))->trigger();
        QCOMPARE(started(), argv({program("Read Configuration Editor"), protocol}));

        tree.setCurrentNode(window.organiserTree().protocolsNode().child(0));
        tree.clickButton(buttonKey(DocumentCommand::Run));
        QCOMPARE(started(), argv({program("Read Configuration Editor"),
                                  doc("Protocols/Ünï Lab/Assay \"Gold\" #1.apr")}));

        // Without a session the layout editor is told nothing: the command line ends in its blank.
        tree.setCurrentNode(window.organiserTree().layoutsNode());
        tree.clickButton(buttonKey(DocumentCommand::New));
        QCOMPARE(window.launcher()->lastCommandLine().text, '"' + program("Layout Editor") + "\" ");
        QCOMPARE(started(), argv({program("Layout Editor")}));
        QCOMPARE(m_site->messages.count(), 0);
    }

    // New on Protocols opens the wizard picker (its list and buttons have tests of their own).
    void newOnProtocolsOpensTheWizardPicker()
    {
        MainWindow& window = load();
        window.folderTree().setCurrentNode(window.organiserTree().protocolsNode());
        QVERIFY(window.toolBars().action(QStringLiteral("ID_New"))->isEnabled());
        window.toolBars().action(QStringLiteral("ID_New"))->trigger();
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
        window.folderTree().setCurrentNode(window.organiserTree().protocolsNode());
        const QString protocol = doc("Protocols/ELISA IgG Quantitation.apr");
        if (auditFull)
            security->fillUp("General");

        window.toolBars().action(QStringLiteral("ID_Run"))->trigger();
        // The entry is written before the start, so a start that fails leaves it too.
        QCOMPARE(security->auditTexts().last() == "Run protocol: " + protocol, allowed && !auditFull);
        QCOMPARE(window.launcher()->lastCommandLine().text.isEmpty(), !allowed || auditFull);
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
<a id="unknown" href="organiser:\Calibrate">Calibrate</a>
<a id="run" href="organiser:\Run a protocol">Run a protocol</a>
</body></html>)");
        set("Settings/PageFolder", pages);
        set("Settings/OrganiserFile", "Start.htm");
        const auto security = configureSession({});
        // Poll interval 0: one turn of the event loop shows whether the time-out has passed.
        MainWindow& window = load(0);
        BrowserControl& browser = *window.browser();
        FolderTreeControl& tree = window.folderTree();
        QCOMPARE(window.previewPane()->CurrentPage(), pages + "/Start.htm");
        QVERIFY(browser.WaitUntilComplete());
        int announced = 0;
        connect(&browser, &BrowserControl::BeforeNavigate2, this, [&](const QUrl&, bool&) { ++announced; });
        // Each click comes 14 minutes after the last: only its reset keeps the session open.
        auto click = [&](const char* id) {
            m_now += 14 * 60 * 1000;
            const int before = announced;
            browser.view()->page()->runJavaScript(
                QStringLiteral("document.getElementById('%1').click()").arg(id));
            return QTest::qWaitFor([&] { return announced > before; }, BrowserControl::DefaultWaitLimitMs);
        };

        QVERIFY(click("unknown"));
        QCoreApplication::processEvents();
        QCOMPARE(tree.currentNode(), window.organiserTree().rootNode());
        QCOMPARE(browser.LocationURL(), QUrl::fromLocalFile(pages + "/Start.htm"));
        QCOMPARE(m_site->messages.count(), 0);
        QVERIFY(click("run"));
        QTRY_COMPARE_WITH_TIMEOUT(tree.currentNode(), window.organiserTree().protocolsNode(), 10000);
        QCOMPARE(window.previewPane()->CurrentPage(), doc("Protocols/ELISA IgG Quantitation.mht"));
        // Back on the root its page loads again; a click meanwhile waits until it is complete.
        tree.setCurrentNode(window.organiserTree().rootNode());
        QCOMPARE(window.previewPane()->CurrentPage(), pages + "/Start.htm");
        QCOMPARE(browser.ReadyState(), int(BrowserControl::Loading));
        bool cancel = false;
        Q_EMIT browser.BeforeNavigate2(QUrl(QStringLiteral("organiser:\\Run a protocol")), cancel);
        QVERIFY(cancel);
        QCOMPARE(tree.currentNode(), window.organiserTree().rootNode());
        QTRY_COMPARE_WITH_TIMEOUT(tree.currentNode(), window.organiserTree().protocolsNode(), 10000);
        QCOMPARE(m_processEnds, 0);

        // The clock was watched all along: a quarter of an hour without activity ends the session.
        m_now += 15 * 60 * 1000;
        QTRY_COMPARE_WITH_TIMEOUT(m_processEnds, 1, 5000);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowDocumentsTest)
#include "MainWindowDocumentsTest.moc"
