// Time-dependent covariates of a definition: what is stored, how they enter the design, and what is said.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "data/TimeExpressions.h"
#include "standalone/analysis/Definitions.h"

namespace orv::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

using Terms = std::map<std::string, std::string>;

constexpr const char* kStatusNote = "status: 1 is taken as an event and 0 as censored.";

// age is variable 3, arm and site are the factors 4 and 5.
AnalysisDefinition TimeDependent() {
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age"};
  definition.Factors = {"arm", "site"};
  definition.TimeCovariates = {"late=age*(T_>10)", "log time=log(t_)"};
  return definition;
}

TEST(ApplyTimeCovariates, AreEffectsBehindTheOtherPredictors) {
  const Applied applied(TimeDependent());
  const CoxSettings& s = applied.Settings();
  EXPECT_EQ(s.InputType, InputTypes::TimeDependent);
  EXPECT_THAT(s.TimeDependentCovariateNames, ElementsAre("late", "log time"));
  EXPECT_THAT(s.TimeDependentCovariateExpressions, ElementsAre("age*(T_>10)", "log(t_)"));
  EXPECT_THAT(s.DesignEffects, ElementsAre("age", "arm", "site", "late", "log time"));
  EXPECT_EQ(s.EffectSymbols, (Terms{{"age", "v3"},
                                    {"arm", "v4"},
                                    {"site", "v5"},
                                    {"late", "TIME_EXPRESSION1"},
                                    {"log time", "TIME_EXPRESSION2"}}));
  EXPECT_THAT(applied.Result.Notes, ElementsAre(kStatusNote));
}

TEST(ApplyTimeCovariates, LeaveTheOtherInputTypesAlone) {
  const Applied applied(LeastDefinition());
  EXPECT_EQ(applied.Settings().InputType, InputTypes::SurvivalTime);
  EXPECT_THAT(applied.Settings().TimeDependentCovariateNames, IsEmpty());
}

TEST(ApplyTimeCovariates, VariablesStandBeforeExpressionsInATerm) {
  struct {
    const char* Effects;
    std::vector<std::string> Names;
    Terms Symbols;
  } const cases[] = {
      {"late", {"late"}, {{"late", "TIME_EXPRESSION1"}}},
      {"age*late", {"age*late"}, {{"age*late", "v3*TIME_EXPRESSION1"}}},
      {"late*age", {"late*age"}, {{"late*age", "v3*TIME_EXPRESSION1"}}},
      {"log time*arm*late*age, late",
       {"log time*arm*late*age", "late"},
       {{"log time*arm*late*age", "v4*v3*TIME_EXPRESSION2*TIME_EXPRESSION1"}, {"late", "TIME_EXPRESSION1"}}},
      {"\"log time\" * #5, late",
       {"log time*site", "late"},
       {{"log time*site", "v5*TIME_EXPRESSION2"}, {"late", "TIME_EXPRESSION1"}}},
      {"late*late, age", {"late*late", "age"}, {{"late*late", "TIME_EXPRESSION1*TIME_EXPRESSION1"}, {"age", "v3"}}},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = TimeDependent();
    definition.Effects = c.Effects;
    const Applied applied(definition);
    EXPECT_EQ(applied.Settings().DesignEffects, c.Names) << c.Effects;
    EXPECT_EQ(applied.Settings().EffectSymbols, c.Symbols) << c.Effects;
    EXPECT_EQ(applied.Settings().HasNestedEffects, 0) << c.Effects;
  }
}

