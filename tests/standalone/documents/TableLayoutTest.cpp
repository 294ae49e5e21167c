#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "standalone/documents/TableLayout.h"

namespace orv {
namespace {

using Lines = std::vector<std::string>;

TableColumn Column(std::string title, std::vector<std::string> texts) {
  return {std::move(title), true, std::move(texts), {}};
}

TEST(MakeHeading, BreaksTitlesIntoAtMostThreeLines) {
  struct {
    const char* what;
    std::string title, text;
    Lines lines;
    int width;
  } const cases[] = {
      {"no title", "", "12.34", {}, 5},
      {"a title that fits", "df", "12345", {"df"}, 5},
      {"a short title stays whole", "P value", "<.0001", {"P value"}, 7},
      {"two words", "Parameter Estimate", "-0.032815", {"Parameter", "Estimate"}, 9},
      {"the longest word sets the width", "Log-likelihood", "-505.449", {"Log-likelihood"}, 14},
      {"five words make three lines", "95% Hazard Ratio Lower CL", "0.957327", {"95% Hazard", "Ratio", "Lower CL"}, 10},
      {"a wide column needs fewer lines", "Standard Error", "-0.03281532619", {"Standard Error"}, 14},
      {"an interaction breaks behind the star", "karno*diagtime", "0.0001", {"karno*", "diagtime"}, 8},
      {"and joins without a blank", "a*b*c", "0.00000001", {"a*b*c"}, 10},
      {"accents count once",
       "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9 \xC3\xA9\xC3\xA9\xC3\xA9",
       "1",
       {"\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9 \xC3\xA9\xC3\xA9\xC3\xA9"},
       8},
  };
  for (const auto& c : cases) {
    const ColumnHeading heading = MakeHeading(Column(c.title, {c.text}));
    EXPECT_EQ(heading.Lines, c.lines) << c.what;
    EXPECT_EQ(heading.Width, c.width) << c.what;
  }
}

// The blocks of a table whose first column is repeated, as "1-3 4-5".
std::string Blocks(const std::vector<TableColumn>& columns, int width) {
  std::vector<ColumnHeading> headings;
  headings.reserve(columns.size());
  for (const TableColumn& column : columns) headings.push_back(MakeHeading(column));
  std::string text;
  for (const ColumnBlock& block : SplitIntoBlocks(columns, headings, 1, width)) {
    text += (text.empty() ? "" : " ") + std::to_string(block.First) + "-" + std::to_string(block.Last);
  }
  return text;
}

TEST(SplitIntoBlocks, FillsLinesAndKeepsLimitsTogether) {
  const TableColumn name = Column("", {"12345678"});  // 8 wide; each column below takes 10 with its gap
  const TableColumn plain = Column("x", {"12345678"});
  const TableColumn lower = Column("95% Lower", {"12345678"});
  const TableColumn upper = Column("95% Upper", {"12345678"});
  struct {
    const char* what;
    std::vector<TableColumn> columns;
    int width;
    const char* blocks;
  } const cases[] = {
      {"all fit exactly", {name, plain, plain}, 28, "1-2"},
      {"one too narrow", {name, plain, plain}, 27, "1-1 2-2"},
      {"blocks are filled from the left", {name, plain, plain, plain, plain, plain}, 28, "1-2 3-4 5-5"},
      {"limits move on together", {name, plain, lower, upper}, 37, "1-1 2-3"},
      {"limits stay where both fit", {name, plain, lower, upper}, 38, "1-3"},
      {"limits are parted where no line holds both", {name, lower, upper}, 20, "1-1 2-2"},
      {"the upper limit alone is an ordinary column", {name, plain, upper}, 28, "1-2"},
      {"a column that fits no line", {name, plain, plain}, 10, "1-1 2-2"},
      {"nothing to cut", {name}, 80, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Blocks(c.columns, c.width), c.blocks) << c.what;
}

}  // namespace
}  // namespace orv
