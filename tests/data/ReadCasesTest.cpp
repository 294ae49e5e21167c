// The walk over the input table: what it counts, the order it leaves, its messages and its progress display.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "data/TestCases.h"

namespace orv {
namespace {

using testing::BuildData;
using ::testing::ElementsAre;
using testing::ExcludedCount;
using testing::GoodCases;
using ::testing::IsEmpty;
using testing::KeptCases;
using testing::ReadData;
using testing::TestAnalysis;
using testing::TrialCase;
using testing::TrialColumns;

constexpr const char* kNoValidCases = "There are no valid cases.  Please review the data for appropriate values.";
constexpr const char* kNoCompleteCases =
    "Fewer than 1 complete case in the dataset; cannot reliably estimate parameters.";
constexpr const char* kOneStratum =
    "Only 1 strata code was found.  In order to perform a stratified analysis the strata variable must contain more "
    "than 1 code.";

void Options(TestAnalysis& test) {
  test.Covariates({"x"}).Factor("f", {1, 2}).Time({"time"}).Status("status").DefaultDesign();
}

TEST(ReadCases, CountsTheCasesItKeeps) {
  std::vector<TrialCase> cases = GoodCases();
  cases.push_back({.status = 0});
  cases.push_back({.status = 4});
  TestAnalysis test(TrialColumns(cases));
  Options(test);
  CCoxData& data = BuildData(test);
  EXPECT_EQ(data.CaseCount, 6U);
  EXPECT_EQ(data.ReadCases(nullptr), 0);
  EXPECT_EQ(data.ValidCaseCount, 5U);
  EXPECT_EQ(data.CompleteCaseCount, 2U);
  EXPECT_EQ(data.CensoredCaseCount, 3U);
  EXPECT_EQ(data.CaseCount, 5U);
  EXPECT_EQ(data.CaseTable.RowCount(), 5);
  EXPECT_EQ(ExcludedCount(data), 1);
}

TEST(ReadCases, DropsTheMarkOfExcludedCases) {
  TestAnalysis test(TrialColumns(GoodCases()));
  Options(test);
  CCoxData& data = BuildData(test);
  const std::uint32_t before = data.ColumnCount;
  EXPECT_EQ(data.ReadCases(nullptr), 0);
  EXPECT_EQ(data.ColumnCount, before - 1);
  EXPECT_EQ(data.CaseTable.ColumnCount(), static_cast<int>(before) - 1);
}

TEST(ReadCases, LeavesOutWhatTheSelectionConditionsReject) {
  TestAnalysis test(TrialColumns(GoodCases()));
  Options(test);
  test.Host.CaseResults = {{2, 1}, {3, 2}};
  const CCoxData& data = ReadData(test);
  EXPECT_EQ(data.ValidCaseCount, 2U);
  EXPECT_THAT(KeptCases(data), ElementsAre(1, 4));
  EXPECT_EQ(data.Excluded.Of(Exclusion::Selection), 2);
  EXPECT_DOUBLE_EQ(data.CovariateMeans[0], 3.0);
}

TEST(ReadCases, FetchesEveryCaseOnce) {
  TestAnalysis test(TrialColumns(GoodCases()));
  Options(test);
  ReadData(test);
  EXPECT_EQ(test.Host.CaseFetches, 4);
}

// ---- Order --------------------------------------------------------------------------------------------------------

TEST(ReadCases, SortsByStratumThenTimeThenCompleteBeforeCensored) {
  const std::vector<TrialCase> cases = {{.g = 2, .time = 5, .status = 1}, {.g = 1, .time = 7, .status = 0},
                                        {.g = 1, .time = 7, .status = 1}, {.g = 2, .time = 1, .status = 0},
                                        {.g = 1, .time = 3, .status = 0}, {.g = 2, .time = 5, .status = 0},
                                        {.g = 1, .time = 3, .status = 1}, {.g = 2, .time = 0, .status = 1}};
  TestAnalysis stratified(TrialColumns(cases));
  stratified.Covariates({"x"}).Time({"time"}).Status("status").Strata("g", {1, 2}).DefaultDesign();
  EXPECT_THAT(KeptCases(ReadData(stratified)), ElementsAre(7, 5, 3, 2, 8, 4, 1, 6));

  TestAnalysis plain(TrialColumns(cases));
  plain.Covariates({"x"}).Time({"time"}).Status("status").DefaultDesign();
  EXPECT_THAT(KeptCases(ReadData(plain)), ElementsAre(8, 4, 7, 5, 1, 6, 3, 2));
}

TEST(ReadCases, SortsIntervalsByTheirEnd) {
  const std::vector<TrialCase> cases = {{.time = 9, .status = 1, .entry = 1},
                                        {.time = 4, .status = 0, .entry = 3},
                                        {.time = 4, .status = 1, .entry = 2},
                                        {.time = 6, .status = 1, .entry = 0}};
  TestAnalysis test(TrialColumns(cases));
  test.Covariates({"x"}).Status("status").Interval("entry", "time").DefaultDesign();
  EXPECT_THAT(KeptCases(ReadData(test)), ElementsAre(3, 2, 4, 1));
}

TEST(ReadCases, SortsTimeDependentCasesByTheirTime) {
  const std::vector<TrialCase> cases = {
      {.time = 9, .status = 1}, {.time = 4, .status = 0}, {.time = 4, .status = 1}, {.time = 6, .status = 1}};
  TestAnalysis test(TrialColumns(cases));
  test.Covariates({"x"}).Time({"time"}).Status("status").DefaultDesign();
  test.Settings().InputType = InputTypes::TimeDependent;
  test.Settings().TimeExpressionVariables = {test.Number("z")};
  EXPECT_THAT(KeptCases(ReadData(test)), ElementsAre(3, 2, 4, 1));
}

// ---- Messages -----------------------------------------------------------------------------------------------------

// What the host was asked to do, without the moves of the bar.
std::vector<std::string> Shown(const TestAnalysis& test) {
  std::vector<std::string> shown;
  for (const std::string& event : test.Host.Trace) {
    if (event.rfind("move", 0) != 0) shown.push_back(event);
  }
  return shown;
}

TEST(ReadCases, AReadingWithoutTroubleOpensAndClosesItsDisplay) {
  TestAnalysis test(TrialColumns(GoodCases()));
  Options(test);
  ReadData(test);
  EXPECT_THAT(Shown(test), ElementsAre("open 4 Reading data", "show", "lock", "close", "unlock"));
}

TEST(ReadCases, SaysThatNoCaseIsValidWhateverTheReasons) {
  const std::vector<TrialCase> cases = {{.x = kMissingCode}, {.time = -1}, {.status = 4}, {.f = 9}, {.g = 9}, {.w = 0}};
  TestAnalysis test(TrialColumns(cases));
  Options(test);
  test.Strata("g", {1, 2}).Weights("w");
  CCoxData& data = BuildData(test);
  int window = 0;
  EXPECT_EQ(data.ReadCases(&window), 1);
  EXPECT_EQ(ExcludedCount(data), 6);
  EXPECT_THAT(Shown(test), ElementsAre("open 6 Reading data", "show", "lock", "close", "unlock",
                                       std::string("box 0: ") + kNoValidCases));
  EXPECT_EQ(test.Host.BoxParent, &window);
}

TEST(ReadCases, AnInputTableWithoutCasesHasNoValidCase) {
  TestAnalysis test(TrialColumns({}));
  test.Covariates({"x"}).Time({"time"}).Status("status").DefaultDesign();
  EXPECT_EQ(BuildData(test).ReadCases(nullptr), 1);
  EXPECT_THAT(test.Host.Messages(), ElementsAre(kNoValidCases));
}

TEST(ReadCases, SaysThatEveryCaseIsCensored) {
  std::vector<TrialCase> cases = GoodCases();
  for (TrialCase& each : cases) each.status = 0;
  TestAnalysis test(TrialColumns(cases));
  Options(test);
  test.Strata("g", {1, 2});
  CCoxData& data = BuildData(test);
  EXPECT_EQ(data.ReadCases(nullptr), 1);
  EXPECT_THAT(Shown(test), ElementsAre("open 4 Reading data", "show", "lock", "close", "unlock",
                                       std::string("dsplst 0: ") + kNoCompleteCases));
  EXPECT_EQ(data.CaseCount, 4U);
}

TEST(ReadCases, OneCompleteCaseIsEnough) {
  std::vector<TrialCase> cases = GoodCases();
  for (TrialCase& each : cases) each.status = 0;
  cases[2].status = 1;
  TestAnalysis test(TrialColumns(cases));
  Options(test);
  EXPECT_EQ(ReadData(test).CompleteCaseCount, 1U);
}

TEST(ReadCases, NamesTheFirstStratumWithoutCompleteCases) {
  struct {
    const char* What;
    std::vector<TrialCase> Cases;
    std::vector<ValueLabel> Labels;
    const char* Label;
  } const cases[] = {
      {"a code", {{.g = 1, .status = 1}, {.g = 3, .status = 0}, {.g = 2, .status = 1}}, {}, "3"},
      {"the first in ascending order",
       {{.g = 3, .status = 0}, {.g = 2, .status = 0}, {.g = 1, .status = 1}, {.g = 4, .status = 1}},
       {},
       "2"},
      {"a labelled code", {{.g = 1, .status = 1}, {.g = 3, .status = 0}}, {{1, "north"}, {3, "south"}}, "south"},
      {"a code without a label among labels", {{.g = 1, .status = 1}, {.g = 3, .status = 0}}, {{1, "north"}}, "3"},
      {"a value that is rounded", {{.g = 1, .status = 1}, {.g = 3.3, .status = 0}}, {{3, "south"}}, "south"},
  };
  for (const auto& c : cases) {
    std::vector<testing::TestColumn> columns = TrialColumns(c.Cases);
    columns[2].Labels = c.Labels;
    TestAnalysis test(columns);
    test.Covariates({"x"}).Time({"time"}).Status("status").Strata("g", {1, 2, 3, 4}).DefaultDesign();
    EXPECT_EQ(BuildData(test).ReadCases(nullptr), 1) << c.What;
    EXPECT_THAT(Shown(test),
                ElementsAre("open " + std::to_string(c.Cases.size()) + " Reading data", "show", "lock", "close",
                            "unlock", std::string("dsplst 0: Not enough complete cases in strata: ") + c.Label))
        << c.What;
  }
}

// Values that round to one code are strata of their own, but a code with events is not reported.
TEST(ReadCases, AStratumIsLookedForAmongTheCompleteOnesByItsRoundedValue) {
  TestAnalysis test(TrialColumns({{.g = 1, .status = 1}, {.g = 1.25, .status = 0}, {.g = 2, .status = 0}}));
  test.Covariates({"x"}).Time({"time"}).Status("status").Strata("g", {1, 2}).DefaultDesign();
  EXPECT_EQ(BuildData(test).ReadCases(nullptr), 1);
  EXPECT_THAT(test.Host.Messages(), ElementsAre("Not enough complete cases in strata: 2"));
}

TEST(ReadCases, RefusesOneStratumOfTwoSelected) {
  std::vector<TrialCase> cases = GoodCases();
  for (TrialCase& each : cases) each.g = 2;
  TestAnalysis test(TrialColumns(cases));
  Options(test);
  test.Strata("g", {1, 2});
  EXPECT_EQ(BuildData(test).ReadCases(nullptr), 1);
  EXPECT_THAT(Shown(test), ElementsAre("open 4 Reading data", "show", "lock", "close", "unlock",
                                       std::string("dsplst 0: ") + kOneStratum));
}

TEST(ReadCases, RefusesOneStratumLeftByTheExclusions) {
  std::vector<TrialCase> cases = GoodCases();
  cases[2].x = kMissingCode;
  cases[3].x = kMissingCode;
  TestAnalysis test(TrialColumns(cases));
  Options(test);
  test.Strata("g", {1, 2});
  EXPECT_EQ(BuildData(test).ReadCases(nullptr), 1);
  EXPECT_THAT(test.Host.Messages(), ElementsAre(kOneStratum));
}

TEST(ReadCases, ExclusionsAreSilent) {
  std::vector<TrialCase> cases = GoodCases();
  cases.push_back({.x = kMissingCode});
  cases.push_back({.time = -1});
  cases.push_back({.f = 9});
  TestAnalysis test(TrialColumns(cases));
  Options(test);
  ReadData(test);
  EXPECT_THAT(test.Host.Messages(), IsEmpty());
}

// ---- Progress -----------------------------------------------------------------------------------------------------

std::vector<TrialCase> ManyCases(int count) {
  std::vector<TrialCase> cases;
  for (int k = 0; k < count; ++k) {
    cases.push_back(
        {.x = static_cast<double>(k % 7), .f = 1.0 + k % 2, .time = 1.0 + k, .status = k % 3 == 0 ? 0.0 : 1.0});
  }
  return cases;
}

TEST(ReadCases, TouchesItsDisplayAtMostOnceAPercent) {
  for (const int count : {3, 100, 250, 1999}) {
    TestAnalysis test(TrialColumns(ManyCases(count)));
    Options(test);
    ReadData(test);
    ASSERT_EQ(test.Host.Bars.size(), 1U);
    EXPECT_EQ(test.Host.Bars[0].Total, count);
    EXPECT_TRUE(test.Host.Bars[0].Shown);
    EXPECT_FALSE(test.Host.Bars[0].Open);
    EXPECT_LE(test.Host.Bars[0].Positions.size(), 100U) << count << " cases";
    EXPECT_GE(test.Host.Bars[0].Positions.size(), static_cast<std::size_t>(count < 100 ? count : 99)) << count;
  }
}

TEST(ReadCases, CancelEndsTheReadingAtOnceWithoutAMessage) {
  TestAnalysis test(TrialColumns(ManyCases(200)));
  Options(test);
  test.Host.CancelBarAt = 51;
  EXPECT_EQ(BuildData(test).ReadCases(nullptr), 1);
  EXPECT_EQ(test.Host.CaseFetches, 52);  // the bar moves every second case
  EXPECT_THAT(test.Host.Messages(), IsEmpty());
}

// ---- Modal codes --------------------------------------------------------------------------------------------------

TEST(ReadCases, TheModalCodeHasTheLargestWeightAndTiesKeepTheLowerCode) {
  struct {
    const char* What;
    std::vector<double> Codes, Weights;
    double Modal;
  } const cases[] = {
      {"the most frequent", {1, 2, 2, 3}, {1, 1, 1, 1}, 2},
      {"the heaviest", {1, 2, 2, 3}, {1, 1, 1, 5}, 3},
      {"a tie of counts", {3, 2, 2, 3}, {1, 1, 1, 1}, 2},
      {"a tie of weights", {1, 1, 3, 2}, {1, 1, 2, 2}, 1},
      {"a tie up to rounding", {1, 2, 2, 2}, {0.3, 0.1, 0.1, 0.1}, 1},
      {"a tie up to rounding, the other way round", {2, 1, 1, 1}, {0.3, 0.1, 0.1, 0.1}, 1},
      {"one code", {2, 2, 2, 2}, {1, 1, 1, 1}, 2},
  };
  for (const auto& c : cases) {
    std::vector<TrialCase> trial(4);
    for (std::size_t k = 0; k < 4; ++k) {
      trial[k].f = c.Codes[k];
      trial[k].w = c.Weights[k];
    }
    TestAnalysis test(TrialColumns(trial));
    test.Factor("f", {1, 2, 3}).Factor("g", {1, 2}).Time({"time"}).Status("status").Weights("w").DefaultDesign();
    const CCoxData& data = ReadData(test);
    EXPECT_EQ(data.FactorModalCodes[0], c.Modal) << c.What;
    EXPECT_EQ(data.FactorModalCodes[1], 1.0) << c.What;
  }
}

// ---- Small data ---------------------------------------------------------------------------------------------------

TEST(ReadCases, WithOneCaseTheSumsStandAndTheDeviationsAreZero) {
  TestAnalysis test(TrialColumns({{.x = 4}}));
  test.Covariates({"x"}).Time({"time"}).Status("status").DefaultDesign();
  const CCoxData& data = ReadData(test);
  EXPECT_EQ(data.DesignColumns[0].Mean, 4.0);
  EXPECT_EQ(data.DesignColumns[0].Variance, 0.0);
  EXPECT_EQ(data.DesignColumns[0].StdDev, 0.0);
  EXPECT_EQ(data.DesignColumns[0].WeightedStdDev, 0.0);
}

TEST(ReadCases, WithoutPredictorsTheTimesAloneAreRead) {
  TestAnalysis test(TrialColumns(GoodCases()));
  test.Time({"time"}).Status("status");
  const CCoxData& data = ReadData(test);
  EXPECT_EQ(data.ValidCaseCount, 4U);
  EXPECT_EQ(data.CoefficientCount, 0U);
  EXPECT_THAT(KeptCases(data), ElementsAre(3, 1, 2, 4));
}

}  // namespace
}  // namespace orv
