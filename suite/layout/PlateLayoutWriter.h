#pragma once

#include "PlateLayout.h"

#include <QByteArray>
#include <QString>

namespace nebra {

// Writes a layout in the ".mlo" format that PlateLayout reads (docs/formats.md).
//
// The text is canonical: the header comment, [Layout] with Name, Rows and
// Columns, then [Wells] listing every well that is not empty in row order, all
// with CR LF line ends. A layout with concentrations also gets "Version=2" and
// a [Concentrations] section; one without stays in version 1, so that every
// program that reads layouts today reads it too. Reading a canonical file and
// writing it again gives the same bytes.
class PlateLayoutWriter
{
public:
    static QByteArray Serialise(const PlateLayout& layout);

    // Replaces the file at path through QSaveFile: the old file stays whole
    // until the new one is complete. On failure sets error and returns false.
    static bool Save(const PlateLayout& layout, const QString& path, QString& error);

    // Shortest text that reads back as the same number.
    static QString formatConcentration(double value);
};

} // namespace nebra
