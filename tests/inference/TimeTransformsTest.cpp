#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

#include "data/AlmostEqual.h"
#include "inference/RandomSurvival.h"
#include "inference/TimeTransforms.h"

namespace orv {
namespace {

using testing::DefineForm;
using testing::RandomForm;
using testing::RandomForms;
using testing::RandomSurvivalColumns;
using testing::TestAnalysis;
using Values = std::vector<double>;
using Rows = std::vector<int>;

// The number that many units in the last place above x.
double UnitsAbove(double x, int units) {
  for (int k = 0; k < units; ++k) x = std::nextafter(x, std::numeric_limits<double>::infinity());
  return x;
}

// Cases with a survival time; without a covariate there is nothing else to define.
class Cases : public TestAnalysis {
 public:
  Cases(const Values& times, const Values& status, const Values& strata = {})
      : TestAnalysis(
            {{"time", times}, {"status", status}, {"g", strata.empty() ? Values(times.size(), 1.0) : strata}}) {
    Time({"time"}).Status("status");
    if (!strata.empty()) Strata("g", {1, 2});
    PrepareFit();
  }
};

class Intervals : public TestAnalysis {
 public:
  Intervals(const Values& starts, const Values& stops, const Values& status)
      : TestAnalysis({{"start", starts}, {"stop", stops}, {"status", status}}) {
    Interval("start", "stop").Status("status");
    PrepareFit();
  }
};

TEST(IdentityTimes, ListTheEventsAsTheCaseTableDoes) {
  Cases cases({5, 1, 3, 2, 4}, {1, 1, 0, 1, 1}, {1, 2, 1, 1, 2});
  const TransformedTimes times = IdentityTimes(cases.Data());
  EXPECT_EQ(times.Values, (Values{2, 5, 1, 4}));
  EXPECT_EQ(times.Rows, (Rows{1, 3, 4, 5}));
}

TEST(LogTimes, AreLogarithmsInTheSameOrder) {
  Cases cases({5, 1, 3, 2, 4}, {1, 1, 0, 1, 1}, {1, 2, 1, 1, 2});
  const TransformedTimes times = LogTimes(cases.Data()).value();
  EXPECT_EQ(times.Values, (Values{std::log(2.0), std::log(5.0), 0.0, std::log(4.0)}));
  EXPECT_EQ(times.Rows, (Rows{1, 3, 4, 5}));
}

TEST(LogTimes, NeedPositiveTimesOfEventsOnly) {
  EXPECT_FALSE(LogTimes(Cases({0, 1, 2}, {1, 1, 1}).Data()).has_value());
  EXPECT_TRUE(LogTimes(Cases({0, 1, 2}, {0, 1, 1}).Data()).has_value()) << "a censored case has no transform";
}

TEST(TimeTransforms, TakeTheStopOfAnInterval) {
  Intervals cases({0, 2}, {3, 7}, {1, 1});
  EXPECT_EQ(IdentityTimes(cases.Data()).Values, (Values{3, 7}));
  EXPECT_EQ(LogTimes(cases.Data()).value().Values, (Values{std::log(3.0), std::log(7.0)}));
  EXPECT_EQ(RankTimes(cases.Data()).Values, (Values{1, 2}));
}

TEST(KaplanMeierTimes, FirstEventGroupIsZero) {
  Cases cases({1, 1, 2, 3}, {1, 1, 1, 0});
  EXPECT_EQ(KaplanMeierTimes(cases.Data()).Values, (Values{0, 0, 0.5}));
  Intervals intervals({0, 0, 0, 0}, {1, 1, 2, 3}, {1, 1, 1, 0});
  EXPECT_EQ(KaplanMeierTimes(intervals.Data()).Values, (Values{0, 0, 0.5}));
}

TEST(KaplanMeierTimes, CasesCensoredBeforeTheFirstEventCountInItsRiskSet) {
  Cases cases({1, 2, 3, 4}, {0, 1, 1, 1});
  EXPECT_EQ(KaplanMeierTimes(cases.Data()).Values, (Values{0, 0.25, 1.0 - 0.75 / 2.0}));
  Intervals intervals({0, 0, 0, 0}, {1, 2, 3, 4}, {0, 1, 1, 1});
  const Values ofIntervals = KaplanMeierTimes(intervals.Data()).Values;
  EXPECT_DOUBLE_EQ(ofIntervals[1], 1.0 / 3.0) << "not so for intervals";
}

TEST(KaplanMeierTimes, IgnoreWeightsAndStrata) {
  Cases cases({2, 4, 1, 3}, {1, 1, 1, 1}, {1, 1, 2, 2});
  const TransformedTimes times = KaplanMeierTimes(cases.Data());
  EXPECT_EQ(times.Values, (Values{0, 0.25, 0.5, 0.75}));
  EXPECT_EQ(times.Rows, (Rows{3, 1, 4, 2})) << "in the order of time";
}

TEST(KaplanMeierTimes, TiesReachFifteenUnitsFromTheFirstTimeOfAGroup) {
  const double t = 3.0;
  Cases cases({t, UnitsAbove(t, 10), UnitsAbove(t, 15), UnitsAbove(t, 16), 9}, {1, 1, 1, 1, 1});
  EXPECT_EQ(KaplanMeierTimes(cases.Data()).Values, (Values{0, 0, 0, 1.0 - 2.0 / 5.0, 1.0 - (2.0 - 1.0) * 0.4 / 2.0}));
}

TEST(KaplanMeierTimes, IntervalEntersAfterItsStart) {
  // At 2 the third case has not entered, at 3 the first has left.
  Intervals cases({0, 1, 2, 0}, {2, 3, 4, 5}, {1, 1, 1, 1});
  const Values values = KaplanMeierTimes(cases.Data()).Values;
  const double afterTwo = 2.0 / 3.0;
  const double afterThree = afterTwo * (1.0 - 1.0 / 3.0);
  ASSERT_EQ(values.size(), 4U);
  EXPECT_EQ(values[0], 0.0);
  EXPECT_DOUBLE_EQ(values[1], 1.0 - afterTwo);
  EXPECT_DOUBLE_EQ(values[2], 1.0 - afterThree);
  EXPECT_DOUBLE_EQ(values[3], 1.0 - afterThree * 0.5);
}

TEST(KaplanMeierTimes, StartTiedWithATimeIsNotBeforeIt) {
  const double t = 4.0;
  for (const int units : {15, 16}) {
    double start = t;
    for (int k = 0; k < units; ++k) start = std::nextafter(start, 0.0);
    Intervals cases({0, start, 0}, {t, 6, 8}, {1, 1, 1});
    const double R = units == 16 ? 3.0 : 2.0;
    EXPECT_DOUBLE_EQ(KaplanMeierTimes(cases.Data()).Values[1], 1.0 / R) << units;
  }
}

// A case censored at the last stop stands behind the events there, and these are left out.
TEST(KaplanMeierTimes, EventsAtALastStopWithACensoredCaseHaveNoTransform) {
  Intervals cases({0, 0, 0, 0}, {2, 5, 5, 5}, {1, 1, 1, 0});
  const TransformedTimes times = KaplanMeierTimes(cases.Data());
  EXPECT_EQ(times.Values, (Values{0, 0, 0}));
  EXPECT_EQ(times.Rows, (Rows{1, 0, 0}));
  Intervals allEvents({0, 0, 0, 0}, {2, 5, 5, 5}, {1, 1, 1, 1});
  EXPECT_EQ(KaplanMeierTimes(allEvents.Data()).Values, (Values{0, 0.25, 0.25, 0.25}));
}

// The estimate from its steps, scanning all cases at each new stop.
TransformedTimes ScanKaplanMeier(const CCoxData& data, bool intervals) {
  const int n = static_cast<int>(data.ValidCaseCount);
  const int timeColumn = intervals ? data.StopColumn : data.SurvivalColumn;
  const auto cell = [&](int row, int column) { return data.CaseTable.GetRow(row)[column]; };
  std::vector<int> order(static_cast<std::size_t>(n));
  std::iota(order.begin(), order.end(), 1);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return cell(a, timeColumn) < cell(b, timeColumn); });
  Values L = {1.0};
  std::vector<int> counts;
  TransformedTimes times;
  double S = 1.0;
  bool isFirst = true;
  for (std::size_t k = 0; k < order.size(); ++k) {
    const double t = cell(order[k], timeColumn);
    if (k > 0 && cell(order[k - 1], timeColumn) == t) continue;
    double R = 0.0;
    int d = 0;
    for (const int row : order) {
      if (intervals && cell(row, data.StartColumn) >= t) continue;
      if (cell(row, timeColumn) >= t) R += 1.0;
      if (cell(row, timeColumn) != t || cell(row, data.StatusColumn) != 1.0) continue;
      ++d;
      times.Rows.push_back(row);
    }
    if (!intervals && isFirst) R = n;
    if (d == 0) continue;
    isFirst = false;
    S *= 1.0 - d / R;
    L.push_back(S);
    counts.push_back(d);
  }
  for (std::size_t k = 0; k < counts.size(); ++k) {
    times.Values.insert(times.Values.end(), static_cast<std::size_t>(counts[k]), 1.0 - L[k]);
  }
  return times;
}

