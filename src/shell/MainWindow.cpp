#include "MainWindow.h"

#include "Authorisation.h"
#include "BrowserControl.h"
#include "CommandDispatcher.h"
#include "DataFolders.h"
#include "DiagnosticLog.h"
#include "DocumentCommands.h"
#include "DocumentLauncher.h"
#include "FileListControl.h"
#include "FileView.h"
#include "FolderTreeControl.h"
#include "HelpSystem.h"
#include "HelpTopics.h"
#include "HelpWindow.h"
#include "InstalledDrivers.h"
#include "NebraSecurityManager.h"
#include "NewProtocolWizards.h"
#include "OptionsCommand.h"
#include "OrganiserTree.h"
#include "PlateLayoutViewer.h"
#include "PreviewPane.h"
#include "RecentDocuments.h"
#include "Resources.h"
#include "RuntimeErrors.h"
#include "SecuritySession.h"
#include "ShellCommands.h"
#include "ShellNotifications.h"
#include "ShortcutsBar.h"
#include "SingleInstance.h"
#include "SplashScreen.h"
#include "StartUpSequence.h"
#include "StatusBarControl.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "ToolBarsControl.h"
#include "ToolDefinitions.h"
#include "TreeNavigation.h"
#include "WelcomePage.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QGridLayout>
#include <QSplitter>
#include <QStatusBar>
#include <QTimer>

