// Model building against the reference: every step of every selection with the tests of all its candidates, the final
// model, and the score of every subset.
//
// The models of the steps are fitted until the parameters change by 1e-10 of their size, and the step that follows
// brings them to the last digits. So the statistics agree to 12 of the 15 digits that the reference has; those at zero
// need no fit.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>
#include <vector>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "reference/ReferenceComparison.h"
#include "select/BestSubsets.h"
#include "select/EffectColumns.h"
#include "select/EffectHierarchy.h"
#include "select/EffectModel.h"
#include "select/EffectTests.h"
#include "select/SubsetSweep.h"

namespace orv::testing {

namespace {

using nlohmann::json;
using Texts = std::vector<std::string>;

constexpr double kStepDigits = 12.0;
constexpr double kZeroDigits = 13.0;  // of what is evaluated at zero

std::int16_t ModelBuildingOf(const json& selection) {
  const std::string method = selection.at("method");
  if (method == "forward") return ModelBuildings::Forward;
  return method == "backward" ? ModelBuildings::Backward : ModelBuildings::Stepwise;
}

int EffectNumber(const CCoxFit& fit, const std::string& name) {
  for (int effect = 1; effect <= static_cast<int>(fit.m_pData->EffectCount); ++effect) {
    if (EffectText(fit, effect) == name) return effect;
  }
  ADD_FAILURE() << "no effect " << name;
  return 1;
}

class SelectionReference : public ReferenceComparison {
 protected:
  void CompareTest(const std::string& quantity, double chiSquare, double p, const json& expected, const char* key) {
    const double size = expected.at(key);
    Compare(quantity + " chi-square", chiSquare, size, kStepDigits, std::max(size, 1e-3));
    const double expectedP = expected.at("p");
    Compare(quantity + " p value", p, expectedP, kPValueDigits, std::max(expectedP, kPValueResolution));
  }

  static void SetOptions(CoxSettings& settings, const json& selection) {
    settings.ModelBuilding = ModelBuildingOf(selection);
    if (!selection.at("p_to_enter").is_null()) settings.PToEnter = selection.at("p_to_enter");
    if (!selection.at("p_to_remove").is_null()) settings.PToRemove = selection.at("p_to_remove");
    settings.EffectsToForce = selection.at("effects_to_force");
    settings.FinalFitReady = false;
  }

  // The analysis with a selection, run.
  ReferenceRun Select(const json& selection) const {
    ReferenceRun run = RunReferenceCase(GetParam(), {});
    SetOptions(run.Analysis->m_Settings, selection);
    EXPECT_EQ(run.Analysis->RunCoxRegression(nullptr), 0);
    return run;
  }

  static Texts Selected(const json& selection) {
    Texts effects = selection.at("selected").get<Texts>();
    std::sort(effects.begin(), effects.end());
    return effects;
  }

  // The case with some of its effects alone, and the predictors in them.
  ReferenceCase WithEffects(const Texts& selected) const {
    ReferenceCase alone = GetParam();
    json& setup = alone.Content["setup"];
    json effects = json::array();
    std::string variables;
    for (const json& effect : setup.at("effects")) {
      if (std::find(selected.begin(), selected.end(), effect.get<std::string>()) == selected.end()) continue;
      effects.push_back(effect);
      variables += "*" + effect.get<std::string>() + "*";
    }
    setup["effects"] = effects;
    const auto isUsed = [&](const std::string& name) { return variables.find("*" + name + "*") != std::string::npos; };
    json covariates = json::array();
    for (const json& covariate : setup.at("covariates")) {
      if (isUsed(covariate)) covariates.push_back(covariate);
    }
    setup["covariates"] = covariates;
    json factors = json::array();
    for (const json& factor : setup.at("factors")) {
      if (isUsed(factor.at("variable"))) factors.push_back(factor);
    }
    setup["factors"] = factors;
    return alone;
  }

  void CompareForwardSteps(const CCoxFit& fit, const json& steps) {
    const auto forced = static_cast<std::size_t>(fit.EffectsForcedInModel);
    ASSERT_EQ(fit.m_ForwardEffects.size(), forced + steps.size());
    for (std::size_t step = 0; step < steps.size(); ++step) {
      EXPECT_EQ(fit.m_ForwardNames[forced + step], steps[step].at("effect_entered").get<std::string>());
      CompareTest("entry", fit.m_ForwardScores[forced + step], fit.m_ForwardPValues[forced + step], steps[step],
                  "score_chisq");
    }
    for (std::size_t k = 0; k < forced; ++k) EXPECT_EQ(fit.m_ForwardPValues[k], -1.0);
  }

