#include "FocusVisibleDelegate.h"

#include <QWidget>

namespace nebra {

void FocusVisibleDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    const QWidget* view = option->widget;
    if (view && view->hasFocus()) {
        option->state |= QStyle::State_KeyboardFocusChange;
        return;
    }
    // The window's palette is active as long as the window is, whichever pane has the focus.
    option->palette.setColor(QPalette::Highlight, option->palette.color(QPalette::Mid));
    option->palette.setColor(QPalette::HighlightedText, option->palette.color(QPalette::Text));
}

} // namespace nebra
