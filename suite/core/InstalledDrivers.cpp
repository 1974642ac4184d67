#include "InstalledDrivers.h"

#include "SuitePaths.h"

namespace nebra {

InstalledDrivers::InstalledDrivers(const SuitePaths& paths) : m_paths(paths) {}

InstalledDrivers::~InstalledDrivers() = default;

const HLDCollection& InstalledDrivers::collection()
{
    if (!m_drivers)
        return fresh();
    return *m_drivers;
}

const HLDCollection& InstalledDrivers::fresh()
{
    m_drivers = std::make_unique<HLDCollection>(m_paths.DriverCatalogueFile());
    if (!m_drivers->errorString().isEmpty() && m_report)
        m_report(m_drivers->errorString());
    return *m_drivers;
}

} // namespace nebra
