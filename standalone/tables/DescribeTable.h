// DescribeTable: what each variable of a table holds, as plain records.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/tables/MemoryTable.h"

namespace orv {

struct VariableDescription {
  int Number = 0;  // from 1
  std::string Name;
  std::string Label;  // the variable in words; empty when the file has none
  VariableType Type = VariableType::Number;
  int ValidCount = 0;
  int MissingCount = 0;
  std::optional<double> Minimum;  // over the valid values; none for texts and when no value is valid
  std::optional<double> Maximum;
  std::string MinimumDate;  // dates only: the same as YYYY-MM-DD, empty outside the years 0000 to 9999
  std::string MaximumDate;
  std::string_view Hint;           // what it could serve for (see VariableHints.h)
  std::vector<ValueLabel> Labels;  // all labels, used or not; their number is that of the distinct texts of a column
};

// One record a variable, in the order of the table.
std::vector<VariableDescription> DescribeTable(const MemoryTable& table);

}  // namespace orv
