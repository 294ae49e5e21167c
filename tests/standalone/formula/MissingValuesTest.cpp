// Missing values, three-valued logic, and what is not evaluated.
#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <string>
#include <vector>

#include "FormulaRuns.h"
#include "standalone/formula/EvaluateFormula.h"

namespace orv {
namespace {

using testing::Fails;
using testing::kMissing;
using testing::NamedValue;
using testing::Names;
using testing::Same;
using testing::ValueOf;

const std::vector<NamedValue> kValues = {{"m", kMissing}, {"x", 2.0}, {"zero", 0.0}, {"n", kMissing}};

TEST(MissingValues, PassThroughEveryOperation) {
  for (const char* text : {"m",
                           "-m",
                           "+m",
                           "m+x",
                           "x+m",
                           "m-1",
                           "1-m",
                           "m*0",
                           "0*m",
                           "m/x",
                           "x/m",
                           "m^0",
                           "1^m",
                           "m^2",
                           "m^m",
                           "m=x",
                           "m=m",
                           "m<>m",
                           "m<x",
                           "x<m",
                           "m<=1",
                           "1>=m",
                           "m>n",
                           "not m",
                           "log(m)",
                           "ln(m)",
                           "log10(m)",
                           "log2(m)",
                           "exp(m)",
                           "sqrt(m)",
                           "abs(m)",
                           "floor(m)",
                           "ceil(m)",
                           "round(m)",
                           "trunc(m)",
                           "sign(m)",
                           "sin(m)",
                           "cos(m)",
                           "tan(m)",
                           "asin(m)",
                           "acos(m)",
                           "atan(m)",
                           "min(m, x)",
                           "min(x, m)",
                           "max(m, x)",
                           "max(x, m)",
                           "min(1,m,2)",
                           "max(1,2,m)",
                           "m/zero",
                           "m+1e300*x",
                           "if(m, 1, 2)",
                           "if(x, m, 1)",
                           "1+if(m, 1, 2)*3",
                           "if(m, if(m, 1, 2), 3)"}) {
    EXPECT_TRUE(std::isnan(ValueOf(text, kValues))) << text;
  }
}

TEST(MissingValues, CanBeAskedFor) {
  EXPECT_EQ(ValueOf("missing(m)", kValues), 1.0);
  EXPECT_EQ(ValueOf("missing(x)", kValues), 0.0);
  EXPECT_EQ(ValueOf("missing(x + m)", kValues), 1.0);
  EXPECT_EQ(ValueOf("missing(missing(m))", kValues), 0.0);
  EXPECT_EQ(ValueOf("if(missing(m), -1, m)", kValues), -1.0);
  EXPECT_EQ(ValueOf("not missing(x) and x > 1", kValues), 1.0);
}

TEST(MissingValues, FollowThreeValuedLogic) {
  const double t = 1.0;
  const double f = 0.0;
  const double m = kMissing;
  struct {
    double a, b, conjunction, disjunction;
  } const cases[] = {
      {t, t, t, t}, {t, f, f, t}, {t, m, m, t}, {f, t, f, t}, {f, f, f, f},
      {f, m, f, m}, {m, t, m, t}, {m, f, f, m}, {m, m, m, m},
  };
  for (const auto& c : cases) {
    const std::string what = std::to_string(c.a) + " with " + std::to_string(c.b);
    const std::vector<NamedValue> values = {{"a", c.a}, {"b", c.b}};
    EXPECT_TRUE(Same(ValueOf("a and b", values), c.conjunction)) << what;
    EXPECT_TRUE(Same(ValueOf("a or b", values), c.disjunction)) << what;
    // With a computed right side, and by De Morgan's laws.
    EXPECT_TRUE(Same(ValueOf("a and b*3", values), c.conjunction)) << what;
    EXPECT_TRUE(Same(ValueOf("a*3 or b*3", values), c.disjunction)) << what;
    EXPECT_TRUE(Same(ValueOf("not (not a or not b)", values), c.conjunction)) << what;
    EXPECT_TRUE(Same(ValueOf("not (not a and not b)", values), c.disjunction)) << what;
  }
  EXPECT_EQ(ValueOf("m and 0", kValues), 0.0);
  EXPECT_EQ(ValueOf("m or 1", kValues), 1.0);
  EXPECT_EQ(ValueOf("m and x and 0", kValues), 0.0);
  EXPECT_EQ(ValueOf("m or zero or x", kValues), 1.0);
  EXPECT_TRUE(std::isnan(ValueOf("m or zero or n", kValues)));
}

TEST(Evaluation, LeavesOutTheBranchThatIsNotChosen) {
  EXPECT_EQ(ValueOf("if(zero, 1/zero, 5)", kValues), 5.0);
  EXPECT_EQ(ValueOf("if(x, 5, log(-x))", kValues), 5.0);
  EXPECT_EQ(ValueOf("if(zero > 0, log(zero), 0) + 1", kValues), 1.0);
  EXPECT_EQ(ValueOf("if(x, if(zero, 1/zero, 7), 1/zero)", kValues), 7.0);
  EXPECT_TRUE(std::isnan(ValueOf("if(m, 1/zero, 1/zero)", kValues)));
  EXPECT_TRUE(Fails("if(x, 1/zero, 5)", kValues));
  EXPECT_TRUE(Fails("if(zero, 5, 1/zero)", kValues));
}

TEST(Evaluation, LeavesOutTheRightSideWhenTheLeftOneDecides) {
  EXPECT_EQ(ValueOf("zero <> 0 and 1/zero > 2", kValues), 0.0);
  EXPECT_EQ(ValueOf("zero = 0 or 1/zero > 2", kValues), 1.0);
  EXPECT_EQ(ValueOf("zero and 1/zero and 1/zero", kValues), 0.0);
  EXPECT_EQ(ValueOf("(zero and 1/zero) or 5", kValues), 1.0);
  EXPECT_EQ(ValueOf("x or 1/zero", kValues), 1.0);  // 1, not x
  EXPECT_TRUE(Fails("x and 1/zero", kValues));
  EXPECT_TRUE(Fails("zero or 1/zero", kValues));
  EXPECT_TRUE(Fails("1/zero and zero", kValues));
  // A missing left side decides nothing.
  EXPECT_TRUE(Fails("m and 1/zero", kValues));
  EXPECT_TRUE(Fails("m or 1/zero", kValues));
}

TEST(Evaluation, LeavesTheResultAloneOnFailure) {
  const CompiledFormula formula = CompileFormula("1/x", Names({"x"}));
  double result = 77.0;
  const double zero = 0.0;
  EXPECT_EQ(EvaluateFormula(formula.Program.data(), &zero, result), 1);
  EXPECT_EQ(result, 77.0);
  const double four = 4.0;
  EXPECT_EQ(EvaluateFormula(formula.Program.data(), &four, result), 0);
  EXPECT_EQ(result, 0.25);
}

// A fit reads these flags at the end of a pass and takes them for a failure of its own.
TEST(Evaluation, RaisesNoFlagForMissingValues) {
  const std::vector<double> missing(4, kMissing);
  for (const char* text : {"m", "m < x", "m = x", "m and x", "m or x", "not m", "if(m, 1, 2)", "min(m, x)", "round(m)",
                           "missing(m)", "m + x", "x^m", "sqrt(m)", "log(m)", "sign(m)"}) {
    const CompiledFormula formula = CompileFormula(text, Names({"m", "x"}));
    double result = 0.0;
    std::feclearexcept(FE_ALL_EXCEPT);
    ASSERT_EQ(EvaluateFormula(formula.Program.data(), missing.data(), result), 0) << text;
    EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW), 0) << text;
  }
}

}  // namespace
}  // namespace orv
