#pragma once

#include "FolderNode.h"

#include <QList>
#include <QMap>
#include <QWidget>

class QLabel;
class QModelIndex;
class QToolBar;
class QToolButton;
class QTreeView;

namespace nebra {

class FolderTreeModel;

// The folder tree pane: a caption, the pane's own button bar (buttons keyed
// by number) and a tree of folder nodes.
//
// The control performs its navigation buttons itself: Back (501) and
// Forward (500) walk the history of current nodes it keeps, Up (504) goes to
// the current node's parent. It enables Back and Forward as its history
// allows; whoever owns the control decides when Up is enabled. Every button
// click, those three included, is reported by buttonClicked(key); the
// command buttons (every other key with a caption) are also offered on the
// tree's context menu.
//
// Display mode Compact (1) is the compact tree, Explorer (2) the explorer
// presentation (decorated root, wider indentation, alternating rows, paths as tips).
class FolderTreeControl : public QWidget
{
    Q_OBJECT
public:
    enum NavigationButton
    {
        ForwardButton = 500,
        BackButton = 501,
        UpButton = 504
    };

    // The state argument of currentNodeChanged().
    enum ChangeState
    {
        SelectedChange = 0,   // the user picked the node or the program set it
        NavigationChange = 1, // the control's Back, Forward or Up button moved to it
    };

    // The presentations; the numbers are those the settings have always stored.
    enum class DisplayMode
    {
        Compact = 1,
        Explorer = 2,
    };

    explicit FolderTreeControl(QWidget* parent = nullptr);
    ~FolderTreeControl() override;

    void setCaption(const QString& caption);
    QString caption() const;

    void setDisplayMode(DisplayMode mode);
    DisplayMode displayMode() const { return m_displayMode; }

    // Adds a button with the key and caption; a caption of one blank is a spacer.
    void addButton(int key, const QString& caption);
    // A separator is listed in buttonKeys() under its own key.
    void addSeparator(int key);
    void setButtonEnabled(int key, bool enabled);
    bool isButtonEnabled(int key) const;
    QList<int> buttonKeys() const { return m_buttonOrder; }
    QString buttonCaption(int key) const;
    // Clicks a button as the user would (nothing happens while it is disabled).
    void clickButton(int key);

    // The node collection and its operations.
    FolderTreeModel& nodes() const { return *m_model; }
    int count() const;
    FolderNode node(int index) const; // zero-based, in display order
    FolderNode addNode(const QString& text);
    FolderNode addNode(const FolderNode& parent, const QString& text);
    bool removeNode(const FolderNode& node);
    // Removes every node and forgets the history.
    void clear();
    // Adding many nodes: the view hears of them once, at endUpdate(). The
    // current node stays current, without events, when it is still there.
    void beginUpdate();
    void endUpdate();
    // Nodes are still being read from the disk: the tree shows a busy pointer.
    // idle() follows when it is no longer busy.
    void setBusy(bool busy);
    bool isBusy() const { return m_busy; }

    FolderNode currentNode() const;
    // Makes node the current (selected) node, opening its ancestors; emits
    // currentNodeChanged() and nodeSelected() when it was not current yet.
    void setCurrentNode(const FolderNode& node);

    bool canGoBack() const;
    bool canGoForward() const;

    QTreeView* view() const { return m_view; }

Q_SIGNALS:
    void buttonClicked(int key);
    // The current node changed (before nodeSelected); state is a ChangeState.
    void currentNodeChanged(const FolderNode& node, int state);
    // A node became the selected one.
    void nodeSelected(const FolderNode& node);
    // The nodes being read from the disk have all arrived.
    void idle();

private:
    void onCurrentChanged(const QModelIndex& current, const QModelIndex& previous);
    void onButton(int key);
    void goBack();
    void goForward();
    void goUp();
    void navigateTo(const FolderNode& node);
    void pruneHistory();
    void updateHistoryButtons();
    void applyExpansion();
    void showContextMenu(const QPoint& position);

    QLabel* m_caption;
    QToolBar* m_buttonBar;
    QTreeView* m_view;
    FolderTreeModel* m_model;
    QMap<int, QToolButton*> m_buttons;
    QList<int> m_buttonOrder;
    QList<FolderNode> m_back;
    QList<FolderNode> m_forward;
    FolderNode m_currentBeforeUpdate;
    DisplayMode m_displayMode = DisplayMode::Compact;
    bool m_navigating = false;
    bool m_busy = false;
};

} // namespace nebra
