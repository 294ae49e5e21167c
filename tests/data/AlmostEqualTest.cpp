#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include "data/AlmostEqual.h"

namespace orv {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kSmallest = std::numeric_limits<double>::denorm_min();

// `steps` neighbours up, or down when negative.
double Steps(double value, int steps) {
  for (; steps > 0; --steps) value = std::nextafter(value, kInfinity);
  for (; steps < 0; ++steps) value = std::nextafter(value, -kInfinity);
  return value;
}

struct Pair {
  const char* What;
  double A, B;
  bool Plain, Strict;
};

const Pair kPairs[] = {
    {"itself", 1.0, 1.0, true, true},
    {"15 units above", 1.0, Steps(1.0, 15), true, true},
    {"16 units above", 1.0, Steps(1.0, 16), false, false},
    {"15 units below, across a power of two", 1.0, Steps(1.0, -15), true, true},
    {"16 units below, across a power of two", 1.0, Steps(1.0, -16), false, false},
    {"15 units, negative", -3.5, Steps(-3.5, 15), true, true},
    {"16 units, negative", -3.5, Steps(-3.5, -16), false, false},
    {"the two zeros", -0.0, 0.0, true, true},
    {"15 units above minus zero", -0.0, 15 * kSmallest, true, true},
    {"16 units above minus zero", -0.0, 16 * kSmallest, false, false},
    {"15 units across zero", -7 * kSmallest, 8 * kSmallest, true, true},
    {"16 units across zero", -8 * kSmallest, 8 * kSmallest, false, false},
    {"different numbers", 1.0, 2.0, false, false},
    {"opposite signs", 1.0, -1.0, false, false},
    {"the two ends of the range", -kLargest, kLargest, false, false},
    {"15 units in large numbers", 1e300, Steps(1e300, 15), true, true},
    {"an infinity and itself", kInfinity, kInfinity, true, false},
    {"minus infinity and itself", -kInfinity, -kInfinity, true, false},
    {"the two infinities", -kInfinity, kInfinity, false, false},
    {"infinity next to the largest double", kInfinity, kLargest, true, false},
    {"a NaN and itself", kNaN, kNaN, true, false},
    {"a NaN and a number", kNaN, 1.0, false, false},
    {"a missing code and itself", -8.98846567431157953865e307, -8.98846567431157953865e307, true, true},
};

TEST(AlmostEqual, HoldsUpToFifteenUnitsInTheLastPlace) {
  for (const Pair& pair : kPairs) {
    EXPECT_EQ(AlmostEqual(pair.A, pair.B), pair.Plain) << pair.What;
    EXPECT_EQ(AlmostEqual(pair.B, pair.A), pair.Plain) << pair.What << ", swapped";
  }
}

TEST(AlmostEqualStrict, IsAlsoFalseForInfinitiesAndNaNs) {
  for (const Pair& pair : kPairs) {
    EXPECT_EQ(AlmostEqualStrict(pair.A, pair.B), pair.Strict) << pair.What;
    EXPECT_EQ(AlmostEqualStrict(pair.B, pair.A), pair.Strict) << pair.What << ", swapped";
  }
}

TEST(OrderedBits, KeepTheOrderOfDoublesAndGiveNeighboursADistanceOfOne) {
  EXPECT_EQ(OrderedBits(0.0), 0);
  EXPECT_EQ(OrderedBits(-0.0), 0);
  EXPECT_EQ(OrderedBits(kSmallest), 1);
  EXPECT_EQ(OrderedBits(-kSmallest), -1);
  std::mt19937_64 random(7);
  for (int trial = 0; trial < 5000; ++trial) {
    const auto a = std::bit_cast<double>(random());
    const auto b = std::bit_cast<double>(random());
    if (std::isnan(a) || std::isnan(b)) continue;
    EXPECT_EQ(OrderedBits(a) < OrderedBits(b), a < b) << a << " and " << b;
    if (std::isfinite(a)) {
      EXPECT_EQ(OrderedBits(Steps(a, 1)) - OrderedBits(a), 1) << a;
    }
  }
}

}  // namespace
}  // namespace orv
