#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "fit/PassCases.h"
#include "fit/StartOrder.h"
#include "support/FailingAllocations.h"

namespace orv {
namespace {

using testing::PassCases;
using testing::RandomIntervals;
using testing::ReferenceCase;

// A table of intervals with its tie table and the order of its starts.
struct Starts {
  explicit Starts(const std::vector<ReferenceCase>& cases, bool strata = false)
      : Cases(cases),
        Ties(Host, Cases.Table(), Cases.Count(), Cases.Columns(strata)),
        Order(Host, Cases.Table(), Cases.Count(), Cases.StartColumn(), Ties) {}

  std::vector<int> Leavers(double time) {
    std::vector<int> rows;
    while (const int row = Order.NextLeaver(time)) rows.push_back(row);
    return rows;
  }

  HeapOnlyHost Host;
  PassCases Cases;
  TieTable Ties;
  StartOrder Order;
};

ReferenceCase Interval(double start, double stop, double stratum = 0.0) {
  return {stop, false, 1.0, stratum, {0.0}, start};
}

TEST(StartOrder, RowsLeaveLatestStartFirst) {
  Starts starts({Interval(1, 4), Interval(3, 5), Interval(0, 6), Interval(5, 7), Interval(3, 8)});
  starts.Order.Rewind();
  EXPECT_TRUE(starts.Leavers(6.0).empty());
  EXPECT_EQ(starts.Leavers(5.0), (std::vector<int>{4})) << "a start equal to the time has left";
  EXPECT_TRUE(starts.Leavers(5.0).empty()) << "once";
  EXPECT_EQ(starts.Leavers(2.0), (std::vector<int>{5, 2})) << "equal starts: the later row first";
  EXPECT_EQ(starts.Leavers(0.5), (std::vector<int>{1}));
  EXPECT_EQ(starts.Leavers(0.0), (std::vector<int>{3}));
  EXPECT_TRUE(starts.Leavers(-1.0).empty());
}

TEST(StartOrder, StartIsComparedExactly) {
  Starts starts({Interval(3, 5), Interval(std::nextafter(3.0, 0.0), 6)});
  starts.Order.Rewind();
  EXPECT_EQ(starts.Leavers(3.0), (std::vector<int>{1}));
  EXPECT_EQ(starts.Leavers(std::nextafter(3.0, 0.0)), (std::vector<int>{2}));
}

TEST(StartOrder, RewindBeginsAnew) {
  Starts starts({Interval(1, 4), Interval(2, 5)});
  for (int walk = 0; walk < 3; ++walk) {
    starts.Order.Rewind();
    EXPECT_EQ(starts.Leavers(1.5), (std::vector<int>{2})) << walk;
    if (walk == 1) {
      EXPECT_EQ(starts.Leavers(1.0), (std::vector<int>{1}));
    }
  }
}

TEST(StartOrder, StratumHasOnlyItsOwnLeavers) {
  // Rows 1 to 2 are stratum 1, rows 3 to 5 stratum 2.
  Starts starts({Interval(8, 9, 1), Interval(2, 9.5, 1), Interval(7, 8, 2), Interval(1, 9, 2), Interval(5, 10, 2)},
                true);
  starts.Order.Rewind();
  EXPECT_EQ(starts.Leavers(6.0), (std::vector<int>{3}));
  starts.Order.EnterStratum(2);
  EXPECT_EQ(starts.Leavers(1.0), (std::vector<int>{1, 2})) << "and those left over in the other stratum stay there";
  EXPECT_TRUE(starts.Leavers(0.0).empty());
}

TEST(StartOrder, TableWithoutRowsHasNoLeavers) {
  Starts starts({});
  starts.Order.Rewind();
  EXPECT_FALSE(starts.Order.Failed());
  EXPECT_EQ(starts.Order.NextLeaver(-1e300), 0);
}

// A walk over random intervals: whoever has joined and not left is at risk by definition, just after a row is reached.
TEST(StartOrder, JoinersLessLeaversAreThoseAtRisk) {
  for (const int strata : {1, 3}) {
    Starts starts(RandomIntervals(static_cast<unsigned>(strata), 60, 1, strata, false), strata > 1);
    const std::vector<ReferenceCase>& cases = starts.Cases.Cases();
    starts.Order.Rewind();
    std::set<int> atRisk;
    for (int row = starts.Cases.Count(); row >= 1; --row) {
      if (starts.Ties.EndsStratum(row)) {
        starts.Order.EnterStratum(row);
        atRisk.clear();
      }
      const ReferenceCase& here = cases[static_cast<std::size_t>(row) - 1];
      for (const int leaver : starts.Leavers(here.Time)) EXPECT_EQ(atRisk.erase(leaver), 1U) << "never joined";
      atRisk.insert(row);
      std::set<int> expected;
      for (int other = row; other <= starts.Cases.Count(); ++other) {
        if (cases[static_cast<std::size_t>(other) - 1].IsAtRisk(here.Stratum, here.Time)) expected.insert(other);
      }
      ASSERT_EQ(atRisk, expected) << "row " << row << ", strata " << strata;
    }
  }
}

TEST(StartOrder, FailsWhenMemoryIsOut) {
  const PassCases cases(RandomIntervals(5, 10, 1, 2, false));
  HeapOnlyHost hostOfTies;
  const TieTable ties(hostOfTies, cases.Table(), cases.Count(), cases.Columns(true));
  testing::ExpectFailureAtEveryAllocation([&](HeapOnlyHost& host) {
    return StartOrder(host, cases.Table(), cases.Count(), cases.StartColumn(), ties).Failed();
  });
}

}  // namespace
}  // namespace orv
