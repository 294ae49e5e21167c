// MemoryTable: the cases of a data file in memory, one column of doubles per variable.
//
// Variables are numbered from 1 and cases from 1, as the module numbers them. All columns have the same length. A text
// column holds codes 1..K with one label a code, in the sorted order (by bytes) of its texts. A date column holds days
// since 1970-01-01.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orv {

// The missing-data code of every variable that brings no code of its own: -2 to the power 1023. A finite number, since
// the strict comparisons of the module leave NaN and infinity out, so that a case with either would not count as
// incomplete.
inline constexpr double kMissingCode = -8.98846567431157953865e307;

// The module numbers variables in 16 bits, with a sign.
inline constexpr int kMaximumVariables = 32767;

enum class VariableType { Number, Text, Date };

// "number", "text" or "date".
std::string_view VariableTypeName(VariableType type);

// The text that stands for one value of a variable.
struct ValueLabel {
  double Code = 0.0;
  std::string Text;
};

struct TableVariable {
  std::string Name;
  VariableType Type = VariableType::Number;
  double MissingCode = kMissingCode;  // finite; a value within 15 units in the last place of it is missing
  std::vector<ValueLabel> Labels;     // by ascending code; empty when there are none
  std::vector<double> Values;         // one a case
  std::string Label = {};             // what the variable is, in words; empty when the file has none
  std::string Format = {};            // how the file's own program shows it, such as DATE9.; kept, not used
};

class MemoryTable {
 public:
  // `source` is the file's name as the user gave it, for messages.
  explicit MemoryTable(std::string source = {}) : m_source(std::move(source)) {}

  const std::string& Source() const { return m_source; }
  int VariableCount() const { return static_cast<int>(m_variables.size()); }
  // 0 as long as there is no variable.
  int CaseCount() const { return m_caseCount; }

  // Appends a variable. REQUIRES: as many values as the variables before it have; names are not checked here.
  // Throws TableError for a variable beyond the 32767th.
  void AddVariable(TableVariable variable);
  // One name a case, or none at all. REQUIRES: CaseCount() names or an empty vector.
  void SetCaseNames(std::vector<std::string> names);

  // REQUIRES: 1 <= variable <= VariableCount(), 1 <= caseNumber <= CaseCount().
  const TableVariable& Variable(int variable) const { return m_variables[static_cast<std::size_t>(variable) - 1]; }
  double Value(int variable, int caseNumber) const {
    return Variable(variable).Values[static_cast<std::size_t>(caseNumber) - 1];
  }
  bool IsMissing(int variable, int caseNumber) const;
  bool HasCaseNames() const { return !m_caseNames.empty(); }
  // Empty when the cases have no names.
  std::string_view CaseName(int caseNumber) const;

  // The label of a value, empty when it has none. The value must equal the label's code exactly.
  std::string_view LabelOf(int variable, double value) const;
  // The code of a label, by its exact text.
  std::optional<double> CodeOf(int variable, std::string_view label) const;

  // The number of the variable with exactly this name or, when there is none and `name` has the form #3, of the third
  // variable. 0 when there is no such variable.
  int FindVariable(std::string_view name) const;
  // At most `count` names of variables, the nearest first (see NearestNames.h).
  std::vector<std::string> NearestNames(std::string_view name, std::size_t count) const;

 private:
  std::string m_source;
  std::vector<TableVariable> m_variables;
  std::vector<std::string> m_caseNames;
  int m_caseCount = 0;
};

}  // namespace orv
