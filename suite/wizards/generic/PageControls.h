#pragma once
// Small builders shared by the Generic wizard's pages: every control gets an
// object name (tests find it) and an accessible name (screen readers read it).

#include <QSpinBox>
#include <QString>

namespace nebra::pagecontrols {

template <typename Control>
Control* named(Control* control, const char* objectName, const QString& accessibleName)
{
    control->setObjectName(QLatin1String(objectName));
    control->setAccessibleName(accessibleName);
    return control;
}

inline QSpinBox* spin(const char* objectName, const QString& accessibleName, int low, int high, int value,
                      const QString& suffix)
{
    auto* box = named(new QSpinBox, objectName, accessibleName);
    box->setRange(low, high);
    box->setValue(value);
    box->setSuffix(suffix);
    return box;
}

} // namespace nebra::pagecontrols
