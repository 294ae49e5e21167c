// Linear combinations: the entry sheet, what is read from it, and the table of the test.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/SheetReading.h"
#include "support/TwoWayCases.h"
#include "ui/CCoxPHResults.h"

namespace orv {
namespace {

using namespace testing;
using Texts = std::vector<std::string>;
using Vector = std::vector<double>;
using Effects = std::vector<std::pair<std::string, std::string>>;
using Entries = std::map<std::pair<int, int>, double>;  // by row and function, both from 0
namespace Statuses = LinearCombinationStatuses;

constexpr const char* kNotEstimable = "An L is not estimable.";
constexpr const char* kNotIndependent = "L's are not linearly independent.";
constexpr const char* kNothingValid = "No valid L's were specified.";
constexpr const char* kCannotTest = "Unable to complete the requested hypothesis test(s).";
constexpr double kZ95 = 1.959963984540054;

class LinearCombinationActionsTest : public ::testing::Test {
 protected:
  void Run(int coding, const Effects& effects = {{"x", "v3"}, {"f", "v4"}, {"g", "v5"}}) {
    analysis = std::make_unique<TestAnalysis>(TwoWayCases(kUnbalanced));
    SelectTwoWay(*analysis, coding, effects);
    ASSERT_EQ(analysis->Run(), 0);
    results = std::make_unique<CCoxPHResults>(analysis->Analysis);
  }
  // Enters L: the cells named are written, the others left as the sheet came.
  int Enter(const Entries& entries) {
    analysis->Host.SetSheetEditor([&](SheetContent& sheet) {
      shown = sheet;
      int first = 0;
      while (sheet.Columns[static_cast<std::size_t>(first)].Name != "L1") ++first;
      for (const auto& [cell, value] : entries) {
        SheetColumn& column = sheet.Columns.at(static_cast<std::size_t>(first) + static_cast<std::size_t>(cell.second));
        column.Numbers.at(static_cast<std::size_t>(cell.first)) = value;
      }
      return true;
    });
    return results->EnterLinearCombinations();
  }
  // Opens the sheet and changes nothing.
  int Open() { return Enter({}); }
  Texts ColumnNames() const {
    Texts names;
    for (const SheetColumn& column : shown.Columns) names.push_back(column.Name);
    return names;
  }
  // A message in all, and this one.
  void ExpectMessage(const std::string& text) {
    ASSERT_EQ(analysis->Host.Messages().size(), m_messagesSeen + 1) << text;
    EXPECT_EQ(analysis->Host.Messages().back(), text);
    ++m_messagesSeen;
  }
  void ExpectNoMessage() const { EXPECT_EQ(analysis->Host.Messages().size(), m_messagesSeen); }
  std::size_t Sheets() const { return analysis->Host.Sheets.size(); }
  CCoxFit& Fit() { return analysis->Fit(); }

  std::unique_ptr<TestAnalysis> analysis;
  std::unique_ptr<CCoxPHResults> results;
  SheetContent shown;  // the entry sheet as it came

