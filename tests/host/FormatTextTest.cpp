#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <vector>

#include "host/FormatText.h"

namespace orv {
namespace {

TEST(FormatText, PutsArgumentsInTheirPlaces) {
  struct {
    const char* Format;
    std::vector<std::string> Arguments;
    const char* Expected;
  } const cases[] = {
      {"", {}, ""},
      {"no place", {"x"}, "no place"},
      {"1-%d", {"12"}, "1-12"},
      {" %d-%d", {"3", "4"}, " 3-4"},
      {"v%d=%d", {"5", "0"}, "v5=0"},
      {"%s%d", {"TIME_EXPRESSION", "2"}, "TIME_EXPRESSION2"},
      {"between 0 and %d (=Number of effects in design).", {"7"}, "between 0 and 7 (=Number of effects in design)."},
      {"%d and %d", {"1"}, "1 and "},
      {"%d", {"1", "2"}, "1"},
      {"100%", {"1"}, "100%"},
      {"100 % of %d", {"3"}, "100 % of 3"},
      {"%s", {"%d"}, "%d"},
  };
  for (const auto& c : cases) {
    const auto& a = c.Arguments;
    std::string text;
    if (a.empty()) text = FormatText(c.Format, {});
    if (a.size() == 1) text = FormatText(c.Format, {a[0]});
    if (a.size() == 2) text = FormatText(c.Format, {a[0], a[1]});
    EXPECT_EQ(text, c.Expected) << "format \"" << c.Format << "\"";
  }
}

TEST(FormatInteger, WritesEveryDigitAndTheSign) {
  EXPECT_EQ(FormatInteger(0), "0");
  EXPECT_EQ(FormatInteger(-17), "-17");
  EXPECT_EQ(FormatInteger(std::numeric_limits<long long>::max()), "9223372036854775807");
  EXPECT_EQ(FormatInteger(std::numeric_limits<long long>::min()), "-9223372036854775808");
}

std::string ByPrintf(double value) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%g", value);
  return text.data();
}

TEST(FormatGeneral, WritesSixSignificantDigitsAsPrintfDoes) {
  for (const double value : {0.0, 1.0, -1.0, 0.5, 0.1, 1e5, 123456.0, 1234567.0, 1e-4, 1e-5, 3.14159265358979, 0.999999,
                             0.9999996, 1e300, -2.5e-300, 5e-324, 1e6, 999999.5}) {
    EXPECT_EQ(FormatGeneral(value), ByPrintf(value)) << "value " << value;
  }
  std::mt19937_64 random(20240501);
  std::uniform_real_distribution<double> mantissa(-10.0, 10.0);
  std::uniform_int_distribution<int> exponent(-12, 12);
  for (int trial = 0; trial < 2000; ++trial) {
    const double value = mantissa(random) * std::pow(10.0, exponent(random));
    EXPECT_EQ(FormatGeneral(value), ByPrintf(value)) << "trial " << trial;
  }
}

// A locale that writes 1.234,5, put together here because the machine may have none installed.
class CommaPunctuation : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(FormatGeneral, DoesNotDependOnTheLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation));
  const std::string text = FormatGeneral(1234.5) + " " + FormatInteger(1234567) + " " + FormatText("%d", {"8"});
  std::locale::global(before);
  EXPECT_EQ(text, "1234.5 1234567 8");
}

// The locale of C as well, where the machine has one with a decimal comma.
TEST(FormatGeneral, DoesNotDependOnTheInstalledLocales) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  for (const char* name : {"C", "C.UTF-8", "de_DE.UTF-8", "fr_FR.UTF-8", "cs_CZ.UTF-8"}) {
    if (std::setlocale(LC_ALL, name) == nullptr) continue;
    const std::string text = FormatGeneral(1234.5) + " " + FormatInteger(1234567);
    std::setlocale(LC_ALL, before.c_str());
    EXPECT_EQ(text, "1234.5 1234567") << "locale " << name;
  }
}

}  // namespace
}  // namespace orv
