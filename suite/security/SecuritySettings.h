#pragma once

#include "DocumentSignature.h"
#include "ServerSettings.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace nebra {

class SettingsStore;

// Cost of the Argon2id password hash. Never below OWASP's minimum for
// Argon2id: 19 MiB of memory and 2 passes.
struct PasswordHashCost
{
    static constexpr int MinimumMemoryMiB = 19;
    static constexpr int MinimumPasses = 2;

    int memoryMiB = MinimumMemoryMiB;
    int passes = MinimumPasses;
};

// The "[Security]" group: where the security database and its companion
// files are, and the site's policy. When the administrator's system-wide
// settings file sets a security policy, every value comes from that file
// (or its default) and the user's own "[Security]" group is ignored, so
// nothing a user writes can weaken the policy; otherwise the user's file is
// read (a personal installation). Values that cannot be parsed, or that lie
// outside their range, read as the default (the hash cost is raised to its
// minimum instead).
struct SecuritySettings
{
    // Where one effective value came from, for "nebra-secadmin status".
    struct Origin
    {
        QString key;
        QString value;
        QString source; // "system file", "user file", "default" or "command line"
    };

    static constexpr const char* ServiceLibrary =
        "WindowsServiceAuthenticationLibrary.WindowsServiceXmlAuthentication";
    static constexpr const char* GroupLibrary =
        "WindowsGroupAuthenticationLibrary.WindowsGroupAuthentication";

    static constexpr int DefaultTimeOutMinutes = 15;
    static constexpr int DefaultTimeOutWarningSeconds = 60;
    static constexpr int DefaultLockoutThreshold = 5;
    static constexpr int DefaultPasswordMinimumLength = 8;

    QString databasePath;  // DatabasePath
    QString siteKeyFile;   // SiteKeyFile: the audit trail's key, outside the database
    QString chainHeadFile; // ChainHeadFile: newest audit entry and count, outside the database
    int timeOutMinutes = DefaultTimeOutMinutes;
    // TimeOutWarningSeconds: how long before the time-out the user is warned; 0 = never.
    int timeOutWarningSeconds = DefaultTimeOutWarningSeconds;
    int lockoutThreshold = DefaultLockoutThreshold;
    int passwordMinimumLength = DefaultPasswordMinimumLength;
    QString authenticationLibrary = QLatin1String(ServiceLibrary);
    PasswordHashCost hashCost;
    // SignatureMeanings: what a signature may mean, in the order offered.
    // Read from the system-wide file only: a user cannot add a meaning.
    QStringList signatureMeanings = SignatureEntries::meaningsFrom({});
    // AdminGroup: members may run the administration commands (root always may).
    QString adminGroup;

    // Backend: "sqlite" (the database file above) or "postgresql" (a database
    // server shared by the lab's workstations). The server and the client
    // role's credentials come only from the system-wide file: a user's own
    // file can neither choose the server nor supply them.
    enum class Backend
    {
        Embedded,
        Server,
    };
    Backend backend = Backend::Embedded;
    ServerSettings server; // Server, ServerPort, ServerDatabase, ServerUser, ServerPassword,
                           // ServerSslMode, ServerSslRootCert

    bool systemWide = false; // the system-wide file sets the policy
    QString policyError;     // set when the system-wide file exists but cannot be used
    QList<Origin> origins;

    // Reads the group. A non-empty databaseOverride replaces DatabasePath, and
    // the key and head files then default to lie beside it.
    static SecuritySettings fromStore(const SettingsStore& store, const QString& databaseOverride = {});

    // The per-user default database: "$XDG_DATA_HOME/Nebra/Security.db".
    static QString defaultDatabasePath();
};

} // namespace nebra
