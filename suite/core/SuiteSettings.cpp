#include "SuiteSettings.h"

#include "SettingsStore.h"

#include <algorithm>

namespace nebra {

namespace {
QString settingsKey(const char* name)
{
    return QStringLiteral("Settings/") + QLatin1String(name);
}
} // namespace

SuiteSettings::SuiteSettings(SettingsStore& store) : m_store(store) {}

bool SuiteSettings::boolValue(const char* key, bool defaultValue) const
{
    const QString text = m_store.value(settingsKey(key), QVariant()).toString().trimmed().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("1") || text == QLatin1String("yes"))
        return true;
    if (text == QLatin1String("false") || text == QLatin1String("0") || text == QLatin1String("no"))
        return false;
    return defaultValue;
}

int SuiteSettings::intValue(const char* key, int defaultValue, bool fresh) const
{
    bool ok = false;
    const int value = m_store.value(settingsKey(key), QVariant(), fresh).toString().trimmed().toInt(&ok);
    return ok ? value : defaultValue;
}

QString SuiteSettings::stringValue(const char* key) const
{
    return m_store.value(settingsKey(key), QString()).toString();
}

bool SuiteSettings::write(const char* key, const QVariant& value)
{
    return m_store.setValue(settingsKey(key), value);
}

int SuiteSettings::DiagnosticLogLevel() const
{
    return intValue("DiagnosticLogLevel", 0, true);
}
bool SuiteSettings::SetDiagnosticLogLevel(int level)
{
    return write("DiagnosticLogLevel", level);
}
bool SuiteSettings::PlusCaption() const
{
    return boolValue("PlusCaption", false);
}
bool SuiteSettings::ExplorerModeFlag() const
{
    return boolValue("ExplorerModeFlag", false);
}
bool SuiteSettings::SetExplorerModeFlag(bool on)
{
    return write("ExplorerModeFlag", on);
}
bool SuiteSettings::ShowShortcutsBar() const
{
    return boolValue("ShowShortcutsBar", true);
}
bool SuiteSettings::SetShowShortcuts(bool on)
{
    return write("ShowShortcutsBar", on);
}
bool SuiteSettings::ShowPreviewPane() const
{
    return boolValue("ShowPreviewPane", true);
}
bool SuiteSettings::SetShowPreviewPane(bool on)
{
    return write("ShowPreviewPane", on);
}
int SuiteSettings::CurrentHLD() const
{
    return intValue("CurrentHLD", 1);
}
bool SuiteSettings::SetCurrentHLD(int index)
{
    return write("CurrentHLD", index);
}
bool SuiteSettings::SecurityConfigured() const
{
    // Only the administrator's system-wide file can switch security off for a
    // site that it protects; one that cannot be read keeps security on, so
    // that the session refuses to start instead of running unsecured.
    if (!m_store.systemProblem().isEmpty() || m_store.systemSetsSecurityPolicy())
        return true;
    return boolValue("SecurityConfigured", false);
}
QString SuiteSettings::OrganiserFile() const
{
    return stringValue("OrganiserFile");
}
QString SuiteSettings::PageFolder() const
{
    return stringValue("PageFolder");
}
bool SuiteSettings::UseAlternativeWelcomePage() const
{
    return boolValue("UseAlternativeWelcomePage", false);
}
bool SuiteSettings::SkipDriverFolders() const
{
    return boolValue("SkipDriverFolders", false);
}
bool SuiteSettings::InstrumentDriversInUse() const
{
    return boolValue("InstrumentDriversInUse", true);
}
int SuiteSettings::ToolbarFlags() const
{
    return intValue("ToolbarFlags", 0);
}
int SuiteSettings::InstrumentFlags() const
{
    return intValue("InstrumentFlags", 0);
}
bool SuiteSettings::SuppressLayoutsBranch() const
{
    return boolValue("SuppressLayoutsBranch", false);
}

bool SuiteSettings::ShowFileListFilter() const
{
    return boolValue("ShowFileListFilter", true);
}
bool SuiteSettings::ShowRecentDocuments() const
{
    return boolValue("ShowRecentDocuments", true);
}
bool SuiteSettings::ShowInFileManager() const
{
    return boolValue("ShowInFileManager", true);
}
QStringList SuiteSettings::RecentDocuments() const
{
    return m_store.value(settingsKey("RecentDocuments"), QStringList()).toStringList();
}
bool SuiteSettings::SetRecentDocuments(const QStringList& paths)
{
    return write("RecentDocuments", paths);
}

// A day at most: an interval is kept in milliseconds in an int.
int SuiteSettings::NetworkPollSeconds() const
{
    const int seconds = intValue("NetworkPollSeconds", 2);
    return seconds < 0 ? 2 : std::min(seconds, 86400);
}
int SuiteSettings::NetworkTreePollSeconds() const
{
    const int seconds = intValue("NetworkTreePollSeconds", 10);
    return seconds < 0 ? 10 : std::min(seconds, 86400);
}
FolderWatchMode SuiteSettings::WatchMode() const
{
    const QString mode = stringValue("WatchMode").trimmed().toLower();
    if (mode == QLatin1String("notify"))
        return FolderWatchMode::Notify;
    if (mode == QLatin1String("poll"))
        return FolderWatchMode::Poll;
    return FolderWatchMode::Auto;
}

void SuiteSettings::BeginFolderUpdate()
{
    m_store.beginBatch();
}

void SuiteSettings::EndFolderUpdate()
{
    m_store.endBatch();
}

namespace {
const QString HelpGeometryKey = QStringLiteral("Help/Geometry");
const QString HelpTextSizeKey = QStringLiteral("Help/TextSize");
} // namespace

QByteArray SuiteSettings::HelpWindowGeometry() const
{
    return m_store.value(HelpGeometryKey, QByteArray()).toByteArray();
}

// Showing help must not rewrite the settings file when nothing changed.
bool SuiteSettings::SetHelpWindowGeometry(const QByteArray& geometry)
{
    return geometry == HelpWindowGeometry() || m_store.setValue(HelpGeometryKey, geometry);
}

int SuiteSettings::HelpTextSize() const
{
    return m_store.value(HelpTextSizeKey, 0).toInt();
}

bool SuiteSettings::SetHelpTextSize(int steps)
{
    return steps == HelpTextSize() || m_store.setValue(HelpTextSizeKey, steps);
}

} // namespace nebra
