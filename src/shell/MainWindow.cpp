#include "MainWindow.h"

#include "BrowserControl.h"
#include "DiagnosticLog.h"
#include "FileListControl.h"
#include "FileListFilterBox.h"
#include "FolderTreeControl.h"
#include "InstalledDrivers.h"
#include "MainWindowControls.h"
#include "Messages.h"
#include "Organiser.h"
#include "PanesGeometry.h"
#include "PlateLayoutViewer.h"
#include "Resources.h"
#include "RuntimeErrors.h"
#include "SettingsStore.h"
#include "ShortcutsBar.h"
#include "SingleInstance.h"
#include "SplashScreen.h"
#include "StatusBarControl.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "ToolBarsControl.h"
#include "ToolDefinitions.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGridLayout>
#include <QSplitter>
#include <QStatusBar>
#include <QTimer>

#include <algorithm>

namespace nebra {

namespace {
constexpr int TwipsPerInch = 1440;

// One step of the loading after the splash: its action (false ends the
// start-up) and the number of trace lines written after it.
struct Step
{
    int traceLines;
    std::function<bool()> action;
};

template <typename Action> std::function<bool()> done(Action action)
{
    return [action] {
        action();
        return true;
    };
}
} // namespace

MainWindow::MainWindow(Options options)
    : m_options(std::move(options)),
      m_singleInstance(std::make_unique<SingleInstance>(m_options.instanceName))
{
    setObjectName(QStringLiteral("frmNMain"));
    setAccessibleName(QStringLiteral("Organiser"));
    setGeometry(DesignGeometry);
    createControls();
    connect(m_singleInstance.get(), &SingleInstance::activationRequested, this,
            &MainWindow::showFromOtherInstance);
}

MainWindow::~MainWindow()
{
    // The subsystems go before the controls they act on.
    m_organiser.reset();
    if (m_splash)
        m_splash->close();
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

// The browser and the plate layout viewer share one place, row 1 of the
// area's grid (row 0 is for a line above the preview); the viewer, when
// shown, lies over the browser. The browser's web engine starts right after
// the window's first paint once loaded (or when a page is first waited for),
// so the window shows before the engine's processes start.
void MainWindow::createPreviewArea(QSplitter* splitter)
{
    m_previewArea = new QWidget(splitter);
    m_previewArea->setObjectName(QStringLiteral("previewArea"));
    m_previewArea->setAccessibleName(QStringLiteral("Preview area"));
    auto* grid = new QGridLayout(m_previewArea);
    grid->setContentsMargins(0, 0, 0, 0);
    m_browser = new BrowserControl(m_previewArea, BrowserControl::EngineStart::Deferred);
    grid->addWidget(m_browser, 1, 0);
    grid->setRowStretch(1, 1);
    m_plateViewer = new PlateLayoutViewer(m_previewArea);
    grid->addWidget(m_plateViewer, 1, 0);
    m_plateViewer->hide();
    m_plateViewer->raise();
}

// Tab moves through the panes in the order they are read: the folder tree,
// the documents, the preview, the shortcuts bar (each group's button, and
// the open group's items), then the documents' filter box, and round again.
// From anywhere else (the tool bar) Tab moves as the widgets lie.
bool MainWindow::focusNextPrevChild(bool next)
{
    QList<QWidget*> stops{m_folderTree->focusProxy(), m_fileList->focusProxy(),
                          m_plateViewer->isVisible() ? static_cast<QWidget*>(m_plateViewer) : m_browser};
    stops += m_shortcutsBar->keyboardStops();
    stops.append(m_fileList->filterBox());
    stops.removeAll(nullptr);
    QWidget* const focus = QApplication::focusWidget();
    const auto holds = [focus](const QWidget* stop) { return stop == focus || stop->isAncestorOf(focus); };
    const qsizetype at = std::find_if(stops.cbegin(), stops.cend(), holds) - stops.cbegin();
    if (!focus || at == stops.size())
        return QMainWindow::focusNextPrevChild(next);
    for (qsizetype step = 1; step < stops.size(); ++step) {
        QWidget* stop = stops.at((at + (next ? step : stops.size() - step)) % stops.size());
        if (stop->isVisible() && stop->isEnabled() &&
            (stop->focusPolicy() & Qt::TabFocus || stop->focusProxy())) {
            stop->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    }
    return true;
}

MainWindowControls MainWindow::controls() const
{
    return {*m_toolBars,    *m_statusBar,   *m_shortcutsBar, *m_folderTree, *m_fileList,
            *m_previewArea, *m_plateViewer, *m_browser,      *m_panes};
}

QString MainWindow::fileSystemMissingText()
{
    return QStringLiteral("SCRRUN.DLL cannot be found on this system.\r\n"
                          "\r\n"
                          "Please install the Microsoft Scripting Runtime module.\r\n"
                          "\r\n"
                          "Contact your system administrator or refer to the\r\n"
                          "software installation guide for more information.");
}

MainWindow::LoadOutcome MainWindow::Load()
{
    m_suite.resources = std::make_unique<Resources>();
    Messages::setApplicationTitle(m_suite.resources->LoadResString(Resources::ProductTitle));
    if (activatePreviousInstance())
        return LoadOutcome::DuplicateInstance;
    recordDesignGeometry();
    createSettingsAndPaths();
    openDiagnosticLog();
    m_organiser = std::make_unique<Organiser>(*this, controls(), m_suite, m_options);
    LogTraceBlock();
    if (!m_organiser->startSecurity())
        return LoadOutcome::Ended;
    m_splash = new SplashScreen(this, windowTitle());
    m_splash->show();
    if (!runLoadingSteps())
        return LoadOutcome::Ended;
    m_mainWindowLoaded = true;
    constexpr int UnpaintedWindowMs = 500;
    QTimer::singleShot(UnpaintedWindowMs, this, &MainWindow::startBrowserEngineSoon);
    return LoadOutcome::Loaded;
}

bool MainWindow::runLoadingSteps()
{
    const PaneSetup& panes = m_organiser->panes();
    Organiser& organiser = *m_organiser;
    const QList<Step> steps{
        {1, done([] { QCoreApplication::processEvents(); })}, // lets the splash paint
        {2, [this] { return createFileSystemObject(); }},
        {1, done([&organiser] { organiser.ActivateSHCNENotification(); })},
        {2, done([] {
             QApplication::setOverrideCursor(Qt::WaitCursor);
             QApplication::restoreOverrideCursor();
         })},
        {3, done([&panes] { panes.ApplyShortcutsBarSetting(); })},
        {0, done([&panes] { panes.applyTreeDisplayMode(); })},
        {2, done([&organiser] { organiser.CreateAnyMissingNebraDirectories(); })},
        {2, done([] {})}, // the browser was made with the window and refuses dropped files
        {2, done([] {})}, // the panes' image lists are the style's icons: nothing to load
        {3, done([&panes] { panes.configureTreeAndFileList(); })},
        {2, done([&panes] { panes.addTreeButtons(); })},
        {2, done([&organiser] { organiser.InitialiseOrganiserTree(); })},
        {2, done([&panes] {
             panes.buildShortcutsBar();
             panes.SetShortcutBarIcons();
         })},
        {2, done([&panes] { panes.showPanes(); })},
        {2, done([this] { restoreDesignGeometryAndMaximise(); })},
    };
    for (const Step& step : steps) {
        if (!step.action())
            return false;
        for (int i = 0; i < step.traceLines; ++i)
            LogTrace();
    }
    return true;
}

bool MainWindow::activatePreviousInstance()
{
    if (!m_singleInstance->IsAnotherInstanceRunning())
        return false;
    const QString duplicate = QStringLiteral("... duplicate instance.");
    Messages::setApplicationTitle(duplicate);
    QCoreApplication::setApplicationName(duplicate);
    setWindowTitle(duplicate);
    m_singleInstance->ActivatePreviousInstance();
    return true;
}

void MainWindow::createSettingsAndPaths()
{
    m_suite.store = std::make_unique<SettingsStore>();
    m_suite.settings = std::make_unique<SuiteSettings>(*m_suite.store);
    setWindowTitle(m_suite.settings->PlusCaption()
                       ? QStringLiteral("Tallyo Plus")
                       : m_suite.resources->LoadResString(Resources::ProductTitle));
    m_suite.paths = std::make_unique<SuitePaths>(*m_suite.store);
    m_suite.paths->Initialise();
    m_suite.drivers = std::make_unique<InstalledDrivers>(*m_suite.paths);
    // The Organiser goes on without drivers, but the user and the administrator learn why.
    m_suite.drivers->setErrorReport([this](const QString& reason) {
        qWarning("%s", qUtf8Printable(reason));
        Messages::show({reason, {}, MessageIcon::Warning, MessageButton::Ok, MessageButton::Ok, this});
    });
    m_suite.instrumentDriversInUse = m_suite.settings->InstrumentDriversInUse();
    if (!m_suite.store->warning().isEmpty())
        Messages::show(
            {m_suite.store->warning(), {}, MessageIcon::Warning, MessageButton::Ok, MessageButton::Ok, this});
}

void MainWindow::openDiagnosticLog()
{
    SuiteSettings* settings = m_suite.settings.get();
    m_suite.log = std::make_unique<DiagnosticLog>([settings] { return settings->DiagnosticLogLevel(); });
    DiagnosticLog::setProcessWide(m_suite.log.get());
    if (settings->DiagnosticLogLevel() > 0 && !m_suite.log->Open(m_suite.paths->LogFolder()))
        Messages::show({QStringLiteral("The diagnostic log \"%1\" cannot be written (%2). "
                                       "The Organiser runs without it.")
                            .arg(m_suite.log->filePath(), m_suite.log->errorString()),
                        {},
                        MessageIcon::Warning,
                        MessageButton::Ok,
                        MessageButton::Ok,
                        this});
}

bool MainWindow::createFileSystemObject()
{
    m_suite.fileSystem = m_options.fileSystemFactory();
    if (m_suite.fileSystem)
        return true;
    Messages::show({fileSystemMissingText(), QStringLiteral("File Not Found"), MessageIcon::Critical,
                    MessageButton::Ok, MessageButton::Ok, this});
    return false;
}

// Starting the web engine takes most of a start-up; it waits for the
// window's first paint so that the user sees the Organiser at once. A window
// that is never painted (minimised at start) gets its engine a little later.
void MainWindow::startBrowserEngineSoon()
{
    if (m_engineStartQueued || m_browser->engineStarted())
        return;
    m_engineStartQueued = true;
    QTimer::singleShot(0, m_browser, &BrowserControl::StartEngine);
}

bool MainWindow::event(QEvent* event)
{
    const bool handled = QMainWindow::event(event);
    if (event->type() == QEvent::Paint && m_mainWindowLoaded)
        startBrowserEngineSoon();
    return handled;
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

void MainWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    applyResizeRule();
}

void MainWindow::applyResizeRule()
{
    if (isMinimized())
        return;
    QWidget* client = centralWidget();
    const PanesGeometry geometry(logicalDpiX(), logicalDpiY());
    m_panes->move(0, geometry.topPixels());
    const QStatusBar* status = statusBar();
    const int statusHeight = status->isVisible() ? status->height() : 0;
    const std::optional<QSize> size =
        geometry.panesSizePixels(frameGeometry().size(), client->width(), statusHeight);
    if (!size)
        return;
    // The rule measures the whole window; the client area below the menu and
    // tool bars can be smaller, and the panes never reach under the status bar.
    const int room = std::max(0, client->height() - geometry.topPixels());
    m_panes->resize(size->width(), std::min(size->height(), room));
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
    if (m_organiser)
        m_organiser->unloadSessionWindows();
    QWidget* active = QApplication::activeWindow();
    if (active && active != this)
        active->close();
    // Hidden windows too: a dialog kept between showings must not survive the session.
    // Menus and pop-ups are parts of other windows, not windows of their own.
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window != this && !(window->windowType() == Qt::Popup || window->windowType() == Qt::ToolTip))
            window->close();
}

void MainWindow::unloadMainWindow()
{
    close();
}

void MainWindow::endProcess()
{
    if (m_options.endProcess)
        m_options.endProcess();
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
    // A window whose start-up ended before the subsystems existed has nothing to end.
    if (m_organiser)
        m_organiser->unload(m_mainWindowLoaded);
}

} // namespace nebra
