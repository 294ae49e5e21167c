// The Newton frame, driven by likelihoods that a test writes down: which vectors it tries, what it keeps and when it
// stops. The arithmetic of each step is done by hand.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "fit/CCoxFit.h"
#include "fit/PartialLikelihood.h"
#include "host/TextIds.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::TestAnalysis;
using Vector = std::vector<double>;

// What one pass answers: the likelihood, the score and the upper triangle of the information.
struct Answer {
  double L;
  Vector U;
  DenseMatrix H;
};

// Answers passes one after the other and keeps the vectors that it was asked about; an empty vector stands for the
// null pass. More passes than answers fail the test.
class ScriptedLikelihood : public PartialLikelihood {
 public:
  explicit ScriptedLikelihood(std::vector<Answer> answers) : m_answers(std::move(answers)) {}

  bool Failed() const override { return MemoryIsOut; }
  double Evaluate(const double* beta, double* U, double** H) override {
    if (Asked.size() >= m_answers.size()) {
      ADD_FAILURE() << "a pass more than expected";
      Asked.emplace_back();
      return 0.0;
    }
    const Answer& answer = m_answers[Asked.size()];
    const std::size_t p = answer.U.size();
    Asked.push_back(beta == nullptr ? Vector{} : Vector(beta, beta + p));
    for (std::size_t j = 0; j < p; ++j) {
      U[j] = answer.U[j];
      for (std::size_t l = j; l < p; ++l) H[j][l] = answer.H[j][l];
    }
    return answer.L;
  }

  bool MemoryIsOut = false;
  std::vector<Vector> Asked;

 private:
  std::vector<Answer> m_answers;
};

Answer One(double L, double U, double H) {
  return {L, {U}, {{H}}};
}

// A fit of one or two parameters whose cases no pass looks at.
class MaximizeTest : public ::testing::Test {
 protected:
  MaximizeTest() : analysis({{"time", {1, 2, 3}}, {"status", {1, 1, 1}}, {"a", {1, 4, 2}}, {"b", {0, 1, 1}}}) {
    analysis.Time({"time"}).Status("status");
    analysis.Settings().ConvergenceType = ConvergenceTypes::AbsoluteLikelihood;
    analysis.Settings().ConvergenceExponent = 3;
  }
  CCoxFit& Fit(const std::vector<std::string>& covariates) {
    analysis.Covariates(covariates).DefaultDesign();
    return analysis.PrepareFit();
  }
  TestAnalysis analysis;
};

TEST_F(MaximizeTest, ConvergesOnTheVectorLastEvaluated) {
  CCoxFit& fit = Fit({"a"});
  ScriptedLikelihood pass({One(-10.0, 2.0, 2.0), One(-9.0, 1.0, 4.0), One(-8.9999, 0.5, 8.0)});
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::Converged);
  EXPECT_TRUE(fit.m_Converged);
  EXPECT_EQ(pass.Asked, (std::vector<Vector>{{}, {1.0}, {1.25}}));
  EXPECT_EQ(fit.m_LogLikHistory, (Vector{-10.0, -9.0, -8.9999}));
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{0.0}, {1.0}, {1.25}}));
  EXPECT_EQ(fit.m_NullLogLik, -10.0);
  EXPECT_EQ(fit.m_ScoreStatistic, 2.0);
  EXPECT_EQ(fit.m_Information, (DenseMatrix{{8.0}}));
  EXPECT_EQ(fit.m_Covariance, (DenseMatrix{{0.125}}));
  EXPECT_EQ(fit.m_InformationRank, 1);
  EXPECT_NEAR(fit.m_NullProjection[0][0], 1.0, 1e-15);
}

TEST_F(MaximizeTest, ZeroStartTakesOnePassBeforeTheLoop) {
  for (const Vector& start : {Vector{}, Vector{0.0}, Vector{-0.0}}) {
    if (!start.empty()) analysis.StartAt(start);
    analysis.Settings().CovariateVariables.clear();
    CCoxFit& fit = Fit({"a"});
    fit.m_MaxIterations = 1;
    ScriptedLikelihood pass({One(-10.0, 2.0, 2.0), One(-9.0, 1.0, 4.0)});
    fit.Maximize(pass, {});
    EXPECT_EQ(pass.Asked, (std::vector<Vector>{{}, {1.0}}));
  }
}

