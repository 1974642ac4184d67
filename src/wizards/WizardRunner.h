#pragma once

#include "WizardCatalogue.h"
#include "WizardHooks.h"

#include <QString>

#include <functional>

class QWidget;

namespace nebra {

class SuiteSettings;
class WizardHost;

// Runs one wizard and follows up on its outcome, for the picker and for the
// main window (which differ only in the title of the success box).
//
// RunWizard: hourglass; closes the help window; makes the run's context
// (with the security manager while a session is open) and loads the
// wizard; default pointer; runs it modally with the shared wizard state.
// Then, with NewProtocolPath emptied:
//   0      nothing is shown; false.
//   1      OpenInEditor false: an information box "The new Assay Protocol
//          file is stored at: " CR LF CR LF + NewFileName; true.
//          OpenInEditor true: NewProtocolPath = NewFileName (+ "; " +
//          SecondFileName when HasSecondFile); true, no box.
//   other  a plain box "Error in Wizard"; false.
// A wizard whose plug-in cannot be loaded is a failure as well: its
// loader's reason goes out as a log note and "Error in Wizard" is shown.
//
// RunSelectedWizard: remembers CurrentHLD; RunWizard; sends the shared
// state the end-of-run request (1048); calls handleChangedHLD when
// CurrentHLD changed; after a success calls unloadCaller, lets pending
// events run, reports the files the wizard made (protocolMade: each is a
// document of its own to the rest of the Organiser, opened in the editor or
// not) and opens them when the wizard asked for that; last, always,
// recreateResultsNode.
class WizardRunner
{
public:
    // successTitle: title of the success box; empty for the application's title.
    WizardRunner(WizardHost& host, SuiteSettings& settings, WizardHooks hooks, QString successTitle = {});

    bool RunWizard(const WizardEntry& entry, QWidget* owner);
    void RunSelectedWizard(const WizardEntry& entry, QWidget* owner,
                           const std::function<void()>& unloadCaller);

    // The new files joined by "; ", as the protocol editor is given them.
    QString NewProtocolPath() const { return m_newFiles.join(QStringLiteral("; ")); }
    const WizardHooks& hooks() const { return m_hooks; }

    static QString errorText() { return QStringLiteral("Error in Wizard"); }
    static QString storedAtText() { return QStringLiteral("The new Assay Protocol file is stored at: "); }

private:
    bool failed(QWidget* owner);
    bool succeeded(const class AssayProtocolWizard& wizard, QWidget* owner);

    WizardHost& m_host;
    SuiteSettings& m_settings;
    WizardHooks m_hooks;
    QString m_successTitle;
    QStringList m_madeFiles; // by the last successful run
    QStringList m_newFiles;  // those of m_madeFiles to open in the editor
};

} // namespace nebra
