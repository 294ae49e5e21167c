#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "standalone/documents/NumberColumn.h"

namespace orv {
namespace {

using testing::ElementsAre;

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinity = std::numeric_limits<double>::infinity();

TEST(FormatNumberColumn, GivesEveryNumberOfAColumnTheSameDecimals) {
  struct {
    const char* what;
    std::vector<double> numbers;
    std::vector<std::string> texts;
  } const cases[] = {
      {"whole numbers have none", {1, 20, -300, 0}, {"1", "20", "-300", "0"}},
      {"whole numbers keep all their digits", {123456789012345.0}, {"123456789012345"}},
      {"6 significant digits of the largest", {948.794223, 62.103886}, {"948.794", "62.104"}},
      {"3 significant digits of the smallest", {12345.678, 0.0384417}, {"12345.6780", "0.0384"}},
      {"at most 6 decimals", {0.61472962, 0.000123456}, {"0.614730", "0.000123"}},
      {"whole and broken numbers together", {3, 0.5}, {"3.00000", "0.50000"}},
      {"a zero takes part", {0, 0.25}, {"0.000000", "0.250000"}},
      {"a zero has no sign", {-0.0, -0.25}, {"0.000000", "-0.250000"}},
      {"missing cells are blank", {NaN, 0.25, NaN}, {"", "0.250000", ""}},
      {"nothing but missing cells", {NaN}, {""}},
      {"no rows", {}, {}},
  };
  for (const auto& c : cases) EXPECT_EQ(FormatNumberColumn(c.numbers), c.texts) << c.what;
}

TEST(FormatNumberColumn, WritesVerySmallAndVeryLargeNumbersWithAnExponent) {
  struct {
    const char* what;
    double number;
    std::string text;
  } const cases[] = {
      {"the smallest without", 0.0001, "0.000100"},
      {"just below it", 0.00009999, "9.999e-05"},
      {"negative", -8.13205e-05, "-8.132e-05"},
      {"a denormal number", 1e-320, "1.000e-320"},
      {"just below the limit", 999999999.5, "999999999.500"},
      {"the limit", 1000000000.5, "1.000e+09"},
      {"the largest", 1.7e308, "1.700e+308"},
      {"infinite", -Infinity, "-inf"},
  };
  for (const auto& c : cases) {
    // The second number calls for 3 decimals at least.
    EXPECT_EQ(FormatNumberColumn({c.number, 0.25}).front(), c.text) << c.what;
  }
  EXPECT_THAT(FormatNumberColumn({2.5e-9}), ElementsAre("2.500e-09"));
}

TEST(FormatPValueColumn, HasFourDecimalsAndABound) {
  EXPECT_THAT(FormatPValueColumn({0.0505, 1, 0.0001, 0.00009999, 2.55e-09, 0, NaN}),
              ElementsAre("0.0505", "1.0000", "0.0001", "<.0001", "<.0001", "<.0001", ""));
}

TEST(IsPValueTitle, KnowsTheTitleInEitherCase) {
  EXPECT_TRUE(IsPValueTitle("P value"));
  EXPECT_TRUE(IsPValueTitle("p value"));
  EXPECT_FALSE(IsPValueTitle("P values"));
  EXPECT_FALSE(IsPValueTitle("P valu"));
  EXPECT_FALSE(IsPValueTitle(""));
  EXPECT_FALSE(IsPValueTitle("Chi-square"));
}

}  // namespace
}  // namespace orv
