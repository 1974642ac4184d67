#include "FileItemDelegate.h"

#include "FileListModel.h"

#include "StyleIcons.h"

namespace nebra {

void FileItemDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    FocusVisibleDelegate::initStyleOption(option, index);
    if (index.column() != 0)
        return;
    const bool folder = index.data(FileListModel::IsFolderRole).toBool();
    if (folder)
        option->icon = StyleIcons::icon(QStyle::SP_DirIcon);
    else
        option->icon = m_documentIcon.isNull() ? StyleIcons::icon(QStyle::SP_FileIcon) : m_documentIcon;
    option->features |= QStyleOptionViewItem::HasDecoration;
}

} // namespace nebra
