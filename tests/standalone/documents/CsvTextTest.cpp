#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

#include "AwkwardDocuments.h"
#include "standalone/documents/CsvText.h"

namespace orv {
namespace {

std::string Field(std::string_view text) {
  CsvText csv;
  csv.Text(text);
  return csv.Take();
}

TEST(CsvText, QuotesWhatWouldEndAField) {
  EXPECT_EQ(Field("plain text; 'x'"), "plain text; 'x'");
  EXPECT_EQ(Field("a,b"), "\"a,b\"");
  EXPECT_EQ(Field("say \"x\""), "\"say \"\"x\"\"\"");
  EXPECT_EQ(Field("two\nlines"), "\"two\nlines\"");
  EXPECT_EQ(Field("a\rb"), "\"a\rb\"");
  EXPECT_EQ(Field(""), "");
  EXPECT_EQ(Field(Emoji + Hebrew + LongLabel), Emoji + Hebrew + LongLabel);
  EXPECT_EQ(Field(std::string("\0\xFF", 2)), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(CsvText, WritesNumbersThatReadBackToTheSameBits) {
  for (const double number : {0.1 + 0.2, 1.0 / 3, -5e-324, 1.7976931348623157e308, 123456789012345678.0, -0.0}) {
    CsvText csv;
    csv.Number(number);
    const std::string text = csv.Take();
    const double back = std::strtod(text.c_str(), nullptr);
    EXPECT_EQ(back, number) << text;
    EXPECT_EQ(std::signbit(back), std::signbit(number)) << text;
  }
}

TEST(CsvText, SeparatesFieldsAndRecords) {
  CsvText csv;
  csv.Text("a");
  csv.Number(NoNumber);
  csv.Number(-std::numeric_limits<double>::infinity());
  csv.EndRecord();
  csv.Number(2);
  csv.Text("");
  csv.EndRecord();
  EXPECT_EQ(csv.Take(), "a,,-inf\n2,\n");
}

}  // namespace
}  // namespace orv
