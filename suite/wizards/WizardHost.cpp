#include "WizardHost.h"

#include "AssayProtocolWizard.h"
#include "SharedWizardState.h"
#include "WizardCompanion.h"
#include "WizardContext.h"

#include <QMetaObject>

namespace nebra {

WizardHost::WizardHost(const SuitePaths& paths, SuiteSettings& settings, QString catalogueFile,
                       QString pluginFolder)
    : m_paths(paths), m_settings(settings), m_catalogueFile(std::move(catalogueFile)),
      m_plugins(std::move(pluginFolder))
{
}

WizardHost::~WizardHost() = default;

WizardCatalogue WizardHost::ReadCatalogue() const
{
    return WizardCatalogue(m_catalogueFile);
}

std::unique_ptr<QObject> WizardHost::CreateContext(const QString& wizardName, QObject* securityManager) const
{
    auto context = std::make_unique<WizardContext>(wizardName);
    context->AttachCompanion(new WizardCompanion(m_paths, m_settings));
    context->SetSecurityManager(securityManager);
    return context;
}

QObject* WizardHost::SharedState()
{
    if (!m_sharedState)
        m_sharedState = std::make_unique<SharedWizardState>();
    return m_sharedState.get();
}

// A wizard may hand back another object than it was given; the host owns
// whichever it hands back, and the one it replaced goes.
void WizardHost::adopt(std::unique_ptr<QObject>& owned, QObject* handedBack)
{
    if (handedBack == owned.get())
        return;
    owned.reset(handedBack);
}

int WizardHost::Run(AssayProtocolWizard& wizard, QWidget* owner, std::unique_ptr<QObject>& context)
{
    QObject* contextInOut = context.get();
    QObject* stateInOut = SharedState();
    int result = WizardResult::Abandoned;
    wizard.Run(owner, true, contextInOut, stateInOut, result);
    adopt(context, contextInOut);
    adopt(m_sharedState, stateInOut);
    return result;
}

bool WizardHost::SendRequest(int code)
{
    if (!m_sharedState)
        return false;
    bool taken = false;
    const bool invoked = QMetaObject::invokeMethod(m_sharedState.get(), "Request", Qt::DirectConnection,
                                                   Q_RETURN_ARG(bool, taken), Q_ARG(int, code));
    return invoked && taken;
}

} // namespace nebra
