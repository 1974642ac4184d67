#pragma once

#include <QString>

class QObject;

namespace nebra {

class SettingsStore;

// The suite's folder and program-path component: the "[Paths]" group of the
// suite's settings file. Folder paths never end in a separator. The data
// folders are derived from ParentDirectory():
//
//   P                                  ParentDirectory
//   P/My Assays                        MyAssaysFolder
//   P/My Assays/Microplate Layouts     LayoutsFolder
//   P/My Assays/Read Configurations    ReadConfigurationsFolder
//   P/My Assays/Results                ResultsFolder
//   P/My Assays/Protocols              ProtocolsFolder
//   P/My Assays/Reports                ReportsFolder
class SuitePaths
{
public:
    explicit SuitePaths(SettingsStore& store);

    // Settles the defaults that depend on the installation. Call once after construction.
    void Initialise();

    QString ParentDirectory() const;
    // Persists the parent directory; false when the settings file could not be written.
    bool SetParentDirectory(const QString& path);

    QString MyAssaysFolder() const;
    QString LayoutsFolder() const;
    QString ReadConfigurationsFolder() const;
    QString ResultsFolder() const;
    QString ProtocolsFolder() const;
    QString ReportsFolder() const;

    // Receives the diagnostic log "NebraLog.txt".
    QString LogFolder() const;

    // The suite's installed data: pages, the driver and wizard catalogues.
    QString SuiteDataFolder() const;
    QString WizardsParentFolder() const;
    QString DriverCatalogueFile() const;

    // Programs of the suite's other applications; read from the file at each
    // use, so that a path another program has changed meanwhile takes effect.
    // Without a LayoutEditorPath setting the suite's own editor is used
    // (InstalledLayoutEditor); a setting that is present but empty means none.
    QString LayoutEditorPath() const;
    // "nebra-layout-editor" beside the running program, or "" when it is not there.
    static QString InstalledLayoutEditor();
    QString AssayApplicationPath() const;
    QString ReadConfigurationEditorPath() const;

    // The preview page that belongs to a document: same folder and base name, ".mht".
    QString PreviewFileFor(const QString& documentPath) const;

    // Folder that only a security session writes to, and the security manager of that session.
    QString SecuredFolder() const;
    bool CreateSecuredFolder() const;
    void SetSecurityManager(QObject* manager) { m_securityManager = manager; }
    QObject* SecurityManager() const { return m_securityManager; }

private:
    QString path(const char* key, const QString& defaultValue, bool fresh = false) const;

    SettingsStore& m_store;
    QString m_installedDataFolder;
    QObject* m_securityManager = nullptr;
};

} // namespace nebra
