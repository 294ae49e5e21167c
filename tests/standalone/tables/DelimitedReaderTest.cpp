#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>

#include "standalone/tables/DelimitedReader.h"
#include "standalone/tables/TextTables.h"
#include "support/AllocationHook.h"

namespace orv {
namespace {

using testing::Contents;
using testing::ReadText;
using testing::TextSource;
using testing::Visible;

struct TextCase {
  const char* what;
  std::string text;
  std::string contents;
};

void ExpectContents(const std::vector<TextCase>& cases, bool preferTab = false) {
  for (const TextCase& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(Contents(ReadText(c.text, preferTab)), c.contents) << Visible(c.text);
  }
}

TEST(DelimitedReader, ReadsLinesOfNumbers) {
  const MemoryTable table = ReadText("time,status\n5,1\n8.5,0\n");
  EXPECT_EQ(table.Source(), "trial.csv");
  EXPECT_EQ(Contents(table), "time number 5 8.5\nstatus number 1 0\n");
  EXPECT_FALSE(table.HasCaseNames());
  EXPECT_EQ(table.Variable(1).MissingCode, kMissingCode);
}

TEST(DelimitedReader, FindsTheDelimiterInTheHeader) {
  ExpectContents({
      {"comma", "a,b\n1,2\n", "a number 1\nb number 2\n"},
      {"semicolon", "a;b\n1;2\n", "a number 1\nb number 2\n"},
      {"tab", "a\tb\n1\t2\n", "a number 1\nb number 2\n"},
      {"none: one column", "a\n1\n", "a number 1\n"},
      {"comma inside quotes does not count", "\"a,x,y\";b\n1;2\n", "a,x,y number 1\nb number 2\n"},
      {"semicolons inside quotes do not count", "\"a;;;\",b\n1,2\n", "a;;; number 1\nb number 2\n"},
      {"most frequent wins", "a;b;c,d\n1;2;3\n", "a number 1\nb number 2\nc,d number 3\n"},
      {"comma before the others", "a;b,c\n1,2\n", "a;b number 1\nc number 2\n"},
      {"tab before semicolon", "a;b\tc\n1\t2\n", "a;b number 1\nc number 2\n"},
      {"header with a line break in quotes", "\"a\nx\";b\n1;2\n", "a\nx number 1\nb number 2\n"},
      {"only the header counts", "a;b\n1,2,3,x;2\n", "a text 1 | 1=1,2,3,x\nb number 2\n"},
      {"blank lines before the header", "\n  \r\na;b\n1;2\n", "a number 1\nb number 2\n"},
  });
}

TEST(DelimitedReader, PrefersTheTabInTsvFiles) {
  ExpectContents(
      {
          {"tab", "a,x,y\tb\n1\t2\n", "a,x,y number 1\nb number 2\n"},
          {"no tab", "a;b\n1;2\n", "a number 1\nb number 2\n"},
          {"empty first and last field", "a\tb\tc\n\t2\t\n", "a number M\nb number 2\nc number M\n"},
          {"tabs alone are a case", "a\tb\n\t\n1\t2\n", "a number M 1\nb number M 2\n"},
          {"tab inside quotes", "a\tb\n\"x\ty\"\t2\n", "a text 1 | 1=x\ty\nb number 2\n"},
      },
      true);
}

TEST(DelimitedReader, TakesAnyLineEndAndSkipsBlankLines) {
  const std::string contents = "a number 1 3\nb number 2 4\n";
  ExpectContents({
      {"LF", "a,b\n1,2\n3,4\n", contents},
      {"CRLF", "a,b\r\n1,2\r\n3,4\r\n", contents},
      {"CR", "a,b\r1,2\r3,4\r", contents},
      {"mixed", "a,b\r\n1,2\r3,4\n", contents},
      {"no end on the last line", "a,b\n1,2\n3,4", contents},
      {"trailing blank lines", "a,b\n1,2\n3,4\n\n \t\n\n", contents},
      {"blank lines in between", "\n\na,b\n\n1,2\n   \n\t\n3,4\n", contents},
      {"blank CRLF lines in between", "a,b\r\n\r\n1,2\r\n\r\n3,4\r\n\r\n", contents},
      {"blank lines of one column", "a\n1\n\n2\n", "a number 1 2\n"},
      {"quoted empty lines of one column", "a\n1\n\"\"\n2\n", "a number 1 M 2\n"},
  });
}

TEST(DelimitedReader, SkipsAByteOrderMark) {
  ExpectContents({
      {"plain",
       "\xEF\xBB\xBF"
       "a,b\n1,2\n",
       "a number 1\nb number 2\n"},
      {"before a blank line",
       "\xEF\xBB\xBF\n"
       "a;b\n1;2\n",
       "a number 1\nb number 2\n"},
      {"quoted name", "\xEF\xBB\xBF\"a,b\",c\n1,2\n", "a,b number 1\nc number 2\n"},
  });
}

TEST(DelimitedReader, ReadsQuotedFields) {
  ExpectContents({
      {"delimiter inside", "a,b\n\"x,y\",2\n", "a text 1 | 1=x,y\nb number 2\n"},
      {"doubled quote", "a\n\"5\"\" pipe\"\n", "a text 1 | 1=5\" pipe\n"},
      {"only a quote", "a\n\"\"\"\"\n", "a text 1 | 1=\"\n"},
      {"line breaks", "a,b\n\"x\ny\r\nz\",2\n", "a text 1 | 1=x\ny\r\nz\nb number 2\n"},
      {"quoted numbers", "a\n\"1\"\n\" 2 \"\n", "a number 1 2\n"},
      {"quoted empty cell", "a,b\n\"\",1\n\"  \",2\n3,3\n", "a number M M 3\nb number 1 2 3\n"},
      {"blanks around quotes", "a,b\n  \"x,y\"  ,2\n", "a text 1 | 1=x,y\nb number 2\n"},
      {"blanks inside quotes do not count", "a\n\" x \"\nx\n", "a text 1 1 | 1=x\n"},
      {"quoted last field without line end", "a,b\n1,\"x\"", "a number 1\nb text 1 | 1=x\n"},
      {"quoted names", "\" a \",\"b \"\"c\"\"\"\n1,2\n", "a number 1\nb \"c\" number 2\n"},
  });
}

TEST(DelimitedReader, TakesSeveralMarksForMissing) {
  ExpectContents({
      {"numbers", "a,b\n,1\nNA,2\nna,3\n.,4\nNaN,5\nnan,6\n\"NA\",7\n 8 ,8\n",
       "a number M M M M M M M 8\nb number 1 2 3 4 5 6 7 8\n"},
      {"texts", "a,b\nx,1\n,2\nNA,3\n.,4\nNaN,5\n", "a text 1 M M M M | 1=x\nb number 1 2 3 4 5\n"},
      {"dates", "a,b\nNA,1\n1970-01-02,2\n,3\n", "a date M 1 M\nb number 1 2 3\n"},
      {"nothing else: numbers", "a,b\n,1\nNA,2\n", "a number M M\nb number 1 2\n"},
      {"the missing code itself", "a\n-8.98846567431157953865e307\n1\n", "a number M 1\n"},
      {"last field empty", "a,b\n1,\n2,\n", "a number 1 2\nb number M M\n"},
      {"all fields empty", "a,b\n,\n1,2\n", "a number M 1\nb number M 2\n"},
  });
}

TEST(DelimitedReader, DecidesTheTypeByAllCells) {
  ExpectContents({
      {"text first", "a\nx\n1\n2\n", "a text 3 1 2 | 1=1 2=2 3=x\n"},
      {"text last", "a\n1\n2\nx\n", "a text 1 2 3 | 1=1 2=2 3=x\n"},
      {"text last, missing before", "a\nNA\n1\n.\nx\n", "a text M 1 M 2 | 1=1 2=x\n"},
      {"texts, not values, are distinct", "a\n1\n1.0\nx\n", "a text 1 2 3 | 1=1 2=1.0 3=x\n"},
      {"dates", "a\n1970-01-01\n2000-03-01\n1969-12-31\n", "a date 0 11017 -1\n"},
      {"dates and a number", "a\n1970-01-01\n5\n", "a text 1 2 | 1=1970-01-01 2=5\n"},
      {"a number and dates", "a\n5\n1970-01-01\n", "a text 2 1 | 1=1970-01-01 2=5\n"},
      {"dates and a text", "a\n1970-01-01\nsoon\n", "a text 1 2 | 1=1970-01-01 2=soon\n"},
      {"dates with times are texts", "a\n1970-01-01T10:00\n", "a text 1 | 1=1970-01-01T10:00\n"},
      {"identifiers that look like dates", "a\n0412-77-31\n1970-01-01\n", "a text 1 2 | 1=0412-77-31 2=1970-01-01\n"},
      {"identifiers that look like dates, a date first", "a\n1970-01-01\n0412-77-31\n",
       "a text 2 1 | 1=0412-77-31 2=1970-01-01\n"},
      {"several columns", "a,b,c\n1,x,2\n2,y,z\nw,x,3\n",
       "a text 1 2 3 | 1=1 2=2 3=w\nb text 1 2 1 | 1=x 2=y\nc text 1 3 2 | 1=2 2=3 3=z\n"},
  });
}

TEST(DelimitedReader, KeepsTextColumnsThatHoldACommaNumberOrAnInfinity) {
  ExpectContents({
      {"comma number first", "a;b\n1,5;1\nx;2\n", "a text 1 2 | 1=1,5 2=x\nb number 1 2\n"},
      {"comma number after a number", "a;b\n2;1\n1,5;2\nx;3\n", "a text 2 1 3 | 1=1,5 2=2 3=x\nb number 1 2 3\n"},
      {"comma number among texts", "a;b\nx;1\n1,5;2\n", "a text 2 1 | 1=1,5 2=x\nb number 1 2\n"},
      {"out of range in identifiers", "a\n12e999\n12f999\n", "a text 1 2 | 1=12e999 2=12f999\n"},
      {"inf among texts", "a\ninf\nsup\n5\n", "a text 2 3 1 | 1=5 2=inf 3=sup\n"},
      {"no day of the calendar among texts", "a\n2023-02-30\nlater\n", "a text 1 2 | 1=2023-02-30 2=later\n"},
      {"no day of the calendar and a number", "a\n2023-02-30\n5\n", "a text 1 2 | 1=2023-02-30 2=5\n"},
  });
}

TEST(DelimitedReader, OrdersTextsByTheirBytes) {
  ExpectContents({
      {"upper before lower case, then letters beyond ASCII", "a\nb\n\xC3\xA4\nB\na\nZ\n10\n9\nb\n",
       "a text 6 7 3 5 4 1 2 6 | 1=10 2=9 3=B 4=Z 5=a 6=b 7=\xC3\xA4\n"},
  });
}

TEST(DelimitedReader, ReadsTheFileTwiceOnlyForTextsThatBeganOtherwise) {
  struct {
    const char* what;
    const char* text;
    int readings;
  } const cases[] = {
      {"numbers", "a,b\n1,2\n3,4\n", 1},
      {"dates and missing", "a,b\n,1970-01-01\n3,1970-01-01\n", 1},
      {"text from the first value on", "a,b\n,x\n3,4\n", 1},
      {"numbers, then text", "a,b\n1,2\n3,x\n", 2},
      {"two such columns", "a,b\n1,2\nx,x\n", 2},
      {"dates, then a number", "a\n1970-01-01\n5\n", 2},
  };
  for (const auto& c : cases) {
    TextSource source(c.text);
    ReadDelimited(source, "trial.csv", false, {});
    EXPECT_EQ(source.Rewinds(), c.readings) << c.what;
  }
}

TEST(DelimitedReader, DoesNotDependOnTheLocale) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  // Whichever of them this machine has; without any the test still covers the "C" locale.
  for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"}) {
    if (std::setlocale(LC_ALL, name) != nullptr) break;
  }
  EXPECT_EQ(Contents(ReadText("a;b\n1.5;x\n-2.25;y\n")), "a number 1.5 -2.25\nb text 1 2 | 1=x 2=y\n");
  std::setlocale(LC_ALL, before.c_str());
}

