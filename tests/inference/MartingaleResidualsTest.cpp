#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "inference/HandWrittenFit.h"
#include "inference/MartingaleResiduals.h"
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

using Cases = std::vector<SortedCase>;

struct Residuals {
  std::vector<double> M;
  std::vector<double> D;
};

double Deviance(double M, double delta) {
  const double v = -2.0 * (M + delta * std::log(delta - M));
  if (!(v > 0.0)) return 0.0;
  return M < 0.0 ? -std::sqrt(v) : std::sqrt(v);
}

// Each group of exactly equal times sums its risk set anew. O(n^2).
Residuals LiteralSurvival(const Cases& cases, bool isEfron) {
  const std::size_t n = cases.size();
  Residuals result{std::vector<double>(n), std::vector<double>(n, 0.0)};
  double H = 0.0;
  for (std::size_t first = 0; first < n;) {
    if (first > 0 && cases[first].g != cases[first - 1].g) H = 0.0;
    std::size_t end = first;
    while (end < n && cases[end].g == cases[first].g && cases[end].t == cases[first].t) ++end;
    double S0 = 0.0;
    for (std::size_t j = first; j < n && cases[j].g == cases[first].g; ++j) S0 += cases[j].e;
    double d = 0.0;
    double W = 0.0;
    double E = 0.0;
    for (std::size_t j = first; j < end; ++j) {
      d += cases[j].delta;
      W += cases[j].w * cases[j].delta;
      E += cases[j].e * cases[j].delta;
    }
    double ofEvents = H;
    if (d < 2.0 || !isEfron) {
      H += W / S0;
      ofEvents = H;
    } else {
      const double q = 1.0 / d;
      for (int k = 0; k < static_cast<int>(d); ++k) {
        const double f = k * q;
        H += W * q / (S0 - f * E);
        ofEvents += (1.0 - f) * W * q / (S0 - f * E);
      }
    }
    for (std::size_t l = first; l < end; ++l) {
      const double delta = cases[l].delta;
      result.M[l] = delta == 0.0 ? -H * cases[l].r : delta - ofEvents * cases[l].r;
      result.D[l] = Deviance(result.M[l], delta);
    }
    first = end;
  }
  return result;
}

// The walk over intervals: each event time scans the rows from its first event on for those that have started.
std::vector<double> LiteralCounting(const Cases& cases, bool isEfron) {
  const std::size_t n = cases.size();
  std::vector<double> M;
  for (const SortedCase& one : cases) M.push_back(one.delta);
  for (std::size_t i = 0; i < n;) {
    if (cases[i].delta == 0.0) {
      ++i;
      continue;
    }
    const double t = cases[i].t;
    std::size_t end = i;
    while (end < n && cases[end].g == cases[i].g) ++end;
    const auto isEvent = [&](std::size_t j) { return cases[j].t == t && cases[j].delta == 1.0; };
    double S0 = 0.0;
    double W = 0.0;
    double E = 0.0;
    int d = 0;
    for (std::size_t j = i; j < end; ++j) {
      if (cases[j].s >= t) continue;
      S0 += cases[j].e;
      if (!isEvent(j)) continue;
      ++d;
      W += cases[j].w;
      E += cases[j].e;
    }
    double all = 0.0;
    double ofEvents = 0.0;
    for (int k = 0; k < d; ++k) {
      const double f = isEfron ? static_cast<double>(k) / d : 0.0;
      all += W / d / (S0 - f * E);
      ofEvents += (1.0 - f) * W / d / (S0 - f * E);
    }
    std::size_t next = i;
    for (std::size_t j = i; j < end; ++j) {
      if (cases[j].s < t) M[j] -= cases[j].r * (isEvent(j) ? ofEvents : all);
      if (cases[j].t == t) ++next;
    }
    i = next;
  }
  return M;
}

