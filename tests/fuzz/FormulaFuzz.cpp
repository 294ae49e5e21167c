// Any text is a formula or refused with a place and a message; what compiles keeps within its limits and evaluates.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Require.h"
#include "standalone/formula/CompileFormula.h"
#include "standalone/formula/EvaluateFormula.h"
#include "standalone/formula/FormulaProgram.h"
#include "standalone/formula/HostFormula.h"

namespace orv::fuzz {

namespace {

const std::vector<ValueLabel> kArms = {{1.0, "control"}, {2.0, "test"}, {3.0, "age"}};

const FormulaNames& TrialNames() {
  static const FormulaNames names({{"age", nullptr, false},
                                   {"arm", &kArms, false},
                                   {"blood pressure", nullptr, false},
                                   {"entry", nullptr, true},
                                   {"gr\xC3\xB6\xC3\x9F"
                                    "e",
                                    nullptr, false}});
  return names;
}

std::optional<CompiledFormula> Compiled(std::string_view text) {
  try {
    return CompileFormula(text, TrialNames(), TimeSymbol::Allowed);
  } catch (const FormulaError& error) {
    Require(error.Position() <= text.size(), "the place of an error is in the text");
    Require(error.Character() >= 1 && error.Character() <= error.Position() + 1, "the character fits the byte");
    Require(!error.Fault().Sentence.empty() && error.Fault().Sentence.back() == '.', "a refusal is a sentence");
    return std::nullopt;
  }
}

struct Evaluation {
  int Status = 0;
  double Result = 0.0;
};

// With the arguments in a block of their own, so that a look beyond it is seen.
Evaluation Evaluate(const CompiledFormula& formula, double first, double step) {
  std::vector<double> arguments;
  arguments.reserve(formula.Symbols.size());
  for (std::size_t k = 0; k < formula.Symbols.size(); ++k) arguments.push_back(first + step * static_cast<double>(k));
  Evaluation evaluation;
  evaluation.Status = EvaluateFormula(formula.Program.data(), arguments.data(), evaluation.Result);
  Require(evaluation.Status == 0 || evaluation.Status == 1, "an evaluation succeeds or fails");
  Require(!std::isinf(evaluation.Result), "no result is infinite");
  return evaluation;
}

bool Same(const Evaluation& a, const Evaluation& b) {
  if (a.Status != b.Status) return false;
  return (std::isnan(a.Result) && std::isnan(b.Result)) || std::memcmp(&a.Result, &b.Result, sizeof a.Result) == 0;
}

void CheckProgram(const CompiledFormula& formula) {
  Require(!formula.Program.empty() && formula.Program.size() <= kMaximumProgramBytes, "a program has a bounded size");
  const std::set<int> distinct(formula.Symbols.begin(), formula.Symbols.end());
  Require(distinct.size() == formula.Symbols.size(), "a symbol is listed once");
  Require(distinct.empty() || (*distinct.begin() >= 1 && *distinct.rbegin() <= TrialNames().Count() + 1),
          "a symbol is a variable or the time");
}

void RequireSame(const CompiledFormula& formula, const CompiledFormula& other, const char* what) {
  Require(formula.Symbols == other.Symbols && formula.Program == other.Program, what);
}

void CheckHostForm(std::string_view text, const std::optional<CompiledFormula>& formula) {
  if (text.find('\0') != std::string_view::npos) return;
  std::vector<unsigned char> instructions(kMaximumProgramBytes);
  std::vector<std::int16_t> symbols(8);
  CompiledFormulaArea area;
  area.Instructions = instructions.data();
  area.InstructionBytes = static_cast<int>(instructions.size());
  area.Symbols = symbols.data();
  area.SymbolRoom = static_cast<int>(symbols.size());
  const std::string hostText = static_cast<char>(text.size() + 1) + std::string(text) + ";";
  Require(CompileHostFormula(hostText.c_str(), TrialNames(), area) == 0, "memory is there");
  Require((area.ErrorPosition == 0) == formula.has_value(), "the host's form is refused when the formula is");
  if (formula)
    Require(area.SymbolCount == static_cast<int>(formula->Symbols.size()), "the host's form has the same symbols");
}

void Check(std::string_view text) {
  const std::optional<CompiledFormula> formula = Compiled(text);
  CheckHostForm(text, formula);
  if (!formula) return;
  CheckProgram(*formula);
  constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();
  for (const double first : {0.0, -1.0, 2.5, 1e300, 5e-324, kMissing}) {
    for (const double step : {0.0, 1.0, -0.5}) {
      Require(Same(Evaluate(*formula, first, step), Evaluate(*formula, first, step)), "an evaluation can be repeated");
    }
  }
  // What has been taken is taken again within parentheses, unless that is a level or a character too much, and is the
  // same formula.
  if (const auto enclosed = Compiled("( " + std::string(text) + " )"))
    RequireSame(*formula, *enclosed, "parentheses around the whole change nothing");
}

}  // namespace

}  // namespace orv::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orv::fuzz::Check(std::string_view(reinterpret_cast<const char*>(data), size));
  return 0;
}