 private:
  std::size_t m_messagesSeen = 0;
};

// ---- The entry sheet ------------------------------------------------------------------------------------------------

TEST_F(LinearCombinationActionsTest, EntrySheetHasARowForEachParameter) {
  Run(Codings::Reference);
  EXPECT_EQ(Open(), Statuses::NothingValid);
  EXPECT_EQ(shown.RowNames, (Texts{"x", "f", "g", "g"}));
  EXPECT_EQ(ColumnNames(), (Texts{"Level of Effect", "Column", "L1", "L2", "L3", "L4"}));
  EXPECT_EQ(shown.Columns[1].Texts, (Texts{"1", "2", "3", "4"}));
  EXPECT_EQ(shown.Columns[0].Texts, (Texts{"", "1", "1", "2"})) << "a covariate has no level";
  for (std::size_t k = 2; k < 6; ++k) {
    for (std::size_t row = 0; row < 4; ++row) {
      EXPECT_EQ(shown.Columns[k].KindOfCell(row), SheetCellKind::Missing) << k << ' ' << row;
    }
  }
}

TEST_F(LinearCombinationActionsTest, EntrySheetHasItsTitleAndIsNoResult) {
  Run(Codings::Reference);
  const std::size_t before = Sheets();
  int window = 0;
  results->Parent = &window;
  Open();
  EXPECT_EQ(Sheets(), before) << "it is shown in a dialog";
  ASSERT_EQ(analysis->Host.DialogSheets.size(), 1U);
  EXPECT_STREQ(analysis->Host.DialogSheets[0].Title1.c_str(), "Specify effect to estimate");
  EXPECT_EQ(analysis->Host.DialogParent, &window);
  ExpectMessage(kNothingValid);
}

TEST_F(LinearCombinationActionsTest, ModelWithoutAFactorHasNoLevelColumn) {
  Run(Codings::Reference, {{"x", "v3"}});
  Open();
  EXPECT_EQ(ColumnNames(), (Texts{"Column", "L1"}));
  EXPECT_EQ(shown.Columns[0].Texts, (Texts{"1"}));
}

// A covariate below a factor has no level here, and a term of several variables has its place in the effect, be there a
// factor in it or not.
TEST_F(LinearCombinationActionsTest, LevelsAreThoseOfTheRowAlone) {
  Run(Codings::Reference, {{"f", "v4"}, {"x", "v3"}, {"x*x", "v3*v3"}, {"f*g", "v4*v5"}, {"g", "v5"}});
  Open();
  EXPECT_EQ(shown.RowNames, (Texts{"f", "x", "x*x", "f*g", "f*g", "g", "g"}));
  EXPECT_EQ(shown.Columns[0].Texts, (Texts{"1", "", "1", "1", "2", "1", "2"}));
}

TEST_F(LinearCombinationActionsTest, ThereIsAFunctionForEachColumnThatIsNotDropped) {
  Run(Codings::Overparameterized);
  Open();
  EXPECT_EQ(shown.RowNames.size(), 6U);
  EXPECT_EQ(ColumnNames(), (Texts{"Level of Effect", "Column", "L1", "L2", "L3", "L4"})) << "two of six are aliased";
}

TEST_F(LinearCombinationActionsTest, SecondEntryStartsFromTheFirst) {
  Run(Codings::Reference);
  ASSERT_EQ(Enter({{{0, 1}, 0.5}, {{2, 2}, 1.0}, {{3, 2}, -1.0}}), Statuses::Usable);
  EXPECT_EQ(results->m_LinearCombinations, (DenseMatrix{{0.5, 0.0}, {0.0, 0.0}, {0.0, 1.0}, {0.0, -1.0}}))
      << "L1 had no entry";
  ASSERT_EQ(Open(), Statuses::Usable);
  EXPECT_EQ(shown.Columns[2].Numbers, (Vector{0.5, 0.0, 0.0, 0.0}));
  EXPECT_EQ(shown.Columns[3].Numbers, (Vector{0.0, 0.0, 1.0, -1.0}));
  EXPECT_EQ(shown.Columns[4].KindOfCell(0), SheetCellKind::Missing);
  EXPECT_EQ(results->m_LinearCombinations.size(), 4U);
  EXPECT_EQ(results->m_LinearCombinations[0], (Vector{0.5, 0.0})) << "and keeps it";
  ExpectNoMessage();
}

TEST_F(LinearCombinationActionsTest, CancelledEntryLeavesEverythingAsItWas) {
  Run(Codings::Reference);
  ASSERT_EQ(Enter({{{0, 0}, 1.0}}), Statuses::Usable);
  const DenseMatrix before = results->m_LinearCombinations;
  analysis->Host.SetSheetEditor([](SheetContent& sheet) {
    for (double& value : sheet.Columns.back().Numbers) value = 7.0;
    return false;
  });
  EXPECT_EQ(results->EnterLinearCombinations(), 2);
  EXPECT_EQ(results->m_LinearCombinations, before);
  EXPECT_EQ(results->m_LinearCombinationStatus, Statuses::Usable);
  ExpectNoMessage();
}

// ---- Reading the sheet ----------------------------------------------------------------------------------------------

TEST_F(LinearCombinationActionsTest, EmptySheetHasNothingValid) {
  Run(Codings::Reference);
  EXPECT_EQ(Open(), Statuses::NothingValid);
  ExpectMessage(kNothingValid);
  EXPECT_EQ(Enter({{{0, 0}, 0.0}, {{1, 3}, 0.0}}), Statuses::NothingValid) << "zeros are nothing too";
  ExpectMessage(kNothingValid);
  EXPECT_EQ(results->m_LinearCombinationStatus, Statuses::NothingValid);
  EXPECT_TRUE(results->m_LinearCombinations.empty());
}

TEST_F(LinearCombinationActionsTest, NothingValidLeavesTheFunctionsInPlace) {
  Run(Codings::Reference);
  ASSERT_EQ(Enter({{{0, 0}, 1.0}}), Statuses::Usable);
  EXPECT_EQ(Enter({{{0, 0}, 0.0}}), Statuses::NothingValid);
  EXPECT_EQ(results->m_LinearCombinations, (DenseMatrix{{1.0}, {0.0}, {0.0}, {0.0}}));
}

TEST_F(LinearCombinationActionsTest, FunctionOfAnAliasedColumnIsNotEstimable) {
  Run(Codings::Overparameterized);
  ASSERT_TRUE(analysis->Data().DesignColumns[2].Dropped);
  EXPECT_EQ(Enter({{{2, 0}, 1.0}}), Statuses::NotEstimable);
  ExpectMessage(kNotEstimable);
  EXPECT_EQ(results->m_LinearCombinationStatus, Statuses::NotEstimable);
}

TEST_F(LinearCombinationActionsTest, ProportionalFunctionsAreNotIndependent) {
  Run(Codings::Reference);
  EXPECT_EQ(Enter({{{0, 0}, 1.0}, {{2, 0}, -1.0}, {{0, 1}, -3.0}, {{2, 1}, 3.0}}), Statuses::NotIndependent);
  ExpectMessage(kNotIndependent);
}

// ---- The test -------------------------------------------------------------------------------------------------------

TEST_F(LinearCombinationActionsTest, WithoutFunctionsTheCallerIsToldToEnterSome) {
  Run(Codings::Reference);
  const std::size_t before = Sheets();
  EXPECT_EQ(results->EstimateLinearCombination(), 1);
  EXPECT_EQ(Sheets(), before);
  ExpectNoMessage();
}

TEST_F(LinearCombinationActionsTest, NothingValidIsAskedForAgain) {
  Run(Codings::Reference);
  Open();
  ExpectMessage(kNothingValid);
  EXPECT_EQ(results->EstimateLinearCombination(), 1);
  ExpectNoMessage();
}

TEST_F(LinearCombinationActionsTest, OneFunctionHasNineColumns) {
  Run(Codings::Reference);
  ASSERT_EQ(Enter({{{2, 0}, 1.0}, {{3, 0}, -1.0}}), Statuses::Usable);
  EXPECT_EQ(results->EstimateLinearCombination(), 0);
  const SheetView sheet = LastSheet(analysis->Host);
  EXPECT_EQ(sheet.Titles(), (Texts{"Estimate LB"}));
  EXPECT_EQ(sheet.RowNames(), (Texts{"Contrast"}));
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"Wald", "df", "P value", "Contrast", "95%Lower", "95%Upper", "Exp(Contrast)",
                                        "95%Lower", "95%Upper"}));
  const auto& content =
      std::get<SheetContent>(analysis->Host.Documents()[analysis->Host.Documents().Size() - 1].Content);
  for (std::size_t k = 0; k < 9; ++k) {
    EXPECT_EQ(content.Columns[k].LongName, k >= 7 ? "Exp(Contrast)" : "") << k;
  }
  const Vector& b = Fit().m_BetaHistory.back();
  const DenseMatrix& V = Fit().m_Covariance;
  const double t = b[2] - b[3];
  const double u = std::sqrt(V[2][2] + V[3][3] - 2.0 * V[2][3]);
  EXPECT_NEAR(*sheet.Number(0, 0), t * t / (u * u), 1e-12 * t * t / (u * u));
  EXPECT_EQ(sheet.Text(0, 1), "1");
  EXPECT_NEAR(*sheet.Number(0, 2), 1.0 - analysis->Host.ChiSquareCdf(t * t / (u * u), 1.0), 1e-12);
  const Vector expected = {t, t - kZ95 * u, t + kZ95 * u, std::exp(t), std::exp(t - kZ95 * u), std::exp(t + kZ95 * u)};
  for (int k = 0; k < 6; ++k) {
    EXPECT_NEAR(*sheet.Number(0, 3 + k), expected[static_cast<std::size_t>(k)], 1e-12) << k;
  }
  ExpectNoMessage();
}

