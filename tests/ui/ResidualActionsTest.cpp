// Residuals and Save: which columns, rows and cells the tables have, and what is left behind.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "data/RoundHalfAway.h"
#include "inference/InfluenceMeasures.h"
#include "inference/SchoenfeldResiduals.h"
#include "inference/ScoreResiduals.h"
#include "support/SheetReading.h"
#include "support/TwoWayCases.h"
#include "ui/CCoxPHResults.h"

namespace orv {
namespace {

using namespace testing;
using Texts = std::vector<std::string>;
using Vector = std::vector<double>;
using Effects = std::vector<std::pair<std::string, std::string>>;

constexpr const char* kNothingSelected = "Please select at least one residual.";

ResidualChoices AllResiduals() {
  return {true, true, true, true, true, true, true, true, true, true};
}

class ResidualActionsTest : public ::testing::Test {
 protected:
  void Run(const Effects& effects, int coding = Codings::SigmaRestricted) {
    analysis = std::make_unique<TestAnalysis>(TwoWayCases(kUnbalanced));
    SelectTwoWay(*analysis, coding, effects);
    Finish();
  }
  // Intervals of which some begin late.
  void RunIntervals(const std::vector<TestColumn>& more = {}) {
    std::vector<TestColumn> columns = {{"start", {0, 2, 0, 3, 1, 0, 4, 0, 2, 5}},
                                       {"stop", {9, 4, 2, 8, 6, 5, 7, 3, 10, 11}},
                                       {"status", {1, 1, 1, 0, 1, 1, 0, 1, 1, 0}},
                                       {"x", {1, 4, 3, 8, 5, 7, 1, 6, 2, 9}},
                                       {"z", {0, 1, 1, 0, 1, 0, 1, 0, 1, 0}}};
    columns.insert(columns.end(), more.begin(), more.end());
    analysis = std::make_unique<TestAnalysis>(columns);
    analysis->Interval("start", "stop").Status("status").Covariates({"x", "z"}).DefaultDesign();
    Finish();
  }
  void Finish() {
    ASSERT_EQ(analysis->Run(), 0);
    results = std::make_unique<CCoxPHResults>(analysis->Analysis);
    results->Residuals = {};
    m_sheets = analysis->Host.Sheets.size();
  }
  // The table that came of the choices as they stand; there must be just one.
  SheetView Table(std::vector<int>* order = nullptr) {
    EXPECT_EQ(results->CreateResidualTable(order), 0);
    return NewSheet();
  }
  SheetView Saved(const std::vector<int>& variables) {
    EXPECT_EQ(results->SaveResidualsAndPredictedValues(variables), 0);
    return NewSheet();
  }
  SheetView NewSheet() {
    EXPECT_EQ(analysis->Host.Sheets.size(), ++m_sheets);
    return LastSheet(analysis->Host);
  }
  void ExpectRefusal(int returned) {
    EXPECT_EQ(returned, 1);
    EXPECT_EQ(analysis->Host.Messages(), (Texts{kNothingSelected}));
    EXPECT_EQ(analysis->Host.Sheets.size(), m_sheets) << "no table";
  }
  int CaseOfRow(int row) {
    const CCoxData& data = analysis->Data();
    return RoundToInteger(data.CaseTable.GetRow(row)[data.CaseNumberColumn]);
  }
  // The column holds these values, which count by sorted row, each in the line of its case.
  void ExpectColumn(const SheetView& sheet, const std::string& header, const Vector& bySortedRow) {
    ASSERT_EQ(static_cast<int>(bySortedRow.size()), sheet.Rows()) << header;
    const int column = sheet.ColumnOf(header);
    ASSERT_LT(column, sheet.Columns());
    for (int row = 1; row <= sheet.Rows(); ++row) {
      const int line = sheet.RowOf(std::to_string(CaseOfRow(row)));
      EXPECT_EQ(sheet.Number(line, column), bySortedRow[static_cast<std::size_t>(row) - 1])
          << header << ", case " << CaseOfRow(row);
    }
  }
  CCoxFit& Fit() { return analysis->Fit(); }
  const double* Beta() { return Fit().m_BetaHistory.back().data(); }
  // V U, column by column.
  DenseMatrix TimesCovariance(const DenseMatrix& U) {
    DenseMatrix product(U.size(), Vector(U[0].size(), 0.0));
    for (std::size_t k = 0; k < U.size(); ++k) {
      for (std::size_t m = 0; m < U.size(); ++m) {
        for (std::size_t i = 0; i < U[m].size(); ++i) product[k][i] += Fit().m_Covariance[k][m] * U[m][i];
      }
    }
    return product;
  }
  void ExpectNothingIsKept() {
    EXPECT_TRUE(Fit().m_ScoreResiduals.empty());
    EXPECT_TRUE(Fit().m_SchoenfeldResiduals.empty());
    EXPECT_TRUE(Fit().m_ScaledSchoenfeldResiduals.empty());
    EXPECT_TRUE(Fit().m_DfBeta.empty());
    EXPECT_TRUE(Fit().m_StdErrorXBeta.empty());
    EXPECT_TRUE(Fit().m_LikelihoodDisplacement.empty());
    EXPECT_TRUE(Fit().m_Lmax.empty());
  }

