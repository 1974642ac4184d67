#include "SitePolicyFile.h"

#include "SecuritySettings.h"
#include "SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QVariant>

#include <utility>

namespace nebra {

namespace {

using Values = QList<std::pair<QString, QVariant>>;

// One batch into the system-wide file, then the file left readable by everyone: it names the
// store or the server but holds no secret (a ServerPassword is added by hand, the file then made
// root:group 0640).
bool writeSystemFile(const Values& values, const QString& adminGroup, QString* error)
{
    const QString path = SettingsStore::systemFilePath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    SettingsStore file(path);
    if (!file.warning().isEmpty()) {
        *error = file.warning();
        return false;
    }
    file.beginBatch();
    file.setValue(QStringLiteral("Settings/SecurityConfigured"), QStringLiteral("true"));
    for (const auto& [key, value] : values)
        file.setValue(key, value);
    if (!adminGroup.isEmpty())
        file.setValue(QStringLiteral("Security/AdminGroup"), adminGroup);
    if (!file.endBatch()) {
        *error = file.lastError();
        return false;
    }
    const bool readable = QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                          QFileDevice::ReadGroup | QFileDevice::ReadOther);
    if (!readable)
        *error =
            QStringLiteral("The mode of \"%1\" cannot be set to 0644.").arg(QDir::toNativeSeparators(path));
    return readable;
}

} // namespace

bool SitePolicyFile::write(const SecuritySettings& settings, const QString& adminGroup, QString* error)
{
    return writeSystemFile({{QStringLiteral("Security/DatabasePath"), settings.databasePath},
                            {QStringLiteral("Security/SiteKeyFile"), settings.siteKeyFile},
                            {QStringLiteral("Security/ChainHeadFile"), settings.chainHeadFile}},
                           adminGroup, error);
}

bool SitePolicyFile::writeServer(const SecuritySettings& settings, const QString& adminGroup, QString* error)
{
    const ServerSettings& server = settings.server;
    Values values{{QStringLiteral("Security/Backend"), QStringLiteral("postgresql")},
                  {QStringLiteral("Security/Server"), server.host},
                  {QStringLiteral("Security/ServerPort"), server.port},
                  {QStringLiteral("Security/ServerDatabase"), server.database},
                  {QStringLiteral("Security/ServerUser"), ServerSettings::ClientRole}};
    if (!server.sslMode.isEmpty())
        values.append({QStringLiteral("Security/ServerSslMode"), server.sslMode});
    if (!server.sslRootCert.isEmpty())
        values.append({QStringLiteral("Security/ServerSslRootCert"), server.sslRootCert});
    return writeSystemFile(values, adminGroup, error);
}

QString SitePolicyFile::describe(const SettingsStore& store, const SecuritySettings& settings)
{
    QString text;
    if (!settings.policyError.isEmpty())
        text += QStringLiteral("PROBLEM: %1\n").arg(settings.policyError);
    const QString systemPath = QDir::toNativeSeparators(SettingsStore::systemFilePath());
    text += settings.systemWide
                ? QStringLiteral("Policy: set by the system-wide file \"%1\"; the user's [Security] group is "
                                 "ignored.\n")
                      .arg(systemPath)
                : QStringLiteral("Policy: personal (the system-wide file \"%1\" sets none); read from the "
                                 "user's file \"%2\".\n")
                      .arg(systemPath, QDir::toNativeSeparators(store.filePath()));
    const bool on = settings.systemWide || !settings.policyError.isEmpty() ||
                    store.value(QStringLiteral("Settings/SecurityConfigured"), false).toBool();
    text +=
        QStringLiteral("SecurityConfigured = %1 (%2)\n")
            .arg(on ? QStringLiteral("true") : QStringLiteral("false"),
                 settings.systemWide               ? QStringLiteral("system file")
                 : !settings.policyError.isEmpty() ? QStringLiteral("forced on: the system file is unusable")
                                                   : QStringLiteral("user file or default"));
    for (const SecuritySettings::Origin& origin : settings.origins)
        text += QStringLiteral("%1 = %2 (%3)\n").arg(origin.key, origin.value, origin.source);
    return text;
}

} // namespace nebra
