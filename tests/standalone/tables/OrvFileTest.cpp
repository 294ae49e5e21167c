// .orv files: what they keep, what they ignore, and what is said about those that cannot be read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <stdexcept>

#include "cli/TemporaryFolder.h"
#include "standalone/documents/WriteFileAtomically.h"
#include "standalone/tables/SampleFiles.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableReaders.h"
#include "standalone/tables/TableWriters.h"
#include "standalone/tables/TextTables.h"

namespace orv {
namespace {

using testing::Contents;
using ::testing::HasSubstr;
using testing::RefusalOf;
using testing::RunSql;
using testing::SqlValue;

class OrvFile : public ::testing::Test {
 protected:
  std::string Path(const std::string& name) const { return m_folder.Path() / name; }
  std::string WriteSample(const std::string& name = "sample.orv") const {
    WriteTable(testing::ReadText(testing::kSampleText), Path(name));
    return Path(name);
  }
  // The refusal of the sample after some statements on it, without the name of the file.
  std::string RefusalAfter(const std::string& statements) const {
    const std::string path = WriteSample();
    RunSql(path, statements);
    const std::string refusal = RefusalOf(path);
    return refusal.starts_with(path) ? refusal.substr(path.size()) : refusal;
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder.Path()))
      names.push_back(entry.path().filename().string());
    return names;
  }

  const testing::TemporaryFolder m_folder;
};

TEST_F(OrvFile, KeepsAllThatATableHolds) {
  MemoryTable table("memory");
  table.AddVariable(
      {"score", VariableType::Number, 99.0, {{-1.0, "low"}, {2.5, "high"}}, {2.5, 99.0, 7.0}, "Test score", "F8.2"});
  table.AddVariable({"say \"x\"", VariableType::Date, kMissingCode, {}, {1.5, kMissingCode, -3.0}, "", "DATE9."});
  table.SetCaseNames({"Ann", "", "M\xC3\xBCller"});
  WriteTable(table, Path("all.orv"));
  const MemoryTable read = ReadTable(Path("all.orv"));
  EXPECT_EQ(Contents(read), "score number 2.5 M 7 | -1=low 2.5=high\nsay \"x\" date 1.5 M -3\n");
  EXPECT_EQ(read.Variable(1).MissingCode, 99.0);
  EXPECT_EQ(read.Variable(1).Label, "Test score");
  EXPECT_EQ(read.Variable(1).Format, "F8.2");
  EXPECT_EQ(read.Variable(2).MissingCode, kMissingCode);
  EXPECT_EQ(read.CaseName(1), "Ann");
  EXPECT_EQ(read.CaseName(2), "");
  EXPECT_EQ(read.CaseName(3), "M\xC3\xBCller");
  EXPECT_FALSE(ReadTable(WriteSample()).HasCaseNames());
}

TEST_F(OrvFile, APersonCanReadItBySql) {
  const std::string path = WriteSample();
  EXPECT_EQ(SqlValue(path, "PRAGMA application_id"), "1332901443");
  EXPECT_EQ(SqlValue(path, "PRAGMA user_version"), "1");
  EXPECT_EQ(SqlValue(path, "SELECT group_concat(name || ' ' || type) FROM variables"),
            "DAYS number,DIED number,AGE number,DOSE number,ARM text,ENTERED date");
  EXPECT_EQ(SqlValue(path, "SELECT DOSE FROM cases WHERE case_number = 2"), "-0.25");
  EXPECT_EQ(SqlValue(path, "SELECT DOSE FROM cases WHERE case_number = 3"), "NULL");
  EXPECT_EQ(
      SqlValue(path, "SELECT text FROM cases JOIN value_labels ON variable = 5 AND code = ARM WHERE case_number = 9"),
      "placebo");
  EXPECT_EQ(SqlValue(path, "SELECT date('1970-01-01', ENTERED || ' days') FROM cases WHERE case_number = 2"),
            "2020-02-29");
}

TEST_F(OrvFile, WritingTwiceGivesTheSameBytes) {
  EXPECT_EQ(testing::ContentOfFile(WriteSample("a.orv")), testing::ContentOfFile(WriteSample("b.orv")));
}

