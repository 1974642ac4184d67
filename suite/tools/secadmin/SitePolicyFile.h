#pragma once

#include <QString>

namespace nebra {

class SettingsStore;
struct SecuritySettings;

// The system-wide settings file as the administration tool writes and shows it.
class SitePolicyFile
{
public:
    // Turns security on in the system-wide file and names the database, key
    // and head files (and the administrators' group, when given). The file
    // stays readable by everyone and writable by its owner only.
    static bool write(const SecuritySettings& settings, const QString& adminGroup, QString* error);

    // The effective policy, one value a line, each with where it came from.
    // The file that points every workstation at the security server (no password in it).
    static bool writeServer(const SecuritySettings& settings, const QString& adminGroup, QString* error);

    static QString describe(const SettingsStore& store, const SecuritySettings& settings);
};

} // namespace nebra
