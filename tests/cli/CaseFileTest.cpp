#include <gtest/gtest.h>

#include "cli/CaseFile.h"

namespace orv::testing {
namespace {

CaseFile Parse(const std::string& text) {
  return ParseCase(text, std::filesystem::path(ORV_SOURCE_DIR), "sample.case");
}

constexpr const char* kWholeCase =
    R"(# All there is.
# In two lines.
--- digits 9
--- folder out
--- folder 'locked up' read-only
--- file a.csv
time
5
--- file b.csv escaped
time\r
\x24
--- file veteran.csv from examples/veteran.csv
$ orvcox fit a.csv --time 'a b' "c \"d\"" > log.txt
--- stdin
x
--- exit 3
--- stdout any
--- stderr
orvcox: no
--- written out/r.json
{}
--- absent r.txt
$ orvcox --version
--- stdout escaped
orvcox\
--- stderr as before
)";

TEST(CaseFile, KeepsEverySection) {
  const CaseFile file = Parse(kWholeCase);
  EXPECT_EQ(file.Remarks, (std::vector<std::string>{"# All there is.", "# In two lines."}));
  EXPECT_EQ(file.Digits, 9);
  ASSERT_EQ(file.Folders.size(), 2U);
  EXPECT_EQ(file.Folders[0].Name, "out");
  EXPECT_FALSE(file.Folders[0].ReadOnly);
  EXPECT_EQ(file.Folders[1].Name, "locked up");
  EXPECT_TRUE(file.Folders[1].ReadOnly);
  ASSERT_EQ(file.Files.size(), 3U);
  EXPECT_EQ(file.Files[0].Name, "a.csv");
  EXPECT_EQ(file.Files[0].Content, "time\n5\n");
  EXPECT_EQ(file.Files[1].Content, "time\r\n$\n");
  EXPECT_EQ(file.Files[2].From, "examples/veteran.csv");
  EXPECT_EQ(file.Files[2].Content.substr(0, 3), "id,");
  ASSERT_EQ(file.Commands.size(), 2U);
  const CaseCommand& first = file.Commands[0];
  EXPECT_EQ(first.Arguments, (std::vector<std::string>{"fit", "a.csv", "--time", "a b", "c \"d\""}));
  EXPECT_EQ(first.StandardOutputTo, "log.txt");
  EXPECT_EQ(first.StandardInput.value().Content, "x\n");
  EXPECT_EQ(first.ExitCode, 3);
  EXPECT_EQ(first.StandardOutput.HowToCompare, ExpectedText::Rule::Any);
  EXPECT_EQ(first.StandardError.Content, "orvcox: no\n");
  ASSERT_EQ(first.Written.size(), 1U);
  EXPECT_EQ(first.Written[0].Name, "out/r.json");
  EXPECT_EQ(first.Written[0].Text.Content, "{}\n");
  EXPECT_EQ(first.Absent, std::vector<std::string>{"r.txt"});
  const CaseCommand& second = file.Commands[1];
  EXPECT_EQ(second.ExitCode, 0);
  EXPECT_EQ(second.StandardOutput.Content, "orvcox");
  EXPECT_EQ(second.StandardError.HowToCompare, ExpectedText::Rule::AsBefore);
}

TEST(CaseFile, IsWrittenAsItWasRead) {
  EXPECT_EQ(FormatCase(Parse(kWholeCase)), kWholeCase);
}

TEST(CaseFile, WithoutExpectationsExpectsSuccessAndSilence) {
  const CaseFile file = Parse("$ orvcox --version\n");
  EXPECT_EQ(file.Commands.at(0).ExitCode, 0);
  EXPECT_EQ(file.Commands[0].StandardOutput.HowToCompare, ExpectedText::Rule::Exact);
  EXPECT_EQ(file.Commands[0].StandardOutput.Content, "");
  EXPECT_EQ(file.Commands[0].StandardError.Content, "");
}

TEST(CaseFile, LinesOfDashesAreContent) {
  const CaseFile file = Parse("$ orvcox\n--- stdout\n---\n-----\n");
  EXPECT_EQ(file.Commands.at(0).StandardOutput.Content, "---\n-----\n");
}

TEST(CaseFile, MistakesAreToldWithTheirLine) {
  struct {
    const char* text;
    const char* message;
  } const cases[] = {
      {"# Nothing.\n", "sample.case, line 1: no command; one starts with \"$ orvcox\"."},
      {"Remark\n$ orvcox\n", "sample.case, line 1: a remark starts with #."},
      {"$ orvcox", "sample.case, line 1: the last line does not end in a line break."},
      {"$ othercox\n", "sample.case, line 1: a command starts with \"$ orvcox\"."},
      {"$ orvcox 'a\n", "sample.case, line 1: a quote is not closed."},
      {"$ orvcox\nstray\n", "sample.case, line 2: a section starts with \"--- \"."},
      {"$ orvcox\n--- exit two\n", "sample.case, line 2: a whole number is needed."},
      {"$ orvcox\n--- exit 2\nstray\n", "sample.case, line 2: nothing may stand below this line but another section."},
      {"$ orvcox\n--- output\n",
       "sample.case, line 2: below a command stand stdin, exit, stdout, stderr, written NAME, unpacked NAME and absent "
       "NAME."},
      {"--- exit 2\n$ orvcox\n", "sample.case, line 1: above the first command stand file, folder and digits."},
      {"--- file\n$ orvcox\n", "sample.case, line 1: a file needs a name."},
      {"--- file a from no/such/file\n$ orvcox\n", "sample.case, line 1: there is no file no/such/file."},
      {"--- file a quoted\n$ orvcox\n",
       "sample.case, line 1: an input is followed by nothing, by escaped, or by from FILE."},
      {"--- folder a writable\n$ orvcox\n", "sample.case, line 1: write: folder NAME [read-only]."},
      {"$ orvcox\n--- stdout roughly\n",
       "sample.case, line 2: an output is followed by nothing, by escaped, by any, or by as before."},
      {"$ orvcox\n--- stdout escaped\n\\q\n",
       "sample.case, line 2: a backslash stands before n, r, t, 0, x, \\ or the end of a line."},
  };
  for (const auto& c : cases) {
    try {
      Parse(c.text);
      ADD_FAILURE() << "accepted: " << c.text;
    } catch (const CaseFileError& error) {
      EXPECT_STREQ(error.what(), c.message) << c.text;
    }
  }
}

TEST(SplitCommand, SeparatesWordsAtBlanksOutsideQuotes) {
  struct {
    const char* command;
    std::vector<std::string> words;
  } const cases[] = {
      {"a  b ", {"a", "b"}},
      {"--effects 'age, sex'", {"--effects", "age, sex"}},
      {R"(--effects "age, \"body mass\"")", {"--effects", "age, \"body mass\""}},
      {R"(--codes='a="b",c')", {"--codes=a=\"b\",c"}},
      {R"("" '')", {"", ""}},
      {R"('a\b' "a\b")", {"a\\b", "a\\b"}},
      {"", {}},
  };
  for (const auto& c : cases) EXPECT_EQ(SplitCommand(c.command), c.words) << c.command;
}

}  // namespace
}  // namespace orv::testing
