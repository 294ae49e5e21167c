#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "data/AlmostEqual.h"
#include "inference/BreslowBaseline.h"
#include "inference/HandWrittenFit.h"
#include "inference/KaplanMeierBaseline.h"
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
using testing::WriteFit;
using Vector = std::vector<double>;

// The solver stops within 6e-8 of a conditional probability; a stratum has up to 7 of them.
constexpr double kCurveTolerance = 1e-6;

// The root by halving the interval: the sum grows with alpha.
double Root(const std::vector<double>& risks, double S0) {
  long double low = 0.0L;
  long double high = 1.0L;
  for (int step = 0; step < 200; ++step) {
    const long double alpha = 0.5L * (low + high);
    long double sum = 0.0L;
    for (const double r : risks) sum += r / (1.0L - std::pow(alpha, static_cast<long double>(r)));
    (sum < S0 ? low : high) = alpha;
  }
  return static_cast<double>(low);
}

// The curves from the event lists of the Breslow baseline. The count that ends a curve is looked up in the table of all
// rows at the size of the stratum.
std::vector<BaselineCurve> LiteralCurves(const CCoxFit& fit,
                                         const std::vector<SortedCase>& cases,
                                         const std::vector<int>& counts) {
  std::vector<BaselineCurve> curves;
  for (std::size_t first = 0; first < cases.size();) {
    std::size_t end = first;
    while (end < cases.size() && cases[end].g == cases[first].g) ++end;
    const std::vector<double>& riskSums = fit.m_EventRiskSums[curves.size()];
    BaselineCurve curve{{0.0}, {1.0}};
    std::size_t k = 0;
    for (std::size_t i = first; i + 1 < end; ++i) {
      const int d = counts[i];
      if (cases[i].delta != 1.0 || d == 0) continue;
      double alpha = 0.0;
      if (d == 1) {
        alpha = std::pow(1.0 - cases[i].r / riskSums[k], 1.0 / cases[i].r);
      } else {
        std::vector<double> risks;
        for (std::size_t j = i; j < i + static_cast<std::size_t>(d); ++j) risks.push_back(cases[j].r);
        alpha = Root(risks, riskSums[k]);
      }
      curve.Times.push_back(cases[i].t);
      curve.Values.push_back(curve.Values.back() * alpha);
      ++k;
    }
    if (counts[end - first - 1] == 1) {
      curve.Times.push_back(cases[end - 1].t);
      curve.Values.push_back(0.0);
    }
    curves.push_back(curve);
    first = end;
  }
  return curves;
}

TEST(KaplanMeierBaseline, AgreesWithItsDefinition) {
  int compared = 0;
  ForRandomFits([&](CCoxFit& fit, const Vector& beta, const RandomForm& form) {
    if (form.Intervals || form.Weights) return;
    PostFitSurvivalTime(fit);
    ASSERT_TRUE(fit.m_BreslowValid);
    ASSERT_TRUE(fit.m_KaplanMeierValid);
    ++compared;
    const std::vector<BaselineCurve> expected =
        LiteralCurves(fit, SortedCasesOf(fit, beta), ComputeBreslowBaseline(fit).Counts);
    ASSERT_EQ(fit.m_KaplanMeierCurves.size(), expected.size());
    for (std::size_t g = 0; g < expected.size(); ++g) {
      EXPECT_EQ(fit.m_KaplanMeierCurves[g].Times, expected[g].Times);
      ExpectNear(fit.m_KaplanMeierCurves[g].Values, expected[g].Values, kCurveTolerance);
    }
  });
  EXPECT_EQ(compared, 36) << "two forms, three rules, six tables";
}

