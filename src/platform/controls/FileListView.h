#pragma once

#include <QTreeView>

#include <functional>

namespace nebra {

class FileListModel;

// The file list's view: rows of a FileListModel, several selectable, names
// edited in place, a clickable header with a sort indicator and a context
// menu. It tells its owner about a selection change the user is about to
// make, before the selection moves. Renaming a file starts with its name
// selected without the extension, so that typing keeps the extension; a
// folder's name is selected whole. When the view is too narrow for every
// column, the name column gives up room first, so that the others stay in view.
class FileListView : public QTreeView
{
    Q_OBJECT
public:
    explicit FileListView(FileListModel* model, QWidget* parent = nullptr);

    std::function<void(const QModelIndex&)> beforeUserSelection;
    bool isEditing() const { return state() == EditingState; }
    using QTreeView::edit;

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;

private:
    void fitColumns();
    int m_nameWidth = 300; // the name column's width when there is room
    bool m_fitting = false;
};

} // namespace nebra
