// Day numbers from month, day and year.
#pragma once

namespace orv {

// What JulianDay gives for a date that does not exist: year 0, or a month outside 1 to 12.
inline constexpr double kInvalidDate = -8.88e-36;

// The Julian day number of a date, up to a day for years before our era, whose products are cut towards zero; Gregorian
// from 15 October 1582 on, Julian before it. Years count without a year 0: -1 is 1 BC. The day is not checked, so day
// 31 of any month passes. Source: Press et al., Numerical Recipes, julday.
double JulianDay(double month, double day, double year);

}  // namespace orv
