#pragma once

class QWidget;

namespace nebra {

class BrowserControl;
class FileListControl;
class FolderTreeControl;
class PlateLayoutViewer;
class ShortcutsBar;
class StatusBarControl;
class ToolBarsControl;

// The controls of the main window, made with it and living as long as it.
// The window hands them to the objects that act on them.
struct MainWindowControls
{
    ToolBarsControl& tools;
    StatusBarControl& statusBar;
    ShortcutsBar& shortcuts;
    FolderTreeControl& tree;
    FileListControl& list;
    // The browser and the plate layout viewer share the preview area; the
    // viewer, when shown, lies over the browser.
    QWidget& previewArea;
    PlateLayoutViewer& plateViewer;
    BrowserControl& browser;
    // The container of the panes, placed by the resize rule in the client area.
    QWidget& panes;
};

} // namespace nebra
