#pragma once

#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "Globals.h"
#include "Resources.h"
#include "SettingsStore.h"
#include "ShortcutsBar.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "TestFiles.h"
#include "ToolBarsControl.h"

#include <QHBoxLayout>
#include <QMainWindow>
#include <QTemporaryDir>
#include <QTest>

namespace nebra::test {

// The Organiser's pieces without its main window: settings and paths in a
// temporary folder, the data folders under it, a driver catalogue of two
// drivers, and the real controls the tree and list logic act on, with the
// tree's buttons and the shortcuts bar's groups as start-up makes them.
struct OrganiserWorld
{
    QTemporaryDir dir;
    Globals globals;
    QMainWindow window;
    ToolBarsControl* tools = nullptr;
    ShortcutsBar* shortcuts = nullptr;
    FolderTreeControl* tree = nullptr;
    FileListControl* list = nullptr;

    OrganiserWorld()
    {
        globals.resources = std::make_unique<Resources>();
        globals.store = std::make_unique<SettingsStore>(dir.filePath("Suite.ini"));
        globals.settings = std::make_unique<SuiteSettings>(*globals.store);
        globals.paths = std::make_unique<SuitePaths>(*globals.store);
        globals.paths->Initialise();
        globals.paths->SetParentDirectory(dir.filePath("Data"));
        const QString catalogue = dir.filePath("drivers.json");
        writeFile(catalogue, R"({"drivers":[{"FullName":"Reader One"},{"FullName":"Reader Two"}]})");
        globals.store->setValue(QStringLiteral("Paths/DriverCatalogue"), catalogue);
        globals.InstrumentDriversInUse = true;
        for (const QString& folder :
             {globals.paths->LayoutsFolder(), globals.paths->ProtocolsFolder(),
              globals.paths->ResultsFolder(), globals.paths->ReportsFolder(),
              globals.paths->ReadConfigurationsFolder() + QStringLiteral("/Reader One")})
            makeFolder(folder);
        createControls();
    }

    QString data(const QString& relative) const
    {
        return globals.paths->MyAssaysFolder() + QLatin1Char('/') + relative;
    }

private:
    void createControls()
    {
        tools = new ToolBarsControl(&window);
        for (const char* id : {"ID_New", "ID_Open", "ID_Run"})
            tools->addTool({QLatin1String(id), QLatin1String(id + 3), QStringLiteral("FileDropDown"), {}});
        tools->addToolBarItems(
            {QStringLiteral("ID_New"), QStringLiteral("ID_Open"), QStringLiteral("ID_Run")});
        auto* central = new QWidget(&window);
        auto* layout = new QHBoxLayout(central);
        shortcuts = new ShortcutsBar(central);
        tree = new FolderTreeControl(central);
        list = new FileListControl(central);
        layout->addWidget(shortcuts);
        layout->addWidget(tree);
        layout->addWidget(list);
        window.setCentralWidget(central);
        // clang-format off
        for (const auto& [key, caption] : {std::pair{501, "Back"}, {500, "Forward"}, {504, "Up"}, {609, ""},
                                           {605, "New"}, {606, "Open"}, {607, "Run"}, {609, ""}, {608, "Help"}})
            key == 609 ? tree->addSeparator(key) : tree->addButton(key, QLatin1String(caption));
        // clang-format on
        list->addColumn(QStringLiteral("Comment"));
        const int tasks = shortcuts->addGroup(QStringLiteral("Tasks"));
        shortcuts->addItem(tasks, QStringLiteral("Organiser"), QStringLiteral("0"));
        const int folders = shortcuts->addGroup(QStringLiteral("Folders"));
        shortcuts->addItem(folders, QStringLiteral("Organiser"), QStringLiteral("0"));
        shortcuts->addItem(folders, QStringLiteral("Instrument Data"), QStringLiteral("1"));
        shortcuts->addItem(folders, QStringLiteral("Protocols"), QStringLiteral("3"));
        window.resize(900, 500);
    }
};

} // namespace nebra::test
