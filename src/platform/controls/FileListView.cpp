#include "FileListView.h"

#include "FileItemDelegate.h"
#include "FileListModel.h"

#include <QHeaderView>

namespace nebra {

FileListView::FileListView(FileListModel* model, QWidget* parent) : QTreeView(parent)
{
    setModel(model);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    setAllColumnsShowFocus(true);
    setItemDelegate(new FileItemDelegate(this));
    setAccessibleName(QStringLiteral("File list"));
    QHeaderView* columns = header();
    columns->setSectionsClickable(true);
    columns->setSortIndicatorShown(true);
    columns->setSortIndicator(0, Qt::AscendingOrder);
    columns->setContextMenuPolicy(Qt::CustomContextMenu);
    columns->setAccessibleName(QStringLiteral("File list columns"));
    // Names are the longest; dates need room for the date and the time.
    columns->resizeSection(0, 300);
    columns->resizeSection(model->columnOf(FileListModel::DateModifiedColumn),
                           fontMetrics().horizontalAdvance(QStringLiteral("00 MMM 0000 00:00")) + 32);
}

QItemSelectionModel::SelectionFlags FileListView::selectionCommand(const QModelIndex& index,
                                                                   const QEvent* event) const
{
    // Only changes the user makes (an event) count; programmatic ones are announced by the control.
    if (event && beforeUserSelection)
        beforeUserSelection(index);
    return QTreeView::selectionCommand(index, event);
}

} // namespace nebra
