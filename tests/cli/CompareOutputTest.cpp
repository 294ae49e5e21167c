#include <gtest/gtest.h>

#include "cli/CompareOutput.h"

namespace orv::testing {
namespace {

TEST(CompareOutput, TellsTheFirstLineThatDiffers) {
  struct {
    const char* what;
    const char* expected;
    const char* actual;
    const char* difference;
  } const cases[] = {
      {"the same", "a\nb\n", "a\nb\n", ""},
      {"both empty", "", "", ""},
      {"another letter", "a\nb\n", "a\nc\n", "line 2:\n  expected |b|\n  but got  |c|\n"},
      {"a line too few", "a\nb\n", "a\n", "line 2:\n  expected |b|\n  but the output ends\n"},
      {"a line too many", "a\n", "a\nb\n", "line 2:\n  expected the end\n  but got  |b|\n"},
      {"a blank at the end of a line", "a\n", "a \n", "line 1:\n  expected |a|\n  but got  |a |\n"},
      {"no final line break", "a\n", "a", "line 1:\n  expected |a|\n  but got  |a| (no line break)\n"},
      {"another line break", "a\n", "a\r\n", "line 1:\n  expected |a|\n  but got  |a\\r|\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(CompareOutput(c.expected, c.actual, 0), c.difference) << c.what;
}

TEST(CompareOutput, WithoutDigitsNumbersAreLetters) {
  EXPECT_NE(CompareOutput("0.5\n", "0.50\n", 0), "");
}

TEST(CompareOutput, WithDigitsNumbersMayDifferInTheirLastOnes) {
  struct {
    const char* what;
    const char* expected;
    const char* actual;
    bool agree;
  } const cases[] = {
      {"the eleventh digit", "x 1.23456789012\n", "x 1.23456789014\n", true},
      {"the ninth digit", "x 1.23456789\n", "x 1.23456780\n", false},
      {"another length", "[0.5, 2]\n", "[0.50000000000001, 2]\n", true},
      {"large numbers", "1.5e100\n", "1.50000000000001e100\n", true},
      {"the sign", "-0.5\n", "0.5\n", false},
      {"next to zero by the rounding of one", "9.66e-14\n", "9.65e-14\n", true},
      {"next to zero beyond it", "1e-10\n", "1.1e-10\n", false},
      {"digits within a name are letters", "x1.0000000000001\n", "x1\n", false},
      {"a text in the place of a number", "null\n", "0\n", false},
      {"more after a number", "5\n", "5.0a\n", false},
  };
  for (const auto& c : cases) EXPECT_EQ(CompareOutput(c.expected, c.actual, 10).empty(), c.agree) << c.what;
}

}  // namespace
}  // namespace orv::testing
