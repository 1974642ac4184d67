#pragma once

#include <QTreeView>

#include <functional>

namespace nebra {

// The file list's view: tells its owner about a selection change the user is
// about to make, before the selection moves.
class FileListView : public QTreeView
{
    Q_OBJECT
public:
    using QTreeView::QTreeView;

    std::function<void(const QModelIndex&)> beforeUserSelection;
    bool isEditing() const { return state() == EditingState; }

protected:
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;
};

} // namespace nebra
