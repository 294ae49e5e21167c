// The design and the method of a definition: effects, choices, start values, held coefficients.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "standalone/analysis/Definitions.h"

namespace orv::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

AnalysisDefinition WithPredictors() {
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age"};
  definition.Factors = {"arm", "site"};
  return definition;
}

TEST(ApplyDesign, EveryPredictorIsAnEffectByDefault) {
  const Applied applied(WithPredictors());
  EXPECT_THAT(applied.Settings().DesignEffects, ElementsAre("age", "arm", "site"));
  EXPECT_EQ(applied.Settings().EffectSymbols,
            (std::map<std::string, std::string>{{"age", "v3"}, {"arm", "v4"}, {"site", "v5"}}));
  EXPECT_EQ(applied.Settings().HasNestedEffects, 0);
}

TEST(ApplyDesign, WrittenEffectsBecomeTerms) {
  struct {
    const char* effects;
    std::vector<std::string> names;
    std::map<std::string, std::string> terms;
    int nested;
  } const cases[] = {
      {"site, age, arm", {"site", "age", "arm"}, {{"age", "v3"}, {"arm", "v4"}, {"site", "v5"}}, 0},
      {"arm, site*arm*age", {"arm", "site*arm*age"}, {{"arm", "v4"}, {"site*arm*age", "v5*v4*v3"}}, 0},
      {"age(arm*site)", {"age(arm*site)"}, {{"age(arm*site)", "v3(v4*v5)"}}, 1},
      {"age*age, arm, site", {"age*age", "arm", "site"}, {{"age*age", "v3*v3"}, {"arm", "v4"}, {"site", "v5"}}, 0},
      {"#3, #4*site", {"age", "arm*site"}, {{"age", "v3"}, {"arm*site", "v4*v5"}}, 0},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = WithPredictors();
    definition.Effects = c.effects;
    const Applied applied(definition);
    EXPECT_EQ(applied.Settings().DesignEffects, c.names) << c.effects;
    EXPECT_EQ(applied.Settings().EffectSymbols, c.terms) << c.effects;
    EXPECT_EQ(applied.Settings().HasNestedEffects, c.nested) << c.effects;
  }
}

TEST(ApplyDesign, PredictorsOutsideTheDesignAreDroppedWithANote) {
  AnalysisDefinition definition = WithPredictors();
  definition.Effects = "site";
  const Applied applied(definition);
  EXPECT_THAT(applied.Settings().CovariateVariables, IsEmpty());
  EXPECT_EQ(applied.Settings().CovariateCount, 0);
  EXPECT_THAT(applied.Settings().FactorVariables, ElementsAre(5));
  EXPECT_EQ(applied.Settings().FactorCount, 1);
  EXPECT_THAT(applied.Settings().FactorCodeCounts, ElementsAre(3));
  EXPECT_THAT(applied.Result.Notes,
              ElementsAre("status: 1 is taken as an event and 0 as censored.",
                          "--effects: \"age\" is in no effect and takes no part in the analysis.",
                          "--effects: \"arm\" is in no effect and takes no part in the analysis."));
}

TEST(ApplyDesign, EffectsThatTheTableDoesNotAllowAreRefused) {
  struct {
    const char* effects;
    const char* message;
  } const cases[] = {
      {"age, amr", "--effects: \"amr\" is not among the predictors. Closest: \"arm\"."},
      {"age*time", "--effects: in \"age*time\": \"time\" is not among the predictors."},
      {"age arm", "--effects: \"age arm\" is not among the predictors. Effects are separated by commas."},
      {"age, #2", "--effects: \"#2\" is not among the predictors."},
      {"age, age", "--effects: \"age\" is named twice."},
      {"age, #3", "--effects: \"age\" is named twice."},
      {"arm*arm", "--effects: the factor \"arm\" stands twice in \"arm*arm\"."},
      {"arm(#4)", "--effects: the factor \"arm\" stands twice in \"arm(#4)\"."},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = WithPredictors();
    definition.Effects = c.effects;
    EXPECT_EQ(RefusalOf(definition), c.message) << c.effects;
  }
}

