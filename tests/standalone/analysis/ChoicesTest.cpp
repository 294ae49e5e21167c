#include <gtest/gtest.h>

#include "core/CoxSettings.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/Choices.h"

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
  };
  for (const auto& c : cases) EXPECT_EQ(ChoiceValue("--option", c.word, c.choices, -1), c.value) << c.word;
}

TEST(Choices, NoWordIsTheFallback) {
  EXPECT_EQ(ChoiceValue("--ties", "", TieChoices(), 7), 7);
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
  EXPECT_EQ(ChoiceList({}), "");
}

}  // namespace
}  // namespace orv
