#include "SitePolicyFile.h"

#include "SecuritySettings.h"
#include "SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QVariant>

#include <utility>

#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace nebra {

namespace {

using Values = QList<std::pair<QString, QVariant>>;

// Takes write access from group and others, whatever the umask was: whoever
// may change the file or its folder would decide the site's policy. Other
// bits stay as they are (a file made root:group 0640 keeps its mode).
bool shutToOthers(const QString& path, QString* error)
{
    struct stat st = {};
    const QByteArray name = QFile::encodeName(path);
    if (::stat(name.constData(), &st) == 0 &&
        ::chmod(name.constData(), st.st_mode & 07777 & ~mode_t(S_IWGRP | S_IWOTH)) == 0)
        return true;
    *error = QStringLiteral("The mode of \"%1\" cannot be set (%2).")
                 .arg(QDir::toNativeSeparators(path), QString::fromLocal8Bit(strerror(errno)));
    return false;
}

// One batch into the system-wide file, always the site's one place for it.
// A new file is readable by everyone: it names the store or the server but
// holds no secret. A file that is there keeps its mode and group (the file
// is replaced, not written in place), so one made root:group 0640 to hold a
// ServerPassword stays so.
bool writeSystemFile(const Values& values, const QString& adminGroup, QString* error)
{
    const QString path = SettingsStore::systemFilePath();
    const QString folder = QFileInfo(path).absolutePath();
    struct stat before = {};
    const bool existed = ::stat(QFile::encodeName(path).constData(), &before) == 0;
    QDir().mkpath(folder);
    if (!shutToOthers(folder, error))
        return false;
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
    if (existed && ::chown(QFile::encodeName(path).constData(), uid_t(-1), before.st_gid) != 0) {
        *error = QStringLiteral("The group of \"%1\" cannot be kept (%2).")
                     .arg(QDir::toNativeSeparators(path), QString::fromLocal8Bit(strerror(errno)));
        return false;
    }
    if (!existed && !QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                     QFileDevice::ReadGroup | QFileDevice::ReadOther)) {
        *error =
            QStringLiteral("The mode of \"%1\" cannot be set to 0644.").arg(QDir::toNativeSeparators(path));
        return false;
    }
    return shutToOthers(path, error);
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
