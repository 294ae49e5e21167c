#include "standalone/formula/SelectCases.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>
#include <string>

#include "standalone/formula/CompileFormula.h"
#include "standalone/formula/EvaluateFormula.h"

namespace orv {

std::vector<char> SelectCases(std::string_view condition, const FormulaNames& names, const MemoryTable& table) {
  const CompiledFormula formula = CompileFormula(condition, names);
  std::vector<double> arguments(formula.Symbols.size());
  std::vector<char> isSelected(static_cast<std::size_t>(table.CaseCount()), 0);
  for (int caseNumber = 1; caseNumber <= table.CaseCount(); ++caseNumber) {
    for (std::size_t k = 0; k < arguments.size(); ++k) {
      const int variable = formula.Symbols[k];
      arguments[k] = table.IsMissing(variable, caseNumber) ? std::numeric_limits<double>::quiet_NaN()
                                                           : table.Value(variable, caseNumber);
    }
    double value = 0.0;
    if (EvaluateFormula(formula.Program.data(), arguments.data(), value) != 0) {
      throw CaseSelectionError(fmt::format(
          "it cannot be computed for case {}: a division by zero, a logarithm or root of a negative number, "
          "or a number beyond the range. if(condition, a, b) computes only the part that is needed.",
          caseNumber));
    }
    isSelected[static_cast<std::size_t>(caseNumber) - 1] = !std::isnan(value) && value != 0.0 ? 1 : 0;
  }
  return isSelected;
}

}  // namespace orv
