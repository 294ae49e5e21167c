// SelectCases: the cases of a table that meet a condition.
#pragma once

#include <stdexcept>
#include <string_view>
#include <vector>

#include "standalone/formula/FormulaError.h"
#include "standalone/formula/FormulaNames.h"

namespace orv {

// The condition cannot be computed for a case, such as for a division by zero. what() names the case.
class CaseSelectionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One flag a case, in order: 1 when the condition is true, 0 when it is false or missing.
//
//   names  of `table`; see FormulaNames::OfTable
//
// Throws FormulaError for a condition that is no formula, CaseSelectionError for the first case at which it fails.
std::vector<char> SelectCases(std::string_view condition, const FormulaNames& names, const MemoryTable& table);

}  // namespace orv
