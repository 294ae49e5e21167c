// The same data give the same results to the byte, whatever form of file they come from.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/RunningProgram.h"
#include "cli/TemporaryFolder.h"
#include "standalone/tables/SampleFiles.h"
#include "standalone/tables/TableWriters.h"
#include "standalone/tables/TextTables.h"

namespace orv::testing {
namespace {

constexpr std::chrono::seconds kPatience{120};

class TableForms : public ::testing::Test {
 protected:
  struct Outcome {
    int ExitCode = -1;
    std::string Output;
    std::string Messages;
  };

  std::string Path(const std::string& name) const { return m_folder.Path() / name; }

  Outcome Run(const std::vector<std::string>& arguments) const {
    const auto create = [](const std::string& path) {
      return open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    };
    const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int output = create(Path("stdout"));
    const int messages = create(Path("stderr"));
    Outcome outcome;
    {
      RunningProgram run({ORV_PROGRAM, arguments, m_folder.Path(), input, output, messages});
      EXPECT_TRUE(run.WaitFor(kPatience));
      outcome.ExitCode = run.ExitCode();
    }
    for (const int file : {input, output, messages}) close(file);
    outcome.Output = ContentOfFile(Path("stdout"));
    outcome.Messages = ContentOfFile(Path("stderr"));
    return outcome;
  }

  Outcome Fit(const std::string& table) const {
    return Run({"fit", table, "--dates", "ENTERED", "LAST", "--status", "DIED", "--covariates", "AGE,DOSE", "--factors",
                "ARM", "--show", "all", "--format", "json"});
  }

  const TemporaryFolder m_folder;
};

// All 17 digits that a double can need.
std::string AllDigits(double number) {
  char digits[40];
  std::snprintf(digits, sizeof digits, "%.17g", number);
  return digits;
}

// Forty cases with dates, texts and missing values, by fixed arithmetic. The numbers need all their digits, so that a
// form that lost one would show, and are of a size that the form of .por files has room for.
std::string StudyText() {
  std::string text = "ENTERED,LAST,DIED,AGE,DOSE,ARM\n";
  const char* const arms[] = {"drug", "placebo", "none"};
  for (int i = 0; i < 40; ++i) {
    const auto two = [](int number) { return (number < 10 ? "0" : "") + std::to_string(number); };
    text += "2019-" + two(1 + i % 12) + "-" + two(1 + i * 7 % 28) + ",2020-" + two(1 + i * 5 % 12) + "-" +
            two(1 + i % 28) + ",";
    text += std::to_string(i % 3 == 0 ? 0 : 1) + "," + (i == 17 ? "" : AllDigits(40.1 + i * 11 % 37)) + ",";
    text += AllDigits((70 + i * 13 % 8 + i % 4 * 0.25) / 7.0) + "," + (i == 23 ? "" : arms[i % 3]) + "\n";
  }
  return text;
}

TEST_F(TableForms, GiveTheSameResultsToTheByte) {
  const std::string text = StudyText();
  const MemoryTable table = ReadText(text);
  WriteContent(Path("study.csv"), text);
  WriteTable(table, Path("study.orv"));
  WriteForeignDatabase(table, Path("study.db"));
  std::vector<std::string> names = {"study.orv", "study.db", "sqlite:study.db?table=study",
                                    "sqlite:study.db?query=SELECT * FROM study"};
  for (const std::string& ending : StatisticsEndings()) {
    WriteStatisticsFile(table, Path("study" + ending));
    names.push_back("study" + ending);
  }
  const Outcome expected = Fit("study.csv");
  ASSERT_EQ(expected.ExitCode, 0) << expected.Messages;
  ASSERT_NE(expected.Output.find("\"converged\": true"), std::string::npos) << expected.Output;
  for (const std::string& name : names) {
    const Outcome outcome = Fit(name);
    EXPECT_EQ(outcome.ExitCode, 0) << name;
    EXPECT_EQ(outcome.Output, expected.Output) << name;
    EXPECT_EQ(outcome.Messages, expected.Messages) << name;
  }
}

TEST_F(TableForms, ConvertKeepsTheResults) {
  WriteStatisticsFile(ReadText(StudyText()), Path("study.sav"));
  const Outcome expected = Fit("study.sav");
  ASSERT_EQ(expected.ExitCode, 0) << expected.Messages;
  for (const char* name : {"copy.orv", "copy.csv"}) {
    const Outcome converted = Run({"convert", "study.sav", name});
    EXPECT_EQ(converted.ExitCode, 0);
    EXPECT_EQ(converted.Messages, "");
    EXPECT_EQ(Fit(name).Output, expected.Output) << name;
  }
}

TEST_F(TableForms, DescribeShowsLabels) {
  MemoryTable table;
  table.AddVariable(
      {"arm", VariableType::Number, kMissingCode, {{1.0, "drug"}, {2.0, "none"}}, {2, 1, 2, 1}, "Arm, as drawn", {}});
  table.AddVariable({"x", VariableType::Number, kMissingCode, {}, {0.5, 1.5, 2.5, kMissingCode}, {}, {}});
  WriteTable(table, Path("labels.orv"));
  EXPECT_EQ(Run({"describe", "labels.orv"}).Output,
            "labels.orv: 2 variables, 4 cases\n"
            "================================\n"
            "Hints are guesses from the values alone.\n"
            "\n"
            "Variable  No.  Type    Valid  Missing  Values              Hint\n"
            "----------------------------------------------------------------------------\n"
            "arm         1  number      4        0  1 to 2: drug, none  status or factor?\n"
            "x           2  number      3        1  0.5, 1.5, 2.5       time?\n"
            "\n"
            "Variable  Label\n"
            "-----------------------\n"
            "arm       Arm, as drawn\n"
            "x\n");
}

TEST_F(TableForms, DamagedFilesEndWithAMessageAndExitCode3) {
  const MemoryTable table = ReadText(StudyText());
  std::vector<std::string> endings = StatisticsEndings();
  for (const std::string& ending : endings) WriteStatisticsFile(table, Path("study" + ending));
  WriteTable(table, Path("study.orv"));
  endings.emplace_back(".orv");
  for (const std::string& ending : endings) {
    const std::string content = ContentOfFile(Path("study" + ending));
    WriteContent(Path("half" + ending), std::string_view(content).substr(0, content.size() / 2 + 1));
    const Outcome outcome = Fit("half" + ending);
    EXPECT_EQ(outcome.ExitCode, 3) << ending;
    EXPECT_EQ(outcome.Output, "") << ending;
    EXPECT_TRUE(outcome.Messages.starts_with("orvcox: half" + ending + ": ")) << outcome.Messages;
  }
}

}  // namespace
}  // namespace orv::testing
