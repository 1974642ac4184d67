#include "FileListView.h"

#include "FileItemDelegate.h"
#include "FileListModel.h"

#include <QHeaderView>
#include <QLineEdit>

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

bool FileListView::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event)
{
    if (!QTreeView::edit(index, trigger, event))
        return false;
    // The view selects the whole text once the editor is made; narrow it
    // afterwards. A leading dot (".hidden") is part of the name, not an extension.
    auto* editor = qobject_cast<QLineEdit*>(indexWidget(index));
    if (!editor || index.data(FileListModel::IsFolderRole).toBool())
        return true;
    const qsizetype dot = editor->text().lastIndexOf(QLatin1Char('.'));
    if (dot > 0)
        editor->setSelection(0, int(dot));
    return true;
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
