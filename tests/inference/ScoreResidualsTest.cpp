#include <gtest/gtest.h>

#include <numeric>
#include <string>

#include "data/AlmostEqual.h"
#include "inference/HandWrittenFit.h"
#include "inference/SchoenfeldResiduals.h"
#include "inference/ScoreResiduals.h"

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
using testing::WriteFit;

using Cases = std::vector<SortedCase>;
using Vector = std::vector<double>;

DenseMatrix Zeros(const Cases& cases) {
  return DenseMatrix(cases.front().x.size(), Vector(cases.size(), 0.0));
}

// The walk over survival times from the last row to the first, with a scan of the stratum at every close. O(n^2).
DenseMatrix LiteralSurvival(const Cases& cases, bool isEfron) {
  const int n = static_cast<int>(cases.size());
  const std::size_t p = cases.front().x.size();
  const auto at = [&](int i) -> const SortedCase& { return cases[static_cast<std::size_t>(i)]; };
  DenseMatrix U = Zeros(cases);
  double S0 = 0.0;
  double W = 0.0;
  double E = 0.0;
  int d = 0;
  Vector S1(p, 0.0);
  Vector T(p, 0.0);
  const auto clearTies = [&] {
    d = 0;
    W = E = 0.0;
    T.assign(p, 0.0);
  };
  for (int i = n - 1; i >= 0; --i) {
    if (i < n - 1 && at(i).g != at(i + 1).g) {
      S0 = 0.0;
      S1.assign(p, 0.0);
      clearTies();
    }
    S0 += at(i).e;
    for (std::size_t k = 0; k < p; ++k) S1[k] += at(i).e * at(i).x[k];
    if (at(i).delta == 1.0) {
      ++d;
      W += at(i).w;
      E += at(i).e;
      for (std::size_t k = 0; k < p; ++k) T[k] += at(i).e * at(i).x[k];
    }
    const bool closes = i == 0 || i == n - 1 || at(i).t != at(i - 1).t || at(i - 1).g != at(i + 1).g;
    if (d == 0 || !closes) continue;
    const int steps = d >= 2 && isEfron ? d : 1;
    for (int step = 0; step < steps; ++step) {
      const double f = static_cast<double>(step) / steps;
      const double denominator = S0 - f * E;
      const double L = W / steps / denominator;
      for (int j = i; j < n && at(j).g == at(i).g; ++j) {
        for (std::size_t k = 0; k < p; ++k) {
          const double c = at(j).x[k] - (S1[k] - f * T[k]) / denominator;
          double& u = U[k][static_cast<std::size_t>(j)];
          const bool isEvent = at(j).t == at(i).t && at(j).delta == 1.0;
          if (isEvent) u += c / steps;
          if (steps == 1) {
            u -= c * at(j).r * L;
          } else {
            u -= c * at(j).e * L * (isEvent ? 1.0 - f : 1.0);
          }
        }
      }
    }
    clearTies();
  }
  return U;
}

// The walk over intervals from the first row to the last, with a scan of those that have started. O(n^2).
DenseMatrix LiteralCounting(const Cases& cases, bool isEfron) {
  const std::size_t n = cases.size();
  const std::size_t p = cases.front().x.size();
  DenseMatrix U = Zeros(cases);
  for (std::size_t i = 0; i < n;) {
    if (cases[i].delta == 0.0) {
      ++i;
      continue;
    }
    const double t = cases[i].t;
    std::size_t end = i;
    while (end < n && cases[end].g == cases[i].g) ++end;
    const auto isEvent = [&](std::size_t j) { return AlmostEqual(cases[j].t, t) && cases[j].delta == 1.0; };
    double S0 = 0.0;
    double W = 0.0;
    double E = 0.0;
    int d = 0;
    Vector S1(p, 0.0);
    Vector T(p, 0.0);
    for (std::size_t j = i; j < end; ++j) {
      if (cases[j].s >= t) continue;
      S0 += cases[j].e;
      for (std::size_t k = 0; k < p; ++k) S1[k] += cases[j].e * cases[j].x[k];
      if (!isEvent(j)) continue;
      ++d;
      W += cases[j].w;
      E += cases[j].e;
      for (std::size_t k = 0; k < p; ++k) T[k] += cases[j].e * cases[j].x[k];
    }
    const int steps = d >= 2 && isEfron ? d : 1;
    for (int step = 0; step < steps; ++step) {
      const double f = static_cast<double>(step) / steps;
      const double denominator = S0 - f * E;
      const double L = W / steps / denominator;
      for (std::size_t j = i; j < end; ++j) {
        if (cases[j].s >= t) continue;
        for (std::size_t k = 0; k < p; ++k) {
          const double c = cases[j].x[k] - (S1[k] - f * T[k]) / denominator;
          if (isEvent(j)) U[k][j] += c / steps;
          U[k][j] -= c * cases[j].e * L * (isEvent(j) ? 1.0 - f : 1.0);
        }
      }
    }
    while (i < end && AlmostEqual(cases[i].t, t)) ++i;
  }
  return U;
}

