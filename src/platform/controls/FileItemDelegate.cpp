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
    const bool folder = index.data(FileListModel::IsFolderRole).toBool();
    QIcon& icon = folder ? m_folder : m_file;
    // Made once: the style reads each picture's files for every icon it makes.
    if (icon.isNull())
        icon = QApplication::style()->standardIcon(folder ? QStyle::SP_DirIcon : QStyle::SP_FileIcon);
    option->icon = icon;
    option->features |= QStyleOptionViewItem::HasDecoration;
}

} // namespace nebra
