// Formulas compiled and evaluated in one go, for the tests of the formula language.
#pragma once

#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/formula/CompileFormula.h"

namespace orv::testing {

inline constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

struct NamedValue {
  std::string Name;
  double Value;
};

struct FormulaRun {
  bool Failed = false;  // a numerical failure
  double Value = 0.0;
};

// The variables are the names in order; "T_" last in the list is the time. Throws FormulaError.
FormulaRun RunFormula(std::string_view formula, const std::vector<NamedValue>& values = {});

// The value, which must be there: a failure is reported as one of the test.
double ValueOf(std::string_view formula, const std::vector<NamedValue>& values = {});

// Whether the formula fails numerically.
bool Fails(std::string_view formula, const std::vector<NamedValue>& values = {});

// The message of the FormulaError, or "compiled" when there is none.
std::string Refusal(std::string_view formula, const FormulaNames& names, TimeSymbol time = TimeSymbol::None);

// Names without texts.
FormulaNames Names(const std::vector<std::string>& names);

// The same bits, or both missing.
bool Same(double a, double b);

// The names of the instructions of a program, such as "symbol 0, add constant 1, log, end".
std::string Listing(const std::vector<std::byte>& program);

}  // namespace orv::testing
