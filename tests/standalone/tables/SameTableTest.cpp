// The same data give the same table, whatever form of file they come from.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/TemporaryFolder.h"
#include "standalone/tables/SampleFiles.h"
#include "standalone/tables/TableReaders.h"
#include "standalone/tables/TableWriters.h"
#include "standalone/tables/TextTables.h"

namespace orv {
namespace {

using testing::Contents;

class SameTable : public ::testing::Test {
 protected:
  std::string Path(const std::string& name) const { return m_folder.Path() / name; }

  const testing::TemporaryFolder m_folder;
  const MemoryTable m_table = testing::ReadText(testing::kSampleText);
};

TEST_F(SameTable, TheSampleHoldsEveryKindOfVariable) {
  EXPECT_EQ(Contents(m_table),
            "DAYS number 5 8 11 12 15 21 22 30 31\n"
            "DIED number 1 0 1 1 0 1 0 1 1\n"
            "AGE number 61 48 70 M 55 66 59 44 52\n"
            "DOSE number 1.5 -0.25 M 2.125 1024.5 0 3.5 -7 0.0625\n"
            "ARM text 1 4 1 M 2 4 1 3 4 | 1=drug 2=none 3=other 4=placebo\n"
            "ENTERED date 17955 18321 -1 18985 M 0 -5282 10957 10956\n");
}

TEST_F(SameTable, FromFilesOfOtherStatisticsPrograms) {
  for (const std::string& ending : testing::StatisticsEndings()) {
    const std::string path = Path("sample" + ending);
    testing::WriteStatisticsFile(m_table, path);
    const MemoryTable read = ReadTable(path);
    EXPECT_EQ(Contents(read), Contents(m_table)) << ending;
    EXPECT_EQ(read.Source(), path);
  }
}

TEST_F(SameTable, FromAnOrvFileAndFromCsv) {
  for (const char* ending : {".orv", ".csv", ".ORV", ".CSV"}) {
    const std::string path = Path(std::string("sample") + ending);
    EXPECT_TRUE(WriteTable(m_table, path).empty());
    EXPECT_EQ(Contents(ReadTable(path)), Contents(m_table)) << ending;
  }
}

TEST_F(SameTable, FromADatabaseByFileTableAndQuery) {
  const std::string path = Path("sample.db");
  testing::WriteForeignDatabase(m_table, path);
  for (const std::string& name : {path, "sqlite:" + path, "sqlite:" + path + "?table=study",
                                  "sqlite:" + path + "?query=SELECT%20*%20FROM study"}) {
    EXPECT_EQ(Contents(ReadTable(name)), Contents(m_table)) << name;
  }
}

// A table of one variable.
MemoryTable TableOf(const std::vector<double>& values) {
  TableVariable variable;
  variable.Name = "X";
  variable.Values = values;
  MemoryTable table;
  table.AddVariable(variable);
  return table;
}

// Numbers that need all the 53 bits of a double, of sizes that every form but .por keeps: the numbers of .xpt files go
// from 5.4e-79 to 7.2e75.
const std::vector<double> kNumbersWithAllDigits = {
    0.1,        -1.0 / 3.0,      2.0 / 3.0,           123456.789012345, 3.141592653589793, 1e-5,
    1e23 / 7.0, 1.0 + 0x1.0p-52, 0x1.fffffffffffffp9, 1e70 / 3.0,       1e-70 / 3.0,       -9007199254740991.0};

TEST_F(SameTable, NumbersKeepAllDigits) {
  const MemoryTable table = TableOf(kNumbersWithAllDigits);
  for (const std::string& ending : testing::StatisticsEndings()) {
    if (ending == ".por") continue;
    testing::WriteStatisticsFile(table, Path("x" + ending));
    EXPECT_EQ(ReadTable(Path("x" + ending)).Variable(1).Values, kNumbersWithAllDigits) << ending;
  }
  for (const char* ending : {".orv", ".csv"}) {
    WriteTable(table, Path(std::string("x") + ending));
    EXPECT_EQ(ReadTable(Path(std::string("x") + ending)).Variable(1).Values, kNumbersWithAllDigits) << ending;
  }
  testing::WriteForeignDatabase(table, Path("x.db"));
  EXPECT_EQ(ReadTable(Path("x.db")).Variable(1).Values, kNumbersWithAllDigits);
}

// Numbers stand there as texts in base 30, and are put together digit by digit.
TEST_F(SameTable, PorFilesKeepAllDigitsOfNumbersOfUsualSize) {
  const std::vector<double> exact = {0.1,        1.0 / 3.0,        2.0 / 3.0,         10.1,       1e2 / 7.0,
                                     -1e2 / 3.0, 123456.789012345, 314159.2653589793, 1e12 / 7.0, 999999999999999.9};
  testing::WriteStatisticsFile(TableOf(exact), Path("exact.por"));
  EXPECT_EQ(ReadTable(Path("exact.por")).Variable(1).Values, exact);

  const std::vector<double> near = {1e-5, 1e-5 / 7.0, 0.07, 1e-12 / 3.0, 1e-25 / 3.0, 1e17 / 7.0};
  testing::WriteStatisticsFile(TableOf(near), Path("near.por"));
  const MemoryTable read = ReadTable(Path("near.por"));
  for (std::size_t k = 0; k < near.size(); ++k) {
    EXPECT_NEAR(read.Value(1, static_cast<int>(k) + 1) / near[k], 1.0, 2e-15) << near[k];
  }
}

TEST_F(SameTable, NumbersOfAllSizesSurviveAnOrvFileAndCsv) {
  const std::vector<double> values = {
      0.1, 1.0 / 3.0, 1e300, -1e-300, 5e-324, 1.7976931348623157e308, -0.0, 123456789012345680.0, kMissingCode};
  for (const char* name : {"x.orv", "x.csv"}) {
    EXPECT_TRUE(WriteTable(TableOf(values), Path(name)).empty());
    const MemoryTable read = ReadTable(Path(name));
    EXPECT_EQ(read.Variable(1).Values, values) << name;
  }
}

}  // namespace
}  // namespace orv
