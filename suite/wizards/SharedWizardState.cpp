#include "SharedWizardState.h"

namespace nebra {

SharedWizardState::SharedWizardState(QObject* parent) : QObject(parent)
{
    setObjectName(QStringLiteral("SharedWizardState"));
}

void SharedWizardState::SetValue(const QString& key, const QVariant& value)
{
    if (value.isValid())
        m_values.insert(key, value);
    else
        m_values.remove(key);
}

bool SharedWizardState::Request(int code)
{
    if (code != EndOfRun)
        return false;
    for (auto it = m_values.begin(); it != m_values.end();) {
        if (it.key().startsWith(QLatin1String("run/")))
            it = m_values.erase(it);
        else
            ++it;
    }
    ++m_runCount;
    return true;
}

} // namespace nebra
