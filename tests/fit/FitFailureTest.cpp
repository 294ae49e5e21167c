// The ways in which a fit ends other than by convergence, and what each leaves behind.
#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/CCoxPH.h"
#include "fit/CCoxFit.h"
#include "fit/FailureTexts.h"
#include "fit/NumericalFailure.h"
#include "fit/TwelveCases.h"

namespace orv {
namespace {

using testing::AllFinite;
using testing::CasesOf;
using testing::EvaluateReference;
using testing::InvertReference;
using testing::kLastIterationUsed;
using testing::kNoResults;
using testing::RealMatrix;
using testing::ReferenceCase;
using testing::ReferenceValue;
using testing::TestAnalysis;
using testing::TwelveCaseAnalysis;
using Vector = std::vector<double>;
using Texts = std::vector<std::string>;

// Start values of covariate a on the standardised scale. At the first the information is next to nothing, so the step
// leads to exponentials that overflow; at the second they overflow at once.
constexpr double kStepOverflows = 15.0;
constexpr double kStartOverflows = 800.0;
// From here the steps are rejected to the end.
constexpr double kStepsRejected = 6.0;

void Apply(bool efron, bool strata, TestAnalysis& analysis) {
  analysis.Settings().Likelihood = efron ? Likelihoods::Efron : Likelihoods::Breslow;
  if (strata) analysis.Strata("g", {1, 2});
}

// ---- A failure with an iteration to fall back on --------------------------------------------------------------------

TEST(FitFailure, OverflowAfterTheStartGivesTheResultsOfTheStart) {
  for (const bool efron : {false, true}) {
    for (const bool strata : {false, true}) {
      const std::string what = std::string(efron ? "Efron" : "Breslow") + (strata ? ", strata" : "");
      TwelveCaseAnalysis analysis({"a"});
      Apply(efron, strata, analysis);
      analysis.StartAt({strata ? 25.0 : kStepOverflows});
      ASSERT_EQ(analysis.Run(), 0) << what << ": the run goes on";
      EXPECT_EQ(analysis.Host.Messages(), Texts{kLastIterationUsed}) << what;
      const CCoxFit& fit = analysis.Fit();
      EXPECT_FALSE(fit.m_Converged) << what;
      EXPECT_EQ(fit.m_FitStatus, 0) << what;
      ASSERT_EQ(fit.m_BetaHistory.size(), 1U) << what;
      ASSERT_EQ(fit.m_LogLikHistory.size(), 1U) << what;
      const double start = analysis.Settings().StartValues[0] / analysis.Data().DesignColumns[0].StdDev;
      EXPECT_DOUBLE_EQ(fit.m_BetaHistory[0][0], start) << what;

      const ReferenceValue value = EvaluateReference(CasesOf(analysis.Data()), {start}, efron);
      const auto L = static_cast<double>(value.L);
      const auto H = static_cast<double>(value.H[0][0]);
      EXPECT_NEAR(fit.m_LogLikHistory[0], L, 1e-12 * std::abs(L)) << what;
      // The information is the small difference of two sums of order one.
      EXPECT_NEAR(fit.m_Information[0][0], H, 1e-14) << what;
      EXPECT_DOUBLE_EQ(fit.m_Covariance[0][0] * fit.m_Information[0][0], 1.0) << what;
      const ReferenceValue atZero = EvaluateReference(CasesOf(analysis.Data()), {0.0L}, efron);
      EXPECT_NEAR(fit.m_NullLogLik, static_cast<double>(atZero.L), 1e-12) << what;
      EXPECT_FALSE(analysis.Host.Bars.back().Open) << what;
      EXPECT_EQ(analysis.Host.LiveBlocks(), 0) << what;
    }
  }
}

TEST(FitFailure, FallBackTakesTheInformationOfAllParametersAtTheVectorBefore) {
  TwelveCaseAnalysis analysis({"a", "b"});
  analysis.StartAt({0.5, -0.25});
  CCoxFit& fit = analysis.PrepareFit();
  // The third pass fails: the vectors of the start and of the first step have served one.
  analysis.Host.OnBarMove = [](int position) {
    if (position == 3) throw std::runtime_error("the bar is gone");
  };
  fit.FitCurrentModel();
  EXPECT_EQ(analysis.Host.Messages(), Texts{kLastIterationUsed}) << "any exception is a failure of the fit";
  EXPECT_FALSE(fit.m_Converged);
  EXPECT_EQ(fit.m_FitStatus, 0);
  ASSERT_EQ(fit.m_BetaHistory.size(), 3U) << "the vector of the last step is gone";
  ASSERT_EQ(fit.m_LogLikHistory.size(), 3U);
  const Vector& beta = fit.m_BetaHistory.back();
  const ReferenceValue value = EvaluateReference(CasesOf(analysis.Data()), {beta[0], beta[1]}, false);
  EXPECT_NEAR(fit.m_LogLikHistory.back(), static_cast<double>(value.L), 1e-12);
  const RealMatrix covariance = InvertReference(value.H);
  for (std::size_t j = 0; j < 2; ++j) {
    for (std::size_t l = 0; l < 2; ++l) {
      EXPECT_NEAR(fit.m_Information[j][l], static_cast<double>(value.H[j][l]), 1e-12);
      EXPECT_NEAR(fit.m_Covariance[j][l], static_cast<double>(covariance[j][l]), 1e-12);
    }
  }
}

TEST(FitFailure, FallBackLeavesFixedParametersOutOfTheCovariance) {
  TwelveCaseAnalysis analysis({"a", "b"});
  analysis.StartAt({0.5, -0.25}).Fix({true, false});
  CCoxFit& fit = analysis.PrepareFit();
  analysis.Host.OnBarMove = [](int) { throw std::runtime_error("the bar is gone"); };
  fit.FitCurrentModel();
  ASSERT_EQ(fit.m_Covariance.size(), 2U);
  EXPECT_EQ(fit.m_Covariance[0], (Vector{0.0, 0.0}));
  EXPECT_EQ(fit.m_Covariance[1][0], 0.0);
  EXPECT_DOUBLE_EQ(fit.m_Covariance[1][1], 1.0 / fit.m_Information[1][1]);
  EXPECT_GT(fit.m_Information[0][0], 0.0) << "the information itself is that of all columns";
  EXPECT_TRUE(analysis.Data().DesignColumns[0].Dropped);
  EXPECT_EQ(analysis.Settings().StartValues, (Vector{0.5, -0.25}));
}

TEST(FitFailure, AutomationIsToldBeforeTheMessage) {
  for (const bool automation : {false, true}) {
    TwelveCaseAnalysis analysis({"a"});
    analysis.StartAt({kStepOverflows});
    analysis.Host.Automation = automation;
    CCoxFit& fit = analysis.PrepareFit();
    analysis.Host.Events.clear();
    fit.FitCurrentModel();
    Texts events;
    for (const std::string& event : analysis.Host.Events) {
      if (event != "bar closed") events.push_back(event);
    }
    EXPECT_EQ(events, automation ? (Texts{"error handler", "message"}) : Texts{"message"});
    EXPECT_EQ(analysis.Host.ErrorHandlerModes, automation ? std::vector<int>{1} : std::vector<int>{});
  }
}

// ---- A failure without one ------------------------------------------------------------------------------------------

TEST(FitFailure, OverflowAtTheStartLeavesNoResults) {
  for (const bool efron : {false, true}) {
    for (const bool strata : {false, true}) {
      TwelveCaseAnalysis analysis({"a"});
      Apply(efron, strata, analysis);
      analysis.StartAt({kStartOverflows});
      EXPECT_NE(analysis.Run(), 0);
      EXPECT_EQ(analysis.Host.Messages(), Texts{kNoResults});
      EXPECT_EQ(analysis.Analysis.m_pCoxData, nullptr);
      EXPECT_EQ(analysis.Analysis.m_pCoxFit, nullptr);
      EXPECT_FALSE(analysis.Host.Bars.back().Open);
      EXPECT_EQ(analysis.Host.Events.back(), "message") << "the bar closes first";
      EXPECT_EQ(analysis.Host.LiveBlocks(), 0);
      EXPECT_EQ(analysis.Settings().StartValues, (Vector{kStartOverflows})) << "the options survive";
    }
  }
}

TEST(FitFailure, FailureWithoutResultsDestroysTheData) {
  TwelveCaseAnalysis analysis({"a"});
  analysis.StartAt({kStartOverflows});
  analysis.Host.Automation = true;
  EXPECT_NE(analysis.RunUnchecked(), 0);
  const CCoxFit& fit = analysis.Fit();
  EXPECT_EQ(fit.m_pData, nullptr);
  EXPECT_EQ(fit.m_FitStatus, FitStatuses::Failed);
  EXPECT_EQ(fit.m_FitStatus, -1);
  EXPECT_FALSE(fit.m_Converged);
  EXPECT_EQ(analysis.Analysis.m_pCoxData, nullptr);
  EXPECT_TRUE(analysis.Host.ErrorHandlerModes.empty()) << "only the other message goes through the handler";
}

TEST(FitFailure, StartValuesOfFixedParametersComeBackAfterAFailureWithoutResults) {
  TwelveCaseAnalysis analysis({"a", "b"});
  analysis.StartAt({0.3, 5000.0}).Fix({true, false});
  EXPECT_NE(analysis.Run(), 0);
  EXPECT_EQ(analysis.Host.Messages(), Texts{kNoResults});
  EXPECT_EQ(analysis.Settings().StartValues, (Vector{0.3, 5000.0}));
}

TEST(FitFailure, NextRunStartsAfresh) {
  TwelveCaseAnalysis analysis({"a"});
  analysis.StartAt({kStartOverflows});
  EXPECT_NE(analysis.Run(), 0);
  analysis.Settings().UseStartValues = false;
  ASSERT_EQ(analysis.Run(), 0);
  EXPECT_TRUE(analysis.Fit().m_Converged);
  EXPECT_EQ(analysis.Host.Messages().size(), 1U);
}

TEST(FitFailure, OverflowInTheFirstPassLeavesNoResults) {
  struct {
    const char* what;
    Vector x;
    Vector weights;
  } const cases[] = {
      {"weights whose sum overflows", {1, 4, 2, 3}, {1e308, 1e308, 1e308, 1e308}},
      {"spread of a covariate overflows", {1e300, -1e300, 5, 2}, {1, 1, 1, 1}},
      {"mean of a covariate overflows", {1.7e308, -1.7e308, 1.7e308, 1}, {1, 1, 1, 1}},
  };
  for (const auto& c : cases) {
    TestAnalysis analysis({{"time", {1, 2, 3, 4}}, {"status", {1, 1, 1, 1}}, {"x", c.x}, {"w", c.weights}});
    analysis.Time({"time"}).Status("status").Covariates({"x"}).DefaultDesign().Weights("w");
    EXPECT_NE(analysis.Run(), 0) << c.what;
    EXPECT_EQ(analysis.Host.Messages(), Texts{kNoResults}) << c.what;
    EXPECT_EQ(analysis.Analysis.m_pCoxFit, nullptr) << c.what;
  }
}

// ---- A failure while a model is being built -------------------------------------------------------------------------

TEST(FitFailure, CandidatePassesTheFailureOn) {
  for (const double start : {kStepOverflows, kStartOverflows}) {
    TwelveCaseAnalysis analysis({"a", "b"});
    analysis.StartAt({start, 0.0});
    CCoxFit& fit = analysis.PrepareFit();
    const std::vector<ReferenceCase> before = CasesOf(analysis.Data());
    analysis.Settings().FinalFitReady = false;
    EXPECT_THROW(fit.FitCurrentModel(), NumericalFailure);
    EXPECT_TRUE(analysis.Host.Messages().empty()) << "the caller speaks";
    EXPECT_NE(fit.m_pData, nullptr);
    const std::vector<ReferenceCase> after = CasesOf(analysis.Data());
    for (std::size_t i = 0; i < before.size(); ++i) {
      for (std::size_t j = 0; j < 2; ++j) EXPECT_NEAR(after[i].X[j], before[i].X[j], 1e-14) << i;
    }
    EXPECT_DOUBLE_EQ(fit.m_BetaHistory[0][0], start / analysis.Data().DesignColumns[0].StdDev);
    EXPECT_FALSE(analysis.Host.Bars.back().Open);
    EXPECT_EQ(analysis.Host.LiveBlocks(), 0);
  }
}

TEST(FitFailure, CandidatePassesOtherExceptionsOnAsTheyAre) {
  TwelveCaseAnalysis analysis({"a"});
  CCoxFit& fit = analysis.PrepareFit();
  analysis.Settings().FinalFitReady = false;
  analysis.Host.OnBarMove = [](int) { throw std::length_error("the bar is gone"); };
  EXPECT_THROW(fit.FitCurrentModel(), std::length_error);
}

// ---- Memory ---------------------------------------------------------------------------------------------------------

TEST(FitFailure, EveryAllocationMayFail) {
  for (const bool strata : {false, true}) {
    TwelveCaseAnalysis analysis({"a", "b"});
    Apply(true, strata, analysis);
    CCoxFit* fit = &analysis.PrepareFit();
    analysis.Host.FailAllocation(0);
    fit->FitCurrentModel();
    const int requests = analysis.Host.Requests();
    const Vector likelihoods = fit->m_LogLikHistory;
    const DenseMatrix covariance = fit->m_Covariance;
    ASSERT_TRUE(fit->m_Converged);

    // What the projection takes on top of the working store; a fit does without it.
    std::vector<double> H(4, 0.0);
    double* rows[] = {&H[0], &H[2]};
    H[0] = H[3] = 1.0;
    analysis.Host.FailAllocation(0);
    fit->ComputeNullProjection(rows);
    const int ofProjection = analysis.Host.Requests();
    ASSERT_LT(ofProjection, requests);

    int withoutProjection = 0;
    for (int failing = 1; failing <= requests; ++failing) {
      fit = &analysis.PrepareFit();
      const std::vector<ReferenceCase> before = CasesOf(analysis.Data());
      analysis.Host.FailAllocation(failing);
      fit->FitCurrentModel();
      analysis.Host.FailAllocation(0);
      EXPECT_EQ(analysis.Host.LiveBlocks(), 0) << failing;
      EXPECT_TRUE(analysis.Host.Messages().empty()) << failing;
      EXPECT_FALSE(analysis.Host.Bars.empty() || analysis.Host.Bars.back().Open) << failing;
      const std::vector<ReferenceCase> after = CasesOf(analysis.Data());
      for (std::size_t i = 0; i < before.size(); ++i) EXPECT_NEAR(after[i].X[0], before[i].X[0], 1e-14) << failing;
      if (fit->m_FitStatus == 0) {
        ++withoutProjection;
        EXPECT_TRUE(fit->m_Converged) << failing;
        EXPECT_TRUE(fit->m_NullProjection.empty()) << failing;
        EXPECT_EQ(fit->m_LogLikHistory, likelihoods) << failing;
        EXPECT_EQ(fit->m_Covariance, covariance) << failing;
        continue;
      }
      EXPECT_EQ(fit->m_FitStatus, FitStatuses::OutOfMemory) << failing;
      EXPECT_FALSE(fit->m_Converged) << failing;
      EXPECT_TRUE(fit->m_LogLikHistory.empty()) << failing;
      EXPECT_TRUE(fit->m_Information.empty()) << failing;
      EXPECT_TRUE(fit->m_Covariance.empty()) << failing;
    }
    EXPECT_EQ(withoutProjection, ofProjection);
  }
}

TEST(FitFailure, RunWithoutMemoryGoesOn) {
  TwelveCaseAnalysis analysis({"a"});
  analysis.Host.FailAllocation(1);
  EXPECT_EQ(analysis.RunUnchecked(), 0);
  EXPECT_EQ(analysis.Fit().m_FitStatus, FitStatuses::OutOfMemory);
  EXPECT_TRUE(analysis.Host.Messages().empty());
}

TEST(FitFailure, FallBackWithoutMemoryLeavesNoResults) {
  TwelveCaseAnalysis analysis({"a"});
  analysis.StartAt({kStepOverflows});
  analysis.PrepareFit();
  analysis.Host.FailAllocation(0);
  analysis.Fit().FitCurrentModel();
  const int requests = analysis.Host.Requests();
  analysis.PrepareFit();
  analysis.Host.FailAllocation(requests);  // the last one is part of the fall-back
  CCoxFit& fit = analysis.Fit();
  fit.FitCurrentModel();
  EXPECT_EQ(fit.m_pData, nullptr);
  EXPECT_EQ(fit.m_FitStatus, FitStatuses::Failed);
  EXPECT_EQ(analysis.Host.Messages().back(), kNoResults);
  EXPECT_EQ(analysis.Host.LiveBlocks(), 0);
}

// Numbers of an earlier evaluation, at another vector, must not pass for those of the last iteration.
TEST(FitFailure, FallBackWithoutMemoryTakesNoEarlierInformation) {
  TwelveCaseAnalysis analysis({"a"});
  analysis.StartAt({kStepOverflows});
  analysis.PrepareFit();
  analysis.Host.FailAllocation(0);
  analysis.Fit().FitCurrentModel();
  const int requests = analysis.Host.Requests();
  const DenseMatrix information = analysis.Fit().m_Information;
  const double zero = 0.0;
  int kept = 0;
  for (int failing = 1; failing <= requests; ++failing) {
    CCoxFit& fit = analysis.PrepareFit();
    fit.EvaluateSurvival(0, &zero);
    analysis.Host.FailAllocation(failing);
    fit.FitCurrentModel();
    analysis.Host.FailAllocation(0);
    if (fit.m_Information.empty() || fit.m_pData == nullptr) continue;
    ++kept;
    EXPECT_NEAR(fit.m_Information[0][0] / information[0][0], 1.0, 1e-9) << failing;
  }
  EXPECT_GT(kept, 0) << "the projection is not needed";
}

// ---- Cancel ---------------------------------------------------------------------------------------------------------

TEST(FitFailure, CancelAtTheBarKeepsTheHistories) {
  for (const int position : {2, 3}) {
    TwelveCaseAnalysis analysis({"a", "b"});
    CCoxFit& fit = analysis.PrepareFit();
    analysis.Host.CancelBarAt = position;
    fit.FitCurrentModel();
    EXPECT_EQ(fit.m_FitStatus, FitStatuses::Cancelled) << position;
    EXPECT_EQ(fit.m_FitStatus, 3) << position;
    EXPECT_FALSE(fit.m_Converged) << position;
    EXPECT_EQ(fit.m_LogLikHistory.size(), static_cast<std::size_t>(position)) << position;
    EXPECT_EQ(fit.m_BetaHistory.size(), static_cast<std::size_t>(position) + 1) << position;
    EXPECT_TRUE(fit.m_Information.empty()) << position;
    EXPECT_TRUE(fit.m_Covariance.empty()) << position;
    EXPECT_TRUE(analysis.Host.Messages().empty()) << position;
    EXPECT_FALSE(analysis.Host.Bars.back().Open) << position;
  }
}

TEST(FitFailure, RunGoesOnAfterACancelledFit) {
  TwelveCaseAnalysis analysis({"a"});
  CCoxFit* fit = nullptr;
  analysis.Host.CancelBarAt = 1000;
  analysis.Host.OnBarMove = [&](int) {
    // The bar of the reading has another title; only that of the fit is cancelled.
    analysis.Host.CancelBarAt = analysis.Host.Bars.back().Title == "Maximizing likelihood" ? 1 : 1000;
  };
  EXPECT_EQ(analysis.Run(), 0);
  fit = &analysis.Fit();
  EXPECT_EQ(fit->m_FitStatus, FitStatuses::Cancelled);
}

TEST(FitFailure, StratifiedFitHasNoCancelQuery) {
  TwelveCaseAnalysis analysis({"a", "b"});
  analysis.Strata("g", {1, 2});
  CCoxFit& fit = analysis.PrepareFit();
  analysis.Host.CancelBarAt = 2;
  analysis.Host.Cancelled = analysis.Host.External = true;
  fit.FitCurrentModel();
  EXPECT_TRUE(fit.m_Converged);
  EXPECT_EQ(fit.m_FitStatus, 0);
  EXPECT_FALSE(fit.m_Covariance.empty());
}

// ---- Every way out --------------------------------------------------------------------------------------------------

struct WayOut {
  const char* what;
  double start;
  std::function<void(TestAnalysis&)> prepare;
  bool throws;
};

const std::vector<WayOut>& WaysOut() {
  static const std::vector<WayOut> ways = {
      {"converged", 0.0, [](TestAnalysis&) {}, false},
      {"iteration limit", 0.0, [](TestAnalysis& a) { a.Fit().m_MaxIterations = 1; }, false},
      {"no iteration", 0.0, [](TestAnalysis& a) { a.Fit().m_MaxIterations = 0; }, false},
      {"limit at a rejected step", kStepsRejected, [](TestAnalysis& a) { a.Fit().m_MaxIterations = 3; }, false},
      {"cancelled", 0.0, [](TestAnalysis& a) { a.Host.CancelBarAt = 2; }, false},
      {"out of memory", 0.0, [](TestAnalysis& a) { a.Host.FailAllocation(1); }, false},
      {"last iteration used", kStepOverflows, [](TestAnalysis&) {}, false},
      {"failed candidate", kStepOverflows, [](TestAnalysis& a) { a.Settings().FinalFitReady = false; }, true},
      {"candidate failed at its start", kStartOverflows, [](TestAnalysis& a) { a.Settings().FinalFitReady = false; },
       true},
      {"host failed", 0.0,
       [](TestAnalysis& a) { a.Host.OnBarMove = [](int) { throw std::runtime_error("the bar is gone"); }; }, false},
  };
  return ways;
}

// Runs the fit on covariates a, b and constant, and leaves the analysis as it is then.
std::unique_ptr<TestAnalysis> Leave(const WayOut& way, const std::function<void(TestAnalysis&)>& before) {
  auto analysis = std::make_unique<TwelveCaseAnalysis>(std::vector<std::string>{"a", "b", "constant"});
  if (way.start != 0.0) analysis->StartAt({way.start, 0.0, 0.0});
  CCoxFit& fit = analysis->PrepareFit();
  way.prepare(*analysis);
  before(*analysis);
  if (way.throws) {
    EXPECT_ANY_THROW(fit.FitCurrentModel()) << way.what;
  } else {
    EXPECT_NO_THROW(fit.FitCurrentModel()) << way.what;
  }
  return analysis;
}

TEST(FitFailure, CaseTableIsBackOnItsRawScale) {
  for (const WayOut& way : WaysOut()) {
    std::vector<ReferenceCase> before;
    const auto analysis = Leave(way, [&](TestAnalysis& a) { before = CasesOf(a.Data()); });
    const std::vector<ReferenceCase> after = CasesOf(analysis->Data());
    ASSERT_EQ(after.size(), before.size()) << way.what;
    for (std::size_t i = 0; i < before.size(); ++i) {
      for (std::size_t j = 0; j < 3; ++j) {
        EXPECT_NEAR(after[i].X[j], before[i].X[j], 1e-12 * std::max(1.0, std::abs(before[i].X[j]))) << way.what;
      }
      EXPECT_EQ(after[i].Time, before[i].Time) << way.what;
      EXPECT_EQ(after[i].Event, before[i].Event) << way.what;
      EXPECT_EQ(after[i].Weight, before[i].Weight) << way.what;
    }
    EXPECT_EQ(analysis->Host.LiveBlocks(), 0) << way.what;
    for (const testing::BarRecord& bar : analysis->Host.Bars) EXPECT_FALSE(bar.Open) << way.what;
  }
}

TEST(FitFailure, ResultsAreFiniteNumbers) {
  for (const WayOut& way : WaysOut()) {
    const auto analysis = Leave(way, [](TestAnalysis&) {});
    const CCoxFit& fit = analysis->Fit();
    EXPECT_TRUE(AllFinite(fit.m_LogLikHistory)) << way.what;
    for (const Vector& beta : fit.m_BetaHistory) EXPECT_TRUE(AllFinite(beta)) << way.what;
    for (const Vector& row : fit.m_Information) EXPECT_TRUE(AllFinite(row)) << way.what;
    for (const Vector& row : fit.m_Covariance) EXPECT_TRUE(AllFinite(row)) << way.what;
    EXPECT_TRUE(std::isfinite(fit.m_NullLogLik)) << way.what;
    EXPECT_TRUE(std::isfinite(fit.m_ScoreStatistic)) << way.what;
  }
}

double QuarterOfTheSmallest() {
  volatile double smallest = std::numeric_limits<double>::min();
  return smallest / 4.0;
}

TEST(FitFailure, FloatingPointEnvironmentOfTheCallerComesBack) {
  constexpr int kFlags = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW;
  std::fenv_t saved;
  std::fegetenv(&saved);
  for (const WayOut& way : WaysOut()) {
    std::vector<int> roundingDuring;
    const auto analysis = Leave(way, [&](TestAnalysis& a) {
      const auto move = a.Host.OnBarMove;
      a.Host.OnBarMove = [&roundingDuring, move](int position) {
        roundingDuring.push_back(std::fegetround());
        if (move) move(position);
      };
      std::feclearexcept(FE_ALL_EXCEPT);
      std::feraiseexcept(FE_INVALID);
      std::fesetround(FE_UPWARD);
    });
    const int rounding = std::fegetround();
    const int flags = std::fetestexcept(kFlags);
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(rounding, FE_UPWARD) << way.what;
    EXPECT_EQ(flags, FE_INVALID) << way.what << ": the caller's flag, and none of the fit's";
    EXPECT_GT(QuarterOfTheSmallest(), 0.0) << way.what << ": denormal results are back";
    for (const int during : roundingDuring) EXPECT_EQ(during, FE_TONEAREST) << way.what;
    std::fesetenv(&saved);
  }
}

TEST(FitFailure, FloatingPointEnvironmentComesBackAfterAFailureWithoutResults) {
  std::fenv_t saved;
  std::fegetenv(&saved);
  TwelveCaseAnalysis analysis({"a"});
  analysis.StartAt({kStartOverflows});
  CCoxFit& fit = analysis.PrepareFit();
  std::feclearexcept(FE_ALL_EXCEPT);
  std::fesetround(FE_DOWNWARD);
  fit.FitCurrentModel();
  const int rounding = std::fegetround();
  const int flags = std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
  std::fesetenv(&saved);
  EXPECT_EQ(rounding, FE_DOWNWARD);
  EXPECT_EQ(flags, 0);
  EXPECT_GT(QuarterOfTheSmallest(), 0.0);
}

#if defined(__SSE2__) || defined(__aarch64__)
TEST(FitFailure, DenormalResultsAreFlushedDuringAFit) {
  TwelveCaseAnalysis analysis({"a"});
  CCoxFit& fit = analysis.PrepareFit();
  std::vector<double> during;
  analysis.Host.OnBarMove = [&](int) { during.push_back(QuarterOfTheSmallest()); };
  fit.FitCurrentModel();
  ASSERT_FALSE(during.empty());
  for (const double value : during) EXPECT_EQ(value, 0.0);
}
#endif

// A flag that is up before the fit is none of its business.
TEST(FitFailure, FlagsRaisedBeforeTheFitAreNoFailure) {
  std::fenv_t saved;
  std::fegetenv(&saved);
  TwelveCaseAnalysis analysis({"a"});
  CCoxFit& fit = analysis.PrepareFit();
  std::feraiseexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
  fit.FitCurrentModel();
  std::fesetenv(&saved);
  EXPECT_TRUE(fit.m_Converged);
  EXPECT_TRUE(analysis.Host.Messages().empty());
}

}  // namespace
}  // namespace orv
