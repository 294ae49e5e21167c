// Every function: values, edges, and where it fails.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "FormulaRuns.h"

namespace orv {
namespace {

using testing::Fails;
using testing::kMissing;
using testing::Same;
using testing::ValueOf;

constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kSmallest = std::numeric_limits<double>::denorm_min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The formula with x read from the table, and with x written into it as far as it can be.
struct FunctionCase {
  const char* text;
  double x;
  double value;
};

TEST(FormulaFunctions, HaveExactValues) {
  const FunctionCase cases[] = {
      {"log(x)", 1.0, 0.0},
      {"ln(x)", 1.0, 0.0},
      {"log10(x)", 1000.0, 3.0},
      {"log2(x)", 8.0, 3.0},
      {"log2(x)", 0.25, -2.0},
      {"exp(x)", 0.0, 1.0},
      {"exp(x)", -1000.0, 0.0},  // underflow is no failure
      {"sqrt(x)", 0.0, 0.0},
      {"sqrt(x)", 144.0, 12.0},
      {"abs(x)", -2.5, 2.5},
      {"abs(x)", 2.5, 2.5},
      {"floor(x)", 2.7, 2.0},
      {"floor(x)", -2.2, -3.0},
      {"floor(x)", 1e300, 1e300},
      {"ceil(x)", 2.2, 3.0},
      {"ceil(x)", -2.7, -2.0},
      {"round(x)", 2.4, 2.0},
      {"round(x)", 0.5, 1.0},
      {"round(x)", 1.5, 2.0},
      {"round(x)", 2.5, 3.0},
      {"round(x)", -0.5, -1.0},
      {"round(x)", -2.5, -3.0},
      {"round(x)", 0.49999999999999994, 0.0},
      {"trunc(x)", 2.7, 2.0},
      {"trunc(x)", -2.7, -2.0},
      {"sign(x)", 17.0, 1.0},
      {"sign(x)", -0.001, -1.0},
      {"sign(x)", 0.0, 0.0},
      {"sin(x)", 0.0, 0.0},
      {"cos(x)", 0.0, 1.0},
      {"tan(x)", 0.0, 0.0},
      {"asin(x)", 0.0, 0.0},
      {"acos(x)", 1.0, 0.0},
      {"atan(x)", 0.0, 0.0},
      {"missing(x)", 1.0, 0.0},
      {"missing(x)", kMissing, 1.0},
      {"x^2", -3.0, 9.0},
      {"x^0", 0.0, 1.0},
      {"x^0.5", 16.0, 4.0},
      {"x^3", -2.0, -8.0},
      {"x^-2", 2.0, 0.25},
      {"0^x", 3.0, 0.0},
      {"min(x, 2)", 1.0, 1.0},
      {"min(x, 2)", 3.0, 2.0},
      {"max(x, 2)", 1.0, 2.0},
      {"max(x, 2)", 3.0, 3.0},
      {"min(4, x, 5)", 3.0, 3.0},
      {"max(4, x, 5, 1)", 3.0, 5.0},
      {"min(x, x*2, x*3)", -1.0, -3.0},
      {"if(x, 1, 2)", 3.0, 1.0},
      {"if(x, 1, 2)", 0.0, 2.0},
      {"if(x > 1, x, -x)", -4.0, 4.0},
      {"if(x < 1, 1, if(x < 2, 2, 3))", 0.5, 1.0},
      {"if(x < 1, 1, if(x < 2, 2, 3))", 1.5, 2.0},
      {"if(x < 1, 1, if(x < 2, 2, 3))", 2.5, 3.0},
      {"if(if(x, 0, 1), 5, 6) + 1", 1.0, 7.0},
      {"1 + if(x, 2, 3) * if(x, 4, 5)", 1.0, 9.0},
      {"1 + if(x, 2, 3) * if(x, 4, 5)", 0.0, 16.0},
  };
  for (const auto& c : cases) EXPECT_EQ(ValueOf(c.text, {{"x", c.x}}), c.value) << c.text << ", x = " << c.x;
}

// The functions are those of the mathematical library, computed at once for a constant and later for a variable.
TEST(FormulaFunctions, AreThoseOfTheMathematicalLibrary) {
  using Function = double (*)(double);
  struct {
    const char* name;
    Function function;
  } const cases[] = {
      {"log", [](double x) { return std::log(x); }},     {"ln", [](double x) { return std::log(x); }},
      {"log10", [](double x) { return std::log10(x); }}, {"log2", [](double x) { return std::log2(x); }},
      {"exp", [](double x) { return std::exp(x); }},     {"sqrt", [](double x) { return std::sqrt(x); }},
      {"sin", [](double x) { return std::sin(x); }},     {"cos", [](double x) { return std::cos(x); }},
      {"tan", [](double x) { return std::tan(x); }},     {"asin", [](double x) { return std::asin(x); }},
      {"arcsin", [](double x) { return std::asin(x); }}, {"acos", [](double x) { return std::acos(x); }},
      {"arccos", [](double x) { return std::acos(x); }}, {"atan", [](double x) { return std::atan(x); }},
      {"arctan", [](double x) { return std::atan(x); }},
  };
  for (const auto& c : cases) {
    for (const double x : {0.015625, 0.3, 0.7, 0.999, 1.0}) {
      const std::string name = c.name;
      EXPECT_TRUE(Same(ValueOf(name + "(x)", {{"x", x}}), c.function(x))) << name << " of " << x;
    }
    EXPECT_TRUE(Same(ValueOf(std::string(c.name) + "(0.3)"), c.function(0.3))) << c.name << " of a constant";
  }
  EXPECT_EQ(ValueOf("log(exp(1))"), 1.0);
}

TEST(FormulaFunctions, MatchWithoutRegardToCase) {
  EXPECT_EQ(ValueOf("LOG10(100) + Sqrt (4) + ARCTAN(0) + IF(1, MAX(1,2), MIN(1,2)) + Missing(1)"), 6.0);
}

TEST(FormulaFunctions, FailWhereTheResultIsNoNumber) {
  const FunctionCase cases[] = {
      {"log(x)", 0.0, 0.0},
      {"log(x)", -1.0, 0.0},
      {"ln(x)", -kSmallest, 0.0},
      {"log10(x)", 0.0, 0.0},
      {"log2(x)", -2.0, 0.0},
      {"sqrt(x)", -1e-300, 0.0},
      {"exp(x)", 710.0, 0.0},
      {"asin(x)", 1.0000000000000002, 0.0},
      {"acos(x)", -1.1, 0.0},
      {"1/x", 0.0, 0.0},
      {"1/x", -0.0, 0.0},
      {"x/0", 0.0, 0.0},
      {"x/0", 5.0, 0.0},
      {"1/x", kSmallest, 0.0},
      {"x*x", 1e200, 0.0},
      {"x+x", kLargest, 0.0},
      {"-x-x", kLargest, 0.0},
      {"x^2", 1e200, 0.0},
      {"x^0.5", -1.0, 0.0},
      {"x^(1/3)", -8.0, 0.0},
      {"x^-1", 0.0, 0.0},
      {"10^x", 309.0, 0.0},
      // What follows does not hide it.
      {"missing(1/x)", 0.0, 0.0},
      {"1/x > 1", 0.0, 0.0},
      {"min(1/x, 1)", 0.0, 0.0},
      {"0*(1/x)", 0.0, 0.0},
      {"1/(1/x)", 0.0, 0.0},
      {"if(1/x, 1, 2)", 0.0, 0.0},
      {"1/x or 1", 0.0, 0.0},
      {"not 1/x", 0.0, 0.0},
  };
  for (const auto& c : cases) EXPECT_TRUE(Fails(c.text, {{"x", c.x}})) << c.text << ", x = " << c.x;
  // With constants alone the formula compiles, and fails when it is evaluated.
  for (const char* text : {"1/0", "log(0)", "sqrt(-1)", "1e308*10", "(0-8)^(1/3)", "0/0", "-log(-1)"})
    EXPECT_TRUE(Fails(text)) << text;
}

TEST(FormulaFunctions, AreDefinedUpToTheEdge) {
  EXPECT_EQ(ValueOf("asin(x)", {{"x", 1.0}}), std::numbers::pi / 2);
  EXPECT_EQ(ValueOf("acos(x)", {{"x", -1.0}}), std::numbers::pi);
  EXPECT_EQ(ValueOf("exp(x)", {{"x", 709.0}}), std::exp(709.0));
  EXPECT_EQ(ValueOf("log(x)", {{"x", kSmallest}}), std::log(kSmallest));
  EXPECT_EQ(ValueOf("x*1", {{"x", kLargest}}), kLargest);
  EXPECT_EQ(ValueOf("abs(x)", {{"x", -kLargest}}), kLargest);
  EXPECT_EQ(ValueOf("x*x", {{"x", kSmallest}}), 0.0);
}

// Tables hold no infinity; one that comes from elsewhere must not reach a fit.
TEST(FormulaFunctions, FailOnInfiniteArguments) {
  for (const char* text : {"x", "-x", "x+1", "x-x", "x*0", "sqrt(x)", "min(x, x)", "if(1, x, 0)"}) {
    EXPECT_TRUE(Fails(text, {{"x", kInfinity}})) << text;
    EXPECT_TRUE(Fails(text, {{"x", -kInfinity}})) << text;
  }
  EXPECT_EQ(ValueOf("x > 5", {{"x", kInfinity}}), 1.0);
}

}  // namespace
}  // namespace orv
