// Whole fits of right-censored data against an independent maximisation, and the rules for start values, fixed
// parameters and columns that say nothing.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "fit/CCoxFit.h"
#include "fit/TwelveCases.h"

namespace orv {
namespace {

using testing::CasesOf;
using testing::DotReference;
using testing::EvaluateReference;
using testing::InvertReference;
using testing::IterateToTheEnd;
using testing::kEstimateError;
using testing::MaximizeReference;
using testing::RealMatrix;
using testing::RealVector;
using testing::ReferenceCase;
using testing::ReferenceValue;
using testing::SolveReference;
using testing::TestAnalysis;
using testing::TwelveCaseAnalysis;
using Vector = std::vector<double>;

struct Model {
  const char* what;
  bool efron;
  bool strata;
  bool weights;
};

const Model kModels[] = {
    {"Breslow", false, false, false},
    {"Efron", true, false, false},
    {"Breslow, strata", false, true, false},
    {"Efron, strata", true, true, false},
    {"Breslow, weights", false, false, true},
    {"Efron, weights", true, false, true},
    {"Breslow, strata and weights", false, true, true},
    {"Efron, strata and weights", true, true, true},
};

void Apply(const Model& model, TestAnalysis& analysis) {
  analysis.Settings().Likelihood = model.efron ? Likelihoods::Efron : Likelihoods::Breslow;
  if (model.strata) analysis.Strata("g", {1, 2});
  if (model.weights) analysis.Weights("w");
}

TEST(FitSurvival, FindsTheMaximumWithItsInformationAndTests) {
  for (const Model& model : kModels) {
    TwelveCaseAnalysis analysis({"a", "b"});
    Apply(model, analysis);
    IterateToTheEnd(analysis);
    ASSERT_EQ(analysis.Run(), 0) << model.what;
    const CCoxFit& fit = analysis.Fit();
    EXPECT_TRUE(fit.m_Converged) << model.what;
    EXPECT_EQ(fit.m_FitStatus, 0) << model.what;
    EXPECT_EQ(fit.m_InformationRank, 2) << model.what;

    const std::vector<ReferenceCase> cases = CasesOf(analysis.Data());
    const RealVector maximum = MaximizeReference(cases, 2, model.efron);
    const Vector& estimate = fit.m_BetaHistory.back();
    const ReferenceValue atEstimate = EvaluateReference(cases, {estimate[0], estimate[1]}, model.efron);
    const RealMatrix covariance = InvertReference(atEstimate.H);
    const ReferenceValue atZero = EvaluateReference(cases, {0.0L, 0.0L}, model.efron);
    const double scoreStatistic = static_cast<double>(DotReference(atZero.U, SolveReference(atZero.H, atZero.U)));
    EXPECT_NEAR(fit.m_NullLogLik, static_cast<double>(atZero.L), 1e-12) << model.what;
    EXPECT_NEAR(fit.m_ScoreStatistic, scoreStatistic, 1e-12) << model.what;
    EXPECT_NEAR(fit.m_LogLikHistory.back(), static_cast<double>(atEstimate.L), 1e-12) << model.what;
    for (std::size_t j = 0; j < 2; ++j) {
      const double standardError = std::sqrt(fit.m_Covariance[j][j]);
      EXPECT_NEAR(estimate[j], static_cast<double>(maximum[j]), kEstimateError * standardError) << model.what;
      for (std::size_t l = 0; l < 2; ++l) {
        EXPECT_NEAR(fit.m_Information[j][l], static_cast<double>(atEstimate.H[j][l]), 1e-12) << model.what;
        EXPECT_NEAR(fit.m_Covariance[j][l], static_cast<double>(covariance[j][l]), 1e-12) << model.what;
        EXPECT_NEAR(fit.m_NullProjection[j][l], j == l ? 1.0 : 0.0, 1e-12) << model.what;
      }
    }
  }
}

TEST(FitSurvival, HistoriesHoldTheVectorsOfEachPassOnTheRawScale) {
  TwelveCaseAnalysis analysis({"a", "b"});
  analysis.Settings().Likelihood = Likelihoods::Efron;
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxFit& fit = analysis.Fit();
  ASSERT_EQ(fit.m_BetaHistory.size(), fit.m_LogLikHistory.size());
  ASSERT_GE(fit.m_BetaHistory.size(), 3U);
  EXPECT_EQ(fit.m_BetaHistory[0], (Vector{0.0, 0.0}));
  EXPECT_EQ(fit.m_LogLikHistory[0], fit.m_NullLogLik);
  const std::vector<ReferenceCase> cases = CasesOf(analysis.Data());
  RealVector next(2, 0.0L);
  for (std::size_t k = 0; k < fit.m_BetaHistory.size(); ++k) {
    const RealVector beta(fit.m_BetaHistory[k].begin(), fit.m_BetaHistory[k].end());
    const ReferenceValue value = EvaluateReference(cases, beta, true);
    EXPECT_NEAR(fit.m_LogLikHistory[k], static_cast<double>(value.L), 1e-12) << k;
    for (std::size_t j = 0; j < 2; ++j) {
      EXPECT_NEAR(fit.m_BetaHistory[k][j], static_cast<double>(next[j]), 1e-12) << "the full step to entry " << k;
    }
    const RealVector step = SolveReference(value.H, value.U);
    for (std::size_t j = 0; j < 2; ++j) next[j] = beta[j] + step[j];
  }
}

// The options pair a likelihood with strata or none; the wrong rule for ties would show in the likelihood at zero.
TEST(FitSurvival, DispatchTakesTheRoutineOfTheOptions) {
  for (const Model& model : kModels) {
    TwelveCaseAnalysis analysis({"a"});
    Apply(model, analysis);
    CCoxFit& fit = analysis.PrepareFit();
    fit.FitCurrentModel();
    const ReferenceValue atZero = EvaluateReference(CasesOf(analysis.Data()), {0.0L}, model.efron);
    EXPECT_NEAR(fit.m_NullLogLik, static_cast<double>(atZero.L), 1e-12) << model.what;
  }
}

TEST(FitSurvival, DiscreteWithTimeDependentCovariatesStartsNoRoutine) {
  TwelveCaseAnalysis analysis({"a"});
  analysis.PrepareFit();
  CCoxFit fit(&analysis.Data(), Likelihoods::Discrete, InputTypes::TimeDependent);
  fit.FitCurrentModel();
  EXPECT_EQ(fit.m_FitStatus, 0);
  EXPECT_FALSE(fit.m_Converged);
  EXPECT_TRUE(fit.m_LogLikHistory.empty());
}

// ---- Rejected steps of real data ------------------------------------------------------------------------------------

// From 4 on the standardised scale the step overshoots; half of it is better than the start.
TEST(FitSurvival, RejectedStepIsHalved) {
  TwelveCaseAnalysis analysis({"a"});
  analysis.StartAt({4.0});
  IterateToTheEnd(analysis);
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxFit& fit = analysis.Fit();
  ASSERT_TRUE(fit.m_Converged);
  ASSERT_GE(fit.m_BetaHistory.size(), 4U);
  const Vector& L = fit.m_LogLikHistory;
  const DenseMatrix& beta = fit.m_BetaHistory;
  EXPECT_LT(L[1], L[0]) << "the first step must be one that is rejected";
  EXPECT_GT(L[2], L[0]);
  EXPECT_NEAR(beta[2][0], 0.5 * (beta[0][0] + beta[1][0]), 1e-14);
  // The Newton step goes on from the accepted vector.
  const ReferenceValue value = EvaluateReference(CasesOf(analysis.Data()), {beta[2][0]}, false);
  EXPECT_NEAR(beta[3][0], beta[2][0] + static_cast<double>(value.U[0] / value.H[0][0]), 1e-12);
  EXPECT_NEAR(beta.back()[0], static_cast<double>(MaximizeReference(CasesOf(analysis.Data()), 1, false)[0]),
              kEstimateError * std::sqrt(fit.m_Covariance[0][0]));
}

// From 6 even the half step is worse than the start, and all later trial points lie between the two: the fit ends at
// the limit, at a rejected point.
TEST(FitSurvival, TwoRejectionsInARowEndAtTheLimit) {
  TwelveCaseAnalysis analysis({"a"});
  analysis.StartAt({6.0});
  analysis.Fields.Iterations = 5;
  ASSERT_EQ(analysis.Run(), 0) << "a fit that does not converge has results";
  const CCoxFit& fit = analysis.Fit();
  EXPECT_FALSE(fit.m_Converged);
  EXPECT_EQ(fit.m_FitStatus, FitStatuses::IterationLimit);
  const DenseMatrix& beta = fit.m_BetaHistory;
  ASSERT_EQ(beta.size(), 6U);
  ASSERT_EQ(fit.m_LogLikHistory.size(), 6U);
  const std::vector<ReferenceCase> cases = CasesOf(analysis.Data());
  for (std::size_t k = 0; k < 6; ++k) {
    const double L = static_cast<double>(EvaluateReference(cases, {beta[k][0]}, false).L);
    EXPECT_NEAR(fit.m_LogLikHistory[k], L, 1e-11 * std::abs(L)) << k;
    if (k == 0) continue;
    EXPECT_LT(L, fit.m_LogLikHistory[0]) << k;
    if (k == 1) continue;
    EXPECT_NEAR(beta[k][0], 0.5 * (beta[k - 2][0] + beta[k - 1][0]), 1e-13) << k;
  }
  // Information and covariance are those of the last point evaluated, rejected though it was.
  const double H = static_cast<double>(EvaluateReference(cases, {beta[5][0]}, false).H[0][0]);
  EXPECT_NEAR(fit.m_Information[0][0] / H, 1.0, 1e-6);
  EXPECT_NEAR(fit.m_Covariance[0][0] * H, 1.0, 1e-6);
}

// ---- Iteration limit ------------------------------------------------------------------------------------------------

TEST(FitSurvival, OneIterationGivesTheVectorOfItsPass) {
  TwelveCaseAnalysis analysis({"a", "b"});
  analysis.Fields.Iterations = 1;
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxFit& fit = analysis.Fit();
  EXPECT_FALSE(fit.m_Converged);
  EXPECT_EQ(fit.m_FitStatus, FitStatuses::IterationLimit);
  ASSERT_EQ(fit.m_BetaHistory.size(), 2U);
  ASSERT_EQ(fit.m_LogLikHistory.size(), 2U);
  const Vector& beta = fit.m_BetaHistory.back();
  const ReferenceValue value = EvaluateReference(CasesOf(analysis.Data()), {beta[0], beta[1]}, false);
  EXPECT_NEAR(fit.m_LogLikHistory.back(), static_cast<double>(value.L), 1e-12);
  const RealMatrix covariance = InvertReference(value.H);
  for (std::size_t j = 0; j < 2; ++j) {
    for (std::size_t l = 0; l < 2; ++l) {
      EXPECT_NEAR(fit.m_Covariance[j][l], static_cast<double>(covariance[j][l]), 1e-11);
    }
  }
}

TEST(FitSurvival, NoIterationsGiveTheStart) {
  TwelveCaseAnalysis analysis({"a", "b"});
  analysis.Settings().MaxIterations = 0;
  ASSERT_EQ(analysis.RunUnchecked(), 0);
  const CCoxFit& fit = analysis.Fit();
  EXPECT_FALSE(fit.m_Converged);
  EXPECT_EQ(fit.m_FitStatus, FitStatuses::IterationLimit);
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{0.0, 0.0}}));
  EXPECT_EQ(fit.m_LogLikHistory, (Vector{fit.m_NullLogLik}));
  const ReferenceValue value = EvaluateReference(CasesOf(analysis.Data()), {0.0L, 0.0L}, false);
  EXPECT_NEAR(fit.m_Information[0][1], static_cast<double>(value.H[0][1]), 1e-12);
}

