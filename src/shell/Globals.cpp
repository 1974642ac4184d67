#include "Globals.h"

#include "DiagnosticLog.h"
#include "FileSystemObject.h"
#include "HLDCollection.h"
#include "Resources.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

namespace nebra {

Globals::Globals() = default;

Globals::~Globals()
{
    if (DiagnosticLog::processWide() == log.get())
        DiagnosticLog::setProcessWide(nullptr);
}

const HLDCollection& Globals::drivers()
{
    if (!m_drivers)
        m_drivers = std::make_unique<HLDCollection>(paths->DriverCatalogueFile());
    return *m_drivers;
}

void Globals::forgetDrivers()
{
    m_drivers.reset();
}

} // namespace nebra
