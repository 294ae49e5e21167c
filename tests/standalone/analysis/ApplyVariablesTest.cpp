// The variables of a definition: their roles, and what a case has to hold.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "standalone/analysis/Definitions.h"

namespace orv::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr const char* kDated =
    "begun,ended,bm,bd,by,em,ed,ey,died,dose\n"
    "2020-01-10,2020-03-01,1,10,2020,3,1,2020,1,2.5\n"
    "2020-01-31,2021-01-31,1,31,2020,1,31,2021,0,1\n"
    "2020-02-29,2020-04-15,2,29,2020,4,15,2020,1,3\n";

AnalysisDefinition Dated() {
  AnalysisDefinition definition;
  definition.Dates = {"begun", "ended"};
  definition.Status = "died";
  return definition;
}

AnalysisDefinition InDateParts() {
  AnalysisDefinition definition;
  definition.DateParts = {"bm", "bd", "by", "em", "ed", "ey"};
  definition.Status = "died";
  return definition;
}

// The survival times of the kept cases, by time.
std::vector<double> TimesOf(Applied& applied) {
  EXPECT_EQ(applied.Run(), 0);
  CCoxData& data = *applied.Analysis.m_pCoxData;
  std::vector<double> times;
  for (int row = 1; row <= static_cast<int>(data.CaseCount); ++row) {
    times.push_back(data.CaseTable.GetRow(row, CaseTable::Access::Read)[data.SurvivalColumn]);
  }
  return times;
}

TEST(ApplyDefinition, GivesEveryVariableItsRole) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age"};
  definition.Factors = {"arm", "#5"};
  const Applied applied(definition);
  const CoxSettings& s = applied.Settings();
  EXPECT_EQ(s.SurvivalVariableCount, 1);
  EXPECT_EQ(s.SurvivalVariables[0], 1);
  EXPECT_EQ(s.CensorVariable, 2);
  EXPECT_EQ(s.CensorVariableCount, 1);
  EXPECT_THAT(s.CovariateVariables, ElementsAre(3));
  EXPECT_EQ(s.CovariateCount, 1);
  EXPECT_THAT(s.FactorVariables, ElementsAre(4, 5));
  EXPECT_EQ(s.FactorCount, 2);
  EXPECT_FALSE(s.HasStrata());
  EXPECT_EQ(s.EntryTimeVariable, 0);
  EXPECT_FALSE(applied.Result.Refused);
}

TEST(ApplyDefinition, TakesStrataWeightsAndEntry) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Strata = "site";
  definition.Weights = "age";
  Applied applied(definition);
  EXPECT_EQ(applied.Settings().StrataVariable, 5);
  EXPECT_EQ(applied.Settings().StrataVariableCount, 1);
  HostCommons commons;
  applied.Host.InitCommons(commons);
  EXPECT_TRUE(commons.Weights->On);
  EXPECT_EQ(commons.Weights->Variable, 3);

  AnalysisDefinition entry = LeastDefinition();
  entry.Entry = "age";
  const Applied withEntry(entry);
  EXPECT_EQ(withEntry.Settings().EntryTimeVariable, 3);
  EXPECT_THAT(
      withEntry.Result.Notes,
      Contains("--entry: entry times have no effect on risk sets with this form of survival time; for late entry use "
               "--interval ENTRY TIME. Cases without one are left out."));
}

TEST(ApplyDefinition, TakesTheRobustVarianceAndItsSubjects) {
  AnalysisDefinition definition = LeastDefinition();
  EXPECT_FALSE(Applied(definition).Settings().UseRobustVariance);
  definition.Covariates = {"age"};
  definition.Robust = true;
  const Applied alone(definition);
  EXPECT_TRUE(alone.Settings().UseRobustVariance);
  EXPECT_EQ(alone.Settings().SubjectVariableCount, 0) << "each case is a subject of its own";
  EXPECT_THAT(alone.Result.Notes, Not(Contains(HasSubstr("--subject"))));
  definition.Subject = "site";
  const Applied withSubjects(definition);
  EXPECT_EQ(withSubjects.Settings().SubjectVariable, 5);
  EXPECT_EQ(withSubjects.Settings().SubjectVariableCount, 1);
  EXPECT_FALSE(withSubjects.Result.Refused);
  EXPECT_THAT(withSubjects.Result.Notes, Not(Contains(HasSubstr("--subject"))));
}

