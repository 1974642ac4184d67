#pragma once

namespace nebra {

class MainWindow;

// The set-up of the main window's panes during start-up, step by step.
class PaneSetup
{
public:
    explicit PaneSetup(MainWindow& window);

    // Tree-pane button keys besides the document commands' own.
    enum ButtonKey
    {
        Forward = 500,
        Back = 501,
        Up = 504,
        FirstSpacer = 600,
        LastSpacer = 604,
        Separator = 609,
    };

    // Shortcuts bar shown (mode 0) or collapsed (mode 2) as the settings say.
    void ApplyShortcutsBarSetting() const;
    void applyTreeDisplayMode() const;
    void configureTreeAndFileList() const;
    void addTreeButtons() const;
    void buildShortcutsBar() const;
    void SetShortcutBarIcons() const;
    void showPanes() const;

private:
    MainWindow& m_window;
};

} // namespace nebra