// ---- Start values and fixed parameters ------------------------------------------------------------------------------

TEST(FitSurvival, StartValuesCountOnTheStandardisedScale) {
  TwelveCaseAnalysis analysis({"a", "b"});
  analysis.StartAt({0.5, -0.25});
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxFit& fit = analysis.Fit();
  EXPECT_DOUBLE_EQ(fit.m_BetaHistory[0][0], 0.5 / analysis.Data().DesignColumns[0].StdDev);
  EXPECT_DOUBLE_EQ(fit.m_BetaHistory[0][1], -0.25 / analysis.Data().DesignColumns[1].StdDev);
  EXPECT_EQ(analysis.Settings().StartValues, (Vector{0.5, -0.25}));
  const ReferenceValue atStart =
      EvaluateReference(CasesOf(analysis.Data()), {fit.m_BetaHistory[0][0], fit.m_BetaHistory[0][1]}, false);
  EXPECT_NEAR(fit.m_LogLikHistory[0], static_cast<double>(atStart.L), 1e-12);
}

TEST(FitSurvival, NullLikelihoodAndScoreTestBelongToZeroWhateverTheStart) {
  TwelveCaseAnalysis atZero({"a", "b"});
  TwelveCaseAnalysis elsewhere({"a", "b"});
  elsewhere.StartAt({0.5, -0.25});
  ASSERT_EQ(atZero.Run(), 0);
  ASSERT_EQ(elsewhere.Run(), 0);
  EXPECT_EQ(elsewhere.Fit().m_NullLogLik, atZero.Fit().m_NullLogLik);
  EXPECT_EQ(elsewhere.Fit().m_ScoreStatistic, atZero.Fit().m_ScoreStatistic);
  EXPECT_NE(elsewhere.Fit().m_LogLikHistory[0], elsewhere.Fit().m_NullLogLik);
}

