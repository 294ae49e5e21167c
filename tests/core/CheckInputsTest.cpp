// The checks of the options before a run: each message, their order, and what they change.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "core/SettingsFields.h"
#include "core/StringTable.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::ChangedFields;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TestAnalysis;

using Names = std::set<std::string>;

// A stepwise analysis with everything that a check looks at, and nothing to object to.
class CheckInputs : public ::testing::Test {
 protected:
  CheckInputs()
      : m_test({{"x", {1, 2, 3, 4}},
                {"f", {1, 2, 1, 2}},
                {"g", {1, 1, 2, 2}},
                {"time", {1, 2, 3, 4}},
                {"status", {1, 0, 1, 1}},
                {"w", {1, 1, 2, 2}},
                {"start", {0, 0, 1, 1}}}) {
    m_test.Covariates({"x"}).Factor("f", {1, 2}).Strata("g", {1, 2}).Time({"time"}).Status("status").Weights("w");
    m_test.DefaultDesign().StartAt({0.0, 0.0});
    Settings().ModelBuilding = ModelBuildings::Stepwise;
    m_valid = Settings();
  }
  CoxSettings& Settings() { return m_test.Settings(); }

  // The id of the message of a check, 0 when there was none. The message goes through dsplst.
  int Message() {
    m_test.Host.Trace.clear();
    const int result = m_test.Analysis.CheckInputsForCorrectness(nullptr);
    const std::size_t shown = m_test.Host.Trace.size();
    EXPECT_LE(shown, 1U) << "the first message ends the checks";
    EXPECT_EQ(result, static_cast<int>(shown)) << "1 with a message and 0 without";
    if (shown == 0) return 0;
    const std::string kind = "dsplst 0: ";
    EXPECT_EQ(m_test.Host.Trace[0].substr(0, kind.size()), kind);
    return FindModuleTextId(m_test.Host.Trace[0].substr(kind.size()));
  }
  void Restore() { Settings() = m_valid; }

  TestAnalysis m_test;
  CoxSettings m_valid;
};

struct Fault {
  int Message;
  std::function<void(CoxSettings&)> Break;
};

// In the order in which the checks speak.
const std::vector<Fault>& Faults() {
  static const std::vector<Fault> faults = {
      {10039, [](CoxSettings& s) { s.CensorVariableCount = 0; }},
      {10042, [](CoxSettings& s) { s.SurvivalVariableCount = 0; }},
      {10043, [](CoxSettings& s) { s.EffectSymbols.clear(); }},
      {10052, [](CoxSettings& s) { s.CodeForCompleteResponses = s.CodeForCensoredResponses; }},
      {10228, [](CoxSettings& s) { s.HasNestedEffects = 1; }},
      {10190, [](CoxSettings& s) { s.MaxIterations = -1; }},
      {10120, [](CoxSettings& s) { s.PToEnter = 0.0; }},
      {10119, [](CoxSettings& s) { s.PToRemove = 1.0; }},
      {10187, [](CoxSettings& s) { s.EffectSymbols["from a script"] = ""; }},
      {10188, [](CoxSettings& s) { s.Likelihood = Likelihoods::Discrete; }},
      {10121, [](CoxSettings& s) { s.EffectsToForce = -1; }},
      {10133, [](CoxSettings& s) { s.StartValues.clear(); }},
      {10201, [](CoxSettings& s) { s.StrataCodeCount = {1}; }},
      {10214, [](CoxSettings& s) { s.FactorCodeCounts = {1}; }},
  };
  return faults;
}

TEST_F(CheckInputs, ValidOptionsPassInSilenceAndUnchanged) {
  EXPECT_EQ(Message(), 0);
  EXPECT_EQ(ChangedFields(m_valid, Settings()), Names{});
}

TEST_F(CheckInputs, EachFaultHasItsMessage) {
  for (const Fault& fault : Faults()) {
    Restore();
    fault.Break(Settings());
    EXPECT_EQ(Message(), fault.Message);
  }
}

TEST_F(CheckInputs, TheFirstFaultSpeaksAndTheOthersAreSilent) {
  const auto& faults = Faults();
  for (std::size_t first = 0; first < faults.size(); ++first) {
    for (std::size_t second = first + 1; second < faults.size(); ++second) {
      Restore();
      faults[second].Break(Settings());  // before the other, which may take effects away
      faults[first].Break(Settings());
      EXPECT_EQ(Message(), faults[first].Message) << "together with " << faults[second].Message;
    }
  }
}