TEST_F(MaximizeTest, OtherStartsTakeAPassAtZeroAndOneAtTheStart) {
  analysis.StartAt({5.0});
  CCoxFit& fit = Fit({"a"});
  ScriptedLikelihood pass({One(-10.0, 2.0, 2.0), One(-7.0, -4.0, 2.0), One(-6.0, 0.5, 1.0), One(-6.0, 0.0, 1.0)});
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::Converged);
  EXPECT_EQ(pass.Asked, (std::vector<Vector>{{}, {5.0}, {3.0}, {3.5}}));
  EXPECT_EQ(fit.m_NullLogLik, -10.0) << "belongs to zero";
  EXPECT_EQ(fit.m_ScoreStatistic, 2.0) << "belongs to zero";
  EXPECT_EQ(fit.m_LogLikHistory, (Vector{-7.0, -6.0, -6.0})) << "the pass at zero is not in the history";
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{5.0}, {3.0}, {3.5}}));
}

TEST_F(MaximizeTest, RejectedStepGoesToTheMeanOfTheTwoLatestVectors) {
  CCoxFit& fit = Fit({"a"});
  ScriptedLikelihood pass({One(-10.0, 8.0, 2.0),   // step to 4
                           One(-12.0, 99.0, 1.0),  // rejected: (0 + 4) / 2
                           One(-9.0, 1.0, 4.0),    // accepted: step of 1/4
                           One(-9.0, 0.0, 16.0)});
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::Converged);
  EXPECT_EQ(pass.Asked, (std::vector<Vector>{{}, {4.0}, {2.0}, {2.25}}));
  EXPECT_EQ(fit.m_LogLikHistory, (Vector{-10.0, -12.0, -9.0, -9.0}));
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{0.0}, {4.0}, {2.0}, {2.25}}));
}

// The history keeps rejected vectors, so the second trial point lies between the vector rejected first and the half
// step, the third between the second and the first trial point, and so on.
TEST_F(MaximizeTest, TrialPointsMoveOnBetweenTheTwoLatestEntries) {
  CCoxFit& fit = Fit({"a"});
  ScriptedLikelihood pass({One(-10.0, 16.0, 2.0),  // step to 8
                           One(-20.0, 99.0, 1.0),  // rejected: (0 + 8) / 2
                           One(-15.0, 99.0, 1.0),  // rejected: (8 + 4) / 2, not a quarter step
                           One(-14.0, 99.0, 1.0),  // rejected: (4 + 6) / 2
                           One(-10.5, 99.0, 1.0),  // rejected, though better than those before: (6 + 5) / 2
                           One(-9.0, 1.0, 2.0),    // accepted
                           One(-9.0, 0.0, 2.0)});
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::Converged);
  EXPECT_EQ(pass.Asked, (std::vector<Vector>{{}, {8.0}, {4.0}, {6.0}, {5.0}, {5.5}, {6.0}}));
  EXPECT_EQ(fit.m_LogLikHistory, (Vector{-10.0, -20.0, -15.0, -14.0, -10.5, -9.0, -9.0}));
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{0.0}, {8.0}, {4.0}, {6.0}, {5.0}, {5.5}, {6.0}}));
}

TEST_F(MaximizeTest, StepIsMeasuredByTheLastAcceptedVector) {
  CCoxFit& fit = Fit({"a"});
  fit.m_MaxIterations = 4;
  ScriptedLikelihood pass({One(-10.0, 2.0, 2.0),   // step to 1
                           One(-8.0, 8.0, 2.0),    // accepted: step to 5
                           One(-9.0, 99.0, 1.0),   // better than the start but not than 1: rejected, (1 + 5) / 2
                           One(-8.5, 99.0, 1.0),   // better than the rejected one but not than 1: rejected, (5 + 3) / 2
                           One(-7.0, 0.0, 1.0)});  // accepted
  fit.Maximize(pass, {});
  EXPECT_EQ(pass.Asked, (std::vector<Vector>{{}, {1.0}, {5.0}, {3.0}, {4.0}}));
}

TEST_F(MaximizeTest, EqualLikelihoodIsNoRejection) {
  CCoxFit& fit = Fit({"a"});
  fit.m_ConvergenceTolerance = -1.0;  // nothing converges
  fit.m_MaxIterations = 2;
  ScriptedLikelihood pass({One(-10.0, 2.0, 2.0), One(-10.0, 3.0, 1.0), One(-10.0, 3.0, 1.0)});
  fit.Maximize(pass, {});
  EXPECT_EQ(pass.Asked, (std::vector<Vector>{{}, {1.0}, {4.0}}));
}

