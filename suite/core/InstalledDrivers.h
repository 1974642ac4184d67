#pragma once

#include "HLDCollection.h"

#include <functional>
#include <memory>

namespace nebra {

class SuitePaths;

// The installed instrument drivers of the suite, read from the driver
// catalogue that SuitePaths names. The collection is read on first use and
// kept; fresh() reads the catalogue again (after the Options dialog has
// changed the drivers, for instance).
//
// A catalogue that exists but cannot be read or parsed yields no drivers;
// each such read is passed to the error report with the reason, which names
// the file.
class InstalledDrivers
{
public:
    using ErrorReport = std::function<void(const QString& reason)>;

    explicit InstalledDrivers(const SuitePaths& paths);
    ~InstalledDrivers();
    InstalledDrivers(const InstalledDrivers&) = delete;
    InstalledDrivers& operator=(const InstalledDrivers&) = delete;

    // Called after every read that failed; by default nothing is called.
    void setErrorReport(ErrorReport report) { m_report = std::move(report); }

    const HLDCollection& collection();
    const HLDCollection& fresh();

private:
    const SuitePaths& m_paths;
    ErrorReport m_report;
    std::unique_ptr<HLDCollection> m_drivers;
};

} // namespace nebra
