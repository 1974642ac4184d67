#include "FileListView.h"

namespace nebra {

QItemSelectionModel::SelectionFlags FileListView::selectionCommand(const QModelIndex& index,
                                                                   const QEvent* event) const
{
    // Only changes the user makes (an event) count; programmatic ones are announced by the control.
    if (event && beforeUserSelection)
        beforeUserSelection(index);
    return QTreeView::selectionCommand(index, event);
}

} // namespace nebra
