// Databases of other programs: what their values are read as, and what an address means.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/TemporaryFolder.h"
#include "standalone/tables/SampleFiles.h"
#include "standalone/tables/SqliteAddress.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableReaders.h"
#include "standalone/tables/TextTables.h"

namespace orv {
namespace {

using testing::Contents;
using ::testing::HasSubstr;
using testing::RefusalOf;
using testing::RunSql;

class SqliteFiles : public ::testing::Test {
 protected:
  std::string Path(const std::string& name = "study.db") const { return m_folder.Path() / name; }
  std::string Query(const std::string& sql) const { return "sqlite:" + Path() + "?query=" + sql; }

  const testing::TemporaryFolder m_folder;
};

TEST_F(SqliteFiles, ValuesAreReadByWhatTheyAre) {
  RunSql(Path(),
         "CREATE TABLE t (a, b, c, d, e, f); INSERT INTO t VALUES "
         "(1, 'x', '2020-02-29', '5', NULL, 1), (2.5, NULL, NULL, '1e3', NULL, 'late'), "
         "(-9223372036854775808, 'A', '1970-01-01', ' 7 ', '', 0.5)");
  EXPECT_EQ(Contents(ReadTable(Path())),
            "a number 1 2.5 -9223372036854775808\n"
            "b text 2 M 1 | 1=A 2=x\n"
            "c date 18321 M 0\n"
            "d number 5 1000 7\n"
            "e number M M M\n"
            "f text 2 3 1 | 1=0.5 2=1 3=late\n");
}

TEST_F(SqliteFiles, ColumnsOfTheirOwnTypeCanBeNamedAtWill) {
  RunSql(Path(), "CREATE TABLE t (\"days since\" REAL, died INTEGER); INSERT INTO t VALUES (3.0, 1), (4, 0)");
  EXPECT_EQ(Contents(ReadTable(Query("SELECT \"days since\" AS days, died, 2 * died FROM t -- all of them\n"))),
            "days number 3 4\ndied number 1 0\n2 * died number 2 0\n");
}

TEST_F(SqliteFiles, FaultsAreNamed) {
  RunSql(Path(), "CREATE TABLE t (x); INSERT INTO t VALUES (1), (2), (3)");
  const struct {
    const char* query;
    const char* refusal;
  } cases[] = {
      {"SELECT '1,5' AS x FROM t", ", row 1, column 1 (\"x\"): the number 1,5 has a comma"},
      {"SELECT 9e999 AS x FROM t", ", row 1, column 1 (\"x\"): inf in a column of numbers"},
      {"SELECT x, iif(x = 2, '2023-02-30', '2023-02-01') AS d FROM t", "column 2 (\"d\"): 2023-02-30 is not a day"},
      {"SELECT x'FF' AS x FROM t", ", row 1, variable \"x\": binary data"},
      {"SELECT CAST(x'FF' AS TEXT) AS x FROM t", ", case 1, variable \"x\": a text that is not in the file's encoding"},
      {"SELECT CAST(x'6100' AS TEXT) AS x FROM t",
       ", case 1, variable \"x\": a text that is not in the file's encoding"},
      {"SELECT x, x FROM t", "variables 1 and 2 have the same name, \"x\""},
      {"SELECT x AS ' ' FROM t", "variable 1 has no name"},
      {"SELECT x FROM t WHERE x > 5", "variables, but no case"},
      {"SELECT x FROM", "the query cannot be run: "},
      {"SELECT x FROM t; SELECT 1", "the query cannot be run: more than one statement"},
      {" ", "the query cannot be run: no statement"},
      {"DELETE FROM t", "the query may only read this database"},
      {"PRAGMA user_version", "the query may only read this database"},
      {"ATTACH '/tmp/other.db' AS o", "the query may only read this database"},
      {"BEGIN", "the query may only read this database"},
      {"SELECT load_extension('x')", "the query cannot be run: "},
      {"SELECT zeroblob(1000000000) FROM t", "string or blob too big"},
  };
  for (const auto& c : cases) EXPECT_THAT(RefusalOf(Query(c.query)), HasSubstr(c.refusal)) << c.query;
  EXPECT_EQ(testing::SqlValue(Path(), "SELECT count(*) FROM t"), "3");
}

TEST_F(SqliteFiles, AQueryWithoutEndCanBeCancelledAndIsBounded) {
  RunSql(Path(), "CREATE TABLE t (x)");
  const std::string endless = "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT ";
  int queries = 0;
  TableReadOptions options;
  options.Cancelled = [&queries] { return ++queries > 20; };
  EXPECT_THROW(ReadTable(Query(endless + "i FROM n WHERE i < 0"), options), TableReadCancelled);
  options.Cancelled = {};
  options.MaximumCases = 1000;
  EXPECT_THROW(ReadTable(Query(endless + "i FROM n"), options), TableError);
}

TEST_F(SqliteFiles, AFileWithSeveralTablesOrNoneNamesThem) {
  RunSql(Path(), "CREATE TABLE visits (x); CREATE TABLE patients (x)");
  EXPECT_EQ(RefusalOf(Path()), Path() + ": 2 tables (patients, visits). Choose one with \"sqlite:" + Path() +
                                   "?table=NAME\", or join them with \"sqlite:" + Path() + "?query=SELECT...\".");
  RunSql(Path("none.sqlite"), "CREATE TABLE t (x); DROP TABLE t");
  EXPECT_EQ(RefusalOf(Path("none.sqlite")),
            Path("none.sqlite") + ": a database without tables. Check that this is the file with the cases.");
}

TEST_F(SqliteFiles, ReadingChangesNothing) {
  RunSql(Path(), "CREATE TABLE t (x); INSERT INTO t VALUES (1)");
  const std::string before = testing::ContentOfFile(Path());
  ReadTable(Path());
  ReadTable(Query("SELECT * FROM t"));
  EXPECT_EQ(testing::ContentOfFile(Path()), before);
}

TEST(SqliteAddress, IsDecoded) {
  const struct {
    const char* address;
    const char* file;
    const char* table;
    const char* query;
  } cases[] = {
      {"sqlite:a.db", "a.db", "", ""},
      {"sqlite:/tmp/a%20b%3F.db?table=t%25", "/tmp/a b?.db", "t%", ""},
      {"sqlite:a.db?query=SELECT a+b FROM t WHERE c = '?=%C3%BC'", "a.db", "",
       "SELECT a+b FROM t WHERE c = '?=\xC3\xBC'"},
  };
  for (const auto& c : cases) {
    const SqliteAddress parsed = ParseSqliteAddress(c.address);
    EXPECT_EQ(parsed.File, c.file);
    EXPECT_EQ(parsed.Table, c.table);
    EXPECT_EQ(parsed.Query, c.query);
  }
}

TEST(SqliteAddress, ThatCannotBeUnderstoodIsRefused) {
  const struct {
    const char* address;
    const char* fault;
  } cases[] = {
      {"sqlite:", "no file is named"},
      {"sqlite:?table=t", "no file is named"},
      {"sqlite:a.db?", "neither table= nor query="},
      {"sqlite:a.db?table", "neither table= nor query="},
      {"sqlite:a.db?tables=t", "neither table= nor query="},
      {"sqlite:a.db?table=", "nothing stands behind the equals sign"},
      {"sqlite:a.db?table=%", "a percent sign"},
      {"sqlite:a.db?table=%4", "a percent sign"},
      {"sqlite:a.db?table=%4g", "a percent sign"},
      {"sqlite:a.db?table=%+4", "a percent sign"},
      {"sqlite:a.db?table=%00", "a percent sign"},
  };
  for (const auto& c : cases) EXPECT_THAT(RefusalOf(c.address), HasSubstr(c.fault)) << c.address;
}

}  // namespace
}  // namespace orv