TEST(ApplyTimeCovariates, OutsideTheDesignAreDroppedWithANote) {
  AnalysisDefinition definition = TimeDependent();
  definition.Effects = "age*log time, age";
  const Applied applied(definition);
  const CoxSettings& s = applied.Settings();
  EXPECT_THAT(s.TimeDependentCovariateNames, ElementsAre("log time"));
  EXPECT_THAT(s.TimeDependentCovariateExpressions, ElementsAre("log(t_)"));
  EXPECT_EQ(s.EffectSymbols.at("age*log time"), "v3*TIME_EXPRESSION1") << "numbered as those that stay";
  EXPECT_THAT(applied.Result.Notes,
              ElementsAre("--effects: \"late\" is in no effect and takes no part in the analysis.", kStatusNote,
                          "--effects: \"arm\" is in no effect and takes no part in the analysis.",
                          "--effects: \"site\" is in no effect and takes no part in the analysis."));
}

TEST(ApplyTimeCovariates, OutsideTheDesignMayEvenBeWrong) {
  AnalysisDefinition definition = TimeDependent();
  definition.TimeCovariates = {"late=T_", "broken=T_*nobody"};
  definition.Effects = "age, late";
  const Applied applied(definition);
  EXPECT_THAT(applied.Settings().TimeDependentCovariateNames, ElementsAre("late"));
}

TEST(ApplyTimeCovariates, ADesignOfThemAloneKeepsTheCovariates) {
  AnalysisDefinition definition = TimeDependent();
  definition.Effects = "late";
  Applied applied(definition);
  EXPECT_THAT(applied.Settings().CovariateVariables, ElementsAre(3)) << "the module needs a predictor";
  EXPECT_EQ(applied.Settings().CovariateCount, 1);
  EXPECT_THAT(applied.Settings().FactorVariables, IsEmpty());
  EXPECT_THAT(applied.Result.Notes, Not(Contains(::testing::HasSubstr("\"age\""))));
  EXPECT_EQ(applied.Run(), 0);
  EXPECT_EQ(applied.Analysis.m_pCoxData->CoefficientCount, 1U);
}

TEST(ApplyTimeCovariates, WithoutAnyOtherPredictorANoteSaysWhatToDo) {
  struct {
    const char* What;
    std::vector<std::string> Factors;
    const char* Effects;
  } const cases[] = {{"no predictor", {}, ""}, {"no predictor, a design", {}, "late"}, {"a factor", {"arm"}, "late"}};
  for (const auto& c : cases) {
    AnalysisDefinition definition = LeastDefinition();
    definition.Factors = c.Factors;
    definition.TimeCovariates = {"late=T_"};
    definition.Effects = c.Effects;
    Applied applied(definition);
    EXPECT_EQ(
        applied.Result.Notes.back(),
        "--time-covariate: the analysis needs a covariate besides (--covariates V); one that is in no effect will "
        "do.")
        << c.What;
    EXPECT_EQ(applied.Run(), 1) << c.What;
    EXPECT_THAT(applied.Host.Messages(),
                ElementsAre("Please review variable selection.  Design was specified, but no predictor variables were "
                            "(covariates or factors) were selected."))
        << c.What;
  }
}

// The module compiles in upper case, where such names and texts are one.
TEST(ApplyTimeCovariates, NamesAndTextsThatDifferByCaseAloneAreRefused) {
  const std::string csv =
      "time,status,age,AGE,dose,Dose,arm,x\n5,1,63,1,1,3,drug,9\n8,0,51,2,2,1,Drug,8\n11,1,70,3,2,2,DRUG,7\n";
  const char* const refused[] = {"age*T_", "dose*T_", "Dose*T_", "(arm = 'drug')*T_", "if(arm = 'Drug', T_, 0)"};
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"x"};
  for (const char* const formula : refused) {
    definition.TimeCovariates = {std::string("late=") + formula};
    EXPECT_EQ(RefusalOf(definition, csv),
              "--time-covariate late: the table has names or texts that differ by case only, which such a formula "
              "cannot tell apart. Write a variable as #3 and a text as the number of its code.")
        << formula;
  }
  const std::pair<const char*, std::int32_t> taken[] = {
      {"AGE*T_", 4}, {"#3*T_", 3}, {"#6*t_", 6}, {"(arm = 'DRUG')*T_", 7}, {"(arm = 3)*T_", 7}, {"X*T_", 8}};
  for (const auto& [formula, variable] : taken) {
    definition.TimeCovariates = {std::string("late=") + formula};
    Applied applied(definition, csv);
    EXPECT_EQ(applied.Analysis.CheckInputsForCorrectness(nullptr), 1) << "no status codes are read yet";
    EXPECT_THAT(applied.Settings().TimeExpressionVariables, ElementsAre(variable)) << formula;
  }
}

