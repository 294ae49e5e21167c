#include <gtest/gtest.h>

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
  }
  return table;
}

// A walk from row n to row 1, against the plain loop.
void ExpectWalk(RowsAhead& rows, const CaseTable& table, const std::vector<int>& columns, const double* beta) {
  rows.Start(beta);
  for (int row = table.RowCount(); row >= 1; --row) {
    rows.Next();
    const double* cells = table.GetRow(row);
    double eta = 0.0;
    for (std::size_t j = 0; j < columns.size(); ++j) {
      ASSERT_EQ(rows.X()[j], cells[columns[j]]) << "row " << row << ", column " << j;
      if (beta != nullptr) eta += cells[columns[j]] * beta[j];
    }
    for (std::size_t j = columns.size(); j < PaddedOrder(columns.size()); ++j) ASSERT_EQ(rows.X()[j], 0.0) << row;
    ASSERT_NEAR(rows.Eta(), eta, 1e-14) << row;
    ASSERT_EQ(rows.Weight(), cells[kCaseColumns.Weight]) << row;
    const double risk = cells[kCaseColumns.Weight] * std::exp(eta);
    ASSERT_NEAR(rows.WeightedRisk(), risk, 1e-14 * risk) << row;
  }
}

TEST(RowsAhead, EveryRowHasItsTurnFromTheLastToTheFirst) {
  const double beta[] = {0.5, -1.25, 2.0};
  for (const std::vector<int>& columns : {std::vector<int>{0, 1, 2}, {2}, {1, 0}, {}}) {
    for (const int n : {1, 63, 64, 65, 200}) {
      const CaseTable table = RandomTable(n);
      HeapOnlyHost host;
      RowsAhead rows(host, table, n, kCaseColumns, columns);
      ASSERT_FALSE(rows.Failed());
      ExpectWalk(rows, table, columns, beta);
    }
  }
}

TEST(RowsAhead, WalksFollowEachOtherAtAnyVector) {
  const CaseTable table = RandomTable(100);
  HeapOnlyHost host;
  RowsAhead rows(host, table, 100, kCaseColumns, {0, 1});
  const double beta[] = {0.5, -1.25};
  const double other[] = {-0.25, 0.0};
  ExpectWalk(rows, table, {0, 1}, beta);
  ExpectWalk(rows, table, {0, 1}, nullptr);
  ExpectWalk(rows, table, {0, 1}, other);
}

// Rows beyond the n of the walk are not part of it.
TEST(RowsAhead, TheWalkBeginsAtRowN) {
  const CaseTable table = RandomTable(10);
  HeapOnlyHost host;
  RowsAhead rows(host, table, 4, kCaseColumns, {0});
  rows.Start(nullptr);
  rows.Next();
  EXPECT_EQ(rows.X()[0], table.GetRow(4)[0]);
}

}  // namespace
}  // namespace orv
