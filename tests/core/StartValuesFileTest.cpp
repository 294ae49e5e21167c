// Start values from a spreadsheet file: what is taken, and what empties the list.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/TemporaryFolder.h"
#include "core/StartValuesFile.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableWriters.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::MakeTable;
using testing::TestAnalysis;
using testing::TestColumn;

constexpr const char* kNoSpreadsheet = "File is not a valid Orvanta Spreadsheet.";
constexpr const char* kInvalid = "Invalid start values were found.  Please review spreadsheet for appropriate values.";
constexpr const char* kTooManyColumns =
    "Too many columns. Start values should be placed in the appropriate rows within 1 column: the number of rows/cases "
    "= "
    "the number of coefficients.";

class StartValuesFile : public ::testing::Test {
 protected:
  StartValuesFile() : m_test({{"time", {1, 2}}, {"status", {1, 0}}}) { m_test.StartAt({9.0, 9.0}); }

  std::string Write(const std::string& name, const std::vector<TestColumn>& columns) const {
    const std::string file = m_folder.Path() / name;
    WriteTable(MakeTable(columns), file);
    return file;
  }
  int Load(const std::string& file) { return LoadStartValues(m_test.Analysis, file); }
  const std::vector<double>& Values() { return m_test.Settings().StartValues; }

  testing::TemporaryFolder m_folder;
  TestAnalysis m_test;
};

TEST_F(StartValuesFile, OneColumnIsTakenWithAllItsDigits) {
  const std::string file = Write("starts.orv", {{"b", {0.1, -1e-300, 1.0 / 3.0}}});
  EXPECT_EQ(Load(file), 0);
  EXPECT_THAT(Values(), ElementsAre(0.1, -1e-300, 1.0 / 3.0));
  EXPECT_EQ(m_test.Settings().StartValuesFileName, file);
  EXPECT_THAT(m_test.Host.Messages(), IsEmpty());
}

TEST_F(StartValuesFile, AnotherEndingChangesNothing) {
  for (const char* name : {"starts.csv", "starts.ORV", "starts.orv2", "starts", ""}) {
    EXPECT_EQ(Load(name), 1) << name;
    EXPECT_EQ(m_test.Host.Messages().back(), kNoSpreadsheet) << name;
  }
  EXPECT_THAT(Values(), ElementsAre(9.0, 9.0));
  EXPECT_EQ(m_test.Settings().StartValuesFileName, "");
}

TEST_F(StartValuesFile, TwoColumnsLeaveNoStartValues) {
  EXPECT_EQ(Load(Write("two.orv", {{"a", {0.1}}, {"b", {0.2}}})), 1);
  EXPECT_THAT(m_test.Host.Messages(), ElementsAre(kTooManyColumns));
  EXPECT_THAT(Values(), IsEmpty());
}

TEST_F(StartValuesFile, ACellWithoutANumberEmptiesTheListWhateverItsRow) {
  struct {
    const char* what;
    TestColumn column;
  } const cases[] = {
      {"a text in the first row", {"b", {1, 0.5, 0.25}, {{1, "one"}}}},
      {"a text in the last row", {"b", {0.5, 0.25, 7}, {{7, "seven"}}}},
      {"a missing value", {"b", {0.5, kMissingCode, 0.25}}},
  };
  for (const auto& c : cases) {
    m_test.StartAt({9.0});
    EXPECT_EQ(Load(Write("texts.orv", {c.column})), 1) << c.what;
    EXPECT_EQ(m_test.Host.Messages().back(), kInvalid) << c.what;
    EXPECT_THAT(Values(), IsEmpty()) << c.what;
  }
}

TEST_F(StartValuesFile, ATextThatBeginsWithANumberCountsAsThatNumber) {
  EXPECT_EQ(Load(Write("units.orv", {{"b", {1, 2}, {{1, "0.5 a year"}}}})), 0);
  EXPECT_THAT(Values(), ElementsAre(0.5, 2.0));
}

TEST_F(StartValuesFile, AFileThatCannotBeReadIsAnErrorOfTheHost) {
  EXPECT_THROW(Load(m_folder.Path() / "none.orv"), TableError);
  EXPECT_THAT(Values(), ElementsAre(9.0, 9.0));
}

}  // namespace
}  // namespace orv
