#include "NewProtocolWizards.h"

#include "NewAssayProtocolDialog.h"
#include "SuitePaths.h"
#include "WizardHost.h"
#include "WizardRunner.h"

namespace nebra {

NewProtocolWizards::NewProtocolWizards(const SuitePaths& paths, SuiteSettings& settings, WizardHooks hooks)
    : m_paths(paths), m_settings(settings), m_hooks(std::move(hooks)),
      m_host(std::make_unique<WizardHost>(paths, settings, WizardCatalogue::FileIn(paths.SuiteDataFolder()),
                                          WizardPlugins::DefaultFolder()))
{
}

NewProtocolWizards::~NewProtocolWizards() = default;

void NewProtocolWizards::ShowPicker(QWidget* parent)
{
    NewAssayProtocolDialog::ShowNew(*m_host, m_paths, m_settings, m_hooks, parent);
}

bool NewProtocolWizards::RunFromMainWindow(const QString& wizardName, QWidget* mainWindow)
{
    const WizardCatalogue catalogue = m_host->ReadCatalogue();
    for (const WizardEntry& entry : catalogue.Wizards().items()) {
        if (entry.Name == wizardName) {
            WizardRunner runner(*m_host, m_settings, m_hooks, QStringLiteral("Information"));
            runner.RunSelectedWizard(entry, mainWindow, {});
            return true;
        }
    }
    return false;
}

} // namespace nebra
