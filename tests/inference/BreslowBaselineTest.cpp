#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "data/AlmostEqual.h"
#include "inference/BreslowBaseline.h"
#include "inference/HandWrittenFit.h"
#include "inference/PostFit.h"

namespace orv {
namespace {

using testing::ExpectNear;
using testing::ForRandomFits;
using testing::RandomForm;
using testing::SortedCase;
using testing::SortedCasesOf;
using testing::TestAnalysis;
using testing::WriteFit;
using Vector = std::vector<double>;

struct Baseline {
  Vector Times{0.0};
  Vector H{0.0};
  Vector S0;
  Vector dN;
  DenseMatrix S1;
};

// The events of each run of nearly equal times, on its lowest row: the count and the running mean of their weights.
TiedEvents LiteralTies(const std::vector<SortedCase>& cases) {
  const std::size_t n = cases.size();
  TiedEvents ties{std::vector<int>(n, 0), Vector(n, 0.0)};
  int count = 0;
  double mean = 0.0;
  for (std::size_t i = n; i-- > 0;) {
    if (cases[i].delta > 0.0) {
      ++count;
      mean += (cases[i].w - mean) / count;
    }
    if (i > 0 && cases[i].g == cases[i - 1].g && AlmostEqual(cases[i].t, cases[i - 1].t)) continue;
    ties.Counts[i] = count;
    ties.MeanWeights[i] = mean;
    count = 0;
    mean = 0.0;
  }
  return ties;
}

// Every event time collects its risk set anew: the rows from its own on, of the stratum, that have started. O(n^2).
std::vector<Baseline> LiteralBaselines(const std::vector<SortedCase>& cases, bool intervals) {
  const TiedEvents ties = LiteralTies(cases);
  std::vector<Baseline> strata;
  for (std::size_t i = 0; i < cases.size(); ++i) {
    if (i == 0 || cases[i].g != cases[i - 1].g) strata.emplace_back();
    if (cases[i].delta != 1.0 || ties.Counts[i] == 0) continue;
    double S0 = 0.0;
    Vector S1(cases[i].x.size(), 0.0);
    for (std::size_t j = i; j < cases.size() && cases[j].g == cases[i].g; ++j) {
      if (intervals && j > i && cases[j].s >= cases[i].t) continue;
      S0 += cases[j].e;
      for (std::size_t k = 0; k < S1.size(); ++k) S1[k] += cases[j].e * cases[j].x[k];
    }
    Baseline& stratum = strata.back();
    stratum.Times.push_back(cases[i].t);
    stratum.S0.push_back(S0);
    stratum.S1.push_back(S1);
    stratum.dN.push_back(ties.Counts[i] * ties.MeanWeights[i]);
    stratum.H.push_back(stratum.H.back() + stratum.dN.back() / S0);
  }
  return strata;
}

void PostFit(CCoxFit& fit, bool intervals) {
  if (intervals) {
    PostFitCountingProcess(fit);
  } else {
    PostFitSurvivalTime(fit);
  }
  FillEventRiskMoments(fit);
}

TEST(BreslowBaseline, AgreesWithItsDefinition) {
  ForRandomFits([](CCoxFit& fit, const Vector& beta, const RandomForm& form) {
    PostFit(fit, form.Intervals);
    const std::vector<Baseline> expected = LiteralBaselines(SortedCasesOf(fit, beta), form.Intervals);
    ASSERT_EQ(fit.m_BreslowCurves.size(), form.Strata ? 3U : 1U);
    ASSERT_EQ(expected.size(), fit.m_BreslowCurves.size());
    for (std::size_t g = 0; g < expected.size(); ++g) {
      SCOPED_TRACE("stratum " + std::to_string(g));
      EXPECT_EQ(fit.m_BreslowCurves[g].Times, expected[g].Times);
      ExpectNear(fit.m_BreslowCurves[g].Values, expected[g].H, 1e-12);
      ExpectNear(fit.m_EventRiskSums[g], expected[g].S0, 1e-11);
      ExpectNear(fit.m_EventWeightSums[g], expected[g].dN, 1e-12);
      ExpectNear(fit.m_EventRiskMoments[g], expected[g].S1, 1e-11);
    }
  });
}

TEST(BreslowBaseline, TiesAreCountedOnTheLowestRowOfTheirRun) {
  ForRandomFits([](CCoxFit& fit, const Vector& beta, const RandomForm& form) {
    PostFit(fit, form.Intervals);
    const TiedEvents ties = ComputeBreslowBaseline(fit);
    const TiedEvents expected = LiteralTies(SortedCasesOf(fit, beta));
    EXPECT_EQ(ties.Counts, expected.Counts);
    ExpectNear(ties.MeanWeights, expected.MeanWeights, 1e-14);
  });
}

// Efron's rule shares the steps of a tied group among its residuals; the baseline takes the whole group at once.
TEST(BreslowBaseline, IncrementIsThatOfBreslowUnderEveryRule) {
  for (const int likelihood : testing::kTieRules) {
    TestAnalysis analysis({{"time", {2, 2, 3, 5}}, {"status", {1, 1, 0, 1}}, {"a", {1, 3, 8, 4}}});
    analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
    CCoxFit& fit = WriteFit(analysis, likelihood, {0.0});
    PostFitSurvivalTime(fit);
    ASSERT_EQ(fit.m_BreslowCurves.size(), 1U);
    EXPECT_EQ(fit.m_BreslowCurves[0].Times, (Vector{0.0, 2.0, 5.0})) << likelihood;
    EXPECT_EQ(fit.m_BreslowCurves[0].Values, (Vector{0.0, 0.5, 1.5})) << likelihood;
  }
}

// A run of nearly equal times is one time, and its lowest row speaks for it. Cases come in the order of their times, so
// a censored case may stand ahead of an event that is later by a rounding error: that run has no increment. At a time
// that is exactly the same the events stand first.
TEST(BreslowBaseline, TiedRunWithACensoredLowestRowHasNoIncrement) {
  const double later = std::nextafter(2.0, 3.0);
  for (const bool intervals : {false, true}) {
    TestAnalysis analysis({{"start", {0, 0, 0}}, {"time", {2, later, 3}}, {"status", {0, 1, 1}}, {"a", {1, 3, 8}}});
    if (intervals) {
      analysis.Interval("start", "time");
    } else {
      analysis.Time({"time"});
    }
    analysis.Status("status").Covariates({"a"}).DefaultDesign();
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.0});
    PostFit(fit, intervals);
    EXPECT_EQ(fit.m_BreslowCurves[0].Times, (Vector{0.0, 3.0}));
    EXPECT_EQ(fit.m_BreslowCurves[0].Values, (Vector{0.0, 1.0}));
    if (!intervals) {
      EXPECT_EQ(fit.m_KaplanMeierCurves[0].Times, (Vector{0.0, 3.0}));
    }
  }
  TestAnalysis exact({{"time", {2, 2, 3}}, {"status", {0, 1, 1}}, {"a", {1, 3, 8}}});
  exact.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  CCoxFit& fit = WriteFit(exact, Likelihoods::Breslow, {0.0});
  PostFitSurvivalTime(fit);
  EXPECT_EQ(fit.m_BreslowCurves[0].Times, (Vector{0.0, 2.0, 3.0}));
}

