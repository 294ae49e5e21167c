#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "standalone/documents/JsonText.h"
#include "standalone/jobs/JobValue.h"
#include "standalone/jobs/TomlText.h"

namespace orv {
namespace {

JobValue ReadBack(const std::string& value) {
  return ParseJobText("a = " + value + "\n", "t.toml").at(0).Value;
}

TEST(TomlText, TextsComeBackWhateverTheyHold) {
  std::string all;
  for (int c = 1; c < 128; ++c) all += static_cast<char>(c);
  for (const std::string& text :
       {all, std::string("a\"b\\c"), std::string("Grün, \xE2\x82\xAC"), std::string("a\0b", 3)}) {
    EXPECT_EQ(*ReadBack(TomlString(text)).As<std::string>(), text);
    EXPECT_EQ(ParseJobText(TomlName(text) + " = 1\n", "t.toml").at(0).Name, text);
  }
}

TEST(TomlText, PlainNamesNeedNoQuotes) {
  EXPECT_EQ(TomlName("cell-type_2"), "cell-type_2");
  EXPECT_EQ(TomlName("ph.ecog"), "\"ph.ecog\"");
  EXPECT_EQ(TomlName(""), "\"\"");
}

TEST(TomlText, NumbersComeBackToTheLastBit) {
  const double numbers[] = {0.0,
                            -0.0,
                            1.0,
                            -2.5,
                            0.1,
                            1e20,
                            12345678901234567890.0,
                            9007199254740993.0,
                            9223372036854775808.0,
                            std::numeric_limits<double>::max(),
                            std::numeric_limits<double>::denorm_min()};
  for (const double number : numbers) {
    const JobValue value = ReadBack(TomlNumber(number));
    const auto* whole = value.As<std::int64_t>();
    const double back = whole != nullptr ? static_cast<double>(*whole) : *value.As<double>();
    EXPECT_EQ(back, number) << TomlNumber(number);
    EXPECT_EQ(std::signbit(back), std::signbit(number)) << TomlNumber(number);
  }
}

TEST(TomlText, CodesAreNumbersOnlyWhenTheirTextComesBack) {
  struct {
    const char* Code;
    const char* Written;
  } const cases[] = {
      {"1", "1"},       {"-3", "-3"},         {"0.5", "0.5"},     {"1e+20", "1e+20"},
      {"01", "\"01\""}, {"+1", "\"+1\""},     {"-0", "\"-0\""},   {"1.50", "\"1.50\""},
      {"1.", "\"1.\""}, {"drug", "\"drug\""}, {"inf", "\"inf\""}, {"99999999999999999999", "\"99999999999999999999\""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(TomlCode(c.Code), c.Written);
    const JobValue value = ReadBack(TomlCode(c.Code));
    const auto* whole = value.As<std::int64_t>();
    const auto* real = value.As<double>();
    const std::string back = whole != nullptr  ? std::to_string(*whole)
                             : real != nullptr ? ShortestNumberText(*real)
                                               : *value.As<std::string>();
    EXPECT_EQ(back, c.Code);
  }
}

TEST(TomlText, LongListsStandInLinesOfTheirOwn) {
  EXPECT_EQ(TomlList({"1", "2"}), "[1, 2]");
  const std::vector<std::string> items(40, "\"name\"");
  const std::string list = TomlList(items);
  EXPECT_NE(list.find(",\n  \"name\""), std::string::npos);
  EXPECT_EQ(ReadBack(list).As<JobValue::List>()->size(), items.size());
}

}  // namespace
}  // namespace orv
