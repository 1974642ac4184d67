#include "SecuritySettings.h"

#include "SettingsStore.h"

#include <QStandardPaths>

namespace nebra {

namespace {

QString text(const SettingsStore& store, const char* name)
{
    return store.value(QStringLiteral("Security/") + QLatin1String(name), QString()).toString().trimmed();
}

int number(const SettingsStore& store, const char* name, int defaultValue, int minimum, int maximum)
{
    bool ok = false;
    const int value = text(store, name).toInt(&ok);
    return ok && value >= minimum && value <= maximum ? value : defaultValue;
}

int atLeast(const SettingsStore& store, const char* name, int minimum, int maximum)
{
    bool ok = false;
    const int value = text(store, name).toInt(&ok);
    return ok ? qBound(minimum, value, maximum) : minimum;
}

} // namespace

QString SecuritySettings::defaultDatabasePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/Nebra/Security.db");
}

SecuritySettings SecuritySettings::fromStore(const SettingsStore& store, const QString& databaseOverride)
{
    SecuritySettings s;
    const QString configured = text(store, "DatabasePath");
    s.databasePath = !databaseOverride.isEmpty() ? databaseOverride
                     : !configured.isEmpty()     ? configured
                                                 : defaultDatabasePath();
    const bool besideOverride = !databaseOverride.isEmpty();
    const QString keyFile = text(store, "SiteKeyFile");
    s.siteKeyFile = !besideOverride && !keyFile.isEmpty() ? keyFile : s.databasePath + QStringLiteral(".key");
    const QString headFile = text(store, "ChainHeadFile");
    s.chainHeadFile =
        !besideOverride && !headFile.isEmpty() ? headFile : s.databasePath + QStringLiteral(".head");
    s.timeOutMinutes = number(store, "TimeOutMinutes", DefaultTimeOutMinutes, 1, 24 * 60);
    s.timeOutWarningSeconds =
        number(store, "TimeOutWarningSeconds", DefaultTimeOutWarningSeconds, 0, 60 * 60);
    s.lockoutThreshold = number(store, "LockoutThreshold", DefaultLockoutThreshold, 1, 1000);
    s.passwordMinimumLength = number(store, "PasswordMinimumLength", DefaultPasswordMinimumLength, 1, 128);
    const QString library = text(store, "AuthenticationLibrary");
    if (!library.isEmpty())
        s.authenticationLibrary = library;
    s.hashCost.memoryMiB = atLeast(store, "PasswordHashMemoryMiB", PasswordHashCost::MinimumMemoryMiB, 4096);
    s.hashCost.passes = atLeast(store, "PasswordHashPasses", PasswordHashCost::MinimumPasses, 100);
    return s;
}

} // namespace nebra
