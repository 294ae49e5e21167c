#include "standalone/formula/FormulaNames.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "standalone/formula/FormulaCharacters.h"
#include "standalone/tables/IsoDate.h"
#include "standalone/tables/NearestNames.h"

namespace orv {
namespace {

constexpr std::size_t kNearest = 3;
// A longer text is no misspelt name, and the distance to every name of a wide table would take long.
constexpr std::size_t kLongestMisspelling = 100;

std::vector<std::string> NearestOf(std::string_view name, const std::vector<std::string_view>& candidates) {
  if (name.size() > kLongestMisspelling) return {};
  return NearestNames(name, candidates, kNearest);
}

}  // namespace

FormulaNames::FormulaNames(std::vector<FormulaVariable> variables) : m_variables(std::move(variables)) {
  for (int number = 1; number <= Count(); ++number) m_byFoldedName[FoldCase(Variable(number).Name)].push_back(number);
}

FormulaNames FormulaNames::OfTable(const MemoryTable& table) {
  std::vector<FormulaVariable> variables;
  for (int number = 1; number <= table.VariableCount(); ++number) {
    const TableVariable& variable = table.Variable(number);
    variables.push_back({variable.Name, &variable.Labels, variable.Type == VariableType::Date});
  }
  return FormulaNames(std::move(variables));
}

std::vector<int> FormulaNames::Find(std::string_view name) const {
  const auto found = m_byFoldedName.find(FoldCase(name));
  if (found == m_byFoldedName.end()) return {};
  std::vector<int> exact;
  std::copy_if(found->second.begin(), found->second.end(), std::back_inserter(exact),
               [&](int number) { return Variable(number).Name == name; });
  return exact.empty() ? found->second : exact;
}

std::vector<std::string> FormulaNames::Nearest(std::string_view name) const {
  std::vector<std::string_view> candidates;
  candidates.reserve(m_variables.size());
  for (const FormulaVariable& variable : m_variables) candidates.emplace_back(variable.Name);
  return NearestOf(name, candidates);
}

TextValue FindTextValue(const FormulaVariable& variable, std::string_view text) {
  using Kind = TextValue::Kind;
  if (variable.Labels != nullptr) {
    const ValueLabel* sameButForCase = nullptr;
    bool several = false;
    const std::string folded = FoldCase(text);
    for (const ValueLabel& label : *variable.Labels) {
      if (label.Text == text) return {Kind::Label, label.Code};
      if (FoldCase(label.Text) != folded) continue;
      several = sameButForCase != nullptr;
      sameButForCase = &label;
    }
    if (several) return {Kind::Ambiguous, 0.0};
    if (sameButForCase != nullptr) return {Kind::Label, sameButForCase->Code};
  }
  if (variable.HoldsDates && LooksLikeIsoDate(text)) {
    const std::optional<int> day = DayNumber(text);
    return day ? TextValue{Kind::Date, static_cast<double>(*day)} : TextValue{Kind::NoSuchDay, 0.0};
  }
  return {};
}

std::vector<std::string> NearestTexts(const FormulaVariable& variable, std::string_view text) {
  std::vector<std::string_view> candidates;
  if (variable.Labels != nullptr) {
    candidates.reserve(variable.Labels->size());
    for (const ValueLabel& label : *variable.Labels) candidates.emplace_back(label.Text);
  }
  return NearestOf(text, candidates);
}

}  // namespace orv