// The likelihood before the accepted one is the rejected one, 5 below, although the accepted one gains next to nothing.
TEST_F(MaximizeTest, RejectedLikelihoodCountsInTheConvergenceTest) {
  CCoxFit& fit = Fit({"a"});
  ScriptedLikelihood pass({One(-10.0, 8.0, 2.0), One(-15.0, 0.0, 1.0), One(-10.0, 2.0, 2.0), One(-10.0, 0.0, 2.0)});
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::Converged);
  EXPECT_EQ(fit.m_LogLikHistory, (Vector{-10.0, -15.0, -10.0, -10.0}));
}

TEST_F(MaximizeTest, RejectedStepIsNoConvergence) {
  CCoxFit& fit = Fit({"a"});
  fit.m_MaxIterations = 3;
  // The rejected values differ by less than the tolerance; only an accepted one is tested.
  ScriptedLikelihood pass(
      {One(-10.0, 8.0, 2.0), One(-10.0001, 0.0, 1.0), One(-10.0001, 0.0, 1.0), One(-10.0001, 0.0, 1.0)});
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::IterationLimit);
  EXPECT_FALSE(fit.m_Converged);
}

TEST_F(MaximizeTest, LimitAfterARejectedStepKeepsTheRejectedPoint) {
  CCoxFit& fit = Fit({"a", "b"});
  fit.m_MaxIterations = 1;
  ScriptedLikelihood pass(
      {{-10.0, {2.0, 4.0}, {{2.0, 0.0}, {0.0, 2.0}}}, {-11.0, {9.0, 9.0}, {{4.0, 2.0}, {0.0, 3.0}}}});
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::IterationLimit);
  EXPECT_FALSE(fit.m_Converged);
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{0.0, 0.0}, {1.0, 2.0}})) << "the next trial point is not the estimate";
  EXPECT_EQ(fit.m_LogLikHistory, (Vector{-10.0, -11.0}));
  // The information at the rejected point is {{4, 2}, {2, 3}}, its inverse {{3, -2}, {-2, 4}} / 8.
  const DenseMatrix covariance = {{0.375, -0.25}, {-0.25, 0.5}};
  const DenseMatrix information = {{4.0, 2.0}, {2.0, 3.0}};
  for (std::size_t i = 0; i < 2; ++i) {
    for (std::size_t j = 0; j < 2; ++j) {
      EXPECT_NEAR(fit.m_Covariance[i][j], covariance[i][j], 1e-15);
      EXPECT_NEAR(fit.m_Information[i][j], information[i][j], 1e-14);
    }
  }
}

TEST_F(MaximizeTest, LimitAfterAnAcceptedStepKeepsTheLastEvaluatedPoint) {
  CCoxFit& fit = Fit({"a", "b"});
  fit.m_MaxIterations = 1;
  ScriptedLikelihood pass(
      {{-10.0, {2.0, 4.0}, {{2.0, 0.0}, {0.0, 2.0}}}, {-9.0, {8.0, 8.0}, {{4.0, 2.0}, {0.0, 3.0}}}});
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::IterationLimit);
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{0.0, 0.0}, {1.0, 2.0}}));
  EXPECT_NEAR(fit.m_Covariance[0][0], 0.375, 1e-15);
  EXPECT_NEAR(fit.m_Covariance[0][1], -0.25, 1e-15);
  EXPECT_NEAR(fit.m_Covariance[1][1], 0.5, 1e-15);
}

TEST_F(MaximizeTest, WithoutIterationsTheStartIsTheEstimate) {
  analysis.StartAt({5.0});
  CCoxFit& fit = Fit({"a"});
  fit.m_MaxIterations = 0;
  ScriptedLikelihood pass({One(-10.0, 2.0, 2.0), One(-7.0, -4.0, 2.0)});
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::IterationLimit);
  EXPECT_FALSE(fit.m_Converged);
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{5.0}}));
  EXPECT_EQ(fit.m_LogLikHistory, (Vector{-7.0}));
  EXPECT_EQ(fit.m_Covariance, (DenseMatrix{{0.5}}));
  ASSERT_EQ(analysis.Host.Bars.size(), 1U);
  EXPECT_EQ(analysis.Host.Bars[0].Total, 2) << "a bar has at least two steps";
}

TEST_F(MaximizeTest, ConvergenceAtTheLimitIsConvergence) {
  CCoxFit& fit = Fit({"a"});
  fit.m_MaxIterations = 1;
  ScriptedLikelihood pass({One(-10.0, 2.0, 2.0), One(-9.9999, 1.0, 4.0)});
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::Converged);
  EXPECT_TRUE(fit.m_Converged);
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{0.0}, {1.0}}));
}

