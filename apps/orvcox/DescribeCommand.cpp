#include "apps/orvcox/DescribeCommand.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <limits>
#include <ostream>

#include "apps/orvcox/ExitCodes.h"
#include "apps/orvcox/ReadWithProgress.h"
#include "apps/orvcox/TableArgument.h"
#include "apps/orvcox/Terminal.h"
#include "standalone/analysis/ListSyntax.h"
#include "standalone/analysis/TableCodes.h"
#include "standalone/documents/DocumentFormats.h"
#include "standalone/tables/DescribeTable.h"

namespace orv {

namespace {

constexpr std::size_t kShownValues = 6;

std::string Count(int count, const char* thing) {
  return fmt::format("{} {}{}", count, thing, count == 1 ? "" : "s");
}

std::string Range(const VariableDescription& variable) {
  if (!variable.Minimum || !variable.Maximum) return {};
  if (!variable.MinimumDate.empty() && !variable.MaximumDate.empty()) {
    return fmt::format("{} to {}", variable.MinimumDate, variable.MaximumDate);
  }
  return fmt::format("{} to {}", *variable.Minimum, *variable.Maximum);
}

std::string LabelList(const std::vector<ValueLabel>& labels) {
  std::string text;
  for (std::size_t k = 0; k < labels.size() && k < kShownValues; ++k) {
    text += fmt::format("{}{}", k > 0 ? ", " : "", ListItem(labels[k].Text));
  }
  if (labels.size() > kShownValues) text += fmt::format(", ... ({} in all)", labels.size());
  return text;
}

// What a variable holds, in one column: the texts for its values, a few numbers one by one, which may be codes, or the
// range of many.
std::string ValuesOf(const MemoryTable& table, const VariableDescription& variable) {
  const std::string labels = LabelList(variable.Labels);
  if (variable.Type == VariableType::Number) {
    const std::vector<double> values = DistinctValues(table, variable.Number, kShownValues);
    if (labels.empty() && values.size() <= kShownValues) return fmt::format("{}", fmt::join(values, ", "));
  }
  const std::string range = Range(variable);
  return fmt::format("{}{}{}", range, range.empty() || labels.empty() ? "" : ": ", labels);
}

SheetColumn TextColumn(const char* name, std::vector<std::string> texts) {
  SheetColumn column;
  column.Name = name;
  column.IsText = true;
  column.Numbers.assign(texts.size(), std::numeric_limits<double>::quiet_NaN());
  column.Highlighted.assign(texts.size(), false);
  column.Texts = std::move(texts);
  return column;
}

SheetColumn NumberColumnOf(const char* name, std::vector<double> numbers) {
  SheetColumn column;
  column.Name = name;
  column.Highlighted.assign(numbers.size(), false);
  column.Numbers = std::move(numbers);
  return column;
}

ResultDocument DescriptionSheet(const MemoryTable& table) {
  std::vector<std::string> names;
  std::vector<double> numbers;
  std::vector<std::string> types;
  std::vector<double> valid;
  std::vector<double> missing;
  std::vector<std::string> values;
  std::vector<std::string> hints;
  std::vector<std::string> labels;
  bool hasHints = false;
  bool hasLabels = false;
  for (const VariableDescription& variable : DescribeTable(table)) {
    names.push_back(variable.Name);
    numbers.push_back(variable.Number);
    types.emplace_back(VariableTypeName(variable.Type));
    valid.push_back(variable.ValidCount);
    missing.push_back(variable.MissingCount);
    values.push_back(ValuesOf(table, variable));
    hints.emplace_back(variable.Hint);
    labels.push_back(variable.Label);
    hasHints = hasHints || !variable.Hint.empty();
    hasLabels = hasLabels || !variable.Label.empty();
  }
  SheetContent sheet;
  sheet.ShortName = "Variable";
  sheet.RowNames = names;
  sheet.Columns = {NumberColumnOf("No.", numbers), TextColumn("Type", types), NumberColumnOf("Valid", valid),
                   NumberColumnOf("Missing", missing), TextColumn("Values", values)};
  if (hasHints) sheet.Columns.push_back(TextColumn("Hint", hints));
  if (hasLabels) sheet.Columns.push_back(TextColumn("Label", labels));
  ResultDocument document;
  document.Name = "describe";
  document.Titles = {fmt::format("{}: {}, {}", table.Source(), Count(table.VariableCount(), "variable"),
                                 Count(table.CaseCount(), "case"))};
  if (hasHints) document.Titles.emplace_back("Hints are guesses from the values alone.");
  document.Content = std::move(sheet);
  return document;
}

}  // namespace

CLI::App* AddDescribeCommand(CLI::App& program, DescribeOptions& options) {
  CLI::App* describe = program.add_subcommand(
      "describe", "List the variables of a table: type, valid and missing counts, values, hints, labels.");
  describe->add_option("TABLE", options.Table, kTableHelp)->required()->type_name("");
  describe->footer(
      "Hints tell from the values alone what a variable could be: a time, a date, a status, a factor.\n"
      "\nExamples:\n"
      "  orvcox describe veteran.csv\n"
      "  orvcox describe trial.sas7bdat\n"
      "  orvcox describe \"sqlite:clinic.db?table=visits\"");
  return describe;
}

int RunDescribe(const DescribeOptions& options, std::ostream& out, std::ostream& err) {
  const Terminal messages = DescribeTerminal(err);
  const MemoryTable table = ReadWithProgress(options.Table, messages.IsTerminal ? &err : nullptr);
  ResultDocuments documents;
  documents.Add(DescriptionSheet(table));
  const Terminal terminal = DescribeTerminal(out);
  out << FindFormatByName("text")->Write({}, documents, {terminal.Width, terminal.Bold}) << std::flush;
  return ExitCodes::Done;
}

}  // namespace orv