TEST(ApplyTimeCovariates, AreRefusedWhereTheyDoNotFit) {
  struct {
    const char* What;
    std::function<void(AnalysisDefinition&)> Change;
    const char* Message;
  } const cases[] = {
      {"the name of a variable", [](auto& d) { d.TimeCovariates = {"site=T_"}; },
       "--time-covariate: the table has a variable \"site\". Give the covariate another name."},
      {"the name of a variable without a role",
       [](auto& d) {
         d.TimeCovariates = {"late=T_", "status=T_"};
       },
       "--time-covariate: the table has a variable \"status\". Give the covariate another name."},
      {"the number of a variable", [](auto& d) { d.TimeCovariates = {"#5=T_"}; },
       "--time-covariate: the table has a variable \"#5\". Give the covariate another name."},
      {"an unknown variable", [](auto& d) { d.TimeCovariates = {"late=agee*T_"}; },
       "--time-covariate late: at character 1: no variable \"agee\". Closest: \"age\", \"time\", \"arm\"."},
      {"a formula that is none",
       [](auto& d) {
         d.TimeCovariates = {"late=T_", "log time=log(t_"};
       },
       "--time-covariate log time: at character 7: found the end of the formula, expected an operator, \",\" or \")\" "
       "for the \"(\" at character 4."},
      {"nesting", [](auto& d) { d.Effects = "age, late(arm)"; },
       "--effects: \"late(arm)\": nesting is not offered with --time-covariate. A product such as a*b has the same "
       "columns."},
      {"nesting of factors", [](auto& d) { d.Effects = "late, arm(site)"; },
       "--effects: \"arm(site)\": nesting is not offered with --time-covariate. A product such as a*b has the same "
       "columns."},
      {"nesting within", [](auto& d) { d.Effects = "arm(late)"; },
       "--effects: \"arm(late)\": nesting is not offered with --time-covariate. A product such as a*b has the same "
       "columns."},
      {"an effect twice", [](auto& d) { d.Effects = "late, age, late"; }, "--effects: \"late\" is named twice."},
      {"no effect of them", [](auto& d) { d.Effects = "age, arm"; },
       "--time-covariate: none of them is in an effect of --effects. Add one to an effect, or leave them out."},
      {"an unknown effect", [](auto& d) { d.Effects = "log time, age, lat"; },
       "--effects: \"lat\" is not among the predictors. Closest: \"late\"."},
      {"the discrete rule", [](auto& d) { d.Ties = "discrete"; },
       "--ties discrete is not offered with --time-covariate: use --ties efron or breslow."},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = TimeDependent();
    c.Change(definition);
    EXPECT_EQ(RefusalOf(definition), c.Message) << c.What;
  }
}

TEST(ApplyTimeCovariates, ANoteSaysWhatStrataDo) {
  AnalysisDefinition definition = TimeDependent();
  definition.Factors = {"arm"};
  definition.Strata = "site";
  const std::string note =
      "--strata: with --time-covariate the strata cut tied groups only, and every risk set runs across all strata. For "
      "strata with baselines of their own, split the cases into intervals and use --interval.";
  EXPECT_THAT(Applied(definition).Result.Notes, Contains(note));
  definition.TimeCovariates.clear();
  EXPECT_THAT(Applied(definition).Result.Notes, Not(Contains(note)));
}

