#pragma once

#include "DocumentCommand.h"
#include "FileSystemObject.h"
#include "SecurityManagerOptions.h"
#include "SuiteComponents.h"

#include <QCoreApplication>
#include <QMainWindow>
#include <QPointer>

#include <array>
#include <memory>

class QSplitter;

namespace nebra {

class AuditTrailWindow;
class Authorisation;
class BrowserControl;
class CommandDispatcher;
class DataFolders;
class DocumentLauncher;
class DocumentCommands;
class FileListControl;
class FileView;
class FolderTreeControl;
class HelpSystem;
class NewProtocolWizards;
class PlateLayoutViewer;
class PreviewPane;
class SecuritySession;
class ShellNotifications;
class ShortcutsBar;
class SingleInstance;
class SplashScreen;
class StatusBarControl;
class ToolBarsControl;
class WelcomePage;
class OptionsCommand;
class RecentDocuments;
class OrganiserTree;
class TreeNavigation;

struct MainWindowOptions
{
    // Creates the file-system component; tests make it fail.
    FileSystemObjectFactory fileSystemFactory = defaultFileSystemObjectFactory();
    // Name of the per-user single-instance socket.
    QString instanceName = QStringLiteral("NMain5");
    // Ends the process after a forced log-out, once the windows are closed;
    // tests record the call instead.
    std::function<void()> endProcess = [] { QCoreApplication::exit(0); };
    // The security manager's clock for its inactivity time-out; tests move it on.
    SecurityManagerOptions securityManager;
};

// The Organiser's main window. Load() runs the start-up sequence; closing
// the window runs the shutdown sequence.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    enum class LoadOutcome
    {
        Loaded,            // running, window maximised
        DuplicateInstance, // another instance was asked to show itself; end at once without unloading
        Ended,             // a fatal start-up failure was reported; end at once without unloading
    };

    using Options = MainWindowOptions;

    // The window's size and position as designed, in pixels, before it is maximised.
    static constexpr QRect DesignGeometry{0, 0, 800, 600};

    explicit MainWindow(Options options = Options());
    ~MainWindow() override;

    LoadOutcome Load();
    bool MainWindowLoaded() const { return m_mainWindowLoaded; }

    // Closes every other window of the program (used by a forced log-out).
    void UnloadAllExceptMain();

    // The suite components, once the start-up has made them.
    const SuiteComponents& suite() const { return m_suite; }
    const Options& options() const { return m_options; }
    ToolBarsControl& toolBars() const { return *m_toolBars; }
    StatusBarControl& statusBarControl() const { return *m_statusBar; }
    ShortcutsBar& shortcutsBar() const { return *m_shortcutsBar; }
    FolderTreeControl& folderTree() const { return *m_folderTree; }
    FileListControl& fileList() const { return *m_fileList; }
    PlateLayoutViewer& plateLayoutViewer() const { return *m_plateViewer; }
    CommandDispatcher& commands() const { return *m_commands; }
    // Made by the start-up once the suite components exist.
    OrganiserTree& organiserTree() const { return *m_organiserTree; }
    ShellNotifications& shellNotifications() const { return *m_notifications; }
    SecuritySession& securitySession() const { return *m_security; }
    // The browser, the preview pane and the launcher of the suite's programs
    // exist once the start-up has created the browser. The browser's web
    // engine starts right after the window's first paint once loaded (or when
    // a page is first waited for), so the window shows before the engine's
    // processes start.
    BrowserControl* browser() const { return m_browser; }
    PreviewPane* previewPane() const { return m_preview; }
    DocumentLauncher* launcher() const { return m_launcher.get(); }
    HelpSystem& help() const { return *m_help; }
    // Made by the first Options command.
    OptionsCommand* optionsCommand() const { return m_optionsCommand.get(); }
    // The container of the panes, placed by the resize rule in the client area.
    QWidget& panes() const { return *m_panes; }

