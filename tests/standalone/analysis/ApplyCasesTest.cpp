// The cases of a definition: intervals, and a condition that selects.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "standalone/analysis/Definitions.h"

namespace orv::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kIntervals =
    "id,from,to,day,died,dose,arm\n"
    "1,0,4,2020-01-01,0,2.5,drug\n"
    "1,4,9,2020-01-05,1,3,drug\n"
    "2,0,6,2020-01-01,1,1,placebo\n"
    "3,2,8,2020-01-03,1,2,drug\n"
    "4,3,12,2020-01-04,0,4,placebo\n";

AnalysisDefinition Intervals() {
  AnalysisDefinition definition;
  definition.Interval = {"from", "to"};
  definition.Status = "died";
  definition.Covariates = {"dose"};
  return definition;
}

// The numbers of the kept cases, ascending.
std::vector<int> KeptCases(Applied& applied) {
  EXPECT_EQ(applied.Run(), 0);
  CCoxData& data = *applied.Analysis.m_pCoxData;
  std::vector<int> numbers;
  for (int row = 1; row <= static_cast<int>(data.ValidCaseCount); ++row) {
    numbers.push_back(static_cast<int>(data.CaseTable.GetRow(row)[data.CaseNumberColumn]));
  }
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

// ---- Intervals ----------------------------------------------------------------------------------------------------

TEST(ApplyIntervals, TakeTheirTwoEnds) {
  Applied applied(Intervals(), kIntervals);
  const CoxSettings& s = applied.Settings();
  EXPECT_EQ(s.InputType, InputTypes::CountingProcess);
  EXPECT_EQ(s.StartVariable, 2);
  EXPECT_EQ(s.StopVariable, 3);
  EXPECT_EQ(s.StartVariableCount, 1);
  EXPECT_EQ(s.StopVariableCount, 1);
  EXPECT_EQ(s.SurvivalVariableCount, 0);
  EXPECT_THAT(applied.Host.Required(), IsEmpty()) << "the module tests both ends itself";
  EXPECT_THAT(applied.Result.Notes, ElementsAre("died: 1 is taken as an event and 0 as censored."));
  EXPECT_THAT(KeptCases(applied), ElementsAre(1, 2, 3, 4, 5));
}

TEST(ApplyIntervals, AreGivenByNumberToo) {
  AnalysisDefinition definition = Intervals();
  definition.Interval = {"#2", "#3"};
  const Applied applied(definition, kIntervals);
  EXPECT_EQ(applied.Settings().StartVariable, 2);
  EXPECT_EQ(applied.Settings().StopVariable, 3);
}

TEST(ApplyIntervals, IncompleteOnesAreLeftOutByTheModule) {
  Applied applied(Intervals(), std::string(kIntervals) + "5,,7,2020-01-01,1,1,drug\n6,1,,2020-01-01,1,1,drug\n");
  EXPECT_THAT(KeptCases(applied), ElementsAre(1, 2, 3, 4, 5));
  EXPECT_EQ(applied.Analysis.m_pCoxData->Excluded.Of(Exclusion::Missing), 2);
}

TEST(ApplyIntervals, AreRefusedWhereTheyDoNotFit) {
  struct {
    const char* What;
    std::function<void(AnalysisDefinition&)> Change;
    const char* Message;
  } const cases[] = {
      {"a start that is a date",
       [](auto& d) {
         d.Interval = {"day", "to"};
       },
       "--interval: \"day\" holds dates. Count the ends of intervals from a common origin, such as days since entry."},
      {"a stop that is a date",
       [](auto& d) {
         d.Interval = {"from", "day"};
       },
       "--interval: \"day\" holds dates. Count the ends of intervals from a common origin, such as days since entry."},
      {"texts",
       [](auto& d) {
         d.Interval = {"from", "arm"};
       },
       "--interval: \"arm\" holds texts. The ends of intervals are numbers."},
      {"one variable twice",
       [](auto& d) {
         d.Interval = {"from", "from"};
       },
       "--interval: \"from\" is named twice."},
      {"an unknown variable",
       [](auto& d) {
         d.Interval = {"form", "to"};
       },
       "--interval: no variable \"form\" in trial.csv. Closest: \"from\"."},
      {"a variable with another role", [](auto& d) { d.Covariates = {"to"}; },
       "--covariates: \"to\" is already used by --interval. A variable has one role."},
      {"one end", [](auto& d) { d.Interval = {"from"}; },
       "--interval: 2 variables are needed (start and stop), 1 given."},
      {"an entry time", [](auto& d) { d.Entry = "id"; },
       "--entry goes with survival times; with --interval the start of an interval is its entry."},
      {"a time-dependent covariate", [](auto& d) { d.TimeCovariates = {"late=T_"}; },
       "--time-covariate goes with survival times; with --interval a covariate that changes has its values in the "
       "rows of the intervals."},
      {"a survival time", [](auto& d) { d.Time = "to"; },
       "--time and --interval both define the survival time: give one of them."},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = Intervals();
    c.Change(definition);
    EXPECT_EQ(RefusalOf(definition, kIntervals), c.Message) << c.What;
  }
}

TEST(ApplyIntervals, TooManyPredictorsAreRefusedByTheModule) {
  std::string names = "from,to,died";
  std::string row = "0,5,1";
  AnalysisDefinition definition = Intervals();
  definition.Covariates.clear();
  for (int k = 1; k <= 2012; ++k) {
    definition.Covariates.push_back(std::string("gene").append(std::to_string(k)));
    names += "," + definition.Covariates.back();
    row += ",1";
  }
  const Applied applied(definition, names + "\n" + row + "\n");
  EXPECT_TRUE(applied.Result.Refused);
  EXPECT_THAT(applied.Host.Messages(), ElementsAre("Too many variables have been selected."));
}

// ---- Selection ----------------------------------------------------------------------------------------------------

TEST(ApplyWhere, SelectsTheCasesOfTheAnalysis) {
  struct {
    const char* Where;
    std::vector<int> Kept;
  } const cases[] = {
      {"", {1, 2, 3, 4, 5}},     {"dose > 1", {1, 2, 4, 5}},        {"arm = 'drug'", {1, 2, 4}},
      {"#1 <= 3", {1, 2, 3, 4}}, {"day < '2020-01-04'", {1, 3, 4}},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = Intervals();
    definition.Where = c.Where;
    Applied applied(definition, kIntervals);
    EXPECT_EQ(KeptCases(applied), c.Kept) << c.Where;
    EXPECT_EQ(applied.Analysis.m_pCoxData->Excluded.Of(Exclusion::Selection), 5 - static_cast<int>(c.Kept.size()))
        << c.Where;
  }
}

TEST(ApplyWhere, IsRefusedWhenItIsNoConditionOrCannotBeComputed) {
  struct {
    const char *Where, *Message;
  } const cases[] = {
      {"dosis > 1", "--where: at character 1: no variable \"dosis\". Closest: \"dose\", \"id\", \"to\"."},
      {"dose >",
       "--where: at character 7: found the end of the formula, expected a number, a name, a function or \"(\"."},
      {"1/(dose-1) > 0",
       "--where: it cannot be computed for case 3: a division by zero, a logarithm or root of a negative number, or a "
       "number beyond the range. if(condition, a, b) computes only the part that is needed."},
      {"dose > 100", "--where: no case meets the condition."},
      {"0", "--where: no case meets the condition."},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = Intervals();
    definition.Where = c.Where;
    EXPECT_EQ(RefusalOf(definition, kIntervals), c.Message) << c.Where;
  }
}

TEST(ApplyWhere, CodesAreThoseOfTheSelectedCases) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Factors = {"arm", "site"};
  definition.Strata = "age";
  definition.Where = "arm <> 'placebo' and site > 1 or time = 5";
  const Applied applied(definition);  // cases 1, 3, 5 and 6
  const CoxSettings& s = applied.Settings();
  EXPECT_THAT(s.FactorCodes, ElementsAre(1, 2, 1, 2, 3)) << "control and drug, then every site";
  EXPECT_THAT(s.FactorCodeCounts, ElementsAre(2, 3));
  EXPECT_THAT(s.ReferenceCodes, ElementsAre(2, 3));
  EXPECT_THAT(s.StrataCodes, ElementsAre(55, 63, 66, 70));
}

