#include "FormulaRuns.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <utility>

#include "standalone/formula/EvaluateFormula.h"
#include "standalone/formula/FormulaProgram.h"

namespace orv::testing {
namespace {

const char* const kControls[] = {"end", "constant", "symbol", "jump", "branch", "if false", "if true"};
const char* const kUnary[] = {"negate", "not",   "missing", "log",  "log10", "log2", "exp", "sqrt", "abs",  "floor",
                              "ceil",   "round", "trunc",   "sign", "sin",   "cos",  "tan", "asin", "acos", "atan"};
const char* const kBinary[] = {"add",     "subtract",         "multiply", "divide",    "power", "less", "less or equal",
                               "greater", "greater or equal", "equal",    "not equal", "min",   "max",  "and",
                               "or"};

class Listed {
 public:
  explicit Listed(const std::vector<std::byte>& program) : m_program(program) {}

  std::string Text() {
    while (m_at < m_program.size()) Instruction();
    return m_text;
  }

 private:
  template <typename T>
  T Take() {
    T value{};
    std::memcpy(&value, m_program.data() + m_at, sizeof value);
    m_at += sizeof value;
    return value;
  }

  void Instruction() {
    if (!m_text.empty()) m_text += ", ";
    const auto code = Take<std::uint8_t>();
    const unsigned operation = code & kOperationMask;
    const auto operand = static_cast<RightOperand>(code >> kOperandShift);
    if (operand != RightOperand::Alone) {
      m_text += kBinary[operation];
      if (operand == RightOperand::WithSymbol) m_text += fmt::format(" symbol {}", Take<std::uint16_t>());
      if (operand == RightOperand::WithConstant) m_text += fmt::format(" constant {}", Take<double>());
      return;
    }
    if (operation >= static_cast<unsigned>(UnaryOperation::Negate)) {
      m_text += kUnary[operation - static_cast<unsigned>(UnaryOperation::Negate)];
      return;
    }
    m_text += kControls[operation];
    switch (static_cast<ControlOperation>(operation)) {
      case ControlOperation::End:
        break;
      case ControlOperation::Constant:
        m_text += fmt::format(" {}", Take<double>());
        break;
      case ControlOperation::Branch:
        m_text += fmt::format(" {}", Take<std::uint16_t>());
        [[fallthrough]];
      case ControlOperation::Symbol:
      case ControlOperation::Jump:
      case ControlOperation::IfFalse:
      case ControlOperation::IfTrue:
        m_text += fmt::format(" {}", Take<std::uint16_t>());
        break;
    }
  }

  const std::vector<std::byte>& m_program;
  std::size_t m_at = 0;
  std::string m_text;
};

}  // namespace

FormulaRun RunFormula(std::string_view formula, const std::vector<NamedValue>& values) {
  std::vector<std::string> names;
  for (const NamedValue& value : values) names.push_back(value.Name);
  const bool withTime = !names.empty() && names.back() == "T_";
  if (withTime) names.pop_back();
  const CompiledFormula compiled =
      CompileFormula(formula, Names(names), withTime ? TimeSymbol::Allowed : TimeSymbol::None);
  std::vector<double> arguments;
  for (const int symbol : compiled.Symbols) arguments.push_back(values.at(static_cast<std::size_t>(symbol) - 1).Value);
  FormulaRun run;
  run.Failed = EvaluateFormula(compiled.Program.data(), arguments.data(), run.Value) != 0;
  return run;
}

double ValueOf(std::string_view formula, const std::vector<NamedValue>& values) {
  try {
    const FormulaRun run = RunFormula(formula, values);
    EXPECT_FALSE(run.Failed) << formula;
    return run.Value;
  } catch (const FormulaError& error) {
    ADD_FAILURE() << formula << ": " << error.what();
    return kMissing;
  }
}

bool Fails(std::string_view formula, const std::vector<NamedValue>& values) {
  try {
    return RunFormula(formula, values).Failed;
  } catch (const FormulaError& error) {
    ADD_FAILURE() << formula << ": " << error.what();
    return false;
  }
}

std::string Refusal(std::string_view formula, const FormulaNames& names, TimeSymbol time) {
  try {
    CompileFormula(formula, names, time);
    return "compiled";
  } catch (const FormulaError& error) {
    EXPECT_LE(error.Position(), formula.size()) << formula;
    return error.what();
  }
}

FormulaNames Names(const std::vector<std::string>& names) {
  std::vector<FormulaVariable> variables;
  for (const std::string& name : names) variables.push_back({name, nullptr, false});
  return FormulaNames(std::move(variables));
}

bool Same(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return std::memcmp(&a, &b, sizeof a) == 0;
}

std::string Listing(const std::vector<std::byte>& program) {
  return Listed(program).Text();
}

}  // namespace orv::testing
