// The runner itself: a wrong expectation has to be noticed, and told with what was found.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/CaseRun.h"

namespace orv::testing {
namespace {

using ::testing::HasSubstr;

CaseOutcome Play(const std::string& text) {
  return RunCase(ParseCase(text, std::filesystem::path(ORV_SOURCE_DIR), "sample.case"), ORV_PROGRAM);
}

constexpr const char* kTable = "--- file t.csv\na\n1\n";
constexpr const char* kDescription =
    "t.csv: 1 variable, 1 case\n"
    "=========================\n"
    "\n"
    "Variable  No.  Type    Valid  Missing  Values\n"
    "---------------------------------------------\n"
    "a           1  number      1        0       1\n";

TEST(CaseRun, PassesWhenAllIsAsExpected) {
  const std::string text = std::string(kTable) + "$ orvcox describe t.csv\n--- stdout\n" + kDescription +
                           "$ orvcox describe t.csv\n--- stdout as before\n--- stderr as before\n--- absent r.txt\n"
                           "$ orvcox describe t.csv > seen.txt\n--- written seen.txt\n" +
                           kDescription;
  const CaseOutcome outcome = Play(text);
  EXPECT_EQ(outcome.Problems, "");
  EXPECT_EQ(FormatCase(outcome.Actual), text);
}

TEST(CaseRun, NoticesEveryKindOfDifference) {
  struct {
    const char* what;
    const char* expectations;
    const char* problem;
  } const cases[] = {
      {"the exit code", "--- exit 2\n--- stdout any\n", "expected exit code 2, but got 0"},
      {"standard output", "--- stdout\nt.csv\n", "stdout, line 1:"},
      {"standard error", "--- stdout any\n--- stderr\norvcox: no\n", "stderr, line 1:"},
      {"unexpected standard output", "", "expected the end"},
      {"a file that was not written", "--- stdout any\n--- written r.txt\nx\n", "the file r.txt was not written"},
      {"a file that is no ZIP file", "--- stdout any\n--- unpacked t.csv\n== a\n", "t.csv, line 1:"},
      {"a file with another content", "--- stdout any\n--- written t.csv\nb\n", "t.csv, line 1:"},
      {"a file that is there", "--- stdout any\n--- absent t.csv\n", "the file t.csv is there"},
  };
  for (const auto& c : cases) {
    EXPECT_THAT(Play(std::string(kTable) + "$ orvcox describe t.csv\n" + c.expectations).Problems, HasSubstr(c.problem))
        << c.what;
  }
}

TEST(CaseRun, NoticesOutputThatIsNotAsBefore) {
  const std::string problems = Play(std::string(kTable) +
                                    "$ orvcox describe t.csv\n--- stdout any\n"
                                    "$ orvcox --version\n--- stdout as before\n")
                                   .Problems;
  EXPECT_THAT(problems, HasSubstr("$ orvcox --version\nstdout, line 1:"));
}

TEST(CaseRun, NoticesAnUnfinishedFile) {
  const std::string problems = Play("--- file .orvcox-unfinished-1\n$ orvcox --version\n--- stdout any\n").Problems;
  EXPECT_THAT(problems, HasSubstr("the unfinished file .orvcox-unfinished-1 was left behind"));
}

TEST(CaseRun, GivesBackWhatItFound) {
  const CaseOutcome outcome = Play(std::string(kTable) + "$ orvcox describe t.csv\n--- exit 1\n--- stdout\nwrong\n");
  EXPECT_EQ(FormatCase(outcome.Actual), std::string(kTable) + "$ orvcox describe t.csv\n--- stdout\n" + kDescription);
}

TEST(CaseRun, FeedsStandardInput) {
  EXPECT_EQ(
      Play("$ orvcox describe -\n--- stdin\na\n--- exit 3\n--- stderr\n"
           "orvcox: standard input: no cases follow line 1, which names 1 variable (a). Expected one line a case.\n")
          .Problems,
      "");
}

TEST(CaseRun, ReadOnlyFoldersAreReadOnlyForTheSuperuserToo) {
  const std::string write = "$ orvcox fit t.csv --time time --status status --output locked/r.txt --quiet\n";
  EXPECT_EQ(Play("--- folder locked read-only\n--- file t.csv\ntime,status\n5,1\n6,0\n" + write +
                 "--- exit 3\n--- stderr any\n--- absent locked/r.txt\n")
                .Problems,
            "");
}

}  // namespace
}  // namespace orv::testing