TEST(ApplyWhere, CodesOfOtherCasesAreNotThere) {
  const auto with = [](const std::function<void(AnalysisDefinition&)>& change) {
    AnalysisDefinition definition = LeastDefinition();
    definition.Factors = {"arm", "site"};
    definition.Where = "arm <> 'placebo'";
    change(definition);
    return definition;
  };
  EXPECT_EQ(RefusalOf(with([](auto& d) { d.FactorCodes = {"arm=drug,placebo"}; })),
            "--codes: \"arm\" has no value \"placebo\". Its values: control, drug.");
  EXPECT_EQ(RefusalOf(with([](auto& d) { d.ReferenceCodes = {"arm=placebo"}; })),
            "--reference: \"placebo\" is not a selected code of \"arm\". Selected: control, drug.");
  EXPECT_EQ(RefusalOf(with([](auto& d) { d.Where = "status = 1"; })),
            "--status: \"status\" does not hold exactly the values 0 and 1, so say what its codes mean with --event "
            "CODE and --censored CODE. Its values: 1.");
  const Applied single(with([](auto& d) { d.Where = "arm = 'placebo'"; }));
  EXPECT_THAT(single.Result.Notes, ::testing::Contains("--factors: \"arm\" has a single code, placebo."));
}

TEST(ApplyWhere, AFractionalCodeOfAnotherCaseDoesNotMatter) {
  const std::string csv = "time,status,site\n5,1,1.5\n8,0,2\n11,1,1\n12,1,1.5\n15,0,2\n21,1,1\n";
  AnalysisDefinition definition = LeastDefinition();
  definition.Factors = {"site"};
  definition.Where = "site <> 1.5";
  EXPECT_THAT(Applied(definition, csv).Settings().FactorCodes, ElementsAre(1, 2));
  definition.Where = "time > 5";
  EXPECT_EQ(RefusalOf(definition, csv),
            "--factors: \"site\" holds 1.5 (case 4), which is not a whole number. Codes are whole numbers or texts; a "
            "continuous variable belongs to --covariates.");
}

TEST(ApplyWhere, StatusCodesAreTakenFromTheSelectedCases) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Where = "time < 20";
  const std::string csv = "time,status\n5,1\n8,0\n25,2\n";
  const Applied applied(definition, csv);
  EXPECT_THAT(applied.Result.Notes, ElementsAre("status: 1 is taken as an event and 0 as censored."));
}

TEST(ApplyWhere, RequiredValuesAreMissedInSelectedCasesOnly) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age"};
  definition.TimeCovariates = {"late=T_"};
  definition.Where = "age < 65";
  Applied applied(definition, "time,status,age\n5,1,63\n,1,60\n8,0,51\n,1,70\n11,1,55\n12,0,58\n");
  EXPECT_THAT(KeptCases(applied), ElementsAre(1, 3, 5, 6));
  EXPECT_THAT(applied.Host.RejectedAsMissing(), ElementsAre(1));
}

}  // namespace
}  // namespace orv::testing
