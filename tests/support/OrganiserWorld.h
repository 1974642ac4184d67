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
    ToolBarsControl* tools = nullptr;
    ShortcutsBar* shortcuts = nullptr;
    FolderTreeControl* tree = nullptr;
    FileListControl* list = nullptr;
    std::unique_ptr<CommandControls> switches;

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
        createControls();
    }

    QString data(const QString& relative) const
    {
        return paths.MyAssaysFolder() + QLatin1Char('/') + relative;
    }

    // What the tree reads, with instrument drivers in use or not; the root's
    // page is the welcome page in the suite's data folder.
    OrganiserTreeSources treeSources(bool instrumentDriversInUse = true)
    {
        return {resources, settings, paths, drivers, instrumentDriversInUse, [this] {
                    return paths.SuiteDataFolder() + QStringLiteral("/Organiser.mht");
                }};
    }

private:
    void createControls()
    {
        tools = new ToolBarsControl(&window);
        for (const ToolDefinition& tool : ToolDefinitions::tools())
            tools->addTool(tool);
        tools->addToolBarItems(ToolDefinitions::toolBarItems());
        auto* central = new QWidget(&window);
        auto* layout = new QHBoxLayout(central);
        shortcuts = new ShortcutsBar(central);
        tree = new FolderTreeControl(central);
        list = new FileListControl(central);
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
        switches = std::make_unique<CommandControls>(*tools, *tree);
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

// The world with the Organiser's tree logic on its controls; build() fills the tree.
struct TreeWorld : OrganiserWorld
{
    explicit TreeWorld(bool instrumentDriversInUse = true)
        : organiser(*tree, *list, *shortcuts, treeSources(instrumentDriversInUse))
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