TEST_F(CheckInputs, AFailedCheckChangesNothing) {
  for (const Fault& fault : Faults()) {
    Restore();
    fault.Break(Settings());
    const CoxSettings before = Settings();
    Message();
    EXPECT_EQ(ChangedFields(before, Settings()), Names{}) << fault.Message;
  }
}

TEST_F(CheckInputs, AfterACorrectionEverythingIsCheckedAgain) {
  Settings().PToEnter = 2.0;
  EXPECT_EQ(Message(), 10120);
  Settings().PToEnter = 0.05;
  Settings().CensorVariableCount = 0;
  EXPECT_EQ(Message(), 10039);
  Settings().CensorVariableCount = 1;
  EXPECT_EQ(Message(), 0);
}

// ---- Time variables -----------------------------------------------------------------------------------------------

TEST_F(CheckInputs, AnIntervalNeedsItsStartBeforeItsStop) {
  m_test.Interval("start", "time");
  EXPECT_EQ(Message(), 0);
  Settings().SurvivalVariableCount = 0;
  EXPECT_EQ(Message(), 0) << "no survival time is asked for";
  Settings().StopVariableCount = 0;
  EXPECT_EQ(Message(), 10041);
  Settings().StartVariableCount = 0;
  EXPECT_EQ(Message(), 10040);
  Settings().CensorVariableCount = 0;
  EXPECT_EQ(Message(), 10039);
}

class CheckTimeDependentInputs : public CheckInputs {
 protected:
  CheckTimeDependentInputs() {
    Settings().InputType = InputTypes::TimeDependent;
    Settings().TimeDependentCovariateNames = {"late", "early"};
    Settings().TimeDependentCovariateExpressions = {"T_", "T_"};
    m_valid = Settings();
  }
};

TEST_F(CheckTimeDependentInputs, PassWithAnExpressionOfTimeAlone) {
  EXPECT_EQ(Message(), 0);
}

TEST_F(CheckTimeDependentInputs, NeedASurvivalTimeAndAnExpression) {
  Settings().TimeDependentCovariateExpressions.clear();
  EXPECT_EQ(Message(), 10037);
  Settings().SurvivalVariableCount = 0;
  EXPECT_EQ(Message(), 10042);
  Settings().CensorVariableCount = 0;
  EXPECT_EQ(Message(), 10039);
}

TEST_F(CheckTimeDependentInputs, TakeTwoBlocksForTheVariablesOfTheExpressionsAndGiveThemBack) {
  Settings().TimeDependentCovariateExpressions.clear();
  m_test.Host.AllocationSizes.clear();
  EXPECT_EQ(Message(), 10037);
  EXPECT_THAT(m_test.Host.AllocationSizes, ElementsAre(76U, 76U));
  EXPECT_EQ(m_test.Host.LiveBlocks(), 0);
  Settings().SurvivalVariableCount = 0;
  EXPECT_EQ(Message(), 10042);
  EXPECT_EQ(m_test.Host.LiveBlocks(), 0);
}

TEST_F(CheckTimeDependentInputs, SayThatMemoryIsOutBeforeTheRest) {
  Settings().SurvivalVariableCount = 0;
  for (const int failing : {1, 2}) {
    m_test.Host.FailAllocation(failing);
    EXPECT_EQ(Message(), 10102) << "block " << failing;
    EXPECT_EQ(m_test.Host.LiveBlocks(), 0) << "block " << failing;
  }
}

TEST_F(CheckTimeDependentInputs, ForgetTheVariablesOfExpressionsBefore) {
  Settings().TimeExpressionVariables = {1, 2};
  Settings().TimeDependentCovariateExpressions.clear();
  EXPECT_EQ(Message(), 10037);
  EXPECT_TRUE(Settings().TimeExpressionVariables.empty());

  Restore();
  Settings().InputType = InputTypes::SurvivalTime;
  Settings().TimeExpressionVariables = {1, 2};
  EXPECT_EQ(Message(), 0);
  EXPECT_EQ(Settings().TimeExpressionVariables, (std::vector<std::int32_t>{1, 2})) << "another input type leaves them";
}

TEST_F(CheckTimeDependentInputs, ADesignOfTimeDependentCovariatesAloneIsRefused) {
  Settings().CovariateVariables.clear();
  Settings().CovariateCount = 0;
  Settings().FactorVariables.clear();
  Settings().FactorCount = 0;
  Settings().DesignEffects = {"late"};
  Settings().EffectSymbols = {{"late", "TIME_EXPRESSION1"}};
  EXPECT_EQ(Message(), 10227);
}