TEST_F(LinearCombinationActionsTest, TwoFunctionsHaveThreeColumns) {
  Run(Codings::SigmaRestricted);
  ASSERT_EQ(Enter({{{2, 0}, 1.0}, {{3, 1}, 2.0}}), Statuses::Usable);
  EXPECT_EQ(results->EstimateLinearCombination(), 0);
  const SheetView sheet = LastSheet(analysis->Host);
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"Wald", "df", "P value"}));
  EXPECT_EQ(sheet.Text(0, 1), "2");
  const double wald = *sheet.Number(0, 0);
  const double p = *sheet.Number(0, 2);
  analysis->Analysis.CreateType3Spreadsheet(0.95);
  const SheetView type3 = LastSheet(analysis->Host);
  EXPECT_NEAR(wald, type3.Value(2, "Wald"), 1e-11 * wald) << "both parameters of g together";
  EXPECT_NEAR(p, type3.Value(2, "P value"), 1e-12);
}

TEST_F(LinearCombinationActionsTest, FunctionOfOneParameterIsItsRowOfTheEstimates) {
  for (const int coding : {Codings::SigmaRestricted, Codings::Reference}) {
    Run(coding);
    for (int row = 0; row < 4; ++row) {
      results->m_LinearCombinations = DenseMatrix(4, {0.0});
      results->m_LinearCombinations[static_cast<std::size_t>(row)][0] = 1.0;
      EXPECT_EQ(results->EstimateLinearCombination(), 0);
      const SheetView contrast = LastSheet(analysis->Host);
      analysis->Analysis.CreateParameterEstimateSpreadsheet(0.95);
      const SheetView estimates = LastSheet(analysis->Host);
      const std::pair<int, const char*> cells[] = {
          {0, "Chi-square"}, {2, "P value"}, {3, "Parameter Estimate"}, {4, "95% Lower CL"}, {5, "95% Upper CL"}};
      for (const auto& [column, name] : cells) {
        EXPECT_NEAR(*contrast.Number(0, column), estimates.Value(row, name), 1e-12) << row << ' ' << name;
      }
    }
  }
}

