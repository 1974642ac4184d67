#include "FileItemDelegate.h"

#include "FileListModel.h"

#include <QApplication>
#include <QStyle>

namespace nebra {

void FileItemDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (index.column() != 0)
        return;
    option->icon = QApplication::style()->standardIcon(
        index.data(FileListModel::IsFolderRole).toBool() ? QStyle::SP_DirIcon : QStyle::SP_FileIcon);
    option->features |= QStyleOptionViewItem::HasDecoration;
}

} // namespace nebra