  std::unique_ptr<TestAnalysis> analysis;
  std::unique_ptr<CCoxPHResults> results;

 private:
  std::size_t m_sheets = 0;
};

// ---- Columns --------------------------------------------------------------------------------------------------------

TEST_F(ResidualActionsTest, ColumnsHaveTheirOrderWhateverIsChosen) {
  Run({{"x", "v3"}});
  results->Residuals = AllResiduals();
  const SheetView sheet = Table();
  EXPECT_EQ(sheet.Titles(), (Texts{"Residuals"}));
  EXPECT_EQ(sheet.ColumnNames(),
            (Texts{"Martingale", "Deviance", "Score residual_x", "Schoenfeld_x", "Scaled Schoenfeld_x", "DFBeta_x",
                   "Std. Error Xbeta", "XBeta", "Likelihood displacement", "Lmax"}));
}

TEST_F(ResidualActionsTest, EachChoiceIsItsColumnAlone) {
  Run({{"x", "v3"}});
  const struct {
    bool ResidualChoices::*Choice;
    const char* Header;
  } cases[] = {{&ResidualChoices::ComputeMartingale, "Martingale"},
               {&ResidualChoices::ComputeDeviance, "Deviance"},
               {&ResidualChoices::ComputeScore, "Score residual_x"},
               {&ResidualChoices::ComputeSchoenfeld, "Schoenfeld_x"},
               {&ResidualChoices::ComputeScaledSchoenfeld, "Scaled Schoenfeld_x"},
               {&ResidualChoices::ComputeDfbeta, "DFBeta_x"},
               {&ResidualChoices::ComputeStdXBeta, "Std. Error Xbeta"},
               {&ResidualChoices::ComputeXbeta, "XBeta"},
               {&ResidualChoices::ComputeLikelihoodDisplacement, "Likelihood displacement"},
               {&ResidualChoices::ComputeLMAX, "Lmax"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Header);
    results->Residuals = {};
    results->Residuals.*c.Choice = true;
    EXPECT_EQ(Table().ColumnNames(), (Texts{c.Header}));
    EXPECT_TRUE(results->Residuals.*c.Choice) << "a choice stands";
  }
}

TEST_F(ResidualActionsTest, ResidualsOfColumnsHaveAHeaderForEach) {
  Run({{"x", "v3"}, {"g", "v5"}, {"x*x", "v3*v3"}, {"f*g", "v4*v5"}});
  results->Residuals.ComputeScore = true;
  EXPECT_EQ(Table().ColumnNames(), (Texts{"Score residual_x", "Score residual_g_1", "Score residual_g_2",
                                          "Score residual_x*x", "Score residual_f*g_1", "Score residual_f*g_2"}))
      << "the level's text for one factor, the place in the effect for a term, nothing without a factor";
  results->Residuals = {};
  results->Residuals.ComputeDfbeta = true;
  EXPECT_EQ(Table().ColumnNames(),
            (Texts{"DFBeta_x", "DFBeta_g_1", "DFBeta_g_2", "DFBeta_x*x", "DFBeta_f*g_1", "DFBeta_f*g_2"}));
}

TEST_F(ResidualActionsTest, LevelsAreNamedByTheirLabels) {
  std::vector<TestColumn> columns = TwoWayCases(kUnbalanced);
  columns[4].Labels = {{1, "north"}, {3, "south"}};
  analysis = std::make_unique<TestAnalysis>(columns);
  SelectTwoWay(*analysis, Codings::Overparameterized, {{"g", "v5"}});
  Finish();
  results->Residuals.ComputeSchoenfeld = true;
  EXPECT_EQ(Table().ColumnNames(), (Texts{"Schoenfeld_g_north", "Schoenfeld_g_2", "Schoenfeld_g_south"}))
      << "an aliased column has its residuals too";
}

TEST_F(ResidualActionsTest, LongNamesStayWhole) {
  const std::string effect = "interaction of the first and the second treatment of the trial";
  Run({{effect, "v4*v5"}});
  results->Residuals.ComputeScaledSchoenfeld = true;
  EXPECT_EQ(Table().ColumnNames(), (Texts{"Scaled Schoenfeld_" + effect + "_1", "Scaled Schoenfeld_" + effect + "_2"}));
}

// ---- Rows and cells -------------------------------------------------------------------------------------------------

TEST_F(ResidualActionsTest, RowsFollowTheInputTable) {
  Run({{"x", "v3"}});
  results->Residuals.ComputeXbeta = true;
  std::vector<int> order = {99};
  const SheetView sheet = Table(&order);
  ASSERT_EQ(sheet.Rows(), 33);
  ASSERT_EQ(order.size(), 33U);
  Texts names;
  bool isSorted = true;
  for (int line = 0; line < 33; ++line) {
    names.push_back(std::to_string(line + 1));
    EXPECT_EQ(CaseOfRow(order[static_cast<std::size_t>(line)]), line + 1);
    isSorted = isSorted && order[static_cast<std::size_t>(line)] == line + 1;
  }
  EXPECT_FALSE(isSorted) << "the cases must not come in the order of their times";
  EXPECT_EQ(sheet.RowNames(), names);
}

TEST_F(ResidualActionsTest, OnlyValidCasesHaveARow) {
  std::vector<TestColumn> columns = TwoWayCases(kUnbalanced);
  columns[4].Values[3] = 7.0;  // no selected code
  analysis = std::make_unique<TestAnalysis>(columns);
  SelectTwoWay(*analysis, Codings::Reference, {{"x", "v3"}, {"g", "v5"}});
  Finish();
  results->Residuals.ComputeMartingale = true;
  const SheetView sheet = Table();
  EXPECT_EQ(sheet.Rows(), 32);
  EXPECT_EQ(sheet.RowNames()[2], "3");
  EXPECT_EQ(sheet.RowNames()[3], "5");
  ExpectColumn(sheet, "Martingale", Fit().m_MartingaleResiduals);
}

TEST_F(ResidualActionsTest, RowsHaveTheNamesOfTheCases) {
  std::vector<TestColumn> columns = TwoWayCases(kUnbalanced);
  analysis = std::make_unique<TestAnalysis>(columns);
  Texts names(33);
  names[0] = "Ada";
  names[2] = "Cleo";
  analysis->Table.SetCaseNames(names);
  SelectTwoWay(*analysis, Codings::Reference, {{"x", "v3"}});
  Finish();
  results->Residuals.ComputeMartingale = true;
  const SheetView sheet = Table();
  EXPECT_EQ(sheet.RowNames()[0], "Ada");
  EXPECT_EQ(sheet.RowNames()[1], "2") << "a case without a name has its number";
  EXPECT_EQ(sheet.RowNames()[2], "Cleo");
}

TEST_F(ResidualActionsTest, EveryCellIsTheResidualOfItsCase) {
  Run({{"x", "v3"}, {"f", "v4"}});
  results->Residuals = AllResiduals();
  const SheetView sheet = Table();
  ExpectColumn(sheet, "Martingale", Fit().m_MartingaleResiduals);
  ExpectColumn(sheet, "Deviance", Fit().m_DevianceResiduals);
  ExpectColumn(sheet, "XBeta", Fit().m_LinearPredictor);
  const DenseMatrix scores = SurvivalScoreResiduals(Fit(), Beta());
  ExpectColumn(sheet, "Score residual_x", scores[0]);
  ExpectColumn(sheet, "Score residual_f_1", scores[1]);
  Fit().ComputeDfBeta();
  ExpectColumn(sheet, "DFBeta_f_1", Fit().m_DfBeta[1]);
  ComputeStdErrorXBeta(Fit());
  ExpectColumn(sheet, "Std. Error Xbeta", Fit().m_StdErrorXBeta);
  ComputeLikelihoodDisplacement(Fit());
  ExpectColumn(sheet, "Likelihood displacement", Fit().m_LikelihoodDisplacement);
  ASSERT_TRUE(ComputeLmax(Fit()));
  ExpectColumn(sheet, "Lmax", Fit().m_Lmax);
}

TEST_F(ResidualActionsTest, SchoenfeldCellsOfCensoredCasesStayEmpty) {
  Run({{"x", "v3"}});
  results->Residuals.ComputeSchoenfeld = results->Residuals.ComputeScaledSchoenfeld = true;
  results->Residuals.ComputeScore = true;
  const SheetView sheet = Table();
  ComputeScaledSchoenfeldResiduals(Fit());
  int censored = 0;
  for (int row = 1; row <= sheet.Rows(); ++row) {
    const int line = CaseOfRow(row) - 1;
    const bool isEvent = analysis->Table.Value(2, line + 1) == 1.0;
    const auto at = static_cast<std::size_t>(row) - 1;
    censored += isEvent ? 0 : 1;
    EXPECT_EQ(sheet.Number(line, "Schoenfeld_x"),
              isEvent ? std::optional<double>(Fit().m_SchoenfeldResiduals[0][at]) : std::nullopt);
    EXPECT_EQ(sheet.Number(line, "Scaled Schoenfeld_x"),
              isEvent ? std::optional<double>(Fit().m_ScaledSchoenfeldResiduals[0][at]) : std::nullopt);
    EXPECT_NE(sheet.Number(line, "Score residual_x"), std::nullopt) << "those of all cases are written";
  }
  EXPECT_GT(censored, 0);
}

// ---- What cannot be shown, and what is left behind -----------------------------------------------------------------

TEST_F(ResidualActionsTest, NoChoiceIsRefused) {
  Run({{"x", "v3"}});
  ExpectRefusal(results->CreateResidualTable());
}

// The choice of Cox-Snell residuals has no column.
TEST_F(ResidualActionsTest, CoxSnellAloneIsRefused) {
  Run({{"x", "v3"}});
  results->Residuals.ComputeCoxSnell = true;
  ExpectRefusal(results->CreateResidualTable());
}

TEST_F(ResidualActionsTest, CoxSnellHasNoColumn) {
  Run({{"x", "v3"}});
  results->Residuals.ComputeCoxSnell = results->Residuals.ComputeXbeta = true;
  EXPECT_EQ(Table().ColumnNames(), (Texts{"XBeta"}));
}

TEST_F(ResidualActionsTest, NoChoiceCannotBeSaved) {
  Run({{"x", "v3"}});
  ExpectRefusal(results->SaveResidualsAndPredictedValues({1}));
}

TEST_F(ResidualActionsTest, LmaxThatFailsIsLeftOutWithoutAWord) {
  Run({{"x", "v3"}});
  Fit().m_Covariance[0][0] = -1.0;  // has no factor
  results->Residuals.ComputeMartingale = results->Residuals.ComputeLMAX = true;
  EXPECT_EQ(Table().ColumnNames(), (Texts{"Martingale"}));
  EXPECT_FALSE(results->Residuals.ComputeLMAX) << "and is switched off";
  EXPECT_TRUE(results->Residuals.ComputeMartingale);
  EXPECT_TRUE(analysis->Host.Messages().empty());
}

TEST_F(ResidualActionsTest, LmaxAloneThatFailsGivesNoTableAndNoWord) {
  Run({{"x", "v3"}});
  Fit().m_Covariance[0][0] = -1.0;
  results->Residuals.ComputeLMAX = true;
  const std::size_t before = analysis->Host.Sheets.size();
  EXPECT_EQ(results->CreateResidualTable(), 1);
  EXPECT_EQ(analysis->Host.Sheets.size(), before);
  EXPECT_TRUE(analysis->Host.Messages().empty());
}

TEST_F(ResidualActionsTest, LmaxWithoutMemoryIsLeftOut) {
  Run({{"x", "v3"}});
  results->Residuals.ComputeXbeta = results->Residuals.ComputeLMAX = true;
  analysis->Host.FailAllocation(1);
  EXPECT_EQ(Table().ColumnNames(), (Texts{"XBeta"}));
  EXPECT_GE(analysis->Host.Requests(), 1) << "its work arrays are the host's";
  EXPECT_FALSE(results->Residuals.ComputeLMAX);
}

TEST_F(ResidualActionsTest, LmaxThatFailsIsLeftOutOfASaveToo) {
  Run({{"x", "v3"}});
  analysis->Data().DesignColumns[0].Dropped = true;
  results->Residuals.ComputeXbeta = results->Residuals.ComputeLMAX = true;
  EXPECT_EQ(Saved({3}).ColumnNames(), (Texts{"XBeta", "x"}));
  EXPECT_FALSE(results->Residuals.ComputeLMAX);
}

TEST_F(ResidualActionsTest, ResidualsEndWithTheRequest) {
  Run({{"x", "v3"}});
  results->Residuals = AllResiduals();
  Table();
  ExpectNothingIsKept();
  EXPECT_EQ(Fit().m_MartingaleResiduals.size(), 33U) << "those of the fit stay";
  EXPECT_EQ(Fit().m_DevianceResiduals.size(), 33U);
  EXPECT_EQ(Fit().m_LinearPredictor.size(), 33U);
  Saved({});
  ExpectNothingIsKept();
}

TEST_F(ResidualActionsTest, TheSecondTableIsTheFirst) {
  Run({{"x", "v3"}, {"f", "v4"}});
  results->Residuals = AllResiduals();
  const SheetView first = Table();
  const SheetView second = Table();
  ASSERT_EQ(first.ColumnNames(), second.ColumnNames());
  for (int line = 0; line < first.Rows(); ++line) {
    for (int c = 0; c < first.Columns(); ++c) EXPECT_EQ(first.Number(line, c), second.Number(line, c)) << line << c;
  }
}

// ---- Intervals ------------------------------------------------------------------------------------------------------

TEST_F(ResidualActionsTest, TableOfIntervalsTakesTheirKernel) {
  RunIntervals();
  results->Residuals.ComputeScore = results->Residuals.ComputeDfbeta = true;
  const SheetView sheet = Table();
  const DenseMatrix scores = CountingScoreResiduals(Fit(), Beta());
  EXPECT_NE(scores, SurvivalScoreResiduals(Fit(), Beta())) << "the cases must tell the kernels apart";
  ExpectColumn(sheet, "Score residual_x", scores[0]);
  ExpectColumn(sheet, "Score residual_z", scores[1]);
  ExpectColumn(sheet, "DFBeta_z", TimesCovariance(scores)[1]);
  results->Residuals.ComputeScore = false;
  ExpectColumn(Table(), "DFBeta_z", TimesCovariance(scores)[1]);
}

TEST_F(ResidualActionsTest, IntervalsHaveNoResidualsOfSurvivalTimes) {
  RunIntervals();
  results->Residuals = AllResiduals();
  EXPECT_EQ(Table().ColumnNames(),
            (Texts{"Martingale", "Score residual_x", "Score residual_z", "Schoenfeld_x", "Schoenfeld_z",
                   "Scaled Schoenfeld_x", "Scaled Schoenfeld_z", "DFBeta_x", "DFBeta_z", "Std. Error Xbeta", "XBeta"}));
  EXPECT_FALSE(results->Residuals.ComputeDeviance);
  EXPECT_FALSE(results->Residuals.ComputeLikelihoodDisplacement);
  EXPECT_FALSE(results->Residuals.ComputeLMAX);
}

// Without the scores among the choices a save takes the kernel of survival times.
TEST_F(ResidualActionsTest, SaveOfIntervalsTakesTheKernelOfSurvivalTimes) {
  RunIntervals();
  results->Residuals.ComputeDfbeta = true;
  const SheetView sheet = Saved({});
  const DenseMatrix influence = TimesCovariance(SurvivalScoreResiduals(Fit(), Beta()));
  ExpectColumn(sheet, "DFBeta_x", influence[0]);
  ExpectColumn(sheet, "DFBeta_z", influence[1]);
  EXPECT_NE(influence, TimesCovariance(CountingScoreResiduals(Fit(), Beta())));
}

TEST_F(ResidualActionsTest, SaveOfIntervalsWithScoresTakesTheirKernel) {
  RunIntervals();
  results->Residuals.ComputeDfbeta = results->Residuals.ComputeScore = true;
  const SheetView sheet = Saved({});
  const DenseMatrix scores = CountingScoreResiduals(Fit(), Beta());
  ExpectColumn(sheet, "Score residual_x", scores[0]);
  ExpectColumn(sheet, "DFBeta_x", TimesCovariance(scores)[0]);
}

TEST_F(ResidualActionsTest, SaveOfSurvivalTimesHasTheCellsOfTheTable) {
  Run({{"x", "v3"}, {"f", "v4"}});
  results->Residuals = AllResiduals();
  results->Residuals.ComputeScore = false;
  const SheetView table = Table();
  const SheetView saved = Saved({});
  ASSERT_EQ(saved.ColumnNames(), table.ColumnNames());
  EXPECT_EQ(saved.Titles(), table.Titles());
  for (int line = 0; line < table.Rows(); ++line) {
    for (int c = 0; c < table.Columns(); ++c) EXPECT_EQ(saved.Number(line, c), table.Number(line, c)) << line << c;
  }
}

// ---- Saved variables ------------------------------------------------------------------------------------------------

TEST_F(ResidualActionsTest, SavedVariablesStandBehindTheResiduals) {
  Run({{"x", "v3"}});
  results->Residuals.ComputeXbeta = results->Residuals.ComputeMartingale = true;
  const SheetView sheet = Saved({5, 1});
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"Martingale", "XBeta", "g", "time"}));
  for (int line = 0; line < sheet.Rows(); ++line) {
    EXPECT_EQ(sheet.Number(line, "g"), analysis->Table.Value(5, line + 1)) << line;
    EXPECT_EQ(sheet.Number(line, "time"), analysis->Table.Value(1, line + 1)) << line;
  }
}

TEST_F(ResidualActionsTest, LabelledValuesAreSavedAsTheirTexts) {
  RunIntervals({{"site", {1, 2, 3, 1, 2, 3, 1, 2, 3, 1}, {{1, "north"}, {2, "south"}, {3, "west"}}}});
  results->Residuals.ComputeXbeta = true;
  const SheetView sheet = Saved({6, 4});
  EXPECT_EQ(sheet.Texts(1),
            (Texts{"north", "south", "west", "north", "south", "west", "north", "south", "west", "north"}));
  EXPECT_EQ(sheet.Number(1, "x"), 4.0);
}

// A case takes part with a gap in a variable that the analysis does not use.
TEST_F(ResidualActionsTest, MissingValuesAreSavedAsMissing) {
  RunIntervals({{"note", {1, kMissingCode, 3, 4, 5, 6, 7, 8, 9, 10}}});
  results->Residuals.ComputeXbeta = true;
  const SheetView sheet = Saved({6});
  EXPECT_EQ(sheet.Number(0, "note"), 1.0);
  EXPECT_EQ(sheet.Number(1, "note"), std::nullopt);
}

}  // namespace
}  // namespace orv
