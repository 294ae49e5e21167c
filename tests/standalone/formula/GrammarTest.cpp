// Numbers, signs, precedence and blanks.
#include <gtest/gtest.h>

#include <locale>
#include <string>

#include "FormulaRuns.h"

namespace orv {
namespace {

using testing::NamedValue;
using testing::Same;
using testing::ValueOf;

TEST(FormulaGrammar, ReadsNumbers) {
  struct {
    const char* text;
    double value;
  } const cases[] = {
      {"1", 1.0},
      {"1.5", 1.5},
      {".5", 0.5},
      {"5.", 5.0},
      {"007", 7.0},
      {"1e-3", 1e-3},
      {"1E+3", 1e3},
      {"2.5e2", 250.0},
      {".5e1", 5.0},
      {"1.e2", 100.0},
      {"0.1", 0.1},
      {"123456789012345678901234567890", 123456789012345678901234567890.0},
      {"1.7976931348623157e308", 1.7976931348623157e308},
      {"2.2250738585072014e-308", 2.2250738585072014e-308},
      {"0", 0.0},
      {"0e5", 0.0},
  };
  for (const auto& c : cases) EXPECT_TRUE(Same(ValueOf(c.text), c.value)) << c.text << " gave " << ValueOf(c.text);
}

// As in countries that write a decimal comma.
class CommaPunctuation : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
};

TEST(FormulaGrammar, DoesNotDependOnTheLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale(), new CommaPunctuation));
  const double value = ValueOf("1.5 * x", {{"x", 2.0}});
  const std::string message = testing::Refusal("1,5", testing::Names({}));
  const std::string range = testing::Refusal("1.5e999", testing::Names({}));
  std::locale::global(before);
  EXPECT_EQ(value, 3.0);
  EXPECT_EQ(message, "at character 2: a decimal comma. Write the number with a point: 1.5.");
  EXPECT_EQ(range, "at character 1: 1.5e999 is beyond the range of numbers, which is about 1e-308 to 1e308.");
}

TEST(FormulaGrammar, BindsByPrecedence) {
  const std::vector<NamedValue> x = {{"x", 3.0}};
  struct {
    const char* text;
    double value;
  } const cases[] = {
      // Powers, the highest.
      {"2^3^2", 512.0},
      {"(2^3)^2", 64.0},
      {"2**3**2", 512.0},
      {"2^-1", 0.5},
      {"2^+1", 2.0},
      {"2^-1^2", 0.5},
      {"2^-2^2", 0.0625},
      {"2*3^2", 18.0},
      {"2^3*2", 16.0},
      // Signs.
      {"-2^2", -4.0},
      {"(-2)^2", 4.0},
      {"-x^2", -9.0},
      {"--x", 3.0},
      {"-+-x", 3.0},
      {"2*-3", -6.0},
      {"2/-4", -0.5},
      {"2--3", 5.0},
      {"2+-3", -1.0},
      {"-2*3", -6.0},
      // Products and sums, from left to right.
      {"8/4/2", 1.0},
      {"8/4*2", 4.0},
      {"8-4-2", 2.0},
      {"8-4+2", 6.0},
      {"1+2*3", 7.0},
      {"(1+2)*3", 9.0},
      {"1-2*3-4/2", -7.0},
      // Comparisons, below sums.
      {"1+1 = 2", 1.0},
      {"2 < 1+2", 1.0},
      {"1 + (1 = 1)", 2.0},
      // not, below comparisons.
      {"not 1 = 2", 1.0},
      {"(not 1) = 2", 0.0},
      {"not not 5", 1.0},
      {"not -1 < 0", 0.0},
      // and, or.
      {"not 1 and 0", 0.0},
      {"not (1 and 0)", 1.0},
      {"1 or 1 and 0", 1.0},
      {"(1 or 1) and 0", 0.0},
      {"0 and 1 or 1", 1.0},
      {"1 or not 1", 1.0},
      {"0 or 0 or 1", 1.0},
      {"1 and 1 and 0", 0.0},
      {"1 < 2 and 2 < 3 or 1 > 2", 1.0},
  };
  for (const auto& c : cases) EXPECT_EQ(ValueOf(c.text, x), c.value) << c.text;
}

