#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <limits>

#include "fit/FloatingPointRegime.h"
#include "fit/NumericalFailure.h"

namespace orv {
namespace {

constexpr int kFailures = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW;

// Arithmetic that the compiler must leave to the processor, and do even when nobody takes the result.
double Divide(double a, double b) {
  volatile double x = a;
  volatile double y = b;
  volatile double result = x / y;
  return result;
}

double Multiply(double a, double b) {
  volatile double x = a;
  volatile double y = b;
  volatile double result = x * y;
  return result;
}

// The caller's environment as it was, whatever a test does to it.
class FloatingPointRegimeTest : public ::testing::Test {
 protected:
  FloatingPointRegimeTest() { std::fegetenv(&m_saved); }
  ~FloatingPointRegimeTest() override { std::fesetenv(&m_saved); }

 private:
  std::fenv_t m_saved{};
};

using Regime = FloatingPointRegimeTest;

TEST_F(Regime, RoundsToNearestAndGivesTheRoundingModeBack) {
  std::fesetround(FE_UPWARD);
  {
    const FloatingPointRegime regime;
    EXPECT_EQ(std::fegetround(), FE_TONEAREST);
  }
  EXPECT_EQ(std::fegetround(), FE_UPWARD);
}

#if defined(__SSE2__) || defined(__aarch64__)
TEST_F(Regime, FlushesDenormalResultsToZeroForItsLifeOnly) {
  const double smallest = std::numeric_limits<double>::min();
  EXPECT_GT(Divide(smallest, 4.0), 0.0);
  {
    const FloatingPointRegime regime;
    EXPECT_EQ(Divide(smallest, 4.0), 0.0);
  }
  EXPECT_GT(Divide(smallest, 4.0), 0.0);
}
#endif

TEST_F(Regime, StartsWithNoFlagsAndGivesTheCallersFlagsBack) {
  std::feclearexcept(FE_ALL_EXCEPT);
  std::feraiseexcept(FE_DIVBYZERO);
  {
    const FloatingPointRegime regime;
    EXPECT_FALSE(FloatingPointRegime::HasFailed());
    Multiply(1e300, 1e300);
    EXPECT_TRUE(FloatingPointRegime::HasFailed());
  }
  EXPECT_EQ(std::fetestexcept(kFailures), FE_DIVBYZERO);
}

TEST_F(Regime, SeesOverflowInvalidOperationsAndDivisionByZero) {
  struct {
    const char* what;
    double (*operation)();
    bool fails;
  } const cases[] = {
      {"overflow of a product", [] { return Multiply(1e300, 1e300); }, true},
      {"overflow of exp",
       [] {
         volatile double x = 710.0;
         return std::exp(x);
       },
       true},
      {"division by zero", [] { return Divide(1.0, 0.0); }, true},
      {"logarithm of zero",
       [] {
         volatile double x = 0.0;
         return std::log(x);
       },
       true},
      {"logarithm of a negative number",
       [] {
         volatile double x = -1.0;
         return std::log(x);
       },
       true},
      {"zero by zero", [] { return Divide(0.0, 0.0); }, true},
      {"underflow", [] { return Multiply(1e-300, 1e-300); }, false},
      {"underflow of exp",
       [] {
         volatile double x = -800.0;
         return std::exp(x);
       },
       false},
      {"inexact result", [] { return Divide(1.0, 3.0); }, false},
      {"denormal operand", [] { return Multiply(4.9e-324, 2.0); }, false},
  };
  const FloatingPointRegime regime;
  for (const auto& c : cases) {
    FloatingPointRegime::ClearFlags();
    c.operation();
    EXPECT_EQ(FloatingPointRegime::HasFailed(), c.fails) << c.what;
  }
}

TEST_F(Regime, ThrowsOnceForAFailure) {
  const FloatingPointRegime regime;
  EXPECT_NO_THROW(FloatingPointRegime::ThrowIfFailed());
  Divide(1.0, 0.0);
  EXPECT_THROW(FloatingPointRegime::ThrowIfFailed(), NumericalFailure);
  EXPECT_NO_THROW(FloatingPointRegime::ThrowIfFailed());
}

}  // namespace
}  // namespace orv
