#pragma once

#include "MainWindowControls.h"

namespace nebra {

struct SuiteComponents;

// The set-up of the main window's panes during start-up, step by step, and
// the showing and hiding of the shortcuts bar and the preview pane.
class PaneSetup
{
public:
    PaneSetup(const MainWindowControls& controls, const SuiteComponents& suite);

    // Shortcuts bar shown or collapsed as the settings say.
    void ApplyShortcutsBarSetting() const;
    void applyTreeDisplayMode() const;
    void configureTreeAndFileList() const;
    void addTreeButtons() const;
    // The shortcuts bar's groups: each document type's branch in the groups
    // the document type table names, the instrument's only with drivers in use.
    void buildShortcutsBar() const;
    void SetShortcutBarIcons() const;
    void showPanes() const;

    // Shown or hidden; the other panes take the room.
    void setShortcutsBarShown(bool shown) const;
    void setPreviewPaneShown(bool shown) const;

private:
    MainWindowControls m_controls;
    const SuiteComponents& m_suite;
};

} // namespace nebra
