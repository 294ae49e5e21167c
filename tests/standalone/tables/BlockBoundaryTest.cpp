// The reader takes a file in blocks of 256 KiB. Nothing may depend on where one ends.
#include <gtest/gtest.h>

#include <string>

#include "standalone/tables/TextTables.h"

namespace orv {
namespace {

using testing::ReadText;
using testing::Refusal;

constexpr std::size_t kBlock = 256 * 1024;

struct BoundaryText {
  std::string Text;
  int Cases = 0;
  int Lines = 0;  // complete ones
};

// A table whose bytes around the end of the first block are `passage`, shifted so that the block ends `cut` bytes into
// it. The passage is a case of its own.
BoundaryText Around(const std::string& passage, int passageLines, std::size_t cut, const std::string& lineEnd) {
  BoundaryText result;
  const std::size_t wanted = kBlock - cut;  // where the passage begins
  result.Text = "a,b" + lineEnd;
  result.Lines = 1;
  const std::string line = "1,2" + lineEnd;
  while (result.Text.size() + 2 * line.size() <= wanted) {
    result.Text += line;
    ++result.Lines;
    ++result.Cases;
  }
  // The rest of the way by blanks before a value.
  result.Text += std::string(wanted - result.Text.size() - line.size(), ' ') + line;
  EXPECT_EQ(result.Text.size(), wanted);
  result.Text += passage;
  result.Lines += 1 + passageLines;
  result.Cases += 2;
  return result;
}

TEST(BlockBoundary, MayCutAnything) {
  struct {
    const char* what;
    std::string passage;  // with the end of its last line
    int lines;
    std::string lineEnd;
    std::string text;  // the value of b in it
  } const cases[] = {
      {"a line", "7,xyz\n", 1, "\n", "xyz"},
      {"CRLF", "7,xyz\r\n", 1, "\r\n", "xyz"},
      {"CR", "7,xyz\r", 1, "\r", "xyz"},
      {"a doubled quote", "7,\"x\"\"y\"\n", 1, "\n", "x\"y"},
      {"a quoted CRLF", "7,\"x\r\ny\"\r\n", 2, "\r\n", "x\r\ny"},
      {"characters of several bytes", "7,\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\n", 1, "\n",
       "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"},
  };
  for (const auto& c : cases) {
    for (std::size_t cut = 0; cut <= c.passage.size(); ++cut) {
      SCOPED_TRACE(std::string(c.what) + ", " + std::to_string(cut) + " bytes before the end of the block");
      const BoundaryText around = Around(c.passage, c.lines, cut, c.lineEnd);
      const MemoryTable table = ReadText(around.Text + "3,4" + c.lineEnd);
      ASSERT_EQ(table.CaseCount(), around.Cases + 1);
      EXPECT_EQ(table.Value(1, around.Cases), 7.0);
      EXPECT_EQ(table.LabelOf(2, table.Value(2, around.Cases)), c.text);
      EXPECT_EQ(table.LabelOf(2, table.Value(2, around.Cases + 1)), "4");
      // The line after it has the right number.
      const std::string place = "trial.csv, line " + std::to_string(around.Lines + 1) + ": 1 field";
      EXPECT_EQ(Refusal(around.Text + "3").substr(0, place.size()), place);
    }
  }
}

TEST(BlockBoundary, MayFallOnTheEndOfTheFile) {
  for (std::size_t blocks = 1; blocks <= 2; ++blocks) {
    std::string text = "ab\n";
    while (text.size() < blocks * kBlock) text += text.size() + 3 <= blocks * kBlock ? "12\n" : "4";
    ASSERT_EQ(text.size(), blocks * kBlock);
    const MemoryTable table = ReadText(text);
    EXPECT_EQ(table.CaseCount(), static_cast<int>((text.size() + 2) / 3) - 1);
    EXPECT_GE(table.Value(1, table.CaseCount()), 4.0);
  }
}

}  // namespace
}  // namespace orv