TEST(DelimitedReader, TakesTheGreatestNumberOfVariables) {
  std::string text = "v1";
  for (int i = 2; i <= kMaximumVariables; ++i) text.append(",v").append(std::to_string(i));
  text.append("\n1");
  for (int i = 2; i <= kMaximumVariables; ++i) text.append(",").append(std::to_string(i));
  const MemoryTable table = ReadText(text);
  EXPECT_EQ(table.VariableCount(), kMaximumVariables);
  EXPECT_EQ(table.Value(kMaximumVariables, 1), kMaximumVariables);
  EXPECT_EQ(table.FindVariable("v32767"), kMaximumVariables);
}

// Short lines at the head of a file let far more cases expect than there are. Room for those is no condition.
TEST(DelimitedReader, ReadsOnWhereThereIsNoRoomForTheCasesThatItsFirstLinesLetExpect) {
  constexpr int kShortLines = 20'000;
  constexpr int kLongLines = 1000;
  std::string text = "a\n";
  for (int line = 0; line < kShortLines; ++line) text += "1" + std::string(14, ' ') + "\n";
  for (int line = 0; line < kLongLines; ++line) text += "2" + std::string(8000, ' ') + "\n";
  const testing::LargeAllocationsFail limit(std::size_t{1} << 20);
  const MemoryTable table = ReadText(text);
  ASSERT_EQ(table.CaseCount(), kShortLines + kLongLines);
  EXPECT_EQ(table.Value(1, 1), 1.0);
  EXPECT_EQ(table.Value(1, kShortLines + kLongLines), 2.0);
}

}  // namespace
}  // namespace orv
