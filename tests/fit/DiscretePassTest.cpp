// The passes under the discrete likelihood, over survival times and over intervals, against the sum over all subsets.
#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "fit/DiscreteCountingPass.h"
#include "fit/DiscreteSurvivalPass.h"
#include "fit/PassCases.h"
#include "fit/ReferenceDiscrete.h"
#include "support/FailingAllocations.h"

namespace orv {
namespace {

using testing::EvaluateDiscreteReference;
using testing::ExpectAgrees;
using testing::ExpectNear;
using testing::LeadingColumns;
using testing::PassCases;
using testing::PassValue;
using testing::RandomCases;
using testing::RandomIntervals;
using testing::RandomVector;
using testing::Real;
using testing::ReferenceCase;
using testing::ReferenceValue;
using testing::RunPass;
using testing::ToReal;

enum class Form { Survival, Intervals };
constexpr Form kForms[] = {Form::Survival, Form::Intervals};

std::string Name(Form form) {
  return form == Form::Survival ? "survival times" : "intervals";
}

std::unique_ptr<PartialLikelihood> MakePass(Form form,
                                            Host& host,
                                            const PassCases& cases,
                                            bool strata,
                                            const std::vector<int>& columns) {
  if (form == Form::Survival) {
    return std::make_unique<DiscreteSurvivalPass>(host, cases.Table(), cases.Count(), cases.Columns(strata), columns);
  }
  return std::make_unique<DiscreteCountingPass>(host, cases.Table(), cases.Count(), cases.Columns(strata),
                                                cases.StartColumn(), columns);
}

PassValue EvaluateDiscrete(Form form, const PassCases& cases, bool strata, const std::vector<double>& beta) {
  HeapOnlyHost host;
  return RunPass(*MakePass(form, host, cases, strata, LeadingColumns(cases.Parameters())), cases.Parameters(), beta);
}

std::vector<double> Zero(int p) {
  return std::vector<double>(static_cast<std::size_t>(p), 0.0);
}

struct Setting {
  unsigned seed;
  int n, p, times, strata;
};

// Small risk sets, since the definition costs the number of subsets; the largest group has a third of them or so.
const Setting kSettings[] = {{1, 16, 1, 4, 1}, {2, 18, 3, 5, 1}, {3, 30, 2, 4, 3},  {4, 14, 4, 2, 1},
                             {5, 12, 2, 1, 1}, {6, 20, 2, 9, 2}, {7, 12, 2, 3, 12}, {8, 17, 3, 1000, 1}};

std::string Describe(Form form, const Setting& s, bool atZero) {
  return Name(form) + ", seed " + std::to_string(s.seed) + (atZero ? ", at zero" : "");
}

// Rows with a survival time are intervals from the beginning, for both passes.
TEST(DiscretePasses, AgreeWithTheDefinitionOnSurvivalTimes) {
  for (const Setting& s : kSettings) {
    const PassCases cases(RandomCases(s.seed, s.n, s.p, s.times, s.strata, false));
    for (const bool atZero : {false, true}) {
      const std::vector<double> beta = atZero ? Zero(s.p) : RandomVector(s.seed + 100, s.p);
      const ReferenceValue expected = EvaluateDiscreteReference(cases.Cases(), ToReal(beta));
      for (const Form form : kForms) {
        const PassValue value = EvaluateDiscrete(form, cases, s.strata > 1, atZero ? std::vector<double>{} : beta);
        ExpectAgrees(value, expected, 1e-13 * s.n, Describe(form, s, atZero));
      }
    }
  }
}

TEST(DiscretePasses, AgreeWithTheDefinitionOnIntervals) {
  for (const Setting& s : kSettings) {
    const PassCases cases(RandomIntervals(s.seed + 40, s.n, s.p, s.strata, false));
    for (const bool atZero : {false, true}) {
      const std::vector<double> beta = atZero ? Zero(s.p) : RandomVector(s.seed + 100, s.p);
      const PassValue value =
          EvaluateDiscrete(Form::Intervals, cases, s.strata > 1, atZero ? std::vector<double>{} : beta);
      ExpectAgrees(value, EvaluateDiscreteReference(cases.Cases(), ToReal(beta)), 1e-13 * cases.Count(),
                   Describe(Form::Intervals, s, atZero));
    }
  }
}

// Relative risks 2, 1 and 1 at ln 2, two events: Q = 2 + 2 + 1. The subsets have x sums 1, 1 and 0.
TEST(DiscretePasses, MatchAPassComputedByHand) {
  const PassCases cases({{5.0, true, 1.0, 0.0, {1.0}}, {5.0, true, 1.0, 0.0, {0.0}}, {5.0, false, 1.0, 0.0, {0.0}}});
  for (const Form form : kForms) {
    const PassValue value = EvaluateDiscrete(form, cases, false, {std::log(2.0)});
    EXPECT_NEAR(value.L, std::log(2.0) - std::log(5.0), 1e-15) << Name(form);
    EXPECT_NEAR(value.U[0], 1 - 4.0 / 5, 1e-15) << Name(form);
    EXPECT_NEAR(value.H(0, 0), 4.0 / 5 - 16.0 / 25, 1e-15) << Name(form);
  }
}

TEST(DiscretePasses, AtZeroAGroupTakesTheNumberOfSubsets) {
  for (const Form form : kForms) {
    for (const int d : {1, 2, 3, 7}) {
      std::vector<ReferenceCase> cases(10, ReferenceCase{7.0, false, 1.0, 0.0, {0.3}});
      for (int i = 0; i < d; ++i) cases[static_cast<std::size_t>(i)] = {5.0, true, 1.0, 0.0, {0.1 * i}};
      double subsets = 1.0;
      for (int k = 1; k <= d; ++k) subsets = subsets * (10 - d + k) / k;
      EXPECT_NEAR(EvaluateDiscrete(form, PassCases(cases), false, {}).L, -std::log(subsets), 1e-14)
          << Name(form) << ", d = " << d;
    }
  }
}

// One subset only: the group says nothing about the parameters.
TEST(DiscretePasses, GroupOfTheWholeRiskSetAddsNothing) {
  for (const Form form : kForms) {
    for (const int size : {1, 2, 5, 40}) {
      TestRandom random(static_cast<unsigned>(size));
      std::vector<ReferenceCase> cases;
      for (int i = 0; i < size; ++i) cases.push_back({3.0, true, 1.0, 0.0, {random.Value(), random.Value()}});
      const PassValue value = EvaluateDiscrete(form, PassCases(cases), false, {0.7, -1.1});
      const std::string what = Name(form) + ", " + std::to_string(size) + " rows";
      EXPECT_NEAR(value.L, 0.0, 1e-13) << what;
      for (const double u : value.U) EXPECT_NEAR(u, 0.0, 1e-12) << what;
      EXPECT_LT(Norm(value.H), 1e-11) << what;
    }
  }
}

TEST(DiscretePasses, AreBreslowWithoutTies) {
  std::vector<ReferenceCase> cases = RandomCases(11, 70, 3, 10, 3, false);
  for (std::size_t i = 0; i < cases.size(); ++i) cases[i].Time = 1.0 + static_cast<double>(i) * 0.25;
  const PassCases table(cases);
  for (const std::vector<double>& beta : {std::vector<double>{}, RandomVector(12, 3)}) {
    const PassValue breslow = testing::Evaluate(table, false, true, beta);
    for (const Form form : kForms) ExpectNear(EvaluateDiscrete(form, table, true, beta), breslow, 1e-11, Name(form));
  }
}

TEST(DiscretePasses, CensoredCaseStaysInTheRiskSetOfItsTime) {
  for (const Form form : kForms) {
    const std::vector<ReferenceCase> cases = {
        {5.0, true, 1.0, 0.0, {1.0}}, {5.0, true, 1.0, 0.0, {1.0}}, {5.0, false, 1.0, 0.0, {0.0}}};
    EXPECT_NEAR(EvaluateDiscrete(form, PassCases(cases), false, {}).L, -std::log(3.0), 1e-15) << Name(form);
    std::vector<ReferenceCase> earlier = cases;
    earlier[2].Time = 4.0;
    EXPECT_NEAR(EvaluateDiscrete(form, PassCases(earlier), false, {}).L, 0.0, 1e-15) << Name(form);
  }
}

// Rows of stratum 2 are no members of the subsets of stratum 1, nor its events at one time with them.
TEST(DiscretePasses, NewStratumStartsWithNobody) {
  const PassCases cases({{5.0, true, 1.0, 1.0, {1.0}},
                         {5.0, true, 1.0, 1.0, {2.0}},
                         {6.0, false, 1.0, 1.0, {0.0}},
                         {5.0, true, 1.0, 2.0, {1.0}},
                         {5.0, true, 1.0, 2.0, {0.0}},
                         {7.0, false, 1.0, 2.0, {3.0}},
                         {8.0, true, 1.0, 2.0, {3.0}}});
  for (const Form form : kForms) {
    const PassValue value = EvaluateDiscrete(form, cases, true, {0.0});
    EXPECT_NEAR(value.L, -std::log(3.0) - std::log(6.0), 1e-14) << Name(form);
    EXPECT_NEAR(value.U[0], (3 - 2 * 1.0) + (1 - 2 * 7.0 / 4), 1e-14) << Name(form);
  }
}

// The stratum borders cut a group of one time in two: without the cut the numerator would run on.
TEST(DiscretePasses, TiedTimesOnBothSidesOfABorderAreTwoGroups) {
  const PassCases cases({{5.0, true, 1.0, 1.0, {1.0}}, {5.0, true, 1.0, 2.0, {4.0}}, {6.0, false, 1.0, 2.0, {2.0}}});
  for (const Form form : kForms) {
    const PassValue value = EvaluateDiscrete(form, cases, true, {0.0});
    EXPECT_NEAR(value.L, -std::log(2.0), 1e-15) << Name(form);
    EXPECT_NEAR(value.U[0], 4 - 3.0, 1e-15) << Name(form);
  }
}

// Weights are part of the relative risks where an exponential is taken.
TEST(DiscretePasses, WeightIsPartOfTheRelativeRisk) {
  const PassCases cases({{1.0, true, 2.0, 0.0, {1.0}}, {2.0, false, 3.0, 0.0, {0.0}}});
  for (const Form form : kForms) {
    EXPECT_NEAR(EvaluateDiscrete(form, cases, false, {0.0}).L, std::log(2.0) - std::log(5.0), 1e-15) << Name(form);
    EXPECT_NEAR(EvaluateDiscrete(form, cases, false, {}).L, -std::log(2.0), 1e-15) << Name(form);
  }
}

// ---- Large groups ---------------------------------------------------------------------------------------------------

// With a covariate of 0 and 1 the number of events with 1 has the noncentral hypergeometric distribution.
ReferenceValue Hypergeometric(int ones, int zeros, int d, int observed, Real b) {
  std::vector<Real> logTerms;
  Real largest = -1e300L;
  for (int k = 0; k <= d; ++k) {
    const auto logChoose = [](int m, int j) {
      return std::lgamma(m + 1.0L) - std::lgamma(j + 1.0L) - std::lgamma(m - j + 1.0L);
    };
    logTerms.push_back(logChoose(ones, k) + logChoose(zeros, d - k) + b * k);
    largest = std::max(largest, logTerms.back());
  }
  Real total = 0.0L, mean = 0.0L, square = 0.0L;
  for (int k = 0; k <= d; ++k) {
    const Real term = std::exp(logTerms[static_cast<std::size_t>(k)] - largest);
    total += term;
    mean += term * k;
    square += term * k * k;
  }
  mean /= total;
  ReferenceValue value;
  value.L = b * observed - largest - std::log(total);
  value.U = {observed - mean};
  value.H = {{square / total - mean * mean}};
  return value;
}

TEST(DiscretePasses, ThirtyEventsOfFiveHundredHaveTheHypergeometricLikelihood) {
  std::vector<ReferenceCase> cases;
  for (int i = 0; i < 500; ++i) {
    const bool event = i % 16 == 0 && i < 480;
    cases.push_back({event ? 2.0 : 3.0, event, 1.0, 0.0, {i % 5 < 2 ? 1.0 : 0.0}});
  }
  int observed = 0, events = 0;
  for (const ReferenceCase& one : cases) {
    events += one.Event ? 1 : 0;
    observed += one.Event && one.X[0] == 1.0 ? 1 : 0;
  }
  ASSERT_EQ(events, 30);
  for (const Form form : kForms) {
    for (const double b : {0.0, 0.8, -1.5}) {
      ExpectAgrees(EvaluateDiscrete(form, PassCases(cases), false, {b}), Hypergeometric(200, 300, 30, observed, b),
                   1e-11, Name(form) + ", parameter " + std::to_string(b));
    }
  }
}

// Its sum is that of one subset. The sums of lower orders, which nothing reads, would leave the range of a double.
TEST(DiscretePasses, TwelveHundredEventsAtOneTimeDoNotOverflow) {
  std::vector<ReferenceCase> cases;
  for (int i = 0; i < 1200; ++i) cases.push_back({3.0, true, 1.0, 0.0, {(i - 599.5) / 600.0}});
  for (const Form form : kForms) {
    for (const std::vector<double>& beta : {std::vector<double>{}, std::vector<double>{0.5}}) {
      std::feclearexcept(FE_ALL_EXCEPT);
      const PassValue value = EvaluateDiscrete(form, PassCases(cases), false, beta);
      EXPECT_EQ(std::fetestexcept(FE_OVERFLOW | FE_INVALID | FE_DIVBYZERO), 0) << Name(form);
      EXPECT_NEAR(value.L, 0.0, 1e-10) << Name(form);
      EXPECT_NEAR(value.U[0], 0.0, 1e-10) << Name(form);
      EXPECT_NEAR(value.H(0, 0), 0.0, 1e-8) << Name(form);
    }
  }
}

// The number of subsets of 600 of 1200 lies beyond the range of a double.
TEST(DiscretePasses, TooManySubsetsLeaveAFlag) {
  std::vector<ReferenceCase> cases;
  for (int i = 0; i < 1200; ++i) cases.push_back({3.0, i < 600, 1.0, 0.0, {i / 1200.0}});
  for (const Form form : kForms) {
    std::feclearexcept(FE_ALL_EXCEPT);
    EvaluateDiscrete(form, PassCases(cases), false, {});
    EXPECT_NE(std::fetestexcept(FE_OVERFLOW), 0) << Name(form);
    std::feclearexcept(FE_ALL_EXCEPT);
  }
}

// ---- The risk set of a lone event over intervals --------------------------------------------------------------------

TEST(DiscretePasses, LoneEventsAndGroupsShareOneRiskSet) {
  const auto interval = [](double start, double stop, bool event, double x) {
    return ReferenceCase{stop, event, 1.0, 0.0, {x}, start};
  };
  // At 6: one row; at 4: {6, 5, 4, 4} with two events; at 2: {5, 4, 2, 2} with one.
  const PassCases cases({interval(3, 6, true, 1), interval(1, 5, false, 2), interval(0, 4, true, 3),
                         interval(3, 4, true, 0), interval(0, 2, true, 1), interval(1, 2, false, 5)});
  const PassValue value = EvaluateDiscrete(Form::Intervals, cases, false, {0.0});
  EXPECT_NEAR(value.L, -std::log(6.0) - std::log(4.0), 1e-14);
  EXPECT_NEAR(value.U[0], 0.0 + (3 - 2 * 6.0 / 4) + (1 - 11.0 / 4), 1e-14);
}

TEST(DiscretePasses, EmptyRiskSetLeavesNothingBehind) {
  const std::vector<ReferenceCase> early = {
      {1.0, true, 1.0, 0.0, {0.5}, 0.0}, {2.0, true, 1.0, 0.0, {0.25}, 0.0}, {3.0, false, 1.0, 0.0, {0.125}, 0.0}};
  std::vector<ReferenceCase> both = early;
  for (int i = 0; i < 20; ++i) both.push_back({8 + 0.3 * i, i % 4 == 0, 1.0, 0.0, {27.0 + 0.03 * i}, 5 + 0.1 * i});
  const PassValue alone = EvaluateDiscrete(Form::Intervals, PassCases(early), false, {1.0});
  std::vector<ReferenceCase> late(both.begin() + 3, both.end());
  const PassValue lateAlone = EvaluateDiscrete(Form::Intervals, PassCases(late), false, {1.0});
  const PassValue value = EvaluateDiscrete(Form::Intervals, PassCases(both), false, {1.0});
  EXPECT_NEAR(value.L, alone.L + lateAlone.L, 1e-11);
  EXPECT_NEAR(value.H(0, 0), alone.H(0, 0) + lateAlone.H(0, 0), 1e-11);
}

// ---- One object, many passes ----------------------------------------------------------------------------------------

TEST(DiscretePasses, SecondPassStartsFromNothing) {
  const PassCases cases(RandomIntervals(25, 30, 2, 3, false));
  for (const Form form : kForms) {
    HeapOnlyHost host;
    const auto pass = MakePass(form, host, cases, true, LeadingColumns(2));
    const PassValue first = RunPass(*pass, 2, {0.5, 1.0});
    RunPass(*pass, 2, {-2.0, 3.0});
    RunPass(*pass, 2, {});
    const PassValue again = RunPass(*pass, 2, {0.5, 1.0});
    EXPECT_EQ(first.L, again.L) << Name(form);
    EXPECT_EQ(first.U, again.U) << Name(form);
    EXPECT_EQ(first.H, again.H) << Name(form);
  }
}

TEST(DiscretePasses, ActiveColumnsAreTakenInTheirOrder) {
  const std::vector<ReferenceCase> cases = RandomIntervals(26, 20, 4, 1, false);
  std::vector<ReferenceCase> chosen = cases;
  for (ReferenceCase& one : chosen) one.X = {one.X[3], one.X[1]};
  const PassCases table(cases);
  for (const Form form : kForms) {
    HeapOnlyHost host;
    const PassValue value = RunPass(*MakePass(form, host, table, false, {3, 1}), 2, {0.4, -0.8});
    const PassValue expected = EvaluateDiscrete(form, PassCases(chosen), false, {0.4, -0.8});
    EXPECT_EQ(value.L, expected.L) << Name(form);
    EXPECT_EQ(value.U, expected.U) << Name(form);
    EXPECT_EQ(value.H, expected.H) << Name(form);
  }
}

TEST(DiscretePasses, HaveALikelihoodWithoutColumns) {
  std::vector<ReferenceCase> cases = RandomCases(27, 14, 0, 4, 1, false);
  for (const Form form : kForms) {
    ExpectAgrees(EvaluateDiscrete(form, PassCases(cases), false, {}), EvaluateDiscreteReference(cases, {}), 1e-12,
                 Name(form));
  }
}

TEST(DiscretePasses, FailWhenMemoryIsOut) {
  const PassCases cases(RandomIntervals(28, 20, 2, 2, false));
  for (const Form form : kForms) {
    SCOPED_TRACE(Name(form));
    testing::ExpectFailureAtEveryAllocation(
        [&](HeapOnlyHost& host) { return MakePass(form, host, cases, true, LeadingColumns(2))->Failed(); });
  }
}

}  // namespace
}  // namespace orv
