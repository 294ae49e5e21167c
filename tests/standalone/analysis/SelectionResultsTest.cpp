// Results after a selection: they are written for the full design, and the model may have fewer effects.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "standalone/analysis/Definitions.h"
#include "standalone/analysis/ResultDefinition.h"

namespace orv::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Texts = std::vector<std::string>;

// The coefficients are dose, arm_drug and age. Forced effects are there, and no other enters at so small a limit.
AnalysisDefinition KeepingTheFirst(int effects) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age", "dose"};
  definition.Factors = {"arm"};
  definition.Coding = "reference";
  definition.Effects = "dose, arm, age";
  definition.Select = "forward";
  definition.PEnter = 1e-12;
  definition.Force = effects;
  return definition;
}

struct Selected {
  Selected(const ResultDefinition& definition, const AnalysisDefinition& analysis)
      : Of(analysis,
           "time,status,age,dose,arm\n5,1,60,1,drug\n8,0,51,3,placebo\n11,1,70,2,drug\n12,1,48,5,placebo\n"
           "15,0,55,2,drug\n21,1,66,5,placebo\n4,1,50,4,drug\n7,1,61,1,placebo\n9,1,44,2,drug\n") {
    const ResolvedResults resolved = ResolveResults(definition, Of.Host, Of.Analysis);
    EXPECT_EQ(Of.Run(), 0);
    Results = std::make_unique<CCoxPHResults>(Of.Analysis);
    Existing = ApplyResults(resolved, *Results, Notes);
  }
  Applied Of;
  std::unique_ptr<CCoxPHResults> Results;
  Texts Existing;
  Texts Notes;
};

ResultDefinition WithContrasts(const Texts& contrasts) {
  ResultDefinition definition;
  definition.Results = {"estimates", "contrast"};
  definition.Contrasts = contrasts;
  return definition;
}

TEST(SelectionResults, ContrastOfCoefficientsKeptLosesTheOthers) {
  const Selected selected(WithContrasts({"1 0 0", "0 -0.5 0", "2 1 0"}), KeepingTheFirst(2));
  EXPECT_THAT(selected.Notes, IsEmpty());
  EXPECT_THAT(selected.Existing, ElementsAre("estimates", "contrast"));
  EXPECT_EQ(selected.Results->m_LinearCombinations, (DenseMatrix{{1.0, 0.0, 2.0}, {0.0, -0.5, 1.0}}));
}

TEST(SelectionResults, ContrastOfACoefficientThatIsGoneIsLeftOut) {
  const Selected selected(WithContrasts({"1 0 0", "0 0 3"}), KeepingTheFirst(2));
  EXPECT_THAT(selected.Existing, ElementsAre("estimates"));
  EXPECT_THAT(selected.Notes,
              ElementsAre("contrast left out: it has a number for age, which is not in the model selected."));
  const Selected another(WithContrasts({"1 1 0"}), KeepingTheFirst(1));
  EXPECT_THAT(another.Existing, ElementsAre("estimates"));
  EXPECT_THAT(another.Notes,
              ElementsAre("contrast left out: it has a number for arm_drug, which is not in the model selected."));
}

TEST(SelectionResults, ContrastStaysWholeWhenAllEffectsAreKept) {
  const Selected selected(WithContrasts({"1 2 3"}), KeepingTheFirst(3));
  EXPECT_THAT(selected.Notes, IsEmpty());
  EXPECT_EQ(selected.Results->m_LinearCombinations, (DenseMatrix{{1.0}, {2.0}, {3.0}}));
}

TEST(SelectionResults, ContrastIsOfAllCoefficientsAfterBestSubsets) {
  AnalysisDefinition definition = KeepingTheFirst(1);
  definition.PEnter.reset();
  definition.Factors.clear();
  definition.Effects = "dose, age";
  definition.Select = "best";
  const Selected selected(WithContrasts({"1 2"}), definition);
  EXPECT_EQ(selected.Results->m_LinearCombinations, (DenseMatrix{{1.0}, {2.0}}));
  EXPECT_THAT(selected.Notes, IsEmpty());
}

TEST(SelectionResults, PatternOfAPredictorThatIsGoneChangesNothing) {
  ResultDefinition definition;
  definition.Results = {"survivor"};
  definition.Patterns = {"dose=4, arm=placebo", "age=40", "arm=drug, dose=1, age=70"};
  const Selected selected(definition, KeepingTheFirst(1));
  EXPECT_THAT(selected.Notes, ElementsAre("age of --pattern is not in the model selected and changes nothing.",
                                          "arm of --pattern is not in the model selected and changes nothing."));
  EXPECT_EQ(selected.Results->Patterns.DesignRows, (DenseMatrix{{4.0}, {25.0 / 9.0}, {1.0}}));
}

TEST(SelectionResults, PatternOfThePredictorsKeptIsTaken) {
  ResultDefinition definition;
  definition.Results = {"survivor"};
  definition.Patterns = {"arm=drug", "dose=2, arm=placebo"};
  const Selected selected(definition, KeepingTheFirst(2));
  EXPECT_THAT(selected.Notes, IsEmpty());
  EXPECT_EQ(selected.Results->Patterns.DesignRows, (DenseMatrix{{25.0 / 9.0, 1.0}, {2.0, 0.0}}));
}

}  // namespace
}  // namespace orv::testing