// ---- Design -------------------------------------------------------------------------------------------------------

TEST_F(CheckInputs, EffectsAndPredictorsNeedEachOther) {
  struct {
    const char* What;
    int Covariates, Factors;
    bool Effects;
    int Message;
  } const cases[] = {
      {"both", 1, 1, true, 0},
      {"a covariate without effects", 1, 0, false, 10043},
      {"a factor without effects", 0, 1, false, 10043},
      {"effects without predictors", 0, 0, true, 10227},
      {"neither, for an analysis without covariates", 0, 0, false, 0},
  };
  for (const auto& c : cases) {
    Restore();
    Settings().ModelBuilding = ModelBuildings::AllEffects;
    Settings().UseStartValues = false;
    Settings().CovariateCount = static_cast<std::int16_t>(c.Covariates);
    Settings().FactorCount = static_cast<std::int16_t>(c.Factors);
    if (!c.Effects) Settings().EffectSymbols.clear();
    EXPECT_EQ(Message(), c.Message) << c.What;
  }
}

TEST_F(CheckInputs, ResponseCodesMustDiffer) {
  double fifteenAbove = 1.0;
  for (int step = 0; step < 15; ++step) fifteenAbove = std::nextafter(fifteenAbove, 2.0);
  const double infinity = std::numeric_limits<double>::infinity();
  struct {
    double Complete, Censored;
    int Message;
  } const cases[] = {{0.0, 0.0, 10052},
                     {0.0, -0.0, 10052},
                     {1.0, 1.0, 10052},
                     {fifteenAbove, 1.0, 10052},
                     {std::nextafter(fifteenAbove, 2.0), 1.0, 0},
                     {infinity, infinity, 0},
                     {1.0, 0.0, 0},
                     {0.0, 1.0, 0}};
  for (const auto& c : cases) {
    Restore();
    Settings().CodeForCompleteResponses = c.Complete;
    Settings().CodeForCensoredResponses = c.Censored;
    EXPECT_EQ(Message(), c.Message) << c.Complete << " and " << c.Censored;
  }
}

TEST_F(CheckInputs, ResponseCodesLeftAtTheirDefaultsAreIdentical) {
  Settings().CodeForCompleteResponses = CoxSettings().CodeForCompleteResponses;
  Settings().CodeForCensoredResponses = CoxSettings().CodeForCensoredResponses;
  EXPECT_EQ(Message(), 10052);
}

TEST_F(CheckInputs, NestingNeedsTheOverparameterizedCoding) {
  Settings().HasNestedEffects = 1;
  for (const int coding : {Codings::SigmaRestricted, Codings::Reference, Codings::Overparameterized}) {
    Settings().Coding = static_cast<std::int16_t>(coding);
    EXPECT_EQ(Message(), coding == Codings::Overparameterized ? 0 : 10228) << "coding " << coding;
  }
}

// ---- Limits -------------------------------------------------------------------------------------------------------

TEST_F(CheckInputs, ZeroIterationsPassHere) {
  for (const auto& [iterations, message] : std::map<int, int>{{-1000, 10190}, {-1, 10190}, {0, 0}, {1, 0}, {5000, 0}}) {
    Settings().MaxIterations = iterations;
    EXPECT_EQ(Message(), message) << iterations << " iterations";
  }
}

TEST_F(CheckInputs, PLevelsLieStrictlyBetweenZeroAndOneWhereTheyAreUsed) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double p : {0.0, 1.0, -0.1, 1.1, nan, 1e-300, 0.5, 0.9999999}) {
    const bool inside = p > 0.0 && p < 1.0;
    for (int building = ModelBuildings::AllEffects; building <= ModelBuildings::BestSubsets; ++building) {
      Restore();
      Settings().ModelBuilding = static_cast<std::int16_t>(building);
      Settings().PToEnter = p;
      const bool enters = building == ModelBuildings::Forward || building == ModelBuildings::Stepwise;
      EXPECT_EQ(Message(), enters && !inside ? 10120 : 0) << "to enter " << p << ", model building " << building;
      Settings().PToEnter = 0.05;
      Settings().PToRemove = p;
      const bool removes = building == ModelBuildings::Backward || building == ModelBuildings::Stepwise;
      EXPECT_EQ(Message(), removes && !inside ? 10119 : 0) << "to remove " << p << ", model building " << building;
    }
  }
}

