#pragma once

#include "SecuritySettings.h"
#include "SecurityStore.h"

#include <QString>

#include <memory>

namespace nebra::bench {

// An embedded store's files in folder, named as a site names them.
inline SecuritySettings storeSettingsIn(const QString& folder)
{
    SecuritySettings settings;
    settings.databasePath = folder + QStringLiteral("/Security.db");
    settings.siteKeyFile = folder + QStringLiteral("/Security.key");
    settings.chainHeadFile = folder + QStringLiteral("/Security.head");
    return settings;
}

// A new, open embedded store in folder; a benchmark that cannot make one ends.
inline std::unique_ptr<SecurityStore> newStoreIn(const QString& folder)
{
    QString error;
    std::unique_ptr<SecurityStore> store =
        SecurityStore::create(storeSettingsIn(folder), QStringLiteral("bench"), &error);
    if (!store)
        qFatal("%s", qPrintable(error));
    return store;
}

} // namespace nebra::bench
