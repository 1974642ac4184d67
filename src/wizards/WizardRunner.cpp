#include "WizardRunner.h"

#include "AssayProtocolWizard.h"
#include "DiagnosticLog.h"
#include "Messages.h"
#include "SharedWizardState.h"
#include "SuiteSettings.h"
#include "WizardHost.h"

#include <QCoreApplication>
#include <QCursor>
#include <QGuiApplication>
#include <QWidget>

namespace nebra {

namespace {

// Holds the hourglass for as long as it lives; the pointer comes back on
// every way out.
class Hourglass
{
public:
    Hourglass() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~Hourglass() { restore(); }
    Hourglass(const Hourglass&) = delete;
    Hourglass& operator=(const Hourglass&) = delete;
    void restore()
    {
        if (m_on)
            QGuiApplication::restoreOverrideCursor();
        m_on = false;
    }

private:
    bool m_on = true;
};

} // namespace

WizardRunner::WizardRunner(WizardHost& host, SuiteSettings& settings, WizardHooks hooks, QString successTitle)
    : m_host(host), m_settings(settings), m_hooks(std::move(hooks)), m_successTitle(std::move(successTitle))
{
}

bool WizardRunner::RunWizard(const WizardEntry& entry, QWidget* owner)
{
    Hourglass hourglass;
    if (m_hooks.closeHelpIfOpen)
        m_hooks.closeHelpIfOpen();
    const bool secured = m_hooks.securityEnabled && m_hooks.securityEnabled();
    std::unique_ptr<QObject> context = m_host.CreateContext(
        entry.Name, secured && m_hooks.securityManager ? m_hooks.securityManager() : nullptr);
    QString reason;
    AssayProtocolWizard* wizard = m_host.CreateWizard(entry.ProgID, &reason);
    hourglass.restore();
    if (!wizard) {
        LogNote(QStringLiteral("Wizard \"%1\" (%2) not started: %3").arg(entry.Name, entry.ProgID, reason));
        m_madeFiles.clear();
        m_newFiles.clear();
        return failed(owner);
    }
    if (m_hooks.wizardRunning)
        m_hooks.wizardRunning(true);
    const int result = m_host.Run(*wizard, owner, context);
    if (m_hooks.wizardRunning)
        m_hooks.wizardRunning(false);
    QCoreApplication::processEvents();
    m_madeFiles.clear();
    m_newFiles.clear();
    switch (result) {
    case WizardResult::Abandoned:
        return false;
    case WizardResult::Created:
        return succeeded(*wizard, owner);
    default:
        return failed(owner);
    }
}

bool WizardRunner::failed(QWidget* owner)
{
    Messages::show(
        {errorText(), QString(), MessageIcon::NoIcon, MessageButton::Ok, MessageButton::Ok, owner});
    return false;
}

bool WizardRunner::succeeded(const AssayProtocolWizard& wizard, QWidget* owner)
{
    m_madeFiles = QStringList{wizard.NewFileName()};
    if (wizard.HasSecondFile())
        m_madeFiles.append(wizard.SecondFileName());
    m_madeFiles.removeAll(QString());
    if (!wizard.OpenInEditor()) {
        Messages::show({storedAtText() + QStringLiteral("\r\n\r\n") + wizard.NewFileName(), m_successTitle,
                        MessageIcon::Information, MessageButton::Ok, MessageButton::Ok, owner});
        return true;
    }
    m_newFiles = QStringList{wizard.NewFileName()};
    if (wizard.HasSecondFile())
        m_newFiles.append(wizard.SecondFileName());
    return true;
}

void WizardRunner::RunSelectedWizard(const WizardEntry& entry, QWidget* owner,
                                     const std::function<void()>& unloadCaller)
{
    const int driverBefore = m_settings.CurrentHLD();
    const bool ok = RunWizard(entry, owner);
    m_host.SendRequest(SharedWizardState::EndOfRun);
    if (m_settings.CurrentHLD() != driverBefore && m_hooks.handleChangedHLD)
        m_hooks.handleChangedHLD();
    if (ok) {
        if (unloadCaller)
            unloadCaller();
        QCoreApplication::processEvents();
        if (!m_madeFiles.isEmpty() && m_hooks.protocolMade)
            m_hooks.protocolMade(m_madeFiles);
        if (!m_newFiles.isEmpty() && m_hooks.openNewProtocol)
            m_hooks.openNewProtocol(m_newFiles);
    }
    if (m_hooks.recreateResultsNode)
        m_hooks.recreateResultsNode();
}

} // namespace nebra