// Saved influence measures take the kernel for survival times with intervals too, so both are checked on them.
TEST(ScoreResiduals, AgreeWithTheirDefinition) {
  ForRandomFits([](CCoxFit& fit, const Vector& beta, const RandomForm& form) {
    const bool isEfron = fit.m_Likelihood == Likelihoods::Efron;
    const Vector zero(beta.size(), 0.0);
    const Cases atBeta = SortedCasesOf(fit, beta);
    const Cases atZero = SortedCasesOf(fit, zero);
    ExpectNear(SurvivalScoreResiduals(fit, beta.data()), LiteralSurvival(atBeta, isEfron), 1e-11);
    ExpectNear(SurvivalScoreResiduals(fit, nullptr), LiteralSurvival(atZero, isEfron), 1e-11);
    if (!form.Intervals) return;
    ExpectNear(CountingScoreResiduals(fit, beta.data()), LiteralCounting(atBeta, isEfron), 1e-11);
    ExpectNear(CountingScoreResiduals(fit, nullptr), LiteralCounting(atZero, isEfron), 1e-11);
  });
}

TEST(ScoreResiduals, TakeTheKernelOfTheInputTypeAndTheFinalEstimates) {
  ForRandomFits([](CCoxFit& fit, const Vector& beta, const RandomForm& form) {
    ComputeScoreResiduals(fit);
    EXPECT_EQ(fit.m_ScoreResiduals,
              form.Intervals ? CountingScoreResiduals(fit, beta.data()) : SurvivalScoreResiduals(fit, beta.data()));
  });
}

TEST(ScoreResiduals, KeepTheirDigitsBesideAHighRisk) {
  for (const int likelihood : {Likelihoods::Breslow, Likelihoods::Efron}) {
    for (unsigned seed = 1; seed <= 5; ++seed) {
      TestAnalysis analysis(testing::ColumnsWithALateHighRisk(seed));
      DefineForm(analysis, {"", true, false, false, false});
      const Vector beta = {0.7, -0.4};
      CCoxFit& fit = WriteFit(analysis, likelihood, beta);
      const DenseMatrix expected = LiteralCounting(SortedCasesOf(fit, beta), likelihood == Likelihoods::Efron);
      ExpectNear(CountingScoreResiduals(fit, beta.data()), expected, 1e-10);
    }
  }
}

// With weights of 1 each event adds x less its mean, and what the risk sets lose adds up to 0.
TEST(ScoreResiduals, AddUpToTheScore) {
  for (const RandomForm& form : testing::RandomForms()) {
    if (form.Weights || form.MeetingStrata) continue;
    for (const int likelihood : {Likelihoods::Breslow, Likelihoods::Efron}) {
      SCOPED_TRACE(std::string(form.What) + ", rule " + std::to_string(likelihood));
      std::vector<TestColumn> columns = RandomSurvivalColumns(11, 120, false);
      // The highest row of each stratum is not tied.
      for (const double stratum : {1.0, 2.0, 3.0}) {
        const double last[] = {0.0, 40.0 + stratum, 1.0, 0.5, stratum, stratum, 1.0};
        for (std::size_t c = 0; c < columns.size(); ++c) columns[c].Values.push_back(last[c]);
      }
      TestAnalysis analysis(columns);
      DefineForm(analysis, form);
      Vector beta = {-0.3, 0.6};
      CCoxFit& fit = WriteFit(analysis, likelihood, beta);
      ComputeScoreResiduals(fit);
      fit.EvaluateScoreAt(beta.data());
      for (std::size_t k = 0; k < 2; ++k) {
        const Vector& residuals = fit.m_ScoreResiduals[k];
        EXPECT_GT(std::abs(fit.m_ScoreVector[k]), 0.1) << "the vector is far from the maximum";
        EXPECT_NEAR(std::accumulate(residuals.begin(), residuals.end(), 0.0), fit.m_ScoreVector[k], 1e-10) << k;
      }
    }
  }
}

