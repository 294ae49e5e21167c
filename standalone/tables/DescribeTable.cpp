#include "standalone/tables/DescribeTable.h"

#include <algorithm>
#include <utility>

#include "data/AlmostEqual.h"
#include "standalone/tables/IsoDate.h"
#include "standalone/tables/VariableHints.h"

namespace orv {
namespace {

VariableDescription Describe(const TableVariable& variable, int number) {
  VariableDescription description;
  description.Number = number;
  description.Name = variable.Name;
  description.Label = variable.Label;
  description.Type = variable.Type;
  description.Hint = HintOnVariable(variable);
  description.Labels = variable.Labels;
  double least = 0.0;
  double greatest = 0.0;
  for (const double value : variable.Values) {
    if (AlmostEqual(value, variable.MissingCode)) {
      ++description.MissingCount;
      continue;
    }
    const bool first = description.ValidCount == 0;
    least = first ? value : std::min(least, value);
    greatest = first ? value : std::max(greatest, value);
    ++description.ValidCount;
  }
  if (description.ValidCount == 0 || variable.Type == VariableType::Text) return description;
  description.Minimum = least;
  description.Maximum = greatest;
  if (variable.Type == VariableType::Date) {
    description.MinimumDate = IsoDate(least);
    description.MaximumDate = IsoDate(greatest);
  }
  return description;
}

}  // namespace

std::vector<VariableDescription> DescribeTable(const MemoryTable& table) {
  std::vector<VariableDescription> descriptions;
  descriptions.reserve(static_cast<std::size_t>(table.VariableCount()));
  for (int variable = 1; variable <= table.VariableCount(); ++variable)
    descriptions.push_back(Describe(table.Variable(variable), variable));
  return descriptions;
}

}  // namespace orv