TEST(MartingaleResiduals, AgreeWithTheirDefinition) {
  ForRandomFits([](CCoxFit& fit, const std::vector<double>& beta, const RandomForm& form) {
    const Cases cases = SortedCasesOf(fit, beta);
    const bool isEfron = fit.m_Likelihood == Likelihoods::Efron;
    if (form.Intervals) {
      PostFitCountingProcess(fit);
      ExpectNear(fit.m_MartingaleResiduals, LiteralCounting(cases, isEfron), 1e-12);
      EXPECT_TRUE(fit.m_DevianceResiduals.empty()) << "there are none for intervals";
      return;
    }
    PostFitSurvivalTime(fit);
    const Residuals expected = LiteralSurvival(cases, isEfron);
    ExpectNear(fit.m_MartingaleResiduals, expected.M, 1e-12);
    ExpectNear(fit.m_DevianceResiduals, expected.D, 1e-7);
  });
}

// Events and expected events of a stratum balance at any vector, weight by weight; the rows themselves balance when all
// weights are 1.
TEST(MartingaleResiduals, AddUpToZeroInEachStratum) {
  ForRandomFits([](CCoxFit& fit, const std::vector<double>& beta, const RandomForm& form) {
    if (form.Intervals) {
      PostFitCountingProcess(fit);
    } else {
      PostFitSurvivalTime(fit);
    }
    const Cases cases = SortedCasesOf(fit, beta);
    std::map<double, double> sums;
    for (std::size_t i = 0; i < cases.size(); ++i) sums[cases[i].g] += cases[i].w * fit.m_MartingaleResiduals[i];
    EXPECT_EQ(sums.size(), form.Strata ? 3U : 1U);
    for (const auto& [stratum, sum] : sums) EXPECT_NEAR(sum, 0.0, 1e-11) << "stratum " << stratum;
  });
}

TEST(MartingaleResiduals, KeepTheirDigitsBesideAHighRisk) {
  for (const int likelihood : {Likelihoods::Breslow, Likelihoods::Efron}) {
    for (unsigned seed = 1; seed <= 5; ++seed) {
      TestAnalysis analysis(testing::ColumnsWithALateHighRisk(seed));
      testing::DefineForm(analysis, {"", true, false, false, false});
      const std::vector<double> beta = {0.7, -0.4};
      CCoxFit& fit = WriteFit(analysis, likelihood, beta);
      PostFitCountingProcess(fit);
      const Cases cases = SortedCasesOf(fit, beta);
      ExpectNear(fit.m_MartingaleResiduals, LiteralCounting(cases, likelihood == Likelihoods::Efron), 1e-11);
    }
  }
}

// An event shares only what is left of each step of its group, a censored case at that time has all of them.
TEST(MartingaleResiduals, TiedEventsShareTheStepsUnderEfronsRule) {
  struct {
    int Likelihood;
    double OfEvent;
    double OfCensored;
  } const cases[] = {
      {Likelihoods::Breslow, 1.0 - 2.0 / 4.0, -2.0 / 4.0},
      {Likelihoods::Efron, 1.0 - (1.0 / 4.0 + 0.5 / 3.0), -(1.0 / 4.0 + 1.0 / 3.0)},
      {Likelihoods::Discrete, 1.0 - 2.0 / 4.0, -2.0 / 4.0},
  };
  for (const auto& c : cases) {
    for (const bool intervals : {false, true}) {
      TestAnalysis analysis(
          {{"start", {0, 0, 0, 0}}, {"time", {2, 2, 2, 3}}, {"status", {1, 1, 0, 0}}, {"a", {1, 3, 8, 4}}});
      if (intervals) {
        analysis.Interval("start", "time");
      } else {
        analysis.Time({"time"});
      }
      analysis.Status("status").Covariates({"a"}).DefaultDesign();
      CCoxFit& fit = WriteFit(analysis, c.Likelihood, {0.0});
      if (intervals) {
        PostFitCountingProcess(fit);
      } else {
        PostFitSurvivalTime(fit);
      }
      const std::string what = std::to_string(c.Likelihood) + (intervals ? ", intervals" : ", times");
      EXPECT_NEAR(fit.m_MartingaleResiduals[0], c.OfEvent, 1e-15) << what;
      EXPECT_NEAR(fit.m_MartingaleResiduals[1], c.OfEvent, 1e-15) << what;
      EXPECT_NEAR(fit.m_MartingaleResiduals[2], c.OfCensored, 1e-15) << what;
      EXPECT_NEAR(fit.m_MartingaleResiduals[3], c.OfCensored, 1e-15) << what;
    }
  }
}

