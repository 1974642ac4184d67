#include "FileItemDelegate.h"

#include "FileListModel.h"

#include "StyleIcons.h"

namespace nebra {

void FileItemDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (index.column() != 0)
        return;
    const bool folder = index.data(FileListModel::IsFolderRole).toBool();
    option->icon = StyleIcons::icon(folder ? QStyle::SP_DirIcon : QStyle::SP_FileIcon);
    option->features |= QStyleOptionViewItem::HasDecoration;
}

} // namespace nebra
