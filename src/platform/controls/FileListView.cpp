#include "FileListView.h"

#include "FileItemDelegate.h"
#include "FileListModel.h"

#include <QHeaderView>
#include <QLineEdit>

#include <algorithm>

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
    columns->resizeSection(0, m_nameWidth);
    connect(columns, &QHeaderView::sectionResized, this, [this](int column, int, int size) {
        if (column == 0 && !m_fitting)
            m_nameWidth = size; // the user's choice, kept when room comes back
    });
    columns->resizeSection(model->columnOf(FileListModel::DateModifiedColumn),
                           fontMetrics().horizontalAdvance(QStringLiteral("00 MMM 0000 00:00")) + 32);
    // A column shown or added later takes its room from the name, as a resize does.
    connect(model, &QAbstractItemModel::columnsInserted, this, &FileListView::fitColumns);
    connect(model, &QAbstractItemModel::columnsRemoved, this, &FileListView::fitColumns);
}

void FileListView::resizeEvent(QResizeEvent* event)
{
    QTreeView::resizeEvent(event);
    fitColumns();
}

void FileListView::fitColumns()
{
    QHeaderView* columns = header();
    const int last = columns->logicalIndex(columns->count() - 1);
    int others = 0;
    for (int column = 1; column < columns->count(); ++column) {
        if (columns->isSectionHidden(column))
            continue;
        // The last column stretches over what is left, but not below its usual size.
        others += column == last ? std::max(columns->sectionSizeHint(column), columns->defaultSectionSize())
                                 : columns->sectionSize(column);
    }
    const int room = viewport()->width() - others;
    m_fitting = true;
    columns->resizeSection(0, std::max(columns->sectionSizeHint(0), std::min(m_nameWidth, room)));
    m_fitting = false;
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