TEST(MartingaleResiduals, EventsTiedAtTheLargestTimeAreATiedGroup) {
  TestAnalysis analysis({{"time", {1, 4, 4}}, {"status", {1, 1, 1}}, {"a", {0, 2, 6}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  CCoxFit& breslow = WriteFit(analysis, Likelihoods::Breslow, {0.0});
  PostFitSurvivalTime(breslow);
  ExpectNear(breslow.m_MartingaleResiduals, {2.0 / 3.0, -1.0 / 3.0, -1.0 / 3.0}, 1e-15);
  CCoxFit& efron = WriteFit(analysis, Likelihoods::Efron, {0.0});
  PostFitSurvivalTime(efron);
  // 1/3 before, then a step of 1/2 and half a step of 1.
  ExpectNear(efron.m_MartingaleResiduals, {2.0 / 3.0, -1.0 / 3.0, -1.0 / 3.0}, 1e-15);
}

// The weight of a case enters through the hazard alone, not through its own residual.
TEST(MartingaleResiduals, OwnWeightDoesNotScaleTheResidual) {
  TestAnalysis analysis({{"time", {1, 2}}, {"status", {1, 0}}, {"a", {1, 3}}, {"w", {3, 1}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).Weights("w").DefaultDesign();
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.0});
  PostFitSurvivalTime(fit);
  ExpectNear(fit.m_MartingaleResiduals, {1.0 - 3.0 / 4.0, -3.0 / 4.0}, 1e-15);
}

TEST(DevianceResiduals, AreTheSignedRootOfTheDeviance) {
  TestAnalysis analysis({{"time", {1, 2}}, {"status", {1, 0}}, {"a", {1, 3}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.0});
  PostFitSurvivalTime(fit);
  EXPECT_NEAR(fit.m_DevianceResiduals[0], std::sqrt(-2.0 * (0.5 + std::log(0.5))), 1e-14);
  EXPECT_NEAR(fit.m_DevianceResiduals[1], -std::sqrt(2.0 * 0.5), 1e-14) << "a negative residual gives a negative root";
}

// The argument of the logarithm is the expected number of events of the case. A case without any leaves nothing to take
// a logarithm of, and its deviance stays 0: an event with a risk that is lost beside 1, and a case that is censored
// before the first event.
TEST(DevianceResiduals, StayZeroWithoutAPositiveArgument) {
  for (const int likelihood : testing::kTieRules) {
    TestAnalysis analysis({{"time", {1, 2, 2, 3}}, {"status", {0, 1, 1, 0}}, {"a", {0, -1, -1, 0}}});
    analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
    CCoxFit& fit = WriteFit(analysis, likelihood, {50.0});
    PostFitSurvivalTime(fit);
    ASSERT_TRUE(fit.m_BreslowValid);
    EXPECT_EQ(fit.m_MartingaleResiduals[0], 0.0);
    EXPECT_EQ(fit.m_MartingaleResiduals[1], 1.0);
    EXPECT_EQ(fit.m_DevianceResiduals[0], 0.0) << likelihood;
    EXPECT_EQ(fit.m_DevianceResiduals[1], 0.0) << likelihood;
    EXPECT_EQ(fit.m_DevianceResiduals[2], 0.0) << likelihood;
    EXPECT_LT(fit.m_DevianceResiduals[3], 0.0) << likelihood;
  }
}

}  // namespace
}  // namespace orv
