// What the passes after a fit leave, and what is left when they cannot be done.
#include <gtest/gtest.h>

#include <cfenv>
#include <string>

#include "fit/TwelveCases.h"
#include "inference/BreslowBaseline.h"
#include "inference/HandWrittenFit.h"
#include "inference/InfluenceMeasures.h"
#include "inference/PostFit.h"

namespace orv {
namespace {

using testing::DefineForm;
using testing::ExpectNear;
using testing::ForRandomFits;
using testing::RandomForm;
using testing::RandomSurvivalColumns;
using testing::SortedCase;
using testing::SortedCasesOf;
using testing::TestAnalysis;
using testing::TestColumn;
using testing::TwelveCaseAnalysis;
using testing::WriteFit;
using Vector = std::vector<double>;

void PostFit(CCoxFit& fit, bool intervals) {
  if (intervals) {
    PostFitCountingProcess(fit);
  } else {
    PostFitSurvivalTime(fit);
  }
}

void ExpectNoBaseline(CCoxFit& fit) {
  FillEventRiskMoments(fit);
  EXPECT_FALSE(fit.m_BreslowValid);
  EXPECT_FALSE(fit.m_KaplanMeierValid);
  EXPECT_TRUE(fit.m_BreslowCurves.empty());
  EXPECT_TRUE(fit.m_KaplanMeierCurves.empty());
  EXPECT_TRUE(fit.m_EventRiskSums.empty());
  EXPECT_TRUE(fit.m_EventWeightSums.empty());
  EXPECT_TRUE(fit.m_EventRiskMoments.empty());
  EXPECT_TRUE(fit.m_MartingaleResiduals.empty());
  EXPECT_TRUE(fit.m_DevianceResiduals.empty());
}

// They may take as much memory as the cases.
TEST(PostFit, MomentsOfEventsComeWhenTheyAreAskedFor) {
  ForRandomFits([](CCoxFit& fit, const Vector&, const RandomForm& form) {
    PostFit(fit, form.Intervals);
    EXPECT_TRUE(fit.m_EventRiskMoments.empty());
    FillEventRiskMoments(fit);
    ASSERT_EQ(fit.m_EventRiskMoments.size(), fit.m_EventRiskSums.size());
    const auto moments = fit.m_EventRiskMoments;
    FillEventRiskMoments(fit);
    EXPECT_EQ(fit.m_EventRiskMoments, moments);
  });
}

TEST(PostFit, LinearPredictorIsThatOfTheFinalEstimates) {
  ForRandomFits([](CCoxFit& fit, const Vector& beta, const RandomForm& form) {
    PostFit(fit, form.Intervals);
    Vector expected;
    for (const SortedCase& one : SortedCasesOf(fit, beta)) {
      expected.push_back(one.x[0] * beta[0] + one.x[1] * beta[1]);
    }
    ExpectNear(fit.m_LinearPredictor, expected, 1e-15);
  });
}

// Covariates far from 0, such as years, with an estimate that is large beside them: exp(x'b) overflows, and there is no
// baseline at x = 0 that a double could hold. That is no reason to lose the fit.
TEST(PostFit, RisksThatOverflowLeaveNoBaseline) {
  for (const RandomForm& form : testing::RandomForms()) {
    SCOPED_TRACE(form.What);
    std::vector<TestColumn> columns = RandomSurvivalColumns(7, 40, form.MeetingStrata);
    for (double& value : columns[3].Values) value += 2000.0;
    TestAnalysis analysis(columns);
    DefineForm(analysis, form);
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Efron, {1.5, -0.4});
    EXPECT_NO_THROW(PostFit(fit, form.Intervals));
    ExpectNoBaseline(fit);
    EXPECT_EQ(fit.m_LinearPredictor.size(), 40U) << "x'b itself is in range";
    // Nothing of the failure stays: the next pass, at a vector that a double can bear, succeeds.
    fit.m_BetaHistory.push_back({0.0015, -0.4});
    PostFit(fit, form.Intervals);
    EXPECT_TRUE(fit.m_BreslowValid);
    EXPECT_EQ(fit.m_KaplanMeierValid, !form.Weights || form.Intervals);
    EXPECT_EQ(fit.m_MartingaleResiduals.size(), 40U);
  }
}

// All risks below the smallest double: every risk sum is 0.
TEST(PostFit, RisksThatVanishLeaveNoBaseline) {
  for (const bool intervals : {false, true}) {
    std::vector<TestColumn> columns = RandomSurvivalColumns(7, 40, false);
    for (double& value : columns[3].Values) value -= 2000.0;
    TestAnalysis analysis(columns);
    DefineForm(analysis, {"", intervals, false, false, false});
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {1.5, -0.4});
    EXPECT_NO_THROW(PostFit(fit, intervals));
    ExpectNoBaseline(fit);
  }
}

