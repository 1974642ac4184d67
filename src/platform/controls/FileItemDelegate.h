#pragma once

#include <QIcon>
#include <QStyledItemDelegate>

namespace nebra {

// Folder and file pictures in the file list's name column.
class FileItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

private:
    mutable QIcon m_folder;
    mutable QIcon m_file;
};

} // namespace nebra
