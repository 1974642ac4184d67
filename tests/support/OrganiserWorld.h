#pragma once

#include "CommandControls.h"
#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "InstalledDrivers.h"
#include "OrganiserTree.h"
#include "Resources.h"
#include "SettingsStore.h"
#include "ShortcutsBar.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "TestFiles.h"
#include "ToolBarsControl.h"
#include "ToolDefinitions.h"

#include <QHBoxLayout>
#include <QMainWindow>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace nebra::test {

// The Organiser's pieces without its main window: settings and paths in a
// temporary folder, the data folders under it, a driver catalogue of two
// drivers, and the real controls the tree and list logic act on, with the
// tools, the tree's buttons and the shortcuts bar's groups as start-up makes
// them, and the switches that enable the commands on them.
struct OrganiserWorld
{
    QTemporaryDir dir;
    Resources resources;
    SettingsStore store{dir.filePath("Suite.ini")};
    SuiteSettings settings{store};
    SuitePaths paths{store};
    InstalledDrivers drivers{paths};
    QMainWindow window;
    ToolBarsControl* tools = new ToolBarsControl(&window);
    QWidget* central = new QWidget(&window);
    ShortcutsBar* shortcuts = new ShortcutsBar(central);
    FolderTreeControl* tree = new FolderTreeControl(central);
    FileListControl* list = new FileListControl(central);
    std::unique_ptr<CommandControls> switches = std::make_unique<CommandControls>(*tools, *tree);

    OrganiserWorld()
    {
        paths.Initialise();
        paths.SetParentDirectory(dir.filePath("Data"));
        const QString catalogue = dir.filePath("drivers.json");
        writeFile(catalogue, R"({"drivers":[{"FullName":"Reader One"},{"FullName":"Reader Two"}]})");
        store.setValue(QStringLiteral("Paths/DriverCatalogue"), catalogue);
        for (const QString& folder :
             {paths.LayoutsFolder(), paths.ProtocolsFolder(), paths.ResultsFolder(), paths.ReportsFolder(),
              paths.ReadConfigurationsFolder() + QStringLiteral("/Reader One")})
            makeFolder(folder);
        for (const ToolDefinition& tool : ToolDefinitions::tools())
            tools->addTool(tool);
        tools->addToolBarItems(ToolDefinitions::toolBarItems());
        auto* layout = new QHBoxLayout(central);
        layout->addWidget(shortcuts);
        layout->addWidget(tree);
        layout->addWidget(list);
        window.setCentralWidget(central);
        const auto keyOf = [](CommandId id) { return ToolDefinitions::command(id).treeButton; };
        constexpr int Separator = ToolDefinitions::Separator;
        // clang-format off
        for (const auto& [key, caption] : {std::pair{int(FolderTreeControl::BackButton), "Back"},
                                           {FolderTreeControl::ForwardButton, "Forward"},
                                           {FolderTreeControl::UpButton, "Up"}, {Separator, ""},
                                           {keyOf(CommandId::New), "New"}, {keyOf(CommandId::Open), "Open"},
                                           {keyOf(CommandId::Run), "Run"}, {Separator, ""},
                                           {keyOf(CommandId::HelpContext), "Help"}})
            key == Separator ? tree->addSeparator(key) : tree->addButton(key, QLatin1String(caption));
        // clang-format on
        list->addColumn(QStringLiteral("Comment"));
        shortcuts->addItem(shortcuts->addGroup(QStringLiteral("Tasks")), QStringLiteral("Organiser"),
                           QStringLiteral("0"));
        const int folders = shortcuts->addGroup(QStringLiteral("Folders"));
        for (const auto& [caption, key] :
             {std::pair{"Organiser", "0"}, {"Instrument Data", "1"}, {"Protocols", "3"}})
            shortcuts->addItem(folders, QLatin1String(caption), QLatin1String(key));
        window.resize(900, 500);
    }

    QString data(const QString& relative) const
    {
        return paths.MyAssaysFolder() + QLatin1Char('/') + relative;
    }
};

// The world with the Organiser's tree logic on its controls, instrument
// drivers in use or not; the root's page is the welcome page in the suite's
// data folder. build() fills the tree.
struct TreeWorld : OrganiserWorld
{
    explicit TreeWorld(bool instrumentDriversInUse = true)
        : organiser(*tree, *list, *shortcuts,
                    {resources, settings, paths, drivers, instrumentDriversInUse,
                     [this] { return paths.SuiteDataFolder() + QStringLiteral("/Organiser.mht"); }})
    {
    }

    OrganiserTree organiser;

    void build()
    {
        organiser.InitialiseOrganiserTree();
        QVERIFY(filled());
    }
    // The branches' readings have arrived, within a bound.
    bool filled()
    {
        return QTest::qWaitFor([this] { return !organiser.isFilling(); }, 10000);
    }
};

} // namespace nebra::test
