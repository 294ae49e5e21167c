#include <gtest/gtest.h>

#include "AwkwardDocuments.h"
#include "standalone/documents/MarkdownText.h"

namespace orv {
namespace {

TEST(MarkdownText, EscapesWhatMarkdownWouldTakeAsItsOwn) {
  struct {
    const char* text;
    const char* markup;
  } const cases[] = {
      {"plain 1.5 (x) - y", "plain 1.5 (x) - y"},
      {"age*sex", "age\\*sex"},
      {"a|b", "a\\|b"},
      {"back\\slash", "back\\\\slash"},
      {"`code`", "\\`code\\`"},
      {"[link](x)", "\\[link\\](x)"},
      {"~~gone~~", "\\~\\~gone\\~\\~"},
      {"$x$", "\\$x\\$"},
      {"ph_ecog_2", "ph_ecog_2"},
      {"_start end_", "\\_start end\\_"},
      {"a _b_ c", "a \\_b\\_ c"},
      {"<.0001", "<.0001"},
      {"a < b", "a < b"},
      {"<b>", "\\<b\\>"},
      {"</b>", "\\</b\\>"},
      {"<!-- x", "\\<!-- x"},
      {"&amp; &#35; a & b", "\\&amp; \\&#35; a & b"},
      {"two\nlines\ttab", "two lines tab"},
      {"  blanks  ", "blanks"},
      {"\x1b[1m", "\xEF\xBF\xBD\\[1m"},
      {"\xFF", "\xEF\xBF\xBD"},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(MarkdownText(c.text), c.markup) << c.text;
  EXPECT_EQ(MarkdownText(Emoji + Hebrew), Emoji + Hebrew);
}

TEST(MarkdownLine, AlsoEscapesWhatWouldBeginAHeadingOrAList) {
  struct {
    const char* text;
    const char* markup;
  } const cases[] = {
      {"# second", "\\# second"}, {"- 2 Log L", "\\- 2 Log L"}, {"+ plus", "\\+ plus"}, {"===", "\\==="},
      {"1. first", "1\\. first"}, {"12) x", "12\\) x"},         {"95% CL", "95% CL"},   {"1", "1"},
      {"* fixed", "\\* fixed"},   {"> quoted", "\\> quoted"},   {"a # b", "a # b"},     {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(MarkdownLine(c.text), c.markup) << c.text;
}

TEST(MarkdownFence, IsLongerThanAnyRunOfBackticksInTheText) {
  EXPECT_EQ(MarkdownFence("int x;\n\ty"), "```\nint x;\n\ty\n```\n");
  EXPECT_EQ(MarkdownFence("a ``` b ```` c\n"), "`````\na ``` b ```` c\n`````\n");
  EXPECT_EQ(MarkdownFence(""), "```\n```\n");
}

}  // namespace
}  // namespace orv
