// Every message of the reader of delimited text, to the letter, and the line numbers in them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "standalone/tables/MemoryTable.h"
#include "standalone/tables/TextTables.h"

namespace orv {
namespace {

using namespace std::string_literals;
using testing::Refusal;
using testing::Visible;

struct MessageCase {
  const char* what;
  std::string text;
  std::string message;
};

void ExpectRefusals(const std::vector<MessageCase>& cases) {
  for (const MessageCase& c : cases) EXPECT_EQ(Refusal(c.text), c.message) << c.what << ": " << Visible(c.text);
}

TEST(DelimitedMessages, FileWithoutATable) {
  const std::string empty = "trial.csv: nothing in it. Expected a line that names the variables, then one line a case.";
  ExpectRefusals({
      {"no bytes", "", empty},
      {"blank lines", "\n \r\n\t\n\r", empty},
      {"byte-order mark alone", "\xEF\xBB\xBF", empty},
      {"header alone", "time,status",
       "trial.csv: no cases follow line 1, which names 2 variables (time, status). Expected one line a case."},
      {"header and blank lines", "\n\ntime\n\n",
       "trial.csv: no cases follow line 3, which names 1 variable (time). Expected one line a case."},
  });
}

TEST(DelimitedMessages, BytesThatAreNotText) {
  const std::string utf16 = "trial.csv: the text is in UTF-16. Save the file as CSV in UTF-8.";
  const std::string binary =
      ": a zero byte, so this is a binary file or text in UTF-16. Save the table as CSV in UTF-8.";
  const std::string notUtf8 = ": bytes that are not UTF-8. Save the file in UTF-8.";
  ExpectRefusals({
      {"UTF-16, little end first",
       "\xFF\xFE"
       "a\0,\0"s,
       utf16},
      {"UTF-16, big end first",
       "\xFE\xFF"
       "\0a\0,"s,
       utf16},
      {"UTF-16 without a mark", "a\0,\0b\0\n\0"s, "trial.csv, line 1" + binary},
      {"zero byte later", "a,b\n1,2\n\n3,\0\n"s, "trial.csv, line 4" + binary},
      {"zero byte in quotes after line breaks", "a\n\"x\ny\r\nz\0\"\n"s, "trial.csv, line 4" + binary},
      {"Latin-1", "a,b\nM\xFCller,1\n", "trial.csv, line 2" + notUtf8},
      {"Latin-1 at the end of a line", "a,b\n1,caf\xE9\n2,x\n", "trial.csv, line 2" + notUtf8},
      {"character cut by the end", "a\nx\xC3", "trial.csv, line 2" + notUtf8},
      {"the first of two faults", "a,b\n1\n\xFF,1\n",
       "trial.csv, line 2: 1 field, but line 1 names 2 (a, b).\n"
       "  The first field that is absent is \"b\". Leave the place of a missing value empty, but keep its comma."},
  });
}

TEST(DelimitedMessages, Names) {
  ExpectRefusals({
      {"duplicate", "age,sex,age\n1,2,3\n",
       "trial.csv, line 1: columns 1 and 3 have the same name, \"age\". Rename one of them."},
      {"duplicate but for blanks and quotes", "\n\nx, age ,\" age\"\n1,2,3\n",
       "trial.csv, line 3: columns 2 and 3 have the same name, \"age\". Rename one of them."},
      {"other case is another name", "age,Age\n1,2,3\n",
       "trial.csv, line 2: 3 fields, but line 1 names 2 (age, Age).\n"
       "  The first extra field is \"3\". If a value holds a comma, quote it: \"2, 3\"."},
      {"empty first", ",age\n1,2\n", "trial.csv, line 1: column 1 has no name. Name it, or leave the column out."},
      {"empty last", "age,sex,\n1,2,\n", "trial.csv, line 1: column 3 has no name. Name it, or leave the column out."},
      {"quoted empty", "age,\" \"\n1,2\n",
       "trial.csv, line 1: column 2 has no name. Name it, or leave the column out."},
      {"numbers only", "61,1,3.5\n62,2,4\n",
       "trial.csv, line 1: only numbers (61, 1, 3.5), but the first line must name the variables.\n"
       "  Put a line above it with 3 names."},
      {"one number", "5\n6\n",
       "trial.csv, line 1: only numbers (5), but the first line must name the variables.\n"
       "  Put a line above it with 1 name."},
      {"numbers but for one name", "5,x\n6,7\n", "(it reads)"},
  });
}

TEST(DelimitedMessages, ATabBeforeTheFirstNameIsAnEmptyName) {
  const std::string message = "trial.csv, line 2: column 1 has no name. Name it, or leave the column out.";
  EXPECT_EQ(Refusal("\n\tage\n1\t61\n", true), message);
  EXPECT_EQ(Refusal("\n\tage\n1\t61\n", false), message);
}

TEST(DelimitedMessages, TooManyVariables) {
  std::string header = "v";
  for (int i = 1; i <= kMaximumVariables; ++i) header += ",v" + std::to_string(i);
  EXPECT_EQ(Refusal(header + "\n1\n"),
            "trial.csv: more than 32767 variables. Leave out columns that the analysis does not need.");
}

TEST(DelimitedMessages, RaggedLines) {
  ExpectRefusals({
      {"too many", "age,sex,arm,time,status\n1,2,3,4,5\n1,2,3,4,late, moved\n",
       "trial.csv, line 3: 6 fields, but line 1 names 5 (age, sex, arm, time, status).\n"
       "  The first extra field is \"moved\". If a value holds a comma, quote it: \"late, moved\"."},
      {"two too many, semicolons", "a;b\n1;x;y;z\n",
       "trial.csv, line 2: 4 fields, but line 1 names 2 (a, b).\n"
       "  The first extra field is \"y\". If a value holds a semicolon, quote it: \"x; y\"."},
      {"too many, tabs", "a\tb\n1\tx\ty\n",
       "trial.csv, line 2: 3 fields, but line 1 names 2 (a, b).\n"
       "  The first extra field is \"y\". If a value holds a tab, quote it."},
      {"delimiter at the end", "a,b\n1,2,\n",
       "trial.csv, line 2: 3 fields, but line 1 names 2 (a, b).\n"
       "  The first extra field is \"\". If a value holds a comma, quote it."},
      {"too few", "a,b,c\n1\n",
       "trial.csv, line 2: 1 field, but line 1 names 3 (a, b, c).\n"
       "  The first field that is absent is \"b\". Leave the place of a missing value empty, but keep its comma."},
      {"too few, semicolons", "a;b;c\n1;2\n",
       "trial.csv, line 2: 2 fields, but line 1 names 3 (a, b, c).\n"
       "  The first field that is absent is \"c\". Leave the place of a missing value empty, but keep its semicolon."},
      {"many names", "a,b,c,d,e,f,g,h,i\n1\n",
       "trial.csv, line 2: 1 field, but line 1 names 9 (a, b, c, d, e, f, g, h, ...).\n"
       "  The first field that is absent is \"b\". Leave the place of a missing value empty, but keep its comma."},
      {"a long field",
       "a\n1,0123456789012345678901234567890123456\xE2\x82\xAC"
       "789\n",
       "trial.csv, line 2: 2 fields, but line 1 names 1 (a).\n"
       "  The first extra field is \"0123456789012345678901234567890123456\xE2\x82\xAC...\". If a value holds a comma, "
       "quote it: \"1, 0123456789012345678901234567890123456\xE2\x82\xAC...\"."},
      {"a field with a line break", "a\n1,\"x\ny\"\n",
       "trial.csv, line 2: 2 fields, but line 1 names 1 (a).\n"
       "  The first extra field is \"x y\". If a value holds a comma, quote it: \"1, x y\"."},
      {"last line without line end", "a,b\n1,2\n3",
       "trial.csv, line 3: 1 field, but line 1 names 2 (a, b).\n"
       "  The first field that is absent is \"b\". Leave the place of a missing value empty, but keep its comma."},
  });
}

TEST(DelimitedMessages, ALongExcerptIsCutBetweenCharacters) {
  // The euro sign covers bytes 39 to 41 and would be cut by the limit of 40.
  EXPECT_EQ(Refusal("a\n1,012345678901234567890123456789012345678\xE2\x82\xAC\n"),
            "trial.csv, line 2: 2 fields, but line 1 names 1 (a).\n"
            "  The first extra field is \"012345678901234567890123456789012345678...\". If a value holds a comma, "
            "quote it: \"1, 012345678901234567890123456789012345678...\".");
}

TEST(DelimitedMessages, Quotes) {
  const std::string notClosed =
      ": the quote that opens here is not closed.\n"
      "  End the value with a quote. A quote inside a value is written twice: \"5\"\" pipe\".";
  const std::string twice = "\n  A quote inside a value is written twice: \"5\"\" pipe\".";
  const std::string inside =
      ": a quote inside a value that does not begin with one.\n"
      "  Put the value in quotes and write the quote inside twice: \"5\"\" pipe\".";
  ExpectRefusals({
      {"unclosed", "a,b\n1,\"x\n2,y\n3,z\n", "trial.csv, line 2, column 2 (\"b\")" + notClosed},
      {"unclosed in the first column", "a,b\n\n1,2\n\"x,2\n\n", "trial.csv, line 4, column 1 (\"a\")" + notClosed},
      {"unclosed at the very end", "a,b\n1,\"", "trial.csv, line 2, column 2 (\"b\")" + notClosed},
      {"unclosed after a doubled quote", "a\n\"x\"\"", "trial.csv, line 2, column 1 (\"a\")" + notClosed},
      {"unclosed in the header", "a,\"b\n1,2\n", "trial.csv, line 1, column 2" + notClosed},
      {"unclosed after the last named column", "a\n1,\"b\n", "trial.csv, line 2, column 2" + notClosed},
      {"text after", "a,b\n\"x\" y,2\n",
       "trial.csv, line 2, column 1 (\"a\"): text between a closing quote and the next comma." + twice},
      {"text directly after, semicolon", "a;b\n1;\"x\"y\n",
       "trial.csv, line 2, column 2 (\"b\"): text between a closing quote and the next semicolon." + twice},
      {"second quoted text", "a,b\n\"x\" \"y\",2\n",
       "trial.csv, line 2, column 1 (\"a\"): text between a closing quote and the next comma." + twice},
      {"closed by the quote of a later line", "a,b\n\"x,1\n2,3\n\"y\",4\n",
       "trial.csv, line 4, column 1 (\"a\"): text between a closing quote and the next comma. "
       "The value begins on line 2." +
           twice},
      {"quote inside", "a,b\n5\" pipe,2\n", "trial.csv, line 2, column 1 (\"a\")" + inside},
      {"quote inside the header", "a,b\"c\n1,2\n", "trial.csv, line 1, column 2" + inside},
      {"a fault earlier in the line comes first", "a\n1,\"x\"y\n",
       "trial.csv, line 2, column 2: text between a closing quote and the next comma." + twice},
  });
}

TEST(DelimitedMessages, AQuoteLeftOpenIsFoundWithoutTheRestOfTheFile) {
  std::string text = "a,b\n1,\"x\n";
  while (text.size() < 3'000'000) text += "2,3\n";
  // Closed in the end, but no value is that long.
  text += "\"\n";
  EXPECT_EQ(Refusal(text),
            "trial.csv, line 2, column 2 (\"b\"): the quote that opens here is not closed.\n"
            "  End the value with a quote. A quote inside a value is written twice: \"5\"\" pipe\".");
}

TEST(DelimitedMessages, ValuesOfMoreThanAMillionCharacters) {
  EXPECT_EQ(Refusal("a,b\n1," + std::string(1'500'000, 'x') + "\n"),
            "trial.csv, line 2, column 2 (\"b\"): a value of more than a million characters. "
            "Check that this is a table, one line a case.");
  EXPECT_EQ(Refusal("a,b\n1," + std::string(900'000, 'x') + "\n"), "(it reads)");
}

TEST(DelimitedMessages, NumbersWithACommaInAColumnOfNumbers) {
  const std::string advice =
      " has a comma. Write numbers with a point as the decimal sign and without marks between thousands.";
  ExpectRefusals({
      {"semicolon", "age;dose\n61;2\n62;1,5\n", "trial.csv, line 3, column 2 (\"dose\"): the number 1,5" + advice},
      {"tab", "age\tdose\n61\t-1,5e3\n", "trial.csv, line 2, column 2 (\"dose\"): the number -1,5e3" + advice},
      {"quoted, among missing", "age,dose\n61,NA\n62,\"1,5\"\n",
       "trial.csv, line 3, column 2 (\"dose\"): the number 1,5" + advice},
      {"first cell", "a;b\n1,5;1\n2;2\n", "trial.csv, line 2, column 1 (\"a\"): the number 1,5" + advice},
      {"the first of its column", "a;b\n1,5;1\n2,5;2\n",
       "trial.csv, line 2, column 1 (\"a\"): the number 1,5" + advice},
      {"thousands", "a;b\n1.234,5;1\n2;2\n", "trial.csv, line 2, column 1 (\"a\"): the number 1.234,5" + advice},
      {"the first in the file", "a;b\n1;2\n1;2,5\n1,5;2\n",
       "trial.csv, line 3, column 2 (\"b\"): the number 2,5" + advice},
      {"the first in the line", "a;b\n1,5;2,5\n", "trial.csv, line 2, column 1 (\"a\"): the number 1,5" + advice},
  });
}

TEST(DelimitedMessages, NumbersThatNoDoubleHolds) {
  const std::string advice =
      " is out of range. Numbers reach from about 1e-308 to 1e308.\n"
      "  Correct it, or leave the place empty if the value is missing.";
  ExpectRefusals({
      {"too large", "a,b\n1,2\n1,1e999\n", "trial.csv, line 3, column 2 (\"b\"): the number 1e999" + advice},
      {"too large, negative", "a\n-1e999\n", "trial.csv, line 2, column 1 (\"a\"): the number -1e999" + advice},
      {"too small", "a\n1e-999\n1\n", "trial.csv, line 2, column 1 (\"a\"): the number 1e-999" + advice},
      {"infinite", "a,b\n1,2\nInf,1\n",
       "trial.csv, line 3, column 1 (\"a\"): Inf in a column of numbers. Write a finite number, or leave the place "
       "empty if the value is missing."},
  });
}

TEST(DelimitedMessages, DatesThatAreNoDay) {
  ExpectRefusals({
      {"after dates", "a,b\n2023-02-28,1\n2023-02-27,3\n2023-02-29,2\n",
       "trial.csv, line 4, column 1 (\"a\"): 2023-02-29 is not a day of the calendar. Correct it, or leave the place "
       "empty if the value is missing."},
      {"before dates", "a\n0000-00-00\n2023-02-28\n2023-03-01\n",
       "trial.csv, line 2, column 1 (\"a\"): 0000-00-00 is not a day of the calendar. Correct it, or leave the place "
       "empty if the value is missing."},
  });
}

TEST(DelimitedMessages, TooManyCases) {
  TableReadOptions options;
  options.MaximumCases = 2;
  EXPECT_EQ(Refusal("a\n1\n2\n", false, options), "(it reads)");
  EXPECT_EQ(Refusal("a\n1\n2\n3\n", false, options), "trial.csv: more than 2 cases. Split the file.");
}

// The line of a bad last cell after all kinds of lines before it.
TEST(DelimitedMessages, LinesAreCountedAsAnEditorCountsThem) {
  struct {
    const char* what;
    std::string before;
    int line;
  } const cases[] = {
      {"LF", "a,b\n1,2\n", 3},
      {"CRLF", "a,b\r\n1,2\r\n", 3},
      {"CR", "a,b\r1,2\r", 3},
      {"blank lines", "\n\na,b\n\n1,2\n \n\n", 8},
      {"blank CRLF lines", "a,b\r\n\r\n\r\n1,2\r\n\r\n", 6},
      {"LF after CR and a blank", "a,b\r \n1,2\n", 4},
      {"quoted line breaks", "a,b\n1,\"\n\n\"\n", 5},
      {"quoted CRLF", "a,b\r\n1,\"\r\n\r\n\"\r\n", 5},
      {"quoted CR", "a,b\r1,\"\r\r\"\r", 5},
      {"line breaks in a quoted name", "\"a\n\",\"\r\nb\"\n1,2\n", 5},
      {"quoted line break in the first field", "a,b\n\"\n\",2\n", 4},
  };
  for (const auto& c : cases) {
    const std::string place = "trial.csv, line " + std::to_string(c.line) + ", column 2 (\"b\"): the number 1e999";
    EXPECT_EQ(Refusal(c.before + "1,1e999").substr(0, place.size()), place) << c.what;
    // The same for a value that begins on that line and ends on a later one, and for a ragged record.
    EXPECT_EQ(Refusal(c.before + "1,\" \n\r\n1e999\"").substr(0, place.size()), place) << c.what;
    const std::string ragged = "trial.csv, line " + std::to_string(c.line) + ": 1 field";
    EXPECT_EQ(Refusal(c.before + "\"\n1\r\n\"").substr(0, ragged.size()), ragged) << c.what;
    EXPECT_EQ(Refusal(c.before + "1").substr(0, ragged.size()), ragged) << c.what;
    const std::string quote = "trial.csv, line " + std::to_string(c.line) + ", column 2 (\"b\"): the quote";
    EXPECT_EQ(Refusal(c.before + "1,\"\n\r\n").substr(0, quote.size()), quote) << c.what;
  }
}

}  // namespace
}  // namespace orv
