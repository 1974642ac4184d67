#include "Organiser.h"

#include "BrowserControl.h"
#include "CommandDispatcher.h"
#include "DataFolderProbe.h"
#include "DocumentFolders.h"
#include "DocumentRecording.h"
#include "DocumentRecords.h"
#include "DocumentSigning.h"
#include "FileListControl.h"
#include "FileSystemObject.h"
#include "FileView.h"
#include "FolderReaders.h"
#include "FolderTreeControl.h"
#include "HelpTopics.h"
#include "HelpWindow.h"
#include "InstalledDrivers.h"
#include "MainWindow.h"
#include "MainWindowControls.h"
#include "Messages.h"
#include "NebraSecurityManager.h"
#include "PreviewPane.h"
#include "Resources.h"
#include "SecuritySession.h"
#include "ShellCommands.h"
#include "ShellNotifications.h"
#include "ShortcutsBar.h"
#include "StatusBarControl.h"
#include "SuiteComponents.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "ToolBarsControl.h"
#include "UserActivity.h"

#include <QDir>
#include <QStatusBar>
#include <QTimer>

namespace nebra {

namespace {

SecuritySession::ManagerFactory managerFactory(const SettingsStore& store, const MainWindowOptions& options)
{
    return [&store, &options](QString* error) {
        return NebraSecurityManager::create(store, options.securityManager, error);
    };
}

DataFolders::DriverSource driversOf(InstalledDrivers& drivers)
{
    return [&drivers]() -> const HLDCollection& { return drivers.collection(); };
}

PreviewPane::Hooks previewHooks(FolderTreeControl& tree)
{
    return {[&tree] { return documentTypeFromData(tree.currentNode().data()); },
            [&tree](const QString& address) { tree.currentNode().setPage(address); }};
}

} // namespace

Organiser::Organiser(MainWindow& window, const MainWindowControls& controls, SuiteComponents& suite,
                     const MainWindowOptions& options)
    : QObject(&window), m_window(window), m_controls(controls), m_suite(suite), m_panes(controls, suite),
      m_switches(controls.tools, controls.tree), m_activity(new UserActivity(this)),
      m_commands(new CommandDispatcher(controls.tools, *m_activity, this)),
      m_session(new SecuritySession(*suite.settings, &window, m_switches, controls.statusBar,
                                    managerFactory(*suite.store, options), window, this)),
      m_authorisation(*m_session, &window), m_help(HelpWindow::factory(suite.settings.get())),
      m_notifications(new ShellNotifications(this)), m_recording(new DocumentRecording(this)),
      m_probe(new DataFolderProbe(this)),
      m_dataFolders(*suite.paths, *suite.settings, driversOf(*suite.drivers), options.fileSystemFactory),
      m_tree(controls.tree, controls.list, controls.shortcuts, treeSources()),
      m_navigation(controls.tree, m_tree),
      m_fileView(new FileView(controls.tree, controls.list, m_switches, *suite.settings, *suite.paths,
                              suite.instrumentDriversInUse, &SortByColumnTimer::secondsSinceMidnight, this)),
      m_findingAids(new FindingAids({*suite.settings, controls.tools, controls.tree, controls.list,
                                     controls.browser, *m_fileView, window},
                                    this)),
      m_launcher(*suite.paths, launchContext()), m_wizards(*suite.paths, *suite.settings, wizardHooks()),
      m_documentCommands(controls.tree, m_launcher),
      m_preview(new PreviewPane(controls.browser, controls.plateViewer, *suite.paths,
                                previewHooks(controls.tree), this)),
      m_welcome(welcomeActions()),
      m_auditTrail(new AuditTrailCommand(
          {*m_commands, m_switches, controls.tools, *m_session, m_authorisation, window}, this)),
      m_documentRecords(
          new DocumentRecords({*m_commands, m_switches, controls.list, *window.statusBar(), *m_session,
                               m_authorisation, *m_recording, controls.previewArea, window},
                              this)),
      m_signing(new DocumentSigning(
          {*m_commands, m_switches, controls.list, *m_session, m_authorisation, *m_recording, window}, this)),
      m_optionsCommand(
          {*suite.settings, *suite.paths, m_dataFolders, *suite.drivers, m_authorisation, m_help,
           controls.tree, m_tree, *m_fileView, *m_preview, m_panes, window,
           [&notifications = *m_notifications, &records = *m_documentRecords, &paths = *suite.paths] {
               notifications.rewatch();
               records.begin(DocumentFolders::of(paths));
           }})
{
    m_help.setHelpFilePath(HelpSystem::defaultHelpFile());
    m_help.setSelectedDocumentType([&tree = controls.tree] { return tree.currentNode().data(); });
    m_fileView->setCanCreateProtocol(
        m_launcher.CanLaunch(DocumentTypes::of(DocumentType::Protocols).newCommand.launch));
    setCommands();
    connectControls();
    connectShellNotifications();
    connectDocumentRecording();
    connect(m_probe, &DataFolderProbe::answeredLate, this, &Organiser::dataFoldersAnswered);
}

Organiser::~Organiser() = default;

OrganiserTreeSources Organiser::treeSources()
{
    return {*m_suite.resources,
            *m_suite.settings,
            *m_suite.paths,
            *m_suite.drivers,
            m_suite.instrumentDriversInUse,
            [&settings = *m_suite.settings, &paths = *m_suite.paths] {
                return WelcomePage::PageFile(settings, paths);
            }};
}

// Open and Run act on the file list's (first) selected document; the
// enabling rules make sure there is exactly one.
LaunchContext Organiser::launchContext()
{
    LaunchContext launching;
    const Authorisation& authorisation = m_authorisation;
    launching.canPerform = [&authorisation](const QString& operation) {
        return authorisation.CanPerformGeneralOperation(operation);
    };
    launching.audit = [&authorisation](const QString& entry) {
        return authorisation.AddAuditTrailEntryOperationGeneral(entry);
    };
    launching.securityEnabled = [&session = *m_session] { return session.SecurityEnabled(); };
    launching.selectedDocumentPath = [&list = m_controls.list] {
        const QList<FileListItem> selected = list.selectedItems();
        return selected.isEmpty() ? QString() : selected.first().path();
    };
    launching.startNewProtocolWizard = [&wizards = m_wizards, &window = m_window] {
        wizards.ShowPicker(&window);
    };
    launching.documentUsed = [&aids = *m_findingAids](const QString& path) { aids.documentUsed(path); };
    launching.programStarted = [&recording = *m_recording](qint64 processId, const QString& program,
                                                           const QString& target) {
        recording.programStarted(processId, program, target);
    };
    launching.currentFolder = [&list = m_controls.list] { return list.folder(); };
    launching.owner = &m_window;
    return launching;
}

WizardHooks Organiser::wizardHooks()
{
    WizardHooks hooks;
    hooks.closeHelpIfOpen = [&help = m_help] { return help.CloseHelpIfOpen(); };
    hooks.displayHelp = [&help = m_help](int topic) { help.DisplayHelpContext(topic); };
    hooks.securityEnabled = [&session = *m_session] { return session.SecurityEnabled(); };
    hooks.securityManager = [&paths = *m_suite.paths] { return paths.SecurityManager(); };
    hooks.recreateResultsNode = [&tree = m_tree] { tree.RecreateResultsNode(); };
    hooks.handleChangedHLD = [&tree = m_tree] { tree.HandleChangedHLD(); };
    hooks.protocolMade = [&aids = *m_findingAids](const QStringList& files) {
        for (const QString& file : files)
            aids.documentUsed(file);
    };
    hooks.openNewProtocol = [&launcher = m_launcher](const QStringList& files) {
        launcher.OpenNewProtocol(files);
    };
    hooks.wizardRunning = [&recording = *m_recording, &paths = *m_suite.paths](bool running) {
        recording.organiserWriting(paths.ProtocolsFolder(), running);
    };
    return hooks;
}

WelcomeActions Organiser::welcomeActions()
{
    FolderTreeControl& control = m_controls.tree;
    OrganiserTree& tree = m_tree;
    WelcomeActions welcome;
    welcome.readyState = [&browser = m_controls.browser] { return browser.ReadyState(); };
    welcome.selectProtocolsNode = [&control, &tree] {
        control.setCurrentNode(tree.node(DocumentType::Protocols));
    };
    welcome.selectResultsNode = [&control, &tree] {
        control.setCurrentNode(tree.node(DocumentType::Results));
    };
    welcome.createProtocol = [&launcher = m_launcher] { launcher.CreateProtocol(); };
    welcome.createLayoutTemplate = [&launcher = m_launcher] { launcher.CreateLayout(); };
    welcome.exit = [&window = m_window] { window.close(); };
    if (m_suite.settings->ShowRecentDocuments())
        welcome.openRecent = [&aids = *m_findingAids](int index) { aids.openRecent(index); };
    welcome.owner = &m_window;
    return welcome;
}

void Organiser::setCommands()
{
    CommandDispatcher& commands = *m_commands;
    connect(&m_controls.tools, &ToolBarsControl::toolClick, &commands, &CommandDispatcher::ToolClick);
    connect(&m_controls.tree, &FolderTreeControl::buttonClicked, &commands,
            &CommandDispatcher::TreeButtonClick);
    for (const CommandId id : {CommandId::New, CommandId::Open, CommandId::Run})
        commands.setCommand(id,
                            [&documents = m_documentCommands, id] { documents.PerformDocumentCommand(id); });
    commands.setCommand(CommandId::Options, [&options = m_optionsCommand] { options.ShowOptions(); });
    commands.setCommand(CommandId::ChangePassword, [&session = *m_session] { session.ChangePassword(); });
    commands.setCommand(CommandId::LogOut, [&session = *m_session] { session.LogOut(); });
    commands.setCommand(CommandId::Exit, [&window = m_window] { window.close(); });
    ShellCommands::Register(commands, &m_window, m_suite.resources->LoadResString(Resources::ProductTitle));
    commands.setCommand(CommandId::HelpContext, [&help = m_help] { help.ShowContextHelp(); });
    commands.setCommand(CommandId::ContentsIndex, [&help = m_help] { help.DisplayeHelpTOC(); });
    commands.setCommand(CommandId::GettingStarted,
                        [&help = m_help] { help.DisplayHelpContext(HelpTopics::GettingStarted); });
    ShellCommands::ApplyMenuFont(m_controls.tools);
    ShellCommands::AddShortcutKeys(m_controls.tools);
}

// The events that tie the subsystems to the controls and to one another.
void Organiser::connectControls()
{
    FolderTreeControl& tree = m_controls.tree;
    connect(m_activity, &UserActivity::activity, m_session, &SecuritySession::ResetLogOutTimeOutTimer);
    connect(&m_controls.statusBar, &StatusBarControl::panelClick, m_session, &SecuritySession::OnPanelClick);
    connect(&tree, &FolderTreeControl::currentNodeChanged, this,
            [&navigation = m_navigation](const FolderNode& node, int state) {
                navigation.OnCurrentNodeChanged(node, state);
            });
    // The root's page is the welcome page; it shows whenever the root is selected.
    connect(&tree, &FolderTreeControl::currentNodeChanged, m_preview, &PreviewPane::ShowRootPage);
    connect(&tree, &FolderTreeControl::currentNodeChanged, this,
            [&welcome = m_welcome](const FolderNode& node) {
                if (node.level() != 0)
                    welcome.forgetPendingCommands();
            });
    m_fileView->connectEvents();
    m_fileView->setPreviewHandlers(
        [&preview = *m_preview](const FileListItem& item) {
            const PreviewItem shown{item.path(), item.isFolder()};
            preview.ShowPreview(&shown);
        },
        [&preview = *m_preview](bool waitUntilLoaded) { preview.ClearPreview(waitUntilLoaded); });
    // A folder that does not answer is named in the status bar until it does.
    FileListControl& list = m_controls.list;
    connect(&list, &FileListControl::waiting, this, [&window = m_window](const QString& folder) {
        window.statusBar()->showMessage(FileListControl::waitingText(folder));
    });
    connect(&list, &FileListControl::listed, this, [&window = m_window, &list] {
        if (window.statusBar()->currentMessage() == FileListControl::waitingText(list.folder()))
            window.statusBar()->clearMessage();
    });
    connect(m_fileView, &FileView::folderAppeared, this,
            [&organiser = m_tree](const QString& path) { organiser.AddExplorerBranch(path); });
    connect(m_fileView, &FileView::folderVanished, this,
            [&organiser = m_tree](const QString& path) { organiser.RemoveExplorerBranch(path); });
    // A shortcuts-bar item's key is the document type of the node it leads to.
    connect(&m_controls.shortcuts, &ShortcutsBar::itemClicked, this,
            [&tree, &organiser = m_tree](const QString& key) {
                tree.setCurrentNode(organiser.node(documentTypeFromData(key.toInt())));
            });
    BrowserControl& browser = m_controls.browser;
    connect(
        &browser, &BrowserControl::BeforeNavigate2, this,
        [&welcome = m_welcome](const QUrl& url, bool& cancel) {
            welcome.WebBrowser1_BeforeNavigate2(url, cancel);
        },
        Qt::DirectConnection);
    connect(&browser, &BrowserControl::CommandStateChange, this,
            [&welcome = m_welcome] { welcome.WebBrowser1_CommandStateChange(); });
}

// The change notifications act on the tree's branch operations, the file
// list and the preview; they watch the parent folder of the data folders.
void Organiser::connectShellNotifications()
{
    NotificationTargets targets;
    OrganiserTree& tree = m_tree;
    targets.IsThisFolderANebraFolder = [&tree](const QString& p) { return tree.IsThisFolderANebraFolder(p); };
    targets.IsThisCurrentFolder = [&tree](const QString& p) { return tree.IsThisCurrentFolder(p); };
    targets.IsThisFileInCurrentFolder = [&tree](const QString& p) {
        return tree.IsThisFileInCurrentFolder(p);
    };
    targets.AddExplorerBranch = [&tree](const QString& p) { return tree.AddExplorerBranch(p); };
    targets.RemoveExplorerBranch = [&tree](const QString& p) { return tree.RemoveExplorerBranch(p); };
    // The list follows its own folder, which is gone from its path once renamed.
    targets.RenameExplorerBranch = [&tree, &list = m_controls.list](const QString& from, const QString& to) {
        const bool renamed = tree.RenameExplorerBranch(from, to);
        if (list.folder() == from)
            list.refresh();
        return renamed;
    };
    targets.GoToOrganiserNode = [&navigation = m_navigation] { navigation.GoToOrganiserNode(); };
    FileListControl& list = m_controls.list;
    targets.refreshFileList = [&list] { list.refresh(); };
    targets.fileListItemCount = [&list] { return list.itemCount(); };
    targets.previewCurrentItem = [&list, &preview = *m_preview] {
        const FileListItem item = list.currentItem();
        if (!item.isValid())
            return;
        const PreviewItem shown{item.path(), item.isFolder()};
        preview.ShowPreview(&shown);
    };
    m_notifications->setTargets(std::move(targets));
    // Watching starts before the data folders are made on a first start:
    // DataFolderProbe has made their parent by then.
    m_notifications->setWatchedRoots(
        [&paths = *m_suite.paths] { return QStringList{paths.ParentDirectory()}; });
    m_notifications->setWindowId([&window = m_window] { return quintptr(window.winId()); });
    const SuiteSettings& settings = *m_suite.settings;
    m_notifications->setWatchMode(settings.WatchMode(), settings.NetworkPollSeconds(),
                                  settings.NetworkTreePollSeconds());
    connect(&list, &FileListControl::listed, m_notifications, [&list, &notifications = *m_notifications] {
        notifications.setListedFolder(list.folder(), list.filter());
    });
}

// The documents' records follow every change the notifications and the
// file-server polls see; a poll that found its folder changed compares the
// documents with their records.
void Organiser::connectDocumentRecording()
{
    DocumentRecording& recording = *m_recording;
    connect(&m_notifications->source(), &FolderChangeSource::changed, &recording,
            &DocumentRecording::noticeChange);
    FolderPoller& poller = m_notifications->poller();
    connect(&poller, &FolderPoller::changed, &recording, &DocumentRecording::noticeChange);
    connect(&poller, &FolderPoller::listedFolderChanged, &recording, &DocumentRecording::polled);
    connect(&poller, &FolderPoller::polled, &recording, [&poller, &recording](const QString& folder) {
        if (poller.polledRoots().contains(folder))
            recording.polled();
    });
}

bool Organiser::startSecurity()
{
    SecuritySession& session = *m_session;
    if (session.StartSecuritySession() == SecuritySession::StartOutcome::EndProcess)
        return false;
    if (!session.SecurityEnabled())
        return true;
    m_suite.paths->SetSecurityManager(session.NebraSecurityManagerObj());
    m_auditTrail->offer();
    m_documentRecords->begin(DocumentFolders::of(*m_suite.paths));
    m_signing->begin();
    checkSecuredFolder();
    return true;
}

// The secured folder may be on a file server: it is checked and made on a
// reader thread, and the log-in goes on whether or not the server answers.
void Organiser::checkSecuredFolder()
{
    const QString folder = m_suite.paths->SecuredFolder();
    FolderReaders& readers = m_probe->readers();
    // A plain file of that name is no folder: the folder is still to be made.
    readers.read(
        folder, FolderReaders::Lane::User, this, [folder] { return FileSystemObject().FolderExists(folder); },
        [&readers, &settings = *m_suite.settings, folder, this](bool exists) {
            if (exists)
                return;
            // The making is queued, not waited for, between the two calls:
            // the settings' batch is not held open while a server is slow.
            settings.BeginFolderUpdate();
            readers.read(
                folder, FolderReaders::Lane::User, this, [folder] { return QDir().mkpath(folder); },
                [](bool) {});
            settings.EndFolderUpdate();
        });
}

// The first look at the data folders. A server that does not answer in
// time leaves them to the background: the window opens with the branches
// shown as unavailable, and everything is done once the server answers.
void Organiser::ActivateSHCNENotification()
{
    const QString parent = m_suite.paths->ParentDirectory();
    m_foldersAnswer = m_probe->waitFor(parent);
    m_tree.setFoldersAnswer(m_foldersAnswer);
    if (!m_foldersAnswer) {
        showFoldersNotAnswering();
        return;
    }
    m_notifications->ActivateSHCNENotification();
}

void Organiser::showFoldersNotAnswering()
{
    QTimer::singleShot(0, this, [&window = m_window, parent = m_suite.paths->ParentDirectory()] {
        Messages::show({DataFolderProbe::notAnsweringText(parent),
                        {},
                        MessageIcon::Information,
                        MessageButton::Ok,
                        MessageButton::Ok,
                        &window});
    });
}

// The parent answered; its folders are made on a reader thread, waited for
// as long as the parent was.
void Organiser::CreateAnyMissingNebraDirectories()
{
    if (!m_foldersAnswer)
        return;
    m_makingFolders = true;
    m_foldersAnswer = m_probe->run(m_suite.paths->ParentDirectory(), m_dataFolders.prepareCreation());
    m_dataFolders.finishCreation();
    m_makingFolders = !m_foldersAnswer;
    if (m_foldersAnswer)
        return;
    m_tree.setFoldersAnswer(false);
    showFoldersNotAnswering();
}

// Late answers come in two steps: the parent's, then the data folders'
// making (started here, off this thread); the tree is built after both.
void Organiser::dataFoldersAnswered()
{
    if (!m_makingFolders) {
        m_makingFolders = true;
        const bool made = m_probe->run(m_suite.paths->ParentDirectory(), m_dataFolders.prepareCreation(), 0);
        m_dataFolders.finishCreation();
        if (!made)
            return; // answeredLate() follows
    }
    m_makingFolders = false;
    m_foldersAnswer = true;
    m_tree.setFoldersAnswer(true);
    m_notifications->ActivateSHCNENotification();
    m_tree.InitialiseOrganiserTree();
    m_controls.tree.setCurrentNode(m_tree.rootNode());
}

void Organiser::InitialiseOrganiserTree()
{
    m_tree.InitialiseOrganiserTree();
    // After the list's own columns: the record's comes last.
    m_documentRecords->offerViews();
    m_signing->offerViews();
}

void Organiser::unloadSessionWindows()
{
    // The session has ended: its viewer goes first, and its command with it.
    m_documentRecords->end();
    m_signing->end();
    m_auditTrail->close();
    m_auditTrail->hide();
    m_optionsCommand.Unload();
    m_help.CloseHelpIfOpen();
}

void Organiser::unload(bool loaded)
{
    // A window whose load did not complete keeps the stored mode unchanged.
    if (loaded)
        m_suite.settings->SetExplorerModeFlag(m_controls.tree.displayMode() ==
                                              FolderTreeControl::DisplayMode::Explorer);
    m_help.CloseHelpIfOpen();
    m_notifications->TerminateSHCNENotification();
    m_optionsCommand.Unload();
    m_auditTrail->close();
    m_documentRecords->end();
    m_signing->end();
    m_session->CloseSession();
}

} // namespace nebra
