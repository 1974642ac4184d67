#pragma once

namespace nebra {

// Every command of the Organiser's menus, tool bar and tree buttons, and the
// tools that are not commands. The command table (ToolDefinitions) gives each
// its tool ID, caption and place; code names a command only by this enum, so a
// misspelt command does not compile.
enum class CommandId : int
{
    // The document commands, acting on the selected folder's document type;
    // the tree's buttons New, Open, Run and Help lead to New, Open, Run and HelpContext.
    New,
    Open,
    Run,
    Options,
    ChangePassword,
    LogOut,
    Exit,
    About,
    HelpContext,
    ContentsIndex,
    GettingStarted,
    Quorvix,
    AuditTrail,
    AcceptChange,
    Sign,
    // Tools without a command: a click on one does nothing beyond counting as activity.
    HelpHelp,
    FileMenu,
    ToolsMenu,
    HelpMenu,
};

} // namespace nebra
