#pragma once

#include <QMainWindow>

#include <functional>

class QAction;
class QLabel;
class QScrollArea;

namespace nebra {

class EditorPanel;
class LayoutCanvas;
class LayoutDocument;
class WellSelection;

// The layout editor's window: the plate, the controls beside it, the menus
// and the tool bar. The title carries the file's name and a marker while
// there are unsaved changes; closing with unsaved changes asks whether to
// save them. Every question goes through nebra::Messages and every file
// dialog through nebra::Dialogs.
class LayoutEditorWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit LayoutEditorWindow(LayoutDocument& document, QWidget* parent = nullptr);

    LayoutCanvas* canvas() const { return m_canvas; }
    EditorPanel* panel() const { return m_panel; }
    WellSelection& selection() const { return *m_selection; }
    QAction* action(const QString& name) const;

    // Saves to the document's file, or asks for one; false when nothing was saved.
    bool saveDocument();
    bool saveDocumentAs();
    // The folder "Save Layout As" opens in: the folder the document may only be
    // saved to, else its own file's folder, else the start folder when it
    // exists, else the home folder.
    QString saveAsFolder() const;
    // Where a new layout is saved by default (the suite's layouts folder).
    void setStartFolder(const QString& folder) { m_startFolder = folder; }
    // True when there are no unsaved changes left (saved or discarded) and the caller may go on.
    bool maybeSave();

    void copyWells();
    void pasteWells();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void createMenus();
    void createFileActions(QMenu* menu);
    void createEditActions(QMenu* menu);
    void createWellActions(QMenu* menu);
    void createViewActions(QMenu* menu);
    QAction* makeAction(QMenu* menu, const QString& text, const QKeySequence& keys,
                        std::function<void()> slot);
    void connectPanel();
    void updateTitle();
    void newLayout();
    void openLayout();
    void zoomBy(double factor);
    void showError(const QString& text);
    void showAbout();

    LayoutDocument& m_document;
    WellSelection* m_selection = nullptr;
    LayoutCanvas* m_canvas = nullptr;
    QScrollArea* m_scroll = nullptr;
    EditorPanel* m_panel = nullptr;
    QLabel* m_folderLabel = nullptr;
    QString m_startFolder;
};

} // namespace nebra
