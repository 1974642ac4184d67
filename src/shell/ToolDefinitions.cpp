#include "ToolDefinitions.h"

#include <array>

namespace nebra::ToolDefinitions {

namespace {

using enum CommandId;

constexpr const char* General = "General";
constexpr const char* FileDropDown = "FileDropDown";
constexpr const char* HelpDropDown = "HelpDropDown";
constexpr const char* ToolsDropDown = "ToolsDropDown";

constexpr std::array Table{
    Command{New, "ID_New", "&New", FileDropDown, "", 605},
    Command{Open, "ID_Open", "&Open", FileDropDown, "", 606},
    Command{Run, "ID_Run", "&Run", FileDropDown, "", 607},
    Command{Exit, "ID_Exit", "E&xit", FileDropDown, "", 0},
    Command{About, "ID_About", "&About", HelpDropDown, "", 0},
    Command{HelpHelp, "ID_HelpHelp", "Help", HelpDropDown, "", 0},
    Command{Options, "ID_Options", "&Options...", FileDropDown, "", 0},
    // The tree's Help button is help on the selected folder: the same topic.
    Command{HelpContext, "ID_HelpContext", "Help", General, "", 608},
    Command{ContentsIndex, "ID_ContentsIndex", "Contents and Index", General, "", 0},
    Command{GettingStarted, "ID_GettingStarted", "Getting Started", General, "", 0},
    Command{Quorvix, "ID_Quorvix", "Quorvix on the Web", General, "", 0},
    Command{ChangePassword, "ID_ChangePassword", "&Change Password...", FileDropDown, "Change &Password", 0},
    Command{LogOut, "ID_LogOut", "&Log Out", General, "Log Out", 0},
    // Shown only inside a security session.
    Command{AuditTrail, "ID_AuditTrail", "&Audit Trail...", ToolsDropDown, "", 0},
    Command{AcceptChange, "ID_AcceptChange", "&Accept Change...", FileDropDown, "", 0},
    Command{Sign, "ID_Sign", "&Sign...", FileDropDown, "", 0},
    // The menus.
    Command{FileMenu, "ID_File", "&File", General, "", 0},
    Command{ToolsMenu, "ID_Tools", "&Tools", General, "", 0},
    Command{HelpMenu, "ID_Help", "&Help", General, "", 0},
};
constexpr std::size_t MenuCount = 3;

// A separator between groups of a menu.
constexpr std::optional<CommandId> Sep;

QStringList ids(std::initializer_list<std::optional<CommandId>> items)
{
    QStringList list;
    for (const std::optional<CommandId>& item : items)
        list.append(item ? toolId(*item) : QLatin1String(ToolBarsControl::Separator));
    return list;
}

ToolDefinition definition(const Command& row)
{
    return {QLatin1String(row.toolId), QLatin1String(row.caption), QLatin1String(row.category),
            QLatin1String(row.tipText)};
}

} // namespace

std::span<const Command> commands()
{
    return Table;
}

const Command& command(CommandId id)
{
    for (const Command& row : Table)
        if (row.id == id)
            return row;
    Q_UNREACHABLE(); // every CommandId has its row
}

QString toolId(CommandId id)
{
    return QLatin1String(command(id).toolId);
}

std::optional<CommandId> commandOfTool(const QString& id)
{
    for (const Command& row : Table)
        if (id == QLatin1String(row.toolId))
            return row.id;
    return std::nullopt;
}

std::optional<CommandId> commandOfTreeButton(int key)
{
    for (const Command& row : Table)
        if (row.treeButton != 0 && row.treeButton == key)
            return row.id;
    return std::nullopt;
}

QList<ToolDefinition> tools()
{
    QList<ToolDefinition> list;
    for (std::size_t i = 0; i < Table.size() - MenuCount; ++i)
        list.append(definition(Table[i]));
    return list;
}

QList<QPair<ToolDefinition, QStringList>> menus()
{
    return {
        {definition(command(FileMenu)),
         ids({New, Open, Run, AcceptChange, Sign, Sep, Options, ChangePassword, Sep, LogOut, Exit})},
        {definition(command(ToolsMenu)), ids({AuditTrail})},
        {definition(command(HelpMenu)),
         ids({HelpContext, ContentsIndex, GettingStarted, Sep, Quorvix, Sep, About})},
    };
}

QStringList toolBarItems()
{
    return ids({New, Open, Run, Sep, LogOut});
}

} // namespace nebra::ToolDefinitions
