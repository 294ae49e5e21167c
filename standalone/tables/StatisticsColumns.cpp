#include "standalone/tables/StatisticsColumns.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "standalone/tables/CellText.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"
#include "standalone/tables/TextCheck.h"
#include "standalone/tables/VariableNames.h"

namespace orv {
namespace {

// No form packs more values into a byte.
constexpr std::uint64_t kMostValuesPerByte = 10000;

std::string SoundText(const char* text, const std::string& variable) {
  if (text == nullptr) return {};
  if (!IsSoundText(text)) throw StatisticsTextFault(0, variable);
  return std::string(TrimBlanks(text));
}

std::vector<std::pair<double, double>> MissingRangesOf(const readstat_variable_t& variable) {
  std::vector<std::pair<double, double>> ranges;
  if (readstat_variable_get_type_class(&variable) != READSTAT_TYPE_CLASS_NUMERIC) return ranges;
  for (int i = 0; i < readstat_variable_get_missing_ranges_count(&variable); ++i) {
    ranges.emplace_back(readstat_double_value(readstat_variable_get_missing_range_lo(&variable, i)),
                        readstat_double_value(readstat_variable_get_missing_range_hi(&variable, i)));
  }
  return ranges;
}

bool IsUndefined(const readstat_value_t& value) {
  return readstat_value_is_system_missing(value) != 0 || readstat_value_is_tagged_missing(value) != 0;
}

}  // namespace

void StatisticsColumns::SetSize(std::int64_t variables, std::int64_t cases) {
  if (variables > kMaximumVariables) throw TableError(TooManyVariablesMessage(m_source));
  m_expectedCases = cases;
}

void StatisticsColumns::AddVariable(int index, const readstat_variable_t& variable, const char* labelSet) {
  if (index < 0 || static_cast<std::size_t>(index) != m_columns.size())
    throw StatisticsFault("its variables are not in order");
  if (m_columns.size() == static_cast<std::size_t>(kMaximumVariables))
    throw TableError(TooManyVariablesMessage(m_source));
  Column column;
  const char* name = readstat_variable_get_name(&variable);
  if (name != nullptr) column.Variable.Name = name;
  column.Variable.Label = SoundText(readstat_variable_get_label(&variable), column.Variable.Name);
  column.Variable.Format = SoundText(readstat_variable_get_format(&variable), column.Variable.Name);
  column.IsText = readstat_variable_get_type_class(&variable) == READSTAT_TYPE_CLASS_STRING;
  if (!column.IsText) column.Dates = DateScaleOf(m_program, column.Variable.Format);
  if (column.Dates) column.Variable.Type = VariableType::Date;
  if (labelSet != nullptr) column.LabelSet = labelSet;
  column.MissingRanges = MissingRangesOf(variable);
  m_columns.push_back(std::move(column));
}

void StatisticsColumns::AddValue(int row, const readstat_variable_t& variable, const readstat_value_t& value) {
  const int index = readstat_variable_get_index(&variable);
  if (row < 0 || index < 0 || static_cast<std::size_t>(index) >= m_columns.size())
    throw StatisticsFault("it has values of no variable");
  if (row >= m_maximumCases) throw TableError(TooManyCasesMessage(m_source, m_maximumCases));
  if (++m_values / kMostValuesPerByte > m_fileSize) throw StatisticsFault("it has more values than bytes for them");
  Column& column = m_columns[static_cast<std::size_t>(index)];
  std::vector<double>& values = column.Variable.Values;
  if (values.size() != static_cast<std::size_t>(row)) throw StatisticsFault("its values are not in order");
  const bool isPlausible = m_expectedCases > 0 && static_cast<std::uint64_t>(m_expectedCases) <= m_fileSize;
  if (row == 0 && isPlausible && m_columns.size() <= m_fileSize / static_cast<std::uint64_t>(m_expectedCases))
    values.reserve(static_cast<std::size_t>(m_expectedCases));
  if (readstat_value_is_missing(value, const_cast<readstat_variable_t*>(&variable)) != 0) {
    values.push_back(kMissingCode);
  } else {
    values.push_back(column.IsText ? TextValue(column, value) : NumberValue(column, value));
  }
}

double StatisticsColumns::TextValue(Column& column, const readstat_value_t& value) {
  if (readstat_value_type_class(value) != READSTAT_TYPE_CLASS_STRING)
    throw StatisticsFault("it has numbers among texts");
  const char* text = readstat_string_value(value);
  if (text == nullptr) return kMissingCode;
  if (!IsSoundText(text)) throw StatisticsTextFault(column.Variable.Values.size() + 1, column.Variable.Name);
  const std::string_view trimmed = TrimBlanks(text);
  return IsMissingText(trimmed) ? kMissingCode : column.Codes.CodeOf(trimmed);
}

double StatisticsColumns::NumberValue(const Column& column, const readstat_value_t& value) const {
  if (readstat_value_type_class(value) != READSTAT_TYPE_CLASS_NUMERIC)
    throw StatisticsFault("it has texts among numbers");
  double number = readstat_double_value(value);
  if (std::isnan(number)) return kMissingCode;
  if (column.Dates) number = DayNumberOf(*column.Dates, number);
  if (std::isfinite(number)) return number;
  throw TableError(InfiniteValueMessage(m_source, column.Variable.Values.size() + 1, column.Variable.Name));
}

void StatisticsColumns::AddLabel(const char* labelSet, const readstat_value_t& value, const char* label) {
  if (labelSet == nullptr || label == nullptr) return;
  if (readstat_value_type_class(value) != READSTAT_TYPE_CLASS_NUMERIC || IsUndefined(value)) return;
  const double code = readstat_double_value(value);
  if (!std::isfinite(code)) return;
  m_labelSets[labelSet].push_back({code, SoundText(label, labelSet)});
}

// By ascending code, the first of several labels of a code, and none for values that are missing anyway.
std::vector<ValueLabel> StatisticsColumns::LabelsOf(const Column& column) const {
  const auto found = m_labelSets.find(column.LabelSet);
  std::vector<ValueLabel> labels;
  if (column.LabelSet.empty() || found == m_labelSets.end()) return labels;
  for (const ValueLabel& label : found->second) {
    const bool isMissing =
        std::any_of(column.MissingRanges.begin(), column.MissingRanges.end(),
                    [&label](const auto& range) { return range.first <= label.Code && label.Code <= range.second; });
    if (isMissing || label.Text.empty()) continue;
    labels.push_back({column.Dates ? DayNumberOf(*column.Dates, label.Code) : label.Code, label.Text});
  }
  const auto before = [](const ValueLabel& a, const ValueLabel& b) { return a.Code < b.Code; };
  const auto same = [](const ValueLabel& a, const ValueLabel& b) { return a.Code == b.Code; };
  std::stable_sort(labels.begin(), labels.end(), before);
  labels.erase(std::unique(labels.begin(), labels.end(), same), labels.end());
  return labels;
}

MemoryTable StatisticsColumns::Take() {
  std::vector<std::string> names;
  for (const Column& column : m_columns) names.push_back(column.Variable.Name);
  names = CheckedVariableNames(m_source, std::move(names));
  const std::size_t cases = m_columns[0].Variable.Values.size();
  const bool isComplete = std::all_of(m_columns.begin(), m_columns.end(),
                                      [cases](const Column& column) { return column.Variable.Values.size() == cases; });
  if (!isComplete) throw StatisticsFault("its last case is not complete");
  if (m_expectedCases > 0 && static_cast<std::uint64_t>(m_expectedCases) > cases)
    throw StatisticsFault(fmt::format("it announces {} cases but has {}", m_expectedCases, cases));
  if (cases == 0) throw TableError(NoRowsMessage(m_source));
  MemoryTable table(m_source);
  for (std::size_t i = 0; i < m_columns.size(); ++i) {
    Column& column = m_columns[i];
    column.Variable.Name = names[i];
    column.Variable.Labels = column.IsText ? column.Codes.Sort(column.Variable.Values) : LabelsOf(column);
    if (column.IsText && !column.Variable.Labels.empty()) column.Variable.Type = VariableType::Text;
    table.AddVariable(std::move(column.Variable));
  }
  m_columns.clear();
  m_labelSets.clear();
  return table;
}

}  // namespace orv