TEST(ApplyDefinition, TellsThatSubjectsAloneDoNothing) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Subject = "site";
  const Applied applied(definition);
  EXPECT_FALSE(applied.Settings().UseRobustVariance);
  EXPECT_THAT(applied.Result.Notes, Contains("--subject: subjects count for the robust variance only. Add --robust."));
}

TEST(ApplyDefinition, RefusesVariablesThatCannotHaveTheirRole) {
  struct {
    const char* what;
    std::function<void(AnalysisDefinition&)> change;
    const char* message;
  } const cases[] = {
      {"unknown, but close", [](auto& d) { d.Covariates = {"agee"}; },
       "--covariates: no variable \"agee\" in trial.csv. Closest: \"age\"."},
      {"unknown", [](auto& d) { d.Strata = "hospital"; },
       "--strata: no variable \"hospital\" in trial.csv. It has time, status, age, arm, site."},
      {"a number beyond the last variable", [](auto& d) { d.Factors = {"#6"}; },
       "--factors: no variable \"#6\" in trial.csv. It has time, status, age, arm, site."},
      {"texts as covariate", [](auto& d) { d.Covariates = {"arm"}; },
       "--covariates: \"arm\" holds texts. A variable with texts belongs to --factors."},
      {"texts as time", [](auto& d) { d.Time = "arm"; }, "--time: \"arm\" holds texts. Survival times are numbers."},
      {"texts as weights", [](auto& d) { d.Weights = "arm"; },
       "--weights: \"arm\" holds texts. Weights are positive numbers."},
      {"texts as entry time", [](auto& d) { d.Entry = "arm"; },
       "--entry: \"arm\" holds texts. Entry times are numbers."},
      {"two roles", [](auto& d) { d.Covariates = {"time"}; },
       "--covariates: \"time\" is already used by --time. A variable has one role."},
      {"two roles, once by its number",
       [](auto& d) {
         d.Covariates = {"age"};
         d.Strata = "#3";
       },
       "--strata: \"age\" is already used by --covariates. A variable has one role."},
      {"a predictor as subject",
       [](auto& d) {
         d.Covariates = {"age"};
         d.Robust = true;
         d.Subject = "age";
       },
       "--subject: \"age\" is already used by --covariates. A variable has one role."},
      {"unknown subject",
       [](auto& d) {
         d.Robust = true;
         d.Subject = "sit";
       },
       "--subject: no variable \"sit\" in trial.csv. Closest: \"site\"."},
      {"robust variance with time covariates",
       [](auto& d) {
         d.Covariates = {"age"};
         d.TimeCovariates = {"late=age*T_"};
         d.Robust = true;
       },
       "--robust and --subject are not offered with --time-covariate."},
      {"subjects with time covariates",
       [](auto& d) {
         d.Covariates = {"age"};
         d.TimeCovariates = {"late=age*T_"};
         d.Subject = "site";
       },
       "--robust and --subject are not offered with --time-covariate."},
      {"twice in one role",
       [](auto& d) {
         d.Factors = {"arm", "#4"};
       },
       "--factors: \"arm\" is named twice."},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = LeastDefinition();
    c.change(definition);
    EXPECT_EQ(RefusalOf(definition), c.message) << c.what;
  }
}

TEST(ApplyDefinition, ListsTheFirstVariablesOfAWideTable) {
  AnalysisDefinition definition;
  definition.Time = "months";
  definition.Status = "x2";
  EXPECT_EQ(RefusalOf(definition, "x1,x2,x3,x4,x5,x6,x7,x8,x9\n1,2,3,4,5,6,7,8,9\n"),
            "--time: no variable \"months\" in trial.csv. It has x1, x2, x3, x4, x5, x6, x7, x8, ... (9 in all).");
}

TEST(ApplyDefinition, ChecksTheDefinitionItself) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Ties = "exact";
  EXPECT_EQ(RefusalOf(definition), "--ties exact: use breslow, efron or discrete.");
}

TEST(ApplyDefinition, DatesGiveDays) {
  Applied applied(Dated(), kDated);
  EXPECT_THAT(applied.Settings().SurvivalVariables, ElementsAre(1, 2, 0, 0, 0, 0));
  EXPECT_EQ(applied.Settings().SurvivalVariableCount, 2);
  EXPECT_THAT(TimesOf(applied), ElementsAre(46, 51, 366));
}

