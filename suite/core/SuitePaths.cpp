#include "SuitePaths.h"

#include "SettingsStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace nebra {

namespace {

QString withoutTrailingSeparator(QString path)
{
    while (path.size() > 1 && (path.endsWith(QLatin1Char('/')) || path.endsWith(QLatin1Char('\\'))))
        path.chop(1);
    return path;
}

// The XDG state folder (logs and other per-user state that is not configuration).
QString stateFolder()
{
    const QString fromEnvironment = qEnvironmentVariable("XDG_STATE_HOME");
    if (!fromEnvironment.isEmpty() && QDir::isAbsolutePath(fromEnvironment))
        return fromEnvironment;
    return QDir::homePath() + QStringLiteral("/.local/state");
}

} // namespace

SuitePaths::SuitePaths(SettingsStore& store) : m_store(store) {}

void SuitePaths::Initialise()
{
    // An installed suite keeps its data beside the programs; a build tree
    // uses the data folder of the sources.
    const QString besideProgram = QCoreApplication::applicationDirPath() + QStringLiteral("/../share/nebra");
    if (QFileInfo::exists(besideProgram + QStringLiteral("/drivers.json")))
        m_installedDataFolder = QDir::cleanPath(besideProgram);
    else if (QFileInfo::exists(QStringLiteral(NEBRA_INSTALL_DATA_DIR "/drivers.json")))
        m_installedDataFolder = QStringLiteral(NEBRA_INSTALL_DATA_DIR);
    else
        m_installedDataFolder = QStringLiteral(NEBRA_SOURCE_DATA_DIR);
}

QString SuitePaths::path(const char* key, const QString& defaultValue, bool fresh) const
{
    const QString value =
        m_store.value(QStringLiteral("Paths/") + QLatin1String(key), QString(), fresh).toString();
    return withoutTrailingSeparator(value.trimmed().isEmpty() ? defaultValue : value);
}

QString SuitePaths::ParentDirectory() const
{
    return path("ParentDirectory", QDir::homePath() + QStringLiteral("/Nebra Data"));
}

bool SuitePaths::SetParentDirectory(const QString& path)
{
    return m_store.setValue(QStringLiteral("Paths/ParentDirectory"), path);
}

QString SuitePaths::MyAssaysFolder() const
{
    return ParentDirectory() + QStringLiteral("/My Assays");
}
QString SuitePaths::LayoutsFolder() const
{
    return MyAssaysFolder() + QStringLiteral("/Microplate Layouts");
}
QString SuitePaths::ReadConfigurationsFolder() const
{
    return MyAssaysFolder() + QStringLiteral("/Read Configurations");
}
QString SuitePaths::ResultsFolder() const
{
    return MyAssaysFolder() + QStringLiteral("/Results");
}
QString SuitePaths::ProtocolsFolder() const
{
    return MyAssaysFolder() + QStringLiteral("/Protocols");
}
QString SuitePaths::ReportsFolder() const
{
    return MyAssaysFolder() + QStringLiteral("/Reports");
}

QString SuitePaths::LogFolder() const
{
    return path("LogFolder", stateFolder() + QStringLiteral("/Nebra"));
}

QString SuitePaths::SuiteDataFolder() const
{
    return path("SuiteDataFolder", m_installedDataFolder.isEmpty() ? QStringLiteral(NEBRA_SOURCE_DATA_DIR)
                                                                   : m_installedDataFolder);
}

QString SuitePaths::WizardsParentFolder() const
{
    return path("WizardsParentFolder", SuiteDataFolder());
}
QString SuitePaths::DriverCatalogueFile() const
{
    return path("DriverCatalogue", SuiteDataFolder() + QStringLiteral("/drivers.json"));
}

QString SuitePaths::LayoutEditorPath() const
{
    // An empty value written on purpose means "no layout editor"; only a
    // missing one falls back to the suite's own editor.
    const QVariant value = m_store.value(QStringLiteral("Paths/LayoutEditorPath"), QVariant(), true);
    if (value.isValid())
        return value.toString().trimmed().isEmpty() ? QString() : withoutTrailingSeparator(value.toString());
    return InstalledLayoutEditor();
}

QString SuitePaths::InstalledLayoutEditor()
{
    // Installed beside the Organiser, and built beside it in a build tree.
    const QString beside = QCoreApplication::applicationDirPath() + QStringLiteral("/nebra-layout-editor");
    return QFileInfo(beside).isExecutable() ? beside : QString();
}
QString SuitePaths::AssayApplicationPath() const
{
    return path("AssayApplicationPath", QString(), true);
}
QString SuitePaths::ReadConfigurationEditorPath() const
{
    return path("ReadConfigurationEditorPath", QString(), true);
}

QString SuitePaths::PreviewFileFor(const QString& documentPath) const
{
    const QFileInfo info(documentPath);
    const QString folder = documentPath.left(documentPath.size() - info.fileName().size());
    return folder + info.completeBaseName() + QStringLiteral(".mht");
}

QString SuitePaths::SecuredFolder() const
{
    return path("SecuredFolder", QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                                     QStringLiteral("/Nebra/Secured"));
}

bool SuitePaths::CreateSecuredFolder() const
{
    return QDir().mkpath(SecuredFolder());
}

} // namespace nebra