// Without covariates effects the estimate is the plain product of (1 - d/n).
TEST(KaplanMeierBaseline, IsTheProductLimitAtTheVectorOfZeros) {
  TestAnalysis analysis({{"time", {1, 2, 2, 3, 5, 6}}, {"status", {1, 1, 1, 0, 1, 0}}, {"a", {1, 3, 8, 4, 2, 2}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.0});
  PostFitSurvivalTime(fit);
  ASSERT_EQ(fit.m_KaplanMeierCurves.size(), 1U);
  EXPECT_EQ(fit.m_KaplanMeierCurves[0].Times, (Vector{0.0, 1.0, 2.0, 5.0}));
  const double S1 = 5.0 / 6.0;
  ExpectNear(fit.m_KaplanMeierCurves[0].Values, {1.0, S1, S1 * 3.0 / 5.0, S1 * 3.0 / 5.0 / 2.0}, kCurveTolerance);
}

TEST(KaplanMeierBaseline, SingleEventAtTheLastTimeEndsTheCurveAtZero) {
  for (const double lastStatus : {1.0, 0.0}) {
    TestAnalysis analysis({{"time", {1, 2, 3}}, {"status", {1, 0, lastStatus}}, {"a", {1, 3, 8}}});
    analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1});
    PostFitSurvivalTime(fit);
    const BaselineCurve& curve = fit.m_KaplanMeierCurves[0];
    EXPECT_EQ(curve.Times, lastStatus == 1.0 ? (Vector{0.0, 1.0, 3.0}) : (Vector{0.0, 1.0}));
    EXPECT_EQ(curve.Values.back() == 0.0, lastStatus == 1.0);
  }
}

// The count that ends a curve stands at the size of the stratum, counted from the first row of the table: in every
// stratum but the first it belongs to a row of an earlier stratum. Kept: curves on record end accordingly.
TEST(KaplanMeierBaseline, EndOfLaterStrataIsDecidedByARowOfAnEarlierOne) {
  struct {
    const char* What;
    Vector Status;  // three rows of stratum 1, at times 1 to 3, two of stratum 2, at times 7 and 8
    Vector FirstTimes;
    Vector SecondTimes;
  } const cases[] = {
      {"row 2 is an event", {0, 1, 0, 1, 0}, {0, 2}, {0, 7, 8}},
      {"row 2 is censored, the last one an event", {1, 0, 1, 1, 1}, {0, 1, 3}, {0, 7}},
      {"row 2 is an event, and the last one too", {1, 1, 1, 0, 1}, {0, 1, 2, 3}, {0, 8}},
      {"row 2 is censored, and the last one too", {1, 0, 1, 1, 0}, {0, 1, 3}, {0, 7}},
  };
  for (const auto& c : cases) {
    TestAnalysis analysis(
        {{"time", {1, 2, 3, 7, 8}}, {"status", c.Status}, {"a", {1, 3, 8, 4, 2}}, {"g", {1, 1, 1, 2, 2}}});
    analysis.Time({"time"}).Status("status").Covariates({"a"}).Strata("g", {1, 2}).DefaultDesign();
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1});
    PostFitSurvivalTime(fit);
    ASSERT_EQ(fit.m_KaplanMeierCurves.size(), 2U) << c.What;
    EXPECT_EQ(fit.m_KaplanMeierCurves[0].Times, c.FirstTimes) << c.What;
    EXPECT_EQ(fit.m_KaplanMeierCurves[1].Times, c.SecondTimes) << c.What;
    if (c.SecondTimes.back() == 8.0) {
      EXPECT_EQ(fit.m_KaplanMeierCurves[1].Values.back(), 0.0) << c.What;
    }
    EXPECT_TRUE(fit.m_KaplanMeierValid) << c.What;
  }
}

// Weights give no product-limit form, not even weights of 1.
TEST(KaplanMeierBaseline, WeightsMakeItInvalid) {
  for (const double weight : {1.0, 2.5}) {
    TestAnalysis analysis({{"time", {1, 2, 3}}, {"status", {1, 0, 1}}, {"a", {1, 3, 8}}, {"w", {1, 1, weight}}});
    analysis.Time({"time"}).Status("status").Covariates({"a"}).Weights("w").DefaultDesign();
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1});
    PostFitSurvivalTime(fit);
    EXPECT_FALSE(fit.m_KaplanMeierValid) << weight;
    EXPECT_TRUE(fit.m_KaplanMeierCurves.empty()) << weight;
    EXPECT_TRUE(fit.m_BreslowValid) << weight;
    EXPECT_EQ(fit.m_RootFindFailed, 0) << "no equation was tried";
  }
}

