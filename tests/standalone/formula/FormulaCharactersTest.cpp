#include <gtest/gtest.h>

#include <string>

#include "standalone/documents/Utf8.h"
#include "standalone/formula/FormulaCharacters.h"

namespace orv {
namespace {

TEST(FoldCase, PairsLettersOneToOne) {
  struct {
    const char* text;
    const char* folded;
  } const cases[] = {
      {"", ""},
      {"AZaz09_.", "azaz09_."},
      {"[\\]^@`{", "[\\]^@`{"},  // the neighbours of the letters
      {"\xC3\x80\xC3\x96\xC3\x98\xC3\x9E", "\xC3\xA0\xC3\xB6\xC3\xB8\xC3\xBE"},
      {"\xC3\x97\xC3\xB7\xC3\x9F", "\xC3\x97\xC3\xB7\xC3\x9F"},  // signs and the sharp s stay
      {"\xC4\x80\xC4\x81\xC4\xAE", "\xC4\x81\xC4\x81\xC4\xAF"},
      {"\xC4\xB0\xC4\xB1", "\xC4\xB0\xC4\xB1"},  // the dotted I and the dotless i are no pair
      {"\xC4\xB9\xC5\x87", "\xC4\xBA\xC5\x88"},
      {"\xC5\xB8\xC5\xB9", "\xC3\xBF\xC5\xBA"},
      {"\xCE\x86\xCE\x91\xCE\xA9", "\xCE\xAC\xCE\xB1\xCF\x89"},
      {"\xCE\xA3\xCF\x82", "\xCF\x83\xCF\x83"},  // both forms of the small sigma
      {"\xD0\x80\xD0\x90\xD0\xAF", "\xD1\x90\xD0\xB0\xD1\x8F"},
      {"\xE1\xB8\x80\xE1\xBA\xA0", "\xE1\xB8\x81\xE1\xBA\xA1"},
      {"A\xFF"
       "B",
       "a\xFF"
       "b"},  // no UTF-8
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FoldCase(c.text), c.folded) << c.text;
    EXPECT_EQ(FoldCase(FoldCase(c.text)), FoldCase(c.text)) << c.text;
    EXPECT_TRUE(SameButForCase(c.text, c.folded)) << c.text;
  }
  EXPECT_FALSE(SameButForCase("age", "aged"));
}

TEST(FoldCase, ChangesNothingTwice) {
  for (char32_t character = 1; character < 0x3000; ++character) {
    std::string text;
    AppendUtf8(text, character);
    EXPECT_EQ(FoldCase(FoldCase(text)), FoldCase(text)) << static_cast<unsigned>(character);
  }
}

TEST(NameLength, EndsAtBlanksAndSigns) {
  struct {
    const char* text;
    std::size_t length;
  } const cases[] = {
      {"", 0},
      {"age", 3},
      {"ph.ecog_1 2", 9},
      {"a+b", 1},
      {"+", 0},
      {"a\"b", 1},
      {"a#", 1},
      {"\xC3\xA4\xE5\xB9\xB4x", 6},
      {"\xC2\xB5g", 3},           // micro
      {"a\xC2\xA0", 1},           // no-break space
      {"a\xC2\xB2", 1},           // squared
      {"a\xE2\x80\x9D", 1},       // typographic quote
      {"a\xE2\x88\x92", 1},       // minus sign
      {"a\xC3\x97", 1},           // multiplication sign
      {"a\xF0\x9F\x98\x80!", 5},  // a pictograph, as people name columns
      {"a\xC3", 1},               // a cut character
      {"a\xFF", 1},
  };
  for (const auto& c : cases) EXPECT_EQ(NameLength(c.text, 0), c.length) << c.text;
  EXPECT_EQ(NameLength("a+bc", 2), 2U);
}

}  // namespace
}  // namespace orv