TEST_F(OrvFile, WhatIsNotKnownIsIgnored) {
  const std::string path = WriteSample();
  const std::string before = Contents(ReadTable(path));
  RunSql(
      path,
      "ALTER TABLE variables ADD COLUMN colour TEXT; ALTER TABLE value_labels ADD COLUMN shade; ALTER TABLE cases ADD "
      "COLUMN extra; UPDATE cases SET extra = 'text'; CREATE TABLE notes (text); INSERT INTO notes VALUES ('hello')");
  EXPECT_EQ(Contents(ReadTable(path)), before);
}

TEST_F(OrvFile, OrderIsThatOfTheNumbers) {
  const std::string path = WriteSample();
  RunSql(path,
         "UPDATE variables SET number = 70 WHERE number = 1; UPDATE cases SET case_number = 100 WHERE case_number = 1");
  const MemoryTable table = ReadTable(path);
  EXPECT_EQ(table.Variable(6).Name, "DAYS");
  EXPECT_EQ(table.Variable(6).Values, (std::vector<double>{8, 11, 12, 15, 21, 22, 30, 31, 5}));
}

TEST_F(OrvFile, NamesThatSqlTakesForTheSameGetColumnsOfTheirOwn) {
  const std::string text = "age,AGE,age_2,case_number,Case_Name,rowid,\"a\"\"b\"\n1,2,3,4,5,6,7\n8,9,10,11,12,13,14\n";
  const MemoryTable table = testing::ReadText(text);
  WriteTable(table, Path("names.orv"));
  EXPECT_EQ(Contents(ReadTable(Path("names.orv"))), Contents(table));
}

TEST_F(OrvFile, MoreVariablesThanATableOfSqliteHasColumns) {
  MemoryTable table;
  constexpr int kVariables = 4321;
  for (int v = 1; v <= kVariables; ++v) {
    TableVariable variable;
    variable.Name = "v" + std::to_string(v);
    variable.Values = {v + 0.5, v % 7 == 0 ? kMissingCode : -v, 3.0};
    table.AddVariable(std::move(variable));
  }
  table.SetCaseNames({"a", "b", "c"});
  WriteTable(table, Path("wide.orv"));
  const MemoryTable read = ReadTable(Path("wide.orv"));
  EXPECT_EQ(Contents(read), Contents(table));
  EXPECT_EQ(read.CaseName(3), "c");
  RunSql(Path("wide.orv"), "DELETE FROM cases_3 WHERE case_number = 2");
  EXPECT_THAT(RefusalOf(Path("wide.orv")), HasSubstr("hold different cases"));
  RunSql(Path("wide.orv"), "DELETE FROM cases_2 WHERE case_number = 3");
  EXPECT_THAT(RefusalOf(Path("wide.orv")), HasSubstr("differ in length"));
}

TEST_F(OrvFile, NewerVersionsAreRefused) {
  EXPECT_EQ(
      RefusalAfter("PRAGMA user_version = 2"),
      ": version 2 of the .orv form, but this program reads up to version 1. Install a newer one, or have the table "
      "saved as CSV.");
}

TEST_F(OrvFile, OtherDatabasesAreRefused) {
  const std::string path = Path("other.orv");
  RunSql(path, "CREATE TABLE t (x)");
  EXPECT_EQ(RefusalOf(path),
            path + ": an SQLite database, but no table of Orvanta Cox.\n  Read one of its tables with \"sqlite:" +
                path + "?table=NAME\".");
}

