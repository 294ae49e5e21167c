#include <gtest/gtest.h>

#include <functional>

#include "standalone/analysis/CheckDefinition.h"

namespace orv {
namespace {

AnalysisDefinition Least() {
  AnalysisDefinition definition;
  definition.Time = "time";
  definition.Status = "status";
  return definition;
}

TEST(CheckDefinition, TakesEveryFormOfSurvivalTime) {
  EXPECT_NO_THROW(CheckDefinition(Least()));
  AnalysisDefinition dates = Least();
  dates.Time.clear();
  dates.Dates = {"begun", "ended"};
  EXPECT_NO_THROW(CheckDefinition(dates));
  AnalysisDefinition parts = Least();
  parts.Time.clear();
  parts.DateParts = {"a", "b", "c", "d", "e", "f"};
  EXPECT_NO_THROW(CheckDefinition(parts));
  AnalysisDefinition interval = Least();
  interval.Time.clear();
  interval.Interval = {"from", "to"};
  EXPECT_NO_THROW(CheckDefinition(interval));
  AnalysisDefinition timeDependent = Least();
  timeDependent.TimeCovariates = {"late=T_", "early=age/T_"};
  timeDependent.Ties = "efron";
  EXPECT_NO_THROW(CheckDefinition(timeDependent));
}

TEST(CheckDefinition, TakesEverythingElseWellFormed) {
  AnalysisDefinition definition = Least();
  definition.EventCode = "dead";
  definition.CensoredCode = "alive";
  definition.FactorCodes = {"arm=1,2", "site=Bonn"};
  definition.ReferenceCodes = {"arm=1"};
  definition.Effects = "age, arm*age, site(arm)";
  definition.Coding = "reference";
  definition.Ties = "efron";
  definition.Converge = "absolute";
  definition.Strata = "sex";
  definition.StrataCodes = {"1", "2"};
  definition.StartValues = {0.0};
  definition.FixedCoefficients = {1};
  EXPECT_NO_THROW(CheckDefinition(definition));
}

TEST(CheckDefinition, TakesEveryKindOfModelBuilding) {
  struct {
    const char* select;
    bool enters;
    bool removes;
    bool forces;
  } const cases[] = {{"", false, false, false},       {"all", false, false, false},   {"forward", true, false, true},
                     {"backward", false, true, true}, {"stepwise", true, true, true}, {"best", false, false, true}};
  for (const auto& c : cases) {
    AnalysisDefinition definition = Least();
    definition.Covariates = {"age"};
    definition.Select = c.select;
    EXPECT_NO_THROW(CheckDefinition(definition)) << c.select;
    if (c.enters) definition.PEnter = 0.1;
    if (c.removes) definition.PRemove = 0.1;
    if (c.forces) definition.Force = 1;
    EXPECT_NO_THROW(CheckDefinition(definition)) << c.select;
  }
}

TEST(CheckDefinition, RefusesWhatIsWrongWithoutATable) {
  const std::string noTime =
      "--time is missing: name the variable with the survival times, or use --dates, --date-parts or --interval.";
  struct {
    const char* what;
    std::function<void(AnalysisDefinition&)> change;
    std::string message;
  } const cases[] = {
      {"no time", [](auto& d) { d.Time.clear(); }, noTime},
      {"two forms of time",
       [](auto& d) {
         d.Dates = {"begun", "ended"};
       },
       "--time and --dates both define the survival time: give one of them."},
      {"two other forms of time",
       [](auto& d) {
         d.Time.clear();
         d.Dates = {"begun", "ended"};
         d.DateParts = {"a", "b", "c", "d", "e", "f"};
       },
       "--dates and --date-parts both define the survival time: give one of them."},
      {"one date",
       [](auto& d) {
         d.Time.clear();
         d.Dates = {"begun"};
       },
       "--dates: 2 variables are needed (start and end date), 1 given."},
      {"seven parts of dates",
       [](auto& d) {
         d.Time.clear();
         d.DateParts = {"a", "b", "c", "d", "e", "f", "g"};
       },
       "--date-parts: 6 variables are needed (month, day, year of the start, then of the end), 7 given."},
      {"three ends of an interval",
       [](auto& d) {
         d.Time.clear();
         d.Interval = {"a", "b", "c"};
       },
       "--interval: 2 variables are needed (start and stop), 3 given."},
      {"dates and an interval",
       [](auto& d) {
         d.Time.clear();
         d.Dates = {"begun", "ended"};
         d.Interval = {"from", "to"};
       },
       "--dates and --interval both define the survival time: give one of them."},
      {"an interval with an entry time",
       [](auto& d) {
         d.Time.clear();
         d.Interval = {"from", "to"};
         d.Entry = "begun";
       },
       "--entry goes with survival times; with --interval the start of an interval is its entry."},
      {"an interval with a time-dependent covariate",
       [](auto& d) {
         d.Time.clear();
         d.Interval = {"from", "to"};
         d.TimeCovariates = {"late=T_"};
       },
       "--time-covariate goes with survival times; with --interval a covariate that changes has its values in the rows "
       "of the intervals."},
      {"a malformed time-dependent covariate", [](auto& d) { d.TimeCovariates = {"late"}; },
       "--time-covariate: \"late\" is not of the form NAME=FORMULA, such as late=age*(T_>30)."},
      {"a time-dependent covariate with the discrete rule",
       [](auto& d) {
         d.TimeCovariates = {"late=T_"};
         d.Ties = "discrete";
       },
       "--ties discrete is not offered with --time-covariate: use --ties efron or breslow."},
      {"no status", [](auto& d) { d.Status.clear(); }, "--status is missing: name the censoring indicator."},
      {"an event code alone", [](auto& d) { d.EventCode = "dead"; },
       "--censored is missing: name the code of a censored case."},
      {"a censored code alone", [](auto& d) { d.CensoredCode = "alive"; },
       "--event is missing: name the code of an event."},
      {"codes of no strata", [](auto& d) { d.StrataCodes = {"1"}; },
       "--strata is missing: name the variable that --strata-codes belongs to."},
      {"malformed codes",
       [](auto& d) {
         d.FactorCodes = {"arm=1,2", "site"};
       },
       "--codes: \"site\" is not of the form FACTOR=CODE,CODE."},
      {"a malformed reference", [](auto& d) { d.ReferenceCodes = {"arm"}; },
       "--reference: \"arm\" is not of the form FACTOR=CODE."},
      {"malformed effects", [](auto& d) { d.Effects = "age*"; },
       "--effects: in \"age*\", at the end: expected the name of a covariate or factor."},
      {"a misspelt coding", [](auto& d) { d.Coding = "dummy"; },
       "--coding dummy: use sigma, reference or overparameterized."},
      {"a misspelt rule for ties", [](auto& d) { d.Ties = "exact"; }, "--ties exact: use breslow, efron or discrete."},
      {"a misspelt convergence test", [](auto& d) { d.Converge = "score"; },
       "--converge score: use gradient, parameter, likelihood or absolute."},
      {"coefficients held at nothing", [](auto& d) { d.FixedCoefficients = {1}; },
       "--fix: coefficients are held at their start values, so give these with --start-values."},
      {"a misspelt kind of model building", [](auto& d) { d.Select = "forwards"; },
       "--select forwards: use all, forward, backward, stepwise or best."},
      {"a limit of entry without a selection", [](auto& d) { d.PEnter = 0.1; },
       "--p-enter belongs to --select forward or stepwise."},
      {"a limit of entry without an entry",
       [](auto& d) {
         d.Select = "backward";
         d.PEnter = 0.1;
       },
       "--p-enter belongs to --select forward or stepwise."},
      {"a limit of entry for best subsets",
       [](auto& d) {
         d.Select = "best";
         d.PEnter = 0.1;
       },
       "--p-enter belongs to --select forward or stepwise."},
      {"a limit of removal without a selection",
       [](auto& d) {
         d.Select = "all";
         d.PRemove = 0.1;
       },
       "--p-remove belongs to --select backward or stepwise."},
      {"a limit of removal without a removal",
       [](auto& d) {
         d.Select = "forward";
         d.PRemove = 0.1;
       },
       "--p-remove belongs to --select backward or stepwise."},
      {"forced effects without a selection", [](auto& d) { d.Force = 0; },
       "--force belongs to --select forward, backward, stepwise or best."},
      {"a selection with a time-dependent covariate",
       [](auto& d) {
         d.Select = "stepwise";
         d.TimeCovariates = {"late=T_"};
       },
       "--select is not offered with --time-covariate: score tests of covariates that change with time are not there."},
      {"best subsets with a factor",
       [](auto& d) {
         d.Select = "best";
         d.Factors = {"arm"};
       },
       "--select best compares single columns and is not offered with --factors: use --select forward, backward or "
       "stepwise."},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = Least();
    c.change(definition);
    try {
      CheckDefinition(definition);
      ADD_FAILURE() << "accepted: " << c.what;
    } catch (const DefinitionError& error) {
      EXPECT_EQ(error.what(), c.message) << c.what;
    }
  }
}

}  // namespace
}  // namespace orv
