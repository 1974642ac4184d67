#include "WizardContext.h"

namespace nebra {

WizardContext::WizardContext(const QString& wizardName, QObject* parent)
    : QObject(parent), m_wizardName(wizardName)
{
    setObjectName(QStringLiteral("WizardContext"));
}

void WizardContext::AttachCompanion(QObject* companion)
{
    if (companion)
        companion->setParent(this);
    m_companion = companion;
}

} // namespace nebra