  void CompareBackwardSteps(const CCoxFit& fit, const json& steps) {
    ASSERT_EQ(fit.m_BackwardEffects.size(), steps.size());
    for (std::size_t step = 0; step < steps.size(); ++step) {
      EXPECT_EQ(fit.m_BackwardNames[step], steps[step].at("effect_removed").get<std::string>());
      CompareTest("removal", fit.m_BackwardWalds[step], fit.m_BackwardPValues[step], steps[step], "wald");
    }
  }

  void CompareStepwiseSteps(const CCoxFit& fit, const json& steps) {
    const auto forced = static_cast<std::size_t>(fit.EffectsForcedInModel);
    ASSERT_EQ(fit.m_StepActions.size(), forced + steps.size());
    std::size_t entry = forced;
    std::size_t removal = 0;
    for (std::size_t step = 0; step < steps.size(); ++step) {
      const json& expected = steps[step];
      const bool enters = expected.contains("effect_entered");
      ASSERT_EQ(fit.m_StepActions[forced + step], enters ? StepActions::Entry : StepActions::Removal);
      if (enters) {
        EXPECT_EQ(fit.m_StepEnteredNames.at(entry), expected.at("effect_entered").get<std::string>());
        CompareTest("entry", fit.m_StepScores[entry], fit.m_StepEntryPValues[entry], expected, "score_chisq");
        ++entry;
      } else {
        EXPECT_EQ(fit.m_StepRemovedNames.at(removal), expected.at("effect_removed").get<std::string>());
        CompareTest("removal", fit.m_StepWalds[removal], fit.m_StepRemovalPValues[removal], expected, "wald");
        ++removal;
      }
    }
  }
};

TEST_P(SelectionReference, StepsAndEffectsSelectedAgree) {
  for (const json& selection : Content().at("selection")) {
    SCOPED_TRACE(selection.at("method").get<std::string>() + " " + selection.at("selected").dump());
    const ReferenceRun run = Select(selection);
    const CCoxFit& fit = *run.Analysis->m_pCoxFit;
    EXPECT_EQ(fit.EffectsForcedInModel,
              ModelBuildingOf(selection) == ModelBuildings::Backward ? 0 : selection.at("forced").get<int>());
    const json& steps = selection.at("steps");
    if (ModelBuildingOf(selection) == ModelBuildings::Forward) CompareForwardSteps(fit, steps);
    if (ModelBuildingOf(selection) == ModelBuildings::Backward) CompareBackwardSteps(fit, steps);
    if (ModelBuildingOf(selection) == ModelBuildings::Stepwise) CompareStepwiseSteps(fit, steps);
    Texts effects = run.Analysis->m_Settings.DesignEffects;
    std::sort(effects.begin(), effects.end());
    EXPECT_EQ(effects, Selected(selection));
  }
}

// The model that is left is that of an analysis with these effects alone.
TEST_P(SelectionReference, FinalModelIsThatOfTheEffectsSelected) {
  for (const json& selection : Content().at("selection")) {
    SCOPED_TRACE(selection.at("method").get<std::string>() + " " + selection.at("selected").dump());
    const ReferenceRun run = Select(selection);
    const ReferenceCase alone = WithEffects(selection.at("selected").get<Texts>());
    const ReferenceRun direct = RunReferenceCase(alone, {});
    const CCoxFit& a = *run.Analysis->m_pCoxFit;
    const CCoxFit& b = *direct.Analysis->m_pCoxFit;
    EXPECT_TRUE(a.m_Converged);
    ASSERT_EQ(a.m_BetaHistory.back().size(), b.m_BetaHistory.back().size());
    ASSERT_EQ(a.m_Covariance.size(), b.m_Covariance.size());
    for (std::size_t j = 0; j < a.m_Covariance.size(); ++j) {
      const double se = std::sqrt(b.m_Covariance[j][j]);
      Compare("final estimate", a.m_BetaHistory.back()[j], b.m_BetaHistory.back()[j], kZeroDigits, se);
      Compare("final variance", a.m_Covariance[j][j], b.m_Covariance[j][j], kZeroDigits, se * se);
    }
    EXPECT_EQ(run.Analysis->m_Settings.DesignEffects, direct.Analysis->m_Settings.DesignEffects);
  }
}

// ---- Candidates of each step
// -----------------------------------------------------------------------------------------

// Walks along the steps of a selection and compares the tests of all effects that could enter or leave at each. The
// last list of candidates is the one that ended the search.
class CandidateReference : public SelectionReference {
 protected:
  // The swept information after so many entries. Forced effects take part before the first one alone.
  static SweptInformation SweptAfter(CCoxFit& fit, EffectModel& model, std::size_t forced, std::size_t entered) {
    if (model.Effects().empty()) {
      fit.EvaluateScoreAtStart();
      return SweptInformation(fit);
    }
    model.Fit();
    std::vector<double> beta = model.FullEstimates();
    fit.EvaluateScoreAt(beta.data());
    SweptInformation swept(fit);
    const std::size_t first = entered == 0 ? 0 : forced;
    const std::size_t last = entered == 0 ? forced : entered;
    for (std::size_t k = first; k < last; ++k) swept.SweepIn(ColumnsOfEffect(*fit.m_pData, model.Effects()[k]));
    return swept;
  }

