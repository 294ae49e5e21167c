#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "cli/TemporaryFolder.h"
#include "standalone/documents/WriteFileAtomically.h"
#include "standalone/tables/SampleFiles.h"
#include "standalone/tables/TableReaders.h"
#include "standalone/tables/TableWriters.h"
#include "standalone/tables/TextTables.h"

namespace orv {
namespace {

using ::testing::ElementsAre;

class CsvFile : public ::testing::Test {
 protected:
  // The text of a table, and what the writer says about it.
  std::string TextOf(const MemoryTable& table) {
    m_notes = WriteTable(table, m_path);
    return testing::ContentOfFile(m_path);
  }
  static MemoryTable OneVariable(TableVariable variable) {
    MemoryTable table;
    table.AddVariable(std::move(variable));
    return table;
  }

  const testing::TemporaryFolder m_folder;
  const std::string m_path = m_folder.Path() / "table.csv";
  std::vector<std::string> m_notes;
};

TEST_F(CsvFile, ReadsBackAsTheSameTable) {
  const std::string_view texts[] = {
      testing::kSampleText,
      "x\n1\nNA\n2\n",
      "\"a,b\",\"c;d\",\"e\tf\",\"say \"\"x\"\"\",\"two\nlines\"\n1,\"1,5 \"\" "
      "x\",\"p;q\",\"cr\rlf\r\n.\",3\n2,b,c,d,4\n",
      "x,y\n0.1,1e300\n-1e-300,123456789012345678\n",
  };
  for (const std::string_view text : texts) {
    const MemoryTable table = testing::ReadText(text);
    TextOf(table);
    EXPECT_TRUE(m_notes.empty());
    EXPECT_EQ(testing::Contents(ReadTable(m_path)), testing::Contents(table)) << text;
  }
}

TEST_F(CsvFile, HasShortNumbersIsoDatesAndQuotesWhereNeeded) {
  const MemoryTable table =
      testing::ReadText("n,d,\"t,x\"\n0.10,2020-02-29,\"a,b\"\n1e2,NA,plain\n,1969-12-31,\"q\"\"q\"\n");
  EXPECT_EQ(TextOf(table), "n,d,\"t,x\"\n0.1,2020-02-29,\"a,b\"\n100,,plain\n,1969-12-31,\"q\"\"q\"\n");
}

TEST_F(CsvFile, LabelledNumbersAreWrittenAsTexts) {
  EXPECT_EQ(TextOf(OneVariable({"sex", VariableType::Number, 9.0, {{1.0, "male"}, {2.0, "female"}}, {2, 1, 9}})),
            "sex\nfemale\nmale\nNA\n");
  EXPECT_TRUE(m_notes.empty());
}

TEST_F(CsvFile, LabelsThatCannotStandForTheValuesAreLeftOutWithANote) {
  const struct {
    std::vector<ValueLabel> labels;
    const char* reason;
  } cases[] = {
      {{{1.0, "low"}}, "not every value has one"},
      {{{1.0, "low"}, {2.0, "low"}}, "two of them are the same"},
      {{{1.0, "low"}, {2.0, " low "}}, "two of them are the same"},
      {{{1.0, "low"}, {2.0, "NA"}}, "one would be read as a missing value"},
      {{{1.0, "low"}, {2.0, " "}}, "one would be read as a missing value"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(TextOf(OneVariable({"dose", VariableType::Number, kMissingCode, c.labels, {1, 2}})), "dose\n1\n2\n");
    EXPECT_THAT(m_notes,
                ElementsAre(std::string("dose is written as numbers, without its value labels: ") + c.reason + "."));
  }
}

TEST_F(CsvFile, WhatDatesLoseIsTold) {
  EXPECT_EQ(TextOf(OneVariable({"seen", VariableType::Date, kMissingCode, {}, {0.5, -0.5}})),
            "seen\n1970-01-01\n1969-12-31\n");
  EXPECT_THAT(m_notes, ElementsAre("seen is written without its times of day."));
  EXPECT_EQ(TextOf(OneVariable({"seen", VariableType::Date, kMissingCode, {}, {0, 1e7}})), "seen\n0\n10000000\n");
  EXPECT_THAT(m_notes, ElementsAre("seen is written as day numbers: a date is outside the years 0000 to 9999."));
}

TEST_F(CsvFile, NamesOfCasesAreLeftOutWithANote) {
  MemoryTable table = testing::ReadText("x\n1\n");
  table.SetCaseNames({"Ann"});
  EXPECT_EQ(TextOf(table), "x\n1\n");
  EXPECT_THAT(m_notes, ElementsAre("the names of the cases are left out."));
}

TEST_F(CsvFile, AFullDiskIsTold) {
  std::filesystem::create_symlink("/dev/full", m_path);
  std::string message;
  try {
    TextOf(testing::ReadText("x\n1\n"));
  } catch (const OutputError& error) {
    message = error.what();
  }
  EXPECT_EQ(message, m_path + ": cannot be written: the disk is full. Free some space or choose another disk.");
}

}  // namespace
}  // namespace orv
