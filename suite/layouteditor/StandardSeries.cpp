#include "StandardSeries.h"

#include <algorithm>
#include <cmath>

namespace nebra {

double StandardSeries::concentration(int point) const
{
    return firstConcentration / std::pow(dilutionFactor, point);
}

QList<std::pair<int, Well>> StandardSeries::plan(int rows, int columns, int startRow, int startColumn,
                                                 QString& error) const
{
    if (!(firstConcentration > 0) || !std::isfinite(firstConcentration)) {
        error = QStringLiteral("The first concentration must be a number greater than 0.");
        return {};
    }
    if (!(dilutionFactor >= 1) || !std::isfinite(dilutionFactor)) {
        error = QStringLiteral("The dilution factor must be 1 or more.");
        return {};
    }
    if (points < 1 || replicates < 1) {
        error = QStringLiteral("A series needs at least one point and one replicate.");
        return {};
    }
    const bool alongRow = direction == Direction::AcrossRows;
    const int spanRows = alongRow ? replicates : points;
    const int spanColumns = alongRow ? points : replicates;
    if (startRow + spanRows > rows || startColumn + spanColumns > columns) {
        error = QStringLiteral("A series of %1 points with %2 replicates needs %3 rows by %4 columns from "
                               "well %5; the plate has room for %6 by %7 there.")
                    .arg(points)
                    .arg(replicates)
                    .arg(spanRows)
                    .arg(spanColumns)
                    .arg(PlateLayout::wellName(startRow, startColumn))
                    .arg(std::max(0, rows - startRow))
                    .arg(std::max(0, columns - startColumn));
        return {};
    }
    QList<std::pair<int, Well>> wells;
    for (int r = 0; r < spanRows; ++r) {
        for (int c = 0; c < spanColumns; ++c) {
            const int point = alongRow ? c : r;
            wells.append(
                {(startRow + r) * columns + startColumn + c,
                 Well{WellRole::Standard, labelPrefix + QString::number(point + 1), concentration(point)}});
        }
    }
    return wells;
}

} // namespace nebra
