#include "SuiteComponents.h"

#include "DiagnosticLog.h"
#include "FileSystemObject.h"
#include "InstalledDrivers.h"
#include "Resources.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

namespace nebra {

SuiteComponents::SuiteComponents() = default;

SuiteComponents::~SuiteComponents()
{
    if (DiagnosticLog::processWide() == log.get())
        DiagnosticLog::setProcessWide(nullptr);
}

} // namespace nebra