TEST(FitSurvival, WithFixedParametersStartValuesCountOnTheRawScale) {
  TwelveCaseAnalysis analysis({"a", "b"});
  analysis.StartAt({0.5, -0.25}).Fix({true, false});
  IterateToTheEnd(analysis);
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxFit& fit = analysis.Fit();
  ASSERT_TRUE(fit.m_Converged);
  EXPECT_DOUBLE_EQ(fit.m_BetaHistory[0][1], -0.25);
  for (const Vector& beta : fit.m_BetaHistory) EXPECT_DOUBLE_EQ(beta[0], 0.5);
  EXPECT_EQ(analysis.Settings().StartValues, (Vector{0.5, -0.25}));
  EXPECT_TRUE(analysis.Data().DesignColumns[0].Dropped);
  EXPECT_FALSE(analysis.Data().DesignColumns[1].Dropped);
  EXPECT_EQ(fit.m_InformationRank, 1);

  // The maximum along the second parameter with the first as an offset.
  const std::vector<ReferenceCase> cases = CasesOf(analysis.Data());
  testing::Real beta = 0.0L;
  for (int k = 0; k < 50; ++k) {
    const ReferenceValue value = EvaluateReference(cases, {0.5L, beta}, false);
    beta += value.U[1] / value.H[1][1];
  }
  const double estimate = fit.m_BetaHistory.back()[1];
  EXPECT_NEAR(estimate, static_cast<double>(beta), kEstimateError * std::sqrt(fit.m_Covariance[1][1]));
  const double H = static_cast<double>(EvaluateReference(cases, {0.5L, estimate}, false).H[1][1]);
  EXPECT_NEAR(fit.m_Information[1][1], H, 1e-11);
  EXPECT_NEAR(fit.m_Covariance[1][1], 1 / H, 1e-11);
  for (const DenseMatrix& matrix : {fit.m_Information, fit.m_Covariance}) {
    EXPECT_EQ(matrix[0][0], 0.0);
    EXPECT_EQ(matrix[0][1], 0.0);
    EXPECT_EQ(matrix[1][0], 0.0);
  }
  const ReferenceValue atZero = EvaluateReference(cases, {0.0L, 0.0L}, false);
  EXPECT_NEAR(fit.m_ScoreStatistic, static_cast<double>(atZero.U[1] * atZero.U[1] / atZero.H[1][1]), 1e-12)
      << "the score test of the free parameter";
}

