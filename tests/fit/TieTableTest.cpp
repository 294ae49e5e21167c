#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "fit/PassCases.h"
#include "fit/TieTable.h"
#include "support/FailingAllocations.h"

namespace orv {
namespace {

using testing::PassCases;
using testing::ReferenceCase;

double StepsAbove(double value, int steps) {
  for (int k = 0; k < steps; ++k) value = std::nextafter(value, INFINITY);
  return value;
}

// Rows in the order given; no design values.
class Ties {
 public:
  explicit Ties(const std::vector<ReferenceCase>& rows, bool strata = false)
      : m_cases(rows, false), m_table(m_host, m_cases.Table(), m_cases.Count(), m_cases.Columns(strata)) {}

  std::vector<double> Deaths() const {
    std::vector<double> result;
    for (int row = 1; row <= m_cases.Count(); ++row) result.push_back(m_table.Deaths(row));
    return result;
  }
  std::vector<bool> Ends() const {
    std::vector<bool> result;
    for (int row = 1; row <= m_cases.Count(); ++row) result.push_back(m_table.EndsStratum(row));
    return result;
  }
  const TieTable& Table() const { return m_table; }

 private:
  HeapOnlyHost m_host;
  PassCases m_cases;
  TieTable m_table;
};

ReferenceCase Row(double time, bool event, double weight = 1.0, double stratum = 0.0) {
  return {time, event, weight, stratum, {}};
}

using Deaths = std::vector<double>;

TEST(TieTable, CountsTheEventsOfAGroupOnItsFirstRow) {
  const Ties ties({Row(1, true), Row(2, true), Row(2, true), Row(2, false), Row(3, true), Row(4, false)});
  EXPECT_EQ(ties.Deaths(), (Deaths{1, 2, 0, 0, 1, 0}));
}

TEST(TieTable, GroupOfCensoredRowsHasNoEventsOnAnyRow) {
  const Ties ties({Row(1, true), Row(2, false), Row(2, false), Row(3, true)});
  EXPECT_EQ(ties.Deaths(), (Deaths{1, 0, 0, 1}));
}

TEST(TieTable, CountsAnEventOnAnyRowOfItsGroup) {
  const Ties ties({Row(2, false), Row(2, true), Row(2, false)});
  EXPECT_EQ(ties.Deaths(), (Deaths{1, 0, 0}));
  EXPECT_DOUBLE_EQ(ties.Table().MeanWeight(1), 1.0);
}

TEST(TieTable, MeanWeightIsThePlainMeanOfTheEventsWeights) {
  const Ties ties({Row(2, true, 3.0), Row(2, true, 1.0), Row(2, true, 0.5), Row(2, false, 100.0)});
  EXPECT_EQ(ties.Deaths(), (Deaths{3, 0, 0, 0}));
  EXPECT_DOUBLE_EQ(ties.Table().MeanWeight(1), 1.5);
}

TEST(TieTable, SumsStartAnewWithEachGroup) {
  const Ties ties({Row(1, true, 2.0), Row(2, true, 4.0), Row(2, true, 6.0), Row(3, true, 8.0), Row(3, true, 10.0)});
  EXPECT_EQ(ties.Deaths(), (Deaths{1, 2, 0, 2, 0}));
  EXPECT_DOUBLE_EQ(ties.Table().MeanWeight(1), 2.0);
  EXPECT_DOUBLE_EQ(ties.Table().MeanWeight(2), 5.0);
  EXPECT_DOUBLE_EQ(ties.Table().MeanWeight(4), 9.0);
}

TEST(TieTable, TiesTimesUpToFifteenUnitsInTheLastPlace) {
  struct {
    const char* what;
    double time;
    Deaths deaths;
  } const cases[] = {
      {"equal", 5.0, {2, 0}},
      {"15 units above", StepsAbove(5.0, 15), {2, 0}},
      {"16 units above", StepsAbove(5.0, 16), {1, 1}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Ties({Row(5.0, true), Row(c.time, true)}).Deaths(), c.deaths) << c.what;
  }
}

// Neighbours are compared, so a chain of close times is one group however far its ends are apart.
TEST(TieTable, ChainOfCloseTimesIsOneGroup) {
  const double second = StepsAbove(5.0, 15);
  const Ties ties({Row(5.0, true), Row(second, true), Row(StepsAbove(second, 15), true)});
  EXPECT_EQ(ties.Deaths(), (Deaths{3, 0, 0}));
}

TEST(TieTable, StratumEndsWhereTheNextRowHasAnotherValue) {
  const std::vector<ReferenceCase> rows = {Row(1, true, 1.0, 1.0), Row(2, true, 1.0, 1.0), Row(2, true, 1.0, 2.0),
                                           Row(3, true, 1.0, 2.0)};
  const Ties ties(rows, true);
  EXPECT_EQ(ties.Ends(), (std::vector<bool>{false, true, false, false}));
  EXPECT_EQ(ties.Deaths(), (Deaths{1, 1, 1, 1})) << "one time in two strata is two groups";
  const Ties unstratified(rows, false);
  EXPECT_EQ(unstratified.Ends(), (std::vector<bool>{false, false, false, false}));
  EXPECT_EQ(unstratified.Deaths(), (Deaths{1, 2, 0, 1}));
}

TEST(TieTable, StratumValuesAreEqualUpToFifteenUnitsInTheLastPlace) {
  const auto ends = [](double second) -> bool {
    return Ties({Row(1, true, 1.0, 3.0), Row(2, true, 1.0, second)}, true).Ends().front();
  };
  EXPECT_FALSE(ends(StepsAbove(3.0, 15)));
  EXPECT_TRUE(ends(StepsAbove(3.0, 16)));
}

TEST(TieTable, OneRowIsAGroup) {
  EXPECT_EQ(Ties({Row(0.0, true)}).Deaths(), (Deaths{1}));
  EXPECT_EQ(Ties({Row(0.0, false)}, true).Deaths(), (Deaths{0}));
}

TEST(TieTable, FailsWhenMemoryIsOut) {
  const PassCases cases({Row(1, true), Row(2, true)});
  testing::ExpectFailureAtEveryAllocation(
      [&](HeapOnlyHost& host) { return TieTable(host, cases.Table(), 2, cases.Columns(true)).Failed(); });
}

}  // namespace
}  // namespace orv
