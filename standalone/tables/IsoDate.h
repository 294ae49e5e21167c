// Dates as day numbers: days since 1970-01-01 in the proleptic Gregorian calendar, years 0000 to 9999.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orv {

// True when the text has the form dddd-dd-dd, whether or not it names a day of the calendar.
bool LooksLikeIsoDate(std::string_view text);

// The day number of a date written as YYYY-MM-DD: 0 for 1970-01-01, -1 for 1969-12-31. Empty for any other form, for
// blanks around it, and for a day that the calendar does not have.
std::optional<int> DayNumber(std::string_view text);

// The date of a day number as YYYY-MM-DD; the inverse of DayNumber. A part of a day is left out (1.9 is the day 1).
// Empty for a day outside the years 0000 to 9999 and for NaN.
std::string IsoDate(double day);

}  // namespace orv