TEST_F(MaximizeTest, SingularInformationDropsTheLaterColumn) {
  CCoxFit& fit = Fit({"a", "b"});
  // The second column is twice the first.
  const DenseMatrix H = {{2.0, 4.0}, {0.0, 8.0}};
  ScriptedLikelihood pass({{-10.0, {2.0, 4.0}, H}, {-9.0, {1.0, 2.0}, H}, {-9.0, {0.0, 0.0}, H}});
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::Converged);
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{0.0, 0.0}, {1.0, 0.0}, {1.5, 0.0}}));
  EXPECT_EQ(fit.m_ScoreStatistic, 2.0);
  EXPECT_EQ(fit.m_InformationRank, 1);
  EXPECT_FALSE(analysis.Data().DesignColumns[0].Dropped);
  EXPECT_TRUE(analysis.Data().DesignColumns[1].Dropped);
  EXPECT_EQ(fit.m_Covariance, (DenseMatrix{{0.5, 0.0}, {0.0, 0.0}}));
  EXPECT_EQ(fit.m_Information, (DenseMatrix{{2.0, 0.0}, {0.0, 0.0}})) << "zero on dropped rows and columns";
}

TEST_F(MaximizeTest, FixedParameterKeepsItsStartValue) {
  analysis.StartAt({3.0, 0.0}).Fix({true, false});
  CCoxFit& fit = Fit({"a", "b"});
  const DenseMatrix H = {{2.0, 1.0}, {0.0, 4.0}};
  ScriptedLikelihood pass(
      {{-10.0, {2.0, 8.0}, H}, {-9.0, {5.0, 4.0}, H}, {-8.0, {5.0, 2.0}, H}, {-8.0, {5.0, 0.0}, H}});
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::Converged);
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{3.0, 0.0}, {3.0, 1.0}, {3.0, 1.5}}));
  EXPECT_EQ(fit.m_ScoreStatistic, 16.0) << "of the free parameter";
  EXPECT_TRUE(analysis.Data().DesignColumns[0].Dropped);
  EXPECT_EQ(fit.m_Covariance, (DenseMatrix{{0.0, 0.0}, {0.0, 0.25}}));
  EXPECT_EQ(fit.m_Information, (DenseMatrix{{0.0, 0.0}, {0.0, 4.0}}));
}

TEST_F(MaximizeTest, DroppedMarksAreThoseOfTheLastFactorisation) {
  CCoxFit& fit = Fit({"a", "b"});
  const DenseMatrix singular = {{2.0, 4.0}, {0.0, 8.0}};
  const DenseMatrix regular = {{2.0, 0.0}, {0.0, 8.0}};
  ScriptedLikelihood pass({{-10.0, {2.0, 4.0}, singular}, {-9.0, {2.0, 8.0}, regular}, {-9.0, {0.0, 0.0}, regular}});
  fit.Maximize(pass, {});
  EXPECT_FALSE(analysis.Data().DesignColumns[1].Dropped);
  EXPECT_EQ(fit.m_InformationRank, 2);
}

// ---- Without columns ----------------------------------------------------------------------------------------------

TEST_F(MaximizeTest, WithoutColumnsTheLoopIsSkippedWhereTheRoutineSaysSo) {
  CCoxFit& fit = Fit({});
  ScriptedLikelihood pass(std::vector<Answer>{{-10.0, {}, {}}});
  fit.Maximize(pass, {.SkipsLoopWithoutColumns = true});
  EXPECT_TRUE(fit.m_Converged);
  EXPECT_EQ(pass.Asked.size(), 1U);
  EXPECT_EQ(fit.m_LogLikHistory, (Vector{-10.0}));
  EXPECT_TRUE(fit.m_Covariance.empty());
}

TEST_F(MaximizeTest, WithoutColumnsOtherRoutinesLoopOnAConstantLikelihood) {
  for (const int type : {1, 2, 3, 4}) {
    analysis.Settings().ConvergenceType = type;
    CCoxFit& fit = Fit({});
    ScriptedLikelihood pass(std::vector<Answer>{{-10.0, {}, {}}, {-10.0, {}, {}}});
    EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::Converged) << type;
    EXPECT_TRUE(fit.m_Converged) << type;
    EXPECT_EQ(fit.m_LogLikHistory, (Vector{-10.0, -10.0})) << type;
    EXPECT_EQ(fit.m_BetaHistory.size(), 2U) << type;
  }
}