TEST(FitSurvival, AllParametersFixedIsAFitAtTheStart) {
  TwelveCaseAnalysis analysis({"a", "b"});
  analysis.StartAt({0.5, -0.25}).Fix({true, true});
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxFit& fit = analysis.Fit();
  EXPECT_TRUE(fit.m_Converged);
  EXPECT_DOUBLE_EQ(fit.m_BetaHistory.back()[0], 0.5);
  EXPECT_DOUBLE_EQ(fit.m_BetaHistory.back()[1], -0.25);
  EXPECT_EQ(fit.m_ScoreStatistic, 0.0);
  EXPECT_EQ(fit.m_InformationRank, 0);
  EXPECT_EQ(fit.m_Covariance, (DenseMatrix{{0.0, 0.0}, {0.0, 0.0}}));
}

// ---- Columns that say nothing ---------------------------------------------------------------------------------------

TEST(FitSurvival, ConstantColumnIsDroppedAndKeepsItsStartValue) {
  for (const double start : {0.0, 2.5}) {
    TwelveCaseAnalysis analysis({"constant", "a"});
    if (start != 0.0) analysis.StartAt({start, 0.0});
    IterateToTheEnd(analysis);
    ASSERT_EQ(analysis.Run(), 0);
    const CCoxFit& fit = analysis.Fit();
    EXPECT_TRUE(fit.m_Converged);
    EXPECT_TRUE(analysis.Data().DesignColumns[0].Dropped);
    EXPECT_FALSE(analysis.Data().DesignColumns[1].Dropped);
    EXPECT_EQ(fit.m_BetaHistory.back()[0], start);
    EXPECT_EQ(fit.m_InformationRank, 1);
    for (const DenseMatrix& matrix : {fit.m_Information, fit.m_Covariance}) {
      EXPECT_EQ(matrix[0][0], 0.0);
      EXPECT_EQ(matrix[0][1], 0.0);
      EXPECT_EQ(matrix[1][0], 0.0);
      EXPECT_GT(matrix[1][1], 0.0);
    }
    TwelveCaseAnalysis without({"a"});
    IterateToTheEnd(without);
    ASSERT_EQ(without.Run(), 0);
    EXPECT_NEAR(fit.m_BetaHistory.back()[1], without.Fit().m_BetaHistory.back()[0], 1e-11);
    EXPECT_NEAR(fit.m_LogLikHistory.back(), without.Fit().m_LogLikHistory.back(), 1e-12);
  }
}