TEST_F(OrvFile, FaultsAreNamed) {
  const struct {
    const char* statements;
    const char* refusal;
  } cases[] = {
      {"PRAGMA user_version = 0", "damaged: its version is not set"},
      {"DELETE FROM variables", "no variables in it"},
      {"DELETE FROM cases", "variables, but no case"},
      {"DROP TABLE cases", "damaged: the table \"cases\" is not there"},
      {"DROP TABLE value_labels", "no such table: value_labels"},
      {"DROP TABLE cases; CREATE VIEW cases AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
       "SELECT i AS case_number FROM n",
       "damaged: the table \"cases\" is not there"},
      {"UPDATE variables SET type = 'blob' WHERE number = 2",
       "the type of variable 2 is none of number, text and date"},
      {"UPDATE variables SET missing_code = 9e999 WHERE number = 2", "the missing code of variable 2 is infinite"},
      {"UPDATE variables SET name = ' ' WHERE number = 2", "variable 2 has no name"},
      {"UPDATE variables SET name = 'AGE ' WHERE number = 2", "variables 2 and 3 have the same name, \"AGE\""},
      {"UPDATE variables SET name = CAST(x'FF' AS TEXT) WHERE number = 2", "the name of variable 2 is no UTF-8 text"},
      {"UPDATE variables SET label = CAST(x'FF' AS TEXT) WHERE number = 2", "a label is no UTF-8 text"},
      {"UPDATE variables SET case_column = 'AGE' WHERE number = 2", "variable 3 has the same column as another"},
      {"UPDATE variables SET case_column = 'none' WHERE number = 2", "no such column: t.none"},
      {"UPDATE cases SET AGE = 'old' WHERE case_number = 4", ", case 4, variable \"AGE\": no finite number"},
      {"UPDATE cases SET AGE = 9e999 WHERE case_number = 4", ", case 4, variable \"AGE\": no finite number"},
      {"UPDATE cases SET AGE = x'00' WHERE case_number = 4", ", case 4, variable \"AGE\": no finite number"},
      {"UPDATE cases SET ARM = 5 WHERE case_number = 4", "the text variable \"ARM\" holds a code without a text"},
      {"UPDATE cases SET ARM = 1.5 WHERE case_number = 4", "the text variable \"ARM\" holds a code without a text"},
      {"UPDATE value_labels SET text = 'zebra' WHERE code = 1", "not numbered 1, 2, ... in the sorted order"},
      {"UPDATE value_labels SET code = 9 WHERE code = 4", "not numbered 1, 2, ... in the sorted order"},
      {"INSERT INTO value_labels VALUES (1, 'x', 'y')", "a code of \"DAYS\" is no number"},
      {"UPDATE value_labels SET text = CAST(x'FF' AS TEXT)", "a value label is no UTF-8 text"},
  };
  for (const auto& c : cases) EXPECT_THAT(RefusalAfter(c.statements), HasSubstr(c.refusal)) << c.statements;
}

TEST_F(OrvFile, AFailureLeavesTheEarlierFileAsItWas) {
  const std::string path = WriteSample();
  const std::string before = testing::ContentOfFile(path);
  MemoryTable table;
  TableVariable variable;
  variable.Name = "x";
  variable.Values.assign(100000, 0.5);
  table.AddVariable(variable);

  // The disk refuses to go on.
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  const rlimit small{65536, limit.rlim_max};
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  std::string message;
  try {
    WriteTable(table, path);
  } catch (const OutputError& error) {
    message = error.what();
  }
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(message, path + ": cannot be written: it would exceed the largest size that a file may have here.");
  EXPECT_EQ(testing::ContentOfFile(path), before);

  // The user stops.
  EXPECT_THROW(WriteTable(table, path, [] { throw std::runtime_error("stop"); }), std::runtime_error);
  EXPECT_EQ(testing::ContentOfFile(path), before);
  EXPECT_THAT(Names(), ::testing::ElementsAre("sample.orv"));
}

TEST_F(OrvFile, IsNotWrittenIntoADevice) {
  std::filesystem::create_symlink("/dev/null", Path("null.orv"));
  std::string message;
  try {
    WriteTable(testing::ReadText(testing::kSampleText), Path("null.orv"));
  } catch (const OutputError& error) {
    message = error.what();
  }
  EXPECT_EQ(message,
            Path("null.orv") + ": cannot be written: a pipe or a device. Name an ordinary file, or write .csv.");
}

TEST_F(OrvFile, ProgressReachesItsEndAndReadingCanBeCancelled) {
  const std::string path = WriteSample();
  std::vector<std::pair<std::uint64_t, std::uint64_t>> reports;
  TableReadOptions options;
  options.Progress = [&reports](std::uint64_t done, std::uint64_t total) { reports.emplace_back(done, total); };
  ReadTable(path, options);
  ASSERT_FALSE(reports.empty());
  EXPECT_EQ(reports.back(), (std::pair<std::uint64_t, std::uint64_t>(54, 54)));
  options.Cancelled = [] { return true; };
  EXPECT_THROW(ReadTable(path, options), TableReadCancelled);
}

}  // namespace
}  // namespace orv
