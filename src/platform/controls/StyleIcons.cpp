#include "StyleIcons.h"

#include <QApplication>
#include <QHash>
#include <QPointer>

namespace nebra {

QIcon StyleIcons::icon(QStyle::StandardPixmap picture)
{
    // Made again when the application's style changes.
    static QPointer<QStyle> madeBy;
    static QHash<int, QIcon> icons;
    QStyle* const style = QApplication::style();
    if (madeBy != style) {
        icons.clear();
        madeBy = style;
    }
    auto known = icons.constFind(int(picture));
    if (known == icons.cend())
        known = icons.insert(int(picture), style->standardIcon(picture));
    return *known;
}

} // namespace nebra