// With weights of 1, one event at a time and starts at 0 the two kernels are one formula. With other weights the risk
// term of the kernel for intervals carries the weight of the row, that for survival times does not: what is left of a
// residual beside the event part differs by that factor.
TEST(ScoreResiduals, KernelsDifferByTheRowWeightInTheRiskTerm) {
  for (const bool weights : {false, true}) {
    std::vector<TestColumn> columns = RandomSurvivalColumns(3, 40, false);
    for (std::size_t i = 0; i < 40; ++i) {
      columns[0].Values[i] = 0.0;
      columns[1].Values[i] = 1.0 + static_cast<double>(i);
    }
    TestAnalysis analysis(columns);
    DefineForm(analysis, {"", true, true, weights, false});
    const Vector beta = {0.7, -0.4};
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, beta);
    const DenseMatrix survival = SurvivalScoreResiduals(fit, beta.data());
    const DenseMatrix counting = CountingScoreResiduals(fit, beta.data());
    if (!weights) {
      ExpectNear(survival, counting, 1e-13);
      continue;
    }
    ComputeSchoenfeldResiduals(fit);
    const Cases cases = SortedCasesOf(fit, beta);
    double largest = 0.0;
    for (std::size_t k = 0; k < 2; ++k) {
      for (std::size_t i = 0; i < cases.size(); ++i) {
        const double event = fit.m_SchoenfeldResiduals[k][i];
        EXPECT_NEAR(counting[k][i] - event, cases[i].w * (survival[k][i] - event), 1e-13) << k << ' ' << i;
        largest = std::max(largest, std::abs(counting[k][i] - survival[k][i]));
      }
    }
    EXPECT_GT(largest, 0.1) << "the weights matter";
  }
}

// Means of 6, 4 and 8/3 at the vector of zeros: the top event stands alone, then the other with both at risk. A tied
// pair would share two events over the one risk set, which only the kernel for intervals does.
TEST(ScoreResiduals, LastRowClosesAGroupOfItsOwn) {
  for (const int likelihood : testing::kTieRules) {
    TestAnalysis analysis({{"start", {0, 0, 0}}, {"time", {1, 4, 4}}, {"status", {1, 1, 1}}, {"a", {0, 2, 6}}});
    analysis.Interval("start", "time").Status("status").Covariates({"a"}).DefaultDesign();
    CCoxFit& fit = WriteFit(analysis, likelihood, {0.0});
    SCOPED_TRACE(likelihood);
    ExpectNear(SurvivalScoreResiduals(fit, nullptr), {{-16.0 / 9.0, -7.0 / 9.0, -1.0 / 9.0}}, 1e-14);
    if (likelihood == Likelihoods::Efron) continue;
    ExpectNear(CountingScoreResiduals(fit, nullptr), {{-16.0 / 9.0, 2.0 / 9.0, -10.0 / 9.0}}, 1e-14);
  }
}

