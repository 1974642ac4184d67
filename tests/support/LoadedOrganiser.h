#pragma once

#include "DialogScript.h"
#include "MainWindow.h"
#include "MessageRecorder.h"
#include "SettingsStore.h"
#include "TestFiles.h"
#include "UserFolders.h"

#include <QCoreApplication>

#include <functional>
#include <memory>

namespace nebra::test {

// The Organiser's main window over redirected user folders, its data folders
// under "<root>/Lab Data", with every message box and dialog answered by the
// test. Settings are written with set() before load(). One per test function;
// the window is destroyed first, before the folders and seams it uses.
struct LoadedOrganiser
{
    UserFolders folders;
    MessageRecorder messages;
    DialogScript dialogs;
    std::unique_ptr<MainWindow> window;

    LoadedOrganiser()
    {
        set(QStringLiteral("Paths/ParentDirectory"), folders.root() + QStringLiteral("/Lab Data"));
    }
    ~LoadedOrganiser() { window.reset(); }
    LoadedOrganiser(const LoadedOrganiser&) = delete;
    LoadedOrganiser& operator=(const LoadedOrganiser&) = delete;

    // A path below the data folders' "My Assays".
    QString doc(const QString& relative) const
    {
        return folders.root() + QStringLiteral("/Lab Data/My Assays/") + relative;
    }
    static void set(const QString& key, const QVariant& value) { SettingsStore().setValue(key, value); }
    static QVariant stored(const QString& key) { return SettingsStore().value(key, {}); }

    // Creates and loads the window, in place of one loaded earlier; the test
    // program ends if it does not load.
    // The window's end of the process after a forced log-out is a no-op unless
    // adjust sets it.
    MainWindow& load(const std::function<void(MainWindowOptions&)>& adjust = {})
    {
        MainWindowOptions options;
        options.instanceName = QStringLiteral("%1-%2").arg(
            QCoreApplication::applicationName(), QString::number(QCoreApplication::applicationPid()));
        options.endProcess = [] {};
        if (adjust)
            adjust(options);
        window.reset(); // a window loaded earlier ends before the next starts
        window = std::make_unique<MainWindow>(options);
        if (window->Load() != MainWindow::LoadOutcome::Loaded)
            qFatal("The Organiser did not load");
        return *window;
    }
};

} // namespace nebra::test