TEST(ApplyTimeCovariates, AFormulaWithoutTheTimeIsRefusedByTheModule) {
  AnalysisDefinition definition = TimeDependent();
  definition.TimeCovariates = {"late=age*2"};
  const Applied applied(definition);
  EXPECT_TRUE(applied.Result.Refused);
  EXPECT_THAT(applied.Host.Messages(),
              ElementsAre("The formula/expression is not valid.  \nThe specified time covariate is not a function of "
                          "time."));
  EXPECT_THAT(applied.Result.Notes, Contains("--time-covariate late: the formula does not read the time, T_."));
}

// The module looks for the two characters only.
TEST(ApplyTimeCovariates, AFormulaThatOnlySeemsToReadTheTimeIsNoted) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age"};
  definition.TimeCovariates = {"heavy=weight_kg>80"};
  const Applied applied(definition, "time,status,age,weight_kg\n5,1,63,80\n8,0,51,90\n11,1,70,70\n");
  EXPECT_FALSE(applied.Result.Refused);
  EXPECT_THAT(applied.Result.Notes, Contains("--time-covariate heavy: the formula does not read the time, T_."));
  EXPECT_THAT(applied.Host.Messages(), IsEmpty());
}

TEST(ApplyTimeCovariates, TooManyVariablesAreCountedForTheMessageOfTheModule) {
  std::string names = "time,status,age";
  std::string first = "5,1,63";
  std::string second = "8,0,51";
  std::string sum = "T_";
  for (int k = 1; k <= 39; ++k) {
    names += ",x" + std::to_string(k);
    first += ",1";
    second += ",2";
    if (k <= 38) sum += "+x" + std::to_string(k);
  }
  const std::string csv = names + "\n" + first + "\n" + second + "\n";
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age"};
  definition.TimeCovariates = {"sum=" + sum, "one=X38*t_"};
  Applied most(definition, csv);
  EXPECT_THAT(most.Result.Notes, ElementsAre(kStatusNote));
  EXPECT_EQ(most.Run(), 0);
  EXPECT_EQ(most.Settings().TimeExpressionVariables.size(), 38U);

  definition.TimeCovariates = {"sum=" + sum, "one=x39*T_"};
  Applied beyond(definition, csv);
  EXPECT_THAT(beyond.Result.Notes,
              ElementsAre("--time-covariate: the formulas read 39 variables; at most 38 are possible.", kStatusNote));
  EXPECT_EQ(beyond.Run(), 1);
  EXPECT_THAT(beyond.Host.Messages(),
              ElementsAre("Maximum number of iterations must be between 1 and 1000.",
                          "Please review the time-dependent covariate expressions for correctness."));
}

TEST(ApplyTimeCovariates, MayReadVariablesOfAnyRoleAndTheirTexts) {
  AnalysisDefinition definition = TimeDependent();
  definition.TimeCovariates = {"late=(ARM = 'drug')*T_ + #5 + Time"};
  definition.Effects = "age, late";
  Applied applied(definition);
  EXPECT_EQ(applied.Run(), 0);
  EXPECT_THAT(applied.Settings().TimeExpressionVariables, ElementsAre(4, 5, 1));
  const double values[] = {2.0, 3.0, 100.0};  // drug is the second text
  int error = -1;
  EXPECT_EQ(EvaluateTimeExpression(applied.Host, applied.Analysis.m_pExpressions.get(), 1, 7.0, values,
                                   applied.Table.VariableCount() + 1, error),
            110.0);
  EXPECT_EQ(error, 0);
}

// ---- Times --------------------------------------------------------------------------------------------------------

