#pragma once

#include "PlateLayout.h"

#include <QList>
#include <QRect>
#include <QString>

#include <optional>

namespace nebra {

// A rectangle of wells copied from a plate, and its text on the clipboard:
// a first line "# Nebra wells <rows> x <columns>", then one line per row of
// tab-separated cells "role,concentration,label" (the concentration may be
// empty; the label is last so that it may hold commas).
struct WellBlock
{
    int rows = 0;
    int columns = 0;
    QList<Well> wells; // row order

    static WellBlock Copy(const PlateLayout& layout, const QRect& area);
    QString toText() const;
    // Nothing when the text is not a block of wells.
    static std::optional<WellBlock> FromText(const QString& text);
};

} // namespace nebra
