#pragma once

#include "FileSystemObject.h"
#include "SecurityManagerOptions.h"
#include "SecuritySession.h"
#include "SuiteComponents.h"

#include <QCoreApplication>
#include <QMainWindow>
#include <QPointer>

#include <array>
#include <memory>

class QSplitter;

namespace nebra {

class BrowserControl;
class FileListControl;
class FolderTreeControl;
class Organiser;
class PlateLayoutViewer;
class ShortcutsBar;
class SingleInstance;
class SplashScreen;
class StatusBarControl;
class ToolBarsControl;
struct MainWindowControls;

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

// The Organiser's main window: it makes its controls, and Load() runs the
// start-up in its fixed order, making the suite components and then the
// subsystems (Organiser) that act on the controls. Closing the window runs
// the shutdown. The controls and subsystems are reached through the window's
// object tree (by type and accessible name), not through the window.
class MainWindow : public QMainWindow, public SessionEnding
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

    // The start-up sequence. With logging on it writes one block line after
    // opening the log and 28 trace lines, one or more after each major step;
    // the steps it calls write their own.
    LoadOutcome Load();
    bool MainWindowLoaded() const { return m_mainWindowLoaded; }

    // Closes every other window of the program (used by a forced log-out).
    void UnloadAllExceptMain() override;

    // The texts of the box shown when the file-system component is missing.
    static QString fileSystemMissingText();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    // The session ends the program through these.
    void unloadMainWindow() override;
    void endProcess() override;

    void createControls();
    void createPreviewArea(QSplitter* splitter);
    MainWindowControls controls() const;
    bool activatePreviousInstance();
    void createSettingsAndPaths();
    void openDiagnosticLog();
    bool createFileSystemObject();
    bool runLoadingSteps();
    void startBrowserEngineSoon();
    void applyResizeRule();
    void recordDesignGeometry();
    void restoreDesignGeometryAndMaximise();
    void showFromOtherInstance();
    void Unload();

    Options m_options;
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
    SuiteComponents m_suite;
    // Made by the start-up once the suite components exist; goes before the controls.
    std::unique_ptr<Organiser> m_organiser;
    QPointer<SplashScreen> m_splash;
    std::array<short, 4> m_designTwips{};
    bool m_engineStartQueued = false;
    bool m_mainWindowLoaded = false;
    bool m_unloaded = false;
    bool m_holdMaximised = false;
};

} // namespace nebra
