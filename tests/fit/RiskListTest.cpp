#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "fit/RiskList.h"
#include "support/FailingAllocations.h"
#include "support/HeapOnlyHost.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

std::vector<int> Rows(const RiskList& list) {
  std::vector<int> rows;
  for (int row = list.First(); row != 0; row = list.After(row)) rows.push_back(row);
  return rows;
}

RiskList& Fill(RiskList& list, int n) {
  for (int row = n; row >= 1; --row) list.AddBefore(row);
  return list;
}

TEST(RiskList, IsEmptyAtFirstAndAfterClear) {
  HeapOnlyHost host;
  RiskList list(host, 4);
  ASSERT_FALSE(list.Failed());
  EXPECT_TRUE(list.IsEmpty());
  EXPECT_EQ(list.First(), 0);
  Fill(list, 4);
  EXPECT_FALSE(list.IsEmpty());
  list.Clear();
  EXPECT_TRUE(list.IsEmpty());
  EXPECT_TRUE(Rows(list).empty());
}

TEST(RiskList, HoldsItsRowsInAscendingOrder) {
  HeapOnlyHost host;
  RiskList list(host, 5);
  ASSERT_FALSE(list.Failed());
  EXPECT_EQ(Rows(Fill(list, 5)), (std::vector<int>{1, 2, 3, 4, 5}));
}

TEST(RiskList, LosesRowsAtEveryPlace) {
  const struct {
    std::vector<int> removed, left;
  } cases[] = {
      {{1}, {2, 3, 4}}, {{4}, {1, 2, 3}}, {{2}, {1, 3, 4}},   {{2, 3}, {1, 4}},   {{3, 2}, {1, 4}},
      {{1, 4}, {2, 3}}, {{4, 3, 2}, {1}}, {{1, 2, 3, 4}, {}}, {{4, 3, 2, 1}, {}}, {{2, 4, 1, 3}, {}},
  };
  for (const auto& c : cases) {
    HeapOnlyHost host;
    RiskList list(host, 4);
    ASSERT_FALSE(list.Failed());
    Fill(list, 4);
    for (const int row : c.removed) list.Remove(row);
    EXPECT_EQ(Rows(list), c.left) << "first removed " << c.removed[0] << ", removed " << c.removed.size();
    EXPECT_EQ(list.IsEmpty(), c.left.empty());
  }
}

TEST(RiskList, TakesRowsAfterOthersHaveLeft) {
  HeapOnlyHost host;
  RiskList list(host, 6);
  ASSERT_FALSE(list.Failed());
  list.AddBefore(6);
  list.AddBefore(5);
  list.Remove(5);
  list.AddBefore(4);
  list.Remove(6);
  list.AddBefore(2);
  EXPECT_EQ(Rows(list), (std::vector<int>{2, 4}));
  list.Remove(2);
  list.Remove(4);
  EXPECT_TRUE(list.IsEmpty());
  list.AddBefore(1);
  EXPECT_EQ(Rows(list), (std::vector<int>{1})) << "links of rows that left must not come back";
}

// A second walk over the same list, with the links of the first still in its store.
TEST(RiskList, IsASetUnderAnyCourse) {
  constexpr int kRows = 60;
  HeapOnlyHost host;
  RiskList list(host, kRows);
  ASSERT_FALSE(list.Failed());
  for (unsigned seed = 1; seed <= 20; ++seed) {
    TestRandom random(seed);
    std::set<int> expected;
    list.Clear();
    for (int row = kRows; row >= 1; --row) {
      list.AddBefore(row);
      expected.insert(row);
      while (!expected.empty() && random.Integer(2) == 0) {
        auto leaver = expected.begin();
        std::advance(leaver, random.Integer(static_cast<int>(expected.size())));
        list.Remove(*leaver);
        expected.erase(leaver);
      }
      ASSERT_EQ(Rows(list), (std::vector<int>(expected.begin(), expected.end()))) << "seed " << seed << ", row " << row;
    }
  }
}

TEST(RiskList, FailsWhenMemoryIsOut) {
  testing::ExpectFailureAtEveryAllocation([](HeapOnlyHost& host) { return RiskList(host, 10).Failed(); });
}

}  // namespace
}  // namespace orv
