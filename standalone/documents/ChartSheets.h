// ChartSheets: a chart as a table, for the forms of output that draw nothing.
#pragma once

#include "standalone/documents/ResultDocument.h"

namespace orv {

// What a reader needs: one row a series, with the number of its points and the range of each axis.
SheetContent RangesOfSeries(const ChartContent& chart);

// What a program needs: one row a point, with the name of its series, x and y.
SheetContent PointsOfSeries(const ChartContent& chart);

}  // namespace orv
