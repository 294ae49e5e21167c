// Data and options at which arithmetic breaks down: whatever becomes of the fit, no table shows a number that is none.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::RawSheet;
using testing::TestAnalysis;
using testing::TestColumn;
using Vector = std::vector<double>;

void ShowAllTables(TestAnalysis& analysis) {
  analysis.Analysis.CreateSummarySpreadsheet();
  analysis.Analysis.CreateNoCovariateSummarySpreadsheet();
  analysis.Analysis.CreateParameterEstimateSpreadsheet(0.95);
  analysis.Analysis.CreateType3Spreadsheet(0.95);
  analysis.Analysis.CreateIterationHistorySpreadsheet();
  analysis.Analysis.CreateDesignTermsSpreadsheet();
  analysis.Analysis.CreateCovarianceSpreadsheet();
  analysis.Analysis.CreateCorrelationSpreadsheet();
}

// Every written cell of every sheet holds a finite number.
void ExpectFinite(const TestAnalysis& analysis, const std::string& what) {
  for (const RawSheet& sheet : analysis.Host.Sheets) {
    for (int column = 0; column < sheet.Fixed.ColumnCount; ++column) {
      for (int row = 0; row < sheet.Fixed.RowCount; ++row) {
        if (sheet.IsUnwritten(row, column)) continue;
        EXPECT_TRUE(std::isfinite(sheet.Cells[sheet.Index(row, column)]))
            << what << ": " << sheet.Title1.c_str() << ", row " << row << ", column " << column << " holds "
            << sheet.Cells[sheet.Index(row, column)];
      }
    }
  }
}

Vector Times(double factor) {
  Vector values;
  for (const double x : {1.0, 4.0, -2.0, 8.0, -5.0, 7.0, 1.5, 2.0}) values.push_back(x * factor);
  return values;
}

struct Nasty {
  const char* what;
  Vector x;
  Vector weights = {1, 1, 1, 1, 1, 1, 1, 1};
  Vector time = {1, 2, 3, 4, 5, 6, 7, 8};
  Vector status = {1, 1, 0, 1, 1, 0, 1, 1};
};

const std::vector<Nasty>& NastyData() {
  static const std::vector<Nasty> data = {
      {"values of 1e300", Times(1e300)},
      {"values of 1e150", Times(1e150)},
      {"values of 1e100", Times(1e100)},
      {"values of 1e-100", Times(1e-100)},
      {"values of 1e-150", Times(1e-150)},
      {"values of 1e-155", Times(1e-155)},
      {"values of 1e-160", Times(1e-160)},
      {"values of 1e-200", Times(1e-200)},
      {"denormal values", Times(5e-324)},
      {"one outlier of 1e15", {1, 2, 1, 3, 2, 1e15, 2, 1}},
      {"one outlier of 1e155", {1, 2, 1, 3, 2, 1e155, 2, 1}},
      {"one value apart", {0, 0, 0, 1, 0, 0, 0, 0}},
      {"separable", {8, 7, 6, 5, 4, 3, 2, 1}},
      {"separable, binary", {1, 1, 1, 1, 0, 0, 0, 0}},
      {"large mean and small spread", {1e12, 1e12 + 1, 1e12, 1e12 + 2, 1e12, 1e12 + 1, 1e12, 1e12 + 3}},
      {"spread at the rounding of the mean", {1, 1 + 2e-16, 1, 1 + 4e-16, 1, 1, 1, 1 + 2e-16}},
      {"constant", {3, 3, 3, 3, 3, 3, 3, 3}},
      {"weights of 1e300", Times(1), Vector(8, 1e300)},
      {"weights of 1e307", Times(1), Vector(8, 1e307)},
      {"weights of 1e308", Times(1), Vector(8, 1e308)},
      {"weights of 1e-300", Times(1), Vector(8, 1e-300)},
      {"denormal weights", Times(1), Vector(8, 5e-324)},
      {"weights of all sizes", Times(1), {1e-300, 1e300, 1, 1e-10, 1e200, 1e-200, 5, 1e100}},
      {"one event", Times(1), Vector(8, 1.0), {1, 2, 3, 4, 5, 6, 7, 8}, {0, 0, 1, 0, 0, 0, 0, 0}},
      {"last case is the event", Times(1), Vector(8, 1.0), {1, 2, 3, 4, 5, 6, 7, 8}, {0, 0, 0, 0, 0, 0, 0, 1}},
      {"one time", Times(1), Vector(8, 1.0), Vector(8, 4.0)},
      {"times of 1e300", Times(1), Vector(8, 1.0), {1e300, 2e300, 3e300, 4e300, 5e300, 6e300, 7e300, 8e300}},
      {"times of zero", Times(1), Vector(8, 1.0), Vector(8, 0.0)},
  };
  return data;
}

const std::vector<double> kOther = {0.5, -1, 2, 0.25, 1, -0.5, 3, -2};

TEST(FiniteTables, WithNastyData) {
  for (const Nasty& data : NastyData()) {
    for (const bool efron : {false, true}) {
      for (const bool strata : {false, true}) {
        const std::string what =
            std::string(data.what) + (efron ? ", Efron" : ", Breslow") + (strata ? ", strata" : "");
        TestAnalysis analysis({{"time", data.time},
                               {"status", data.status},
                               {"x", data.x},
                               {"other", kOther},
                               {"w", data.weights},
                               {"g", {1, 1, 2, 2, 2, 1, 1, 2}}});
        analysis.Time({"time"}).Status("status").Covariates({"x", "other"}).DefaultDesign().Weights("w");
        analysis.Settings().Likelihood = efron ? Likelihoods::Efron : Likelihoods::Breslow;
        if (strata) analysis.Strata("g", {1, 2});
        if (analysis.Run() != 0) {
          EXPECT_EQ(analysis.Host.Messages().size(), 1U) << what << ": a run without results says why";
          continue;
        }
        ShowAllTables(analysis);
        EXPECT_GE(analysis.Host.Sheets.size(), 7U) << what;
        ExpectFinite(analysis, what);
      }
    }
  }
}

