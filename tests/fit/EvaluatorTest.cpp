// Score and information at a given vector, over all columns of the design.
#include <gtest/gtest.h>

#include <cfenv>
#include <string>
#include <vector>

#include "fit/CCoxFit.h"
#include "fit/NumericalFailure.h"
#include "fit/TwelveCases.h"

namespace orv {
namespace {

using testing::CasesOf;
using testing::EvaluateReference;
using testing::RealVector;
using testing::ReferenceValue;
using testing::TwelveCaseAnalysis;
using Vector = std::vector<double>;

void ExpectReference(const CCoxFit& fit, const ReferenceValue& expected, const std::string& what) {
  const std::size_t p = expected.U.size();
  ASSERT_EQ(fit.m_ScoreVector.size(), p) << what;
  ASSERT_EQ(fit.m_PackedInformation.size(), p * (p + 1) / 2) << what;
  for (std::size_t i = 0; i < p; ++i) {
    EXPECT_NEAR(fit.m_ScoreVector[i], static_cast<double>(expected.U[i]), 1e-12) << what << ", score " << i;
    for (std::size_t j = 0; j <= i; ++j) {
      EXPECT_NEAR(fit.m_PackedInformation[i * (i + 1) / 2 + j], static_cast<double>(expected.H[i][j]), 1e-12)
          << what << ", information " << i << ' ' << j;
    }
  }
}

TEST(Evaluators, GiveScoreAndPackedInformationOnTheScaleOfTheTable) {
  const Vector beta = {0.5, -0.75, 0.25};
  for (const bool strata : {false, true}) {
    for (const int efron : {0, 1}) {
      TwelveCaseAnalysis analysis({"a", "b", "w"});
      analysis.Weights("w");
      if (strata) analysis.Strata("g", {1, 2});
      CCoxFit& fit = analysis.PrepareFit();
      const auto evaluate = [&] {
        if (strata) {
          fit.EvaluateSurvivalStrata(efron, beta.data());
        } else {
          fit.EvaluateSurvival(efron, beta.data());
        }
      };
      const RealVector reference(beta.begin(), beta.end());
      const std::string what = std::to_string(efron) + (strata ? ", strata" : "");
      evaluate();
      ExpectReference(fit, EvaluateReference(CasesOf(analysis.Data()), reference, efron == 1), what + ", raw");
      fit.Standardize();
      evaluate();
      ExpectReference(fit, EvaluateReference(CasesOf(analysis.Data()), reference, efron == 1), what + ", standardised");
    }
  }
}

TEST(Evaluators, TakeAllColumnsWhateverTheCurrentModel) {
  TwelveCaseAnalysis analysis({"a", "b"});
  CCoxFit& fit = analysis.PrepareFit();
  fit.m_ActiveColumns = {1};
  fit.m_ActiveCount = 1;
  const Vector beta = {0.5, -0.75};
  fit.EvaluateSurvival(1, beta.data());
  ExpectReference(fit, EvaluateReference(CasesOf(analysis.Data()), {0.5L, -0.75L}, true), "");
  EXPECT_EQ(fit.m_ActiveColumns, (std::vector<int>{1}));
}

TEST(Evaluators, UnstratifiedOneIgnoresTheStrata) {
  TwelveCaseAnalysis analysis({"a"});
  analysis.Strata("g", {1, 2});
  CCoxFit& fit = analysis.PrepareFit();
  const double beta = 0.5;
  fit.EvaluateSurvivalStrata(0, &beta);
  const double withStrata = fit.m_PackedInformation[0];
  fit.EvaluateSurvival(0, &beta);
  EXPECT_NE(fit.m_PackedInformation[0], withStrata);
}

TEST(Evaluators, OneColumnGivesOnePackedEntry) {
  TwelveCaseAnalysis analysis({"a"});
  CCoxFit& fit = analysis.PrepareFit();
  fit.m_PackedInformation.assign(10, 3.0);
  fit.m_ScoreVector.assign(4, 3.0);
  const double beta = 0.0;
  fit.EvaluateSurvival(0, &beta);
  ExpectReference(fit, EvaluateReference(CasesOf(analysis.Data()), {0.0L}, false), "");
}

TEST(Evaluators, FixedColumnsAreEvaluatedLikeTheOthers) {
  TwelveCaseAnalysis analysis({"a", "b"});
  CCoxFit& fit = analysis.PrepareFit();
  analysis.Data().DesignColumns[0].Fixed = true;
  const Vector beta = {0.5, 0.0};
  fit.EvaluateSurvival(0, beta.data());
  ExpectReference(fit, EvaluateReference(CasesOf(analysis.Data()), {0.5L, 0.0L}, false), "");
  EXPECT_FALSE(analysis.Data().DesignColumns[0].Dropped) << "an evaluator factors nothing";
}

TEST(Evaluators, ReturnEarlyWithoutMemory) {
  TwelveCaseAnalysis analysis({"a", "b"});
  CCoxFit& fit = analysis.PrepareFit();
  const Vector beta = {0.5, -0.75};
  for (const bool strata : {false, true}) {
    const auto evaluate = [&] {
      if (strata) {
        fit.EvaluateSurvivalStrata(1, beta.data());
      } else {
        fit.EvaluateSurvival(1, beta.data());
      }
    };
    analysis.Host.FailAllocation(0);
    evaluate();
    const int requests = analysis.Host.Requests();
    ASSERT_GT(requests, 0);
    for (int failing = 1; failing <= requests; ++failing) {
      fit.m_ScoreVector = {7.0};
      fit.m_PackedInformation = {8.0};
      analysis.Host.FailAllocation(failing);
      evaluate();
      EXPECT_EQ(fit.m_ScoreVector, (Vector{7.0})) << failing;
      EXPECT_EQ(fit.m_PackedInformation, (Vector{8.0})) << failing;
      EXPECT_EQ(analysis.Host.LiveBlocks(), 0) << failing;
    }
    analysis.Host.FailAllocation(0);
  }
}

TEST(Evaluators, NumericalFailurePassesThrough) {
  TwelveCaseAnalysis analysis({"a", "b"});
  CCoxFit& fit = analysis.PrepareFit();
  const Vector tooLarge = {2000.0, 0.0};
  EXPECT_THROW(fit.EvaluateSurvival(0, tooLarge.data()), NumericalFailure);
  EXPECT_THROW(fit.EvaluateSurvivalStrata(1, tooLarge.data()), NumericalFailure);
  EXPECT_EQ(analysis.Host.LiveBlocks(), 0);
}

// An overflow of other arithmetic that nobody asked about is no failure of the pass.
TEST(Evaluators, FlagsOfTheCallerAreNoFailure) {
  TwelveCaseAnalysis analysis({"a", "b"});
  CCoxFit& fit = analysis.PrepareFit();
  const Vector beta = {0.5, -0.75};
  std::fenv_t saved;
  std::fegetenv(&saved);
  for (const int flag : {FE_INVALID, FE_DIVBYZERO, FE_OVERFLOW}) {
    std::feclearexcept(FE_ALL_EXCEPT);
    std::feraiseexcept(flag);
    EXPECT_NO_THROW(fit.EvaluateSurvival(0, beta.data())) << "flag " << flag;
  }
  std::fesetenv(&saved);
}

}  // namespace
}  // namespace orv