  void CompareEntries(CCoxFit& fit, const json& selection) {
    const EffectHierarchy hierarchy(fit);
    EffectModel model(fit);
    const std::size_t forced = selection.at("effects_to_force");
    for (std::size_t k = 1; k <= forced; ++k) model.Add(static_cast<int>(k));
    const json& candidates = selection.at("candidates");
    for (std::size_t step = 0; step < candidates.size(); ++step) {
      const SweptInformation swept = SweptAfter(fit, model, forced, step);
      Texts tested;
      for (int effect = 1; effect <= static_cast<int>(fit.m_pData->EffectCount); ++effect) {
        const SelectionCandidate one = BestToEnter(fit, swept, hierarchy, model.EffectBits(), {effect});
        if (one.Effect == 0) continue;
        const json* expected = CandidateNamed(candidates[step], EffectText(fit, effect));
        ASSERT_NE(expected, nullptr) << "step " << step + 1 << ", " << EffectText(fit, effect);
        EXPECT_EQ(one.Test.Df, expected->at("df").get<int>());
        CompareTest("candidate entry", one.Test.ChiSquare, one.Test.PValue, *expected, "chisq");
        tested.push_back(EffectText(fit, effect));
      }
      EXPECT_EQ(tested.size(), candidates[step].size()) << "step " << step + 1;
      const json& steps = selection.at("steps");
      if (step < steps.size()) model.Add(EffectNumber(fit, steps[step].at("effect_entered")));
    }
  }

  void CompareRemovals(CCoxFit& fit, const json& selection) {
    const EffectHierarchy hierarchy(fit);
    EffectModel model(fit);
    const int effects = static_cast<int>(fit.m_pData->EffectCount);
    for (int effect = 1; effect <= effects; ++effect) model.Add(effect);
    const RemovalTests tests(fit);
    const json& candidates = selection.at("candidates");
    for (std::size_t step = 0; step < candidates.size(); ++step) {
      model.Fit();
      std::size_t tested = 0;
      for (int effect = selection.at("effects_to_force").get<int>() + 1; effect <= effects; ++effect) {
        if (!model.Holds(effect) || hierarchy.IsHeldByAnother(effect, model.EffectBits())) continue;
        const SelectionTest test = tests.Test(effect);
        const json* expected = CandidateNamed(candidates[step], EffectText(fit, effect));
        ASSERT_NE(expected, nullptr) << "step " << step + 1 << ", " << EffectText(fit, effect);
        EXPECT_EQ(test.Df, expected->at("df").get<int>());
        CompareTest("candidate removal", test.ChiSquare, test.PValue, *expected, "wald");
        ++tested;
      }
      EXPECT_EQ(tested, candidates[step].size()) << "step " << step + 1;
      const json& steps = selection.at("steps");
      if (step < steps.size()) model.Remove(EffectNumber(fit, steps[step].at("effect_removed")));
    }
  }

