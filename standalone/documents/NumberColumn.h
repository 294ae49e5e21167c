// NumberColumn: the numbers of one column as texts of one shape, so that their decimal points stand below each other.
//
// All digits are kept for the machine-readable forms; here a reader compares numbers down a column.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv {

// Whole numbers show no decimals. Otherwise all numbers of the column get the same number of decimals, at most 6: as
// many as give its largest number 6 significant digits and its smallest one 3. A number below 0.0001 or from 1e9 on
// would then lose its digits or the eye, and is written with 4 significant digits and an exponent.
struct NumberShape {
  bool IsWhole = true;  // all numbers of the column are whole
  int Decimals = 0;

  bool NeedsExponent(double number) const;
};

NumberShape ShapeOfNumberColumn(const std::vector<double>& numbers);

// One text per number in the shape of the column, empty where the number is NaN.
std::vector<std::string> FormatNumberColumn(const std::vector<double>& numbers);

// P values have 4 decimals; one below 0.0001 reads "<.0001".
std::vector<std::string> FormatPValueColumn(const std::vector<double>& numbers);

// True for the title of a column of p values.
bool IsPValueTitle(std::string_view title);

}  // namespace orv
