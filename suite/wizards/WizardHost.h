#pragma once

#include "WizardCatalogue.h"
#include "WizardPlugins.h"

#include <QString>

#include <memory>

class QObject;
class QWidget;

namespace nebra {

class AssayProtocolWizard;
class SuitePaths;
class SuiteSettings;
class WizardContext;

// The Organiser's side of the wizards for the whole process: reads the
// catalogue, loads plug-ins, makes each run's context and keeps the shared
// wizard state between runs. Widget-free: the owner window is only passed on.
class WizardHost
{
public:
    WizardHost(const SuitePaths& paths, SuiteSettings& settings, QString catalogueFile, QString pluginFolder);
    ~WizardHost();
    WizardHost(const WizardHost&) = delete;
    WizardHost& operator=(const WizardHost&) = delete;

    // The catalogue as it is on disk now.
    WizardCatalogue ReadCatalogue() const;

    // A fresh context for a run of the named wizard, its companion attached;
    // securityManager (may be null) is given to it.
    std::unique_ptr<QObject> CreateContext(const QString& wizardName, QObject* securityManager) const;

    AssayProtocolWizard* CreateWizard(const QString& progId, QString* reason) const
    {
        return m_plugins.Create(progId, reason);
    }

    // The shared wizard state, created on first use.
    QObject* SharedState();
    bool HasSharedState() const { return m_sharedState != nullptr; }

    // Calls the wizard's Run (modal, owned by owner) with the context and
    // the shared state, keeping what Run hands back in their place. Returns
    // the wizard's result code.
    int Run(AssayProtocolWizard& wizard, QWidget* owner, std::unique_ptr<QObject>& context);

    // Sends the shared state a request code (its invokable Request(int));
    // false when there is no state yet or it does not take the request.
    bool SendRequest(int code);

private:
    static void adopt(std::unique_ptr<QObject>& owned, QObject* handedBack);

    const SuitePaths& m_paths;
    SuiteSettings& m_settings;
    QString m_catalogueFile;
    WizardPlugins m_plugins;
    std::unique_ptr<QObject> m_sharedState;
};

} // namespace nebra
