#include <gtest/gtest.h>

#include "cli/CaseFile.h"

namespace orv::testing {
namespace {

using namespace std::string_literals;

TEST(CaseEscapes, StandForBytes) {
  struct {
    const char* what;
    std::string text;
    std::string bytes;
  } const cases[] = {
      {"no escapes", "5,1\n6,0\n", "5,1\n6,0\n"},
      {"line breaks of another system", "5,1\\r\n6,0\\r\n", "5,1\r\n6,0\r\n"},
      {"no final line break", "5,1\n6,0\\\n", "5,1\n6,0"},
      {"a zero byte", "5,\\01\n", "5,\0001\n"s},
      {"any byte", "\\xEF\\xBB\\xBFtime\n", "\xEF\xBB\xBFtime\n"},
      {"small hexadecimal digits", "\\xef\n", "\xEF\n"},
      {"a backslash", "a\\\\b\n", "a\\b\n"},
      {"a tab and a line break", "a\\tb\\nc\n", "a\tb\nc\n"},
      {"nothing", "", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Unescape(c.text), c.bytes) << c.what;
}

TEST(CaseEscapes, UnknownOnesAreRefused) {
  for (const std::string text : {"\\q\n", "\\x1\n", "\\xG0\n", "\\x", "end\\"}) {
    EXPECT_THROW(Unescape(text), CaseFileError) << text;
  }
}

TEST(CaseEscapes, AreWrittenOnlyWhereNeeded) {
  struct {
    const char* what;
    std::string bytes;
    std::string text;
  } const cases[] = {
      {"plain lines with letters of other languages", "K\xC3\xB6ln\n", "K\xC3\xB6ln\n"},
      {"another encoding", "K\xF6ln\n", "K\\xF6ln\n"},
      {"a cut character", "K\xC3\n", "K\\xC3\n"},
      {"a byte-order mark", "\xEF\xBB\xBFtime\n", "\\xEF\\xBB\\xBFtime\n"},
      {"a bell", "\a\n", "\\x07\n"},
      {"a line that looks like a section", "--- exit 2\n", "\\x2D-- exit 2\n"},
      {"a line that looks like a command", "a\n$ orvcox\n", "a\n\\x24 orvcox\n"},
      {"no final line break", "a", "a\\\n"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Escape(c.bytes), c.text) << c.what;
    EXPECT_EQ(Unescape(c.text), c.bytes) << c.what;
  }
}

TEST(CaseEscapes, AnyByteComesBack) {
  std::string bytes;
  for (int high = 0; high < 256; ++high) {
    for (int low = 0; low < 256; low += 5) {
      bytes += static_cast<char>(high);
      bytes += static_cast<char>(low);
    }
  }
  EXPECT_EQ(Unescape(Escape(bytes)), bytes);
}

TEST(CaseEscapes, PlainTextNeedsNone) {
  EXPECT_TRUE(IsPlainText(""));
  EXPECT_TRUE(IsPlainText("time,status\n\t5,1\n"));
  EXPECT_FALSE(IsPlainText("no line break"));
  EXPECT_FALSE(IsPlainText("a\r\n"));
  EXPECT_FALSE(IsPlainText("K\xF6ln\n"));
}

}  // namespace
}  // namespace orv::testing