// The equation of a tied pair can fail at the upper end of its interval, or have no root in it. Every stratum that
// follows keeps its first point alone, and Breslow's baseline is what is left.
TEST(KaplanMeierBaseline, EquationWithoutARootMakesItInvalid) {
  struct {
    const char* What;
    Vector a;
  } const cases[] = {
      {"alpha^r is 1 beside a tiny r, and nothing can be divided", {0, -12, 0, 0, 0, 0}},
      {"the risk set outweighs the pair, so both ends have the same sign", {0, 0, 30, 0, 0, 0}},
  };
  for (const auto& c : cases) {
    TestAnalysis analysis(
        {{"time", {2, 2, 3, 5, 6, 7}}, {"status", {1, 1, 0, 1, 1, 0}}, {"a", c.a}, {"g", {1, 1, 1, 2, 2, 2}}});
    analysis.Time({"time"}).Status("status").Covariates({"a"}).Strata("g", {1, 2}).DefaultDesign();
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {1.0});
    PostFitSurvivalTime(fit);
    EXPECT_FALSE(fit.m_KaplanMeierValid) << c.What;
    EXPECT_EQ(fit.m_RootFindFailed, 1) << c.What;
    EXPECT_TRUE(fit.m_BreslowValid) << c.What;
    ASSERT_EQ(fit.m_KaplanMeierCurves.size(), 2U) << c.What;
    EXPECT_EQ(fit.m_KaplanMeierCurves[1].Times, (Vector{0.0})) << c.What;
    EXPECT_EQ(fit.m_BreslowCurves[1].Times.size(), 3U) << c.What;
    EXPECT_EQ(fit.m_MartingaleResiduals.size(), 6U) << c.What;
  }
}

// Risk sums never fall below the risk of one of their rows, so the sum is spoilt by hand.
TEST(KaplanMeierBaseline, NegativeConditionalProbabilityMakesItInvalid) {
  TestAnalysis analysis({{"time", {1, 2, 3}}, {"status", {1, 1, 0}}, {"a", {1, 3, 8}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.0});
  PostFitSurvivalTime(fit);
  ASSERT_TRUE(fit.m_KaplanMeierValid);
  const TiedEvents ties = ComputeBreslowBaseline(fit);
  fit.m_EventRiskSums[0][1] = 0.5;
  ComputeKaplanMeierBaseline(fit, ties);
  EXPECT_FALSE(fit.m_KaplanMeierValid);
  EXPECT_EQ(fit.m_RootFindFailed, 1);
  EXPECT_EQ(fit.m_KaplanMeierCurves[0].Times, (Vector{0.0, 1.0}));
}

// A case that has all the risk there is leaves nobody: the curve is 0 from its event on.
TEST(KaplanMeierBaseline, EventOfAllTheRiskLeavesNobody) {
  TestAnalysis analysis({{"time", {1, 2, 3, 4}}, {"status", {1, 1, 1, 0}}, {"a", {0, -50, -50, -50}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {1.0});
  PostFitSurvivalTime(fit);
  EXPECT_TRUE(fit.m_KaplanMeierValid);
  EXPECT_EQ(fit.m_KaplanMeierCurves[0].Values, (Vector{1.0, 0.0, 0.0, 0.0}));
}

// When the events are all that is left the root is 0, whatever their number: both sides of the equation are one sum.
TEST(KaplanMeierBaseline, GroupTiedAtTheLastTimeReachesZeroOnce) {
  for (int events = 2; events <= 12; ++events) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
      TestRandom random(seed);
      std::vector<testing::TestColumn> columns = {{"time", {1, 2}}, {"status", {1, 1}}, {"a", {0.25, 0.5}}};
      for (int i = 0; i < events; ++i) {
        columns[0].Values.push_back(4.0);
        columns[1].Values.push_back(1.0);
        columns[2].Values.push_back(random.Value());
      }
      TestAnalysis analysis(columns);
      analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
      CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.9});
      PostFitSurvivalTime(fit);
      ASSERT_TRUE(fit.m_KaplanMeierValid) << events << " events, seed " << seed;
      EXPECT_EQ(fit.m_KaplanMeierCurves[0].Times, (Vector{0.0, 1.0, 2.0, 4.0}));
      EXPECT_EQ(fit.m_KaplanMeierCurves[0].Values.back(), 0.0) << events << " events, seed " << seed;
    }
  }
}

TEST(KaplanMeierBaseline, IsNotMadeForIntervals) {
  TestAnalysis analysis(RandomSurvivalColumns(2, 30, false));
  DefineForm(analysis, {"", true, true, false, false});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.7, -0.4});
  PostFitCountingProcess(fit);
  EXPECT_TRUE(fit.m_KaplanMeierCurves.empty());
  EXPECT_TRUE(fit.m_KaplanMeierValid) << "the estimator is not offered for intervals, so nothing clears its mark";
}

}  // namespace
}  // namespace orv
