#include "standalone/tables/MemoryTable.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <system_error>
#include <utility>

#include "data/AlmostEqual.h"
#include "standalone/tables/NearestNames.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"

namespace orv {
namespace {

// The 3 of #3, or 0 when the text has another form.
int VariableNumberIn(std::string_view text) {
  if (text.size() < 2 || text[0] != '#') return 0;
  int number = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data() + 1, end, number);
  return result.ec == std::errc() && result.ptr == end && number > 0 ? number : 0;
}

}  // namespace

std::string_view VariableTypeName(VariableType type) {
  switch (type) {
    case VariableType::Text:
      return "text";
    case VariableType::Date:
      return "date";
    case VariableType::Number:
      break;
  }
  return "number";
}

void MemoryTable::AddVariable(TableVariable variable) {
  if (VariableCount() == kMaximumVariables) throw TableError(TooManyVariablesMessage(m_source));
  assert(m_variables.empty() || static_cast<int>(variable.Values.size()) == m_caseCount);
  m_caseCount = static_cast<int>(variable.Values.size());
  m_variables.push_back(std::move(variable));
}

void MemoryTable::SetCaseNames(std::vector<std::string> names) {
  assert(names.empty() || static_cast<int>(names.size()) == m_caseCount);
  m_caseNames = std::move(names);
}

bool MemoryTable::IsMissing(int variable, int caseNumber) const {
  return AlmostEqual(Value(variable, caseNumber), Variable(variable).MissingCode);
}

std::string_view MemoryTable::CaseName(int caseNumber) const {
  if (m_caseNames.empty()) return {};
  return m_caseNames[static_cast<std::size_t>(caseNumber) - 1];
}

std::string_view MemoryTable::LabelOf(int variable, double value) const {
  const std::vector<ValueLabel>& labels = Variable(variable).Labels;
  const auto found = std::lower_bound(labels.begin(), labels.end(), value,
                                      [](const ValueLabel& label, double code) { return label.Code < code; });
  if (found == labels.end() || found->Code != value) return {};
  return found->Text;
}

std::optional<double> MemoryTable::CodeOf(int variable, std::string_view label) const {
  for (const ValueLabel& candidate : Variable(variable).Labels) {
    if (candidate.Text == label) return candidate.Code;
  }
  return std::nullopt;
}

int MemoryTable::FindVariable(std::string_view name) const {
  for (std::size_t i = 0; i < m_variables.size(); ++i) {
    if (m_variables[i].Name == name) return static_cast<int>(i) + 1;
  }
  const int number = VariableNumberIn(name);
  return number <= VariableCount() ? number : 0;
}

std::vector<std::string> MemoryTable::NearestNames(std::string_view name, std::size_t count) const {
  std::vector<std::string_view> candidates;
  candidates.reserve(m_variables.size());
  for (const TableVariable& variable : m_variables) candidates.emplace_back(variable.Name);
  return orv::NearestNames(name, candidates, count);
}

}  // namespace orv
