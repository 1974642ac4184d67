#pragma once

#include <QString>

class QObject;

namespace nebra {

class CommandDispatcher;
class ToolBarsControl;

// The main window's own commands of the Help menu and the menus' look and
// keyboard access.
class ShellCommands
{
public:
    // The maker's on-line help page, opened by "Quorvix on the Web".
    static constexpr const char* MakerPageAddress = "https://www.quorvix.example/support";
    static constexpr const char* MenuFontFamily = "Tahoma";

    // Sets the commands About and Quorvix. The About box is owned by owner.
    static void Register(CommandDispatcher& commands, QObject* owner, const QString& productTitle);

    // The About box: the product title, the program's version and the Qt version.
    static void ShowAbout(QObject* owner, const QString& productTitle);
    static QString aboutText(const QString& productTitle);

    // Opens the maker's page with the desktop's browser. When no browser can
    // be started a box says so and gives the address (owned by owner).
    static void OpenMakerPage(QObject* owner = nullptr);
    static QString noBrowserText();

    // Uses the Tahoma menu font where it is installed; returns whether it is.
    static bool ApplyMenuFont(ToolBarsControl& tools);

    // F1 for the context help, besides the menus' access keys (Alt+F, Alt+H
    // and the underlined letters).
    static void AddShortcutKeys(ToolBarsControl& tools);
};

} // namespace nebra
