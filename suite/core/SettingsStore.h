#pragma once

#include <QString>
#include <QVariant>

#include <memory>

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
class SettingsStore
{
public:
    SettingsStore();
    explicit SettingsStore(const QString& filePath);
    ~SettingsStore();
    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;

    static QString defaultFilePath();

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
    void open();
    bool setAside();
    bool flush();

    QString m_filePath;
    QString m_warning;
    QString m_lastError;
    std::unique_ptr<QSettings> m_settings; // null while the file is unusable
    int m_batchDepth = 0;
};

} // namespace nebra