namespace nebra {

namespace {
constexpr int TwipsPerInch = 1440;
}

MainWindow::MainWindow(Options options)
    : m_options(std::move(options)),
      m_singleInstance(std::make_unique<SingleInstance>(m_options.instanceName)),
      m_notifications(std::make_unique<ShellNotifications>()), m_help(std::make_unique<HelpSystem>())
{
    setObjectName(QStringLiteral("frmNMain"));
    setAccessibleName(QStringLiteral("Organiser"));
    setGeometry(DesignGeometry);
    createControls();
    connectCommands();
    connect(m_singleInstance.get(), &SingleInstance::activationRequested, this,
            &MainWindow::showFromOtherInstance);
}

MainWindow::~MainWindow()
{
    // The panes outlive the objects that handle their events.
    m_folderTree->disconnect(this);
    m_shortcutsBar->disconnect(this);
    if (m_splash)
        m_splash->close();
}

void MainWindow::showSplash()
{
    m_splash = new SplashScreen(this, windowTitle());
    m_splash->show();
}

void MainWindow::createControls()
{
    m_toolBars = new ToolBarsControl(this);
    for (const ToolDefinition& tool : ToolDefinitions::tools())
        m_toolBars->addTool(tool);
    for (const auto& [menu, items] : ToolDefinitions::menus())
        m_toolBars->addMenu(menu, items);
    m_toolBars->addToolBarItems(ToolDefinitions::toolBarItems());
    m_statusBar = new StatusBarControl(statusBar(), 2);

    // The panes lie in the client area where the resize rule puts them.
    auto* client = new QWidget(this);
    client->setObjectName(QStringLiteral("clientArea"));
    client->setAccessibleName(QStringLiteral("Client area"));
    auto* splitter = new QSplitter(Qt::Horizontal, client);
    splitter->setObjectName(QStringLiteral("panes"));
    splitter->setAccessibleName(QStringLiteral("Panes"));
    m_panes = splitter;
    m_shortcutsBar = new ShortcutsBar(splitter);
    m_folderTree = new FolderTreeControl(splitter);
    auto* right = new QSplitter(Qt::Vertical, splitter);
    right->setAccessibleName(QStringLiteral("Documents and preview"));
    m_fileList = new FileListControl(right);
    createPreviewArea(right);
    // Proportions of the panes as the window first opens: the documents over
    // a larger preview, the tree wide enough for its button bar.
    right->setStretchFactor(0, 2);
    right->setStretchFactor(1, 3);
    right->setSizes({240, 360});
    splitter->setStretchFactor(2, 1);
    splitter->setSizes({140, 400, 700});
    setCentralWidget(client);
    // The panes stay hidden until the start-up has filled them.
    m_shortcutsBar->hide();
    m_folderTree->hide();
    m_fileList->hide();
}

void MainWindow::createPreviewArea(QSplitter* splitter)
{
    // The browser and the plate layout viewer share one place; the viewer,
    // when shown, lies over the browser.
    m_previewArea = new QWidget(splitter);
    m_previewArea->setObjectName(QStringLiteral("previewArea"));
    m_previewArea->setAccessibleName(QStringLiteral("Preview area"));
    auto* grid = new QGridLayout(m_previewArea);
    grid->setContentsMargins(0, 0, 0, 0);
    m_plateViewer = new PlateLayoutViewer(m_previewArea);
    grid->addWidget(m_plateViewer, 0, 0);
    m_plateViewer->hide();
}

void MainWindow::createBrowser()
{
    m_browser = new BrowserControl(m_previewArea, BrowserControl::EngineStart::Deferred);
    static_cast<QGridLayout*>(m_previewArea->layout())->addWidget(m_browser, 0, 0);
    m_plateViewer->raise();
    createPreviewAndLaunching();
}

// Starting the web engine takes most of a start-up; it waits for the
// window's first paint so that the user sees the Organiser at once. A window
// that is never painted (minimised at start) gets its engine a little later.
void MainWindow::startBrowserEngineSoon()
{
    if (m_engineStartQueued || !m_browser || m_browser->engineStarted())
        return;
    m_engineStartQueued = true;
    QTimer::singleShot(0, this, [this] { m_browser->StartEngine(); });
}

bool MainWindow::event(QEvent* event)
{
    const bool handled = QMainWindow::event(event);
    if (event->type() == QEvent::Paint && m_mainWindowLoaded)
        startBrowserEngineSoon();
    return handled;
}

void MainWindow::createPreviewAndLaunching()
{
    PreviewPane::Hooks previewHooks;
    previewHooks.documentType = [this] { return folderKindFromData(m_folderTree->currentNode().data()); };
    previewHooks.setNodePage = [this](const QString& address) {
        m_folderTree->currentNode().setPage(address);
    };
    m_preview = new PreviewPane(*m_browser, *m_plateViewer, *m_suite.paths, std::move(previewHooks), this);
    m_fileView->setPreviewHandlers(
        [this](const FileListItem& item) {
            const PreviewItem preview{item.path(), item.isFolder()};
            m_preview->ShowPreview(&preview);
        },
        [this](bool waitUntilLoaded) { m_preview->ClearPreview(waitUntilLoaded); });
    // The root's page is the welcome page; it shows whenever the root is selected.
    connect(m_folderTree, &FolderTreeControl::currentNodeChanged, this, [this](const FolderNode& node, int) {
        if (node.level() == 0 && !node.page().isEmpty())
            m_preview->ShowPage(node.page());
    });
    createLauncher();
    createWelcomePage();
    createFindingAids();
}

void MainWindow::createLauncher()
{
    LaunchContext launching;
    launching.canPerform = [this](const QString& operation) {
        return m_authorisation->CanPerformGeneralOperation(operation);
    };
    launching.audit = [this](const QString& entry) {
        return m_authorisation->AddAuditTrailEntryOperationGeneral(entry);
    };
    launching.securityEnabled = [this] { return m_security->SecurityEnabled(); };
    // Open and Run act on the file list's (first) selected document; the
    // enabling rules make sure there is exactly one.
    launching.selectedDocumentPath = [this] {
        const QList<FileListItem> selected = m_fileList->selectedItems();
        return selected.isEmpty() ? QString() : selected.first().path();
    };
    launching.startNewProtocolWizard = [this] { m_wizards->ShowPicker(this); };
    launching.documentUsed = [this](const QString& path) {
        if (m_recent)
            m_recent->add(path);
    };
    launching.owner = this;
    m_launcher = std::make_unique<DocumentLauncher>(*m_suite.paths, std::move(launching));
    createWizards();
    m_documentCommands->setLauncher(m_launcher.get());
    m_fileView->setCanCreateProtocol(m_launcher->CanCreateProtocol());
}

void MainWindow::createWizards()
{
    WizardHooks hooks;
    hooks.closeHelpIfOpen = [this] { return m_help->CloseHelpIfOpen(); };
    hooks.displayHelp = [this](int topic) { m_help->DisplayHelpContext(topic); };
    hooks.securityEnabled = [this] { return m_security->SecurityEnabled(); };
    hooks.securityManager = [this] { return m_suite.paths->SecurityManager(); };
    hooks.recreateResultsNode = [this] { m_organiserTree->RecreateResultsNode(); };
    hooks.handleChangedHLD = [this] { HandleChangedHLD(); };
    hooks.openNewProtocol = [this](const QString& path) { m_launcher->OpenNewProtocol(path); };
    hooks.logTrace = [this](const QString& line) {
        if (m_suite.log)
            m_suite.log->LogNote(line);
    };
    m_wizards = std::make_unique<NewProtocolWizards>(*m_suite.paths, *m_suite.settings, std::move(hooks));
}

void MainWindow::createWelcomePage()
{
    WelcomeActions welcome;
    welcome.resetTimeOut = [this] { resetLogOutTimeOut(); };
    welcome.readyState = [this] { return m_browser->ReadyState(); };
    welcome.selectProtocolsNode = [this] { m_folderTree->setCurrentNode(m_organiserTree->protocolsNode()); };
    welcome.selectResultsNode = [this] { m_folderTree->setCurrentNode(m_organiserTree->resultsNode()); };
    welcome.createProtocol = [this] { m_launcher->CreateProtocol(); };
    welcome.createLayoutTemplate = [this] { m_launcher->CreateLayout(); };
    welcome.exit = [this] { close(); };
    if (m_suite.settings->ShowRecentDocuments())
        welcome.openRecent = [this](int index) {
            // Not from inside the browser's navigation callback: showing the
            // document navigates the same browser to its preview.
            if (index < m_welcomeRecent.size())
                QTimer::singleShot(0, this, [this, path = m_welcomeRecent[index]] { ShowDocument(path); });
        };
    welcome.owner = this;
    m_welcome = std::make_unique<WelcomePage>(std::move(welcome));
    connect(
        m_browser, &BrowserControl::BeforeNavigate2, this,
        [this](const QUrl& url, bool& cancel) { m_welcome->WebBrowser1_BeforeNavigate2(url, cancel); },
        Qt::DirectConnection);
    connect(m_browser, &BrowserControl::CommandStateChange, this,
            [this] { m_welcome->WebBrowser1_CommandStateChange(); });
}

void MainWindow::resetLogOutTimeOut()
{
    if (m_security)
        m_security->ResetLogOutTimeOutTimer();
}

void MainWindow::connectCommands()
{
    m_commands = new CommandDispatcher(
        *m_toolBars, [this] { resetLogOutTimeOut(); }, this);
    connect(m_toolBars, &ToolBarsControl::toolClick, m_commands, &CommandDispatcher::ToolClick);
    m_commands->setCommand(QStringLiteral("ID_Exit"), [this] { close(); });
    ShellCommands::Register(*m_commands, this, Resources().LoadResString(Resources::ProductTitle));
    ShellCommands::ApplyMenuFont(*m_toolBars);
    ShellCommands::AddShortcutKeys(*m_toolBars);
    connectHelp();
    hideAuditTrailCommand();
}

// The help window is made on first use, with the settings of the start-up;
// context help follows the kind of folder selected (the root's topic is the
// getting-started one).
void MainWindow::connectHelp()
{
    m_help->setViewerFactory([this](const QString& file, QString& error) {
        return HelpWindow::factory(m_suite.store.get())(file, error);
    });
    m_commands->setCommand(QStringLiteral("ID_Options"), [this] { ShowOptions(); });
    m_help->setContextHooks([this] { resetLogOutTimeOut(); },
                            [this] { return m_folderTree->currentNode().data(); });
    m_commands->setCommand(QStringLiteral("ID_HelpContext"), [this] { m_help->ShowContextHelp(); });
    m_commands->setCommand(QStringLiteral("ID_ContentsIndex"), [this] { m_help->DisplayeHelpTOC(); });
    m_commands->setCommand(QStringLiteral("ID_GettingStarted"),
                           [this] { m_help->DisplayHelpContext(HelpTopics::GettingStarted); });
}

// The subsystems' objects, made once the suite components exist, each with
// the components it uses.
void MainWindow::createSubsystems()
{
    createSecuritySession();
    createOrganiser();
    connectOrganiser();
    m_commands->setCommand(QStringLiteral("ID_New"),
                           [this] { PerformDocumentCommand(DocumentCommand::New); });
    m_commands->setCommand(QStringLiteral("ID_Open"),
                           [this] { PerformDocumentCommand(DocumentCommand::Open); });
    m_commands->setCommand(QStringLiteral("ID_Run"),
                           [this] { PerformDocumentCommand(DocumentCommand::Run); });
    m_commands->setCommand(QStringLiteral("ID_ChangePassword"), [this] { m_security->ChangePassword(); });
    m_commands->setCommand(QStringLiteral("ID_LogOut"), [this] { m_security->LogOut(); });
    connect(m_statusBar, &StatusBarControl::panelClick, this, [this](int panel) {
        if (panel == SecuritySession::SessionPanel)
            m_security->ShowSessionInformation();
    });
}

// The folder tree, the file list's logic and the document commands.
void MainWindow::createOrganiser()
{
    auto reset = [this] { resetLogOutTimeOut(); };
    OrganiserTreeSources sources{*m_suite.resources,
                                 *m_suite.settings,
                                 *m_suite.paths,
                                 *m_suite.drivers,
                                 m_suite.instrumentDriversInUse,
                                 [this] { return WelcomePage::PageFile(*m_suite.settings, *m_suite.paths); }};
    m_organiserTree =
        std::make_unique<OrganiserTree>(*m_folderTree, *m_fileList, *m_shortcutsBar, std::move(sources));
    m_treeNavigation = std::make_unique<TreeNavigation>(*m_folderTree, *m_organiserTree);
    m_fileView = std::make_unique<FileView>(*m_folderTree, *m_fileList, *m_toolBars, *m_suite.settings,
                                            *m_suite.paths, m_suite.instrumentDriversInUse, reset);
    m_documentCommands = std::make_unique<DocumentCommands>(*m_folderTree, reset);
    m_documentCommands->setHelp([this](int topic) { m_help->DisplayHelpContext(topic); });
    connectShellNotifications();
}

// The change notifications act on the tree's branch operations, the file
// list and the preview; they watch the parent folder of the data folders.
void MainWindow::connectShellNotifications()
{
    NotificationTargets targets;
    OrganiserTree& tree = *m_organiserTree;
    targets.IsThisFolderANebraFolder = [&tree](const QString& p) { return tree.IsThisFolderANebraFolder(p); };
    targets.IsThisCurrentFolder = [&tree](const QString& p) { return tree.IsThisCurrentFolder(p); };
    targets.IsThisFileInCurrentFolder = [&tree](const QString& p) {
        return tree.IsThisFileInCurrentFolder(p);
    };
    targets.AddExplorerBranch = [&tree](const QString& p) { return tree.AddExplorerBranch(p); };
    targets.RemoveExplorerBranch = [&tree](const QString& p) { return tree.RemoveExplorerBranch(p); };
    targets.RenameExplorerBranch = [&tree](const QString& from, const QString& to) {
        return tree.RenameExplorerBranch(from, to);
    };
    targets.GoToOrganiserNode = [this] { m_treeNavigation->GoToOrganiserNode(); };
    targets.refreshFileList = [this] { m_fileList->refresh(); };
    targets.fileListItemCount = [this] { return m_fileList->itemCount(); };
    targets.previewCurrentItem = [this] {
        const FileListItem item = m_fileList->currentItem();
        if (!item.isValid() || !m_preview)
            return;
        const PreviewItem preview{item.path(), item.isFolder()};
        m_preview->ShowPreview(&preview);
    };
    m_notifications->setTargets(std::move(targets));
    // Watching starts before the data folders are made on a first start, so
    // their parent is made here if need be (making the data folders would
    // make it a moment later anyway).
    m_notifications->setWatchedRoots([this] {
        const QString parent = m_suite.paths->ParentDirectory();
        QDir().mkpath(parent);
        return QStringList{parent};
    });
    m_notifications->setWindowId([this] { return quintptr(winId()); });
}

// The events that tie the organiser's objects to the controls.
void MainWindow::connectOrganiser()
{
    connect(
        m_folderTree, &FolderTreeControl::currentNodeChanged, this,
        [this](const FolderNode& node, int state) { m_treeNavigation->OnCurrentNodeChanged(node, state); });
    m_fileView->connectEvents();
    // The tree's button keys are the document commands' numbers; other keys are not commands.
    connect(m_folderTree, &FolderTreeControl::buttonClicked, this,
            [this](int key) { PerformDocumentCommand(static_cast<DocumentCommand>(key)); });
    connect(m_fileView.get(), &FileView::folderAppeared, this,
            [this](const QString& path) { m_organiserTree->AddExplorerBranch(path); });
    connect(m_fileView.get(), &FileView::folderVanished, this,
            [this](const QString& path) { m_organiserTree->RemoveExplorerBranch(path); });
    // A shortcuts-bar item's key is the folder kind of the node it leads to.
    connect(m_shortcutsBar, &ShortcutsBar::itemClicked, this, [this](const QString& key) {
        m_folderTree->setCurrentNode(m_organiserTree->nodeForKind(folderKindFromData(key.toInt())));
    });
}

void MainWindow::PerformDocumentCommand(DocumentCommand command)
{
    m_documentCommands->PerformDocumentCommand(command);
}

void MainWindow::createSecuritySession()
{
    auto factory = [this](QString* error) {
        return NebraSecurityManager::create(*m_suite.store, m_options.securityManager, error);
    };
    SecuritySessionHooks hooks{[this] { UnloadAllExceptMain(); }, [this] { close(); }, m_options.endProcess};
    m_security = std::make_unique<SecuritySession>(*m_suite.settings, this, *m_toolBars, *m_statusBar,
                                                   factory, std::move(hooks));
    m_authorisation = std::make_unique<Authorisation>(*m_security, this);
}

void MainWindow::createDataFolders()
{
    m_dataFolders = std::make_unique<DataFolders>(
        *m_suite.paths, *m_suite.settings,
        [this]() -> const HLDCollection& { return m_suite.drivers->collection(); },
        m_options.fileSystemFactory);
}

MainWindow::LoadOutcome MainWindow::Load()
{
    StartUpSequence sequence(*this);
    const LoadOutcome outcome = sequence.run();
    if (outcome == LoadOutcome::Loaded) {
        m_mainWindowLoaded = true;
        constexpr int UnpaintedWindowMs = 500;
        QTimer::singleShot(UnpaintedWindowMs, this, [this] { startBrowserEngineSoon(); });
    }
    return outcome;
}

void MainWindow::recordDesignGeometry()
{
    const QRect r = geometry();
    const int dpi = logicalDpiX() > 0 ? logicalDpiX() : 96;
    auto twips = [dpi](int px) { return checkedInt16(static_cast<long long>(px) * TwipsPerInch / dpi); };
    m_designTwips = {twips(r.x()), twips(r.y()), twips(r.width()), twips(r.height())};
    // Out of sight until the load has finished.
    const int away = -10000 * dpi / TwipsPerInch;
    setGeometry(away, away, 0, 0);
}

void MainWindow::restoreDesignGeometryAndMaximise()
{
    const int dpi = logicalDpiX() > 0 ? logicalDpiX() : 96;
    auto px = [dpi](short twips) { return int(twips) * dpi / TwipsPerInch; };
    resize(px(m_designTwips[2]), px(m_designTwips[3]));
    move(px(m_designTwips[0]), px(m_designTwips[1]));
    m_holdMaximised = true;
    showMaximized();
}

void MainWindow::changeEvent(QEvent* event)
{
    // Under an X11 window manager the embedded browser's first appearance
    // can cost the window its maximised state before anyone has touched it;
    // it comes up maximised all the same. Later changes are the user's.
    if (event->type() == QEvent::WindowStateChange && m_holdMaximised &&
        !(windowState() & (Qt::WindowMaximized | Qt::WindowMinimized | Qt::WindowFullScreen))) {
        m_holdMaximised = false;
        setWindowState(windowState() | Qt::WindowMaximized);
    }
    QMainWindow::changeEvent(event);
}

void MainWindow::showFromOtherInstance()
{
    if (isMinimized())
        setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void MainWindow::UnloadAllExceptMain()
{
    // The session has ended: its viewer goes first, and its command with it.
    closeAuditTrail();
    hideAuditTrailCommand();
    if (m_optionsCommand)
        m_optionsCommand->Unload();
    m_help->CloseHelpIfOpen();
    QWidget* active = QApplication::activeWindow();
    if (active && active != this)
        active->close();
    // Hidden windows too: a dialog kept between showings must not survive the session.
    // Menus and pop-ups are parts of other windows, not windows of their own.
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window != this && !(window->windowType() == Qt::Popup || window->windowType() == Qt::ToolTip))
            window->close();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    Unload();
    event->accept();
}

void MainWindow::Unload()
{
    if (m_unloaded)
        return;
    m_unloaded = true;
    // A window whose load did not complete keeps the stored mode unchanged.
    if (m_mainWindowLoaded)
        m_suite.settings->SetExplorerModeFlag(m_folderTree->displayMode() == 2);
    m_help->CloseHelpIfOpen();
    m_notifications->TerminateSHCNENotification();
    if (m_optionsCommand)
        m_optionsCommand->Unload();
    closeAuditTrail();
    // A window whose start-up ended early may have no session.
    if (m_security)
        m_security->CloseSession();
}

} // namespace nebra
