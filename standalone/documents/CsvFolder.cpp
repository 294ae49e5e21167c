#include "standalone/documents/CsvFolder.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <variant>

#include "standalone/documents/ChartSheets.h"
#include "standalone/documents/CsvText.h"
#include "standalone/documents/RunFacts.h"
#include "standalone/documents/ShownTable.h"

namespace orv {
namespace {

constexpr const char* UntitledColumn = "value";
constexpr const char* UntitledNames = "name";

const std::string& OrElse(const std::string& text, const std::string& fallback) {
  return text.empty() ? fallback : text;
}

std::string SheetAsCsv(const SheetContent& sheet) {
  const bool hasNames =
      std::any_of(sheet.RowNames.begin(), sheet.RowNames.end(), [](const std::string& name) { return !name.empty(); });
  // As in the other forms: the name of the corner stands over a table only beside the names of columns.
  const bool hasTitles = std::any_of(sheet.Columns.begin(), sheet.Columns.end(),
                                     [](const SheetColumn& column) { return !column.Title().empty(); });
  CsvText csv;
  if (hasNames) csv.Text(OrElse(hasTitles ? sheet.ShortName : "", UntitledNames));
  for (std::size_t k = 0; k < sheet.Columns.size(); ++k) csv.Text(OrElse(sheet.Heading(k), UntitledColumn));
  csv.EndRecord();
  for (std::size_t row = 0; row < sheet.RowNames.size(); ++row) {
    if (hasNames) csv.Text(sheet.RowNames[row]);
    for (const SheetColumn& column : sheet.Columns) {
      column.KindOfCell(row) == SheetCellKind::Text ? csv.Text(column.Texts[row]) : csv.Number(column.Numbers[row]);
    }
    csv.EndRecord();
  }
  return csv.Take();
}

std::string FactsAsCsv(const RunReport& report) {
  CsvText csv;
  csv.Text("item");
  csv.Text("value");
  csv.EndRecord();
  for (const RunFact& fact : FactsOfRun(report)) {
    csv.Text(fact.Name);
    csv.Text(fact.Text);
    csv.EndRecord();
  }
  return csv.Take();
}

bool IsText(const ResultDocument& document) {
  return std::holds_alternative<TextContent>(document.Content);
}

// `number` counts the documents from 1.
std::string FileNameOf(const ResultDocument& document, std::size_t number) {
  return fmt::format("{:02}-{}{}", number, document.Name.empty() ? "result" : document.Name,
                     IsText(document) ? ".txt" : ".csv");
}

std::string ContentsAsCsv(const ResultDocuments& documents) {
  CsvText csv;
  for (const char* name : {"file", "result", "title"}) csv.Text(name);
  csv.EndRecord();
  std::size_t number = 0;
  for (const ResultDocument& document : documents) {
    csv.Text(FileNameOf(document, ++number));
    csv.Text(document.Name);
    csv.Text(fmt::format("{}", fmt::join(TitleLines(document.Titles), "\n")));
    csv.EndRecord();
  }
  return csv.Take();
}

}  // namespace

void WriteCsvFiles(const RunReport& report, const ResultDocuments& documents, const FileSink& sink) {
  sink("00-run.csv", FactsAsCsv(report));
  sink("00-contents.csv", ContentsAsCsv(documents));
  std::size_t number = 0;
  for (const ResultDocument& document : documents) {
    const std::string name = FileNameOf(document, ++number);
    if (const auto* sheet = std::get_if<SheetContent>(&document.Content)) {
      sink(name, SheetAsCsv(*sheet));
    } else if (const auto* text = std::get_if<TextContent>(&document.Content)) {
      sink(name, text->Text);
    } else {
      sink(name, SheetAsCsv(PointsOfSeries(std::get<ChartContent>(document.Content))));
    }
  }
}

}  // namespace orv
