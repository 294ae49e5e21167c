// The table of Type 3 tests under the three codings.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "output/Type3Table.h"
#include "support/SheetReading.h"
#include "support/TwoWayCases.h"

namespace orv {
namespace {

using namespace testing;
using Texts = std::vector<std::string>;
using Vector = std::vector<double>;
using Effects = std::vector<std::pair<std::string, std::string>>;

const Effects kMainEffects = {{"x", "v3"}, {"f", "v4"}, {"g", "v5"}};
constexpr int kCodings[] = {Codings::SigmaRestricted, Codings::Reference, Codings::Overparameterized};

class Type3TableTest : public ::testing::Test {
 protected:
  void Run(int coding, const Effects& effects = kMainEffects, const std::vector<int>& counts = kUnbalanced) {
    analysis = std::make_unique<TestAnalysis>(TwoWayCases(counts));
    SelectTwoWay(*analysis, coding, effects);
    ASSERT_EQ(analysis->Run(), 0) << ::testing::PrintToString(analysis->Host.Messages());
  }
  SheetView Show(double level = 0.95) {
    analysis->Analysis.CreateType3Spreadsheet(level);
    return LastSheet(analysis->Host);
  }
  bool ShowsNothing() {
    const std::size_t before = analysis->Host.Sheets.size();
    analysis->Analysis.CreateType3Spreadsheet(0.95);
    return analysis->Host.Sheets.size() == before && analysis->Host.Messages().empty();
  }
  CCoxFit& Fit() { return analysis->Fit(); }
  // Makes V the covariance of the fit, with zeros but for the diagonal.
  void SetVariances(const Vector& variances) {
    Fit().m_Covariance.assign(variances.size(), Vector(variances.size(), 0.0));
    for (std::size_t j = 0; j < variances.size(); ++j) Fit().m_Covariance[j][j] = variances[j];
  }
  std::unique_ptr<TestAnalysis> analysis;
};

TEST_F(Type3TableTest, HasARowForEachEffectInDesignOrder) {
  for (const int coding : kCodings) {
    Run(coding, {{"g", "v5"}, {"x", "v3"}, {"f*g", "v4*v5"}, {"f", "v4"}});
    const SheetView sheet = Show();
    EXPECT_EQ(sheet.Titles(), (Texts{"Type 3 Tests"}));
    EXPECT_EQ(sheet.ColumnNames(), (Texts{"Wald", "df", "P value"}));
    EXPECT_EQ(sheet.RowNames(), (Texts{"g", "x", "f*g", "f"})) << coding;
    const Vector df = {2, 1, 2, 1};
    for (int row = 0; row < 4; ++row) {
      EXPECT_GT(sheet.Value(row, "Wald"), 0.0);
      EXPECT_EQ(sheet.Value(row, "df"), df[static_cast<std::size_t>(row)]) << coding << ' ' << row;
      EXPECT_DOUBLE_EQ(sheet.Value(row, "P value"),
                       1.0 - analysis->Host.ChiSquareCdf(sheet.Value(row, "Wald"), sheet.Value(row, "df")));
    }
  }
}

TEST_F(Type3TableTest, TestOfACovariateIsThatOfItsEstimate) {
  for (const int coding : kCodings) {
    Run(coding);
    analysis->Analysis.CreateParameterEstimateSpreadsheet(0.95);
    const SheetView estimates = LastSheet(analysis->Host);
    const double ratio = estimates.Value(0, "Parameter Estimate") / estimates.Value(0, "Standard Error");
    const double p = estimates.Value(0, "P value");
    const SheetView sheet = Show();
    EXPECT_NEAR(sheet.Value(0, "Wald"), ratio * ratio, 1e-12 * ratio * ratio) << coding;
    EXPECT_EQ(sheet.Value(0, "df"), 1.0);
    EXPECT_NEAR(sheet.Value(0, "P value"), p, 1e-12);
  }
}

TEST_F(Type3TableTest, WholeFactorsHaveOneTestWhateverTheCoding) {
  std::vector<Vector> walds;
  for (const int coding : kCodings) {
    Run(coding);
    const SheetView sheet = Show();
    walds.push_back({sheet.Value(0, "Wald"), sheet.Value(1, "Wald"), sheet.Value(2, "Wald")});
  }
  for (std::size_t row = 0; row < 3; ++row) {
    EXPECT_NEAR(walds[1][row], walds[0][row], 1e-8 * walds[0][row]) << row;
    EXPECT_NEAR(walds[2][row], walds[0][row], 1e-8 * walds[0][row]) << row;
  }
}

// With an interaction the sigma-restricted test compares averages over the cells, and so does the overparameterized
// one; the test under reference coding compares the levels within the reference level of the other factor.
TEST_F(Type3TableTest, MainEffectsBesideTheirInteractionAverageOverItsCells) {
  const Effects effects = {{"f", "v4"}, {"g", "v5"}, {"f*g", "v4*v5"}};
  std::vector<Vector> walds;
  for (const int coding : kCodings) {
    Run(coding, effects);
    const SheetView sheet = Show();
    walds.push_back({sheet.Value(0, "Wald"), sheet.Value(1, "Wald"), sheet.Value(2, "Wald")});
  }
  for (std::size_t row = 0; row < 3; ++row) EXPECT_NEAR(walds[2][row], walds[0][row], 1e-8 * walds[0][row]) << row;
  EXPECT_GT(std::abs(walds[1][0] - walds[0][0]), 1e-3);
  EXPECT_NEAR(walds[1][2], walds[0][2], 1e-8 * walds[0][2]) << "the interaction has one test";
}

TEST_F(Type3TableTest, RobustCovarianceIsTakenWhenItIsAskedFor) {
  for (const int coding : {Codings::SigmaRestricted, Codings::Reference}) {
    Run(coding);
    const double plain = Show().Value(0, "Wald");
    Fit().m_RobustCovariance = Fit().m_Covariance;
    for (Vector& row : Fit().m_RobustCovariance) {
      for (double& value : row) value *= 4.0;
    }
    EXPECT_EQ(Show().Value(0, "Wald"), plain) << "not asked for";
    analysis->Settings().UseRobustVariance = true;
    const SheetView sheet = Show();
    EXPECT_NEAR(sheet.Value(0, "Wald"), plain / 4.0, 1e-12 * plain);
    EXPECT_EQ(sheet.Value(2, "df"), 2.0);
  }
  Run(Codings::Overparameterized);
  const double plain = Show().Value(2, "Wald");
  Fit().m_RobustCovariance = Fit().m_Covariance;
  for (Vector& row : Fit().m_RobustCovariance) {
    for (double& value : row) value *= 4.0;
  }
  analysis->Settings().UseRobustVariance = true;
  EXPECT_NEAR(Show().Value(2, "Wald"), plain / 4.0, 1e-12 * plain);
}

// ---- Dropped columns and singular tests -----------------------------------------------------------------------------

TEST_F(Type3TableTest, AliasedEffectHasNoRow) {
  for (const int coding : kCodings) {
    Run(coding, {{"x", "v3"}, {"again", "v3"}, {"g", "v5"}});
    EXPECT_EQ(Show().RowNames(), (Texts{"x", "g"})) << coding;
  }
}

TEST_F(Type3TableTest, FixedEffectHasNoRow) {
  for (const int coding : kCodings) {
    analysis = std::make_unique<TestAnalysis>(TwoWayCases(kUnbalanced));
    SelectTwoWay(*analysis, coding, {{"x", "v3"}, {"g", "v5"}});
    Vector start(coding == Codings::Overparameterized ? 4 : 3, 0.0);
    start[0] = 0.25;
    analysis->StartAt(start).Fix({true, false});
    ASSERT_EQ(analysis->Run(), 0) << ::testing::PrintToString(analysis->Host.Messages());
    EXPECT_EQ(Show().RowNames(), (Texts{"g"})) << coding;
  }
}

// A dropped column has no variance, so its pivot is singular.
TEST_F(Type3TableTest, DroppedLevelTakesADegreeOfFreedom) {
  for (const int coding : {Codings::SigmaRestricted, Codings::Reference}) {
    Run(coding);
    Fit().m_BetaHistory.back() = {0.5, 0.25, 0.75, 0.0};
    SetVariances({1.0, 1.0, 0.25, 0.0});
    analysis->Data().DesignColumns[3].Dropped = true;
    const SheetView sheet = Show();
    EXPECT_EQ(sheet.RowNames(), (Texts{"x", "f", "g"}));
    EXPECT_EQ(sheet.Value(2, "df"), 1.0) << coding;
    EXPECT_DOUBLE_EQ(sheet.Value(2, "Wald"), 2.25);
    EXPECT_NEAR(sheet.Value(2, "P value"), 0.1336144025377161, 1e-14);
  }
}

// The columns that are not dropped under sigma-restricted coding, the pivots of the test under reference coding.
TEST_F(Type3TableTest, SingularPivotLowersTheShownDfUnderReferenceCodingOnly) {
  for (const int coding : {Codings::SigmaRestricted, Codings::Reference}) {
    Run(coding);
    Fit().m_BetaHistory.back() = {0.5, 0.25, 0.75, 0.0};
    SetVariances({1.0, 1.0, 0.25, 0.0});
    const SheetView sheet = Show();
    EXPECT_EQ(sheet.Value(2, "df"), coding == Codings::Reference ? 1.0 : 2.0);
    EXPECT_DOUBLE_EQ(sheet.Value(2, "Wald"), 2.25);
    EXPECT_NEAR(sheet.Value(2, "P value"), 0.1336144025377161, 1e-14) << "by the df of the test";
  }
}

TEST_F(Type3TableTest, SingularHypothesisShowsOnlyItsNameUnderReferenceCoding) {
  Run(Codings::Reference);
  SetVariances({1.0, 0.0, 1.0, 1.0});
  const SheetView sheet = Show();
  EXPECT_EQ(sheet.RowNames(), (Texts{"x", "f", "g"}));
  for (int column = 0; column < 3; ++column) {
    EXPECT_EQ(sheet.Number(1, column), std::nullopt) << column;
    EXPECT_FALSE(sheet.IsHighlighted(1, column));
  }
  EXPECT_TRUE(sheet.Number(2, "Wald").has_value());
}

TEST_F(Type3TableTest, SingularHypothesisShowsZeroUnderTheOtherCodings) {
  Run(Codings::SigmaRestricted);
  SetVariances({1.0, 0.0, 1.0, 1.0});
  const SheetView sigma = Show();
  EXPECT_EQ(sigma.Value(1, "Wald"), 0.0);
  EXPECT_EQ(sigma.Value(1, "df"), 1.0);
  EXPECT_EQ(sigma.Value(1, "P value"), 1.0);
  EXPECT_FALSE(sigma.IsHighlighted(1, 0));
  Run(Codings::Overparameterized);
  SetVariances(Vector(6, 0.0));
  const SheetView full = Show();
  EXPECT_EQ(full.RowNames(), (Texts{"x", "f", "g"}));
  EXPECT_EQ(full.Value(2, "Wald"), 0.0);
  EXPECT_EQ(full.Value(2, "df"), 2.0) << "the number of functions";
  EXPECT_EQ(full.Value(2, "P value"), 1.0);
}

TEST_F(Type3TableTest, EmptyCellLeavesTheInteractionFewerFunctions) {
  Run(Codings::Overparameterized, {{"f", "v4"}, {"g", "v5"}, {"f*g", "v4*v5"}}, kEmptyCell);
  const SheetView sheet = Show();
  EXPECT_EQ(sheet.Value(0, "df"), 1.0);
  EXPECT_EQ(sheet.Value(1, "df"), 2.0);
  EXPECT_EQ(sheet.Value(2, "df"), 1.0) << "of 2 with every cell filled";
}

// ---- Highlighting ---------------------------------------------------------------------------------------------------

TEST_F(Type3TableTest, RowsBelowAlphaAreHighlighted) {
  Run(Codings::SigmaRestricted);
  // P values 0.0455, 0.317 and 0.00193.
  Fit().m_BetaHistory.back() = {2.0, 1.0, 2.5, 2.5};
  SetVariances({1.0, 1.0, 1.0, 1.0});
  struct {
    double level;
    std::vector<bool> highlighted;
  } const cases[] = {
      {0.95, {true, false, true}},  {0.96, {false, false, true}},   {0.999, {false, false, false}},
      {0.5, {true, true, true}},    {0.99999, {true, false, true}}, {1.0, {true, false, true}},
      {0.0, {true, false, true}},   {0.00009, {true, false, true}}, {0.9999, {false, false, false}},
      {0.0001, {true, true, true}},
  };
  for (const auto& c : cases) {
    const SheetView sheet = Show(c.level);
    for (int row = 0; row < 3; ++row) {
      for (int column = 0; column < 3; ++column) {
        EXPECT_EQ(sheet.IsHighlighted(row, column), c.highlighted[static_cast<std::size_t>(row)])
            << c.level << ' ' << row << ' ' << column;
      }
    }
  }
}

// ---- Nothing to show ------------------------------------------------------------------------------------------------

TEST_F(Type3TableTest, NothingIsShownWithoutCoefficients) {
  Run(Codings::SigmaRestricted, {});
  EXPECT_TRUE(ShowsNothing());
  Run(Codings::Overparameterized, {});
  EXPECT_TRUE(ShowsNothing());
}

TEST_F(Type3TableTest, NothingIsShownWhenAllColumnsAreDropped) {
  for (const int coding : {Codings::SigmaRestricted, Codings::Reference}) {
    Run(coding);
    for (CoxDesignColumn& column : analysis->Data().DesignColumns) column.Dropped = true;
    EXPECT_TRUE(ShowsNothing());
  }
}

TEST_F(Type3TableTest, NothingIsShownWithoutACovariance) {
  for (const int coding : kCodings) {
    Run(coding);
    Fit().m_Covariance.clear();
    EXPECT_TRUE(ShowsNothing()) << coding;
  }
}

TEST_F(Type3TableTest, NothingIsShownWhenMemoryIsOutForTheInformation) {
  Run(Codings::Overparameterized);
  analysis->Host.FailAllocation(0);
  EXPECT_FALSE(ShowsNothing());
  const int requests = analysis->Host.Requests();
  ASSERT_GT(requests, 0);
  for (int failing = 1; failing <= requests; ++failing) {
    analysis->Host.FailAllocation(failing);
    EXPECT_TRUE(ShowsNothing()) << failing;
  }
}

TEST_F(Type3TableTest, NothingIsShownWhenTheInformationOverflows) {
  Run(Codings::Overparameterized);
  analysis->Data().CaseTable.GetRow(1, CaseTable::Access::Write)[0] = 1e200;
  EXPECT_TRUE(ShowsNothing());
}

// There is no evaluator for them, and what another evaluation left is not taken.
TEST_F(Type3TableTest, NothingIsShownForTimeDependentInputUnderOverparameterizedCoding) {
  Run(Codings::Overparameterized);
  Fit().EvaluateScoreAtStart();
  Fit().m_InputType = InputTypes::TimeDependent;
  EXPECT_TRUE(ShowsNothing());
  Run(Codings::SigmaRestricted);
  Fit().m_InputType = InputTypes::TimeDependent;
  EXPECT_EQ(Show().Rows(), 3) << "the other codings need none";
}

TEST_F(Type3TableTest, UnconvergedFitIsTestedAllTheSame) {
  for (const int coding : kCodings) {
    analysis = std::make_unique<TestAnalysis>(TwoWayCases(kUnbalanced));
    SelectTwoWay(*analysis, coding, kMainEffects);
    analysis->Fields.Iterations = 1;
    ASSERT_EQ(analysis->Run(), 0) << ::testing::PrintToString(analysis->Host.Messages());
    ASSERT_FALSE(Fit().m_Converged);
    EXPECT_EQ(Show().Rows(), 3) << coding;
  }
}

TEST_F(Type3TableTest, TableDoesNotChangeTheFit) {
  for (const int coding : kCodings) {
    Run(coding);
    const DenseMatrix betas = Fit().m_BetaHistory;
    const DenseMatrix V = Fit().m_Covariance;
    const Vector logLik = Fit().m_LogLikHistory;
    Show();
    EXPECT_EQ(Fit().m_BetaHistory, betas);
    EXPECT_EQ(Fit().m_Covariance, V);
    EXPECT_EQ(Fit().m_LogLikHistory, logLik);
  }
}

// Fits by every likelihood, with and without strata and as intervals, test whole factors alike under all codings.
TEST_F(Type3TableTest, CodingsAgreeForEveryKindOfFit) {
  for (const int likelihood : {Likelihoods::Breslow, Likelihoods::Efron, Likelihoods::Discrete}) {
    for (const int kind : {0, 1, 2}) {
      std::vector<Vector> walds;
      for (const int coding : kCodings) {
        std::vector<TestColumn> columns = TwoWayCases(kUnbalanced);
        columns.push_back({"start", Vector(columns[0].Values.size(), 0.0)});
        columns.push_back({"stratum", {}});
        for (std::size_t i = 0; i < columns[0].Values.size(); ++i) {
          columns[0].Values[i] = std::ceil(columns[0].Values[i] / 3.0);
          columns[6].Values.push_back(static_cast<double>(i % 2) + 1.0);
        }
        analysis = std::make_unique<TestAnalysis>(columns);
        SelectTwoWay(*analysis, coding, {{"x", "v3"}, {"f", "v4"}, {"g", "v5"}, {"f*g", "v4*v5"}});
        analysis->Settings().Likelihood = static_cast<std::int16_t>(likelihood);
        if (kind == 1) analysis->Strata("stratum", {1, 2});
        if (kind == 2) analysis->Interval("start", "time");
        ASSERT_EQ(analysis->Run(), 0) << ::testing::PrintToString(analysis->Host.Messages());
        const SheetView sheet = Show();
        ASSERT_EQ(sheet.Rows(), 4);
        walds.emplace_back();
        for (int row = 0; row < 4; ++row) walds.back().push_back(sheet.Value(row, "Wald"));
      }
      for (std::size_t row = 0; row < 4; ++row) {
        EXPECT_NEAR(walds[2][row], walds[0][row], 1e-7 * (1.0 + walds[0][row]))
            << likelihood << ' ' << kind << ' ' << row;
      }
    }
  }
}

}  // namespace
}  // namespace orv
