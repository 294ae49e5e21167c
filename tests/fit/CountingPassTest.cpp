// The pass over intervals against its definition, and who is at risk when.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <string>
#include <vector>

#include "fit/CountingPass.h"
#include "fit/PassCases.h"
#include "support/AllocationHook.h"
#include "support/FailingAllocations.h"

namespace orv {
namespace {

using testing::EvaluateReference;
using testing::ExpectAgrees;
using testing::ExpectNear;
using testing::LeadingColumns;
using testing::PassCases;
using testing::PassValue;
using testing::RandomIntervals;
using testing::RandomVector;
using testing::ReferenceCase;
using testing::RunPass;
using testing::ToReal;

PassValue EvaluateIntervals(const PassCases& cases, bool efron, bool strata, const std::vector<double>& beta) {
  HeapOnlyHost host;
  CountingPass pass(host, cases.Table(), cases.Count(), cases.Columns(strata), cases.StartColumn(),
                    LeadingColumns(cases.Parameters()), efron ? 1 : 0);
  return RunPass(pass, cases.Parameters(), beta);
}

// The log likelihood at zero: minus the logarithms of the sizes of the risk sets.
double NullLogLik(const std::vector<ReferenceCase>& cases, bool strata = false) {
  return EvaluateIntervals(PassCases(cases), false, strata, {}).L;
}

ReferenceCase Interval(double start, double stop, bool event, double x = 0.0, double stratum = 0.0) {
  return {stop, event, 1.0, stratum, {x}, start};
}

struct Setting {
  unsigned seed;
  int subjects, p, strata;
  bool weighted;
};

const Setting kSettings[] = {
    {1, 30, 1, 1, false}, {2, 40, 3, 1, true}, {3, 60, 4, 3, true},
    {4, 60, 2, 3, false}, {5, 8, 2, 1, true},  {6, 30, 2, 30, true},
};

std::string Describe(const Setting& s, bool efron) {
  return std::string(efron ? "Efron" : "Breslow") + ", seed " + std::to_string(s.seed);
}

// The rounding of the running sums grows with the number of rows that join and leave.
TEST(CountingPass, AgreesWithTheDefinition) {
  for (const Setting& s : kSettings) {
    const PassCases cases(RandomIntervals(s.seed, s.subjects, s.p, s.strata, s.weighted));
    for (const bool efron : {false, true}) {
      for (const bool atZero : {false, true}) {
        const std::vector<double> beta =
            atZero ? std::vector<double>(static_cast<std::size_t>(s.p), 0.0) : RandomVector(s.seed + 100, s.p);
        const PassValue value = EvaluateIntervals(cases, efron, s.strata > 1, atZero ? std::vector<double>{} : beta);
        ExpectAgrees(value, EvaluateReference(cases.Cases(), ToReal(beta), efron), 1e-13 * cases.Count(),
                     Describe(s, efron) + (atZero ? ", at zero" : ""));
      }
    }
  }
}

// Half of the cases are under way at once here, and intervals hold times of every kind. The data of the other tests
// would show nothing if nobody entered late or had several rows.
TEST(CountingPass, RandomIntervalsHoldWhatTheTestsAreAbout) {
  const std::vector<ReferenceCase> cases = RandomIntervals(2, 40, 3, 1, true);
  int late = 0, tied = 0, adjacent = 0, events = 0;
  for (std::size_t i = 0; i < cases.size(); ++i) {
    late += cases[i].Start > 0.0 ? 1 : 0;
    events += cases[i].Event ? 1 : 0;
    adjacent += i > 0 && cases[i].Start == cases[i - 1].Time ? 1 : 0;
    tied += std::any_of(cases.begin(), cases.begin() + static_cast<long>(i),
                        [&](const ReferenceCase& other) {
                          return other.Event && cases[i].Event && other.Time == cases[i].Time;
                        })
                ? 1
                : 0;
  }
  EXPECT_GT(late, 20);
  EXPECT_GT(adjacent, 10);
  EXPECT_GT(tied, 10);
  EXPECT_GT(events, 20);
}

// Events at 2, 4 and 6 in risk sets of 3, 3 and 1 rows, with relative risks 2 for x = 1 at ln 2:
//   (4, 6] x 1 event, (1, 5] x 0 censored, (0, 4] x 1 event, (3, 4] x 0 censored, (0, 2] x 1 event
//   time 6: 2                        time 4: 1 + 2 + 1 = 4, mean 1/2, variance 1/4
//   time 2: (1,5] (0,4] (0,2]: 1 + 2 + 2 = 5, mean 4/5, variance 4/25
TEST(CountingPass, MatchesAPassComputedByHand) {
  const std::vector<ReferenceCase> cases = {Interval(4, 6, true, 1), Interval(1, 5, false, 0), Interval(0, 4, true, 1),
                                            Interval(3, 4, false, 0), Interval(0, 2, true, 1)};
  for (const bool efron : {false, true}) {
    const PassValue value = EvaluateIntervals(PassCases(cases), efron, false, {std::log(2.0)});
    EXPECT_NEAR(value.L, 3 * std::log(2.0) - std::log(2) - std::log(4) - std::log(5), 1e-14);
    EXPECT_NEAR(value.U[0], 3 - 1.0 - 1.0 / 2 - 4.0 / 5, 1e-14);
    EXPECT_NEAR(value.H(0, 0), 1.0 / 4 + 4.0 / 25, 1e-14);
  }
}

// ---- Who is at risk -------------------------------------------------------------------------------------------------

TEST(CountingPass, RowIsAtRiskAfterItsStartUpToItsStop) {
  struct {
    const char* what;
    double start, stop;
    double atRisk;
  } const cases[] = {
      {"holds the time", 3, 7, 2},
      {"stops at the time", 3, 5, 2},
      {"starts at the time", 5, 7, 1},
      {"lies below", 1, 4, 1},
      {"lies above", 6, 7, 1},
      {"starts just before the time", std::nextafter(5.0, 0.0), 7, 2},
      {"starts just after the time", std::nextafter(5.0, 9.0), 7, 1},
  };
  for (const auto& c : cases) {
    EXPECT_NEAR(NullLogLik({Interval(0, 5, true), Interval(c.start, c.stop, false)}), -std::log(c.atRisk), 1e-15)
        << c.what;
  }
}

TEST(CountingPass, AdjacentIntervalsOfASubjectCountOnce) {
  const std::vector<ReferenceCase> split = {Interval(0, 3, true, 1), Interval(0, 3, false, 0), Interval(3, 5, true, 0),
                                            Interval(0, 5, false, 1)};
  // At 3: three subjects through their first rows; at 5: the second row of one, and another subject.
  EXPECT_NEAR(NullLogLik(split), -std::log(3) - std::log(2), 1e-15);
}

// The interval that holds the time gives the covariate: x = 4 up to 3, x = 1 after.
TEST(CountingPass, CovariateIsThatOfTheIntervalAtTheTime) {
  const std::vector<ReferenceCase> cases = {Interval(0, 3, false, 4), Interval(3, 6, false, 1), Interval(0, 2, true, 0),
                                            Interval(0, 5, true, 0)};
  const PassValue value = EvaluateIntervals(PassCases(cases), false, false, {});
  // At 2 the mean is 4/3, at 5 it is 1/2.
  EXPECT_NEAR(value.U[0], -4.0 / 3 - 1.0 / 2, 1e-15);
}

TEST(CountingPass, LateEntryIsNotAtRiskBeforeItsEntry) {
  EXPECT_NEAR(NullLogLik({Interval(0, 2, true), Interval(2, 9, true), Interval(0, 9, false)}),
              -std::log(2) - std::log(2), 1e-15);
}

TEST(CountingPass, NewStratumStartsWithNobody) {
  const std::vector<ReferenceCase> cases = {Interval(0, 5, true, 0, 1), Interval(0, 8, false, 0, 1),
                                            Interval(0, 4, true, 0, 2), Interval(0, 9, false, 0, 2),
                                            Interval(3, 6, true, 0, 2)};
  EXPECT_NEAR(NullLogLik(cases, true), -std::log(2) - std::log(3) - std::log(2), 1e-14);
}

// A leaver of a later stratum must not be taken out of an earlier one, where it never was.
TEST(CountingPass, StartsOfAnotherStratumTakeNobodyOut) {
  const std::vector<ReferenceCase> cases = {Interval(0, 2, true, 0, 1), Interval(1, 3, false, 0, 1),
                                            Interval(7, 9, true, 0, 2), Interval(8, 9, false, 0, 2)};
  EXPECT_NEAR(NullLogLik(cases, true), -std::log(2) - std::log(2), 1e-15);
}

TEST(CountingPass, StrataAddUp) {
  const std::vector<ReferenceCase> cases = RandomIntervals(14, 60, 2, 3, true);
  const std::vector<double> beta = {0.7, -0.4};
  for (const bool efron : {false, true}) {
    PassValue sum{0.0, {0.0, 0.0}, TestMatrix(2, 2)};
    for (const double stratum : {0.0, 1.0, 2.0}) {
      std::vector<ReferenceCase> part;
      std::copy_if(cases.begin(), cases.end(), std::back_inserter(part),
                   [&](const ReferenceCase& one) { return one.Stratum == stratum; });
      const PassValue value = EvaluateIntervals(PassCases(part), efron, false, beta);
      sum.L += value.L;
      for (std::size_t j = 0; j < 2; ++j) sum.U[j] += value.U[j];
      for (int j = 0; j < 2; ++j) {
        for (int l = 0; l < 2; ++l) sum.H(j, l) += value.H(j, l);
      }
    }
    ExpectNear(EvaluateIntervals(PassCases(cases), efron, true, beta), sum, 1e-11, efron ? "Efron" : "Breslow");
  }
}

// What all intervals share cancels out of score and information, to the last digit.
TEST(CountingPass, ColumnThatIsTheSameInAllRowsGivesZeros) {
  std::vector<ReferenceCase> cases = RandomIntervals(3, 60, 2, 3, true);
  for (ReferenceCase& one : cases) one.X[1] = 0.1;
  for (const bool efron : {false, true}) {
    const PassValue value = EvaluateIntervals(PassCases(cases), efron, true, {0.7, 3.0});
    EXPECT_EQ(value.U[1], 0.0);
    EXPECT_EQ(value.H(0, 1), 0.0);
    EXPECT_EQ(value.H(1, 1), 0.0);
  }
}

// The rows of the later block have left, all of them, before the earlier block begins. Their relative risks are 1e12
// times those of the earlier block, so what rounding leaves of them would show.
TEST(CountingPass, EmptyRiskSetLeavesNothingBehind) {
  const std::vector<ReferenceCase> early = {Interval(0, 1, true, 0.5), Interval(0, 2, true, 0.25),
                                            Interval(0, 3, false, 0.125)};
  std::vector<ReferenceCase> both = early;
  for (int i = 0; i < 20; ++i) both.push_back(Interval(5 + 0.1 * i, 8 + 0.3 * i, false, 27.0 + 0.03 * i));
  const PassValue alone = EvaluateIntervals(PassCases(early), false, false, {1.0});
  const PassValue after = EvaluateIntervals(PassCases(both), false, false, {1.0});
  EXPECT_EQ(alone.L, after.L);
  EXPECT_EQ(alone.U, after.U);
  EXPECT_EQ(alone.H, after.H);
}

// The second row's risk is up to e^40 times that of the others, and its share in the sums goes with it.
TEST(CountingPass, RowOfAVeryHighRiskTakesNoDigitsWithIt) {
  for (const double x : {5.0, 20.0, 30.0, 40.0}) {
    const PassCases cases({Interval(0, 11, false, 0.25), Interval(5, 10, true, x), Interval(0, 3, true, 0.5),
                           Interval(1, 2, true, -0.3)});
    for (const bool efron : {false, true}) {
      ExpectAgrees(EvaluateIntervals(cases, efron, false, {1.0}),
                   EvaluateReference(cases.Cases(), ToReal({1.0}), efron), 1e-11, std::to_string(x));
    }
  }
}

TEST(CountingPass, EventsInRiskSetsOfOneAddNothing) {
  const PassValue value = EvaluateIntervals(
      PassCases({Interval(0, 1, true, 3), Interval(1, 2, true, 5), Interval(4, 6, true, 2)}), true, false, {0.5});
  EXPECT_NEAR(value.L, 0.0, 1e-14);
  EXPECT_NEAR(value.U[0], 0.0, 1e-14);
  EXPECT_NEAR(value.H(0, 0), 0.0, 1e-13);
}

// ---- What changes nothing -------------------------------------------------------------------------------------------

TEST(CountingPass, IntervalsFromBeforeTheFirstStopAreSurvivalTimes) {
  std::vector<ReferenceCase> cases = testing::RandomCases(21, 70, 3, 6, 3, true);
  const std::vector<double> beta = RandomVector(22, 3);
  for (const bool efron : {false, true}) {
    const PassValue expected = testing::Evaluate(PassCases(cases), efron, true, beta);
    for (ReferenceCase& one : cases) one.Start = 0.0;
    const PassValue value = EvaluateIntervals(PassCases(cases), efron, true, beta);
    EXPECT_EQ(value.L, expected.L);
    EXPECT_EQ(value.U, expected.U);
    EXPECT_EQ(value.H, expected.H);
  }
}

TEST(CountingPass, SplittingARowChangesNothing) {
  const std::vector<ReferenceCase> whole = RandomIntervals(23, 40, 2, 2, true);
  TestRandom random(24);
  std::vector<ReferenceCase> split;
  for (const ReferenceCase& one : whole) {
    double start = one.Start;
    for (const double share : {0.2, 0.5, 0.9}) {
      if (random.Integer(2) == 0) continue;
      ReferenceCase part = one;
      part.Start = start;
      start = part.Time = one.Start + share * (one.Time - one.Start);
      part.Event = false;
      split.push_back(part);
    }
    split.push_back(one);
    split.back().Start = start;
  }
  ASSERT_GT(split.size(), whole.size() + 20);
  for (const bool efron : {false, true}) {
    ExpectNear(EvaluateIntervals(PassCases(whole), efron, true, {0.8, -0.5}),
               EvaluateIntervals(PassCases(split), efron, true, {0.8, -0.5}), 1e-11, efron ? "Efron" : "Breslow");
  }
}

TEST(CountingPass, SecondPassStartsFromNothing) {
  const PassCases cases(RandomIntervals(25, 40, 2, 3, true));
  HeapOnlyHost host;
  CountingPass pass(host, cases.Table(), cases.Count(), cases.Columns(true), cases.StartColumn(), LeadingColumns(2), 1);
  const PassValue first = RunPass(pass, 2, {0.5, 1.0});
  RunPass(pass, 2, {-2.0, 3.0});
  RunPass(pass, 2, {});
  const PassValue again = RunPass(pass, 2, {0.5, 1.0});
  EXPECT_EQ(first.L, again.L);
  EXPECT_EQ(first.U, again.U);
  EXPECT_EQ(first.H, again.H);
}

TEST(CountingPass, ActiveColumnsAreTakenInTheirOrder) {
  const std::vector<ReferenceCase> cases = RandomIntervals(26, 40, 4, 1, true);
  std::vector<ReferenceCase> chosen = cases;
  for (ReferenceCase& one : chosen) one.X = {one.X[3], one.X[1]};
  const PassCases table(cases);
  HeapOnlyHost host;
  CountingPass pass(host, table.Table(), table.Count(), table.Columns(false), table.StartColumn(), {3, 1}, 1);
  const PassValue value = RunPass(pass, 2, {0.4, -0.8});
  const PassValue expected = EvaluateIntervals(PassCases(chosen), true, false, {0.4, -0.8});
  EXPECT_EQ(value.L, expected.L);
  EXPECT_EQ(value.U, expected.U);
  EXPECT_EQ(value.H, expected.H);
}

// ---- Memory and failures --------------------------------------------------------------------------------------------

TEST(CountingPass, AllocatesNothingInAPass) {
  const PassCases cases(RandomIntervals(27, 100, 3, 3, true));
  HeapOnlyHost host;
  CountingPass pass(host, cases.Table(), cases.Count(), cases.Columns(true), cases.StartColumn(), {2, 0}, 1);
  std::vector<double> H(4);
  double* rows[] = {&H[0], &H[2]};
  std::vector<double> U(2);
  const std::vector<double> beta = {0.1, 0.2};
  const int requests = host.Requests();
  const long before = testing::AllocationCount();
  pass.Evaluate(beta.data(), U.data(), rows);
  EXPECT_EQ(testing::AllocationCount(), before);
  EXPECT_EQ(host.Requests(), requests);
}

TEST(CountingPass, FailsWhenMemoryIsOut) {
  const PassCases cases(RandomIntervals(28, 20, 2, 2, true));
  testing::ExpectFailureAtEveryAllocation([&](HeapOnlyHost& host) {
    return CountingPass(host, cases.Table(), cases.Count(), cases.Columns(true), cases.StartColumn(), LeadingColumns(2),
                        1)
        .Failed();
  });
}

TEST(CountingPass, LeavesAFlagWhenANumberCannotBeComputed) {
  struct {
    const char* what;
    double x;
    int flag;
  } const cases[] = {{"exponential too large", 1000.0, FE_OVERFLOW},
                     {"all relative risks underflow", -1000.0, FE_DIVBYZERO}};
  for (const auto& c : cases) {
    const PassCases table({Interval(0, 1, true, c.x), Interval(0, 2, true, c.x)});
    std::feclearexcept(FE_ALL_EXCEPT);
    EvaluateIntervals(table, false, false, {1.0});
    EXPECT_NE(std::fetestexcept(c.flag), 0) << c.what;
    std::feclearexcept(FE_ALL_EXCEPT);
  }
}

}  // namespace
}  // namespace orv