TEST_F(CheckInputs, EffectsToForceReachUpToTheNumberOfEffects) {
  for (int building = ModelBuildings::AllEffects; building <= ModelBuildings::BestSubsets; ++building) {
    const bool checked = building >= ModelBuildings::Forward && building <= ModelBuildings::Stepwise;
    for (const auto& [effects, valid] : std::map<int, bool>{{-1, false}, {0, true}, {1, true}, {2, true}, {3, false}}) {
      Restore();
      Settings().ModelBuilding = static_cast<std::int16_t>(building);
      Settings().EffectsToForce = effects;
      EXPECT_EQ(Message(), checked && !valid ? 10121 : 0) << effects << " effects, model building " << building;
    }
  }
}

TEST_F(CheckInputs, TheMessageAboutEffectsToForceNamesTheNumberOfEffects) {
  Settings().EffectsToForce = 3;
  EXPECT_EQ(m_test.Analysis.CheckInputsForCorrectness(nullptr), 1);
  EXPECT_THAT(m_test.Host.Trace,
              ElementsAre("dsplst 0: Please specify the number of effects to force in the model between 0 and 2 "
                          "(=Number of effects in design)."));
}

// ---- Effects that a script named ----------------------------------------------------------------------------------

TEST_F(CheckTimeDependentInputs, TheLastTokenOfANameGivesItsTerm) {
  struct {
    const char* Name;
    const char* Term;  // null when the design is refused
  } const cases[] = {
      {"late", "TIME_EXPRESSION1"},
      {"early", "TIME_EXPRESSION2"},
      {"  late", "TIME_EXPRESSION1"},
      {"x*late", "TIME_EXPRESSION1"},
      {"x * early", "TIME_EXPRESSION2"},
      {"late*early", "TIME_EXPRESSION2"},
      {"late*x*late", "TIME_EXPRESSION1"},
      {"x(late)", "TIME_EXPRESSION1"},
      {"x*f(early)", "TIME_EXPRESSION2"},
      {"late*", "TIME_EXPRESSION1"},
      {"late* *", "TIME_EXPRESSION1"},
      {"(late)", "TIME_EXPRESSION1"},
      {"late*x", nullptr},
      {"late(x)", nullptr},
      {"x", nullptr},
      {"late ", nullptr},
      {"Late", nullptr},
      {"", nullptr},
      {"*", nullptr},
      {")", nullptr},
  };
  for (const auto& c : cases) {
    Restore();
    Settings().EffectSymbols[c.Name] = "";
    EXPECT_EQ(Message(), c.Term != nullptr ? 0 : 10187) << "name \"" << c.Name << "\"";
    EXPECT_EQ(Settings().EffectSymbols[c.Name], c.Term != nullptr ? c.Term : "") << "name \"" << c.Name << "\"";
  }
}

TEST_F(CheckTimeDependentInputs, TermsThatStandAreLeftAlone) {
  Settings().EffectSymbols["late"] = "v1";
  EXPECT_EQ(Message(), 0);
  EXPECT_EQ(Settings().EffectSymbols["late"], "v1");
}

TEST_F(CheckTimeDependentInputs, AnotherInputTypeAllowsNoTimeDependentCovariate) {
  struct {
    const char* Name;
    int Message;
  } const cases[] = {{"late", 10244}, {"x*late", 10244}, {"late*x", 10244}, {"x", 10187}, {"x*f", 10187}};
  for (const int inputType : {InputTypes::SurvivalTime, InputTypes::CountingProcess}) {
    for (const auto& c : cases) {
      Restore();
      m_test.Interval("start", "time");
      Settings().InputType = static_cast<std::int16_t>(inputType);
      Settings().EffectSymbols[c.Name] = "";
      EXPECT_EQ(Message(), c.Message) << c.Name << ", input type " << inputType;
    }
  }
}

TEST_F(CheckTimeDependentInputs, WithoutAnyTimeDependentCovariateANameWithoutATermIsInvalid) {
  Settings().InputType = InputTypes::SurvivalTime;
  Settings().TimeDependentCovariateNames.clear();
  Settings().EffectSymbols["late"] = "";
  EXPECT_EQ(Message(), 10187);
}

TEST_F(CheckTimeDependentInputs, NamesAreLookedAtInAscendingOrder) {
  Settings().InputType = InputTypes::SurvivalTime;
  Settings().EffectSymbols["late"] = "";
  Settings().EffectSymbols["zzz"] = "";
  EXPECT_EQ(Message(), 10244);
  Settings().EffectSymbols["aaa"] = "";
  EXPECT_EQ(Message(), 10187);
}

