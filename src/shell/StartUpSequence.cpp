#include "StartUpSequence.h"

#include "DataFolders.h"
#include "DiagnosticLog.h"
#include "FileSystemObject.h"
#include "FolderTreeControl.h"
#include "HelpSystem.h"
#include "InstalledDrivers.h"
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

namespace nebra {

StartUpSequence::StartUpSequence(MainWindow& window) : m_window(window), m_suite(window.m_suite) {}

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
    m_suite.resources = std::make_unique<Resources>();
    Messages::setApplicationTitle(m_suite.resources->LoadResString(Resources::ProductTitle));
    if (activatePreviousInstance())
        return MainWindow::LoadOutcome::DuplicateInstance;
    m_window.recordDesignGeometry();
    createSettingsAndPaths();
    openDiagnosticLog();
    m_window.createSubsystems();
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
        {1, done([this] { m_window.m_notifications->ActivateSHCNENotification(); })},
        {2, done([] {
             QApplication::setOverrideCursor(Qt::WaitCursor);
             QApplication::restoreOverrideCursor();
         })},
        {3, done([panes]() { panes.ApplyShortcutsBarSetting(); })},
        {0, done([panes]() { panes.applyTreeDisplayMode(); })},
        {2, done([this] {
             m_window.createDataFolders();
             m_window.m_dataFolders->CreateAnyMissingNebraDirectories();
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
    SingleInstance& instance = *m_window.m_singleInstance;
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
    m_suite.store = std::make_unique<SettingsStore>();
    m_suite.settings = std::make_unique<SuiteSettings>(*m_suite.store);
    m_window.setWindowTitle(m_suite.settings->PlusCaption()
                                ? QStringLiteral("Tallyo Plus")
                                : m_suite.resources->LoadResString(Resources::ProductTitle));
    m_suite.paths = std::make_unique<SuitePaths>(*m_suite.store);
    m_suite.paths->Initialise();
    m_suite.drivers = std::make_unique<InstalledDrivers>(*m_suite.paths);
    // The Organiser goes on without drivers, but the user and the administrator learn why.
    m_suite.drivers->setErrorReport([this](const QString& reason) {
        qWarning("%s", qUtf8Printable(reason));
        Messages::show({reason, {}, MessageIcon::Warning, MessageButton::Ok, MessageButton::Ok, &m_window});
    });
    m_suite.instrumentDriversInUse = m_suite.settings->InstrumentDriversInUse();
    m_window.help().setHelpFilePath(HelpSystem::defaultHelpFile());
    if (!m_suite.store->warning().isEmpty())
        Messages::show({m_suite.store->warning(),
                        {},
                        MessageIcon::Warning,
                        MessageButton::Ok,
                        MessageButton::Ok,
                        &m_window});
}

void StartUpSequence::openDiagnosticLog()
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
                        &m_window});
}

bool StartUpSequence::startSecurity()
{
    SecuritySession& session = *m_window.m_security;
    if (session.StartSecuritySession() == SecuritySession::StartOutcome::EndProcess)
        return false;
    if (!session.SecurityEnabled())
        return true;
    m_suite.paths->SetSecurityManager(session.NebraSecurityManagerObj());
    m_window.offerAuditTrailCommand();
    // A plain file of that name is no folder: the folder is still to be made.
    if (!FileSystemObject().FolderExists(m_suite.paths->SecuredFolder())) {
        m_suite.settings->BeginFolderUpdate();
        m_suite.paths->CreateSecuredFolder();
        m_suite.settings->EndFolderUpdate();
    }
    return true;
}

bool StartUpSequence::createFileSystemObject()
{
    m_suite.fileSystem = m_window.options().fileSystemFactory();
    if (m_suite.fileSystem)
        return true;
    Messages::show({fileSystemMissingText(), QStringLiteral("File Not Found"), MessageIcon::Critical,
                    MessageButton::Ok, MessageButton::Ok, &m_window});
    return false;
}

} // namespace nebra
