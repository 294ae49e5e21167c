#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "fit/RowsAhead.h"
#include "support/HeapOnlyHost.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

constexpr int kColumns = 6;
constexpr CaseColumns kCaseColumns{3, 4, 5, -1};  // time, weight, status

CaseTable RandomTable(int rows) {
  TestRandom random(5);
  CaseTable table(rows, kColumns);
  for (int row = 1; row <= rows; ++row) {
    double* cells = table.GetRow(row, CaseTable::Access::Write);
    for (int j = 0; j < kColumns; ++j) cells[j] = random.Value();
    cells[kCaseColumns.Weight] = 1.5 + random.Value();
    cells[kCaseColumns.Status] = random.Integer(2);
  }
  return table;
}

// A walk from row n to row 1, against the plain loop. `room`: for so many rows at a time.
void ExpectWalk(RowsAhead& rows,
                const CaseTable& table,
                const std::vector<int>& columns,
                const double* beta,
                int room) {
  HeapOnlyHost host;
  PaddedRows x(host, RowsAhead::kRows, static_cast<int>(columns.size()));
  rows.Start(beta);
  for (int row = table.RowCount(); row >= 1;) {
    const int count = rows.Load(x.Row(0), room);
    ASSERT_EQ(count, std::min({row, room, RowsAhead::kRows}));
    for (int k = 0; k < count; ++k, --row) {
      const double* cells = table.GetRow(row);
      double eta = 0.0;
      for (std::size_t j = 0; j < columns.size(); ++j) {
        ASSERT_EQ(x.Row(k)[j], cells[columns[j]]) << "row " << row << ", column " << j;
        if (beta != nullptr) eta += cells[columns[j]] * beta[j];
      }
      for (std::size_t j = columns.size(); j < PaddedOrder(columns.size()); ++j) ASSERT_EQ(x.Row(k)[j], 0.0) << row;
      ASSERT_NEAR(rows.Eta()[k], eta, 1e-14) << row;
      ASSERT_EQ(rows.Weight()[k], cells[kCaseColumns.Weight]) << row;
      ASSERT_EQ(rows.IsEvent()[k], cells[kCaseColumns.Status]) << row;
      const double risk = cells[kCaseColumns.Weight] * std::exp(eta);
      ASSERT_NEAR(rows.WeightedRisk()[k], risk, 1e-14 * risk) << row;
    }
  }
  EXPECT_EQ(rows.Load(x.Row(0), room), 0) << "no row is left";
}

TEST(RowsAhead, EveryRowHasItsTurnFromTheLastToTheFirst) {
  const double beta[] = {0.5, -1.25, 2.0};
  for (const std::vector<int>& columns : {std::vector<int>{0, 1, 2}, {2}, {1, 0}, {}}) {
    for (const int n : {1, 63, 64, 65, 200}) {
      const CaseTable table = RandomTable(n);
      HeapOnlyHost host;
      RowsAhead rows(host, table, n, kCaseColumns, columns);
      ASSERT_FALSE(rows.Failed());
      for (const int room : {1, 5, 64, 100}) ExpectWalk(rows, table, columns, beta, room);
    }
  }
}

TEST(RowsAhead, WalksFollowEachOtherAtAnyVector) {
  const CaseTable table = RandomTable(100);
  HeapOnlyHost host;
  RowsAhead rows(host, table, 100, kCaseColumns, {0, 1});
  const double beta[] = {0.5, -1.25};
  const double other[] = {-0.25, 0.0};
  ExpectWalk(rows, table, {0, 1}, beta, RowsAhead::kRows);
  ExpectWalk(rows, table, {0, 1}, nullptr, RowsAhead::kRows);
  ExpectWalk(rows, table, {0, 1}, other, RowsAhead::kRows);
}

// Rows beyond the n of the walk are not part of it.
TEST(RowsAhead, TheWalkBeginsAtRowN) {
  const CaseTable table = RandomTable(10);
  HeapOnlyHost host;
  RowsAhead rows(host, table, 4, kCaseColumns, {0});
  PaddedRows x(host, RowsAhead::kRows, 1);
  rows.Start(nullptr);
  EXPECT_EQ(rows.Load(x.Row(0)), 4);
  EXPECT_EQ(x.Row(0)[0], table.GetRow(4)[0]);
  EXPECT_EQ(x.Row(3)[0], table.GetRow(1)[0]);
}

TEST(RowsAhead, ColumnsThatAreTheSameInAllRowsAreKnown) {
  struct {
    std::vector<double> Constant;  // of columns 0 to 2; 0: the column varies
    int ChangesAt;                 // row in which the last of them changes after all; 0: none
    std::vector<double> Expected;  // empty: none
  } const cases[] = {
      {{0, 0, 0}, 0, {}},
      {{0, 1.5, 0}, 0, {0, 1.5, 0}},
      {{-2, 0, 1.5}, 0, {-2, 0, 1.5}},
      {{-2, 0, 1.5}, 1, {-2, 0, 0}},
      {{-2, 0, 1.5}, 100, {-2, 0, 0}},
      {{0, 0, 1.5}, 70, {}},
  };
  for (const auto& c : cases) {
    CaseTable table = RandomTable(100);
    for (int row = 1; row <= 100; ++row) {
      for (std::size_t j = 0; j < 3; ++j) {
        if (c.Constant[j] != 0.0) table.GetRow(row, CaseTable::Access::Write)[j] = c.Constant[j];
      }
    }
    if (c.ChangesAt > 0) table.GetRow(c.ChangesAt, CaseTable::Access::Write)[2] = 7.0;
    HeapOnlyHost host;
    const RowsAhead rows(host, table, 100, kCaseColumns, {0, 1, 2});
    ASSERT_EQ(rows.Constants() == nullptr, c.Expected.empty());
    for (std::size_t j = 0; j < c.Expected.size(); ++j) EXPECT_EQ(rows.Constants()[j], c.Expected[j]) << j;
  }
}

TEST(RowsAhead, ColumnOfZerosNeedsNoCare) {
  CaseTable table = RandomTable(5);
  for (int row = 1; row <= 5; ++row) table.GetRow(row, CaseTable::Access::Write)[0] = 0.0;
  HeapOnlyHost host;
  EXPECT_EQ(RowsAhead(host, table, 5, kCaseColumns, {0}).Constants(), nullptr);
}

// What is fetched ahead is what comes.
TEST(RowsAhead, TheStoreOfTheNextRowsIsKnown) {
  constexpr std::size_t kBytesOfRow = kColumns * sizeof(double);
  const CaseTable table = RandomTable(RowsAhead::kRows + 3);
  HeapOnlyHost host;
  RowsAhead rows(host, table, table.RowCount(), kCaseColumns, {0});
  PaddedRows x(host, RowsAhead::kRows, 1);
  rows.Start(nullptr);
  EXPECT_EQ(rows.Next().first, table.GetRow(4));
  EXPECT_EQ(rows.Next().bytes, RowsAhead::kRows * kBytesOfRow);
  rows.Load(x.Row(0));
  EXPECT_EQ(rows.Next().first, table.GetRow(1));
  EXPECT_EQ(rows.Next().bytes, 3 * kBytesOfRow);
  rows.Load(x.Row(0));
  EXPECT_EQ(rows.Next().bytes, 0U);
}

}  // namespace
}  // namespace orv
