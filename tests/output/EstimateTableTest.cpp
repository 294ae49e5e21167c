#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "output/EstimateTable.h"
#include "support/SheetReading.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::LastSheet;
using testing::SheetView;
using testing::TestAnalysis;
using testing::TestColumn;
using Texts = std::vector<std::string>;

constexpr double kZ95 = 1.959963984540054;  // the 0.975 quantile of the normal distribution

const std::vector<TestColumn>& Columns() {
  static const std::vector<TestColumn> columns = {
      {"time", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
      {"status", {1, 1, 1, 1, 1, 0, 1, 0, 1, 1, 0, 1}},
      {"a", {1, 4, 2, 8, 5, 7, 1, 2, 6, 3, 5, 4}},
      {"b", {0, 1, 1, 0, 1, 0, 1, 1, 0, 0, 1, 0}},
      {"f", {1, 2, 3, 4, 1, 2, 3, 4, 1, 2, 3, 4}, {{1, "one"}, {2, "two"}}},
      {"h", {10, 10, 20, 20, 20, 10, 10, 20, 20, 10, 20, 10}},
      {"c", {3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5, 8}},
      {"copy", {1, 4, 2, 8, 5, 7, 1, 2, 6, 3, 5, 4}},
  };
  return columns;
}

class EstimateTableTest : public ::testing::Test {
 protected:
  EstimateTableTest() : analysis(Columns()) { analysis.Time({"time"}).Status("status"); }

  // A fit of the design with estimates and a diagonal covariance written by hand.
  void Write(const std::vector<double>& beta, const std::vector<double>& variances) {
    CCoxFit& fit = analysis.PrepareFit();
    ASSERT_EQ(analysis.Data().CoefficientCount, beta.size());
    fit.m_BetaHistory = {std::vector<double>(beta.size(), 9.0), beta};
    fit.m_Covariance = DenseMatrix(beta.size(), std::vector<double>(beta.size(), 0.0));
    for (std::size_t j = 0; j < beta.size(); ++j) fit.m_Covariance[j][j] = variances[j];
    fit.m_LogLikHistory = {-10.0, -9.0};
  }
  SheetView Show(double level = 0.95) {
    analysis.Analysis.CreateParameterEstimateSpreadsheet(level);
    return LastSheet(analysis.Host);
  }
  CoxDesignColumn& Column(std::size_t index) { return analysis.Data().DesignColumns[index]; }

  TestAnalysis analysis;
};

// Which cells of a row from the estimate on are there.
std::string Filled(const SheetView& sheet, int row, int first = 0) {
  std::string filled;
  for (int k = 0; k < 9; ++k) filled += sheet.Number(row, first + k) ? 'x' : '.';
  return filled;
}

const Texts kNumericNames = {"Parameter Estimate",
                             "Standard Error",
                             "Chi-square",
                             "P value",
                             "95% Lower CL",
                             "95% Upper CL",
                             "Hazard Ratio",
                             "95% Hazard Ratio Lower CL",
                             "95% Hazard Ratio Upper CL"};

TEST_F(EstimateTableTest, ContinuousModelHasNineColumns) {
  analysis.Covariates({"a", "b"}).DefaultDesign();
  Write({0.5, -1.0}, {0.04, 1.0});
  const SheetView sheet = Show();
  EXPECT_EQ(sheet.Titles(), (Texts{"Parameter Estimates"}));
  EXPECT_EQ(sheet.ColumnNames(), kNumericNames);
  EXPECT_EQ(sheet.RowNames(), (Texts{"a", "b"}));
  EXPECT_EQ(sheet.Value(0, "Parameter Estimate"), 0.5);
  EXPECT_DOUBLE_EQ(sheet.Value(0, "Standard Error"), 0.2);
  EXPECT_DOUBLE_EQ(sheet.Value(0, "Chi-square"), 6.25);
  EXPECT_NEAR(sheet.Value(0, "P value"), 0.012419330651552, 1e-14);
  EXPECT_NEAR(sheet.Value(0, "95% Lower CL"), 0.5 - kZ95 * 0.2, 1e-15);
  EXPECT_NEAR(sheet.Value(0, "95% Upper CL"), 0.5 + kZ95 * 0.2, 1e-15);
  EXPECT_NEAR(sheet.Value(0, "Hazard Ratio"), std::exp(0.5), 1e-15);
  EXPECT_NEAR(sheet.Value(0, "95% Hazard Ratio Lower CL"), std::exp(0.5 - kZ95 * 0.2), 1e-14);
  EXPECT_NEAR(sheet.Value(0, "95% Hazard Ratio Upper CL"), std::exp(0.5 + kZ95 * 0.2), 1e-14);
  EXPECT_DOUBLE_EQ(sheet.Value(1, "Chi-square"), 1.0);
  EXPECT_NEAR(sheet.Value(1, "P value"), 0.317310507862914, 1e-14);
}

TEST_F(EstimateTableTest, RobustVarianceGivesTheErrorsTestsAndLimits) {
  analysis.Covariates({"a", "b"}).DefaultDesign();
  Write({0.5, -1.0}, {0.04, 1.0});
  analysis.Fit().m_RobustCovariance = {{0.25, 0.0}, {0.0, 0.0}};
  EXPECT_DOUBLE_EQ(Show().Value(0, "Standard Error"), 0.2) << "it is not in use";
  analysis.Settings().UseRobustVariance = true;
  const SheetView sheet = Show();
  EXPECT_EQ(sheet.ColumnNames(), kNumericNames);
  EXPECT_EQ(sheet.Value(0, "Parameter Estimate"), 0.5);
  EXPECT_DOUBLE_EQ(sheet.Value(0, "Standard Error"), 0.5);
  EXPECT_DOUBLE_EQ(sheet.Value(0, "Chi-square"), 1.0);
  EXPECT_NEAR(sheet.Value(0, "P value"), 0.317310507862914, 1e-14);
  EXPECT_NEAR(sheet.Value(0, "95% Lower CL"), 0.5 - kZ95 * 0.5, 1e-15);
  EXPECT_NEAR(sheet.Value(0, "95% Hazard Ratio Upper CL"), std::exp(0.5 + kZ95 * 0.5), 1e-14);
  EXPECT_EQ(Filled(sheet, 1), "xx....x..") << "a variance of 0 has no test";
  EXPECT_EQ(sheet.Value(1, "Standard Error"), 0.0);
}

// The ratio of a sigma-restricted level is a contrast, which takes the covariance in use too.
TEST_F(EstimateTableTest, RobustVarianceReachesTheRatiosOfSigmaRestrictedLevels) {
  analysis.Settings().Coding = Codings::SigmaRestricted;
  analysis.Factor("h", {10, 20}).DefaultDesign();
  Write({0.5}, {0.01});
  analysis.Fit().m_RobustCovariance = {{0.04}};
  analysis.Settings().UseRobustVariance = true;
  const SheetView sheet = Show();
  EXPECT_NEAR(sheet.Value(0, "Hazard Ratio"), std::exp(1.0), 1e-14);
  EXPECT_NEAR(sheet.Value(0, "95% Hazard Ratio Lower CL"), std::exp(1.0 - kZ95 * 0.4), 1e-14);
}

TEST_F(EstimateTableTest, HighlightsAllNumbersOfASignificantRow) {
  analysis.Covariates({"a", "b", "c"}).DefaultDesign();
  Write({0.5, -1.0, 800.0}, {0.04, 1.0, 1.0});
  Show();
  const testing::RawSheet& raw = analysis.Host.Sheets.back();
  for (int k = 0; k < 9; ++k) {
    EXPECT_TRUE(raw.IsHighlighted(0, k)) << k;
    EXPECT_FALSE(raw.IsHighlighted(1, k)) << k;
    EXPECT_TRUE(raw.IsHighlighted(2, k)) << k << ", whatever the cell holds";
  }
  EXPECT_TRUE(raw.IsUnwritten(2, 6)) << "the ratio is too large for the table";
}

TEST_F(EstimateTableTest, HighlightFollowsAlpha) {
  analysis.Covariates({"a"}).DefaultDesign();
  Write({0.5}, {0.04});  // p = 0.0124
  struct {
    double level;
    bool highlighted;
  } const cases[] = {{0.95, true}, {0.99, false}, {0.98, true}, {0.5, true}, {0.99999, true}, {0.9999, false}};
  for (const auto& c : cases) EXPECT_EQ(Show(c.level).IsHighlighted(0, 0), c.highlighted) << c.level;
}

TEST_F(EstimateTableTest, HighlightLeavesTheLevelColumnAlone) {
  analysis.Factor("h", {10, 20}).DefaultDesign();
  Write({5.0}, {0.04});
  const SheetView sheet = Show();
  EXPECT_FALSE(sheet.IsHighlighted(0, 0));
  for (int k = 1; k <= 9; ++k) EXPECT_TRUE(sheet.IsHighlighted(0, k)) << k;
}

// ---- Confidence level -----------------------------------------------------------------------------------------------

TEST_F(EstimateTableTest, TitlesPrintTheLevelAndTheGuardKeepsAlpha) {
  analysis.Covariates({"a"}).DefaultDesign();
  Write({0.0}, {1.0});
  struct {
    double level;
    const char* title;
    double z;
  } const cases[] = {
      {0.95, "95% Lower CL", kZ95},
      {0.9, "90% Lower CL", 1.644853626951472},
      {0.995, "99.5% Lower CL", 2.807033768343811},
      {0.123456789, "12.3457% Lower CL", 0.155352776477425},
      {0.9999, "99.99% Lower CL", 3.890591886413120},
      {0.0001, "0.01% Lower CL", 1.253314140596531e-4},
      {0.99999, "99.999% Lower CL", kZ95},
      {0.00001, "0.001% Lower CL", kZ95},
      {0.0, "0% Lower CL", kZ95},
      {1.0, "100% Lower CL", kZ95},
      {-3.0, "-300% Lower CL", kZ95},
      {20.0, "2000% Lower CL", kZ95},
  };
  for (const auto& c : cases) {
    const SheetView sheet = Show(c.level);
    EXPECT_EQ(sheet.ColumnNames()[4], c.title) << c.level;
    EXPECT_NEAR(*sheet.Number(0, 4), -c.z, 1e-12) << c.level;
    EXPECT_NEAR(*sheet.Number(0, 5), c.z, 1e-12) << c.level;
  }
}

// ---- Fixed, aliased and degenerate rows -----------------------------------------------------------------------------

TEST_F(EstimateTableTest, FixedParameterShowsItsValueAndNoInference) {
  analysis.Covariates({"a", "b"}).DefaultDesign().StartAt({0.25, 0.0}).Fix({true, false});
  ASSERT_EQ(analysis.Run(), 0);
  const SheetView sheet = Show();
  EXPECT_EQ(sheet.RowNames(), (Texts{"* a", "b"}));
  EXPECT_EQ(sheet.Titles(), (Texts{"Parameter Estimates\n * denotes parameters held fixed at specified values."}));
  EXPECT_DOUBLE_EQ(sheet.Value(0, "Parameter Estimate"), 0.25);
  EXPECT_EQ(Filled(sheet, 0), "x........");
  EXPECT_EQ(Filled(sheet, 1), "xxxxxxxxx");
  EXPECT_FALSE(sheet.IsHighlighted(0, 0));
}

TEST_F(EstimateTableTest, AliasedParameterShowsZeroOrItsStart) {
  for (const double start : {0.0, 1.5}) {
    TestAnalysis aliased(Columns());
    aliased.Time({"time"}).Status("status").Covariates({"a", "copy"}).DefaultDesign();
    if (start != 0.0) aliased.StartAt({0.0, start});
    ASSERT_EQ(aliased.Run(), 0);
    aliased.Analysis.CreateParameterEstimateSpreadsheet(0.95);
    const SheetView sheet = LastSheet(aliased.Host);
    EXPECT_EQ(sheet.RowNames(), (Texts{"a", "copy"})) << "only fixed rows have a mark";
    EXPECT_DOUBLE_EQ(sheet.Value(1, "Parameter Estimate"), start / aliased.Data().DesignColumns[1].StdDev);
    EXPECT_EQ(Filled(sheet, 0), "xxxxxxxxx");
    EXPECT_EQ(Filled(sheet, 1), "x........");
  }
}

TEST_F(EstimateTableTest, WithoutAVarianceThereIsAnErrorOfZeroAndARatio) {
  for (const double variance : {0.0, -4.0}) {
    analysis.Settings().CovariateVariables.clear();
    analysis.Covariates({"a"}).DefaultDesign();
    Write({0.5}, {variance});
    const SheetView sheet = Show();
    EXPECT_EQ(Filled(sheet, 0), "xx....x..") << variance;
    EXPECT_EQ(sheet.Value(0, "Standard Error"), 0.0);
    EXPECT_DOUBLE_EQ(sheet.Value(0, "Hazard Ratio"), std::exp(0.5));
    EXPECT_FALSE(sheet.IsHighlighted(0, 0));
  }
}

TEST_F(EstimateTableTest, FitWithoutACovarianceShowsItsEstimates) {
  analysis.Covariates({"a", "b"}).DefaultDesign();
  Write({0.5, -1.0}, {0.04, 1.0});
  analysis.Fit().m_Covariance.clear();
  const SheetView sheet = Show();
  EXPECT_EQ(Filled(sheet, 0), "x........");
  EXPECT_EQ(Filled(sheet, 1), "x........");
}

TEST_F(EstimateTableTest, FitThatTriedNothingShowsItsRowNames) {
  analysis.Covariates({"a", "b"}).DefaultDesign();
  analysis.PrepareFit();
  const SheetView sheet = Show();
  EXPECT_EQ(sheet.RowNames(), (Texts{"a", "b"}));
  EXPECT_EQ(Filled(sheet, 0), ".........");
}

TEST_F(EstimateTableTest, NothingIsShownWithoutCoefficients) {
  ASSERT_EQ(analysis.Run(), 0);
  analysis.Analysis.CreateParameterEstimateSpreadsheet(0.95);
  EXPECT_TRUE(analysis.Host.Sheets.empty());
}

TEST_F(EstimateTableTest, UnconvergedFitIsShownAllTheSame) {
  analysis.Covariates({"a", "b"}).DefaultDesign();
  analysis.Fields.Iterations = 1;
  ASSERT_EQ(analysis.Run(), 0);
  ASSERT_FALSE(analysis.Fit().m_Converged);
  EXPECT_EQ(Filled(Show(), 0), "xxxxxxxxx");
}

// ---- The exponential guard ------------------------------------------------------------------------------------------

TEST_F(EstimateTableTest, RatiosBeyondADoubleAreMissingAndBelowAreZero) {
  analysis.Covariates({"a"}).DefaultDesign();
  struct {
    double b;
    double variance;
    std::optional<double> ratio, lower, upper;
  } const cases[] = {
      {709.8, 1.0, std::nullopt, std::exp(709.8 - kZ95), std::nullopt},
      {-709.8, 1.0, 0.0, 0.0, std::exp(-709.8 + kZ95)},
      {709.7268, 1.0, std::exp(709.7268), std::exp(709.7268 - kZ95), std::nullopt},
      {-709.7268, 1.0, 0.0, 0.0, std::exp(-709.7268 + kZ95)},
      {0.0, 1e6, 1.0, 0.0, std::nullopt},
      {1e5, 1.0, std::nullopt, std::nullopt, std::nullopt},
  };
  for (const auto& c : cases) {
    analysis.Settings().CovariateVariables.clear();
    analysis.Covariates({"a"}).DefaultDesign();
    Write({c.b}, {c.variance});
    const SheetView sheet = Show();
    const std::optional<double> expected[] = {c.ratio, c.lower, c.upper};
    for (int k = 0; k < 3; ++k) {
      const std::optional<double> shown = sheet.Number(0, 6 + k);
      ASSERT_EQ(shown.has_value(), expected[k].has_value()) << c.b << ' ' << k;
      if (shown) {
        EXPECT_NEAR(*shown, *expected[k], 1e-11 * *expected[k]) << c.b << ' ' << k;
      }
    }
  }
}

// ---- Level texts ----------------------------------------------------------------------------------------------------

TEST_F(EstimateTableTest, LevelOfAFactorStandsInAColumnBeforeTheNumbers) {
  analysis.Settings().Coding = Codings::Reference;
  analysis.Factor("f", {1, 2, 3, 4}).DefaultDesign();
  Write({0.1, 0.2, 0.3}, {1.0, 1.0, 1.0});
  const SheetView sheet = Show();
  Texts names = {"Level of Effect"};
  names.insert(names.end(), kNumericNames.begin(), kNumericNames.end());
  EXPECT_EQ(sheet.ColumnNames(), names);
  EXPECT_EQ(sheet.RowNames(), (Texts{"f", "f", "f"}));
  EXPECT_EQ(sheet.Texts(0), (Texts{"one", "two", "3"})) << "the label, or the code";
  EXPECT_EQ(sheet.Value(2, "Parameter Estimate"), 0.3);
}

TEST_F(EstimateTableTest, LevelsSkipTheReferenceUnderRestrictedCodingOnly) {
  analysis.Factor("f", {1, 2, 3, 4}).DefaultDesign();
  analysis.Settings().ReferenceCodes = {2};
  analysis.Settings().ReferenceCodeIndex = {2};
  analysis.Settings().Coding = Codings::Reference;
  Write({0.1, 0.2, 0.3}, {1.0, 1.0, 1.0});
  EXPECT_EQ(Show().Texts(0), (Texts{"one", "3", "4"}));
  analysis.Settings().Coding = Codings::Overparameterized;
  Write({0.1, 0.2, 0.3, 0.4}, {1.0, 1.0, 1.0, 1.0});
  EXPECT_EQ(Show().Texts(0), (Texts{"one", "two", "3", "4"}));
}

// The text lives on from row to row: a covariate below a factor repeats the level of the row above.
TEST_F(EstimateTableTest, CovariateRowRepeatsTheLevelOfTheRowAbove) {
  analysis.Covariates({"a", "c"}).Factor("h", {10, 20});
  analysis.Design({{"a", "v3"}, {"h", "v6"}, {"c", "v7"}});
  Write({0.1, 0.2, 0.3}, {1.0, 1.0, 1.0});
  EXPECT_EQ(Show().Texts(0), (Texts{"", "10", "10"}));
}

TEST_F(EstimateTableTest, TermOfSeveralVariablesShowsThePlaceInTheEffect) {
  analysis.Covariates({"a", "c"}).Factor("f", {1, 2, 3, 4}).Factor("h", {10, 20});
  analysis.Settings().Coding = Codings::Reference;
  analysis.Design({{"h", "v6"}, {"a*c", "v3*v7"}, {"f*h", "v5*v6"}, {"a*h", "v3*v6"}});
  Write(std::vector<double>(6, 0.1), std::vector<double>(6, 1.0));
  const SheetView sheet = Show();
  EXPECT_EQ(sheet.RowNames(), (Texts{"h", "a*c", "f*h", "f*h", "f*h", "a*h"}));
  EXPECT_EQ(sheet.Texts(0), (Texts{"10", "10", "1", "2", "3", "1"}))
      << "a product of covariates leaves the text as it was";
}

TEST_F(EstimateTableTest, ContinuousProductsNeedNoLevelColumn) {
  analysis.Covariates({"a", "c"});
  analysis.Design({{"a*c", "v3*v7"}});
  Write({0.1}, {1.0});
  EXPECT_EQ(Show().Columns(), 9);
}

// ---- Which rows have hazard ratios ----------------------------------------------------------------------------------

TEST_F(EstimateTableTest, InteractionTakesTheRatiosOfItsMainEffects) {
  analysis.Covariates({"a", "c"}).Factor("h", {10, 20});
  analysis.Settings().Coding = Codings::Reference;
  analysis.Design({{"a", "v3"}, {"c", "v7"}, {"h", "v6"}, {"a*h", "v3*v6"}});
  Write(std::vector<double>(4, 0.1), std::vector<double>(4, 1.0));
  const SheetView sheet = Show();
  EXPECT_EQ(Filled(sheet, 0, 1), "xxxxxx...") << "a is contained in a*h";
  EXPECT_EQ(Filled(sheet, 1, 1), "xxxxxxxxx");
  EXPECT_EQ(Filled(sheet, 2, 1), "xxxxxx...") << "and so is h";
  EXPECT_EQ(Filled(sheet, 3, 1), "xxxxxx...") << "a term of two variables";
}

TEST_F(EstimateTableTest, PowerOfACovariateTakesItsRatioToo) {
  analysis.Covariates({"a"});
  analysis.Design({{"a", "v3"}, {"a*a", "v3*v3"}});
  Write({0.1, 0.2}, {1.0, 1.0});
  const SheetView sheet = Show();
  EXPECT_EQ(Filled(sheet, 0), "xxxxxx...");
  EXPECT_EQ(Filled(sheet, 1), "xxxxxx...");
}

TEST_F(EstimateTableTest, ProductWithoutMainEffectsHasNoRatio) {
  analysis.Covariates({"a", "b", "c"});
  analysis.Design({{"a*c", "v3*v7"}, {"b", "v4"}});
  Write({0.1, 0.2}, {1.0, 1.0});
  const SheetView sheet = Show();
  EXPECT_EQ(Filled(sheet, 0), "xxxxxx...");
  EXPECT_EQ(Filled(sheet, 1), "xxxxxxxxx");
}

TEST_F(EstimateTableTest, SameEffectTwiceContainsItself) {
  analysis.Covariates({"a"});
  analysis.Design({{"a", "v3"}, {"again", "v3"}});
  Write({0.1, 0.2}, {1.0, 1.0});
  const SheetView sheet = Show();
  EXPECT_EQ(Filled(sheet, 0), "xxxxxx...");
  EXPECT_EQ(Filled(sheet, 1), "xxxxxx...");
}

// ---- Ratios of sigma-restricted factors -----------------------------------------------------------------------------

// With two levels the columns are 1 and -1, so the ratio of the levels is exp(2 b).
TEST_F(EstimateTableTest, RatioOfATwoLevelFactorIsThatOfItsLevels) {
  analysis.Factor("h", {10, 20}).DefaultDesign();
  Write({0.5}, {0.04});
  const SheetView sheet = Show();
  EXPECT_NEAR(sheet.Value(0, "Hazard Ratio"), std::exp(1.0), 1e-14);
  EXPECT_NEAR(sheet.Value(0, "95% Hazard Ratio Lower CL"), std::exp(1.0 - kZ95 * 0.4), 1e-14);
  EXPECT_NEAR(sheet.Value(0, "95% Hazard Ratio Upper CL"), std::exp(1.0 + kZ95 * 0.4), 1e-14);
  EXPECT_NEAR(sheet.Value(0, "95% Lower CL"), 0.5 - kZ95 * 0.2, 1e-15) << "the limits of the parameter stay";
}

// With four levels, columns b1, b2, b3: 2 b1 + b2; b1 + 2 b2 + b3; b1 + b2 + 2 b3. The first does not reach b3.
TEST_F(EstimateTableTest, ContrastReachesAllColumnsBeforeAndOneAfter) {
  analysis.Covariates({"a", "c"}).Factor("f", {1, 2, 3, 4});
  analysis.Design({{"a", "v3"}, {"f", "v5"}, {"c", "v7"}});
  Write({9.0, 0.1, 0.25, -0.4, 7.0}, {1.0, 0.04, 0.09, 0.16, 1.0});
  DenseMatrix& V = analysis.Fit().m_Covariance;
  V[1][2] = V[2][1] = 0.01;
  V[1][3] = V[3][1] = -0.02;
  V[2][3] = V[3][2] = 0.03;
  const SheetView sheet = Show();
  struct {
    int row;
    double estimate;
    double variance;
  } const rows[] = {
      {1, 2 * 0.1 + 0.25, 4 * 0.04 + 0.09 + 4 * 0.01},
      {2, 0.1 + 2 * 0.25 - 0.4, 0.04 + 4 * 0.09 + 0.16 + 2 * (2 * 0.01 - 0.02 + 2 * 0.03)},
      {3, 0.1 + 0.25 - 2 * 0.4, 0.04 + 0.09 + 4 * 0.16 + 2 * (0.01 - 2 * 0.02 + 2 * 0.03)},
  };
  for (const auto& c : rows) {
    const double s = std::sqrt(c.variance);
    EXPECT_NEAR(sheet.Value(c.row, "Hazard Ratio"), std::exp(c.estimate), 1e-13) << c.row;
    EXPECT_NEAR(sheet.Value(c.row, "95% Hazard Ratio Lower CL"), std::exp(c.estimate - kZ95 * s), 1e-13) << c.row;
    EXPECT_NEAR(sheet.Value(c.row, "95% Hazard Ratio Upper CL"), std::exp(c.estimate + kZ95 * s), 1e-13) << c.row;
  }
  EXPECT_NEAR(sheet.Value(0, "Hazard Ratio"), std::exp(9.0), 1e-10) << "covariates need no contrast";
}

TEST_F(EstimateTableTest, ContrastOfAFactorStopsAtItsLastColumn) {
  analysis.Factor("h", {10, 20}).Factor("f", {1, 2, 3, 4});
  analysis.Design({{"h", "v6"}, {"f", "v5"}});
  Write({0.5, 0.1, 0.25, -0.4}, {0.04, 1.0, 1.0, 1.0});
  // The next column is the first of f: its place 1 is not beyond h's place 1.
  EXPECT_NEAR(Show().Value(0, "Hazard Ratio"), std::exp(1.0), 1e-14);
}

TEST_F(EstimateTableTest, OtherCodingsTakeTheParameterItself) {
  for (const int coding : {Codings::Reference, Codings::Overparameterized}) {
    TestAnalysis other(Columns());
    other.Time({"time"}).Status("status").Factor("h", {10, 20}).DefaultDesign();
    other.Settings().Coding = static_cast<std::int16_t>(coding);
    CCoxFit& fit = other.PrepareFit();
    const std::size_t p = other.Data().CoefficientCount;
    fit.m_BetaHistory = {std::vector<double>(p, 0.5)};
    fit.m_Covariance = DenseMatrix(p, std::vector<double>(p, 0.0));
    for (std::size_t j = 0; j < p; ++j) fit.m_Covariance[j][j] = 0.04;
    other.Analysis.CreateParameterEstimateSpreadsheet(0.95);
    const SheetView sheet = LastSheet(other.Host);
    EXPECT_DOUBLE_EQ(sheet.Value(0, "Hazard Ratio"), std::exp(0.5)) << coding;
    EXPECT_NEAR(sheet.Value(0, "95% Hazard Ratio Lower CL"), std::exp(0.5 - kZ95 * 0.2), 1e-14) << coding;
  }
}

TEST_F(EstimateTableTest, FailedContrastFallsBackOnTheParameter) {
  analysis.Factor("h", {10, 20}).DefaultDesign();
  Write({0.5}, {0.0});
  const SheetView sheet = Show();
  EXPECT_EQ(Filled(sheet, 0, 1), "xx....x..");
  EXPECT_DOUBLE_EQ(sheet.Value(0, "Hazard Ratio"), std::exp(0.5));
}

// A contrast without a variance of its own has failed too; then the limits are those of the parameter.
TEST_F(EstimateTableTest, FailedContrastKeepsTheLimitsOfTheParameter) {
  analysis.Factor("f", {1, 2, 3, 4}).DefaultDesign();
  Write({0.5, 0.1, 0.25}, {1.0, 4.0, 1.0});
  // The contrast of the first row is twice the first parameter and the second: 4 - 2 * 4 + 4 = 0.
  DenseMatrix& V = analysis.Fit().m_Covariance;
  V[0][1] = V[1][0] = -2.0;
  const SheetView sheet = Show();
  EXPECT_DOUBLE_EQ(sheet.Value(0, "Hazard Ratio"), std::exp(0.5));
  EXPECT_NEAR(sheet.Value(0, "95% Hazard Ratio Lower CL"), std::exp(0.5 - kZ95), 1e-14);
  EXPECT_NEAR(sheet.Value(0, "95% Hazard Ratio Upper CL"), std::exp(0.5 + kZ95), 1e-13);
}

// The unit of a covariate decides nothing: a contrast of a tiny variance is one like any other.
TEST_F(EstimateTableTest, ContrastOfTinyVarianceIsTaken) {
  analysis.Factor("h", {10, 20}).DefaultDesign();
  Write({0.5}, {1e-20});
  const SheetView sheet = Show();
  EXPECT_DOUBLE_EQ(sheet.Value(0, "Hazard Ratio"), std::exp(1.0));
  EXPECT_LT(sheet.Value(0, "95% Hazard Ratio Lower CL"), sheet.Value(0, "95% Hazard Ratio Upper CL"));
}

// Two levels compared directly by either restricted coding give one ratio.
TEST_F(EstimateTableTest, SigmaAndReferenceCodingAgreeOnTheRatioOfTwoLevels) {
  std::vector<double> ratios;
  for (const int coding : {Codings::SigmaRestricted, Codings::Reference}) {
    TestAnalysis fitted(Columns());
    fitted.Time({"time"}).Status("status").Covariates({"a"}).Factor("h", {10, 20}).DefaultDesign();
    fitted.Settings().Coding = static_cast<std::int16_t>(coding);
    fitted.Settings().ConvergenceExponent = 12;
    ASSERT_EQ(fitted.Run(), 0);
    fitted.Analysis.CreateParameterEstimateSpreadsheet(0.95);
    for (const char* cell : {"Hazard Ratio", "95% Hazard Ratio Lower CL", "95% Hazard Ratio Upper CL"}) {
      ratios.push_back(LastSheet(fitted.Host).Value(1, cell));
    }
  }
  for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(ratios[k], ratios[k + 3], 1e-9 * ratios[k]);
}

TEST_F(EstimateTableTest, LongEffectNamesComeBackWhole) {
  const std::string name(60, 'n');
  TestAnalysis longName({{"time", {1, 2, 3, 4}}, {"status", {1, 1, 1, 1}}, {name, {1, 4, 2, 8}}});
  longName.Time({"time"}).Status("status").Covariates({name}).DefaultDesign();
  longName.PrepareFit();
  longName.Analysis.CreateParameterEstimateSpreadsheet(0.95);
  EXPECT_EQ(LastSheet(longName.Host).RowNames(), (Texts{name}));
}

}  // namespace
}  // namespace orv
