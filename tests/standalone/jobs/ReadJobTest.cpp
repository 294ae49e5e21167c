#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "standalone/jobs/ReadJob.h"
#include "standalone/tables/TableError.h"
#include "tests/standalone/jobs/Jobs.h"

namespace orv {
namespace {

using testing::JobOf;
using testing::kLeastJob;
using Texts = std::vector<std::string>;

// What a job says beyond the least, as a change to the definition of the least.
struct Case {
  const char* What;
  const char* Text;  // behind the least job
  std::function<void(AnalysisDefinition&)> Change;
};

TEST(ReadJob, TheLeastJobIsTheUsualAnalysis) {
  const Job job = JobOf(kLeastJob);
  EXPECT_EQ(job.Table, "trial.csv");
  EXPECT_EQ(job.Definition.Time, "time");
  EXPECT_EQ(job.Definition.Status, "status");
  EXPECT_EQ(job.Definition.Ties, "breslow");
  EXPECT_EQ(job.Definition.Coding, "sigma");
  EXPECT_EQ(job.Definition.Converge, "gradient");
  EXPECT_EQ(job.Definition.Select, "all");
  EXPECT_EQ(job.Definition.MaxIterations, 50);
  EXPECT_EQ(job.Definition.ToleranceExponent, 8);
  EXPECT_EQ(job.Results.Results, DefaultShowNames());
  EXPECT_EQ(job.Results.Confidence, 0.95);
  EXPECT_FALSE(job.Results.ShowsAll);
  EXPECT_TRUE(job.Outputs.empty());
  EXPECT_FALSE(job.Quiet);
}

TEST(ReadJob, KeysOfTheAnalysisAreItsOptions) {
  const Case cases[] = {
      {"codes as numbers", "CodeForCompleteResponses = 2\nCodeForCensoredResponses = 1.5\n",
       [](auto& d) { d.EventCode = "2", d.CensoredCode = "1.5"; }},
      {"codes as labels", "CodeForCompleteResponses = \"died\"\nCodeForCensoredResponses = \"alive, well\"\n",
       [](auto& d) { d.EventCode = "died", d.CensoredCode = "alive, well"; }},
      {"predictors", "Variables.Covariates = [\"age\", \"#3\"]\nVariables.Factors = \"arm\"\n",
       [](auto& d) {
         d.Covariates = {"age", "#3"}, d.Factors = {"arm"};
       }},
      {"codes of factors", "FactorCodes = { site = [1, \"Bonn, Beuel\"], arm = 2 }\n",
       [](auto& d) {
         d.FactorCodes = {"site=1,\"Bonn, Beuel\"", "arm=2"};
       }},
      {"names that need quotes", "FactorCodes.\"a=b\" = [1]\nReferenceCategory = { \"ph.ecog\" = \"a\\\"b\" }\n",
       [](auto& d) { d.FactorCodes = {"\"a=b\"=1"}, d.ReferenceCodes = {"ph.ecog=a\"b"}; }},
      {"effects", "DesignEffects = [\" age\", \"age*arm\", \"clinic(region)\"]\n",
       [](auto& d) { d.Effects = "age, age*arm, clinic(region)"; }},
      {"strata", "Variables.Strata = \"sex\"\nStrataCodes = [1, \"m\"]\n",
       [](auto& d) {
         d.Strata = "sex", d.StrataCodes = {"1", "m"};
       }},
      {"time-dependent covariates",
       "TimeDependentCovariateNames = [\"late\", \"slow\"]\n"
       "TimeDependentCovariateExpressions = [\"age*(T_>=30)\", \" age*T_\"]\n",
       [](auto& d) {
         d.TimeCovariates = {"late=age*(T_>=30)", "slow=age*T_"};
       }},
      {"choices", "UseEfronLikelihood = true\nUseReferenceCoding = true\nUseAbsoluteLikelihoodConvergence = true\n",
       [](auto& d) { d.Ties = "efron", d.Coding = "reference", d.Converge = "absolute"; }},
      {"false chooses nothing", "UseEfronLikelihood = false\nUseBreslowLikelihood = false\n", [](auto&) {}},
      {"selection", "ModelBuildingStepwiseSelection = true\npToEnter = 0.1\npToRemove = 1\nNToForce = 2\n",
       [](auto& d) { d.Select = "stepwise", d.PEnter = 0.1, d.PRemove = 1.0, d.Force = 2; }},
      {"robust variance", "UseRobustVariance = true\nSubjectID = \"id\"\n",
       [](auto& d) { d.Robust = true, d.Subject = "id"; }},
      {"iterations", "NumberOfIterations = 1000\nConvergenceCriterion = 12\n",
       [](auto& d) { d.MaxIterations = 1000, d.ToleranceExponent = 12; }},
      {"start values", "UseStartValues = true\nEditParameterStatusValues = { Values = [0.5, -1], Fixed = [2] }\n",
       [](auto& d) {
         d.StartValues = {0.5, -1.0}, d.FixedCoefficients = {2};
       }},
      {"start values are used when they are given", "EditParameterStatusValues.Values = 0.5\n",
       [](auto& d) { d.StartValues = {0.5}; }},
      {"start values from a file",
       "DataFileThatContainsStartvaluesForParameter = \"s.orv\"\nEditParameterStatusValues = { Fixed = 1 }\n",
       [](auto& d) { d.StartValuesFile = "s.orv", d.FixedCoefficients = {1}; }},
      {"the host", "[Host]\nCaseWeights = \"w\"\nCaseSelection = \"age > 5 and arm = 'x'\"\nEntryTime = \"in\"\n",
       [](auto& d) { d.Weights = "w", d.Where = "age > 5 and arm = 'x'", d.Entry = "in"; }},
      {"the input type that the times have", "InputTypeSurvivalTime = true\nInputTypeCountingProcess = false\n",
       [](auto&) {}},
  };
  for (const Case& c : cases) {
    AnalysisDefinition expected = JobOf(kLeastJob).Definition;
    c.Change(expected);
    EXPECT_EQ(JobOf(kLeastJob + c.Text).Definition, expected) << c.What;
  }
}

TEST(ReadJob, TimesHaveThreeForms) {
  const auto timesOf = [](const std::string& times) {
    return JobOf("Table = \"t.csv\"\nCoxPHStartup.Variables.CensoringIndicator = \"s\"\n" + times).Definition;
  };
  const std::string key = "CoxPHStartup.Variables.SurvivalTimes = ";
  EXPECT_EQ(timesOf(key + "[\"t\"]").Time, "t");
  EXPECT_EQ(timesOf(key + "[\"a\", \"b\"]").Dates, (Texts{"a", "b"}));
  EXPECT_EQ(timesOf(key + "[\"a\", \"b\", \"c\", \"d\", \"e\", \"f\"]").DateParts.size(), 6u);
  const AnalysisDefinition intervals =
      timesOf("CoxPHStartup.Variables.Stop = \"b\"\nCoxPHStartup.Variables.Start = \"a\"\n");
  EXPECT_EQ(intervals.Interval, (Texts{"a", "b"}));
}

TEST(ReadJob, OutputsAndQuietAreTheHosts) {
  const Job job = JobOf(kLeastJob + "[Host]\nOutputFiles = [\"a.html\", \"t/\"]\nFormat = \"json\"\nQuiet = true\n");
  EXPECT_EQ(job.Outputs, (Texts{"a.html", "t/"}));
  EXPECT_EQ(job.Format, "json");
  EXPECT_TRUE(job.Quiet);
}

TEST(ReadJob, AFileThatCannotBeReadIsNoWrongJob) {
  EXPECT_THROW(ReadJobFile("no-such-job.toml"), TableError);
  EXPECT_THROW(ReadJobFile("."), TableError);
  // Without an end.
  EXPECT_THROW(ReadJobFile("/dev/zero"), TableError);
}

}  // namespace
}  // namespace orv