TEST(FitSurvival, OnlyAConstantColumnFitsNothing) {
  TwelveCaseAnalysis analysis({"constant"});
  ASSERT_EQ(analysis.Run(), 0);
  EXPECT_TRUE(analysis.Fit().m_Converged);
  EXPECT_TRUE(analysis.Data().DesignColumns[0].Dropped);
  EXPECT_EQ(analysis.Fit().m_BetaHistory.back(), (Vector{0.0}));
  EXPECT_EQ(analysis.Fit().m_LogLikHistory.back(), analysis.Fit().m_NullLogLik);
}

TEST(FitSurvival, OfTwoColumnsThatSayTheSameTheLaterIsDropped) {
  for (const bool efron : {false, true}) {
    TwelveCaseAnalysis analysis({"a", "twice", "b"});
    analysis.Settings().Likelihood = efron ? Likelihoods::Efron : Likelihoods::Breslow;
    IterateToTheEnd(analysis);
    ASSERT_EQ(analysis.Run(), 0);
    const CCoxFit& fit = analysis.Fit();
    EXPECT_TRUE(fit.m_Converged);
    EXPECT_FALSE(analysis.Data().DesignColumns[0].Dropped);
    EXPECT_TRUE(analysis.Data().DesignColumns[1].Dropped);
    EXPECT_FALSE(analysis.Data().DesignColumns[2].Dropped);
    EXPECT_EQ(fit.m_BetaHistory.back()[1], 0.0);
    EXPECT_EQ(fit.m_InformationRank, 2);
    TwelveCaseAnalysis without({"a", "b"});
    without.Settings().Likelihood = analysis.Settings().Likelihood;
    IterateToTheEnd(without);
    ASSERT_EQ(without.Run(), 0);
    const std::vector<std::size_t> kept = {0, 2};
    for (std::size_t j = 0; j < 2; ++j) {
      EXPECT_NEAR(fit.m_BetaHistory.back()[kept[j]], without.Fit().m_BetaHistory.back()[j], 1e-11);
      EXPECT_EQ(fit.m_Covariance[1][kept[j]], 0.0);
      EXPECT_EQ(fit.m_Information[kept[j]][1], 0.0);
      for (std::size_t l = 0; l < 2; ++l) {
        EXPECT_NEAR(fit.m_Covariance[kept[j]][kept[l]], without.Fit().m_Covariance[j][l], 1e-10);
        EXPECT_NEAR(fit.m_Information[kept[j]][kept[l]], without.Fit().m_Information[j][l], 1e-10);
      }
    }
    EXPECT_EQ(fit.m_Covariance[1][1], 0.0);
    EXPECT_EQ(fit.m_Information[1][1], 0.0);
  }
}