TEST(FormulaGrammar, ComparesNumbers) {
  struct {
    const char* sign;
    double less, equal, greater;  // of 1 with 2, 2 with 2, 3 with 2
  } const cases[] = {
      {"=", 0, 1, 0}, {"==", 0, 1, 0}, {"<>", 1, 0, 1}, {"!=", 1, 0, 1},
      {"<", 1, 0, 0}, {"<=", 1, 1, 0}, {">", 0, 0, 1},  {">=", 0, 1, 1},
  };
  for (const auto& c : cases) {
    const std::string sign = c.sign;
    EXPECT_EQ(ValueOf("1" + sign + "2"), c.less) << sign;
    EXPECT_EQ(ValueOf("2 " + sign + " 2"), c.equal) << sign;
    EXPECT_EQ(ValueOf("3" + sign + "2"), c.greater) << sign;
    // With both operands read from the table, and with the right one computed.
    EXPECT_EQ(ValueOf("a" + sign + "b", {{"a", 1.0}, {"b", 2.0}}), c.less) << sign;
    EXPECT_EQ(ValueOf("a" + sign + "b*1", {{"a", 3.0}, {"b", 2.0}}), c.greater) << sign;
  }
}

TEST(FormulaGrammar, ComparesExactly) {
  EXPECT_EQ(ValueOf("x = 0.3", {{"x", 0.3}}), 1.0);
  EXPECT_EQ(ValueOf("x = 0.3", {{"x", 0.1 + 0.2}}), 0.0);
  EXPECT_EQ(ValueOf("x = -x", {{"x", 0.0}}), 1.0);
}

TEST(FormulaGrammar, TakesEverySpellingOfLogic) {
  const std::vector<NamedValue> values = {{"t", 1.0}, {"f", 0.0}};
  for (const char* sign : {"and", "AND", "And", "&", "&&"}) {
    EXPECT_EQ(ValueOf("t " + std::string(sign) + " t", values), 1.0) << sign;
    EXPECT_EQ(ValueOf("t " + std::string(sign) + " f", values), 0.0) << sign;
  }
  for (const char* sign : {"or", "OR", "oR", "|", "||"}) {
    EXPECT_EQ(ValueOf("f " + std::string(sign) + " t", values), 1.0) << sign;
    EXPECT_EQ(ValueOf("f " + std::string(sign) + " f", values), 0.0) << sign;
  }
  for (const char* sign : {"not", "NOT", "Not"}) EXPECT_EQ(ValueOf(std::string(sign) + " f", values), 1.0) << sign;
  // Signs need no blanks around them, and words none beside a parenthesis.
  EXPECT_EQ(ValueOf("t&f|t", values), 1.0);
  EXPECT_EQ(ValueOf("(t)and(f)", values), 0.0);
  EXPECT_EQ(ValueOf("not(f)", values), 1.0);
}

TEST(FormulaGrammar, TakesAnyNumberButZeroForTrue) {
  for (const char* number : {"1", "-1", "0.001", "1e300"}) {
    EXPECT_EQ(ValueOf(std::string(number) + " and x", {{"x", 2.0}}), 1.0) << number;
    EXPECT_EQ(ValueOf(std::string(number) + " or x", {{"x", 0.0}}), 1.0) << number;
    EXPECT_EQ(ValueOf("not " + std::string(number)), 0.0) << number;
    EXPECT_EQ(ValueOf("if(" + std::string(number) + ", 5, 6)"), 5.0) << number;
  }
  // Minus zero is zero, and the result of logic is 0 and never -0.
  EXPECT_TRUE(Same(ValueOf("x and 1", {{"x", -0.0}}), 0.0));
  EXPECT_TRUE(Same(ValueOf("x or 0", {{"x", -0.0}}), 0.0));
  EXPECT_EQ(ValueOf("if(x, 5, 6)", {{"x", -0.0}}), 6.0);
}

TEST(FormulaGrammar, SkipsBlanksAndLineBreaks) {
  for (const char* text : {"1+2*x", " 1 + 2 * x ", "\t1\n+\r\n2\v*\fx\n", "1\xC2\xA0+ 2 *x", "( 1 )+( 2*( x ) )"})
    EXPECT_EQ(ValueOf(text, {{"x", 4.0}}), 9.0) << text;
}

TEST(FormulaGrammar, ReadsLongChains) {
  std::string sum = "x";
  for (int i = 0; i < 5000; ++i) sum += "+x";
  EXPECT_EQ(ValueOf(sum, {{"x", 1.0}}), 5001.0);
  std::string logic = "x";
  for (int i = 0; i < 4000; ++i) logic += "&x";
  EXPECT_EQ(ValueOf(logic, {{"x", 2.0}}), 1.0);
}

}  // namespace
}  // namespace orv
