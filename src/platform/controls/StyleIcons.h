#pragma once

#include <QIcon>
#include <QStyle>

namespace nebra {

// The application style's standard pictures, each made once for the whole
// program. The style reads and decodes every size of a picture's files each
// time it is asked for one, and the tree, the file list and the shortcuts
// bar show the same folder pictures: at start-up that was read three times
// before the first paint.
class StyleIcons
{
public:
    static QIcon icon(QStyle::StandardPixmap picture);
    // The style's picture for a freedesktop icon name: "user-home",
    // "drive-harddisk", "view-list-details"; any other name is a folder.
    static QIcon named(const QString& name);
};

} // namespace nebra
