#pragma once

#include "AuditTrailCommand.h"
#include "Authorisation.h"
#include "CommandControls.h"
#include "DataFolders.h"
#include "DocumentCommands.h"
#include "DocumentLauncher.h"
#include "FindingAids.h"
#include "HelpSystem.h"
#include "MainWindowControls.h"
#include "NewProtocolWizards.h"
#include "OptionsCommand.h"
#include "OrganiserTree.h"
#include "PaneSetup.h"
#include "TreeNavigation.h"
#include "WelcomePage.h"

#include <QObject>

namespace nebra {

class CommandDispatcher;
class DataFolderProbe;
class DocumentRecording;
class DocumentRecords;
class DocumentSigning;
class FileView;
class MainWindow;
class PreviewPane;
class SecuritySession;
class ShellNotifications;
class UserActivity;
struct MainWindowControls;
struct MainWindowOptions;
struct SuiteComponents;

// The Organiser's subsystems, made once the suite components exist, each
// given the controls and components it uses, and connected to one another.
// The members are made in the order they are declared, which is the order
// they depend on one another; nothing is made later and nothing is null.
// The start-up and the shutdown of the main window call the steps below.
class Organiser : public QObject
{
    Q_OBJECT
public:
    Organiser(MainWindow& window, const MainWindowControls& controls, SuiteComponents& suite,
              const MainWindowOptions& options);
    ~Organiser() override;

    PaneSetup& panes() { return m_panes; }

    // The start-up's steps, in their order (see MainWindow::Load).
    // False: the session could not start and the program must end at once.
    bool startSecurity();
    void ActivateSHCNENotification();
    void CreateAnyMissingNebraDirectories();
    void InitialiseOrganiserTree();

    // The shutdown: stores the tree's display mode when the load completed,
    // closes help, stops the change notifications, unloads the Options
    // dialog and the audit trail viewer and ends the session.
    void unload(bool loaded);
    // A forced log-out: the session's windows go (see MainWindow::UnloadAllExceptMain).
    void unloadSessionWindows();

private:
    void setCommands();
    void connectControls();
    void connectShellNotifications();
    void connectDocumentRecording();
    LaunchContext launchContext();
    WizardHooks wizardHooks();
    WelcomeActions welcomeActions();
    OrganiserTreeSources treeSources();
    void checkSecuredFolder();
    void dataFoldersAnswered();
    void showFoldersNotAnswering();

    MainWindow& m_window;
    MainWindowControls m_controls;
    SuiteComponents& m_suite;
    PaneSetup m_panes;
    CommandControls m_switches;
    UserActivity* m_activity;
    CommandDispatcher* m_commands;
    SecuritySession* m_session;
    Authorisation m_authorisation;
    HelpSystem m_help;
    ShellNotifications* m_notifications;
    DocumentRecording* m_recording;
    DataFolderProbe* m_probe;
    bool m_foldersAnswer = true;
    bool m_makingFolders = false; // the data folders' making is on its way
    DataFolders m_dataFolders;
    OrganiserTree m_tree;
    TreeNavigation m_navigation;
    FileView* m_fileView;
    FindingAids* m_findingAids;
    DocumentLauncher m_launcher;
    NewProtocolWizards m_wizards;
    DocumentCommands m_documentCommands;
    PreviewPane* m_preview;
    WelcomePage m_welcome;
    AuditTrailCommand* m_auditTrail;
    DocumentRecords* m_documentRecords;
    DocumentSigning* m_signing;
    OptionsCommand m_optionsCommand;
};

} // namespace nebra
