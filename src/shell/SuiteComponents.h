#pragma once

#include <memory>

namespace nebra {

class DiagnosticLog;
class FileSystemObject;
class InstalledDrivers;
class Resources;
class SettingsStore;
class SuitePaths;
class SuiteSettings;

// The suite components the main window owns, made one after the other by
// the start-up and held until the window goes. Only the shell sees this
// holder: every other object is handed the components it uses, one by one.
struct SuiteComponents
{
    SuiteComponents();
    ~SuiteComponents();
    SuiteComponents(const SuiteComponents&) = delete;
    SuiteComponents& operator=(const SuiteComponents&) = delete;

    std::unique_ptr<Resources> resources;
    std::unique_ptr<SettingsStore> store;
    std::unique_ptr<SuiteSettings> settings;
    std::unique_ptr<SuitePaths> paths;
    std::unique_ptr<InstalledDrivers> drivers;
    std::unique_ptr<DiagnosticLog> log;
    std::unique_ptr<FileSystemObject> fileSystem;

    // Read once at start-up, with the settings: the suite runs with instrument drivers.
    bool instrumentDriversInUse = false;
};

} // namespace nebra