TEST(KaplanMeierTimes, AgreeWithAScanOfAllCasesAtEachTime) {
  for (const RandomForm& form : RandomForms()) {
    for (unsigned seed = 1; seed <= 4; ++seed) {
      SCOPED_TRACE(std::string(form.What) + ", seed " + std::to_string(seed));
      std::vector<testing::TestColumn> columns = RandomSurvivalColumns(seed, 80, form.MeetingStrata);
      // The last case in time is an event, so that none is left out.
      const double last[] = {0, 99, 1, 0, 0, 3, 1};
      for (std::size_t c = 0; c < columns.size(); ++c) columns[c].Values.push_back(last[c]);
      TestAnalysis analysis(columns);
      DefineForm(analysis, form);
      analysis.PrepareFit();
      const TransformedTimes times = KaplanMeierTimes(analysis.Data());
      const TransformedTimes expected = ScanKaplanMeier(analysis.Data(), form.Intervals);
      EXPECT_EQ(times.Rows, expected.Rows);
      ASSERT_EQ(times.Values.size(), expected.Values.size());
      for (std::size_t k = 0; k < times.Values.size(); ++k) {
        EXPECT_NEAR(times.Values[k], expected.Values[k], 1e-14) << k;
      }
    }
  }
}

TEST(RankTimes, TiedEventsShareTheirMeanRank) {
  Cases cases({4, 2, 2, 1, 3, 4, 4}, {1, 1, 1, 1, 0, 1, 1});
  const TransformedTimes times = RankTimes(cases.Data());
  EXPECT_EQ(times.Values, (Values{1, 2.5, 2.5, 5, 5, 5}));
  EXPECT_EQ(times.Rows, (Rows{1, 2, 3, 5, 6, 7}));
}

TEST(RankTimes, CountOverAllStrata) {
  Cases cases({2, 4, 1, 3}, {1, 1, 1, 1}, {1, 1, 2, 2});
  const TransformedTimes times = RankTimes(cases.Data());
  EXPECT_EQ(times.Values, (Values{1, 2, 3, 4}));
  EXPECT_EQ(times.Rows, (Rows{3, 1, 4, 2}));
}

TEST(RankTimes, TiesReachFifteenUnits) {
  Cases cases({3.0, UnitsAbove(3.0, 15), UnitsAbove(3.0, 31)}, {1, 1, 1});
  EXPECT_EQ(RankTimes(cases.Data()).Values, (Values{1.5, 1.5, 3}));
}

}  // namespace
}  // namespace orv