TEST_F(LinearCombinationActionsTest, ConfidenceLevelIsThatOfTheDialog) {
  Run(Codings::Reference, {{"x", "v3"}});
  Fit().m_BetaHistory.back() = {0.5};
  Fit().m_Covariance = {{0.04}};
  results->m_LinearCombinations = {{1.0}};
  struct {
    double level;
    const char* lower;
    double z;
  } const cases[] = {
      {0.9, "90%Lower", 1.644853626951472},
      {0.995, "99.5%Lower", 2.807033768343811},
      {0.99999, "99.999%Lower", 4.417173413469024},
  };
  for (const auto& c : cases) {
    results->ConfidenceLevel = c.level;
    EXPECT_EQ(results->EstimateLinearCombination(), 0);
    const SheetView sheet = LastSheet(analysis->Host);
    EXPECT_EQ(sheet.ColumnNames()[4], c.lower);
    EXPECT_NEAR(*sheet.Number(0, 4), 0.5 - c.z * 0.2, 1e-9) << c.level;
    EXPECT_NEAR(*sheet.Number(0, 8), std::exp(0.5 + c.z * 0.2), 1e-9) << c.level;
  }
}

TEST_F(LinearCombinationActionsTest, ExponentialsHaveNoGuard) {
  Run(Codings::Reference, {{"x", "v3"}});
  Fit().m_BetaHistory.back() = {0.7098};
  Fit().m_Covariance = {{1e-12}};
  results->m_LinearCombinations = {{1000.0}};
  ASSERT_EQ(results->EstimateLinearCombination(), 0);
  const RawSheet& sheet = analysis->Host.Sheets.back();
  EXPECT_EQ(sheet.Cells[6], INFINITY) << "exp(709.8)";
  results->m_LinearCombinations = {{1.0}};
  Fit().m_BetaHistory.back() = {-740.0};
  Fit().m_Covariance = {{1.0}};
  ASSERT_EQ(results->EstimateLinearCombination(), 0);
  EXPECT_EQ(analysis->Host.Sheets.back().Cells[6], std::exp(-740.0)) << "a hazard ratio would be 0";
  EXPECT_GT(analysis->Host.Sheets.back().Cells[6], 0.0);
}

