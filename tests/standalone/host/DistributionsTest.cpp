#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "standalone/host/Distributions.h"

namespace orv {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kDenormal = std::numeric_limits<double>::denorm_min();

// Full accuracy: the argument itself is rounded, and so is the result.
constexpr double kFewUlps = 4.0 * std::numeric_limits<double>::epsilon();

double RelativeError(double value, double expected) {
  return std::abs(value - expected) / std::abs(expected);
}

// Computed with 40 digits from the regularised incomplete gamma function P(df / 2, x / 2).
TEST(ChiSquareProbability, AgreesWithTheIncompleteGammaFunction) {
  struct {
    double x, df, probability;
  } const cases[] = {
      {0.5, 3.0, 0.081108588345324140636},       {10.0, 3.0, 0.9814338645369567667},
      {2.5, 7.5, 0.053163153012298794833},       {5.0, 0.1, 0.99864337136232315488},
      {100.0, 80.0, 0.93542963107886702424},     {700.0, 700.0, 0.50710823272819183096},
      {0.02, 10.0, 8.2641856418064986172e-13},   {1e-10, 1.0, 7.978845607895672944e-6},
      {1e-300, 1.0, 7.9788456080286536588e-151}, {50.0, 1.0, 0.99999999999846254021},
  };
  for (const auto& c : cases) {
    EXPECT_LE(RelativeError(ChiSquareProbability(c.x, c.df), c.probability), kFewUlps) << c.x << ", df " << c.df;
  }
}

TEST(ChiSquareProbability, WithTwoAndFourDegreesOfFreedomIsExponential) {
  for (const double x : {1e-8, 0.001, 0.5, 1.0, 2.0, 5.991, 20.0, 60.0}) {
    EXPECT_LE(RelativeError(ChiSquareProbability(x, 2.0), -std::expm1(-x / 2.0)), kFewUlps) << x;
    if (x < 0.5) continue;  // below, the closed form cancels
    const double four = 1.0 - std::exp(-x / 2.0) * (1.0 + x / 2.0);
    EXPECT_LE(RelativeError(ChiSquareProbability(x, 4.0), four), 4.0 * kFewUlps) << x;
  }
}

TEST(ChiSquareProbability, WithOneDegreeOfFreedomIsTheErrorFunction) {
  for (const double x : {1e-8, 0.001, 0.5, 1.0, 3.8415, 6.6349, 30.0}) {
    EXPECT_LE(RelativeError(ChiSquareProbability(x, 1.0), std::erf(std::sqrt(x / 2.0))), kFewUlps) << x;
  }
}

// The upper points of the usual tables.
TEST(ChiSquareProbability, AgreesWithTables) {
  struct {
    double x, df, probability;
  } const cases[] = {
      {3.841, 1, 0.95},   {5.991, 2, 0.95},     {7.815, 3, 0.95},  {18.307, 10, 0.95},
      {43.773, 30, 0.95}, {124.342, 100, 0.95}, {6.635, 1, 0.99},  {9.210, 2, 0.99},
      {23.209, 10, 0.99}, {0.00393, 1, 0.05},   {3.940, 10, 0.05},
  };
  // The tables give x with three significant decimals.
  for (const auto& c : cases)
    EXPECT_NEAR(ChiSquareProbability(c.x, c.df), c.probability, 2e-4) << c.x << ", df " << c.df;
}

TEST(ChiSquareProbability, HasItsLimits) {
  for (const double df : {0.5, 1.0, 2.0, 1000.0, 1e10}) {
    EXPECT_EQ(ChiSquareProbability(0.0, df), 0.0) << df;
    EXPECT_EQ(ChiSquareProbability(-0.0, df), 0.0) << df;
    EXPECT_EQ(ChiSquareProbability(-1.0, df), 0.0) << df;
    EXPECT_EQ(ChiSquareProbability(-kInfinity, df), 0.0) << df;
    EXPECT_EQ(ChiSquareProbability(kInfinity, df), 1.0) << df;
    EXPECT_EQ(ChiSquareProbability(1e308, df), 1.0) << df;
  }
}

TEST(ChiSquareProbability, OfNoNumberIsNone) {
  EXPECT_TRUE(std::isnan(ChiSquareProbability(kNaN, 1.0)));
  for (const double df : {0.0, -1.0, kNaN, kInfinity, -kInfinity, kDenormal}) {
    EXPECT_TRUE(std::isnan(ChiSquareProbability(1.0, df))) << df;
  }
}

// Computed with 40 digits as the root of the error function, for the doubles nearest to these probabilities.
TEST(NormalQuantileOf, AgreesWithTheErrorFunction) {
  struct {
    double probability, quantile;
  } const cases[] = {
      {0.975, 1.9599639845400538556},  {0.995, 2.5758293035489004539},   {0.75, 0.6744897501960817432},
      {0.025, -1.9599639845400542118}, {0.9999, 3.7190164854557083867},  {0.0001, -3.7190164854556805523},
      {1e-10, -6.3613409024040561991}, {1e-300, -37.047096299361199237},
  };
  for (const auto& c : cases) {
    EXPECT_LE(RelativeError(NormalQuantileOf(c.probability, 0.0, 1.0), c.quantile), kFewUlps) << c.probability;
  }
}

TEST(NormalQuantileOf, IsTheInverseOfTheDistribution) {
  for (double z = -8.0; z <= 2.0; z += 0.125) {
    const double probability = 0.5 * std::erfc(-z / std::sqrt(2.0));
    // What the rounding of the probability does to the quantile: divided by the density.
    const double density = std::exp(-z * z / 2.0) / std::sqrt(2.0 * std::acos(-1.0));
    const double tolerance = kFewUlps * (std::abs(z) + 2.0 * probability / density);
    EXPECT_NEAR(NormalQuantileOf(probability, 0.0, 1.0), z, tolerance);
  }
}

TEST(NormalQuantileOf, ScalesAndShifts) {
  EXPECT_EQ(NormalQuantileOf(0.5, 0.0, 1.0), 0.0);
  EXPECT_EQ(NormalQuantileOf(0.5, -3.0, 2.0), -3.0);
  EXPECT_DOUBLE_EQ(NormalQuantileOf(0.975, 10.0, 2.0), 10.0 + 2.0 * 1.9599639845400538556);
}

TEST(NormalQuantileOf, IsInfiniteAtTheEnds) {
  EXPECT_EQ(NormalQuantileOf(0.0, 0.0, 1.0), -kInfinity);
  EXPECT_EQ(NormalQuantileOf(1.0, 5.0, 2.0), kInfinity);
  EXPECT_LT(NormalQuantileOf(kDenormal, 0.0, 1.0), -38.0);
  EXPECT_GT(NormalQuantileOf(std::nextafter(1.0, 0.0), 0.0, 1.0), 8.0);
}

TEST(NormalQuantileOf, OfNoProbabilityIsNone) {
  for (const double probability : {-0.1, 1.1, kNaN, kInfinity, -kInfinity, -kDenormal}) {
    EXPECT_TRUE(std::isnan(NormalQuantileOf(probability, 0.0, 1.0))) << probability;
  }
  for (const double deviation : {0.0, -1.0, kNaN, kInfinity}) {
    EXPECT_TRUE(std::isnan(NormalQuantileOf(0.3, 0.0, deviation))) << deviation;
  }
  for (const double mean : {kNaN, kInfinity, -kInfinity}) {
    EXPECT_TRUE(std::isnan(NormalQuantileOf(0.3, mean, 1.0))) << mean;
  }
}

}  // namespace
}  // namespace orv