// Two covariates in the same extreme unit: their variances multiply beyond a double.
TEST(FiniteTables, WithTwoCovariatesInExtremeUnits) {
  for (const double unit : {1e-150, 1e-120, 1e-80, 1e80, 1e120, 1e150}) {
    Vector other = kOther;
    for (double& value : other) value *= unit;
    TestAnalysis analysis({{"time", {1, 2, 3, 4, 5, 6, 7, 8}},
                           {"status", {1, 1, 0, 1, 1, 0, 1, 1}},
                           {"x", Times(unit)},
                           {"other", other}});
    analysis.Time({"time"}).Status("status").Covariates({"x", "other"}).DefaultDesign();
    if (analysis.Run() != 0) continue;
    ShowAllTables(analysis);
    ExpectFinite(analysis, "unit " + std::to_string(std::log10(unit)));
  }
}

TEST(FiniteTables, WithNastyStarts) {
  for (const double start : {1e-300, 5.0, 15.0, 40.0, 800.0, 1e10, 1e300, -15.0, -1e300}) {
    for (const bool fixed : {false, true}) {
      TestAnalysis analysis({{"time", {1, 2, 3, 4, 5, 6, 7, 8}},
                             {"status", {1, 1, 0, 1, 1, 0, 1, 1}},
                             {"x", Times(1)},
                             {"other", kOther}});
      analysis.Time({"time"}).Status("status").Covariates({"x", "other"}).DefaultDesign().StartAt({start, 0.0});
      if (fixed) analysis.Fix({true, false});
      if (analysis.Run() != 0) continue;
      ShowAllTables(analysis);
      ExpectFinite(analysis, std::to_string(start) + (fixed ? ", fixed" : ""));
    }
  }
}

TEST(FiniteTables, WithMoreColumnsThanCases) {
  std::vector<TestColumn> columns = {{"time", {1, 2, 3, 4}}, {"status", {1, 1, 1, 0}}};
  std::vector<std::string> names;
  for (int k = 0; k < 8; ++k) {
    Vector values;
    for (int i = 0; i < 4; ++i) values.push_back(std::sin(3.0 * i + k * k));
    names.push_back("x" + std::to_string(k));
    columns.push_back({names.back(), values});
  }
  TestAnalysis analysis(columns);
  analysis.Time({"time"}).Status("status").Covariates(names).DefaultDesign();
  if (analysis.Run() != 0) GTEST_SKIP() << "no results to show";
  ShowAllTables(analysis);
  ExpectFinite(analysis, "8 columns, 4 cases");
}

// ---- Fits that end otherwise ----------------------------------------------------------------------------------------

TEST(FiniteTables, OfFitsThatEndOtherwise) {
  struct {
    const char* what;
    double start;
    std::function<void(TestAnalysis&)> prepare;
  } const ways[] = {
      {"iteration limit", 0.0, [](TestAnalysis& a) { a.Fit().m_MaxIterations = 1; }},
      {"no iteration", 0.0, [](TestAnalysis& a) { a.Fit().m_MaxIterations = 0; }},
      {"cancelled", 0.0, [](TestAnalysis& a) { a.Host.CancelBarAt = 2; }},
      {"out of memory", 0.0, [](TestAnalysis& a) { a.Host.FailAllocation(1); }},
      {"last iteration used", 0.0,
       [](TestAnalysis& a) { a.Host.OnBarMove = [](int) { throw std::runtime_error("the bar is gone"); }; }},
  };
  for (const auto& way : ways) {
    for (const bool covariates : {true, false}) {
      TestAnalysis analysis({{"time", {1, 2, 3, 4, 5, 6, 7, 8}},
                             {"status", {1, 1, 0, 1, 1, 0, 1, 1}},
                             {"x", Times(1)},
                             {"f", {1, 2, 1, 2, 2, 1, 2, 1}}});
      analysis.Time({"time"}).Status("status");
      if (covariates) analysis.Covariates({"x"}).Factor("f", {1, 2}).DefaultDesign();
      CCoxFit& fit = analysis.PrepareFit();
      way.prepare(analysis);
      fit.FitCurrentModel();
      ASSERT_NE(analysis.Analysis.m_pCoxData, nullptr) << way.what;
      ShowAllTables(analysis);
      ExpectFinite(analysis, way.what);
    }
  }
}

TEST(FiniteTables, OfAFitWhoseEveryAllocationFails) {
  int requests = 1;
  for (int failing = 1; failing <= requests; ++failing) {
    TestAnalysis analysis({{"time", {1, 2, 3, 4, 5, 6, 7, 8}},
                           {"status", {1, 1, 0, 1, 1, 0, 1, 1}},
                           {"x", Times(1)},
                           {"f", {1, 2, 1, 2, 2, 1, 2, 1}}});
    analysis.Time({"time"}).Status("status").Covariates({"x"}).Factor("f", {1, 2}).DefaultDesign();
    CCoxFit& fit = analysis.PrepareFit();
    if (failing == 1) {
      analysis.Host.FailAllocation(0);
      fit.FitCurrentModel();
      requests = analysis.Host.Requests();
      fit.ResetResults();
    }
    analysis.Host.FailAllocation(failing);
    fit.FitCurrentModel();
    analysis.Host.FailAllocation(0);
    ShowAllTables(analysis);
    ExpectFinite(analysis, "allocation " + std::to_string(failing));
  }
  EXPECT_GT(requests, 5);
}

}  // namespace
}  // namespace orv
