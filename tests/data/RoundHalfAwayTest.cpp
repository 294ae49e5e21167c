#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "data/RoundHalfAway.h"

namespace orv {
namespace {

TEST(RoundHalfAway, RoundsHalvesAwayFromZero) {
  struct {
    double Value, Rounded;
  } const cases[] = {
      {2.5, 3.0},
      {-2.5, -3.0},
      {0.0, 0.0},
      {0.5, 1.0},
      {-0.5, -1.0},
      {1.5, 2.0},
      {2.4999999999999996, 2.0},
      {-2.4999999999999996, -2.0},
      {0.49999999999999994, 0.0},  // adding a half would round this up
      {-0.49999999999999994, 0.0},
      {7.0, 7.0},
      {-7.2, -7.0},
      {4503599627370495.5, 4503599627370496.0},
      {9007199254740993.0, 9007199254740993.0},
  };
  for (const auto& c : cases) EXPECT_EQ(RoundHalfAway(c.Value), c.Rounded) << "value " << c.Value;
}

TEST(RoundHalfAway, LeavesValuesBeyondSixtyFourBitsAsTheyAre) {
  for (const double value :
       {9223372036854775808.0, -9223372036854775808.0, 1e19, -1e300, std::numeric_limits<double>::max(),
        std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(RoundHalfAway(value), value);
  }
  EXPECT_TRUE(std::isnan(RoundHalfAway(std::numeric_limits<double>::quiet_NaN())));
}

TEST(RoundToInteger, RoundsAndThenCutsToThirtyTwoBits) {
  struct {
    double Value;
    std::int32_t Rounded;
  } const cases[] = {
      {0.0, 0},
      {2.5, 3},
      {-2.5, -3},
      {1.4, 1},
      {1e-320, 0},
      {500.49, 500},
      {2147483647.0, 2147483647},
      {-2147483648.0, -2147483647 - 1},
      {2147483646.5, 2147483647},
  };
  for (const auto& c : cases) EXPECT_EQ(RoundToInteger(c.Value), c.Rounded) << "value " << c.Value;
}

TEST(RoundToInteger, GivesTheSmallestIntegerForWhatDoesNotFit) {
  for (const double value : {2147483647.5, 1e10, -1e10, 1e300, std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(RoundToInteger(value), std::numeric_limits<std::int32_t>::min()) << "value " << value;
  }
}

}  // namespace
}  // namespace orv