TEST(ApplyMethod, TakesTheChoicesAndKeepsTheDefaults) {
  const Applied usual(LeastDefinition());
  EXPECT_EQ(usual.Settings().Coding, Codings::SigmaRestricted);
  EXPECT_EQ(usual.Settings().Likelihood, Likelihoods::Breslow);
  EXPECT_EQ(usual.Settings().ConvergenceType, ConvergenceTypes::RelativeGradient);
  EXPECT_EQ(usual.Settings().ConvergenceExponent, 8);
  EXPECT_EQ(usual.Result.Fields.Iterations, 50.0);

  AnalysisDefinition definition = LeastDefinition();
  definition.Coding = "overparameterized";
  definition.Ties = "efron";
  definition.Converge = "absolute";
  definition.ToleranceExponent = 12;
  definition.MaxIterations = 7;
  const Applied chosen(definition);
  EXPECT_EQ(chosen.Settings().Coding, Codings::Overparameterized);
  EXPECT_EQ(chosen.Settings().Likelihood, Likelihoods::Efron);
  EXPECT_EQ(chosen.Settings().ConvergenceType, ConvergenceTypes::AbsoluteLikelihood);
  EXPECT_EQ(chosen.Settings().ConvergenceExponent, 12);
  EXPECT_EQ(chosen.Result.Fields.Iterations, 7.0);
}

TEST(ApplyStartValues, AreTakenAsTheyAre) {
  const Applied none(WithPredictors());
  EXPECT_FALSE(none.Settings().UseStartValues);

  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age"};
  definition.StartValues = {-0.25};
  const Applied applied(definition);
  EXPECT_TRUE(applied.Settings().UseStartValues);
  EXPECT_FALSE(applied.Settings().HasFixedParameters);
  EXPECT_THAT(applied.Settings().StartValues, ElementsAre(-0.25));
  EXPECT_THAT(
      applied.Result.Notes,
      Contains("--start-values: taken on the scale of the standardised columns; with --fix they are on the scale of "
               "the data."));
}

// age has coefficient 1, arm 2 and 3, site 4 and 5.
TEST(ApplyStartValues, HeldCoefficientsHoldTheirEffect) {
  struct {
    std::vector<int> coefficients;
    std::vector<bool> flags;
  } const cases[] = {
      {{1}, {true, false, false}},         {{2, 3}, {false, true, false}},        {{5, 4}, {false, false, true}},
      {{1, 4, 5, 1}, {true, false, true}}, {{1, 2, 3, 4, 5}, {true, true, true}},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = WithPredictors();
    definition.StartValues = {0.1, 0.2, 0.3, 0.4, 0.5};
    definition.FixedCoefficients = c.coefficients;
    const Applied applied(definition);
    EXPECT_TRUE(applied.Settings().HasFixedParameters);
    EXPECT_EQ(applied.Settings().FixedParameterFlags, c.flags) << c.coefficients.front();
  }
}

TEST(ApplyStartValues, CoefficientsThatCannotBeHeldAreRefused) {
  struct {
    std::vector<int> coefficients;
    const char* message;
  } const cases[] = {
      {{0}, "--fix: there is no coefficient 0. The model has 5, numbered from 1."},
      {{6}, "--fix: there is no coefficient 6. The model has 5, numbered from 1."},
      {{-1}, "--fix: there is no coefficient -1. The model has 5, numbered from 1."},
      {{2}, "--fix: coefficients 2 to 3 belong to one effect (arm) and are held together: name all or none."},
      {{1, 5}, "--fix: coefficients 4 to 5 belong to one effect (site) and are held together: name all or none."},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = WithPredictors();
    definition.StartValues = {0.1, 0.2, 0.3, 0.4, 0.5};
    definition.FixedCoefficients = c.coefficients;
    EXPECT_EQ(RefusalOf(definition), c.message) << c.coefficients.front();
  }
}

TEST(ApplyStartValues, HeldCoefficientsKeepTheirValues) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age"};
  definition.Factors = {"arm"};
  definition.StartValues = {0.05, 0.0, 0.0};
  definition.FixedCoefficients = {1};
  Applied applied(definition);
  ASSERT_EQ(applied.Run(), 0);
  EXPECT_EQ(applied.Analysis.m_pCoxFit->m_BetaHistory.back()[0], 0.05);
  EXPECT_NE(applied.Analysis.m_pCoxFit->m_BetaHistory.back()[1], 0.0);
}

}  // namespace
}  // namespace orv::testing
