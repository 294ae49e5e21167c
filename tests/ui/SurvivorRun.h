// A small trial, run, with its results dialog: its form of covariate patterns and its tables of curves.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "inference/BreslowBaseline.h"
#include "inference/SurvivorFunctions.h"
#include "support/SheetReading.h"
#include "support/TestAnalysis.h"
#include "ui/CCoxPHResults.h"

namespace orv::testing {

// Eight cases: x with a mean of 3, or 3.8 with weights, z, and a factor whose code 2 is labelled.
inline std::vector<TestColumn> SmallTrial() {
  return {{"time", {5, 3, 8, 1, 9, 4, 7, 2}},
          {"status", {1, 1, 0, 1, 1, 1, 0, 1}},
          {"x", {1, 2, 3, 4, 5, 1, 3, 5}},
          {"z", {0.5, 0.25, 0.75, 0.5, 1.5, 0, 0.5, 0}},
          {"arm", {1, 2, 1, 2, 2, 3, 2, 3}, {{2, "new drug"}}},
          {"w", {1, 1, 1, 1, 5, 1, 1, 1}},
          {"site", {4, 4, 4, 2, 2, 2, 4, 2}, {{4, "Ulm"}}}};
}

// Means are running sums, so that they may differ from the fraction in their last digits.
inline void ExpectNear(const DenseMatrix& actual, const DenseMatrix& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t k = 0; k < actual.size(); ++k) {
    ASSERT_EQ(actual[k].size(), expected[k].size());
    for (std::size_t j = 0; j < actual[k].size(); ++j)
      EXPECT_NEAR(actual[k][j], expected[k][j], 1e-14) << k << ' ' << j;
  }
}

class SurvivorRun : public ::testing::Test {
 protected:
  using Preparation = std::function<void(TestAnalysis&)>;
  void Run(const Preparation& prepare = [](TestAnalysis&) {}) {
    analysis = std::make_unique<TestAnalysis>(SmallTrial());
    analysis->Settings().Coding = Codings::Reference;
    analysis->Time({"time"}).Status("status").Covariates({"x", "z"}).Factor("arm", {1, 2, 3});
    analysis->Design({{"x", "v3"}, {"z", "v4"}, {"arm", "v5"}});
    prepare(*analysis);
    ASSERT_EQ(analysis->Run(), 0);
    results = std::make_unique<CCoxPHResults>(analysis->Analysis);
    m_sheets = analysis->Host.Sheets.size();
  }
  // Shows the form; `edit` returns whether it is confirmed.
  int Specify(const std::function<bool(SheetContent&)>& edit) {
    analysis->Host.SetSheetEditor([&](SheetContent& sheet) {
      shown = sheet;
      return edit(sheet);
    });
    return results->SpecifyCovariateValues();
  }
  int Confirm() {
    return Specify([](SheetContent&) { return true; });
  }
  void ExpectRefusal(int returned, const std::string& message) {
    EXPECT_EQ(returned, 1);
    EXPECT_EQ(analysis->Host.Messages(), (std::vector<std::string>{message}));
  }
  // The tables shown since the last call.
  std::vector<SheetView> NewSheets() {
    std::vector<SheetView> sheets;
    for (; m_sheets < analysis->Host.Sheets.size(); ++m_sheets) {
      sheets.emplace_back(analysis->Host.Documents()[m_sheets]);
    }
    return sheets;
  }
  SheetView TheSheet() {
    std::vector<SheetView> sheets = NewSheets();
    EXPECT_EQ(sheets.size(), 1U);
    return sheets.front();
  }
  SheetView Survivor() {
    results->CreateSurvivorSummary();
    return TheSheet();
  }
  SheetView Hazard() {
    results->CreateCumulativeHazardSummary();
    return TheSheet();
  }
  // The rows after the first are these points.
  void ExpectPoints(const SheetView& sheet, const std::vector<CurvePoint>& points) {
    ASSERT_EQ(sheet.Rows(), static_cast<int>(points.size()) + 1);
    for (std::size_t k = 0; k < points.size(); ++k) {
      const int row = static_cast<int>(k) + 1;
      EXPECT_EQ(sheet.Number(row, 0), points[k].Time) << row;
      EXPECT_EQ(sheet.Number(row, 1), points[k].Value) << row;
      if (sheet.Columns() == 2) continue;
      const auto limit = [&](double ConfidenceLimits::*side) {
        return points[k].Limits ? std::optional<double>((*points[k].Limits).*side) : std::nullopt;
      };
      EXPECT_EQ(sheet.Number(row, 2), limit(&ConfidenceLimits::Lower)) << row;
      EXPECT_EQ(sheet.Number(row, 3), limit(&ConfidenceLimits::Upper)) << row;
    }
  }
  std::vector<CurvePoint> SurvivorPoints(SurvivorType type = SurvivorType::Breslow,
                                         SurvivorCIType limits = SurvivorCIType::Normal,
                                         double level = 0.95) {
    FillEventRiskMoments(analysis->Fit());
    return *SurvivorFunction(analysis->Fit(), 0, results->Patterns.DesignRows.at(0), type, limits, level,
                             SmallRiskSums::Multiplied);
  }
  std::vector<CurvePoint> HazardPoints(bool robust = false) {
    FillEventRiskMoments(analysis->Fit());
    return *CumulativeHazard(analysis->Fit(), 0, results->Patterns.DesignRows.at(0), 0.95, robust);
  }

  std::unique_ptr<TestAnalysis> analysis;
  std::unique_ptr<CCoxPHResults> results;
  SheetContent shown;  // the form as it came

 private:
  std::size_t m_sheets = 0;
};

}  // namespace orv::testing
