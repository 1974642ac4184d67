#include "StyleIcons.h"

#include <QApplication>
#include <QFile>
#include <QHash>
#include <QPointer>

namespace nebra {

namespace {

struct Made
{
    QPointer<QStyle> by;
    QHash<int, QIcon> icons;
    QHash<QString, QIcon> documents;
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
            qAddPostRoutine([] { // no picture outlives the application
                made().icons.clear();
                made().documents.clear();
            });
        cache.icons.clear();
        cache.documents.clear();
        cache.by = style;
    }
    auto known = cache.icons.constFind(int(picture));
    if (known == cache.icons.cend())
        known = cache.icons.insert(int(picture), style->standardIcon(picture));
    return *known;
}

QIcon StyleIcons::document(const QString& name)
{
    icon(QStyle::SP_FileIcon); // the cache's first use
    Made& cache = made();
    auto known = cache.documents.constFind(name);
    if (known != cache.documents.cend())
        return *known;
    QIcon picture;
    for (int size : {16, 32, 64}) {
        const QString file = QStringLiteral(":/document-icons/%1-%2.png").arg(name).arg(size);
        if (QFile::exists(file))
            picture.addFile(file, QSize(size, size));
    }
    if (picture.isNull())
        picture = icon(QStyle::SP_FileIcon);
    return *cache.documents.insert(name, picture);
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
