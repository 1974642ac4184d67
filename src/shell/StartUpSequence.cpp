#include "StartUpSequence.h"

#include "DataFolders.h"
#include "DiagnosticLog.h"
#include "FolderTreeControl.h"
#include "HelpSystem.h"
#include "Messages.h"
#include "NebraSecurityManager.h"
#include "OrganiserTree.h"
#include "PaneSetup.h"
#include "Resources.h"
#include "SecuritySession.h"
#include "SettingsStore.h"
#include "ShellNotifications.h"
#include "SingleInstance.h"
#include "SplashScreen.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

#include <QApplication>
#include <QCoreApplication>
#include <QFileInfo>

namespace nebra {

StartUpSequence::StartUpSequence(MainWindow& window) : m_window(window), m_globals(window.globals()) {}

QString StartUpSequence::fileSystemMissingText()
{
    return QStringLiteral("SCRRUN.DLL cannot be found on this system.\r\n"
                          "\r\n"
                          "Please install the Microsoft Scripting Runtime module.\r\n"
                          "\r\n"
                          "Contact your system administrator or refer to the\r\n"
                          "software installation guide for more information.");
}

MainWindow::LoadOutcome StartUpSequence::run()
{
    m_globals.resources = std::make_unique<Resources>();
    Messages::setApplicationTitle(m_globals.resources->LoadResString(Resources::ProductTitle));
    if (activatePreviousInstance())
        return MainWindow::LoadOutcome::DuplicateInstance;
    m_window.recordDesignGeometry();
    createSettingsAndPaths();
    openDiagnosticLog();
    LogTraceBlock();
    if (!startSecurity())
        return MainWindow::LoadOutcome::Ended;
    m_window.showSplash();

    for (const Step& step : loadingSteps()) {
        if (!step.action())
            return MainWindow::LoadOutcome::Ended;
        for (int i = 0; i < step.traceLines; ++i)
            LogTrace();
    }
    return MainWindow::LoadOutcome::Loaded;
}

QList<StartUpSequence::Step> StartUpSequence::loadingSteps()
{
    PaneSetup panes(m_window);
    auto done = [](auto&& action) {
        return [action]() {
            action();
            return true;
        };
    };
    return {
        {1, done([] { QCoreApplication::processEvents(); })}, // lets the splash paint
        {2, [this] { return createFileSystemObject(); }},
        {1, done([this] { m_window.shellNotifications().ActivateSHCNENotification(); })},
        {2, done([] {
             QApplication::setOverrideCursor(Qt::WaitCursor);
             QApplication::restoreOverrideCursor();
         })},
        {3, done([this, panes]() {
             m_globals.InstrumentDriversInUse = m_globals.settings->InstrumentDriversInUse();
             panes.ApplyShortcutsBarSetting();
         })},
        {0, done([panes]() { panes.applyTreeDisplayMode(); })},
        {2, done([this] {
             m_window.createDataFolders();
             m_window.dataFolders()->CreateAnyMissingNebraDirectories();
         })},
        {2, done([this] { m_window.createBrowser(); })},
        {2, done([] {})}, // the panes' image lists are the style's icons: nothing to load
        {3, done([panes]() { panes.configureTreeAndFileList(); })},
        {2, done([panes]() { panes.addTreeButtons(); })},
        {2, done([this] { m_window.organiserTree().InitialiseOrganiserTree(); })},
        {2, done([panes]() {
             panes.buildShortcutsBar();
             panes.SetShortcutBarIcons();
         })},
        {2, done([panes]() { panes.showPanes(); })},
        {2, done([this] { m_window.restoreDesignGeometryAndMaximise(); })},
    };
}

bool StartUpSequence::activatePreviousInstance()
{
    SingleInstance& instance = m_window.singleInstance();
    if (!instance.IsAnotherInstanceRunning())
        return false;
    const QString duplicate = QStringLiteral("... duplicate instance.");
    Messages::setApplicationTitle(duplicate);
    QCoreApplication::setApplicationName(duplicate);
    m_window.setWindowTitle(duplicate);
    instance.ActivatePreviousInstance();
    return true;
}

void StartUpSequence::createSettingsAndPaths()
{
    m_globals.store = std::make_unique<SettingsStore>();
    m_globals.settings = std::make_unique<SuiteSettings>(*m_globals.store);
    m_window.setWindowTitle(m_globals.settings->PlusCaption()
                                ? QStringLiteral("Tallyo Plus")
                                : m_globals.resources->LoadResString(Resources::ProductTitle));
    m_globals.paths = std::make_unique<SuitePaths>(*m_globals.store);
    m_globals.paths->Initialise();
    m_window.help().setHelpFilePath(HelpSystem::defaultHelpFile());
    if (!m_globals.store->warning().isEmpty())
        Messages::show({m_globals.store->warning(),
                        {},
                        MessageIcon::Warning,
                        MessageButton::Ok,
                        MessageButton::Ok,
                        &m_window});
}

void StartUpSequence::openDiagnosticLog()
{
    SuiteSettings* settings = m_globals.settings.get();
    m_globals.log = std::make_unique<DiagnosticLog>([settings] { return settings->DiagnosticLogLevel(); });
    DiagnosticLog::setProcessWide(m_globals.log.get());
    if (settings->DiagnosticLogLevel() > 0 && !m_globals.log->Open(m_globals.paths->LogFolder()))
        Messages::show({QStringLiteral("The diagnostic log \"%1\" cannot be written (%2). "
                                       "The Organiser runs without it.")
                            .arg(m_globals.log->filePath(), m_globals.log->errorString()),
                        {},
                        MessageIcon::Warning,
                        MessageButton::Ok,
                        MessageButton::Ok,
                        &m_window});
}

bool StartUpSequence::startSecurity()
{
    m_globals.SecurityEnabled = false;
    m_window.createSecuritySession();
    if (m_window.securitySession()->StartSecuritySession() == SecuritySession::StartOutcome::EndProcess)
        return false;
    if (!m_globals.SecurityEnabled)
        return true;
    m_globals.paths->SetSecurityManager(m_window.securitySession()->NebraSecurityManagerObj());
    if (!QFileInfo::exists(m_globals.paths->SecuredFolder())) {
        m_globals.settings->BeginFolderUpdate();
        m_globals.paths->CreateSecuredFolder();
        m_globals.settings->EndFolderUpdate();
    }
    return true;
}

bool StartUpSequence::createFileSystemObject()
{
    m_globals.fileSystem = m_window.options().fileSystemFactory();
    if (m_globals.fileSystem)
        return true;
    Messages::show({fileSystemMissingText(), QStringLiteral("File Not Found"), MessageIcon::Critical,
                    MessageButton::Ok, MessageButton::Ok, &m_window});
    return false;
}

} // namespace nebra
