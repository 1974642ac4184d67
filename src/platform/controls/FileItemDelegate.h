#pragma once

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
};

} // namespace nebra
