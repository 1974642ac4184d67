#pragma once

#include <QPixmap>

namespace nebra {

// The small padlock shown beside a setting that security restrictions keep
// the user from editing. Drawn rather than loaded, so it needs no image file.
QPixmap lockPicture(int size = 32);

} // namespace nebra
