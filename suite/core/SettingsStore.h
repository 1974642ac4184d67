#pragma once

#include <QString>
#include <QVariant>

#include <memory>

#include <sys/types.h>

class QSettings;

namespace nebra {

// The suite's one per-user settings file, "Nebra/Suite.ini" under the XDG
// configuration folder, in INI format. Keys are "Group/Name".
//
// A missing file means defaults. A file that cannot be read, or that is not a
// settings file, also means defaults, and warning() says so; such a file is
// left exactly as it is until a value is written, and then it is first kept
// aside under a ".corrupt-<time>" name. Every write replaces the file
// atomically.
//
// Beside the user's file, the store reads the administrator's system-wide
// file, "/etc/xdg/Nebra/Suite.ini" and nowhere else (no environment variable
// moves it), and keeps it apart: values that decide the site's security
// policy are taken from there (see SecuritySettings), so a user cannot weaken
// them by editing the file of their own. The system file is trusted only
// while root owns it and its folder and neither is writable by group or
// others. The user's file is never the system file: when the environment
// makes the user's file that same file, the user's file is left unread and
// unwritten. The store never writes the system file.
class SettingsStore
{
public:
    SettingsStore();
    explicit SettingsStore(const QString& filePath);
    ~SettingsStore();
    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;

    static QString defaultFilePath();
    // The system-wide file of every installation.
    static inline const QString SitePolicyFile = QStringLiteral("/etc/xdg/Nebra/Suite.ini");
    // Where the system-wide file is read and written: SitePolicyFile.
    static QString systemFilePath();
    // The only user who may own the system-wide file and its folder: root.
    static uid_t systemFileOwner();
    // Moves the system-wide file, and names the user who must own it, for
    // the rest of the process. Only the composition root of a test calls
    // this, to keep the tests away from the machine's own policy; the
    // programs never do, so nothing outside a program can move its policy.
    static void useSystemFile(const QString& path, uid_t owner);

    // The system-wide file as read at construction; null when there is none.
    const SettingsStore* system() const { return m_system.get(); }
    // Empty when the system-wide file is absent or healthy; otherwise why it
    // cannot be used (unreadable, not a settings file, or open to changes by
    // others than root) and what fixes it. Security must then refuse to
    // start, never run unsecured.
    QString systemProblem() const;
    // True when the system-wide file turns security on ("[Settings]
    // SecurityConfigured=true") or names a security database: every
    // "[Security]" value then comes from it alone.
    bool systemSetsSecurityPolicy() const;

    QString filePath() const { return m_filePath; }

    // Empty while the file is healthy or absent; otherwise a sentence for the user.
    QString warning() const { return m_warning; }

    // Reads a value. With fresh set, the file is checked for changes made by
    // another program since it was last read.
    QVariant value(const QString& key, const QVariant& defaultValue, bool fresh = false) const;

    // Writes one value. Returns false, with lastError() set, when the file
    // could not be written; nothing on disk is then changed.
    bool setValue(const QString& key, const QVariant& value);

    // Between beginBatch() and the matching endBatch() writes are collected
    // and reach the disk together.
    void beginBatch();
    bool endBatch();

    QString lastError() const { return m_lastError; }

private:
    struct SystemScope
    {
    };
    SettingsStore(const QString& filePath, SystemScope);
    void openSystem();
    void open();
    // Keeps the user's file shut when it is the system-wide file itself.
    bool refuseSystemFileAsOwn();
    bool setAside();
    bool flush();

    QString m_filePath;
    QString m_warning;
    QString m_unusable; // why the file cannot be used, when it cannot
    QString m_lastError;
    std::unique_ptr<QSettings> m_settings; // null while the file is unusable
    int m_batchDepth = 0;
    bool m_isSystemFile = false;             // the user's file is the system-wide file: never written
    std::unique_ptr<SettingsStore> m_system; // only in a user's store
    QString m_systemDistrust;                // why the system-wide file cannot be trusted, if it cannot
};

} // namespace nebra
