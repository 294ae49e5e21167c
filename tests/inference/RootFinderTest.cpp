#include <gtest/gtest.h>

#include <cmath>

#include "inference/RootFinder.h"

namespace orv {
namespace {

using Function = std::function<std::optional<double>(double)>;

TEST(RootFinder, FindsRootsWithinTheTolerance) {
  struct {
    const char* What;
    Function f;
    double Low;
    double High;
    double Root;
  } const cases[] = {
      {"a line", [](double x) { return x - 0.25; }, 0.0, 1.0, 0.25},
      {"a falling line", [](double x) { return 0.25 - x; }, 0.0, 1.0, 0.25},
      {"a parabola", [](double x) { return x * x - 2.0; }, 0.0, 2.0, std::sqrt(2.0)},
      {"a cosine", [](double x) { return std::cos(x) - x; }, 0.0, 1.0, 0.7390851332151607},
      {"a steep end", [](double x) { return 1.0 / (1.0 - x) - 1e6; }, 0.0, 0.999999999999, 1.0 - 1e-6},
      {"a triple root", [](double x) { return (x - 0.3) * (x - 0.3) * (x - 0.3); }, 0.0, 1.0, 0.3},
      {"a step", [](double x) { return x < 0.7 ? -1.0 : 1.0; }, 0.0, 1.0, 0.7},
      {"a root near zero", [](double x) { return x - 1e-9; }, 0.0, 1.0, 1e-9},
      {"a negative root", [](double x) { return std::exp(x) - 0.5; }, -3.0, 0.0, -std::log(2.0)},
  };
  constexpr double kTolerance = 1e-12;
  for (const auto& c : cases) {
    const std::optional<double> root = FindRoot(c.f, c.Low, c.High, kTolerance);
    ASSERT_TRUE(root) << c.What;
    EXPECT_NEAR(*root, c.Root, 2.0 * (6e-8 * std::abs(c.Root) + 0.5 * kTolerance)) << c.What;
  }
}

TEST(RootFinder, RootAtAnEndIsFound) {
  EXPECT_EQ(FindRoot([](double x) { return x; }, 0.0, 1.0, 1e-12), 0.0);
  EXPECT_EQ(FindRoot([](double x) { return x - 1.0; }, 0.0, 1.0, 1e-12), 1.0);
}

TEST(RootFinder, EqualSignsAtBothEndsAreAFailure) {
  EXPECT_FALSE(FindRoot([](double x) { return x * x + 1.0; }, -1.0, 1.0, 1e-12));
  EXPECT_FALSE(FindRoot([](double x) { return -x * x - 1.0; }, -1.0, 1.0, 1e-12));
  EXPECT_FALSE(FindRoot([](double x) { return (x - 0.3) * (x - 0.6); }, 0.0, 1.0, 1e-12)) << "two roots cancel";
}

// A value that cannot be computed ends the search, wherever it is met.
TEST(RootFinder, ValueThatCannotBeComputedIsAFailure) {
  const auto lineBut = [](double low, double high) {
    return [=](double x) -> std::optional<double> {
      if (x >= low && x <= high) return std::nullopt;
      return x - 0.25;
    };
  };
  EXPECT_FALSE(FindRoot(lineBut(0.0, 0.0), 0.0, 1.0, 1e-12));
  EXPECT_FALSE(FindRoot(lineBut(1.0, 1.0), 0.0, 1.0, 1e-12));
  EXPECT_FALSE(FindRoot(lineBut(0.2, 0.9), 0.0, 1.0, 1e-12));
  EXPECT_TRUE(FindRoot(lineBut(2.0, 3.0), 0.0, 1.0, 1e-12));
}

// A hundred halvings do not get from 1 to a step at 1e-200.
TEST(RootFinder, TooManyIterationsAreAFailure) {
  int calls = 0;
  const auto step = [&](double x) -> std::optional<double> {
    ++calls;
    return x < 1e-200 ? -1.0 : 1.0;
  };
  EXPECT_FALSE(FindRoot(step, 0.0, 1.0, 0.0));
  EXPECT_EQ(calls, 102) << "both ends and the iterations";
}

}  // namespace
}  // namespace orv
