// Dates as other statistics programs store them: which formats mean a date, and what its number counts.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace orv {

enum class StatisticsProgram : std::uint8_t { Sas, Spss, Stata };

// How the numbers of a variable become day numbers.
struct DateScale {
  double UnitsPerDay = 1.0;
  double FirstDay = 0.0;  // the day of the number 0, in days since 1970-01-01
};

// The scale of a variable that is shown in this format, such as "DATE9.", "EDATE10" or "%td"; empty unless the format
// shows dates or dates with times.
//
// SAS counts days or, with a time, seconds from 1960-01-01; SPSS seconds from 1582-10-14; Stata days (%td) or
// milliseconds (%tc) from 1960-01-01. Durations, times of day, and Stata's weeks, months, quarters, half-years and
// years are no dates, nor are its clock times with leap seconds (%tC).
std::optional<DateScale> DateScaleOf(StatisticsProgram program, std::string_view format);

// The day number of a value. A time of day is a part of a day.
double DayNumberOf(const DateScale& scale, double value);

}  // namespace orv