TEST_F(LinearCombinationActionsTest, RobustCovarianceIsTakenForTheTest) {
  Run(Codings::Reference);
  results->m_LinearCombinations = {{1.0}, {0.0}, {0.0}, {0.0}};
  ASSERT_EQ(results->EstimateLinearCombination(), 0);
  const double plain = *LastSheet(analysis->Host).Number(0, 0);
  analysis->Settings().UseRobustVariance = true;
  Fit().m_RobustCovariance = DenseMatrix(4, Vector(4, 0.0));
  Fit().m_RobustCovariance[0][0] = 4.0 * Fit().m_Covariance[0][0];
  ASSERT_EQ(results->EstimateLinearCombination(), 0);
  EXPECT_NEAR(*LastSheet(analysis->Host).Number(0, 0), plain / 4.0, 1e-12 * plain);
  // Independence is judged by it too, and whether a function is estimable is not.
  EXPECT_EQ(Enter({{{0, 0}, 1.0}, {{1, 1}, 1.0}}), Statuses::NotIndependent);
  ExpectMessage(kNotIndependent);
  Fit().m_NullProjection[1][1] = 0.0;
  EXPECT_EQ(Enter({{{0, 0}, 1.0}, {{1, 1}, 1.0}}), Statuses::NotEstimable);
  ExpectMessage(kNotEstimable);
}

// ---- Failures -------------------------------------------------------------------------------------------------------

TEST_F(LinearCombinationActionsTest, RefusedFunctionsAreReportedUntilNewOnesAreEntered) {
  Run(Codings::Overparameterized);
  ASSERT_EQ(Enter({{{2, 0}, 1.0}}), Statuses::NotEstimable);
  ExpectMessage(kNotEstimable);
  const std::size_t before = Sheets();
  for (int k = 0; k < 2; ++k) {
    EXPECT_EQ(results->EstimateLinearCombination(), -1);
    ExpectMessage(kNotEstimable);
  }
  EXPECT_EQ(results->m_LinearCombinations[2], (Vector{1.0})) << "they stay in place";
  // The message comes without another test.
  Fit().m_NullProjection = DenseMatrix(6, Vector(6, 0.0));
  for (std::size_t j = 0; j < 6; ++j) Fit().m_NullProjection[j][j] = 1.0;
  EXPECT_EQ(results->EstimateLinearCombination(), -1);
  ExpectMessage(kNotEstimable);
  EXPECT_EQ(Sheets(), before);
  EXPECT_EQ(Enter({{{0, 0}, 1.0}, {{2, 0}, 0.0}}), Statuses::Usable);
  EXPECT_EQ(results->EstimateLinearCombination(), 0);
  ExpectNoMessage();
}

TEST_F(LinearCombinationActionsTest, FunctionsAreCheckedAgainBeforeTheTest) {
  Run(Codings::Reference);
  const std::size_t before = Sheets();
  results->m_LinearCombinations = {{1.0, 2.0}, {0.0, 0.0}, {0.0, 0.0}, {0.0, 0.0}};
  EXPECT_EQ(results->EstimateLinearCombination(), -1);
  ExpectMessage(kNotIndependent);
  EXPECT_EQ(results->m_LinearCombinationStatus, Statuses::NotIndependent);
  results->m_LinearCombinationStatus = Statuses::Usable;
  Fit().m_NullProjection[0][0] = 0.0;
  EXPECT_EQ(results->EstimateLinearCombination(), -1);
  ExpectMessage(kNotEstimable);
  EXPECT_EQ(results->m_LinearCombinationStatus, Statuses::NotEstimable);
  EXPECT_EQ(Sheets(), before);
}

TEST_F(LinearCombinationActionsTest, TestThatCannotBeMadeIsReported) {
  Run(Codings::Reference);
  ASSERT_EQ(Enter({{{1, 0}, 1.0}}), Statuses::Usable);
  const std::size_t before = Sheets();
  Fit().m_Covariance[1] = Vector(4, 0.0);
  for (Vector& row : Fit().m_Covariance) row[1] = 0.0;
  EXPECT_EQ(results->EstimateLinearCombination(), -1);
  ExpectMessage(kCannotTest);
  EXPECT_EQ(Sheets(), before);
  EXPECT_EQ(results->m_LinearCombinationStatus, Statuses::Usable);
}

TEST_F(LinearCombinationActionsTest, TestBeyondADoubleIsReported) {
  Run(Codings::Reference, {{"x", "v3"}});
  results->m_LinearCombinations = {{1e200}};
  EXPECT_EQ(results->EstimateLinearCombination(), -1);
  ExpectMessage(kCannotTest);
}

TEST_F(LinearCombinationActionsTest, ModelWithoutParametersHasNoSheet) {
  Run(Codings::Reference, {});
  bool opened = false;
  analysis->Host.SetSheetEditor([&](SheetContent&) { return opened = true; });
  EXPECT_EQ(results->EnterLinearCombinations(), 2);
  EXPECT_FALSE(opened);
  EXPECT_EQ(results->EstimateLinearCombination(), 1);
}

}  // namespace
}  // namespace orv
