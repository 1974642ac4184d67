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
// folder's name is selected whole.
class FileListView : public QTreeView
{
    Q_OBJECT
public:
    explicit FileListView(FileListModel* model, QWidget* parent = nullptr);

    std::function<void(const QModelIndex&)> beforeUserSelection;
    bool isEditing() const { return state() == EditingState; }
    using QTreeView::edit;

protected:
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;
};

} // namespace nebra
