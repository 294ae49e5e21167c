#include <gtest/gtest.h>

#include <cfenv>
#include <string>
#include <vector>

#include "inference/SchoenfeldResiduals.h"
#include "support/SheetReading.h"
#include "support/TestAnalysis.h"
#include "ui/CCoxPHResults.h"

namespace orv {
namespace {

using testing::LastSheet;
using testing::SheetView;
using testing::TestAnalysis;
using testing::TestColumn;
using Texts = std::vector<std::string>;

const char* const kUnable = "dsplst 0: Unable to complete the test of proportional hazards.";
const char* const kZeroTime =
    "dsplst 0: The observed survival time of one or more complete cases is zero.  The test of proportional hazards "
    "with "
    "log transformation cannot be completed.";

constexpr TimeTransform kTransforms[] = {TimeTransform::Identity, TimeTransform::Log, TimeTransform::KaplanMeier,
                                         TimeTransform::Rank};

// Twelve cases with ties; `twice` repeats a covariate, so that one of the two is dropped.
std::vector<TestColumn> Columns() {
  return {{"start", {0, 0, 1, 0, 3, 2, 4, 1, 0, 5, 1, 2}},
          {"time", {5, 3, 8, 2, 9, 4, 7, 6, 1, 10, 3, 8}},
          {"status", {1, 1, 0, 1, 1, 0, 1, 1, 1, 1, 1, 1}},
          {"a", {0.5, 1.5, -0.5, 2.0, -1.0, 0.3, 0.1, -0.8, 1.1, -0.4, 0.9, 0.2}},
          {"b", {1, 0, 0, 1, 1, 0, 1, 0, 0, 1, 1, 0}},
          {"twice", {1, 3, -1, 4, -2, 0.6, 0.2, -1.6, 2.2, -0.8, 1.8, 0.4}},
          {"zero", {0, 3, 8, 2, 9, 4, 7, 6, 1, 10, 3, 8}},
          {"same", {4, 4, 9, 4, 4, 2, 4, 4, 4, 4, 4, 4}}};
}

class TestProportionalHazards : public ::testing::Test {
 protected:
  TestProportionalHazards() : analysis(Columns()) {}

