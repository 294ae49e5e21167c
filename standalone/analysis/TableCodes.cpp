#include "standalone/analysis/TableCodes.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <set>

#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/DefinitionMessages.h"
#include "standalone/analysis/ListSyntax.h"

namespace orv {

namespace {

constexpr int kMostCodes = 500;
constexpr double kLargestCode = 9999999.0;
constexpr std::size_t kShownValues = 8;

bool Counts(const std::vector<char>& isSelected, int caseNumber) {
  return isSelected.empty() || isSelected[static_cast<std::size_t>(caseNumber) - 1] != 0;
}

}  // namespace

std::vector<double> DistinctValues(const MemoryTable& table,
                                   int variable,
                                   std::size_t limit,
                                   const std::vector<char>& isSelected) {
  std::set<double> values;
  double last = 0.0;
  bool hasLast = false;
  for (int caseNumber = 1; caseNumber <= table.CaseCount() && values.size() <= limit; ++caseNumber) {
    if (!Counts(isSelected, caseNumber)) continue;
    const double value = table.Value(variable, caseNumber);
    if (hasLast && value == last) continue;  // codes come in runs in many tables
    if (table.IsMissing(variable, caseNumber)) continue;
    values.insert(value);
    last = value;
    hasLast = true;
  }
  return {values.begin(), values.end()};
}

std::vector<std::int32_t> FindCodes(const std::string& option,
                                    const MemoryTable& table,
                                    int variable,
                                    const std::vector<char>& isSelected) {
  const std::string& name = table.Variable(variable).Name;
  const std::vector<double> values = DistinctValues(table, variable, kMostCodes, isSelected);
  std::vector<std::int32_t> codes;
  for (const double value : values) {
    if (value != std::floor(value)) {
      int caseNumber = 1;
      while (!Counts(isSelected, caseNumber) || table.Value(variable, caseNumber) != value) ++caseNumber;
      throw DefinitionError(
          DefinitionMessages::FractionalCode(option, name, ValueText(table, variable, value), caseNumber));
    }
    CheckCodeRange(option, table, variable, value);
    codes.push_back(static_cast<std::int32_t>(value));
  }
  if (codes.size() > kMostCodes) {
    const std::size_t found =
        DistinctValues(table, variable, static_cast<std::size_t>(table.CaseCount()), isSelected).size();
    throw DefinitionError(DefinitionMessages::TooManyCodes(option, name, found, kMostCodes));
  }
  return codes;
}

std::optional<double> ParseNumber(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
  double value = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<double> CodeOfText(const MemoryTable& table, int variable, std::string_view text) {
  if (const std::optional<double> code = table.CodeOf(variable, text)) return code;
  // In a variable of texts the number of a code means nothing to the person who wrote the file.
  if (table.Variable(variable).Type == VariableType::Text) return std::nullopt;
  return ParseNumber(text);
}

void CheckCodeRange(const std::string& option, const MemoryTable& table, int variable, double code) {
  if (std::abs(code) <= kLargestCode) return;
  const std::string& name = table.Variable(variable).Name;
  throw DefinitionError(DefinitionMessages::CodeTooLarge(option, name, ValueText(table, variable, code)));
}

std::string ValueText(const MemoryTable& table, int variable, double value) {
  const std::string_view label = table.LabelOf(variable, value);
  return label.empty() ? fmt::format("{}", value) : ListItem(label);
}

std::string ValuesForMessage(const MemoryTable& table, int variable, const std::vector<char>& isSelected) {
  const std::vector<double> values = DistinctValues(table, variable, kShownValues, isSelected);
  if (values.empty()) return "none, all are missing";
  std::string text;
  for (std::size_t k = 0; k < std::min(values.size(), kShownValues); ++k) {
    if (k > 0) text += ", ";
    text += ValueText(table, variable, values[k]);
  }
  return values.size() > kShownValues ? text + ", ..." : text;
}

}  // namespace orv