// The stratum of the next lower row is compared with that of the next higher one, so the highest row of every stratum
// behaves as the last row of the table does.
TEST(ScoreResiduals, HighestRowOfAStratumClosesAGroupOfItsOwn) {
  for (const int likelihood : testing::kTieRules) {
    TestAnalysis analysis(
        {{"time", {1, 4, 4, 4, 7}}, {"status", {1, 1, 1, 1, 0}}, {"a", {0, 2, 6, 1, 5}}, {"g", {1, 1, 1, 2, 2}}});
    analysis.Time({"time"}).Status("status").Covariates({"a"}).Strata("g", {1, 2}).DefaultDesign();
    CCoxFit& fit = WriteFit(analysis, likelihood, {0.0});
    SCOPED_TRACE(likelihood);
    ExpectNear(SurvivalScoreResiduals(fit, nullptr),
               {{-16.0 / 9.0, -7.0 / 9.0, -1.0 / 9.0, -2.0 + 2.0 / 2.0, -2.0 / 2.0}}, 1e-14);
  }
}

// Below the highest row ties are a group again; the highest row, an event of the same time, has its part in it too.
TEST(ScoreResiduals, ThirdTiedEventMakesAPairBelowTheHighestRow) {
  TestAnalysis analysis({{"time", {4, 4, 4}}, {"status", {1, 1, 1}}, {"a", {0, 3, 6}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Efron, {0.0});
  // Steps of the pair: mean 9/3 and step 1/3; mean (9 - 3/2)/2 = 3.75 and step 1/2, of which an event loses half.
  const auto part = [](double x) {
    return (x - 3.0) / 2.0 + (x - 3.75) / 2.0 - (x - 3.0) / 3.0 - 0.5 * (x - 3.75) / 2.0;
  };
  ExpectNear(SurvivalScoreResiduals(fit, nullptr), {{part(0.0), part(3.0), part(6.0)}}, 1e-14);
}

TEST(ScoreResiduals, StartsAreNotLookedAtByTheKernelForSurvivalTimes) {
  std::vector<TestColumn> columns = RandomSurvivalColumns(8, 40, false);
  TestAnalysis intervals(columns);
  DefineForm(intervals, {"", true, true, true, false});
  TestAnalysis times(columns);
  DefineForm(times, {"", false, true, true, false});
  const Vector beta = {0.7, -0.4};
  CCoxFit& ofIntervals = WriteFit(intervals, Likelihoods::Efron, beta);
  CCoxFit& ofTimes = WriteFit(times, Likelihoods::Efron, beta);
  EXPECT_EQ(SurvivalScoreResiduals(ofIntervals, beta.data()), SurvivalScoreResiduals(ofTimes, beta.data()));
}

TEST(ScoreResiduals, AreComputedOnlyWhenAbsentAndAtAnEstimate) {
  TestAnalysis analysis(RandomSurvivalColumns(1, 20, false));
  DefineForm(analysis, {});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1, 0.2});
  const DenseMatrix mark(2, Vector(20, 0.25));
  fit.m_ScoreResiduals = mark;
  ComputeScoreResiduals(fit);
  EXPECT_EQ(fit.m_ScoreResiduals, mark);
  fit.m_ScoreResiduals.clear();
  fit.m_BetaHistory.clear();
  ComputeScoreResiduals(fit);
  EXPECT_TRUE(fit.m_ScoreResiduals.empty());
}

// Residuals depend on ratios of risks alone: covariates far from 0, such as years, give the residuals of the same
// covariates around 0 although exp(x'b) is out of range.
TEST(ScoreResiduals, SurviveRisksBeyondTheRangeOfADouble) {
  for (const bool intervals : {false, true}) {
    std::vector<TestColumn> columns = RandomSurvivalColumns(6, 40, false);
    TestAnalysis near(columns);
    for (double& value : columns[3].Values) value += 2000.0;
    TestAnalysis far(columns);
    const Vector beta = {1.5, -0.4};
    DefineForm(near, {"", intervals, false, false, false});
    DefineForm(far, {"", intervals, false, false, false});
    CCoxFit& fitNear = WriteFit(near, Likelihoods::Efron, beta);
    CCoxFit& fitFar = WriteFit(far, Likelihoods::Efron, beta);
    ComputeScoreResiduals(fitNear);
    ComputeScoreResiduals(fitFar);
    ExpectNear(fitFar.m_ScoreResiduals, fitNear.m_ScoreResiduals, 1e-9);
  }
}

}  // namespace
}  // namespace orv
