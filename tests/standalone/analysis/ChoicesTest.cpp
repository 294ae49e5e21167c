#include <gtest/gtest.h>

#include "core/CoxSettings.h"
#include "inference/SurvivorFunctions.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/Choices.h"
#include "ui/CCoxPHResults.h"

namespace orv {
namespace {

TEST(Choices, AreTheSettingsByTheirWords) {
  struct {
    std::span<const Choice> choices;
    const char* word;
    int value;
  } const cases[] = {
      {CodingChoices(), "sigma", Codings::SigmaRestricted},
      {CodingChoices(), "reference", Codings::Reference},
      {CodingChoices(), "overparameterized", Codings::Overparameterized},
      {TieChoices(), "breslow", Likelihoods::Breslow},
      {TieChoices(), "efron", Likelihoods::Efron},
      {TieChoices(), "discrete", Likelihoods::Discrete},
      {ConvergenceChoices(), "gradient", ConvergenceTypes::RelativeGradient},
      {ConvergenceChoices(), "parameter", ConvergenceTypes::RelativeParameter},
      {ConvergenceChoices(), "likelihood", ConvergenceTypes::RelativeLikelihood},
      {ConvergenceChoices(), "absolute", ConvergenceTypes::AbsoluteLikelihood},
      {SelectionChoices(), "all", ModelBuildings::AllEffects},
      {SelectionChoices(), "forward", ModelBuildings::Forward},
      {SelectionChoices(), "backward", ModelBuildings::Backward},
      {SelectionChoices(), "stepwise", ModelBuildings::Stepwise},
      {SelectionChoices(), "best", ModelBuildings::BestSubsets},
      {SurvivorTypeChoices(), "breslow", static_cast<int>(SurvivorType::Breslow)},
      {SurvivorTypeChoices(), "kaplan-meier", static_cast<int>(SurvivorType::KaplanMeier)},
      {CIChoices(), "none", kNoLimits},
      {CIChoices(), "normal", static_cast<int>(SurvivorCIType::Normal)},
      {CIChoices(), "log", static_cast<int>(SurvivorCIType::Log)},
      {CIChoices(), "loglog", static_cast<int>(SurvivorCIType::LogLog)},
      {TransformChoices(), "identity", static_cast<int>(TimeTransform::Identity)},
      {TransformChoices(), "log", static_cast<int>(TimeTransform::Log)},
      {TransformChoices(), "km", static_cast<int>(TimeTransform::KaplanMeier)},
      {TransformChoices(), "rank", static_cast<int>(TimeTransform::Rank)},
  };
  for (const auto& c : cases) EXPECT_EQ(ChoiceValue("--option", c.word, c.choices, -99), c.value) << c.word;
}

TEST(Choices, NoWordIsTheFallback) {
  EXPECT_EQ(ChoiceValue("--ties", "", TieChoices(), 7), 7);
  EXPECT_EQ(ChoiceValue("--ph-transform", "", TransformChoices(), TimeTransform::Rank),
            static_cast<int>(TimeTransform::Rank));
}

TEST(Choices, AnotherWordIsRefusedWithTheList) {
  for (const std::string word : {"efrom", "Efron", "efron ", "1"}) {
    try {
      ChoiceValue("--ties", word, TieChoices(), 0);
      ADD_FAILURE() << "accepted: " << word;
    } catch (const DefinitionError& error) {
      EXPECT_EQ(error.what(), "--ties " + word + ": use breslow, efron or discrete.");
    }
  }
}

TEST(Choices, AreListedInWords) {
  EXPECT_EQ(ChoiceList(CodingChoices()), "sigma, reference or overparameterized");
  EXPECT_EQ(ChoiceList(TieChoices()), "breslow, efron or discrete");
  EXPECT_EQ(ChoiceList(SurvivorTypeChoices()), "breslow or kaplan-meier");
  EXPECT_EQ(ChoiceList(CIChoices()), "none, normal, log or loglog");
  EXPECT_EQ(ChoiceList(TransformChoices()), "identity, log, km or rank");
  EXPECT_EQ(ChoiceList({}), "");
}

}  // namespace
}  // namespace orv