 private:
  static const json* CandidateNamed(const json& candidates, const std::string& effect) {
    for (const json& candidate : candidates) {
      if (candidate.at("effect") == effect) return &candidate;
    }
    return nullptr;
  }
};

TEST_P(CandidateReference, TestsOfAllCandidatesAgree) {
  for (const json& selection : Content().at("selection")) {
    // Stepwise selections come without their candidates.
    if (!selection.contains("candidates")) continue;
    SCOPED_TRACE(selection.at("method").get<std::string>() + " " + selection.at("selected").dump());
    const ReferenceRun run = RunReferenceCase(GetParam(), {});
    SetOptions(run.Analysis->m_Settings, selection);
    CCoxFit& fit = *run.Analysis->m_pCoxFit;
    ModelBuildingOf(selection) == ModelBuildings::Forward ? CompareEntries(fit, selection)
                                                          : CompareRemovals(fit, selection);
  }
}

// ---- Best subsets
// ----------------------------------------------------------------------------------------------------

class BestSubsetsReference : public ReferenceComparison {
 protected:
  Texts NamesOf(const CCoxFit& fit, const std::vector<bool>& members) const {
    Texts names;
    for (std::size_t c = 0; c < members.size(); ++c) {
      if (members[c]) names.push_back(fit.m_pData->DesignColumns[c].EffectName);
    }
    return names;
  }
  void CompareRelative(const std::string& quantity, double value, double expected) {
    Compare(quantity, value, expected, kZeroDigits, std::abs(expected));
  }
};

TEST_P(BestSubsetsReference, ScoreAndInformationAtZeroAgree) {
  const ReferenceRun run = RunReferenceCase(GetParam(), {});
  CCoxFit& fit = *run.Analysis->m_pCoxFit;
  fit.EvaluateScoreAtStart();
  const json& expected = Content().at("best_subsets");
  const json& information = expected.at("information_at_zero");
  const json& score = expected.at("score_vector_at_zero");
  ASSERT_EQ(fit.m_ScoreVector.size(), score.size());
  std::size_t place = 0;
  for (std::size_t i = 0; i < score.size(); ++i) {
    const double size = information[i][i];
    Compare("score at zero", fit.m_ScoreVector[i], score[i], kZeroDigits, std::sqrt(size));
    for (std::size_t j = 0; j <= i; ++j) {
      const double scale = std::sqrt(size * information[j][j].get<double>());
      Compare("information at zero", fit.m_PackedInformation[place++], information[i][j], kZeroDigits, scale);
    }
  }
}

TEST_P(BestSubsetsReference, ScoreOfEverySubsetAgrees) {
  const ReferenceRun run = RunReferenceCase(GetParam(), {});
  CCoxFit& fit = *run.Analysis->m_pCoxFit;
  fit.EvaluateScoreAtStart();
  const json& expected = Content().at("best_subsets").at("all_subsets");
  ASSERT_EQ(expected.size(), (std::size_t{1} << fit.m_ScoreVector.size()) - 1);
  for (const json& subset : expected) {
    SubsetSweep sweep{SweptInformation(fit)};
    for (const int column : subset.at("columns")) sweep.Add(column - 1);
    CompareRelative("subset score", sweep.Score(), subset.at("score"));
  }
}

TEST_P(BestSubsetsReference, BestOfEverySizeAgreesOnBothRoutes) {
  for (void (*search)(CCoxFit&) : {BestSubsetsBounded, BestSubsetsAllModels}) {
    const ReferenceRun run = RunReferenceCase(GetParam(), {});
    CCoxFit& fit = *run.Analysis->m_pCoxFit;
    search(fit);
    const json& expected = Content().at("best_subsets").at("best_per_size");
    ASSERT_EQ(static_cast<std::size_t>(fit.m_SubsetCount), expected.size());
    for (std::size_t row = 0; row < expected.size(); ++row) {
      EXPECT_EQ(NamesOf(fit, fit.m_SubsetMembers[row]), expected[row].at("columns").get<Texts>());
      CompareRelative("best score", fit.m_SubsetScores[row], expected[row].at("score"));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, SelectionReference, ::testing::ValuesIn(CasesWith("selection")), CaseName);
INSTANTIATE_TEST_SUITE_P(Cases, CandidateReference, ::testing::ValuesIn(CasesWith("selection")), CaseName);
INSTANTIATE_TEST_SUITE_P(Cases, BestSubsetsReference, ::testing::ValuesIn(CasesWith("best_subsets")), CaseName);

}  // namespace

}  // namespace orv::testing
