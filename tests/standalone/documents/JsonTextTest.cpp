#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <random>

#include "standalone/documents/JsonText.h"

namespace orv {
namespace {

std::string Written(double number) {
  JsonText json;
  json.Number(number);
  std::string text = json.Take();
  text.pop_back();
  return text;
}

std::string Written(const std::string& text) {
  JsonText json;
  json.String(text);
  std::string written = json.Take();
  written.pop_back();
  return written;
}

TEST(JsonText, WritesTheShortestNumberThatReadsBack) {
  struct {
    double number;
    const char* text;
  } const cases[] = {
      {0.1, "0.1"},
      {1.0 / 3.0, "0.3333333333333333"},
      {3.0, "3"},
      {-17.0, "-17"},
      {0.0, "0"},
      {-0.0, "-0.0"},
      {1e-320, "1e-320"},
      {5e-324, "5e-324"},
      {2.2250738585072014e-308, "2.2250738585072014e-308"},
      {1e308, "1e+308"},
      {1.7976931348623157e308, "1.7976931348623157e+308"},
      {9007199254740993.0, "9007199254740992"},
      {1e22, "1e+22"},
      {2.55312133628965e-09, "2.55312133628965e-09"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Written(c.number), c.text);
    const auto back = nlohmann::json::parse(Written(c.number)).get<double>();
    EXPECT_EQ(std::bit_cast<std::uint64_t>(back), std::bit_cast<std::uint64_t>(c.number)) << c.text;
  }
}

TEST(JsonText, GivesBackTheBitsOfAnyNumber) {
  std::mt19937_64 bits(20240229);
  for (int i = 0; i < 20000; ++i) {
    const auto number = std::bit_cast<double>(bits());
    if (!std::isfinite(number)) continue;
    const auto back = nlohmann::json::parse(Written(number)).get<double>();
    ASSERT_EQ(std::bit_cast<std::uint64_t>(back), std::bit_cast<std::uint64_t>(number)) << Written(number);
  }
}

TEST(JsonText, WritesNullForWhatIsNoFiniteNumber) {
  EXPECT_EQ(Written(std::numeric_limits<double>::quiet_NaN()), "null");
  EXPECT_EQ(Written(std::numeric_limits<double>::infinity()), "null");
  EXPECT_EQ(Written(-std::numeric_limits<double>::infinity()), "null");
}

TEST(JsonText, EscapesTextsAndReplacesBytesThatAreNoUtf8) {
  struct {
    const char* what;
    std::string text;
    const char* written;
  } const cases[] = {
      {"nothing", "", R"("")"},
      {"quotes and backslashes", R"(a "b" \c)", R"("a \"b\" \\c")"},
      {"line ends and tabs", "a\n\tb\r", R"("a\n\tb\r")"},
      {"control characters", std::string("\x01\0\x1b", 3), R"("\u0001\u0000\u001b")"},
      {"accents stay",
       "Gr\xC3\xB6\xC3\x9F"
       "e",
       "\"Gr\xC3\xB6\xC3\x9F"
       "e\""},
      {"Latin-1 bytes",
       "Gr\xF6"
       "e",
       "\"Gr\xEF\xBF\xBD"
       "e\""},
      {"a cut character at the end", "a\xE2\x82", "\"a\xEF\xBF\xBD\""},
      {"a lone continuation byte", "\x80", "\"\xEF\xBF\xBD\""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Written(c.text), c.written) << c.what;
    EXPECT_TRUE(nlohmann::json::accept(Written(c.text))) << c.what;
  }
}

TEST(JsonText, LaysContainersOutAsTold) {
  JsonText json;
  json.BeginObject(JsonLayout::Lines);
  json.Key("line");
  json.BeginObject(JsonLayout::Line);
  json.Key("a");
  json.Integer(1);
  json.Key("b");
  json.BeginArray(JsonLayout::Lines);  // on a line, what is nested stays on it
  json.Boolean(true);
  json.Boolean(false);
  json.End();
  json.End();
  json.Key("lines");
  json.BeginArray(JsonLayout::Lines);
  json.Integer(1);
  json.String("two");
  json.End();
  json.Key("empty");
  json.BeginArray(JsonLayout::Lines);
  json.BeginObject(JsonLayout::Lines);
  json.End();
  json.BeginArray(JsonLayout::Filled);
  json.End();
  json.End();
  json.End();
  EXPECT_EQ(json.Take(), R"({
  "line": { "a": 1, "b": [true, false] },
  "lines": [
    1,
    "two"
  ],
  "empty": [
    {},
    []
  ]
}
)");
}

TEST(JsonText, FillsLinesUpTo120Characters) {
  JsonText json;
  json.BeginObject(JsonLayout::Lines);
  json.Key("x");
  json.BeginArray(JsonLayout::Filled);
  for (int i = 0; i < 200; ++i) json.Number(i + 0.125);
  json.End();
  json.End();
  const std::string text = json.Take();
  std::size_t longest = 0;
  std::size_t lines = 0;
  for (std::size_t at = 0; at < text.size(); ++lines) {
    const std::size_t end = text.find('\n', at);
    longest = std::max(longest, end - at);
    at = end + 1;
  }
  EXPECT_LE(longest, 120U);
  EXPECT_GT(longest, 110U);
  EXPECT_LT(lines, 20U);
  EXPECT_EQ(nlohmann::json::parse(text)["x"].size(), 200U);
}

}  // namespace
}  // namespace orv
