// What the nine routines have in common, and the few places where they differ: cancel, progress bar, a model without
// columns, and how each fails.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "fit/CCoxFit.h"
#include "fit/FailureTexts.h"
#include "fit/NineRoutines.h"
#include "fit/NumericalFailure.h"

namespace orv {
namespace {

using testing::AnalysisOf;
using testing::DotReference;
using testing::InvertReference;
using testing::kLastIterationUsed;
using testing::kNoResults;
using testing::kRoutines;
using testing::RealMatrix;
using testing::RealVector;
using testing::ReferenceOf;
using testing::ReferenceValue;
using testing::Routine;
using testing::SolveReference;
using testing::TestAnalysis;
using Vector = std::vector<double>;
using Texts = std::vector<std::string>;

// Start values of the first parameter. At the first the information is next to nothing, so the step leads to
// exponentials that overflow; at the second they overflow at once.
constexpr double kStepOverflows = 15.0;
constexpr double kStartOverflows = 2000.0;

Vector Start(double first) {
  return {first, 0.0};
}

void ExpectInformation(const CCoxFit& fit, const ReferenceValue& expected, double unit, const char* what) {
  ASSERT_EQ(fit.m_Information.size(), 2U) << what;
  for (std::size_t j = 0; j < 2; ++j) {
    for (std::size_t l = 0; l < 2; ++l) {
      EXPECT_NEAR(fit.m_Information[j][l], static_cast<double>(expected.H[j][l]), unit) << what << ' ' << j << ' ' << l;
    }
  }
}

// ---- What all of them do --------------------------------------------------------------------------------------------

// The dispatcher picks the routine by likelihood, input type and strata; another one would have another likelihood.
TEST(FitRoutines, MaximiseTheLikelihoodOfTheOptions) {
  for (const Routine& routine : kRoutines) {
    const auto analysis = AnalysisOf(routine);
    testing::IterateToTheEnd(*analysis);
    CCoxFit& fit = analysis->PrepareFit();
    fit.FitCurrentModel();
    ASSERT_TRUE(fit.m_Converged) << routine.What;
    EXPECT_EQ(fit.m_FitStatus, 0) << routine.What;
    const ReferenceValue atZero = ReferenceOf(routine, analysis->Data(), {0.0, 0.0});
    const ReferenceValue atEstimate = ReferenceOf(routine, analysis->Data(), fit.m_BetaHistory.back());
    const RealVector step = SolveReference(atEstimate.H, atEstimate.U);
    EXPECT_NEAR(fit.m_NullLogLik, static_cast<double>(atZero.L), 1e-12) << routine.What;
    EXPECT_NEAR(fit.m_ScoreStatistic, static_cast<double>(DotReference(atZero.U, SolveReference(atZero.H, atZero.U))),
                1e-11)
        << routine.What;
    EXPECT_NEAR(fit.m_LogLikHistory.back(), static_cast<double>(atEstimate.L), 1e-12) << routine.What;
    EXPECT_LT(static_cast<double>(DotReference(step, atEstimate.U)), 1e-10) << routine.What << ": not at the maximum";
    ExpectInformation(fit, atEstimate, 1e-11, routine.What);
    const RealMatrix covariance = InvertReference(atEstimate.H);
    for (std::size_t j = 0; j < 2; ++j) {
      EXPECT_NEAR(fit.m_Covariance[j][j] / static_cast<double>(covariance[j][j]), 1.0, 1e-10) << routine.What;
    }
  }
}

TEST(FitRoutines, EvaluatorsGiveScoreAndInformationOfTheirLikelihood) {
  const Vector beta = {0.5, -0.75};
  for (const Routine& routine : kRoutines) {
    const auto analysis = AnalysisOf(routine);
    CCoxFit& fit = analysis->PrepareFit();
    const bool intervals = routine.InputType == InputTypes::CountingProcess;
    if (routine.InputType == InputTypes::TimeDependent) {
      fit.EvaluateTimeDependent(beta.data(), 1);
    } else if (routine.Discrete && routine.Strata) {
      intervals ? fit.EvaluateCountingDiscreteStrata(beta.data()) : fit.EvaluateSurvivalDiscreteStrata(beta.data());
    } else if (routine.Discrete) {
      intervals ? fit.EvaluateCountingDiscrete(beta.data()) : fit.EvaluateSurvivalDiscrete(beta.data());
    } else if (routine.Strata) {
      intervals ? fit.EvaluateCountingStrata(1, beta.data()) : fit.EvaluateSurvivalStrata(1, beta.data());
    } else {
      intervals ? fit.EvaluateCounting(1, beta.data()) : fit.EvaluateSurvival(1, beta.data());
    }
    const ReferenceValue expected = ReferenceOf(routine, analysis->Data(), beta);
    ASSERT_EQ(fit.m_ScoreVector.size(), 2U) << routine.What;
    ASSERT_EQ(fit.m_PackedInformation.size(), 3U) << routine.What;
    for (std::size_t j = 0; j < 2; ++j) {
      EXPECT_NEAR(fit.m_ScoreVector[j], static_cast<double>(expected.U[j]), 1e-12) << routine.What;
      for (std::size_t l = 0; l <= j; ++l) {
        EXPECT_NEAR(fit.m_PackedInformation[j + l], static_cast<double>(expected.H[j][l]), 1e-12) << routine.What;
      }
    }
    EXPECT_EQ(analysis->Host.LiveBlocks(), analysis->Analysis.m_pExpressions != nullptr ? 1 : 0) << routine.What;
  }
}

// All but FitTimeDependent evaluate zero first, whatever the start.
TEST(FitRoutines, NullLikelihoodBelongsToZeroOrToTheStart) {
  for (const Routine& routine : kRoutines) {
    const auto analysis = AnalysisOf(routine);
    analysis->StartAt({0.25, -0.125});
    CCoxFit& fit = analysis->PrepareFit();
    fit.FitCurrentModel();
    const bool fromStart = routine.InputType == InputTypes::TimeDependent;
    const Vector& start = fit.m_BetaHistory[0];
    const ReferenceValue expected = ReferenceOf(routine, analysis->Data(), fromStart ? start : Vector{0.0, 0.0});
    EXPECT_NEAR(fit.m_NullLogLik, static_cast<double>(expected.L), 1e-12) << routine.What;
    EXPECT_NEAR(fit.m_LogLikHistory[0], static_cast<double>(ReferenceOf(routine, analysis->Data(), start).L), 1e-12)
        << routine.What;
  }
}

// ---- Where they differ ----------------------------------------------------------------------------------------------

TEST(FitRoutines, CancelQueryIsThatOfTheRoutine) {
  const struct {
    const char* what;
    std::function<void(testing::TestHost&)> order;
  } cancels[] = {
      {"at the bar", [](testing::TestHost& host) { host.CancelBarAt = 2; }},
      {"by the user", [](testing::TestHost& host) { host.Cancelled = true; }},
      {"from outside", [](testing::TestHost& host) { host.External = true; }},
  };
  for (const Routine& routine : kRoutines) {
    for (const auto& cancel : cancels) {
      const std::string what = std::string(routine.What) + ", " + cancel.what;
      const auto analysis = AnalysisOf(routine);
      CCoxFit& fit = analysis->PrepareFit();
      cancel.order(analysis->Host);
      fit.FitCurrentModel();
      EXPECT_EQ(fit.m_FitStatus, routine.HasCancelQuery ? 3 : 0) << what;
      EXPECT_EQ(fit.m_Converged, !routine.HasCancelQuery) << what;
      EXPECT_EQ(fit.m_Covariance.empty(), routine.HasCancelQuery) << what;
      if (routine.HasCancelQuery) {
        EXPECT_EQ(fit.m_LogLikHistory.size(), 2U) << what << ": the query follows the first iteration";
        EXPECT_EQ(fit.m_BetaHistory.size(), 3U) << what;
      }
      EXPECT_TRUE(analysis->Host.Messages().empty()) << what;
    }
  }
}

TEST(FitRoutines, ProgressBarIsThatOfTheRoutine) {
  for (const Routine& routine : kRoutines) {
    for (const int limit : {1, 2, 30}) {
      const auto analysis = AnalysisOf(routine);
      analysis->Settings().MaxIterations = limit;
      CCoxFit& fit = analysis->PrepareFit();
      fit.FitCurrentModel();
      ASSERT_EQ(analysis->Host.Bars.size(), routine.HasProgressBar ? 1U : 0U) << routine.What;
      if (!routine.HasProgressBar) continue;
      const testing::BarRecord& bar = analysis->Host.Bars[0];
      EXPECT_EQ(bar.Title, "Maximizing likelihood") << routine.What;
      EXPECT_EQ(bar.Total, std::max(limit, 2)) << routine.What;
      EXPECT_TRUE(bar.Shown) << routine.What;
      EXPECT_FALSE(bar.Open) << routine.What;
      std::vector<int> positions;
      for (std::size_t k = 1; k < fit.m_LogLikHistory.size(); ++k) positions.push_back(static_cast<int>(k) + 1);
      EXPECT_EQ(bar.Positions, positions) << routine.What << ": one move an iteration";
    }
  }
}

TEST(FitRoutines, WithoutColumnsOneSkipsTheLoopAndTheOthersRunIt) {
  for (const Routine& routine : kRoutines) {
    for (int convergence = ConvergenceTypes::RelativeGradient; convergence <= ConvergenceTypes::AbsoluteLikelihood;
         ++convergence) {
      const auto analysis = AnalysisOf(routine, false);
      analysis->Settings().ConvergenceType = convergence;
      CCoxFit& fit = analysis->PrepareFit();
      fit.FitCurrentModel();
      EXPECT_TRUE(fit.m_Converged) << routine.What;
      EXPECT_EQ(fit.m_FitStatus, 0) << routine.What;
      const auto expected = static_cast<double>(ReferenceOf(routine, analysis->Data(), {}).L);
      EXPECT_EQ(fit.m_LogLikHistory.size(), routine.LoopsWithoutColumns ? 2U : 1U) << routine.What;
      for (const double L : fit.m_LogLikHistory) EXPECT_NEAR(L, expected, 1e-12) << routine.What;
      EXPECT_NEAR(fit.m_NullLogLik, expected, 1e-12) << routine.What;
      EXPECT_EQ(fit.m_ScoreStatistic, 0.0) << routine.What;
      EXPECT_TRUE(fit.m_Covariance.empty()) << routine.What;
    }
  }
}

// ---- Failures -------------------------------------------------------------------------------------------------------

TEST(FitRoutines, OverflowInTheFirstPassesLeavesNoResults) {
  for (const Routine& routine : kRoutines) {
    const auto analysis = AnalysisOf(routine);
    analysis->StartAt(Start(kStartOverflows));
    CCoxFit& fit = analysis->PrepareFit();
    fit.FitCurrentModel();
    EXPECT_EQ(analysis->Host.Messages(), Texts{kNoResults}) << routine.What;
    EXPECT_EQ(fit.m_FitStatus, -1) << routine.What;
    EXPECT_FALSE(fit.m_Converged) << routine.What;
    EXPECT_EQ(fit.m_pData, nullptr) << routine.What;
    EXPECT_EQ(analysis->Analysis.m_pCoxData, nullptr) << routine.What;
    for (const testing::BarRecord& bar : analysis->Host.Bars) EXPECT_FALSE(bar.Open) << routine.What;
  }
}

TEST(FitRoutines, OverflowAfterTheStartGivesTheInformationOfTheStart) {
  for (const Routine& routine : kRoutines) {
    const auto analysis = AnalysisOf(routine);
    analysis->StartAt(Start(kStepOverflows));
    CCoxFit& fit = analysis->PrepareFit();
    fit.FitCurrentModel();
    EXPECT_EQ(analysis->Host.Messages(), Texts{kLastIterationUsed}) << routine.What;
    EXPECT_EQ(fit.m_FitStatus, 0) << routine.What;
    EXPECT_FALSE(fit.m_Converged) << routine.What;
    ASSERT_EQ(fit.m_BetaHistory.size(), 1U) << routine.What;
    // Sums of the order of one that cancel to next to nothing.
    ExpectInformation(fit, ReferenceOf(routine, analysis->Data(), fit.m_BetaHistory[0]), 1e-12, routine.What);
    for (const testing::BarRecord& bar : analysis->Host.Bars) EXPECT_FALSE(bar.Open) << routine.What;
  }
}

// A failure of the third pass, for the routines that can be disturbed there: the covariance comes from the evaluator
// of the same likelihood at the vector before.
TEST(FitRoutines, FallBackEvaluatesTheSameLikelihood) {
  for (const Routine& routine : kRoutines) {
    if (!routine.HasProgressBar) continue;
    const auto analysis = AnalysisOf(routine);
    CCoxFit& fit = analysis->PrepareFit();
    analysis->Host.OnBarMove = [](int position) {
      if (position == 3) throw std::runtime_error("the bar is gone");
    };
    fit.FitCurrentModel();
    EXPECT_EQ(analysis->Host.Messages(), Texts{kLastIterationUsed}) << routine.What;
    ASSERT_EQ(fit.m_BetaHistory.size(), 3U) << routine.What;
    const ReferenceValue value = ReferenceOf(routine, analysis->Data(), fit.m_BetaHistory.back());
    EXPECT_NEAR(fit.m_LogLikHistory.back(), static_cast<double>(value.L), 1e-12) << routine.What;
    ExpectInformation(fit, value, 1e-11, routine.What);
    const RealMatrix covariance = InvertReference(value.H);
    for (std::size_t j = 0; j < 2; ++j) {
      for (std::size_t l = 0; l < 2; ++l) {
        EXPECT_NEAR(fit.m_Covariance[j][l], static_cast<double>(covariance[j][l]), 1e-11) << routine.What;
      }
    }
  }
}

TEST(FitRoutines, CandidatePassesAFailureOn) {
  for (const Routine& routine : kRoutines) {
    for (const double start : {kStepOverflows, kStartOverflows}) {
      const auto analysis = AnalysisOf(routine);
      analysis->StartAt(Start(start));
      CCoxFit& fit = analysis->PrepareFit();
      const auto before = testing::CasesOf(analysis->Data());
      analysis->Settings().FinalFitReady = false;
      EXPECT_THROW(fit.FitCurrentModel(), NumericalFailure) << routine.What;
      EXPECT_TRUE(analysis->Host.Messages().empty()) << routine.What;
      ASSERT_NE(fit.m_pData, nullptr) << routine.What;
      const auto after = testing::CasesOf(analysis->Data());
      for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_NEAR(after[i].X[0], before[i].X[0], 1e-14) << routine.What << ", case " << i;
      }
    }
  }
}

// ---- Memory ---------------------------------------------------------------------------------------------------------

// A fit does without two things: the projection at zero, and the kept values of the formulas.
TEST(FitRoutines, EveryAllocationMayFail) {
  for (const Routine& routine : kRoutines) {
    const auto analysis = AnalysisOf(routine);
    testing::TestHost& host = analysis->Host;
    CCoxFit* fit = &analysis->PrepareFit();
    const int blocksBefore = host.LiveBlocks();  // the compiled formulas
    host.FailAllocation(0);
    fit->FitCurrentModel();
    const int requests = host.Requests();
    const Vector likelihoods = fit->m_LogLikHistory;
    const DenseMatrix covariance = fit->m_Covariance;
    ASSERT_TRUE(fit->m_Converged) << routine.What;

    std::vector<double> H = {1.0, 0.0, 0.0, 1.0};
    double* rows[] = {&H[0], &H[2]};
    host.FailAllocation(0);
    fit->ComputeNullProjection(rows);
    const int dispensable = host.Requests() + (routine.InputType == InputTypes::TimeDependent ? 1 : 0);

    int fitted = 0;
    for (int failing = 1; failing <= requests; ++failing) {
      const std::string what = std::string(routine.What) + ", allocation " + std::to_string(failing);
      fit = &analysis->PrepareFit();
      host.FailAllocation(failing);
      fit->FitCurrentModel();
      host.FailAllocation(0);
      EXPECT_EQ(host.LiveBlocks(), blocksBefore) << what;
      EXPECT_TRUE(host.Messages().empty()) << what;
      for (const testing::BarRecord& bar : host.Bars) EXPECT_FALSE(bar.Open) << what;
      if (fit->m_FitStatus == 0) {
        ++fitted;
        EXPECT_EQ(fit->m_LogLikHistory, likelihoods) << what;
        EXPECT_EQ(fit->m_Covariance, covariance) << what;
        continue;
      }
      EXPECT_EQ(fit->m_FitStatus, FitStatuses::OutOfMemory) << what;
      EXPECT_FALSE(fit->m_Converged) << what;
      EXPECT_TRUE(fit->m_LogLikHistory.empty()) << what;
      EXPECT_TRUE(fit->m_Information.empty()) << what;
      EXPECT_TRUE(fit->m_Covariance.empty()) << what;
    }
    EXPECT_EQ(fitted, dispensable) << routine.What;
  }
}

TEST(FitRoutines, FallBackWithoutMemoryLeavesNoResults) {
  for (const Routine& routine : kRoutines) {
    const auto analysis = AnalysisOf(routine);
    analysis->StartAt(Start(kStepOverflows));
    analysis->PrepareFit();
    analysis->Host.FailAllocation(0);
    analysis->Fit().FitCurrentModel();
    const int requests = analysis->Host.Requests();
    CCoxFit& fit = analysis->PrepareFit();
    analysis->Host.FailAllocation(requests);  // the last one is part of the fall-back
    fit.FitCurrentModel();
    EXPECT_EQ(fit.m_pData, nullptr) << routine.What;
    EXPECT_EQ(fit.m_FitStatus, FitStatuses::Failed) << routine.What;
    EXPECT_EQ(analysis->Host.Messages().back(), kNoResults) << routine.What;
  }
}

}  // namespace
}  // namespace orv
