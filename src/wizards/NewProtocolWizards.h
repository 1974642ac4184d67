#pragma once

#include "WizardHooks.h"

#include <QString>

#include <memory>

class QWidget;

namespace nebra {

class SuitePaths;
class SuiteSettings;
class WizardHost;

// The Organiser's new-protocol wizards for the life of the main window: the
// wizard host (the catalogue in the suite's data folder, the installed
// plug-in folder, the shared wizard state) and the two ways of running a
// wizard. The main window makes one after SuitePaths and SuiteSettings exist
// and points LaunchContext::startProtocolWizard at ShowPicker.
class NewProtocolWizards
{
public:
    NewProtocolWizards(const SuitePaths& paths, SuiteSettings& settings, WizardHooks hooks);
    ~NewProtocolWizards();
    NewProtocolWizards(const NewProtocolWizards&) = delete;
    NewProtocolWizards& operator=(const NewProtocolWizards&) = delete;

    // A fresh picker, shown modally over parent, gone when it closes.
    void ShowPicker(QWidget* parent);

    // The main window's variant: runs the catalogue's wizard of that name
    // without the picker (its success box is titled "Information"). Returns
    // false when the catalogue has no such wizard.
    bool RunFromMainWindow(const QString& wizardName, QWidget* mainWindow);

    WizardHost& host() { return *m_host; }

private:
    const SuitePaths& m_paths;
    SuiteSettings& m_settings;
    WizardHooks m_hooks;
    std::unique_ptr<WizardHost> m_host;
};

} // namespace nebra
