#include "WizardCompanion.h"

#include "SuitePaths.h"
#include "SuiteSettings.h"

namespace nebra {

WizardCompanion::WizardCompanion(const SuitePaths& paths, SuiteSettings& settings, QObject* parent)
    : QObject(parent), m_paths(paths), m_settings(settings)
{
    setObjectName(QStringLiteral("WizardCompanion"));
}

QString WizardCompanion::ProtocolsFolder() const
{
    return m_paths.ProtocolsFolder();
}
QString WizardCompanion::LayoutsFolder() const
{
    return m_paths.LayoutsFolder();
}
QString WizardCompanion::ResultsFolder() const
{
    return m_paths.ResultsFolder();
}
QString WizardCompanion::WizardsFolder() const
{
    return m_paths.WizardsParentFolder() + QStringLiteral("/Wizards");
}

int WizardCompanion::CurrentHLD() const
{
    return m_settings.CurrentHLD();
}
void WizardCompanion::SetCurrentHLD(int index)
{
    m_settings.SetCurrentHLD(index);
}

} // namespace nebra
