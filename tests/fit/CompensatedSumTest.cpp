#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "fit/CompensatedSum.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

double Sum(const std::vector<double>& terms) {
  CompensatedSum sum;
  for (const double term : terms) sum.Add(term);
  return sum.Value();
}

TEST(CompensatedSum, KeepsWhatAPlainSumLoses) {
  struct {
    const char* what;
    std::vector<double> terms;
    double sum;
  } const cases[] = {
      {"nothing", {}, 0.0},
      {"small after large", {1e16, 1.0, -1e16}, 1.0},
      {"large after small", {1.0, 1e100, 1.0, -1e100}, 2.0},
      {"negative", {-1e16, -1.0, 1e16}, -1.0},
  };
  for (const auto& c : cases) EXPECT_EQ(Sum(c.terms), c.sum) << c.what;
}

TEST(CompensatedSum, OfAMillionTermsIsExactToItsLastDigits) {
  TestRandom random(5);
  std::vector<double> terms;
  long double exact = 0.0L;
  double plain = 0.0;
  for (int k = 0; k < 1000000; ++k) {
    terms.push_back(1.0 + 0.1 * random.Value());
    exact += terms.back();
    plain += terms.back();
  }
  const auto expected = static_cast<double>(exact);
  EXPECT_NEAR(Sum(terms), expected, 2 * kEpsilon * expected);
  EXPECT_GT(std::abs(plain - expected), 10 * kEpsilon * expected) << "the terms must be such that a plain sum is off";
}

TEST(CompensatedSum, StartsAnewWhenAssigned) {
  CompensatedSum sum;
  sum.Add(1e16);
  sum.Add(1.0);
  sum = {};
  EXPECT_EQ(sum.Value(), 0.0);
}

}  // namespace
}  // namespace orv
