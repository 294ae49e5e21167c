// What the text of one cell is: a number, a date, missing, a text, or something that is nearly a number or a date.
//
// Blanks and line breaks around the text do not count. The meaning does not depend on the locale.
#pragma once

#include <cstdint>
#include <string_view>

namespace orv {

enum class CellKind : std::uint8_t {
  Missing,      // empty, ".", or NA or NaN in upper or lower case
  Number,       // decimal point, optional sign and exponent: 5, +5, -0.5, .5, 5., 1e-3
  Date,         // YYYY-MM-DD, a day of the calendar
  CommaNumber,  // a number with a decimal comma or with commas between thousands: 1,5 or 1.234,5 or 1,234.5
  OutOfRange,   // a number that no double comes near, such as 1e999 or 1e-999
  NotFinite,    // inf or infinity in upper or lower case, with or without a sign
  NoSuchDay,    // the form of a date, but not a day of the calendar, such as 2023-02-30
  Text,         // anything else
};

struct Cell {
  CellKind Kind;
  double Value;  // the number, or the day number of a date; kMissingCode for every other kind
};

Cell ReadCell(std::string_view text);

// The text without the blanks (spaces, tabs, line breaks) around it.
std::string_view TrimBlanks(std::string_view text);

// True for what ReadCell calls Missing. `trimmed` has no blanks around it.
bool IsMissingText(std::string_view trimmed);

}  // namespace orv
