#pragma once

#include "PlateLayout.h"

#include <QList>
#include <QString>

#include <utility>

namespace nebra {

// A dilution series of standards: the first point has the first
// concentration, each next one that divided by the dilution factor. Each
// point is repeated on as many wells as there are replicates.
//
// Across rows the points follow one another along a row, one column each,
// with the replicates in the rows below; across columns they run down a
// column, with the replicates in the columns to the right. The series starts
// at the given well and must fit on the plate.
struct StandardSeries
{
    enum class Direction
    {
        AcrossRows,
        AcrossColumns
    };

    double firstConcentration = 100;
    double dilutionFactor = 2;
    int points = 8;
    int replicates = 2;
    Direction direction = Direction::AcrossColumns;
    QString labelPrefix = QStringLiteral("S");

    double concentration(int point) const;

    // The wells the series sets, as (row * columns + column, well) in row
    // order; nothing, with error set, when the settings are not usable or the
    // series does not fit from the start well.
    QList<std::pair<int, Well>> plan(int rows, int columns, int startRow, int startColumn,
                                     QString& error) const;
};

} // namespace nebra