// ---- The progress bar ---------------------------------------------------------------------------------------------

TEST_F(MaximizeTest, BarCountsTheIterations) {
  CCoxFit& fit = Fit({"a"});
  fit.m_MaxIterations = 7;
  ScriptedLikelihood pass({One(-10.0, 2.0, 2.0), One(-9.0, 1.0, 4.0), One(-8.0, 1.0, 4.0), One(-8.0, 0.0, 4.0)});
  fit.Maximize(pass, {});
  ASSERT_EQ(analysis.Host.Bars.size(), 1U);
  const testing::BarRecord& bar = analysis.Host.Bars[0];
  EXPECT_EQ(bar.Title, "Maximizing likelihood");
  EXPECT_EQ(bar.Total, 7);
  EXPECT_TRUE(bar.Shown);
  EXPECT_FALSE(bar.Open);
  EXPECT_EQ(bar.Positions, (std::vector<int>{2, 3, 4}));
}

TEST_F(MaximizeTest, NoBarDuringModelBuilding) {
  for (const int building : {2, 3, 4, 5}) {
    CCoxFit& fit = Fit({"a"});
    analysis.Settings().ModelBuilding = static_cast<std::int16_t>(building);
    fit.m_ActiveCount = 1;
    ScriptedLikelihood pass({One(-10.0, 2.0, 2.0), One(-10.0, 0.0, 4.0)});
    fit.Maximize(pass, {});
    EXPECT_TRUE(analysis.Host.Bars.empty()) << building;
    analysis.Settings().ModelBuilding = ModelBuildings::AllEffects;
    analysis.Settings().CovariateVariables.clear();
  }
}

TEST_F(MaximizeTest, CancelAtTheBarEndsARoutineThatAsks) {
  CCoxFit& fit = Fit({"a"});
  analysis.Host.CancelBarAt = 3;
  ScriptedLikelihood pass({One(-10.0, 2.0, 2.0), One(-9.0, 1.0, 4.0), One(-8.0, 1.0, 4.0)});
  EXPECT_EQ(fit.Maximize(pass, {.HasCancelQuery = true}), FitStatuses::Cancelled);
  EXPECT_FALSE(fit.m_Converged);
  EXPECT_EQ(fit.m_LogLikHistory, (Vector{-10.0, -9.0, -8.0}));
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{0.0}, {1.0}, {1.25}, {1.5}})) << "the histories stay as they are";
  EXPECT_TRUE(fit.m_Information.empty());
  EXPECT_TRUE(fit.m_Covariance.empty());
  EXPECT_FALSE(analysis.Host.Bars[0].Open);
  EXPECT_EQ(analysis.Host.LiveBlocks(), 0);
}

TEST_F(MaximizeTest, CancelTestAsksTheHostToo) {
  for (const bool external : {false, true}) {
    analysis.Settings().CovariateVariables.clear();
    CCoxFit& fit = Fit({"a"});
    analysis.Host.Cancelled = !external;
    analysis.Host.External = external;
    ScriptedLikelihood pass({One(-10.0, 2.0, 2.0), One(-9.0, 1.0, 4.0)});
    EXPECT_EQ(fit.Maximize(pass, {.HasCancelQuery = true}), FitStatuses::Cancelled) << external;
    analysis.Host.Cancelled = analysis.Host.External = false;
  }
}

TEST_F(MaximizeTest, RoutineWithoutCancelQueryRunsOn) {
  CCoxFit& fit = Fit({"a"});
  analysis.Host.CancelBarAt = 2;
  analysis.Host.Cancelled = analysis.Host.External = true;
  ScriptedLikelihood pass({One(-10.0, 2.0, 2.0), One(-9.0, 1.0, 4.0), One(-9.0, 0.0, 4.0)});
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::Converged);
  analysis.Host.Cancelled = analysis.Host.External = false;
}

TEST_F(MaximizeTest, WithoutWorkingStoreNothingIsTried) {
  CCoxFit& fit = Fit({"a"});
  ScriptedLikelihood pass(std::vector<Answer>{});
  pass.MemoryIsOut = true;
  EXPECT_EQ(fit.Maximize(pass, {}), FitStatuses::OutOfMemory);
  EXPECT_TRUE(fit.m_LogLikHistory.empty());
  EXPECT_TRUE(fit.m_BetaHistory.empty());
  EXPECT_FALSE(analysis.Host.Bars[0].Open);
  EXPECT_EQ(analysis.Host.LiveBlocks(), 0);
}

}  // namespace
}  // namespace orv
