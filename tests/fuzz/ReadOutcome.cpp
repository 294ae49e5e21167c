#include "ReadOutcome.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>
#include <vector>

#include "Require.h"
#include "standalone/tables/CellText.h"
#include "standalone/tables/DescribeTable.h"
#include "standalone/tables/IsoDate.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TextCheck.h"

namespace orv::fuzz {

namespace {

void CheckLabels(const TableVariable& variable) {
  if (variable.Type != VariableType::Text) {
    Require(variable.Labels.empty(), "only text columns have labels");
    return;
  }
  std::vector<bool> occurs(variable.Labels.size());
  for (const double value : variable.Values) {
    if (value == variable.MissingCode) continue;
    const bool isCode =
        value >= 1.0 && value <= static_cast<double>(variable.Labels.size()) && value == std::floor(value);
    Require(isCode, "every code of a text column has a label");
    occurs[static_cast<std::size_t>(value) - 1] = true;
  }
  Require(std::find(occurs.begin(), occurs.end(), false) == occurs.end(), "every label occurs");
  for (std::size_t k = 0; k < variable.Labels.size(); ++k) {
    const ValueLabel& label = variable.Labels[k];
    Require(label.Code == static_cast<double>(k + 1), "labels have the codes 1..K");
    Require(k == 0 || variable.Labels[k - 1].Text < label.Text, "labels are sorted by their texts");
    Require(TrimBlanks(label.Text) == label.Text, "labels have no blanks around them");
    Require(!IsMissingText(label.Text), "no label stands for a missing value");
  }
}

void CheckVariable(const MemoryTable& table, int number) {
  const TableVariable& variable = table.Variable(number);
  Require(variable.Values.size() == static_cast<std::size_t>(table.CaseCount()), "columns have one length");
  Require(!variable.Name.empty() && TrimBlanks(variable.Name) == variable.Name, "names are trimmed and not empty");
  Require(table.FindVariable(variable.Name) == number, "a variable is found by its name");
  CheckLabels(variable);
  for (const double value : variable.Values) {
    Require(std::isfinite(value), "values are finite");
    if (variable.Type == VariableType::Date && value != variable.MissingCode) {
      const std::optional<int> day = DayNumber(IsoDate(value));
      Require(day.has_value() && *day == value, "a date can be written and read back");
    }
  }
}

void CheckDescription(const MemoryTable& table) {
  for (const VariableDescription& description : DescribeTable(table)) {
    Require(description.ValidCount + description.MissingCount == table.CaseCount(), "every case is valid or missing");
    Require(description.ValidCount == 0 || description.Type == VariableType::Text || description.Minimum.has_value(),
            "valid values have a minimum");
    Require(!description.Minimum || *description.Minimum <= *description.Maximum, "minimum and maximum are in order");
  }
}

void CheckTable(const MemoryTable& table) {
  Require(table.VariableCount() >= 1 && table.CaseCount() >= 1, "a table has a variable and a case");
  std::set<std::string_view> names;
  for (int number = 1; number <= table.VariableCount(); ++number) {
    CheckVariable(table, number);
    Require(names.insert(table.Variable(number).Name).second, "names are distinct");
  }
  CheckDescription(table);
}

void CheckMessage(const std::string& message) {
  Require(!message.empty() && message.back() != '\n', "a message says something and has no newline at its end");
  TextCheck check;
  Require(check.Check(message).Fault == TextFault::None && check.AtEndOfCharacter(), "a message is UTF-8");
  const bool isPlain = std::all_of(message.begin(), message.end(), [](char c) {
    return c == '\n' || (static_cast<unsigned char>(c) >= 0x20 && c != 0x7F);
  });
  Require(isPlain, "a message has no control characters");
}

bool IsSameVariable(const TableVariable& a, const TableVariable& b) {
  const auto sameLabel = [](const ValueLabel& x, const ValueLabel& y) { return x.Code == y.Code && x.Text == y.Text; };
  const auto sameBits = [](double x, double y) { return x == y && std::signbit(x) == std::signbit(y); };
  return a.Name == b.Name && a.Type == b.Type && a.MissingCode == b.MissingCode &&
         std::equal(a.Labels.begin(), a.Labels.end(), b.Labels.begin(), b.Labels.end(), sameLabel) &&
         std::equal(a.Values.begin(), a.Values.end(), b.Values.begin(), b.Values.end(), sameBits);
}

}  // namespace

ReadOutcome CheckedRead(const std::function<MemoryTable()>& read) {
  ReadOutcome outcome;
  try {
    outcome.Table = read();
    CheckTable(*outcome.Table);
  } catch (const TableError& error) {
    outcome.Message = error.what();
    CheckMessage(outcome.Message);
  }
  return outcome;
}

bool IsSameTable(const MemoryTable& a, const MemoryTable& b) {
  if (a.VariableCount() != b.VariableCount()) return false;
  for (int number = 1; number <= a.VariableCount(); ++number) {
    if (!IsSameVariable(a.Variable(number), b.Variable(number))) return false;
  }
  return true;
}

}  // namespace orv::fuzz
