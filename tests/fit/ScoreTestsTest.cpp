// Evaluations for the score tests of model building, and their statistic.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fit/CCoxFit.h"
#include "fit/NumericalFailure.h"
#include "fit/TimeDependentAnalysis.h"
#include "fit/TwelveCases.h"

namespace orv {
namespace {

using testing::CasesOf;
using testing::EvaluateReference;
using testing::ReferenceValue;
using testing::TestAnalysis;
using testing::TimeDependentAnalysis;
using testing::TwelveCaseAnalysis;
using testing::TwelveCases;
using Vector = std::vector<double>;

struct Routine {
  const char* What;
  bool Intervals;
  bool Strata;
  int Likelihood;
  void (*Evaluate)(CCoxFit& fit, const double* beta);
};

constexpr Routine kRoutines[] = {
    {"Breslow", false, false, Likelihoods::Breslow, [](CCoxFit& f, const double* b) { f.EvaluateSurvival(0, b); }},
    {"Efron", false, false, Likelihoods::Efron, [](CCoxFit& f, const double* b) { f.EvaluateSurvival(1, b); }},
    {"discrete", false, false, Likelihoods::Discrete,
     [](CCoxFit& f, const double* b) { f.EvaluateSurvivalDiscrete(b); }},
    {"Breslow, strata", false, true, Likelihoods::Breslow,
     [](CCoxFit& f, const double* b) { f.EvaluateSurvivalStrata(0, b); }},
    {"Efron, strata", false, true, Likelihoods::Efron,
     [](CCoxFit& f, const double* b) { f.EvaluateSurvivalStrata(1, b); }},
    {"discrete, strata", false, true, Likelihoods::Discrete,
     [](CCoxFit& f, const double* b) { f.EvaluateSurvivalDiscreteStrata(b); }},
    {"intervals, Breslow", true, false, Likelihoods::Breslow,
     [](CCoxFit& f, const double* b) { f.EvaluateCounting(0, b); }},
    {"intervals, Efron", true, false, Likelihoods::Efron,
     [](CCoxFit& f, const double* b) { f.EvaluateCounting(1, b); }},
    {"intervals, discrete", true, false, Likelihoods::Discrete,
     [](CCoxFit& f, const double* b) { f.EvaluateCountingDiscrete(b); }},
    {"intervals, Breslow, strata", true, true, Likelihoods::Breslow,
     [](CCoxFit& f, const double* b) { f.EvaluateCountingStrata(0, b); }},
    {"intervals, Efron, strata", true, true, Likelihoods::Efron,
     [](CCoxFit& f, const double* b) { f.EvaluateCountingStrata(1, b); }},
    {"intervals, discrete, strata", true, true, Likelihoods::Discrete,
     [](CCoxFit& f, const double* b) { f.EvaluateCountingDiscreteStrata(b); }},
};

TEST(ScoreTests, EvaluationIsThatOfTheInputTypeTheRuleAndTheStrata) {
  for (const Routine& routine : kRoutines) {
    std::vector<testing::TestColumn> columns = TwelveCases();
    columns.push_back({"start", {1, 2, 0, 1, 4, 0, 2, 5, 0, 3, 1, 6}});
    TestAnalysis analysis(columns);
    if (routine.Intervals) {
      analysis.Interval("start", "time");
    } else {
      analysis.Time({"time"});
    }
    analysis.Status("status").Covariates({"a", "b"}).DefaultDesign();
    if (routine.Strata) analysis.Strata("g", {1, 2});
    analysis.Settings().Likelihood = static_cast<std::int16_t>(routine.Likelihood);
    CCoxFit& fit = analysis.PrepareFit();
    for (Vector beta : {Vector{0.5, -0.75}, Vector{0.0, 0.0}}) {
      routine.Evaluate(fit, beta.data());
      const Vector score = fit.m_ScoreVector;
      const Vector information = fit.m_PackedInformation;
      fit.m_ScoreVector = fit.m_PackedInformation = {};
      if (beta[0] == 0.0) {
        fit.EvaluateScoreAtStart();
      } else {
        fit.EvaluateScoreAt(beta.data());
      }
      EXPECT_EQ(fit.m_ScoreVector, score) << routine.What;
      EXPECT_EQ(fit.m_PackedInformation, information) << routine.What;
      EXPECT_EQ(score.size(), 2U) << routine.What;
    }
  }
}

// A fixed parameter is an offset of the linear predictor and no part of the information.
TEST(ScoreTests, FixedParameterStaysAtItsStartValue) {
  for (const int likelihood : {Likelihoods::Breslow, Likelihoods::Efron}) {
    TwelveCaseAnalysis analysis({"a", "b", "w"});
    analysis.StartAt({9.0, 0.8, 9.0}).Fix({false, true, false});
    analysis.Settings().Likelihood = static_cast<std::int16_t>(likelihood);
    CCoxFit& fit = analysis.PrepareFit();
    const auto expect = [&](const testing::RealVector& at) {
      const ReferenceValue expected = EvaluateReference(CasesOf(analysis.Data()), at, likelihood == Likelihoods::Efron);
      ASSERT_EQ(fit.m_ScoreVector.size(), 3U);
      ASSERT_EQ(fit.m_PackedInformation.size(), 6U);
      for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(fit.m_ScoreVector[i], static_cast<double>(expected.U[i]), 1e-12) << i;
        for (std::size_t j = 0; j <= i; ++j) {
          const bool isFixed = i == 1 || j == 1;
          EXPECT_NEAR(fit.m_PackedInformation[i * (i + 1) / 2 + j],
                      isFixed ? 0.0 : static_cast<double>(expected.H[i][j]), 1e-12)
              << i << ' ' << j;
        }
      }
    };
    fit.EvaluateScoreAtStart();
    expect({0.0L, 0.8L, 0.0L});
    Vector beta = {0.5, -7.0, 0.25};
    fit.EvaluateScoreAt(beta.data());
    expect({0.5L, 0.8L, 0.25L});
    EXPECT_EQ(beta, (Vector{0.5, 0.8, 0.25})) << "the caller's entry is overwritten";
  }
}

// Start values without fixed parameters are a place to start the maximisation from, and nothing to the tests.
TEST(ScoreTests, StartValuesOfFreeParametersDoNotEnter) {
  TwelveCaseAnalysis analysis({"a", "b"});
  TwelveCaseAnalysis without({"a", "b"});
  analysis.StartAt({0.5, -0.25});
  analysis.PrepareFit().EvaluateScoreAtStart();
  without.PrepareFit().EvaluateScoreAtStart();
  EXPECT_EQ(analysis.Fit().m_ScoreVector, without.Fit().m_ScoreVector);
  EXPECT_EQ(analysis.Fit().m_PackedInformation, without.Fit().m_PackedInformation);
}

TEST(ScoreTests, OneColumnGivesOnePackedEntry) {
  TwelveCaseAnalysis analysis({"a"});
  CCoxFit& fit = analysis.PrepareFit();
  fit.m_PackedInformation.assign(10, 3.0);
  fit.m_ScoreVector.assign(4, 3.0);
  fit.EvaluateScoreAtStart();
  ASSERT_EQ(fit.m_PackedInformation.size(), 1U);
  ASSERT_EQ(fit.m_ScoreVector.size(), 1U);
  const ReferenceValue expected = EvaluateReference(CasesOf(analysis.Data()), {0.0L}, false);
  EXPECT_NEAR(fit.m_PackedInformation[0], static_cast<double>(expected.H[0][0]), 1e-12);
  EXPECT_NEAR(fit.m_ScoreVector[0], static_cast<double>(expected.U[0]), 1e-12);
}

// Columns outside the current model take part: the test is on what the model leaves out.
TEST(ScoreTests, AllColumnsTakePartWhateverTheCurrentModel) {
  TwelveCaseAnalysis analysis({"a", "b"});
  CCoxFit& fit = analysis.PrepareFit();
  fit.m_ActiveColumns = {1};
  fit.m_ActiveCount = 1;
  Vector beta = {0.0, -0.75};
  fit.EvaluateScoreAt(beta.data());
  const ReferenceValue expected = EvaluateReference(CasesOf(analysis.Data()), {0.0L, -0.75L}, false);
  ASSERT_EQ(fit.m_ScoreVector.size(), 2U);
  EXPECT_NEAR(fit.m_ScoreVector[0], static_cast<double>(expected.U[0]), 1e-12);
}

// Model building is closed to covariates that change with time.
TEST(ScoreTests, NothingHappensForTimeDependentCovariates) {
  TimeDependentAnalysis analysis(TwelveCases(), {"a"}, {"T_"}, {{"a", "a", {}}, {"a by time", "a", {1}}});
  CCoxFit& fit = analysis.PrepareTimeFit();
  fit.m_ScoreVector = {7.0};
  fit.m_PackedInformation = {8.0};
  Vector beta(analysis.Data().CoefficientCount, 0.25);
  const Vector before = beta;
  fit.EvaluateScoreAt(beta.data());
  fit.EvaluateScoreAtStart();
  EXPECT_EQ(beta, before);
  EXPECT_EQ(fit.m_ScoreVector, (Vector{7.0}));
  EXPECT_EQ(fit.m_PackedInformation, (Vector{8.0}));
}

TEST(ScoreTests, EvaluationWithoutMemoryLeavesNoInformation) {
  TwelveCaseAnalysis analysis({"a", "b"});
  analysis.StartAt({0.5, 0.0}).Fix({true, false});
  CCoxFit& fit = analysis.PrepareFit();
  const int before = analysis.Host.LiveBlocks();
  analysis.Host.FailAllocation(0);
  fit.EvaluateScoreAtStart();
  const int requests = analysis.Host.Requests();
  ASSERT_GT(requests, 0);
  for (int failing = 1; failing <= requests; ++failing) {
    analysis.Host.FailAllocation(failing);
    fit.EvaluateScoreAtStart();
    EXPECT_TRUE(fit.m_PackedInformation.empty()) << failing;
    EXPECT_EQ(analysis.Host.LiveBlocks(), before) << failing;
  }
}

TEST(ScoreTests, NumericalFailurePassesThrough) {
  TwelveCaseAnalysis analysis({"a", "b"});
  CCoxFit& fit = analysis.PrepareFit();
  Vector beta = {2000.0, 0.0};
  EXPECT_THROW(fit.EvaluateScoreAt(beta.data()), NumericalFailure);
}

TEST(ScoreQuadraticForm, SumsOverTheColumnsInTheSet) {
  const double score[] = {1.0, -2.0, 3.0, 0.5};
  const double packed[] = {2.0, 0.25, 3.0, -1.0, 0.5, 4.0, 0.125, -0.75, 1.5, 5.0};
  const auto at = [&](std::size_t i, std::size_t j) {
    return i >= j ? packed[i * (i + 1) / 2 + j] : packed[j * (j + 1) / 2 + i];
  };
  for (unsigned set = 0; set < 16; ++set) {
    std::vector<bool> inModel(4);
    for (std::size_t i = 0; i < 4; ++i) inModel[i] = (set >> i & 1U) != 0;
    double expected = 0.0;
    for (std::size_t i = 0; i < 4; ++i) {
      for (std::size_t j = 0; j < 4; ++j) {
        if (inModel[i] && inModel[j]) expected += score[i] * at(i, j) * score[j];
      }
    }
    EXPECT_DOUBLE_EQ(CCoxFit::ScoreQuadraticForm(score, packed, inModel, 4), expected) << "set " << set;
  }
}

TEST(ScoreQuadraticForm, EmptySetGivesZero) {
  const double score[] = {1.0, -2.0};
  const double packed[] = {2.0, 0.25, 3.0};
  EXPECT_EQ(CCoxFit::ScoreQuadraticForm(score, packed, {false, false}, 2), 0.0);
  EXPECT_EQ(CCoxFit::ScoreQuadraticForm(nullptr, nullptr, {}, 0), 0.0) << "no columns at all";
}

}  // namespace
}  // namespace orv