// An interval that begins at an event time is not at risk there.
TEST(BreslowBaseline, IntervalIsAtRiskAfterItsStart) {
  TestAnalysis analysis({{"start", {0, 1, 2}}, {"stop", {2, 3, 4}}, {"status", {1, 1, 0}}, {"a", {1, 3, 8}}});
  analysis.Interval("start", "stop").Status("status").Covariates({"a"}).DefaultDesign();
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.0});
  PostFit(fit, true);
  EXPECT_EQ(fit.m_EventRiskSums[0], (Vector{2.0, 2.0}));
  EXPECT_EQ(fit.m_EventRiskMoments[0], (DenseMatrix{{4.0}, {11.0}}));
}

TEST(BreslowBaseline, RiskSumsKeepTheirDigitsBelowTheStartOfAHighRisk) {
  for (unsigned seed = 1; seed <= 5; ++seed) {
    TestAnalysis analysis(testing::ColumnsWithALateHighRisk(seed));
    testing::DefineForm(analysis, {"", true, false, false, false});
    const Vector beta = {0.7, -0.4};
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, beta);
    PostFit(fit, true);
    const Baseline expected = LiteralBaselines(SortedCasesOf(fit, beta), true)[0];
    ASSERT_EQ(fit.m_EventRiskSums[0].size(), expected.S0.size());
    ASSERT_GT(expected.S0.back() + expected.S0[expected.S0.size() - 2], 1e15);
    ASSERT_LT(expected.S0[0], 100.0);
    for (std::size_t k = 0; k < expected.S0.size(); ++k) {
      EXPECT_NEAR(fit.m_EventRiskSums[0][k], expected.S0[k], 1e-12 * expected.S0[k]) << k;
      for (std::size_t j = 0; j < 2; ++j) {
        EXPECT_NEAR(fit.m_EventRiskMoments[0][k][j], expected.S1[k][j], 1e-11 * expected.S0[k]) << k << ' ' << j;
      }
    }
    ExpectNear(fit.m_BreslowCurves[0].Values, expected.H, 1e-12);
  }
}

// The one event of stratum 1 is later than a censored case by a rounding error.
TEST(BreslowBaseline, StratumWithoutAnIncrementHasItsFirstPointOnly) {
  TestAnalysis analysis({{"time", {2, std::nextafter(2.0, 3.0), 3, 3, 4}},
                         {"status", {0, 1, 0, 1, 1}},
                         {"a", {1, 3, 8, 4, 2}},
                         {"g", {1, 1, 1, 2, 2}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).Strata("g", {1, 2}).DefaultDesign();
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.0});
  PostFitSurvivalTime(fit);
  ASSERT_EQ(fit.m_BreslowCurves.size(), 2U);
  EXPECT_EQ(fit.m_BreslowCurves[0].Times, (Vector{0.0}));
  EXPECT_TRUE(fit.m_EventRiskSums[0].empty());
  EXPECT_EQ(fit.m_BreslowCurves[1].Times, (Vector{0.0, 3.0, 4.0}));
}

}  // namespace
}  // namespace orv
