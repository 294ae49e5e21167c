// The same data give the same table, whatever form of file they come from.
#include <gtest/gtest.h>

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

TEST_F(SameTable, NumbersOfAllSizesSurviveAnOrvFileAndCsv) {
  MemoryTable table;
  TableVariable variable;
  variable.Name = "x";
  variable.Values = {0.1,         1.0 / 3.0, 1e300, -1e-300, 5e-324, 1.7976931348623157e308, -0.0, 123456789012345680.0,
                     kMissingCode};
  table.AddVariable(variable);
  for (const char* name : {"x.orv", "x.csv"}) {
    EXPECT_TRUE(WriteTable(table, Path(name)).empty());
    const MemoryTable read = ReadTable(Path(name));
    EXPECT_EQ(read.Variable(1).Values, variable.Values) << name;
  }
}

}  // namespace
}  // namespace orv
