#include "StyleIcons.h"

#include <QApplication>
#include <QHash>
#include <QPointer>

namespace nebra {

namespace {

struct Made
{
    QPointer<QStyle> by;
    QHash<int, QIcon> icons;
};

Made& made()
{
    static Made made;
    return made;
}

} // namespace

QIcon StyleIcons::icon(QStyle::StandardPixmap picture)
{
    Made& cache = made();
    QStyle* const style = QApplication::style();
    if (cache.by != style) { // the first time, or the application's style changed
        if (!cache.by)
            qAddPostRoutine([] { made().icons.clear(); }); // no picture outlives the application
        cache.icons.clear();
        cache.by = style;
    }
    auto known = cache.icons.constFind(int(picture));
    if (known == cache.icons.cend())
        known = cache.icons.insert(int(picture), style->standardIcon(picture));
    return *known;
}

QIcon StyleIcons::named(const QString& name)
{
    static const QHash<QString, QStyle::StandardPixmap> pictures{
        {QStringLiteral("user-home"), QStyle::SP_DirHomeIcon},
        {QStringLiteral("drive-harddisk"), QStyle::SP_DriveHDIcon},
        {QStringLiteral("view-list-details"), QStyle::SP_FileDialogDetailedView},
    };
    return icon(pictures.value(name, QStyle::SP_DirIcon));
}

} // namespace nebra
