#pragma once

#include <QStyledItemDelegate>

namespace nebra {

// An item delegate that shows where the keyboard focus is. In a view that has
// the focus the current item is framed however the focus got there (the
// style frames it only after a key moved the focus); in a view without it the
// selection is drawn in a quieter colour, so that of the panes showing a
// selection the one that takes the keys stands out.
class FocusVisibleDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

} // namespace nebra
