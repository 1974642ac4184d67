#pragma once

#include <memory>

namespace nebra {

class DiagnosticLog;
class FileSystemObject;
class HLDCollection;
class Resources;
class SettingsStore;
class SuitePaths;
class SuiteSettings;

// The process-wide objects of the Organiser, each created once during
// start-up and held until the process ends.
struct Globals
{
    Globals();
    ~Globals();
    Globals(const Globals&) = delete;
    Globals& operator=(const Globals&) = delete;

    std::unique_ptr<Resources> resources;
    std::unique_ptr<SettingsStore> store;
    std::unique_ptr<SuiteSettings> settings;
    std::unique_ptr<SuitePaths> paths;
    std::unique_ptr<DiagnosticLog> log;
    std::unique_ptr<FileSystemObject> fileSystem;

    // True exactly while a security session is open.
    bool SecurityEnabled = false;

    // Read once at start-up: the suite runs with instrument drivers.
    bool InstrumentDriversInUse = false;

    // The installed-driver collection, created on first use.
    const HLDCollection& drivers();
    // Drops the collection so that the next use reads the catalogue again.
    void forgetDrivers();

private:
    std::unique_ptr<HLDCollection> m_drivers;
};

} // namespace nebra
