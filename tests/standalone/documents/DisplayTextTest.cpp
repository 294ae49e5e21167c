#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "standalone/documents/DisplayText.h"

namespace orv {
namespace {

TEST(PrintableText, LetsNoControlCharacterThrough) {
  struct {
    const char* what;
    std::string text, printable;
  } const cases[] = {
      {"plain text", "age", "age"},
      {"accents",
       "Gr\xC3\xB6\xC3\x9F"
       "e",
       "Gr\xC3\xB6\xC3\x9F"
       "e"},
      {"tab and line ends", "a\tb\r\nc", "a b  c"},
      {"a terminal sequence", "\x1b[31mred", "\xEF\xBF\xBD[31mred"},
      {"a zero byte", std::string("a\0b", 3),
       "a\xEF\xBF\xBD"
       "b"},
      {"delete", "a\x7F", "a\xEF\xBF\xBD"},
      {"an 8-bit control sequence introducer",
       "\xC2\x9B"
       "2J",
       "\xEF\xBF\xBD"
       "2J"},
      {"a mark that turns the writing direction",
       "a\xE2\x80\xAE"
       "b",
       "a\xEF\xBF\xBD"
       "b"},
      {"Latin-1 bytes",
       "Gr\xF6\xDF"
       "e",
       "Gr\xEF\xBF\xBD\xEF\xBF\xBD"
       "e"},
      {"a cut character", "a\xE2\x82", "a\xEF\xBF\xBD\xEF\xBF\xBD"},
  };
  for (const auto& c : cases) EXPECT_EQ(PrintableText(c.text), c.printable) << c.what;
}

TEST(DisplayWidth, CountsTerminalColumns) {
  struct {
    const char* what;
    std::string text;
    int width;
  } const cases[] = {
      {"nothing", "", 0},
      {"ASCII", "age", 3},
      {"an accent in one character", "\xC3\xA9", 1},
      {"an accent as a combining mark", "e\xCC\x81", 1},
      {"Greek", "\xCE\xB2\xCE\xB2", 2},
      {"wide ideographs", "\xE5\xB9\xB4\xE9\xBD\xA2", 4},
      {"a pictograph", "\xF0\x9F\x98\x80", 2},
      {"the replacement character", "\xEF\xBF\xBD", 1},
      {"just below the combining marks", "\xCB\xBF", 1},
      {"just above the combining marks", "\xCD\xB0", 1},
  };
  for (const auto& c : cases) EXPECT_EQ(DisplayWidth(c.text), c.width) << c.what;
}

TEST(PrintableLines, SplitsAtLineFeedsAndTrimsTheEnds) {
  EXPECT_THAT(PrintableLines("Parameter Estimates \n * denotes"),
              testing::ElementsAre("Parameter Estimates", " * denotes"));
  EXPECT_THAT(PrintableLines("one\n\ntwo\n"), testing::ElementsAre("one", "", "two"));
  EXPECT_THAT(PrintableLines(""), testing::IsEmpty());
}

}  // namespace
}  // namespace orv