// ---- Weights, start values, codes ---------------------------------------------------------------------------------

TEST_F(CheckInputs, WeightsAndTheDiscreteLikelihoodExcludeEachOther) {
  for (const int likelihood : {Likelihoods::Breslow, Likelihoods::Efron, Likelihoods::Discrete}) {
    Settings().Likelihood = static_cast<std::int16_t>(likelihood);
    m_test.Host.SetWeightVariable(m_test.Number("w"));
    EXPECT_EQ(Message(), likelihood == Likelihoods::Discrete ? 10188 : 0) << "likelihood " << likelihood;
    m_test.Host.SetWeightVariable(0);
    EXPECT_EQ(Message(), 0) << "likelihood " << likelihood << " without weights";
  }
}

TEST_F(CheckInputs, StartValuesNeedValuesAndPredictors) {
  Settings().ModelBuilding = ModelBuildings::AllEffects;
  Settings().StartValues.clear();
  EXPECT_EQ(Message(), 10133);

  Settings().StartValues = {0.5};
  Settings().CovariateCount = 0;
  Settings().FactorCount = 0;
  Settings().EffectSymbols.clear();
  EXPECT_EQ(Message(), 10226);
}

TEST_F(CheckInputs, StartValuesThatAreSwitchedOffGoAtTheNextCheck) {
  m_test.Fix({true, false});
  Settings().UseStartValues = false;
  EXPECT_EQ(Settings().StartValues.size(), 2U) << "the click itself drops nothing";
  EXPECT_TRUE(Settings().HasFixedParameters);
  EXPECT_EQ(Message(), 0);
  EXPECT_TRUE(Settings().StartValues.empty());
  EXPECT_TRUE(Settings().FixedParameterFlags.empty());
  EXPECT_FALSE(Settings().HasFixedParameters);
}

TEST_F(CheckInputs, StartValuesGoAtTheirPlaceInTheOrder) {
  Settings().UseStartValues = false;
  Settings().MaxIterations = -1;
  EXPECT_EQ(Message(), 10190);
  EXPECT_EQ(Settings().StartValues.size(), 2U) << "an earlier message leaves them";
  Settings().MaxIterations = 50;
  Settings().StrataCodeCount = {1};
  EXPECT_EQ(Message(), 10201);
  EXPECT_TRUE(Settings().StartValues.empty()) << "a later one does not";
}

TEST_F(CheckInputs, StartValuesThatAreSwitchedOnStay) {
  m_test.Fix({true, false});
  EXPECT_EQ(Message(), 0);
  EXPECT_EQ(Settings().StartValues.size(), 2U);
  EXPECT_EQ(Settings().FixedParameterFlags.size(), 2U);
  EXPECT_TRUE(Settings().HasFixedParameters);
}

TEST_F(CheckInputs, StrataNeedTwoCodes) {
  struct {
    std::int16_t Variables;
    std::vector<std::int16_t> Counts;
    int Message;
  } const cases[] = {{1, {}, 10201}, {1, {0}, 10201}, {1, {1}, 10201}, {1, {2}, 0},
                     {1, {500}, 0},  {0, {}, 0},      {0, {1}, 0}};
  for (const auto& c : cases) {
    Settings().StrataVariableCount = c.Variables;
    Settings().StrataCodeCount = c.Counts;
    EXPECT_EQ(Message(), c.Message) << c.Variables << " variables, counts " << ::testing::PrintToString(c.Counts);
  }
}

TEST_F(CheckInputs, EveryFactorNeedsTwoCodes) {
  struct {
    std::int16_t Factors;
    std::vector<std::int16_t> Counts;
    int Message;
  } const cases[] = {{1, {}, 10214},     {1, {0}, 10214},    {1, {1}, 10214}, {1, {2}, 0}, {2, {2, 3}, 0},
                     {2, {2, 1}, 10214}, {2, {1, 2}, 10214}, {2, {2}, 10214}, {0, {}, 0},  {0, {1}, 0}};
  for (const auto& c : cases) {
    Settings().FactorCount = c.Factors;
    Settings().FactorCodeCounts = c.Counts;
    EXPECT_EQ(Message(), c.Message) << c.Factors << " factors, counts " << ::testing::PrintToString(c.Counts);
  }
}

}  // namespace
}  // namespace orv