// A risk that vanishes has no reciprocal, which the product-limit form takes. Breslow's baseline has no need of it.
TEST(PostFit, ArithmeticOfTheProductLimitFormCannotSpoilTheRest) {
  TestAnalysis analysis({{"time", {1, 2, 3, 4}}, {"status", {1, 1, 1, 0}}, {"a", {0, -1000, 0, 0}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {1.0});
  PostFitSurvivalTime(fit);
  EXPECT_FALSE(fit.m_KaplanMeierValid);
  EXPECT_TRUE(fit.m_BreslowValid);
  ASSERT_EQ(fit.m_BreslowCurves.size(), 1U);
  ExpectNear(fit.m_BreslowCurves[0].Values, {0.0, 1.0 / 3.0, 1.0 / 3.0 + 0.5, 1.0 / 3.0 + 1.0}, 1e-14);
  EXPECT_EQ(fit.m_MartingaleResiduals[1], 1.0);
}

TEST(PostFit, FitWithoutAVectorHasNoBaseline) {
  for (const bool intervals : {false, true}) {
    TestAnalysis analysis(RandomSurvivalColumns(1, 20, false));
    DefineForm(analysis, {"", intervals, false, false, false});
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1, 0.2});
    PostFit(fit, intervals);
    ASSERT_TRUE(fit.m_BreslowValid);
    fit.m_BetaHistory.clear();
    PostFit(fit, intervals);
    ExpectNoBaseline(fit);
    EXPECT_TRUE(fit.m_LinearPredictor.empty());
  }
}

TEST(PostFit, ArithmeticOfTheCallerIsLeftAlone) {
  std::vector<TestColumn> columns = RandomSurvivalColumns(7, 40, false);
  for (double& value : columns[3].Values) value += 2000.0;
  TestAnalysis analysis(columns);
  DefineForm(analysis, {});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {1.5, -0.4});
  std::fenv_t saved;
  std::fegetenv(&saved);
  std::feclearexcept(FE_ALL_EXCEPT);
  std::fesetround(FE_UPWARD);
  PostFitSurvivalTime(fit);
  const int flags = std::fetestexcept(FE_OVERFLOW | FE_INVALID | FE_DIVBYZERO);
  const int rounding = std::fegetround();
  std::fesetenv(&saved);
  EXPECT_EQ(flags, 0);
  EXPECT_EQ(rounding, FE_UPWARD);
  EXPECT_FALSE(fit.m_BreslowValid);
}

TEST(PostFit, ModelWithoutColumnsHasABaseline) {
  TwelveCaseAnalysis analysis;
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxFit& fit = analysis.Fit();
  EXPECT_TRUE(fit.m_BreslowValid);
  ASSERT_EQ(fit.m_BreslowCurves.size(), 1U);
  EXPECT_EQ(fit.m_BreslowCurves[0].Values[1], 1.0 / 12.0) << "twelve at risk, one event";
  EXPECT_EQ(fit.m_LinearPredictor, Vector(12, 0.0));
}

// Everything that is derived from a fit, of a fit that ended early.
void ExpectHarmless(CCoxFit& fit) {
  PostFitSurvivalTime(fit);
  fit.ComputeRobustCovariance();
  fit.ComputeDfBeta();
  ComputeLikelihoodDisplacement(fit);
  ComputeStdErrorXBeta(fit);
  EXPECT_FALSE(ComputeLmax(fit));
  EXPECT_TRUE(fit.m_RobustCovariance.empty());
  EXPECT_TRUE(fit.m_DfBeta.empty());
  EXPECT_TRUE(fit.m_LikelihoodDisplacement.empty());
  EXPECT_TRUE(fit.m_StdErrorXBeta.empty());
  EXPECT_EQ(fit.RobustWaldStatistic(), 0.0);
  EXPECT_GT(fit.RobustScoreStatistic(), 0.0) << "it needs no fit";
  EXPECT_EQ(fit.m_BreslowValid, !fit.m_BetaHistory.empty());
}

TEST(PostFit, CancelledFitIsHarmless) {
  TwelveCaseAnalysis analysis({"a", "b"});
  CCoxFit& fit = analysis.PrepareFit();
  analysis.Host.Cancelled = true;
  fit.FitCurrentModel();
  ASSERT_EQ(fit.m_FitStatus, FitStatuses::Cancelled);
  ASSERT_TRUE(fit.m_Covariance.empty());
  ExpectHarmless(fit);
  EXPECT_EQ(fit.m_MartingaleResiduals.size(), 12U) << "residuals at the last vector";
}

TEST(PostFit, FitOutOfMemoryIsHarmless) {
  TwelveCaseAnalysis analysis({"a", "b"});
  int requests = 1;
  int outOfMemory = 0;
  for (int failing = 0; failing <= requests; ++failing) {
    SCOPED_TRACE(failing);
    CCoxFit& fit = analysis.PrepareFit();
    analysis.Host.FailAllocation(failing);
    fit.FitCurrentModel();
    if (failing == 0) requests = analysis.Host.Requests();
    analysis.Host.FailAllocation(0);
    if (fit.m_FitStatus != FitStatuses::OutOfMemory || !fit.m_Covariance.empty()) continue;
    ++outOfMemory;
    ExpectHarmless(fit);
  }
  EXPECT_GT(outOfMemory, 0);
}

}  // namespace
}  // namespace orv