TEST(ApplyDefinition, PartsOfDatesGiveTheSameDays) {
  Applied applied(InDateParts(), kDated);
  EXPECT_THAT(applied.Settings().SurvivalVariables, ElementsAre(3, 4, 5, 6, 7, 8));
  EXPECT_EQ(applied.Settings().SurvivalVariableCount, 6);
  EXPECT_THAT(TimesOf(applied), ElementsAre(46, 51, 366));
}

TEST(ApplyDefinition, DatesHaveToBeDatesOrNumbers) {
  AnalysisDefinition time = Dated();
  time.Dates.clear();
  time.Time = "ended";
  EXPECT_EQ(RefusalOf(time, kDated),
            "--time: \"ended\" holds dates. Use --dates START END, and the survival time is counted in days.");
  EXPECT_EQ(RefusalOf(Dated(), "begun,ended,died\n2020-01-01,1 March,1\n2020-01-01,2 March,0\n"),
            "--dates: \"ended\" holds texts. Write all its dates as 2024-03-31.");
}

TEST(ApplyDefinition, ADateIsNoPartnerOfANumber) {
  AnalysisDefinition definition = Dated();
  definition.Dates = {"begun", "ed"};
  EXPECT_EQ(RefusalOf(definition, kDated),
            "--dates: \"begun\" holds dates and \"ed\" numbers. Both must be dates, or both numbers of days.");
  definition.Dates = {"bd", "ended"};
  EXPECT_EQ(RefusalOf(definition, kDated),
            "--dates: \"ended\" holds dates and \"bd\" numbers. Both must be dates, or both numbers of days.");
  definition.Dates = {"bd", "ey"};
  EXPECT_THAT(Applied(definition, kDated).Settings().SurvivalVariables, ElementsAre(4, 8, 0, 0, 0, 0));
}

TEST(ApplyDefinition, TimesInSeveralVariablesHaveToBeComplete) {
  struct {
    const char* what;
    AnalysisDefinition definition;
    const char* incompleteCase;
    std::vector<int> required;
    std::vector<int> rejected;
  } const cases[] = {
      {"no end", Dated(), "2020-06-01,,6,1,2020,7,1,2020,1,1\n", {2}, {1}},
      {"no day of the start",
       InDateParts(),
       "2020-06-01,2020-07-01,6,,2020,7,1,2020,1,1\n",
       {4, 5, 6, 7, 8},
       {1, 0, 0, 0, 0}},
      {"no year of the end",
       InDateParts(),
       "2020-06-01,2020-07-01,6,1,2020,7,1,,1,1\n",
       {4, 5, 6, 7, 8},
       {0, 0, 0, 0, 1}},
  };
  for (const auto& c : cases) {
    Applied applied(c.definition, std::string(kDated) + c.incompleteCase);
    EXPECT_EQ(applied.Host.Required(), c.required) << c.what;
    EXPECT_THAT(TimesOf(applied), ElementsAre(46, 51, 366)) << c.what;
    EXPECT_EQ(applied.Host.RejectedAsMissing(), c.rejected) << c.what;
  }
}

TEST(ApplyDefinition, AMissingFirstDateIsLeftOutByTheModuleItself) {
  Applied applied(Dated(), std::string(kDated) + ",2020-07-01,6,1,2020,7,1,2020,1,1\n");
  EXPECT_THAT(TimesOf(applied), ElementsAre(46, 51, 366));
  EXPECT_EQ(applied.Analysis.m_pCoxData->Excluded.Of(Exclusion::Missing), 1);
  EXPECT_THAT(applied.Host.RejectedAsMissing(), ElementsAre(0));
}

TEST(ApplyDefinition, OneTimeRequiresNothingMore) {
  const Applied applied(LeastDefinition());
  EXPECT_THAT(applied.Host.Required(), IsEmpty());
}

TEST(ApplyDefinition, TooManyPredictorsAreRefusedByTheModule) {
  std::string names = "time,status";
  std::string first = "5,1";
  std::string second = "6,0";
  AnalysisDefinition definition = LeastDefinition();
  for (int k = 1; k <= 2012; ++k) {
    definition.Covariates.push_back(std::string("gene").append(std::to_string(k)));
    names += "," + definition.Covariates.back();
    first += ",1";
    second += ",2";
  }
  const Applied applied(definition, names + "\n" + first + "\n" + second + "\n");
  EXPECT_TRUE(applied.Result.Refused);
  EXPECT_THAT(applied.Host.Messages(), ElementsAre("Too many variables have been selected."));
}

}  // namespace
}  // namespace orv::testing
