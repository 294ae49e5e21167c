#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>

#include "inference/ExponentGuard.h"

namespace orv {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(GuardedExp, IsTheExponentialBetweenTheBounds) {
  for (const double x : {-709.7, -1.0, 0.0, 1.0, 5.5, 709.7, 709.7268}) {
    ASSERT_TRUE(GuardedExp(x).has_value()) << x;
    EXPECT_EQ(*GuardedExp(x), std::exp(x)) << x;
    EXPECT_TRUE(std::isfinite(*GuardedExp(x))) << x;
  }
}

TEST(GuardedExp, IsZeroAtAndBelowTheLowerBound) {
  for (const double x : {-709.7268, -709.8, -1e300, -kInfinity})
    EXPECT_EQ(GuardedExp(x), std::optional<double>(0.0)) << x;
  EXPECT_GT(*GuardedExp(std::nextafter(-709.7268, 0.0)), 0.0);
}

TEST(GuardedExp, IsNothingAboveTheUpperBound) {
  for (const double x : {std::nextafter(709.7268, kInfinity), 710.0, 1e300, kInfinity}) {
    EXPECT_EQ(GuardedExp(x), std::nullopt) << x;
  }
}

TEST(GuardedExp, IsNothingForWhatIsNoNumber) {
  EXPECT_EQ(GuardedExp(std::numeric_limits<double>::quiet_NaN()), std::nullopt);
}

}  // namespace
}  // namespace orv
