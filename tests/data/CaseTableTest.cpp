#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "data/CaseTable.h"

namespace orv {
namespace {

using ::testing::ElementsAre;

using Rows = std::vector<std::vector<double>>;

CaseTable Filled(const Rows& rows, int columns) {
  CaseTable table(static_cast<int>(rows.size()), columns);
  for (std::size_t row = 0; row < rows.size(); ++row) {
    std::copy(rows[row].begin(), rows[row].end(), table.GetRow(static_cast<int>(row) + 1, CaseTable::Access::Write));
  }
  return table;
}

Rows Contents(const CaseTable& table) {
  Rows rows;
  for (int row = 1; row <= table.RowCount(); ++row) {
    const double* cells = table.GetRow(row, CaseTable::Access::Read);
    rows.emplace_back(cells, cells + table.ColumnCount());
  }
  return rows;
}

TEST(CaseTable, StartsWithEveryCellZero) {
  const CaseTable table(3, 4);
  EXPECT_EQ(table.RowCount(), 3);
  EXPECT_EQ(table.ColumnCount(), 4);
  EXPECT_EQ(Contents(table), Rows(3, std::vector<double>(4, 0.0)));
}

TEST(CaseTable, RowsCountFromOneAndLieInOneBlock) {
  CaseTable table(5, 3);
  double* first = table.GetRow(1, CaseTable::Access::Write);
  for (int row = 1; row <= 5; ++row) {
    EXPECT_EQ(table.GetRow(row, CaseTable::Access::Write), first + (row - 1) * 3) << "row " << row;
    EXPECT_EQ(table.GetRow(row, CaseTable::Access::Read), first + (row - 1) * 3) << "row " << row;
  }
}

TEST(CaseTable, CanBeEmptyButNotOfNegativeSize) {
  EXPECT_EQ(CaseTable(0, 4).RowCount(), 0);
  EXPECT_EQ(CaseTable(0, 4).ColumnCount(), 4);
  EXPECT_THROW(CaseTable(-1, 4), std::invalid_argument);
  EXPECT_THROW(CaseTable(1, -4), std::invalid_argument);
}

const Rows kFive = {{1, 11, 21, 31, 0}, {2, 12, 22, 32, 1}, {3, 13, 23, 33, 0}, {4, 14, 24, 34, 0}, {5, 15, 25, 35, 1}};

TEST(CaseTable, SubsetKeepsTheListedColumnsOfTheRowsThatMeetTheCondition) {
  struct {
    const char* Columns;
    const char* Condition;
    Rows Kept;
  } const cases[] = {
      {"1-4", "v5=0", {{1, 11, 21, 31}, {3, 13, 23, 33}, {4, 14, 24, 34}}},
      {"1-4", "v5=1", {{2, 12, 22, 32}, {5, 15, 25, 35}}},
      {"1-2 4", "v5=0", {{1, 11, 31}, {3, 13, 33}, {4, 14, 34}}},
      {"1 3-5", "v5=1", {{2, 22, 32, 1}, {5, 25, 35, 1}}},
      {"3", "v2=14", {{24}}},
      {"1-5", "v5=2", {}},
  };
  for (const auto& c : cases) {
    const CaseTable kept = Filled(kFive, 5).Subset(c.Columns, c.Condition);
    EXPECT_EQ(Contents(kept), c.Kept) << c.Columns << " where " << c.Condition;
    EXPECT_EQ(kept.RowCount(), static_cast<int>(c.Kept.size())) << c.Columns << " where " << c.Condition;
  }
}

TEST(CaseTable, SubsetGivesUpTheStore) {
  CaseTable table = Filled(kFive, 5);
  const CaseTable kept = std::move(table).Subset("1-4", "v5=0");
  EXPECT_EQ(kept.RowCount(), 3);
  EXPECT_EQ(table.RowCount(), 0);  // NOLINT(bugprone-use-after-move): the emptied table is what is looked at
}

TEST(CaseTable, SubsetRefusesTextsOfAnotherForm) {
  struct {
    const char* What;
    const char* Columns;
    const char* Condition;
  } const cases[] = {
      {"a column beyond the last", "1-6", "v5=0"},
      {"column 0", "0-4", "v5=0"},
      {"a word", "all", "v5=0"},
      {"commas", "1,2", "v5=0"},
      {"a descending list", "4 1", "v5=0"},
      {"a list that names a column twice", "1-2 2", "v5=0"},
      {"a condition without v", "1-4", "5=0"},
      {"a condition without =", "1-4", "v5"},
      {"a condition on a column beyond the last", "1-4", "v6=0"},
      {"a condition on column 0", "1-4", "v0=0"},
      {"a condition without a value", "1-4", "v5="},
      {"a condition with a fraction", "1-4", "v5=0.5"},
      {"a condition with more behind it", "1-4", "v5=0 or v4=1"},
  };
  for (const auto& c : cases) {
    EXPECT_THROW(static_cast<void>(Filled(kFive, 5).Subset(c.Columns, c.Condition)), std::invalid_argument) << c.What;
  }
}

TEST(CaseTable, SortsByTheKeysInTheirOrderAndDirections) {
  const Rows rows = {{2, 5, 0, 1}, {1, 5, 0, 2}, {2, 5, 1, 3}, {1, 4, 1, 4}, {2, 3, 0, 5}, {1, 5, 1, 6}};
  struct {
    std::vector<int> Keys, Descending;
    std::vector<double> Order;  // of the last column
  } const cases[] = {
      {{1, 2, 3}, {0, 0, 1}, {4, 6, 2, 5, 3, 1}},
      {{2, 3}, {0, 1}, {5, 4, 3, 6, 1, 2}},
      {{1}, {1}, {1, 3, 5, 2, 4, 6}},
      {{4}, {1}, {6, 5, 4, 3, 2, 1}},
      {{4}, {0}, {1, 2, 3, 4, 5, 6}},
      {{}, {}, {1, 2, 3, 4, 5, 6}},
  };
  for (const auto& c : cases) {
    CaseTable table = Filled(rows, 4);
    table.Sort(c.Keys, c.Descending);
    std::vector<double> order;
    for (const auto& row : Contents(table)) {
      order.push_back(row[3]);
      EXPECT_EQ(row, rows[static_cast<std::size_t>(row[3]) - 1]) << "the cells of a row stay together";
    }
    EXPECT_EQ(order, c.Order) << ::testing::PrintToString(c.Keys);
  }
}

TEST(CaseTable, SortingManyRowsGivesAPermutationInOrder) {
  std::mt19937 random(11);
  for (const int count : {0, 1, 2, 3, 17, 1000}) {
    Rows rows;
    for (int row = 0; row < count; ++row) {
      const auto draw = [&](unsigned range) { return static_cast<double>(random() % range); };
      rows.push_back({draw(3), draw(20), draw(2), static_cast<double>(row)});
    }
    CaseTable table = Filled(rows, 4);
    table.Sort({1, 2, 3}, {0, 0, 1});
    // Rows equal on all keys keep their order, so the row number closes the comparison.
    std::sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) {
      return std::vector<double>{a[0], a[1], -a[2], a[3]} < std::vector<double>{b[0], b[1], -b[2], b[3]};
    });
    EXPECT_EQ(Contents(table), rows) << count << " rows";
  }
}

}  // namespace
}  // namespace orv
