// What a kept case puts into its row: design columns, times and the rest, and the statistics that go with them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "data/TestCases.h"

namespace orv {
namespace {

using testing::BuildData;
using testing::ColumnByCase;
using ::testing::ElementsAre;
using testing::GoodCases;
using testing::ReadData;
using testing::TestAnalysis;
using testing::TestColumn;
using testing::TrialCase;
using testing::TrialColumns;

using Effects = std::vector<std::pair<std::string, std::string>>;

// Six cases: every combination of f (codes 1 2 3) and g (codes 1 2), with covariates x and y.
std::vector<TestColumn> Crossed() {
  return {{"x", {2, 3, 5, 7, 11, 13}}, {"y", {1, -1, 0.5, 2, -2, 4}}, {"f", {1, 1, 2, 2, 3, 3}},
          {"g", {1, 2, 1, 2, 1, 2}},   {"time", {1, 2, 3, 4, 5, 6}},  {"status", {1, 1, 1, 0, 0, 1}}};
}

// The design columns of a term, by case number.
std::vector<std::vector<double>> Columns(int coding, std::int16_t referenceOfF, const std::string& term) {
  TestAnalysis test(Crossed());
  test.Covariates({"x", "y"}).Factor("f", {1, 2, 3}).Factor("g", {1, 2}).Time({"time"}).Status("status");
  test.Settings().Coding = static_cast<std::int16_t>(coding);
  test.Settings().ReferenceCodeIndex[0] = referenceOfF;
  test.Settings().ReferenceCodes[0] = referenceOfF;
  test.Design({{"effect", term}});
  const CCoxData& data = ReadData(test);
  std::vector<std::vector<double>> columns;
  for (std::uint32_t c = 0; c < data.DesignColumnCount; ++c) {
    columns.emplace_back();
    for (const auto& [number, value] : ColumnByCase(data, static_cast<std::int32_t>(c)))
      columns.back().push_back(value);
  }
  return columns;
}

TEST(EvaluateDesign, WritesWhatTheCodingSays) {
  constexpr int kSigma = Codings::SigmaRestricted;
  constexpr int kReference = Codings::Reference;
  constexpr int kOver = Codings::Overparameterized;
  struct {
    const char* What;
    int Coding;
    std::int16_t Reference;
    const char* Term;  // v1 is x, v2 is y, v3 is f, v4 is g
    std::vector<std::vector<double>> Columns;
  } const cases[] = {
      {"a covariate as it is", kSigma, 3, "v1", {{2, 3, 5, 7, 11, 13}}},
      {"a product of covariates", kSigma, 3, "v1*v2", {{2, -3, 2.5, 14, -22, 52}}},
      {"a square", kOver, 3, "v2*v2", {{1, 1, 0.25, 4, 4, 16}}},
      {"a factor, sigma-restricted", kSigma, 3, "v3", {{1, 1, 0, 0, -1, -1}, {0, 0, 1, 1, -1, -1}}},
      {"with another reference", kSigma, 1, "v3", {{-1, -1, 1, 1, 0, 0}, {-1, -1, 0, 0, 1, 1}}},
      {"with the reference between", kSigma, 2, "v3", {{1, 1, -1, -1, 0, 0}, {0, 0, -1, -1, 1, 1}}},
      {"a factor of two codes", kSigma, 3, "v4", {{1, -1, 1, -1, 1, -1}}},
      {"a factor, reference coding", kReference, 3, "v3", {{1, 1, 0, 0, 0, 0}, {0, 0, 1, 1, 0, 0}}},
      {"with another reference", kReference, 1, "v3", {{0, 0, 1, 1, 0, 0}, {0, 0, 0, 0, 1, 1}}},
      {"a factor, overparameterized", kOver, 1, "v3", {{1, 1, 0, 0, 0, 0}, {0, 0, 1, 1, 0, 0}, {0, 0, 0, 0, 1, 1}}},
      {"a cross, sigma-restricted", kSigma, 3, "v3*v4", {{1, -1, 0, 0, -1, 1}, {0, 0, 1, -1, -1, 1}}},
      {"a cross, reference coding", kReference, 3, "v3*v4", {{1, 0, 0, 0, 0, 0}, {0, 0, 1, 0, 0, 0}}},
      {"a cross, overparameterized",
       kOver,
       3,
       "v4*v3",
       {{1, 0, 0, 0, 0, 0},
        {0, 0, 1, 0, 0, 0},
        {0, 0, 0, 0, 1, 0},
        {0, 1, 0, 0, 0, 0},
        {0, 0, 0, 1, 0, 0},
        {0, 0, 0, 0, 0, 1}}},
      {"a covariate by a factor", kReference, 3, "v1*v3", {{2, 3, 0, 0, 0, 0}, {0, 0, 5, 7, 0, 0}}},
      {"sigma-restricted", kSigma, 3, "v1*v3", {{2, 3, 0, 0, -11, -13}, {0, 0, 5, 7, -11, -13}}},
      {"a nested factor",
       kOver,
       3,
       "v4(v3)",
       {{1, 0, 0, 0, 0, 0},
        {0, 0, 1, 0, 0, 0},
        {0, 0, 0, 0, 1, 0},
        {0, 1, 0, 0, 0, 0},
        {0, 0, 0, 1, 0, 0},
        {0, 0, 0, 0, 0, 1}}},
  };
  for (const auto& c : cases) EXPECT_EQ(Columns(c.Coding, c.Reference, c.Term), c.Columns) << c.What << ", " << c.Term;
}

// ---- Statistics ---------------------------------------------------------------------------------------------------

TEST(EvaluateDesign, AnInteractionTakesEachPartialProductIntoItsStatistics) {
  TestAnalysis test(Crossed());
  test.Covariates({"x", "y"}).Factor("f", {1, 2, 3}).Factor("g", {1, 2}).Time({"time"}).Status("status");
  test.Settings().Coding = Codings::Reference;
  test.Design({{"x*f*y", "v1*v3*v2"}});
  const CCoxData& data = ReadData(test);
  ASSERT_EQ(data.DesignColumnCount, 2U);
  // Level 1 of f: x, then x or 0, then that by y.
  const std::vector<double> partial = {2, 2, 2, 3, 3, -3, 5, 0, 0, 7, 0, 0, 11, 0, 0, 13, 0, 0};
  double sum = 0.0;
  for (const double value : partial) sum += value;
  const double mean = sum / 18.0;
  double squares = 0.0;
  for (const double value : partial) squares += (value - mean) * (value - mean);
  const CoxDesignColumn& column = data.DesignColumns[0];
  EXPECT_EQ(column.Count, 18);
  EXPECT_EQ(column.WeightSum, 18.0);
  EXPECT_DOUBLE_EQ(column.Mean, mean);
  EXPECT_DOUBLE_EQ(column.WeightedMean, mean);
  EXPECT_DOUBLE_EQ(column.Variance, squares / 17.0);
  EXPECT_DOUBLE_EQ(column.WeightedVariance, squares / 17.0);
  EXPECT_DOUBLE_EQ(column.StdDev, std::sqrt(squares / 17.0));
  EXPECT_EQ(ColumnByCase(data, 0), (std::map<int, double>{{1, 2}, {2, -3}, {3, 0}, {4, 0}, {5, 0}, {6, 0}}));
}

TEST(EvaluateDesign, TheWeightSumOfAnInteractionCountsAWeightOnceAVariable) {
  std::vector<TrialCase> cases = GoodCases();
  const double weights[] = {1, 2, 3, 4};
  for (std::size_t k = 0; k < cases.size(); ++k) cases[k].w = weights[k];
  TestAnalysis test(TrialColumns(cases));
  test.Covariates({"x", "z"}).Time({"time"}).Status("status").Weights("w");
  test.Design({{"x", "v1"}, {"x*z", "v1*v9"}, {"x*x*z", "v1*v1*v9"}});
  const CCoxData& data = ReadData(test);
  for (std::size_t c = 0; c < 3; ++c) {
    EXPECT_EQ(data.DesignColumns[c].WeightSum, 10.0 * static_cast<double>(c + 1)) << "column " << c;
    EXPECT_EQ(data.DesignColumns[c].Count, 4 * static_cast<int>(c + 1)) << "column " << c;
  }
}

TEST(EvaluateDesign, AColumnWithoutVariablesIsOneWithOneUpdateACase) {
  TestAnalysis test(TrialColumns(GoodCases()));
  test.Covariates({"x"}).Time({"time"}).Status("status");
  test.Settings().InputType = InputTypes::TimeDependent;
  test.Settings().TimeExpressionVariables = {test.Number("z")};
  test.Design({{"late", "TIME_EXPRESSION1"}, {"x*late", "v1*TIME_EXPRESSION1"}});
  const CCoxData& data = ReadData(test);
  EXPECT_EQ(ColumnByCase(data, 0), (std::map<int, double>{{1, 1}, {2, 1}, {3, 1}, {4, 1}}));
  EXPECT_EQ(ColumnByCase(data, 1), (std::map<int, double>{{1, 1}, {2, 2}, {3, 3}, {4, 5}}));
  EXPECT_EQ(data.DesignColumns[0].Count, 4);
  EXPECT_EQ(data.DesignColumns[0].Mean, 1.0);
  EXPECT_EQ(data.DesignColumns[0].StdDev, 0.0);
  EXPECT_EQ(data.DesignColumns[1].Count, 4);
  EXPECT_DOUBLE_EQ(data.DesignColumns[1].Mean, 2.75);
}

// The stored value of a column with expressions is the product of its regular variables.
TEST(EvaluateDesign, ExpressionsDoNotEnterTheStoredValue) {
  for (const char* const term : {"v1", "v1*v3", "v3", "v3*v4", "v1*v4"}) {
    for (const int coding : {Codings::SigmaRestricted, Codings::Reference, Codings::Overparameterized}) {
      TestAnalysis test(Crossed());
      test.Covariates({"x", "y"}).Factor("f", {1, 2, 3}).Factor("g", {1, 2}).Time({"time"}).Status("status");
      test.Settings().Coding = static_cast<std::int16_t>(coding);
      test.Settings().InputType = InputTypes::TimeDependent;
      test.Settings().TimeExpressionVariables = {test.Number("y")};
      test.Design({{"effect", std::string(term) + "*TIME_EXPRESSION1"}});
      const CCoxData& data = ReadData(test);
      std::vector<std::vector<double>> columns;
      for (std::uint32_t c = 0; c < data.DesignColumnCount; ++c) {
        columns.emplace_back();
        for (const auto& [number, value] : ColumnByCase(data, static_cast<std::int32_t>(c))) {
          columns.back().push_back(value);
        }
      }
      EXPECT_EQ(columns, Columns(coding, 3, term)) << term << ", coding " << coding;
    }
  }
}

TEST(EvaluateDesign, TimesHaveRunningStatisticsOfTheirOwn) {
  TestAnalysis test(TrialColumns(GoodCases()));
  test.Covariates({"x"}).Time({"time"}).Status("status").DefaultDesign();
  test.Settings().EntryTimeVariable = test.Number("x");
  const CCoxData& data = ReadData(test);
  const CoxDesignColumn& survival = data.DesignColumns[static_cast<std::size_t>(data.SurvivalColumn)];
  EXPECT_EQ(survival.Count, 4);
  EXPECT_DOUBLE_EQ(survival.Mean, 3.75);
  // Only the design columns are finished: a sum of squares stays here.
  EXPECT_DOUBLE_EQ(survival.Variance, 8.75);
  EXPECT_EQ(survival.StdDev, 0.0);
  const CoxDesignColumn& entry = data.DesignColumns[static_cast<std::size_t>(data.EntryTimeColumn)];
  EXPECT_EQ(entry.Count, 4);
  EXPECT_DOUBLE_EQ(entry.Mean, 2.75);

  test.Interval("entry", "time");
  const CCoxData& interval = ReadData(test);
  EXPECT_DOUBLE_EQ(interval.DesignColumns[static_cast<std::size_t>(interval.StopColumn)].Mean, 3.75);
  EXPECT_EQ(interval.DesignColumns[static_cast<std::size_t>(interval.StartColumn)].Count, 4);
  EXPECT_EQ(interval.DesignColumns[static_cast<std::size_t>(interval.StartColumn)].Mean, 0.0);
}

// ---- The rest of a row --------------------------------------------------------------------------------------------

// Six cases of which the fourth is left out, with a value of its own in every field.
std::vector<TrialCase> SixCases() {
  return {{.x = 1, .f = 1, .g = 1, .time = 30, .status = 1, .w = 1.5, .id = 90, .entry = 3, .z = 100},
          {.x = 2, .f = 2, .g = 2, .time = 20, .status = 0, .w = 2.5, .id = 80, .entry = 2, .z = 200},
          {.x = 3, .f = 1, .g = 2, .time = 20, .status = 1, .w = 0.5, .id = 90, .entry = 1, .z = 300},
          {.x = 4, .f = 2, .g = 1, .time = 10, .status = 9, .w = 1.0, .id = 70, .entry = 0, .z = 400},
          {.x = 5, .f = 1, .g = 1, .time = 40, .status = 1, .w = 3.5, .id = 60, .entry = 4, .z = 500},
          {.x = 6, .f = 2, .g = 2, .time = 50, .status = 1, .w = 4.5, .id = 80, .entry = 5, .z = 600}};
}

TEST(ReadCase, WritesEveryColumnOfARow) {
  TestAnalysis test(TrialColumns(SixCases()));
  test.Covariates({"x"}).Factor("f", {1, 2}).Time({"time"}).Status("status").DefaultDesign();
  test.Strata("g", {1, 2}).Weights("w");
  test.Settings().Coding = Codings::Reference;
  test.Settings().EntryTimeVariable = test.Number("entry");
  test.Settings().SubjectVariable = test.Number("id");
  const CCoxData& data = ReadData(test);
  std::vector<std::vector<double>> rows;
  for (int row = 1; row <= data.CaseTable.RowCount(); ++row) {
    const double* cells = data.CaseTable.GetRow(row);
    rows.emplace_back(cells, cells + data.CaseTable.ColumnCount());
  }
  //  x  f  time entry stratum subject weight status case
  const std::vector<std::vector<double>> expected = {{1, 1, 30, 3, 1, 0, 1.5, 1, 1},
                                                     {5, 1, 40, 4, 1, 2, 3.5, 1, 5},
                                                     {3, 1, 20, 1, 2, 0, 0.5, 1, 3},
                                                     {2, 0, 20, 2, 2, 1, 2.5, 0, 2},
                                                     {6, 0, 50, 5, 2, 1, 4.5, 1, 6}};
  EXPECT_EQ(rows, expected);
}

TEST(ReadCase, WritesTheVariablesOfExpressionsBehindTheRest) {
  TestAnalysis test(TrialColumns(SixCases()));
  test.Covariates({"x"}).Time({"time"}).Status("status").DefaultDesign();
  test.Settings().InputType = InputTypes::TimeDependent;
  for (const std::vector<std::string>& read :
       {std::vector<std::string>{"z"}, std::vector<std::string>{"id", "z"}, std::vector<std::string>{"z", "id", "w"}}) {
    test.Settings().TimeExpressionVariables.clear();
    for (const std::string& name : read) test.Settings().TimeExpressionVariables.push_back(test.Number(name));
    const CCoxData& data = ReadData(test);
    const auto count = static_cast<int>(read.size());
    // x, time, weight, status, case; the mark of excluded cases is gone
    EXPECT_EQ(data.TimeVariableColumn, 5) << count;
    EXPECT_EQ(static_cast<int>(data.ColumnCount), 5 + count);
    EXPECT_EQ(data.CaseTable.ColumnCount(), 5 + count);
    for (int k = 0; k < count; ++k) {
      const auto& values = test.Table.Variable(test.Number(read[static_cast<std::size_t>(k)])).Values;
      for (const auto& [number, value] : ColumnByCase(data, data.TimeVariableColumn + k)) {
        EXPECT_EQ(value, values[static_cast<std::size_t>(number) - 1]) << read[static_cast<std::size_t>(k)];
      }
    }
  }
}

TEST(ReadCase, WritesEveryColumnOfARowWithExpressions) {
  std::vector<TrialCase> cases = SixCases();
  cases[4].z = kMissingCode;
  TestAnalysis test(TrialColumns(cases));
  test.Covariates({"x"}).Time({"time"}).Status("status").Strata("g", {1, 2}).Weights("w");
  test.Settings().InputType = InputTypes::TimeDependent;
  test.Settings().TimeExpressionVariables = {test.Number("z"), test.Number("id")};
  test.Design({{"late", "TIME_EXPRESSION1"}, {"x*late", "v1*TIME_EXPRESSION1"}});
  const CCoxData& data = ReadData(test);
  std::vector<std::vector<double>> rows;
  for (int row = 1; row <= data.CaseTable.RowCount(); ++row) {
    const double* cells = data.CaseTable.GetRow(row);
    rows.emplace_back(cells, cells + data.CaseTable.ColumnCount());
  }
  //  late x*late time stratum weight status case z id
  const std::vector<std::vector<double>> expected = {{1, 1, 30, 1, 1.5, 1, 1, 100, 90},
                                                     {1, 3, 20, 2, 0.5, 1, 3, 300, 90},
                                                     {1, 2, 20, 2, 2.5, 0, 2, 200, 80},
                                                     {1, 6, 50, 2, 4.5, 1, 6, 600, 80}};
  EXPECT_EQ(rows, expected);
  EXPECT_EQ(data.TimeVariableColumn, 7);
  EXPECT_EQ(data.Excluded.Of(Exclusion::Expression), 1);
}

TEST(ReadCase, WithoutVariablesOfExpressionsThereAreNoColumnsForThem) {
  TestAnalysis test(TrialColumns(SixCases()));
  test.Covariates({"x"}).Time({"time"}).Status("status").DefaultDesign();
  test.Settings().InputType = InputTypes::TimeDependent;
  const CCoxData& data = ReadData(test);
  EXPECT_EQ(data.TimeVariableCount, 0U);
  EXPECT_EQ(data.TimeVariableColumn, -1);
  EXPECT_EQ(data.CaseTable.ColumnCount(), 5);
}

TEST(ReadCase, WritesEveryColumnOfARowOfIntervals) {
  TestAnalysis test(TrialColumns(SixCases()));
  test.Covariates({"x"}).Factor("f", {1, 2}).Status("status").Interval("entry", "time").DefaultDesign();
  test.Strata("g", {1, 2}).Weights("w");
  test.Settings().Coding = Codings::Reference;
  test.Settings().SubjectVariable = test.Number("id");
  test.Settings().EntryTimeVariable = test.Number("z");  // has no column beside those of the interval
  const CCoxData& data = ReadData(test);
  std::vector<std::vector<double>> rows;
  for (int row = 1; row <= data.CaseTable.RowCount(); ++row) {
    const double* cells = data.CaseTable.GetRow(row);
    rows.emplace_back(cells, cells + data.CaseTable.ColumnCount());
  }
  //  x  f  start stop stratum subject weight status case
  const std::vector<std::vector<double>> expected = {{1, 1, 3, 30, 1, 0, 1.5, 1, 1},
                                                     {5, 1, 4, 40, 1, 2, 3.5, 1, 5},
                                                     {3, 1, 1, 20, 2, 0, 0.5, 1, 3},
                                                     {2, 0, 2, 20, 2, 1, 2.5, 0, 2},
                                                     {6, 0, 5, 50, 2, 1, 4.5, 1, 6}};
  EXPECT_EQ(rows, expected);
  EXPECT_EQ(data.EntryTimeColumn, -1);
}

TEST(ReadCase, WritesBothEndsOfAnInterval) {
  TestAnalysis test(TrialColumns(SixCases()));
  test.Covariates({"x"}).Status("status").Interval("entry", "time").DefaultDesign();
  const CCoxData& data = ReadData(test);
  EXPECT_EQ(ColumnByCase(data, data.StartColumn), (std::map<int, double>{{1, 3}, {2, 2}, {3, 1}, {5, 4}, {6, 5}}));
  EXPECT_EQ(ColumnByCase(data, data.StopColumn), (std::map<int, double>{{1, 30}, {2, 20}, {3, 20}, {5, 40}, {6, 50}}));
}

TEST(ReadCase, WithoutWeightingEveryWeightIsOne) {
  TestAnalysis test(TrialColumns(SixCases()));
  test.Covariates({"x"}).Time({"time"}).Status("status").DefaultDesign();
  const CCoxData& data = ReadData(test);
  for (const auto& [number, weight] : ColumnByCase(data, data.WeightColumn))
    EXPECT_EQ(weight, 1.0) << "case " << number;
}

TEST(ReadCase, CountsStrataByStatusWithoutWeights) {
  TestAnalysis test(TrialColumns(SixCases()));
  test.Covariates({"x"}).Time({"time"}).Status("status").Strata("g", {1, 2}).Weights("w").DefaultDesign();
  const CCoxData& data = ReadData(test);
  using Counts = std::map<double, double>;
  EXPECT_EQ(data.CasesByStratum, (Counts{{1, 2}, {2, 3}}));
  EXPECT_EQ(data.CompleteByStratum, (Counts{{1, 2}, {2, 2}}));
  EXPECT_EQ(data.CensoredByStratum, (Counts{{2, 1}}));
}

// A value that rounds to a selected code is kept as it is, and makes a stratum of its own.
TEST(ReadCase, AStratumKeepsItsUnroundedValue) {
  std::vector<TrialCase> cases = GoodCases();
  cases.push_back({.g = 1.25});
  TestAnalysis test(TrialColumns(cases));
  test.Covariates({"x"}).Time({"time"}).Status("status").Strata("g", {1, 2}).DefaultDesign();
  const CCoxData& data = ReadData(test);
  EXPECT_EQ(data.CasesByStratum, (std::map<double, double>{{1, 2}, {1.25, 1}, {2, 2}}));
  EXPECT_EQ(ColumnByCase(data, data.StratumColumn).at(5), 1.25);
}

TEST(ReadCase, GathersWeightedMeansOfTheRawCovariates) {
  TestAnalysis test(TrialColumns(SixCases()));
  test.Covariates({"x", "z"}).Time({"time"}).Status("status").Weights("w").DefaultDesign();
  test.Design({{"x*z", "v1*v9"}});  // the means are of the covariates whatever the design is
  const CCoxData& data = ReadData(test);
  // weights 1.5 2.5 0.5 3.5 4.5, x 1 2 3 5 6, z 100 200 300 500 600
  EXPECT_EQ(data.CovariateWeights, std::vector<double>(2, 12.5));
  EXPECT_DOUBLE_EQ(data.CovariateMeans[0], 52.5 / 12.5);
  EXPECT_DOUBLE_EQ(data.CovariateMeans[1], 5250.0 / 12.5);
}

TEST(ReadCase, GathersTheWeightOfEachFactorValue) {
  std::vector<TrialCase> cases = SixCases();
  cases[5].f = std::nextafter(2.0, 3.0);  // the same code, but a value of its own
  TestAnalysis test(TrialColumns(cases));
  test.Covariates({"x"}).Factor("f", {1, 2}).Time({"time"}).Status("status").Weights("w").DefaultDesign();
  const CCoxData& data = ReadData(test);
  EXPECT_EQ(data.FactorLevelWeights[0],
            (std::map<double, double>{{1, 5.5}, {2, 2.5}, {std::nextafter(2.0, 3.0), 4.5}}));
}

}  // namespace
}  // namespace orv
