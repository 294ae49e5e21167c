#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "core/CoxSettings.h"
#include "core/SettingsFields.h"

namespace orv {
namespace {

using testing::ChangedFields;
using ::testing::ElementsAreArray;
using testing::FieldTexts;
using testing::Perturb;
using testing::VisitFields;

// One field follows the other without a gap beyond its alignment, so the list of the tests holds every field, in order.
TEST(CoxSettings, FieldsStandInTheirOrderAndTheTestsKnowThemAll) {
  const CoxSettings settings;
  const auto* base = reinterpret_cast<const std::byte*>(&settings);
  std::size_t end = 0;
  VisitFields(settings, [&](const char* name, const auto& field) {
    using Field = std::remove_cvref_t<decltype(field)>;
    const std::size_t expected = (end + alignof(Field) - 1) / alignof(Field) * alignof(Field);
    EXPECT_EQ(reinterpret_cast<const std::byte*>(&field) - base, static_cast<std::ptrdiff_t>(expected)) << name;
    end = expected + sizeof(Field);
  });
  const std::size_t padded = (end + alignof(CoxSettings) - 1) / alignof(CoxSettings) * alignof(CoxSettings);
  EXPECT_EQ(padded, sizeof(CoxSettings));
}

template <typename Field>
const char* TypeName() {
  if (std::is_same_v<Field, bool>) return "bool";
  if (std::is_same_v<Field, std::int16_t>) return "int16";
  if (std::is_same_v<Field, std::int32_t>) return "int32";
  if (std::is_same_v<Field, double>) return "double";
  if (std::is_same_v<Field, std::string>) return "string";
  if (std::is_same_v<Field, std::array<std::int16_t, 6>>) return "6 x int16";
  if (std::is_same_v<Field, std::vector<std::int16_t>>) return "vector of int16";
  if (std::is_same_v<Field, std::vector<std::int32_t>>) return "vector of int32";
  if (std::is_same_v<Field, std::vector<double>>) return "vector of double";
  if (std::is_same_v<Field, std::vector<bool>>) return "bit vector";
  if (std::is_same_v<Field, std::vector<std::string>>) return "vector of string";
  if (std::is_same_v<Field, std::map<std::string, std::string>>) return "map string to string";
  return "another type";
}

struct FieldDefault {
  const char* Name;
  const char* Type;
  const char* Default;
};

// DesignFactorSet has no type here: it is a set of variables, ordered by number, with their roles.
const FieldDefault kDefaults[] = {
    {"SurvivalVariables", "6 x int16", "{ 0, 0, 0, 0, 0, 0 }"},
    {"SurvivalVariableCount", "int16", "0"},
    {"StartVariable", "int16", "0"},
    {"StartVariableCount", "int16", "0"},
    {"StopVariable", "int16", "0"},
    {"StopVariableCount", "int16", "0"},
    {"SubjectVariable", "int16", "0"},
    {"SubjectVariableCount", "int16", "0"},
    {"CovariateVariables", "vector of int16", "{}"},
    {"CovariateCount", "int16", "0"},
    {"FactorVariables", "vector of int16", "{}"},
    {"FactorCount", "int16", "0"},
    {"BackupCovariateVariables", "vector of int16", "{}"},
    {"BackupCovariateCount", "int16", "0"},
    {"BackupFactorVariables", "vector of int16", "{}"},
    {"BackupFactorCount", "int16", "0"},
    {"FactorCodes", "vector of int32", "{}"},
    {"FactorCodeCounts", "vector of int16", "{}"},
    {"ReferenceCodes", "vector of int32", "{}"},
    {"ReferenceCodeIndex", "vector of int16", "{}"},
    {"BackupFactorCodes", "vector of int32", "{}"},
    {"BackupFactorCodeCounts", "vector of int16", "{}"},
    {"BackupReferenceCodes", "vector of int32", "{}"},
    {"BackupReferenceCodeIndex", "vector of int16", "{}"},
    {"StartValues", "vector of double", "{}"},
    {"HasFixedParameters", "bool", "false"},
    {"FixedParameterFlags", "bit vector", "{}"},
    {"StartValuesFileName", "string", "\"\""},
    {"CensorVariable", "int16", "0"},
    {"CensorVariableCount", "int16", "0"},
    {"CodeForCompleteResponses", "double", "0"},
    {"CodeForCensoredResponses", "double", "0"},
    {"StrataVariable", "int16", "0"},
    {"StrataVariableCount", "int16", "0"},
    {"StrataCodes", "vector of int32", "{}"},
    {"StrataCodeCount", "vector of int16", "{}"},
    {"EntryTimeVariable", "int16", "0"},
    {"UseRobustVariance", "bool", "false"},
    {"HasRun", "bool", "false"},
    {"BackupDesignEffects", "vector of string", "{}"},
    {"DesignEffects", "vector of string", "{}"},
    {"VariableSymbols", "map string to string", "{}"},
    {"EffectSymbols", "map string to string", "{}"},
    {"BackupEffectSymbols", "map string to string", "{}"},
    {"FullEffectSymbols", "map string to string", "{}"},
    {"DesignFactorSet", nullptr, "{}"},
    {"FinalFitReady", "bool", "true"},
    {"ModelBuilding", "int16", "1"},
    {"Likelihood", "int16", "1"},
    {"InputType", "int16", "1"},
    {"Coding", "int16", "1"},
    {"MaxIterations", "int32", "50"},
    {"ConvergenceType", "int32", "1"},
    {"UseStartValues", "bool", "false"},
    {"ConvergenceExponent", "int32", "8"},
    {"HasNestedEffects", "int32", "0"},
    {"TimeDependentCovariateExpressions", "vector of string", "{}"},
    {"TimeDependentCovariateNames", "vector of string", "{}"},
    {"TimeExpressionVariables", "vector of int32", "{}"},
    {"PToEnter", "double", "0.05"},
    {"PToRemove", "double", "0.15"},
    {"EffectsToForce", "int32", "0"},
    {"ForcedStepCount", "int32", "0"},
    {"DisplayBest", "int32", "1"},
};

TEST(CoxSettings, EveryFieldStartsAtItsDefault) {
  const std::map<std::string, std::string> texts = FieldTexts(CoxSettings());
  ASSERT_EQ(texts.size(), std::size(kDefaults));
  for (const FieldDefault& field : kDefaults) EXPECT_EQ(texts.at(field.Name), field.Default) << field.Name;
}

TEST(CoxSettings, EveryFieldHasItsType) {
  const CoxSettings settings;
  std::map<std::string, std::string> types;
  VisitFields(settings, [&](const char* name, const auto& field) {
    types[name] = TypeName<std::remove_cvref_t<decltype(field)>>();
  });
  for (const FieldDefault& field : kDefaults) {
    if (field.Type == nullptr) continue;
    EXPECT_EQ(types.at(field.Name), field.Type) << field.Name;
  }
}

TEST(CoxSettings, TheSmallIntegersKeepTheirMeaning) {
  EXPECT_EQ((std::vector<int>{InputTypes::SurvivalTime, InputTypes::CountingProcess, InputTypes::TimeDependent}),
            (std::vector<int>{1, 2, 3}));
  EXPECT_EQ((std::vector<int>{Likelihoods::Breslow, Likelihoods::Efron, Likelihoods::Discrete}),
            (std::vector<int>{1, 2, 3}));
  EXPECT_EQ((std::vector<int>{Codings::SigmaRestricted, Codings::Reference, Codings::Overparameterized}),
            (std::vector<int>{1, 2, 3}));
  EXPECT_EQ((std::vector<int>{ModelBuildings::AllEffects, ModelBuildings::Forward, ModelBuildings::Backward,
                              ModelBuildings::Stepwise, ModelBuildings::BestSubsets}),
            (std::vector<int>{1, 2, 3, 4, 5}));
  EXPECT_EQ((std::vector<int>{ConvergenceTypes::RelativeGradient, ConvergenceTypes::RelativeParameter,
                              ConvergenceTypes::RelativeLikelihood, ConvergenceTypes::AbsoluteLikelihood}),
            (std::vector<int>{1, 2, 3, 4}));
}

TEST(CoxSettings, PredictorsAreCovariatesAndFactors) {
  CoxSettings settings;
  EXPECT_EQ(settings.PredictorCount(), 0);
  settings.CovariateCount = 2011;
  settings.FactorCount = 32000;
  EXPECT_EQ(settings.PredictorCount(), 34011);
  EXPECT_FALSE(settings.HasStrata());
  settings.StrataVariableCount = 1;
  EXPECT_TRUE(settings.HasStrata());
}

// What a new data file leaves as it was. FinalFitReady is the one field that takes neither value.
const std::set<std::string> kKept = {"HasRun",
                                     "DisplayBest",
                                     "ForcedStepCount",
                                     "BackupCovariateVariables",
                                     "BackupCovariateCount",
                                     "BackupFactorVariables",
                                     "BackupFactorCount",
                                     "BackupFactorCodes",
                                     "BackupFactorCodeCounts",
                                     "BackupReferenceCodes",
                                     "BackupReferenceCodeIndex",
                                     "BackupDesignEffects",
                                     "BackupEffectSymbols"};

TEST(ResetSettings, PutsEveryFieldBackButTheBackupsAndAFewMore) {
  CoxSettings settings;
  VisitFields(settings, Perturb());
  settings.FinalFitReady = true;
  const auto before = FieldTexts(settings);
  const auto fresh = FieldTexts(CoxSettings());
  for (const auto& [name, text] : before) {
    if (name == "FinalFitReady") continue;
    EXPECT_NE(text, fresh.at(name)) << name << " must differ for this test to see it";
  }
  ResetSettings(settings);
  for (const auto& [name, text] : FieldTexts(settings)) {
    if (name == "FinalFitReady") continue;
    EXPECT_EQ(text, kKept.count(name) != 0 ? before.at(name) : fresh.at(name)) << name;
  }
}

TEST(ResetSettings, LeavesTheFinalFitUnready) {
  for (const bool ready : {true, false}) {
    CoxSettings settings;
    settings.FinalFitReady = ready;
    ResetSettings(settings);
    EXPECT_FALSE(settings.FinalFitReady) << "was " << ready;
  }
}

}  // namespace
}  // namespace orv