// ---- Without columns ------------------------------------------------------------------------------------------------

TEST(FitSurvival, WithoutCovariatesTheNullPassIsTheFit) {
  for (const bool efron : {false, true}) {
    for (const bool strata : {false, true}) {
      TwelveCaseAnalysis analysis;
      Apply({"", efron, strata, false}, analysis);
      ASSERT_EQ(analysis.Run(), 0);
      const CCoxFit& fit = analysis.Fit();
      EXPECT_TRUE(fit.m_Converged);
      EXPECT_EQ(fit.m_FitStatus, 0);
      EXPECT_EQ(fit.m_LogLikHistory.size(), strata ? 2U : 1U) << "with strata the loop runs once";
      const auto expected = static_cast<double>(EvaluateReference(CasesOf(analysis.Data()), {}, efron).L);
      EXPECT_NEAR(fit.m_NullLogLik, expected, 1e-12);
      EXPECT_NEAR(fit.m_LogLikHistory.back(), expected, 1e-12);
      EXPECT_TRUE(fit.m_Covariance.empty());
    }
  }
}

// ---- Candidate models -----------------------------------------------------------------------------------------------

TEST(FitSurvival, CandidateOfASelectionUsesItsColumnsOnly) {
  TwelveCaseAnalysis whole({"a", "b", "twice"});
  IterateToTheEnd(whole);
  CCoxFit& fit = whole.PrepareFit();
  whole.Settings().FinalFitReady = false;
  whole.Settings().ModelBuilding = ModelBuildings::Forward;
  fit.m_ActiveColumns = {1};
  fit.m_ActiveCount = 1;
  const double inactive = whole.Data().CaseTable.GetRow(3)[0];
  fit.FitCurrentModel();
  EXPECT_TRUE(fit.m_Converged);
  EXPECT_TRUE(whole.Host.Bars.empty()) << "a selection has a bar of its own";
  EXPECT_EQ(whole.Data().CaseTable.GetRow(3)[0], inactive);

  TwelveCaseAnalysis alone({"b"});
  IterateToTheEnd(alone);
  ASSERT_EQ(alone.Run(), 0);
  ASSERT_EQ(fit.m_BetaHistory.back().size(), 1U);
  EXPECT_EQ(fit.m_BetaHistory.back(), alone.Fit().m_BetaHistory.back());
  EXPECT_EQ(fit.m_LogLikHistory, alone.Fit().m_LogLikHistory);
  EXPECT_EQ(fit.m_Covariance, alone.Fit().m_Covariance);
}

TEST(FitSurvival, CandidateOfASelectionTakesTheStartValuesOfItsColumns) {
  TwelveCaseAnalysis analysis({"a", "b", "twice"});
  analysis.StartAt({7.0, 0.5, 9.0});
  CCoxFit& fit = analysis.PrepareFit();
  analysis.Settings().FinalFitReady = false;
  analysis.Settings().ModelBuilding = ModelBuildings::Stepwise;
  fit.m_ActiveColumns = {1};
  fit.m_ActiveCount = 1;
  fit.FitCurrentModel();
  EXPECT_DOUBLE_EQ(fit.m_BetaHistory[0][0], 0.5 / analysis.Data().DesignColumns[1].StdDev);
}

// One object serves many fits: the second, after a reset, gives what the first gave.
TEST(FitSurvival, SecondFitOnOneObjectGivesTheSameResults) {
  TwelveCaseAnalysis analysis({"a", "b"});
  CCoxFit& fit = analysis.PrepareFit();
  fit.FitCurrentModel();
  const Vector likelihoods = fit.m_LogLikHistory;
  const Vector estimate = fit.m_BetaHistory.back();
  fit.ResetResults();
  fit.FitCurrentModel();
  ASSERT_EQ(fit.m_LogLikHistory.size(), likelihoods.size());
  for (std::size_t k = 0; k < likelihoods.size(); ++k) EXPECT_NEAR(fit.m_LogLikHistory[k], likelihoods[k], 1e-12);
  for (std::size_t j = 0; j < 2; ++j) EXPECT_NEAR(fit.m_BetaHistory.back()[j], estimate[j], 1e-12);
}

}  // namespace
}  // namespace orv
