#pragma once

#include "DialogScript.h"
#include "FolderTreeControl.h"
#include "MainWindow.h"
#include "MessageRecorder.h"
#include "SecurityFixture.h"
#include "SettingsStore.h"
#include "ShellNotifications.h"
#include "TestFiles.h"
#include "UserFolders.h"

#include <QCoreApplication>
#include <QTest>

#include <memory>
#include <optional>

namespace nebra::test {

// The Organiser's main window over redirected user folders, its data folders
// under "<root>/Lab Data", with every message box and dialog answered by the
// test. Settings are written with set() before load(); secure() adds a
// security site first. One per test function; the window is destroyed
// first, before the folders and seams it uses.
struct LoadedOrganiser
{
    UserFolders folders;
    MessageRecorder messages;
    DialogScript dialogs;
    std::optional<SecurityFixture> security; // made by secure()
    int processEnds = 0;                     // the window's calls to end the process
    qint64 now = 0;                          // the security manager's clock, in milliseconds
    std::unique_ptr<MainWindow> window;      // last, so that it goes first

    LoadedOrganiser()
    {
        set(QStringLiteral("Paths/ParentDirectory"), folders.root() + QStringLiteral("/Lab Data"));
    }

    // A path below the data folders' "My Assays".
    QString doc(const QString& relative) const
    {
        return folders.root() + QStringLiteral("/Lab Data/My Assays/") + relative;
    }
    static void set(const QString& key, const QVariant& value) { SettingsStore().setValue(key, value); }
    static QVariant stored(const QString& key) { return SettingsStore().value(key, {}); }

    // Switches security on with a site whose one user, jsmith ("correct
    // horse", "Jane Smith"), holds the rights given, and queues jsmith's log-in
    // unless told not to.
    SecurityFixture& secure(const QStringList& rights = {}, bool logIn = true)
    {
        security.emplace(folders.root() + QStringLiteral("/site"));
        security->createSite(rights);
        set(QStringLiteral("Settings/SecurityConfigured"), true);
        if (logIn)
            dialogs.logIn(QStringLiteral("jsmith"), QStringLiteral("correct horse"));
        return *security;
    }

    // Creates and loads the window, in place of one loaded earlier. The
    // window's end of the process counts processEnds; its security manager
    // reads the clock from now, polled as often as pollIntervalMs says.
    MainWindow::LoadOutcome start(int pollIntervalMs = 1000)
    {
        MainWindowOptions options;
        options.instanceName = QStringLiteral("%1-%2").arg(
            QCoreApplication::applicationName(), QString::number(QCoreApplication::applicationPid()));
        options.endProcess = [this] { ++processEnds; };
        options.securityManager.clock = [this] { return now; };
        options.securityManager.pollIntervalMs = pollIntervalMs;
        window.reset(); // a window loaded earlier ends before the next starts
        window = std::make_unique<MainWindow>(options);
        return window->Load();
    }

    // As start(), then waits (within a bound) for the tree's branches to be
    // read and the folders' watches to be in place; the test program ends if
    // the window does not load.
    MainWindow& load(int pollIntervalMs = 1000)
    {
        if (start(pollIntervalMs) != MainWindow::LoadOutcome::Loaded)
            qFatal("The Organiser did not load");
        const auto* tree = window->findChild<FolderTreeControl*>();
        auto* notifications = window->findChild<ShellNotifications*>();
        static_cast<void>(QTest::qWaitFor(
            [tree, notifications] {
                return !tree->isBusy() && (!notifications || !notifications->source().isWalking());
            },
            10000));
        return *window;
    }
};

} // namespace nebra::test
