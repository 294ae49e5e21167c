#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "inference/BreslowBaseline.h"
#include "inference/ExponentGuard.h"
#include "inference/HandWrittenFit.h"
#include "inference/PostFit.h"
#include "inference/SurvivorFunctions.h"

namespace orv {
namespace {

using testing::ForRandomFits;
using testing::RandomForm;
using testing::TestAnalysis;
using testing::WriteFit;
using Vector = std::vector<double>;

constexpr double kZ95 = 1.959963984540054;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The standard error of the log survivor after event k, with every sum taken anew.
double LiteralError(const CCoxFit& fit,
                    const DenseMatrix& V,
                    std::size_t g,
                    const Vector& x,
                    std::size_t k,
                    SmallRiskSums small) {
  const std::size_t p = x.size();
  double T = 0.0;
  Vector Q(p, 0.0);
  double xb = 0.0;
  for (std::size_t c = 0; c < p; ++c) xb += x[c] * fit.m_BetaHistory.back()[c];
  for (std::size_t j = 0; j <= k; ++j) {
    const double S0 = fit.m_EventRiskSums[g][j];
    const double dN = fit.m_EventWeightSums[g][j];
    T += S0 <= 1.0 && small == SmallRiskSums::Multiplied ? S0 * dN * S0 : dN / (S0 * S0);
    for (std::size_t c = 0; c < p; ++c) Q[c] += (fit.m_EventRiskMoments[g][j][c] / S0 - x[c]) * (dN / S0);
  }
  double variance = T;
  for (std::size_t c = 0; c < p; ++c) {
    for (std::size_t m = 0; m < p; ++m) variance += Q[c] * V[c][m] * Q[m];
  }
  return std::sqrt(variance * std::exp(2.0 * xb));
}

TEST(SurvivorFunctions, AgreeWithTheirDefinition) {
  const Vector patterns[] = {{0.0, 0.0}, {0.5, 1.0}, {-1.0, 2.0}, {-4.0, 6.0}};
  ForRandomFits([&](CCoxFit& fit, const Vector& beta, const RandomForm& form) {
    if (form.Intervals) {
      PostFitCountingProcess(fit);
    } else {
      PostFitSurvivalTime(fit);
    }
    FillEventRiskMoments(fit);
    for (const Vector& x : patterns) {
      const double A = std::exp(beta[0] * x[0] + beta[1] * x[1]);
      for (std::size_t g = 0; g < fit.m_BreslowCurves.size(); ++g) {
        for (const SmallRiskSums small : {SmallRiskSums::Divided, SmallRiskSums::Multiplied}) {
          const BaselineCurve& breslow = fit.m_BreslowCurves[g];
          const auto survivor = SurvivorFunction(fit, g, x, SurvivorType::Breslow, SurvivorCIType::LogLog, 0.95, small);
          const auto hazard = CumulativeHazard(fit, g, x, 0.95, true);
          ASSERT_TRUE(survivor && hazard);
          ASSERT_EQ(survivor->size() + 1, breslow.Times.size());
          ASSERT_EQ(hazard->size() + 1, breslow.Times.size());
          for (std::size_t k = 0; k < survivor->size(); ++k) {
            const CurvePoint& point = (*survivor)[k];
            const double error = LiteralError(fit, fit.m_Covariance, g, x, k, small);
            EXPECT_EQ(point.Time, breslow.Times[k + 1]);
            EXPECT_NEAR(point.Value, std::exp(-A * breslow.Values[k + 1]), 1e-14);
            EXPECT_NEAR(point.StandardError, error, 1e-12 * error);
            const CurvePoint& cumulative = (*hazard)[k];
            const double divided = LiteralError(fit, fit.m_Covariance, g, x, k, SmallRiskSums::Divided);
            EXPECT_EQ(cumulative.Time, breslow.Times[k + 1]);
            EXPECT_NEAR(cumulative.Value, A * breslow.Values[k + 1], 1e-13);
            EXPECT_NEAR(cumulative.StandardError, divided, 1e-12 * divided);
          }
          if (fit.m_KaplanMeierCurves.empty() || !fit.m_KaplanMeierValid) continue;
          const auto kaplan =
              SurvivorFunction(fit, g, x, SurvivorType::KaplanMeier, SurvivorCIType::Normal, 0.95, small);
          ASSERT_TRUE(kaplan);
          const BaselineCurve& curve = fit.m_KaplanMeierCurves[g];
          ASSERT_EQ(kaplan->size() + 1, curve.Times.size());
          for (std::size_t k = 0; k < kaplan->size(); ++k) {
            EXPECT_EQ((*kaplan)[k].Time, curve.Times[k + 1]);
            EXPECT_NEAR((*kaplan)[k].Value, std::pow(curve.Values[k + 1], A), 1e-14);
          }
        }
      }
    }
  });
}

// ---- Limits ---------------------------------------------------------------------------------------------------------

struct LimitCase {
  const char* What;
  SurvivorCIType Type;
  double S;
  double Error;
  bool Applies;
  double Lower = 0.0;
  double Upper = 1.0;
};

TEST(SurvivorLimits, AreThoseOfTheTypeWhereItApplies) {
  constexpr auto kNormal = SurvivorCIType::Normal;
  constexpr auto kLog = SurvivorCIType::Log;
  constexpr auto kLogLog = SurvivorCIType::LogLog;
  const double half = std::log(0.5);
  const double spread = 0.25 / std::log(2.0) * 2.0;
  const LimitCase cases[] = {
      {"in range", kNormal, 0.5, 0.25, true, 0.25, 0.75},
      {"in range", kLog, 0.5, 0.25, true, std::exp(half - 0.5), std::exp(half + 0.5)},
      {"in range", kLogLog, 0.5, 0.25, true, std::pow(0.5, std::exp(spread)), std::pow(0.5, std::exp(-spread))},
      {"no error", kNormal, 0.5, 0.0, false},
      {"no error", kLog, 0.5, 0.0, false},
      {"no error", kLogLog, 0.5, 0.0, false},
      {"nobody dies", kNormal, 1.0, 0.25, true, 0.5, 1.0},
      {"nobody dies", kLog, 1.0, 0.25, true, std::exp(-0.5), 1.0},
      {"nobody dies", kLogLog, 1.0, 0.25, false},
      {"nobody dies, up to rounding", kLogLog, 1.0 - 0x1p-52, 0.25, false},
      {"nobody dies and no error", kNormal, 1.0, 0.0, false},
      {"nobody lives", kNormal, 0.0, 0.25, false},
      {"nobody lives", kLog, 0.0, 0.25, false},
      {"nobody lives", kLogLog, 0.0, 0.25, false},
      {"limits beyond 0 and 1", kNormal, 0.5, 4.0, true, 0.0, 1.0},
      {"upper limit beyond 1", kLog, 0.9, 1.0, true, 0.9 * std::exp(-2.0), 1.0},
      {"exponents beyond range", kLog, 0.5, 800.0, true, 0.0, 1.0},
      {"inner exponents beyond range", kLogLog, 0.5, 800.0, true, 0.0, 1.0},
      {"outer exponent of the lower limit beyond range", kLogLog, 0.5, 4.0, true, 0.0,
       std::pow(0.5, std::exp(-8.0 / std::log(2.0)))},
      {"one inner exponent beyond range", kLogLog, std::exp(-1e-3), 0.354, true, 0.0, std::exp(-std::exp(-1e3))},
      {"an infinite error", kLogLog, 0.5, kInfinity, true, 0.0, 1.0},
  };
  for (const LimitCase& c : cases) {
    const std::string what = std::string(c.What) + ", type " + std::to_string(static_cast<int>(c.Type));
    const std::optional<ConfidenceLimits> limits = SurvivorLimits(c.Type, c.S, 2.0, c.Error);
    ASSERT_EQ(limits.has_value(), c.Applies) << what;
    if (!limits) continue;
    EXPECT_NEAR(limits->Lower, c.Lower, 1e-14) << what;
    EXPECT_NEAR(limits->Upper, c.Upper, 1e-14) << what;
  }
}

TEST(HazardLimits, AreLogTransformedAndZeroWhereTheyCannotBeHad) {
  const double H = std::log(2.0);
  struct {
    const char* What;
    double S;
    double Error;
    ConfidenceLimits Limits;
  } const cases[] = {
      {"in range", 0.5, 0.25, {H * std::exp(-0.5 / H), H * std::exp(0.5 / H)}},
      {"no error", 0.5, 0.0, {H, H}},
      {"limits are not cut at 1",
       0.1,
       1.0,
       {std::log(10) * std::exp(-2 / std::log(10)), std::log(10) * std::exp(2 / std::log(10))}},
      {"no hazard", 1.0, 0.25, {0.0, 0.0}},
      {"nobody lives", 0.0, 0.25, {0.0, 0.0}},
      {"exponents beyond range", 0.5, 800.0, {0.0, 0.0}},
      {"not a number", std::nan(""), 0.25, {0.0, 0.0}},
  };
  for (const auto& c : cases) {
    const ConfidenceLimits limits = HazardLimits(c.S, 2.0, c.Error);
    EXPECT_NEAR(limits.Lower, c.Limits.Lower, 1e-14) << c.What;
    EXPECT_NEAR(limits.Upper, c.Limits.Upper, 1e-13) << c.What;
  }
}

// ---- Points ---------------------------------------------------------------------------------------------------------

// One covariate without effect and three event times, with risk sums on both sides of 1.
CCoxFit& WriteCurve(TestAnalysis& analysis, double beta, double variance) {
  analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {beta});
  fit.m_Covariance = {{variance}};
  fit.m_BreslowCurves = {{{0.0, 1.0, 2.0, 3.0}, {0.0, 0.25, 1.25, 3.25}}};
  fit.m_KaplanMeierCurves = {{{0.0, 1.0, 2.0, 3.0, 4.0}, {1.0, 0.75, 0.5, 0.25, 0.0}}};
  fit.m_EventRiskSums = {{4.0, 1.0, 0.5}};
  fit.m_EventWeightSums = {{1.0, 1.0, 1.0}};
  fit.m_EventRiskMoments = {{{0.0}, {0.0}, {0.0}}};
  return fit;
}

std::vector<testing::TestColumn> FourCases() {
  return {{"time", {1, 2, 3, 4}}, {"status", {1, 1, 1, 0}}, {"a", {1, 3, 8, 4}}};
}

// The table of a survivor function multiplies where all else divides. Kept: tables have always had it.
TEST(SurvivorFunctions, TableAndPlotDifferAtRiskSumsBelowOne) {
  TestAnalysis analysis(FourCases());
  const CCoxFit& fit = WriteCurve(analysis, 0.0, 0.0);
  const auto errors = [&](const std::optional<std::vector<CurvePoint>>& points) {
    Vector squares;
    for (const CurvePoint& point : *points) squares.push_back(point.StandardError * point.StandardError);
    return squares;
  };
  const auto survivor = [&](SmallRiskSums small) {
    return SurvivorFunction(fit, 0, {0.0}, SurvivorType::Breslow, SurvivorCIType::Normal, 0.95, small);
  };
  const double first = 1.0 / 16.0;
  testing::ExpectNear(errors(survivor(SmallRiskSums::Divided)), {first, first + 1.0, first + 1.0 + 4.0}, 1e-14);
  testing::ExpectNear(errors(survivor(SmallRiskSums::Multiplied)), {first, first + 1.0, first + 1.0 + 0.25}, 1e-14);
  testing::ExpectNear(errors(CumulativeHazard(fit, 0, {0.0}, 0.95, true)), {first, first + 1.0, first + 1.0 + 4.0},
                      1e-14);
}

TEST(SurvivorFunctions, LimitsAreThoseOfTheConfidenceLevel) {
  TestAnalysis analysis(FourCases());
  const CCoxFit& fit = WriteCurve(analysis, 0.0, 0.0);
  const auto points =
      SurvivorFunction(fit, 0, {0.0}, SurvivorType::Breslow, SurvivorCIType::Log, 0.95, SmallRiskSums::Divided);
  ASSERT_TRUE((*points)[0].Limits);
  EXPECT_NEAR((*points)[0].Limits->Lower, std::exp(-0.25 - kZ95 * 0.25), 1e-12);
  EXPECT_NEAR((*points)[0].Limits->Upper, 1.0, 1e-12);
  const auto hazard = CumulativeHazard(fit, 0, {0.0}, 0.95, false);
  EXPECT_NEAR((*hazard)[0].Limits->Lower, 0.25 * std::exp(-kZ95 * 0.25 / 0.25), 1e-12);
  EXPECT_NEAR((*hazard)[0].Limits->Upper, 0.25 * std::exp(kZ95 * 0.25 / 0.25), 1e-12);
}

// The curve may end with a point beyond the events, at which nobody lives: it has a value and no limits.
TEST(SurvivorFunctions, PointWithoutAnErrorIsStillAPoint) {
  TestAnalysis analysis(FourCases());
  const CCoxFit& fit = WriteCurve(analysis, 0.0, 0.0);
  for (const SurvivorCIType type : {SurvivorCIType::Normal, SurvivorCIType::Log, SurvivorCIType::LogLog}) {
    const auto points = SurvivorFunction(fit, 0, {0.0}, SurvivorType::KaplanMeier, type, 0.95, SmallRiskSums::Divided);
    ASSERT_EQ(points->size(), 4U);
    EXPECT_EQ((*points)[3].Time, 4.0);
    EXPECT_EQ((*points)[3].Value, 0.0);
    EXPECT_EQ((*points)[3].StandardError, 0.0);
    EXPECT_FALSE((*points)[3].Limits);
    EXPECT_TRUE((*points)[2].Limits);
  }
}

TEST(SurvivorFunctions, VarianceThatIsNotPositiveGivesNoError) {
  TestAnalysis analysis(FourCases());
  for (const double variance : {-1e6, std::nan("")}) {
    const CCoxFit& fit = WriteCurve(analysis, 0.0, variance);
    const auto points =
        SurvivorFunction(fit, 0, {1.0}, SurvivorType::Breslow, SurvivorCIType::Normal, 0.95, SmallRiskSums::Divided);
    ASSERT_EQ(points->size(), 3U);
    EXPECT_EQ((*points)[0].StandardError, 0.0);
    EXPECT_FALSE((*points)[0].Limits) << "the point is there, its limits are not";
    EXPECT_NEAR((*points)[0].Value, std::exp(-0.25), 1e-15);
  }
}

// A pattern is left out when exp(x'b) leaves the range of a double, above or below. Up to there it has its curve; where
// the square of the risk alone is out of range it counts as 0, and so does the error.
TEST(SurvivorFunctions, PatternOutOfRangeIsLeftOut) {
  struct {
    double xb;
    bool IsShown;
    bool HasError;
  } const cases[] = {
      {kExponentBound + 0.001, false, false},
      {-kExponentBound - 0.001, false, false},
      {2000.0, false, false},
      {std::nan(""), false, false},
      {kExponentBound - 0.001, true, false},
      {-kExponentBound + 0.001, true, false},
      {kExponentBound / 2 + 0.001, true, false},
      {kExponentBound / 2 - 0.001, true, true},
      {-5.0, true, true},
  };
  TestAnalysis analysis(FourCases());
  const CCoxFit& fit = WriteCurve(analysis, 1.0, 0.0);
  for (const auto& c : cases) {
    const auto survivor = SurvivorFunction(fit, 0, {c.xb}, SurvivorType::Breslow, SurvivorCIType::Normal, 0.95,
                                           SmallRiskSums::Multiplied);
    const auto hazard = CumulativeHazard(fit, 0, {c.xb}, 0.95, true);
    ASSERT_EQ(survivor.has_value(), c.IsShown) << c.xb;
    ASSERT_EQ(hazard.has_value(), c.IsShown) << c.xb;
    if (!c.IsShown) continue;
    EXPECT_EQ((*hazard)[0].StandardError > 0.0, c.HasError) << c.xb;
    EXPECT_EQ((*survivor)[0].StandardError > 0.0, c.HasError) << c.xb;
    EXPECT_DOUBLE_EQ((*hazard)[0].Value, 0.25 * std::exp(c.xb)) << c.xb;
  }
}

// The table of the hazard follows the robust variance, the plot and the survivor do not.
TEST(SurvivorFunctions, RobustCovarianceEntersTheHazardWhenAskedFor) {
  TestAnalysis analysis(FourCases());
  CCoxFit& fit = WriteCurve(analysis, 0.0, 4.0);
  fit.m_RobustCovariance = {{9.0}};
  // Q = -x dN / S0 = -1/4 after the first event, T = 1/16.
  const double usual = std::sqrt((4.0 + 1.0) / 16.0);
  const double robust = std::sqrt((9.0 + 1.0) / 16.0);
  for (const bool inUse : {false, true}) {
    analysis.Settings().UseRobustVariance = inUse;
    EXPECT_NEAR((*CumulativeHazard(fit, 0, {1.0}, 0.95, true))[0].StandardError, inUse ? robust : usual, 1e-14);
    EXPECT_NEAR((*CumulativeHazard(fit, 0, {1.0}, 0.95, false))[0].StandardError, usual, 1e-14);
    const auto survivor =
        SurvivorFunction(fit, 0, {1.0}, SurvivorType::Breslow, SurvivorCIType::Normal, 0.95, SmallRiskSums::Divided);
    EXPECT_NEAR((*survivor)[0].StandardError, usual, 1e-14);
  }
}

// A cancelled fit has a baseline and no covariance: the errors are those of the baseline alone.
TEST(SurvivorFunctions, FitWithoutACovarianceHasCurves) {
  TestAnalysis analysis(FourCases());
  CCoxFit& fit = WriteCurve(analysis, 0.0, 4.0);
  fit.m_Covariance.clear();
  const auto points =
      SurvivorFunction(fit, 0, {1.0}, SurvivorType::Breslow, SurvivorCIType::Normal, 0.95, SmallRiskSums::Divided);
  ASSERT_EQ(points->size(), 3U);
  EXPECT_NEAR((*points)[0].StandardError, 0.25, 1e-15);
}

}  // namespace
}  // namespace orv
