#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "SampleDocuments.h"
#include "standalone/documents/JsonWriter.h"

namespace orv {
namespace {

RunReport LungReport() {
  RunReport report;
  report.Program = "orvcox";
  report.Version = "0.1.0";
  report.Cases.emplace();
  report.Cases->Read = 228;
  report.Cases->Valid = 226;
  report.Cases->Complete = 163;
  report.Cases->Censored = 63;
  report.Cases->ExcludedFor(ExclusionReason::Missing) = 2;
  report.Cases->MissingByVariable = {{"ph.ecog", 1}, {"inst", 0}, {"ph.karno", 1}};
  report.Fit = FitReport{true, 0, 5};
  return report;
}

TEST(WriteJson, WritesTheWholeObjectInItsOrder) {
  RunReport report = LungReport();
  report.LeftOutColumns = {"sex_2"};
  report.Messages = {{10178, "A \"message\"."}, {0, "A message of the host."}};
  ResultDocuments documents;
  ResultDocument& sheet = documents.Add(Sheet({"Parameter Estimates\n * fixed", "Second title"}, {"age", "sex"},
                                              {TextColumn("Level of Effect", {"", "male"}),
                                               NumberColumn("Parameter Estimate", {0.017, NoNumber}, {true, false})}));
  sheet.Name = "estimates";
  sheet.Properties = {{"Complete", "163"}, {"Censored", "63"}};
  ResultDocument& text = documents.Add(ResultDocument{});
  text.Name = "pmml";
  text.Titles = {"Cox Proportional Hazards PMML script"};
  text.Content = TextContent{"<?xml version=\"1.0\"?>\n"};
  ResultDocument& chart = documents.Add(ResultDocument{});
  chart.Name = "survivor";
  chart.Titles = {"Survivor function"};
  chart.Content = ChartContent{"Time", "Survival", {{"Pattern 1", "value", {0, 5.5}, {1, NoNumber}}}};

  EXPECT_EQ(WriteJson(report, documents, WriteOptions{}), R"({
  "program": "orvcox",
  "version": "0.1.0",
  "cases": {
    "read": 228,
    "valid": 226,
    "complete": 163,
    "censored": 63,
    "excluded": { "missing": 2 },
    "missing_by_variable": { "ph.ecog": 1, "ph.karno": 1 }
  },
  "left_out_columns": ["sex_2"],
  "converged": true,
  "status": 0,
  "iterations": 5,
  "messages": [
    { "id": 10178, "text": "A \"message\"." },
    { "text": "A message of the host." }
  ],
  "documents": [
    {
      "kind": "sheet",
      "name": "estimates",
      "titles": ["Parameter Estimates\n * fixed", "Second title"],
      "columns": [
        { "name": "Level of Effect", "type": "text" },
        { "name": "Parameter Estimate", "type": "number" }
      ],
      "rows": ["age", "sex"],
      "cells": [
        [null, 0.017],
        ["male", null]
      ],
      "highlighted": [
        [false, true],
        [false, false]
      ],
      "properties": { "Censored": "63", "Complete": "163" }
    },
    {
      "kind": "text",
      "name": "pmml",
      "title": "Cox Proportional Hazards PMML script",
      "text": "<?xml version=\"1.0\"?>\n"
    },
    {
      "kind": "chart",
      "name": "survivor",
      "titles": ["Survivor function"],
      "x_title": "Time",
      "y_title": "Survival",
      "series": [
        {
          "name": "Pattern 1",
          "role": "value",
          "x": [0, 5.5],
          "y": [1, null]
        }
      ]
    }
  ]
}
)");
}

TEST(WriteJson, WritesTheSameObjectForARefusedRun) {
  RunReport report;
  report.Program = "orvcox";
  report.Version = "0.1.0";
  report.Messages = {{10014, "Please select a start variable."}};
  EXPECT_EQ(WriteJson(report, ResultDocuments{}, WriteOptions{}), R"({
  "program": "orvcox",
  "version": "0.1.0",
  "left_out_columns": [],
  "converged": false,
  "messages": [
    { "id": 10014, "text": "Please select a start variable." }
  ],
  "documents": []
}
)");
}

TEST(WriteJson, ListsTheReasonsForExclusionThatOccurredInTheirOrder) {
  RunReport report = LungReport();
  for (const ExclusionReason reason : {ExclusionReason::Expression, ExclusionReason::Factor, ExclusionReason::Status,
                                       ExclusionReason::Stratum, ExclusionReason::Entry, ExclusionReason::Time,
                                       ExclusionReason::Weight, ExclusionReason::Missing, ExclusionReason::Selection}) {
    report.Cases->ExcludedFor(reason) = 10 + static_cast<int>(reason);
  }
  EXPECT_NE(WriteJson(report, {}, {})
                .find(R"("excluded": { "selection": 10, "missing": 11, "weight": 12, )"
                      R"("time": 13, "entry": 14, "stratum": 15, "status": 16, "factor": 17, )"
                      R"("expression": 18 })"),
            std::string::npos);
  report.Cases->Excluded.fill(0);
  EXPECT_NE(WriteJson(report, {}, {}).find(R"("excluded": {},)"), std::string::npos);
}

TEST(WriteJson, KeepsEveryDigitOfTheVeteranTable) {
  ResultDocuments documents;
  documents.Add(VeteranEstimates());
  const auto object = nlohmann::json::parse(WriteJson(LungReport(), documents, {}));
  const auto& sheet = std::get<SheetContent>(documents[0].Content);
  const auto& cells = object["documents"][0]["cells"];
  ASSERT_EQ(cells.size(), 8U);
  for (std::size_t row = 0; row < 8; ++row) {
    ASSERT_EQ(cells[row].size(), 10U);
    for (std::size_t column = 1; column < 10; ++column) {
      EXPECT_EQ(cells[row][column].get<double>(), sheet.Columns[column].Numbers[row]) << row << ", " << column;
    }
  }
}

TEST(WriteJson, IsValidWhateverBytesTheTextsHold) {
  const std::string garbage("\xFF\x00\"\\\x1b\n\xC3", 7);
  RunReport report = LungReport();
  report.Messages = {{1, garbage}};
  report.LeftOutColumns = {garbage};
  report.Cases->MissingByVariable = {{garbage, 1}};
  ResultDocuments documents;
  ResultDocument& sheet = documents.Add(Sheet({garbage}, {garbage}, {TextColumn(garbage, {garbage})}, garbage));
  sheet.Name = garbage;
  sheet.Properties = {{garbage, garbage}};
  documents.Add(Sheet({}, {""}, {NumberColumn("x", {std::numeric_limits<double>::infinity()})}));
  const std::string text = WriteJson(report, documents, {});
  ASSERT_TRUE(nlohmann::json::accept(text)) << text;
  EXPECT_TRUE(nlohmann::json::parse(text)["documents"][1]["cells"][0][0].is_null());
}

TEST(WriteJson, WritesAnEmptySheetAndATextWithoutTitle) {
  ResultDocuments documents;
  documents.Add(Sheet({}, {}, {}));
  documents.Add(ResultDocument{}).Content = TextContent{};
  const auto object = nlohmann::json::parse(WriteJson(LungReport(), documents, {}));
  EXPECT_TRUE(object["documents"][0]["cells"].empty());
  EXPECT_TRUE(object["documents"][0]["cells"].is_array());
  EXPECT_TRUE(object["documents"][0]["properties"].is_object());
  EXPECT_EQ(object["documents"][1]["title"], "");
}

}  // namespace
}  // namespace orv