    // The Options command.
    void ShowOptions();
    // Re-points the instrument node at the driver CurrentHLD selects now.
    void HandleChangedHLD();
    // The shortcuts bar and the preview pane shown or hidden; the other panes take the room.
    void setShortcutsBarShown(bool shown);
    void setPreviewPaneShown(bool shown);
    // The new-protocol wizards, once the launcher exists.
    NewProtocolWizards* wizards() const { return m_wizards.get(); }

    // Selects the document's folder in the tree and the document in the list
    // (File > Recent, the welcome page's recent links).
    void ShowDocument(const QString& path);
    // Made at start-up unless the recent documents are switched off.
    RecentDocuments* recentDocuments() const { return m_recent.get(); }

    // The document commands of the tree's buttons and the tool bar.
    void PerformDocumentCommand(DocumentCommand command);

    // Tools > Audit Trail...: opens the audit trail viewer for a user with
    // the right "Security"/"ViewAuditTrail", recording the opening. The
    // command is shown and enabled only while a security session is active.
    void ShowAuditTrail();
    // The open viewer, if any.
    AuditTrailWindow* auditTrailWindow() const;

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    friend class StartUpSequence;

    void createControls();
    void createPreviewArea(QSplitter* splitter);
    void connectCommands();
    void createSubsystems();
    void connectHelp();
    void createOrganiser();
    void connectShellNotifications();
    void connectOrganiser();
    void resetLogOutTimeOut();
    void createSecuritySession();
    void createDataFolders();
    void createBrowser();
    void startBrowserEngineSoon();
    void createPreviewAndLaunching();
    void createLauncher();
    void createWizards();
    void createWelcomePage();
    void createOptionsCommand();
    void createFindingAids();
    void hideAuditTrailCommand();
    void offerAuditTrailCommand();
    void closeAuditTrail();
    void createRecentDocuments();
    void showRecentOnWelcomePage();
    void showSelectionInFileManager();
    void refreshPreview();
    void selectFolder(const QString& folder);
    void applyResizeRule();
    void recordDesignGeometry();
    void restoreDesignGeometryAndMaximise();
    void showFromOtherInstance();
    void showSplash();
    void Unload();

    Options m_options;
    SuiteComponents m_suite;
    std::unique_ptr<SingleInstance> m_singleInstance;
    ToolBarsControl* m_toolBars = nullptr;
    StatusBarControl* m_statusBar = nullptr;
    ShortcutsBar* m_shortcutsBar = nullptr;
    FolderTreeControl* m_folderTree = nullptr;
    FileListControl* m_fileList = nullptr;
    QWidget* m_previewArea = nullptr;
    QWidget* m_panes = nullptr;
    PlateLayoutViewer* m_plateViewer = nullptr;
    BrowserControl* m_browser = nullptr;
    bool m_engineStartQueued = false;
    PreviewPane* m_preview = nullptr;
    std::unique_ptr<DocumentLauncher> m_launcher;
    std::unique_ptr<NewProtocolWizards> m_wizards;
    std::unique_ptr<WelcomePage> m_welcome;
    CommandDispatcher* m_commands = nullptr;
    std::unique_ptr<SecuritySession> m_security;
    std::unique_ptr<Authorisation> m_authorisation;
    std::unique_ptr<ShellNotifications> m_notifications;
    std::unique_ptr<HelpSystem> m_help;
    std::unique_ptr<DataFolders> m_dataFolders;
    std::unique_ptr<OrganiserTree> m_organiserTree;
    std::unique_ptr<TreeNavigation> m_treeNavigation;
    std::unique_ptr<FileView> m_fileView;
    std::unique_ptr<DocumentCommands> m_documentCommands;
    std::unique_ptr<OptionsCommand> m_optionsCommand;
    std::unique_ptr<RecentDocuments> m_recent;
    QStringList m_welcomeRecent; // the recent documents the welcome page lists, in its order
    QPointer<SplashScreen> m_splash;
    QPointer<AuditTrailWindow> m_auditTrail;
    std::array<short, 4> m_designTwips{};
    bool m_mainWindowLoaded = false;
    bool m_unloaded = false;
    bool m_holdMaximised = false;
};

} // namespace nebra