  CCoxPHResults Run(const std::string& time, const std::vector<std::string>& covariates) {
    analysis.Time({time}).Status("status").Covariates(covariates).DefaultDesign();
    EXPECT_EQ(analysis.Run(), 0);
    analysis.Host.Trace.clear();
    return CCoxPHResults(analysis.Analysis);
  }
  void ExpectRefused(CCoxPHResults& results, const std::string& message) {
    const std::size_t sheets = analysis.Host.Sheets.size();
    analysis.Host.Trace.clear();
    EXPECT_EQ(results.TestProportionalHazards(), 1);
    EXPECT_EQ(analysis.Host.Trace, (Texts{message}));
    EXPECT_EQ(analysis.Host.Sheets.size(), sheets);
    EXPECT_TRUE(results.Fit().m_SchoenfeldResiduals.empty());
    EXPECT_TRUE(results.Fit().m_ScaledSchoenfeldResiduals.empty());
  }
  TestAnalysis analysis;
};

TEST_F(TestProportionalHazards, ShowsOneTableForTheChosenTransform) {
  CCoxPHResults results = Run("time", {"a", "b"});
  EXPECT_EQ(results.Transform, TimeTransform::Identity);
  const char* const titles[] = {"Time", "Log Time", "Kaplan-Meier", "Rank"};
  for (const TimeTransform transform : kTransforms) {
    results.Transform = transform;
    const std::size_t sheets = analysis.Host.Sheets.size();
    EXPECT_EQ(results.TestProportionalHazards(), 0);
    EXPECT_EQ(analysis.Host.Sheets.size(), sheets + 1);
    const SheetView sheet = LastSheet(analysis.Host);
    const std::string title = titles[static_cast<int>(transform)];
    EXPECT_EQ(sheet.Titles(), (Texts{"Test of proportionality assumption \nTransformation = " + title}));
    EXPECT_EQ(sheet.RowNames(), (Texts{"a", "b", "Overall"}));
    EXPECT_GT(sheet.Value(2, "Chi-square"), 0.0);
  }
  EXPECT_TRUE(analysis.Host.Trace.empty()) << "no message";
}

TEST_F(TestProportionalHazards, TestsIntervalsToo) {
  analysis.Interval("start", "time").Status("status").Covariates({"a", "b"}).DefaultDesign();
  ASSERT_EQ(analysis.Run(), 0);
  CCoxPHResults results(analysis.Analysis);
  for (const TimeTransform transform : kTransforms) {
    results.Transform = transform;
    EXPECT_EQ(results.TestProportionalHazards(), 0);
    EXPECT_EQ(LastSheet(analysis.Host).Rows(), 3);
  }
}

TEST_F(TestProportionalHazards, LeavesOutDroppedColumns) {
  CCoxPHResults results = Run("time", {"a", "twice", "b"});
  ASSERT_EQ(results.TestProportionalHazards(), 0);
  const SheetView sheet = LastSheet(analysis.Host);
  EXPECT_EQ(sheet.RowNames(), (Texts{"a", "b", "Overall"}));
  EXPECT_EQ(sheet.Value(2, "df"), 2.0);
}

TEST_F(TestProportionalHazards, HighlightsByTheConfidenceLevelOfTheDialog) {
  CCoxPHResults results = Run("time", {"a"});
  ASSERT_EQ(results.TestProportionalHazards(), 0);
  const double p = LastSheet(analysis.Host).Value(0, "P value");
  for (const double shift : {-0.01, 0.01}) {
    results.ConfidenceLevel = 1.0 - p + shift;
    ASSERT_EQ(results.TestProportionalHazards(), 0);
    EXPECT_EQ(LastSheet(analysis.Host).IsHighlighted(0, 2), shift < 0.0);
  }
}

TEST_F(TestProportionalHazards, LogOfAnEventAtTimeZeroIsRefused) {
  CCoxPHResults results = Run("zero", {"a"});
  results.Transform = TimeTransform::Log;
  ExpectRefused(results, kZeroTime);
  results.Transform = TimeTransform::Identity;
  EXPECT_EQ(results.TestProportionalHazards(), 0);
}

TEST_F(TestProportionalHazards, AllEventsAtOneTimeCannotBeTested) {
  CCoxPHResults results = Run("same", {"a"});
  for (const TimeTransform transform : kTransforms) {
    results.Transform = transform;
    ExpectRefused(results, kUnable);
  }
}

TEST_F(TestProportionalHazards, NumericalFailureEndsInTheMessage) {
  CCoxPHResults results = Run("time", {"a", "b"});
  CCoxFit& fit = results.Fit();
  const DenseMatrix covariance = fit.m_Covariance;
  fit.m_Covariance[0][0] = 0.0;
  ExpectRefused(results, kUnable);
  fit.m_Covariance[0][0] = 1e308;
  ExpectRefused(results, kUnable);
  fit.m_Covariance = covariance;
  EXPECT_EQ(results.TestProportionalHazards(), 0);
}

TEST_F(TestProportionalHazards, MissingCovarianceEndsInTheMessage) {
  CCoxPHResults results = Run("time", {"a", "b"});
  results.Fit().m_Covariance.clear();
  ExpectRefused(results, kUnable);
}

TEST_F(TestProportionalHazards, ModelWithoutColumnsCannotBeTested) {
  CCoxPHResults results = Run("time", {});
  ExpectRefused(results, kUnable);
}

TEST_F(TestProportionalHazards, MemoryThatIsOutEndsInTheMessage) {
  CCoxPHResults results = Run("time", {"a", "b"});
  const int blocks = analysis.Host.LiveBlocks();
  analysis.Host.FailAllocation(1);
  ExpectRefused(results, kUnable);
  EXPECT_EQ(analysis.Host.LiveBlocks(), blocks);
}

TEST_F(TestProportionalHazards, DropsTheResidualsThatItComputed) {
  CCoxPHResults results = Run("time", {"a", "b"});
  ASSERT_EQ(results.TestProportionalHazards(), 0);
  EXPECT_TRUE(results.Fit().m_SchoenfeldResiduals.empty());
  EXPECT_TRUE(results.Fit().m_ScaledSchoenfeldResiduals.empty());
}

TEST_F(TestProportionalHazards, GivesTheCallersFloatingPointEnvironmentBack) {
  CCoxPHResults results = Run("time", {"a", "b"});
  std::fesetround(FE_UPWARD);
  std::feclearexcept(FE_ALL_EXCEPT);
  results.Fit().m_Covariance[0][0] = 0.0;
  EXPECT_EQ(results.TestProportionalHazards(), 1);
  const int rounding = std::fegetround();
  const int flags = std::fetestexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW);
  std::fesetround(FE_TONEAREST);
  EXPECT_EQ(rounding, FE_UPWARD);
  EXPECT_EQ(flags, 0);
}

}  // namespace
}  // namespace orv
