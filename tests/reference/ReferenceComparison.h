// How a quantity is compared with its reference: by the digits that agree, of which a table is printed at the end.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "reference/AgreedDigits.h"
#include "reference/ReferenceCase.h"

namespace orv::testing {

inline constexpr double kEstimateDigits = 9.0;
inline constexpr double kPValueDigits = 7.0;
inline constexpr double kPValueResolution = 1e-8;  // 1 - cdf is exact to about 1e-15, whatever the size of p

// The digits of all comparisons of the program.
AgreedDigits& Digits();

class ReferenceComparison : public ::testing::TestWithParam<ReferenceCase> {
 protected:
  const nlohmann::json& Content() const { return GetParam().Content; }
  bool Has(const char* block) const { return Content().contains(block) && !Content().at(block).is_null(); }

  // `scale`: what the difference is relative to.
  void Compare(const std::string& quantity, double value, double expected, double leastDigits, double scale) {
    const double digits = DigitsAgreed(value, expected, scale);
    Digits().Add(quantity, GetParam().Name, digits);
    EXPECT_GE(digits, leastDigits) << quantity << ": " << value << ", expected " << expected;
  }

  // In standard errors, the unit in which an estimate near 0 is judged: the reference itself holds about 12 digits of
  // one, or as many as the norm of its score tells.
  double Exactness() const {
    const double norm = Content().at("fit").value("score_norm_at_estimate", 0.0);
    return std::max(1e-3, norm * std::pow(10.0, kEstimateDigits));
  }
};

}  // namespace orv::testing
