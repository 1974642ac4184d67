#pragma once

#include "SettingsStore.h"
#include "SuitePaths.h"
#include "TestFiles.h"
#include "UserFolders.h"

#include <QByteArrayList>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

namespace nebra::test {

// Copies of the argument recorder (ArgvRecorder.cpp) standing in for the
// suite's programs, in a folder whose path holds blanks, plus one named
// "xdg-open" in binFolder() for tests that put it on PATH. Each start of a
// copy leaves one record: the argv it received.
class RecordingPrograms
{
public:
    RecordingPrograms()
    {
        for (const char* folder : {"Suite Programs", "bin", "records"})
            QDir(m_dir.path()).mkdir(QLatin1String(folder));
        for (const char* name : {"Assay Application", "Layout Editor", "Read Configuration Editor"})
            QFile::copy(QStringLiteral(NEBRA_ARGV_RECORDER), program(QLatin1String(name)));
        QFile::copy(QStringLiteral(NEBRA_ARGV_RECORDER), binFolder() + QStringLiteral("/xdg-open"));
        qputenv("NEBRA_RECORDER_DIR", QFile::encodeName(m_dir.filePath(QStringLiteral("records"))));
    }

    QString program(const QString& name) const
    {
        return m_dir.filePath(QStringLiteral("Suite Programs/") + name);
    }
    QString binFolder() const { return m_dir.filePath(QStringLiteral("bin")); }

    // Sets the suite's programs (assay application, layout editor, read
    // configuration editor) in the store to the recording copies.
    void configure(SettingsStore& store) const
    {
        for (const auto& [setting, name] : {std::pair{"AssayApplicationPath", "Assay Application"},
                                            {"LayoutEditorPath", "Layout Editor"},
                                            {"ReadConfigurationEditorPath", "Read Configuration Editor"}})
            QVERIFY(store.setValue(QStringLiteral("Paths/") + QLatin1String(setting),
                                   program(QLatin1String(name))));
    }

    // The argv of every finished start so far, in no particular order.
    QList<QByteArrayList> records() const
    {
        QList<QByteArrayList> result;
        QDir folder(m_dir.filePath(QStringLiteral("records")));
        for (const QString& name : folder.entryList({QStringLiteral("*.argv")}, QDir::Files))
            result.append(
                readFile(folder.filePath(name)).chopped(1).split('\0')); // whole: renamed into place
        return result;
    }

    bool waitForRecords(int count) const
    {
        return QTest::qWaitFor([&] { return records().size() >= count; }, 10000);
    }

    void clear() const
    {
        QDir folder(m_dir.filePath(QStringLiteral("records")));
        for (const QString& name : folder.entryList(QDir::Files))
            folder.remove(name);
    }

private:
    QTemporaryDir m_dir;
};

// Redirected user folders holding the suite's settings and paths, with the
// suite's programs (assay application, layout editor, read configuration
// editor) set to recording copies. One per test function; needs
// nebra_use_argv_recorder(test).
struct RecordedSuite
{
    UserFolders folders;
    RecordingPrograms programs;
    SettingsStore store{folders.settingsFile()};
    SuitePaths paths{store};

    RecordedSuite() { programs.configure(store); }
};

} // namespace nebra::test
