#include <gtest/gtest.h>

#include "standalone/tables/DescribeTable.h"
#include "standalone/tables/TextTables.h"

namespace orv {
namespace {

using testing::ReadText;

TEST(DescribeTable, CountsAndRangesByType) {
  const MemoryTable table = ReadText(
      "age,entered,arm,none\n"
      "61,2020-03-01,placebo,\n"
      ",1969-12-31,drug,NA\n"
      "-4.5,,,.\n"
      "70,2019-02-28,drug,NaN\n");
  const auto described = DescribeTable(table);
  ASSERT_EQ(described.size(), 4U);

  EXPECT_EQ(described[0].Number, 1);
  EXPECT_EQ(described[0].Name, "age");
  EXPECT_EQ(described[0].Type, VariableType::Number);
  EXPECT_EQ(described[0].ValidCount, 3);
  EXPECT_EQ(described[0].MissingCount, 1);
  EXPECT_EQ(described[0].Minimum, -4.5);
  EXPECT_EQ(described[0].Maximum, 70.0);
  EXPECT_EQ(described[0].MinimumDate, "");
  EXPECT_TRUE(described[0].Labels.empty());

  EXPECT_EQ(described[1].Type, VariableType::Date);
  EXPECT_EQ(described[1].ValidCount, 3);
  EXPECT_EQ(described[1].Minimum, -1.0);
  EXPECT_EQ(described[1].MinimumDate, "1969-12-31");
  EXPECT_EQ(described[1].MaximumDate, "2020-03-01");

  EXPECT_EQ(described[2].Type, VariableType::Text);
  EXPECT_EQ(described[2].ValidCount, 3);
  EXPECT_EQ(described[2].MissingCount, 1);
  EXPECT_EQ(described[2].Minimum, std::nullopt);
  ASSERT_EQ(described[2].Labels.size(), 2U);
  EXPECT_EQ(described[2].Labels[0].Text, "drug");
  EXPECT_EQ(described[2].Labels[1].Text, "placebo");
  EXPECT_EQ(described[2].Labels[1].Code, 2.0);

  EXPECT_EQ(described[3].Number, 4);
  EXPECT_EQ(described[3].Type, VariableType::Number);
  EXPECT_EQ(described[3].ValidCount, 0);
  EXPECT_EQ(described[3].MissingCount, 4);
  EXPECT_EQ(described[3].Minimum, std::nullopt);
  EXPECT_EQ(described[3].Maximum, std::nullopt);
}

TEST(DescribeTable, TakesEachVariablesOwnMissingCode) {
  MemoryTable table;
  TableVariable variable;
  variable.Name = "score";
  variable.MissingCode = 99.0;
  variable.Values = {99.0, 3.0, 99.0};
  table.AddVariable(variable);
  const auto described = DescribeTable(table);
  EXPECT_EQ(described[0].ValidCount, 1);
  EXPECT_EQ(described[0].MissingCount, 2);
  EXPECT_EQ(described[0].Maximum, 3.0);
}

TEST(DescribeTable, RangesNeedNotHoldZero) {
  const auto described = DescribeTable(ReadText("a,b\n5,-5\n7,-7\n"));
  EXPECT_EQ(described[0].Minimum, 5.0);
  EXPECT_EQ(described[0].Maximum, 7.0);
  EXPECT_EQ(described[1].Minimum, -7.0);
  EXPECT_EQ(described[1].Maximum, -5.0);
}

TEST(DescribeTable, OfATableWithoutVariablesIsEmpty) {
  EXPECT_TRUE(DescribeTable(MemoryTable()).empty());
}

}  // namespace
}  // namespace orv
