#include "standalone/documents/JsonWriter.h"

#include <limits>
#include <string_view>

#include "standalone/documents/JsonText.h"

namespace orv {
namespace {

constexpr std::string_view ExclusionReasonNames[] = {"selection", "missing", "weight", "time",      "entry",
                                                     "stratum",   "status",  "factor", "expression"};
static_assert(std::size(ExclusionReasonNames) == ExclusionReasonCount);

constexpr double Missing = std::numeric_limits<double>::quiet_NaN();

void WriteMember(JsonText& json, std::string_view key, std::string_view text) {
  json.Key(key);
  json.String(text);
}

void WriteMember(JsonText& json, std::string_view key, int number) {
  json.Key(key);
  json.Integer(number);
}

void WriteTexts(JsonText& json,
                std::string_view key,
                const std::vector<std::string>& texts,
                JsonLayout layout = JsonLayout::Filled) {
  json.Key(key);
  json.BeginArray(layout);
  for (const std::string& text : texts) json.String(text);
  json.End();
}

void WriteNumbers(JsonText& json, std::string_view key, const std::vector<double>& numbers) {
  json.Key(key);
  json.BeginArray(JsonLayout::Filled);
  for (const double number : numbers) json.Number(number);
  json.End();
}

void WriteCases(JsonText& json, const CaseReport& cases) {
  json.Key("cases");
  json.BeginObject(JsonLayout::Lines);
  WriteMember(json, "read", cases.Read);
  WriteMember(json, "valid", cases.Valid);
  WriteMember(json, "complete", cases.Complete);
  WriteMember(json, "censored", cases.Censored);
  json.Key("excluded");
  json.BeginObject(JsonLayout::Line);
  for (std::size_t reason = 0; reason < ExclusionReasonCount; ++reason) {
    if (cases.Excluded[reason] > 0) WriteMember(json, ExclusionReasonNames[reason], cases.Excluded[reason]);
  }
  json.End();
  json.Key("missing_by_variable");
  json.BeginObject(JsonLayout::Filled);
  for (const auto& [variable, count] : cases.MissingByVariable) {
    if (count > 0) WriteMember(json, variable, count);
  }
  json.End();
  json.End();
}

void WriteMessages(JsonText& json, const std::vector<ReportedMessage>& messages) {
  json.Key("messages");
  json.BeginArray(JsonLayout::Lines);
  for (const ReportedMessage& message : messages) {
    json.BeginObject(JsonLayout::Line);
    if (message.Id != 0) WriteMember(json, "id", message.Id);
    WriteMember(json, "text", message.Text);
    json.End();
  }
  json.End();
}

void WriteCell(JsonText& json, const SheetColumn& column, std::size_t row) {
  switch (column.KindOfCell(row)) {
    case SheetCellKind::Text:
      return json.String(column.Texts[row]);
    case SheetCellKind::Number:
      return json.Number(column.Numbers[row]);
    case SheetCellKind::Missing:
      return json.Number(Missing);
  }
}

void WriteProperties(JsonText& json, const ResultDocument& document) {
  json.Key("properties");
  json.BeginObject(JsonLayout::Line);
  for (const auto& [name, text] : document.Properties) WriteMember(json, name, text);
  json.End();
}

// What follows `kind` and `name`, for each kind of document.
struct ContentWriter {
  JsonText& Json;
  const ResultDocument& Document;

  void operator()(const SheetContent& sheet) const {
    WriteTexts(Json, "titles", Document.Titles, JsonLayout::Line);
    Json.Key("columns");
    Json.BeginArray(JsonLayout::Lines);
    for (std::size_t column = 0; column < sheet.Columns.size(); ++column) {
      Json.BeginObject(JsonLayout::Line);
      WriteMember(Json, "name", sheet.Heading(column));
      WriteMember(Json, "type", sheet.Columns[column].IsText ? "text" : "number");
      Json.End();
    }
    Json.End();
    WriteTexts(Json, "rows", sheet.RowNames);
    WriteRows("cells", sheet, WriteCell);
    WriteRows("highlighted", sheet, [](JsonText& json, const SheetColumn& column, std::size_t row) {
      json.Boolean(column.Highlighted[row]);
    });
    WriteProperties(Json, Document);
  }

  void operator()(const TextContent& content) const {
    WriteMember(Json, "title", Document.Titles.empty() ? std::string_view{} : std::string_view{Document.Titles[0]});
    WriteMember(Json, "text", content.Text);
    if (!Document.Properties.empty()) WriteProperties(Json, Document);
  }

  void operator()(const ChartContent& chart) const {
    WriteTexts(Json, "titles", Document.Titles, JsonLayout::Line);
    WriteMember(Json, "x_title", chart.XTitle);
    WriteMember(Json, "y_title", chart.YTitle);
    Json.Key("series");
    Json.BeginArray(JsonLayout::Lines);
    for (const ChartSeries& series : chart.Series) {
      Json.BeginObject(JsonLayout::Lines);
      WriteMember(Json, "name", series.Name);
      WriteMember(Json, "role", series.Role);
      WriteNumbers(Json, "x", series.X);
      WriteNumbers(Json, "y", series.Y);
      Json.End();
    }
    Json.End();
    if (!Document.Properties.empty()) WriteProperties(Json, Document);
  }

 private:
  // One array per row, one element per column.
  template <typename WriteElement>
  void WriteRows(std::string_view key, const SheetContent& sheet, WriteElement writeElement) const {
    Json.Key(key);
    Json.BeginArray(JsonLayout::Lines);
    for (std::size_t row = 0; row < sheet.RowNames.size(); ++row) {
      Json.BeginArray(JsonLayout::Line);
      for (const SheetColumn& column : sheet.Columns) writeElement(Json, column, row);
      Json.End();
    }
    Json.End();
  }
};

void WriteDocument(JsonText& json, const ResultDocument& document) {
  constexpr std::string_view KindNames[] = {"sheet", "text", "chart"};
  json.BeginObject(JsonLayout::Lines);
  WriteMember(json, "kind", KindNames[document.Content.index()]);
  WriteMember(json, "name", document.Name);
  std::visit(ContentWriter{json, document}, document.Content);
  json.End();
}

}  // namespace

std::string WriteJson(const RunReport& report, const ResultDocuments& documents, const WriteOptions& /*options*/) {
  JsonText json;
  json.BeginObject(JsonLayout::Lines);
  WriteMember(json, "program", report.Program);
  WriteMember(json, "version", report.Version);
  if (report.Cases) WriteCases(json, *report.Cases);
  WriteTexts(json, "left_out_columns", report.LeftOutColumns);
  json.Key("converged");
  json.Boolean(report.Fit && report.Fit->Converged);
  if (report.Fit) {
    WriteMember(json, "status", report.Fit->Status);
    WriteMember(json, "iterations", report.Fit->Iterations);
  }
  WriteMessages(json, report.Messages);
  json.Key("documents");
  json.BeginArray(JsonLayout::Lines);
  for (const ResultDocument& document : documents) WriteDocument(json, document);
  json.End();
  json.End();
  return json.Take();
}

}  // namespace orv