TEST(ApplyTimeCovariates, TimesHaveToBeThere) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age"};
  definition.TimeCovariates = {"late=T_"};
  Applied applied(definition, "time,status,age\n5,1,63\n,1,60\n8,0,51\n11,1,70\n");
  EXPECT_THAT(applied.Host.Required(), ElementsAre(1)) << "the module tests no time of such an analysis";
  EXPECT_EQ(applied.Run(), 0);
  EXPECT_THAT(applied.Host.RejectedAsMissing(), ElementsAre(1));
  EXPECT_EQ(applied.Analysis.m_pCoxData->ValidCaseCount, 3U);

  definition.Entry = "age";
  definition.Covariates.clear();
  EXPECT_THAT(Applied(definition).Host.Required(), ElementsAre(1, 3)) << "nor the entry time";
  definition.Entry.clear();

  definition.Covariates = {"age"};
  definition.Time.clear();
  definition.Dates = {"begun", "ended"};
  const Applied dates(definition, "begun,ended,status,age\n2020-01-01,2020-02-01,1,3\n2020-01-01,2020-03-01,0,4\n");
  EXPECT_THAT(dates.Host.Required(), ElementsAre(1, 2));
}

// ---- Start values -------------------------------------------------------------------------------------------------

// age has coefficient 1, arm 2 and 3, site 4 and 5, late 6, log time 7.
TEST(ApplyTimeCovariates, OnlyEffectsWithoutFactorsAreHeld) {
  struct {
    std::vector<int> Coefficients;
    std::vector<bool> Flags;
  } const held[] = {{{1}, {true, false, false, false, false}},
                    {{6}, {false, false, false, true, false}},
                    {{7, 1}, {true, false, false, false, true}}};
  for (const auto& c : held) {
    AnalysisDefinition definition = TimeDependent();
    definition.StartValues = std::vector<double>(7, 0.01);
    definition.FixedCoefficients = c.Coefficients;
    const Applied applied(definition);
    EXPECT_TRUE(applied.Settings().HasFixedParameters);
    EXPECT_EQ(applied.Settings().FixedParameterFlags, c.Flags) << c.Coefficients.front();
  }
  struct {
    std::vector<int> Coefficients;
    const char* Message;
  } const refused[] = {
      {{2, 3}, "--fix: with --time-covariate only effects without factors can be held, not arm."},
      {{1, 4, 5}, "--fix: with --time-covariate only effects without factors can be held, not site."},
      {{8}, "--fix: there is no coefficient 8. The model has 7, numbered from 1."},
      {{2}, "--fix: coefficients 2 to 3 belong to one effect (arm) and are held together: name all or none."},
  };
  for (const auto& c : refused) {
    AnalysisDefinition definition = TimeDependent();
    definition.StartValues = std::vector<double>(7, 0.01);
    definition.FixedCoefficients = c.Coefficients;
    EXPECT_EQ(RefusalOf(definition), c.Message) << c.Coefficients.front();
  }
}

TEST(ApplyTimeCovariates, ACrossWithAFactorIsNotHeldThoughItHasOneColumn) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Factors = {"site"};
  definition.FactorCodes = {"site=1,2"};
  definition.TimeCovariates = {"late=T_"};
  definition.Effects = "site*late";
  definition.StartValues = {0.1};
  definition.FixedCoefficients = {1};
  EXPECT_EQ(RefusalOf(definition),
            "--fix: with --time-covariate only effects without factors can be held, not site*late.");
}

TEST(ApplyTimeCovariates, AHeldCoefficientKeepsItsValue) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age"};
  definition.TimeCovariates = {"late=age*(T_>10)"};
  definition.StartValues = {0.0, 0.05};
  definition.FixedCoefficients = {2};
  Applied applied(definition);
  ASSERT_EQ(applied.Run(), 0);
  EXPECT_EQ(applied.Analysis.m_pCoxFit->m_BetaHistory.back()[1], 0.05);
  EXPECT_NE(applied.Analysis.m_pCoxFit->m_BetaHistory.back()[0], 0.0);
}

TEST(ApplyTimeCovariates, StartValuesAreOnTheScaleOfTheData) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age"};
  definition.TimeCovariates = {"late=age*(T_>10)"};
  definition.StartValues = {0.01, 0.02};
  const Applied applied(definition);
  EXPECT_THAT(applied.Result.Notes, ElementsAre(kStatusNote)) << "no note about standardised columns";
}

}  // namespace
}  // namespace orv::testing
