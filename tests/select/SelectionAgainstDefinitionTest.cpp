// Whole selections against a recomputation from definitions: the same effects in the same order, with the same tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "select/PlainSelection.h"
#include "select/RandomSelections.h"

namespace orv {
namespace {

using testing::PlainFit;
using testing::PlainPath;
using testing::PlainSelection;
using testing::PlainStep;
using testing::SelectionForm;
using testing::SelectionProblem;
using testing::TestAnalysis;

constexpr const char* kStopped =
    "A numerical error occurred during model building.  Model building has stopped.  The analysis will now maximize "
    "the "
    "likelihood of the model containing the effects selected prior to the numerical issue.";
constexpr const char* kNothingSelected =
    "No variables were selected in the model building procedure.  No results will be displayed.";

std::vector<PlainStep> ForwardSteps(const CCoxFit& fit) {
  std::vector<PlainStep> steps;
  for (auto k = static_cast<std::size_t>(fit.EffectsForcedInModel); k < fit.m_ForwardEffects.size(); ++k) {
    steps.push_back({true, fit.m_ForwardEffects[k], {fit.m_ForwardScores[k], 0, fit.m_ForwardPValues[k], false}});
  }
  return steps;
}

std::vector<PlainStep> BackwardSteps(const CCoxFit& fit) {
  std::vector<PlainStep> steps;
  for (std::size_t k = 0; k < fit.m_BackwardEffects.size(); ++k) {
    steps.push_back({false, fit.m_BackwardEffects[k], {fit.m_BackwardWalds[k], 0, fit.m_BackwardPValues[k], false}});
  }
  return steps;
}

std::vector<PlainStep> StepwiseSteps(const CCoxFit& fit) {
  std::vector<PlainStep> steps;
  auto entry = static_cast<std::size_t>(fit.EffectsForcedInModel);
  std::size_t removal = 0;
  for (std::size_t k = entry; k < fit.m_StepActions.size(); ++k) {
    if (fit.m_StepActions[k] == StepActions::Entry) {
      steps.push_back(
          {true, fit.m_StepEntered[entry], {fit.m_StepScores[entry], 0, fit.m_StepEntryPValues[entry], false}});
      ++entry;
    } else {
      steps.push_back(
          {false, fit.m_StepRemoved[removal], {fit.m_StepWalds[removal], 0, fit.m_StepRemovalPValues[removal], false}});
      ++removal;
    }
  }
  return steps;
}

struct Procedure {
  const char* What;
  int ModelBuilding;
  std::vector<PlainStep> (*Steps)(const CCoxFit&);
  PlainPath (PlainSelection::*Plain)();
};

constexpr Procedure kProcedures[] = {
    {"forward", ModelBuildings::Forward, ForwardSteps, &PlainSelection::Forward},
    {"backward", ModelBuildings::Backward, BackwardSteps, &PlainSelection::Backward},
    {"stepwise", ModelBuildings::Stepwise, StepwiseSteps, &PlainSelection::Stepwise},
};

// What the selections of a test went through, so that a test can tell that it met what it is about.
struct Met {
  int Selections = 0;
  int Entries = 0;
  int Removals = 0;
  int Failures = 0;
  int Cycles = 0;
  int Empty = 0;
  int ManyDf = 0;  // steps with more than one degree of freedom
};

std::string Described(const SelectionProblem& problem) {
  std::string text;
  for (const auto& effect : problem.Effects) text += effect.first + " ";
  text += "forced " + std::to_string(problem.Forced) + " enter " + std::to_string(problem.PToEnter) + " remove " +
          std::to_string(problem.PToRemove);
  for (const bool fixed : problem.Fixed) text += fixed ? " held" : " free";
  return text;
}

void ExpectSameSteps(const std::vector<PlainStep>& made, const std::vector<PlainStep>& plain) {
  ASSERT_EQ(made.size(), plain.size());
  for (std::size_t k = 0; k < made.size(); ++k) {
    EXPECT_EQ(made[k].Entry, plain[k].Entry) << "step " << k + 1;
    EXPECT_EQ(made[k].Effect, plain[k].Effect) << "step " << k + 1;
    const double chiSquare = plain[k].Test.ChiSquare;
    EXPECT_NEAR(made[k].Test.ChiSquare, chiSquare, 1e-8 * chiSquare) << "step " << k + 1;
    // A p value is 1 less a probability, so rounding has the size of 1.
    EXPECT_NEAR(made[k].Test.PValue, plain[k].Test.PValue, 1e-8 * plain[k].Test.PValue + 4e-16) << "step " << k + 1;
  }
}

// The reduced model stands in design order.
void ExpectFinalModel(const SelectionProblem& problem, TestAnalysis& analysis, std::vector<int> model) {
  std::sort(model.begin(), model.end());
  std::vector<std::string> names;
  for (const int effect : model) names.push_back(problem.Effects[static_cast<std::size_t>(effect - 1)].first);
  EXPECT_EQ(analysis.Settings().DesignEffects, names);
  PlainFit direct(problem, model);
  const std::vector<double>& expected = direct.Estimates();
  const std::vector<double>& estimates = analysis.Fit().m_BetaHistory.back();
  ASSERT_EQ(estimates.size(), expected.size());
  for (std::size_t j = 0; j < expected.size(); ++j) {
    EXPECT_NEAR(estimates[j], expected[j], 1e-10 * std::max(1.0, std::abs(expected[j]))) << "coefficient " << j;
  }
}

void Count(const PlainPath& plain, Met& met) {
  ++met.Selections;
  met.Failures += plain.Failed ? 1 : 0;
  met.Cycles += plain.Cycle ? 1 : 0;
  met.Empty += plain.Model.empty() ? 1 : 0;
  for (const PlainStep& step : plain.Steps) {
    (step.Entry ? met.Entries : met.Removals) += 1;
    met.ManyDf += step.Test.Df > 1 ? 1 : 0;
  }
}

void CompareWithDefinition(const SelectionProblem& problem, const Procedure& procedure, Met& met) {
  SCOPED_TRACE(std::string(procedure.What) + ": " + Described(problem));
  TestAnalysis analysis(problem.Columns);
  DefineSelection(problem, procedure.ModelBuilding, analysis);
  analysis.Analysis.ReadStartupFields(analysis.Fields, nullptr);
  ASSERT_EQ(analysis.Analysis.CheckInputsForCorrectness(nullptr), 0);
  // Without OK around it, so that the fit stays readable when nothing was selected.
  const int failed = analysis.RunUnchecked();
  const std::vector<PlainStep> made = procedure.Steps(analysis.Fit());
  const PlainPath plain = (PlainSelection(problem).*procedure.Plain)();
  Count(plain, met);
  ExpectSameSteps(made, plain.Steps);
  if (procedure.ModelBuilding != ModelBuildings::Backward) {
    EXPECT_EQ(analysis.Fit().EffectsForcedInModel, static_cast<int>(plain.Taken.size()));
  }
  std::vector<std::string> messages;
  if (plain.Failed) messages.emplace_back(kStopped);
  if (plain.Model.empty()) messages.emplace_back(kNothingSelected);
  EXPECT_EQ(analysis.Host.Messages(), messages);
  EXPECT_EQ(failed, plain.Model.empty() ? 1 : 0);
  if (!plain.Model.empty() && failed == 0) ExpectFinalModel(problem, analysis, plain.Model);
}

Met CompareRandom(const SelectionForm& form, unsigned seeds) {
  Met met;
  for (unsigned seed = 1; seed <= seeds; ++seed) {
    const SelectionProblem problem = testing::RandomSelection(form, seed);
    for (const Procedure& procedure : kProcedures) {
      SCOPED_TRACE(std::string(form.What) + ", seed " + std::to_string(seed));
      CompareWithDefinition(problem, procedure, met);
    }
  }
  return met;
}

class SelectionAgainstDefinition : public ::testing::TestWithParam<SelectionForm> {};

TEST_P(SelectionAgainstDefinition, TakesTheSamePath) {
  const Met met = CompareRandom(GetParam(), 150);
  EXPECT_EQ(met.Selections, 450);
  EXPECT_GT(met.Entries, 200);
  EXPECT_GT(met.Removals, 200);
  EXPECT_GT(met.ManyDf, 50);
  EXPECT_GT(met.Cycles, 20);
  EXPECT_GT(met.Empty, 10);
}

constexpr SelectionForm kForms[] = {
    {.What = "Breslow_sigma"},
    {.What = "Efron_reference", .Likelihood = Likelihoods::Efron, .Coding = Codings::Reference},
    {.What = "Efron_overparameterized", .Likelihood = Likelihoods::Efron, .Coding = Codings::Overparameterized},
    {.What = "Breslow_overparameterized_strata_weights",
     .Coding = Codings::Overparameterized,
     .Strata = true,
     .Weights = true},
    {.What = "Efron_sigma_strata_weights", .Likelihood = Likelihoods::Efron, .Strata = true, .Weights = true},
    {.What = "Breslow_reference_intervals", .Coding = Codings::Reference, .Intervals = true},
    {.What = "Efron_sigma_intervals_strata_weights",
     .Likelihood = Likelihoods::Efron,
     .Intervals = true,
     .Strata = true,
     .Weights = true},
    {.What = "Efron_overparameterized_intervals",
     .Likelihood = Likelihoods::Efron,
     .Coding = Codings::Overparameterized,
     .Intervals = true},
};

INSTANTIATE_TEST_SUITE_P(Forms, SelectionAgainstDefinition, ::testing::ValuesIn(kForms), [](const auto& form) {
  return std::string(form.param.What);
});

// Without the stop at a state that comes back this one goes on for ever.
TEST(SelectionAgainstDefinitionOfCycles, EndsWhenAnEarlierStateComesBack) {
  const SelectionForm form{.What = "recurring", .Likelihood = Likelihoods::Efron, .Coding = Codings::Overparameterized};
  const SelectionProblem problem = testing::RandomSelection(form, 234);
  Met met;
  CompareWithDefinition(problem, kProcedures[2], met);
  const PlainPath plain = PlainSelection(problem).Stepwise();
  EXPECT_TRUE(plain.Recurred);
  EXPECT_FALSE(plain.Cycle);
  EXPECT_LT(plain.Passes, 10);
}

TEST(SelectionAgainstDefinitionOnSmallData, TakesTheSamePathUnderTheDiscreteLikelihood) {
  for (const bool intervals : {false, true}) {
    for (const bool strata : {false, true}) {
      SelectionForm form{.What = "discrete",
                         .Likelihood = Likelihoods::Discrete,
                         .Intervals = intervals,
                         .Strata = strata,
                         .Cases = 40};
      CompareRandom(form, 40);
    }
  }
}

}  // namespace
}  // namespace orv
