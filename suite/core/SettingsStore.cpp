#include "SettingsStore.h"

#include "SystemFileCheck.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QStringDecoder>

namespace nebra {

namespace {

// QSettings reads almost anything as INI. A truncated or overwritten file
// would then silently yield odd values, so the text is checked first: it must
// be UTF-8 without NUL bytes, and every line must be empty, a comment, a
// [group] header, a key=value pair or the continuation of one.
QString problemWithText(const QByteArray& bytes)
{
    if (bytes.contains('\0'))
        return QStringLiteral("it holds binary data");
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(bytes);
    if (decoder.hasError())
        return QStringLiteral("it is not UTF-8 text");
    bool continued = false;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (int i = 0; i < lines.size(); ++i) {
        const QString line = lines[i].trimmed();
        const bool wasContinued = continued;
        continued = line.endsWith(QLatin1Char('\\'));
        if (wasContinued || line.isEmpty() || line.startsWith(QLatin1Char(';')) ||
            line.startsWith(QLatin1Char('#')))
            continue;
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']')))
            continue;
        if (line.indexOf(QLatin1Char('=')) > 0)
            continue;
        return QStringLiteral("line %1 is not a setting").arg(i + 1);
    }
    return {};
}

// Where the system-wide file is, and who must own it: fixed for the programs.
struct SystemFile
{
    QString path = SettingsStore::SitePolicyFile;
    uid_t owner = 0;
};

SystemFile& systemFile()
{
    static SystemFile file;
    return file;
}

} // namespace

SettingsStore::SettingsStore() : m_filePath(defaultFilePath())
{
    if (!refuseSystemFileAsOwn())
        open();
    openSystem();
}

SettingsStore::SettingsStore(const QString& filePath) : m_filePath(filePath)
{
    open();
    openSystem();
}

bool SettingsStore::refuseSystemFileAsOwn()
{
    // XDG_CONFIG_HOME pointed at the policy's folder would make the policy the
    // user's own file, and an own file sets no policy: it is left alone instead.
    if (!SystemFileCheck::sameFile(m_filePath, systemFilePath()))
        return false;
    m_isSystemFile = true;
    m_warning = QStringLiteral("The settings file \"%1\" is the system-wide settings file, so it is not used "
                               "as your own. Default settings are in effect.")
                    .arg(QDir::toNativeSeparators(m_filePath));
    return true;
}

SettingsStore::SettingsStore(const QString& filePath, SystemScope) : m_filePath(filePath)
{
    open();
}

void SettingsStore::openSystem()
{
    const QString path = systemFilePath();
    // Opened as a store of the named file (the administration tool editing the
    // policy itself), the file is not read a second time as its own policy.
    if (!m_isSystemFile && QFileInfo(path).absoluteFilePath() == QFileInfo(m_filePath).absoluteFilePath())
        return;
    if (!QFileInfo::exists(path))
        return;
    m_systemDistrust = SystemFileCheck::distrust(path, systemFileOwner());
    m_system.reset(new SettingsStore(path, SystemScope{}));
}

QString SettingsStore::systemFilePath()
{
    return systemFile().path;
}

uid_t SettingsStore::systemFileOwner()
{
    return systemFile().owner;
}

void SettingsStore::useSystemFile(const QString& path, uid_t owner)
{
    systemFile() = {path, owner};
}

bool SettingsStore::systemSetsSecurityPolicy() const
{
    if (!m_system)
        return false;
    const QString on = m_system->value(QStringLiteral("Settings/SecurityConfigured"), QString())
                           .toString()
                           .trimmed()
                           .toLower();
    return on == QLatin1String("true") || on == QLatin1String("1") || on == QLatin1String("yes") ||
           !m_system->value(QStringLiteral("Security/DatabasePath"), QString())
                .toString()
                .trimmed()
                .isEmpty();
}

QString SettingsStore::systemProblem() const
{
    if (!m_system)
        return {};
    if (!m_systemDistrust.isEmpty())
        return m_systemDistrust;
    if (m_system->m_settings)
        return {};
    const QFileInfo info(m_system->m_filePath);
    if (info.isFile() && !info.isReadable())
        return SystemFileCheck::unreadable(m_system->m_filePath);
    return QStringLiteral(
               "The system-wide settings file \"%1\" cannot be used (%2), so the security policy it "
               "may set is unknown. Ask your administrator to repair it.")
        .arg(QDir::toNativeSeparators(m_system->m_filePath), m_system->m_unusable);
}

SettingsStore::~SettingsStore() = default;

QString SettingsStore::defaultFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Nebra/Suite.ini");
}

void SettingsStore::open()
{
    const QFileInfo info(m_filePath);
    if (info.exists()) {
        QFile file(m_filePath);
        QString problem;
        if (!info.isFile())
            problem = QStringLiteral("it is not a file");
        else if (!file.open(QIODevice::ReadOnly))
            problem = file.errorString();
        else
            problem = problemWithText(file.readAll());
        if (!problem.isEmpty()) {
            m_unusable = problem;
            m_warning = QStringLiteral("The settings file \"%1\" cannot be used (%2). "
                                       "Default settings are in effect; the file has not been changed.")
                            .arg(QDir::toNativeSeparators(m_filePath), problem);
            return;
        }
    }
    m_settings = std::make_unique<QSettings>(m_filePath, QSettings::IniFormat);
    m_settings->setAtomicSyncRequired(true);
    if (m_settings->status() != QSettings::NoError) {
        m_unusable = QStringLiteral("it cannot be read");
        m_warning = QStringLiteral("The settings file \"%1\" cannot be read. "
                                   "Default settings are in effect; the file has not been changed.")
                        .arg(QDir::toNativeSeparators(m_filePath));
        m_settings.reset();
    }
}

QVariant SettingsStore::value(const QString& key, const QVariant& defaultValue, bool fresh) const
{
    if (!m_settings)
        return defaultValue;
    if (fresh && m_batchDepth == 0)
        m_settings->sync(); // re-reads the file when another program changed it
    return m_settings->value(key, defaultValue);
}

bool SettingsStore::setAside()
{
    const QString aside = m_filePath + QStringLiteral(".corrupt-") +
                          QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss"));
    if (QFileInfo::exists(m_filePath) && !QFile::rename(m_filePath, aside)) {
        m_lastError = QStringLiteral("The unusable settings file \"%1\" could not be kept aside, "
                                     "so no setting was written.")
                          .arg(QDir::toNativeSeparators(m_filePath));
        return false;
    }
    m_settings = std::make_unique<QSettings>(m_filePath, QSettings::IniFormat);
    m_settings->setAtomicSyncRequired(true);
    return true;
}

bool SettingsStore::setValue(const QString& key, const QVariant& value)
{
    m_lastError.clear();
    if (m_isSystemFile) {
        m_lastError = m_warning;
        return false;
    }
    if (!m_settings && !setAside())
        return false;
    QDir().mkpath(QFileInfo(m_filePath).absolutePath());
    m_settings->setValue(key, value);
    return m_batchDepth > 0 || flush();
}

bool SettingsStore::flush()
{
    m_settings->sync();
    if (m_settings->status() == QSettings::NoError)
        return true;
    m_lastError = QStringLiteral("The settings file \"%1\" could not be written.")
                      .arg(QDir::toNativeSeparators(m_filePath));
    return false;
}

void SettingsStore::beginBatch()
{
    ++m_batchDepth;
}

bool SettingsStore::endBatch()
{
    if (m_batchDepth == 0 || --m_batchDepth > 0 || !m_settings)
        return true;
    return flush();
}

} // namespace nebra
