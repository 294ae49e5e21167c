#include "standalone/formula/HostFormula.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "standalone/formula/CompileFormula.h"
#include "standalone/formula/EvaluateFormula.h"

namespace orv {
namespace {

constexpr int kMemoryIsOut = 5;
constexpr std::string_view kTimeName = "T_";

std::string_view FormulaOf(const char* text) {
  std::string_view formula(text + 1);
  if (formula.ends_with(';')) formula.remove_suffix(1);
  return formula;
}

// The module counts the bytes of a formula from 1.
int ErrorPosition(std::size_t position) {
  return static_cast<int>(position) + 1;
}

void Compile(const char* text, const FormulaNames& names, TimeSymbol time, CompiledFormulaArea& area) {
  area.SymbolCount = 0;
  area.ErrorPosition = 0;
  const std::string_view formula = FormulaOf(text);
  try {
    const CompiledFormula compiled = CompileFormula(formula, names, time);
    if (compiled.Program.size() > static_cast<std::size_t>(std::max(area.InstructionBytes, 0))) {
      area.ErrorPosition = ErrorPosition(formula.size());
      return;
    }
    std::memcpy(area.Instructions, compiled.Program.data(), compiled.Program.size());
    area.SymbolCount = static_cast<int>(compiled.Symbols.size());
    for (int k = 0; k < std::min(area.SymbolCount, area.SymbolRoom); ++k)
      area.Symbols[k] = static_cast<std::int16_t>(compiled.Symbols[static_cast<std::size_t>(k)]);
  } catch (const FormulaError& error) {
    area.ErrorPosition = ErrorPosition(error.Position());
  }
}

FormulaNames VariablesOf(const CAnalysisNamesArray& names, int count) {
  std::vector<FormulaVariable> variables;
  variables.reserve(static_cast<std::size_t>(count));
  for (int number = 1; number <= count; ++number) variables.push_back({names.Name(number), nullptr, false});
  return FormulaNames(std::move(variables));
}

}  // namespace

int CompileHostFormula(const char* text, const CAnalysisNamesArray& names, CompiledFormulaArea& area) {
  try {
    const bool withTime = names.Count() > 0 && names.Name(names.Count()) == kTimeName;
    Compile(text, VariablesOf(names, withTime ? names.Count() - 1 : names.Count()),
            withTime ? TimeSymbol::Allowed : TimeSymbol::None, area);
  } catch (const std::bad_alloc&) {
    return kMemoryIsOut;
  }
  return 0;
}

int CompileHostFormula(const char* text, const FormulaNames& variables, CompiledFormulaArea& area) {
  try {
    Compile(text, variables, TimeSymbol::Allowed, area);
  } catch (const std::bad_alloc&) {
    return kMemoryIsOut;
  }
  return 0;
}

int RunHostFormula(const double* arguments, const unsigned char* instructions, double& result) {
  double value = 0.0;
  if (EvaluateFormula(reinterpret_cast<const std::byte*>(instructions), arguments, value) != 0) return 1;
  if (std::isnan(value)) return 1;
  result = value;
  return 0;
}

}  // namespace orv
