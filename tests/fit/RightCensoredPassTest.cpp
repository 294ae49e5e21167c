#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <string>
#include <vector>

#include "fit/PassCases.h"
#include "fit/RightCensoredPass.h"
#include "support/AllocationHook.h"
#include "support/FailingAllocations.h"

namespace orv {
namespace {

using testing::Evaluate;
using testing::EvaluateReference;
using testing::LeadingColumns;
using testing::PassCases;
using testing::PassValue;
using testing::RandomCases;
using testing::Real;
using testing::RealVector;
using testing::ReferenceCase;
using testing::ReferenceValue;
using testing::RunPass;

const double kLn2 = std::log(2.0);

std::string Name(bool efron) {
  return efron ? "Efron" : "Breslow";
}

// Two tied events, a censored case at their time, an event before and an event after. The relative risks at ln 2 are
// 2 for x = 1 and 1 for x = 0, so all sums are small whole numbers.
std::vector<ReferenceCase> FiveCases() {
  return {{1.0, true, 1.0, 0.0, {0.0}},
          {2.0, true, 1.0, 0.0, {1.0}},
          {2.0, true, 1.0, 0.0, {1.0}},
          {2.0, false, 1.0, 0.0, {0.0}},
          {3.0, true, 1.0, 0.0, {0.0}}};
}

std::vector<ReferenceCase> FiveWeightedCases() {
  std::vector<ReferenceCase> cases = FiveCases();
  const std::vector<double> weights = {0.5, 3.0, 1.0, 2.0, 1.0};
  for (std::size_t i = 0; i < cases.size(); ++i) cases[i].Weight = weights[i];
  return cases;
}

std::vector<ReferenceCase> InTwoStrata() {
  std::vector<ReferenceCase> cases = FiveCases();
  for (ReferenceCase& one : cases) one.Stratum = 1.0;
  for (ReferenceCase one : FiveWeightedCases()) {
    one.Stratum = 2.0;
    cases.push_back(one);
  }
  return cases;
}

struct HandComputed {
  const char* what;
  std::vector<ReferenceCase> cases;
  bool efron;
  bool strata;
  std::vector<double> beta;  // empty: zero
  double L;
  double U;
  double H;
};

// Sums at ln 2, time by time from the last. Unweighted:
//   time 3: S0 = 1                          log 1,           mean 0
//   time 2: S0 = 2 + 2 + 1 + 1 = 6          log 6,           mean 2/3, variance 2/9
//           less half of the events: 4      log 4,           mean 1/2, variance 1/4   (Efron's second term)
//   time 1: S0 = 7                          log 7,           mean 4/7, variance 12/49
// Weighted:
//   time 3: S0 = 1
//   time 2: S0 = 1 + 2 + 6 + 2 = 11         log 11,          mean 8/11, variance 24/121, mean weight 2
//           less half of the events: 7      log 7,           mean 4/7,  variance 12/49
//   time 1: S0 = 11.5, weight 1/2           log 11.5,        mean 16/23, variance 112/529
std::vector<HandComputed> HandComputedPasses() {
  const std::vector<double> atLn2 = {kLn2};
  const double breslowL = 2 * kLn2 - 2 * std::log(6) - std::log(7);
  const double breslowU = 2.0 / 21;
  const double breslowH = 2.0 * 2 / 9 + 12.0 / 49;
  const double efronL = 2 * kLn2 - std::log(6) - std::log(4) - std::log(7);
  const double efronU = 11.0 / 42;
  const double efronH = 2.0 / 9 + 1.0 / 4 + 12.0 / 49;
  const double lastL = -0.5 * std::log(11.5);
  const double lastU = -0.5 * 16 / 23;
  const double lastH = 0.5 * 112 / 529;
  const double weightedBreslowL = 4 * kLn2 - 4 * std::log(11) + lastL;
  const double weightedBreslowU = 4 - 4.0 * 8 / 11 + lastU;
  const double weightedBreslowH = 4.0 * 24 / 121 + lastH;
  const double weightedEfronL = 4 * kLn2 - 2 * std::log(11) - 2 * std::log(7) + lastL;
  const double weightedEfronU = 4 - 2.0 * 8 / 11 - 2.0 * 4 / 7 + lastU;
  const double weightedEfronH = 2.0 * 24 / 121 + 2.0 * 12 / 49 + lastH;
  return {
      {"Breslow", FiveCases(), false, false, atLn2, breslowL, breslowU, breslowH},
      {"Efron", FiveCases(), true, false, atLn2, efronL, efronU, efronH},
      {"Breslow, weights", FiveWeightedCases(), false, false, atLn2, weightedBreslowL, weightedBreslowU,
       weightedBreslowH},
      {"Efron, weights", FiveWeightedCases(), true, false, atLn2, weightedEfronL, weightedEfronU, weightedEfronH},
      {"Breslow, strata", InTwoStrata(), false, true, atLn2, breslowL + weightedBreslowL, breslowU + weightedBreslowU,
       breslowH + weightedBreslowH},
      {"Efron, strata", InTwoStrata(), true, true, atLn2, efronL + weightedEfronL, efronU + weightedEfronU,
       efronH + weightedEfronH},
      // At zero: risk sets of 1, 4 and 5; at time 2 the mean of x is 1/2, and 1/3 without half of the events.
      {"Breslow at zero",
       FiveCases(),
       false,
       false,
       {},
       -2 * std::log(4) - std::log(5),
       2 - 1 - 2.0 / 5,
       2.0 / 4 + 6.0 / 25},
      {"Efron at zero",
       FiveCases(),
       true,
       false,
       {},
       -std::log(4) - std::log(3) - std::log(5),
       2 - 1.0 / 2 - 1.0 / 3 - 2.0 / 5,
       1.0 / 4 + 2.0 / 9 + 6.0 / 25},
  };
}

TEST(RightCensoredPass, MatchesPassesComputedByHand) {
  for (const HandComputed& c : HandComputedPasses()) {
    const PassValue value = Evaluate(PassCases(c.cases), c.efron, c.strata, c.beta);
    EXPECT_NEAR(value.L, c.L, 1e-14 * std::abs(c.L)) << c.what;
    EXPECT_NEAR(value.U[0], c.U, 1e-14) << c.what;
    EXPECT_NEAR(value.H(0, 0), c.H, 1e-14) << c.what;
  }
}

// The group of two tied events adds -log R - log(R - 1) under Efron and -2 log R under Breslow.
TEST(RightCensoredPass, TwoTiedEventsAtZeroTakeTheSizeOfTheRiskSet) {
  for (const int R : {2, 3, 10}) {
    std::vector<ReferenceCase> cases(static_cast<std::size_t>(R), ReferenceCase{7.0, false, 1.0, 0.0, {0.3}});
    cases[0].Time = cases[1].Time = 5.0;
    cases[0].Event = cases[1].Event = true;
    EXPECT_NEAR(Evaluate(PassCases(cases), true, false, {}).L, -std::log(R) - std::log(R - 1), 1e-14) << R;
    EXPECT_NEAR(Evaluate(PassCases(cases), false, false, {}).L, -2 * std::log(R), 1e-14) << R;
  }
}

TEST(RightCensoredPass, EfronsFractionCountsEventsAndNotWeights) {
  // Weights 9 and 1: by events half of E0 = 10 goes out of S0 = 15. By weights it would be another share.
  const std::vector<ReferenceCase> cases = {
      {1.0, true, 9.0, 0.0, {1.0}}, {1.0, true, 1.0, 0.0, {0.0}}, {2.0, false, 5.0, 0.0, {0.0}}};
  EXPECT_NEAR(Evaluate(PassCases(cases), true, false, {}).L, -5 * std::log(15) - 5 * std::log(10), 1e-13);
}

TEST(RightCensoredPass, CensoredCaseStaysInTheRiskSetOfItsTime) {
  const std::vector<ReferenceCase> tied = {{5.0, true, 1.0, 0.0, {1.0}}, {5.0, false, 1.0, 0.0, {0.0}}};
  EXPECT_NEAR(Evaluate(PassCases(tied), false, false, {}).L, -std::log(2), 1e-15);
  std::vector<ReferenceCase> earlier = tied;
  earlier[1].Time = 4.0;
  EXPECT_EQ(Evaluate(PassCases(earlier), false, false, {}).L, 0.0) << "censored before: not at risk any more";
}

TEST(RightCensoredPass, GroupOfCensoredCasesAddsToTheRiskSetOnly) {
  std::vector<ReferenceCase> cases = FiveCases();
  cases.push_back({2.5, false, 1.0, 0.0, {1.0}});
  cases.push_back({2.5, false, 1.0, 0.0, {0.0}});
  // At zero the risk sets of times 2 and 1 grow by two, and there is no further term.
  EXPECT_NEAR(Evaluate(PassCases(cases), false, false, {}).L, -2 * std::log(6) - std::log(7), 1e-14);
  EXPECT_NEAR(Evaluate(PassCases(cases), true, false, {}).L, -std::log(6) - std::log(5) - std::log(7), 1e-14);
}

TEST(RightCensoredPass, TimesWithinFifteenUnitsInTheLastPlaceAreOneRiskSet) {
  const auto likelihood = [](int steps) {
    double later = 5.0;
    for (int k = 0; k < steps; ++k) later = std::nextafter(later, INFINITY);
    return Evaluate(PassCases({{5.0, true, 1.0, 0.0, {0.0}}, {later, true, 1.0, 0.0, {1.0}}}), false, false, {}).L;
  };
  EXPECT_NEAR(likelihood(15), -2 * std::log(2), 1e-15);
  EXPECT_NEAR(likelihood(16), -std::log(2), 1e-15);
}

struct Setting {
  unsigned seed;
  int n, p, times, strata;
  bool weighted;
};

const std::vector<Setting>& Settings() {
  static const std::vector<Setting> settings = {
      {1, 40, 1, 8, 1, false}, {2, 60, 3, 6, 1, true},     {3, 60, 3, 1000, 1, true}, {4, 80, 4, 5, 3, true},
      {5, 50, 2, 1, 1, true},  {6, 90, 5, 1000, 4, false}, {7, 30, 2, 4, 30, true},
  };
  return settings;
}

std::string Describe(const Setting& s, bool efron) {
  return Name(efron) + ", seed " + std::to_string(s.seed);
}

std::vector<double> RandomVector(unsigned seed, int p) {
  TestRandom random(seed);
  std::vector<double> beta;
  for (int j = 0; j < p; ++j) beta.push_back(random.Value());
  return beta;
}

std::vector<double> Zero(int p) {
  return std::vector<double>(static_cast<std::size_t>(p), 0.0);
}

// Compared with the definition, summed anew for each event time in long double. The rounding of the running sums grows
// with the number of cases and with their spread, hence some hundred units in the last place.
TEST(RightCensoredPass, AgreesWithTheDefinition) {
  for (const Setting& s : Settings()) {
    const PassCases cases(RandomCases(s.seed, s.n, s.p, s.times, s.strata, s.weighted));
    for (const bool efron : {false, true}) {
      for (const bool atZero : {false, true}) {
        const std::vector<double> beta = atZero ? Zero(s.p) : RandomVector(s.seed + 100, s.p);
        const PassValue value = Evaluate(cases, efron, s.strata > 1, atZero ? std::vector<double>{} : beta);
        const ReferenceValue expected = EvaluateReference(cases.Cases(), RealVector(beta.begin(), beta.end()), efron);
        const std::string what = Describe(s, efron) + (atZero ? ", at zero" : "");
        const double unit = 1e-13 * s.n;
        EXPECT_NEAR(value.L, static_cast<double>(expected.L), unit) << what;
        for (int j = 0; j < s.p; ++j) {
          const auto jj = static_cast<std::size_t>(j);
          EXPECT_NEAR(value.U[jj], static_cast<double>(expected.U[jj]), unit) << what << ", U " << j;
          for (int l = 0; l < s.p; ++l) {
            EXPECT_NEAR(value.H(j, l), static_cast<double>(expected.H[jj][static_cast<std::size_t>(l)]), unit)
                << what << ", H " << j << ' ' << l;
          }
        }
      }
    }
  }
}

TEST(RightCensoredPass, ScoreIsTheSlopeOfTheLogLikelihood) {
  constexpr double h = 1e-5;  // rounding in L / h and the third derivative times h^2 are both about 1e-9
  for (const Setting& s : Settings()) {
    const PassCases cases(RandomCases(s.seed, s.n, s.p, s.times, s.strata, s.weighted));
    const std::vector<double> beta = RandomVector(s.seed + 200, s.p);
    for (const bool efron : {false, true}) {
      const PassValue here = Evaluate(cases, efron, s.strata > 1, beta);
      for (std::size_t j = 0; j < beta.size(); ++j) {
        std::vector<double> above = beta;
        std::vector<double> below = beta;
        above[j] += h;
        below[j] -= h;
        const double slope =
            (Evaluate(cases, efron, s.strata > 1, above).L - Evaluate(cases, efron, s.strata > 1, below).L) / (2 * h);
        EXPECT_NEAR(here.U[j], slope, 1e-6 * (1 + std::abs(slope))) << Describe(s, efron) << ", parameter " << j;
      }
    }
  }
}

TEST(RightCensoredPass, InformationIsMinusTheSlopeOfTheScore) {
  constexpr double h = 1e-5;
  for (const Setting& s : Settings()) {
    const PassCases cases(RandomCases(s.seed, s.n, s.p, s.times, s.strata, s.weighted));
    const std::vector<double> beta = RandomVector(s.seed + 300, s.p);
    for (const bool efron : {false, true}) {
      const PassValue here = Evaluate(cases, efron, s.strata > 1, beta);
      for (std::size_t j = 0; j < beta.size(); ++j) {
        std::vector<double> above = beta;
        std::vector<double> below = beta;
        above[j] += h;
        below[j] -= h;
        const PassValue up = Evaluate(cases, efron, s.strata > 1, above);
        const PassValue down = Evaluate(cases, efron, s.strata > 1, below);
        for (std::size_t l = 0; l < beta.size(); ++l) {
          const double slope = (up.U[l] - down.U[l]) / (2 * h);
          EXPECT_NEAR(here.H(static_cast<int>(j), static_cast<int>(l)), -slope, 1e-6 * (1 + std::abs(slope)))
              << Describe(s, efron) << ", parameters " << j << ' ' << l;
        }
      }
    }
  }
}

// Bit by bit: without ties the fraction is 0 in every term.
TEST(RightCensoredPass, EfronIsBreslowWithoutTies) {
  std::vector<ReferenceCase> cases = RandomCases(11, 70, 3, 10, 3, true);
  for (std::size_t i = 0; i < cases.size(); ++i) cases[i].Time = 1.0 + static_cast<double>(i) * 0.25;
  const PassCases table(cases);
  for (const std::vector<double>& beta : {std::vector<double>{}, RandomVector(12, 3)}) {
    const PassValue breslow = Evaluate(table, false, true, beta);
    const PassValue efron = Evaluate(table, true, true, beta);
    EXPECT_EQ(breslow.L, efron.L);
    EXPECT_EQ(breslow.U, efron.U);
    EXPECT_EQ(breslow.H, efron.H);
  }
}

TEST(RightCensoredPass, OneStratumIsAsGoodAsNone) {
  std::vector<ReferenceCase> cases = RandomCases(13, 60, 3, 6, 1, true);
  for (ReferenceCase& one : cases) one.Stratum = 4.0;
  const PassCases table(cases);
  for (const bool efron : {false, true}) {
    const PassValue with = Evaluate(table, efron, true, {0.5, -0.5, 0.25});
    const PassValue without = Evaluate(table, efron, false, {0.5, -0.5, 0.25});
    EXPECT_EQ(with.L, without.L) << Name(efron);
    EXPECT_EQ(with.U, without.U) << Name(efron);
    EXPECT_EQ(with.H, without.H) << Name(efron);
  }
}

TEST(RightCensoredPass, StrataAddUp) {
  const std::vector<ReferenceCase> cases = RandomCases(14, 90, 2, 6, 3, true);
  const std::vector<double> beta = {0.7, -0.4};
  for (const bool efron : {false, true}) {
    const PassValue whole = Evaluate(PassCases(cases), efron, true, beta);
    PassValue sum{0.0, Zero(2), TestMatrix(2, 2)};
    for (const double stratum : {0.0, 1.0, 2.0}) {
      std::vector<ReferenceCase> part;
      std::copy_if(cases.begin(), cases.end(), std::back_inserter(part),
                   [&](const ReferenceCase& one) { return one.Stratum == stratum; });
      const PassValue value = Evaluate(PassCases(part), efron, false, beta);
      sum.L += value.L;
      for (std::size_t j = 0; j < 2; ++j) sum.U[j] += value.U[j];
      for (int j = 0; j < 2; ++j) {
        for (int l = 0; l < 2; ++l) sum.H(j, l) += value.H(j, l);
      }
    }
    EXPECT_NEAR(whole.L, sum.L, 1e-11) << Name(efron);
    for (std::size_t j = 0; j < 2; ++j) EXPECT_NEAR(whole.U[j], sum.U[j], 1e-12) << Name(efron);
    EXPECT_LT(Distance(whole.H, sum.H), 1e-12) << Name(efron);
  }
}

TEST(RightCensoredPass, WeightOfTwoIsTheCaseTwiceUnderBreslow) {
  std::vector<ReferenceCase> weighted = RandomCases(15, 50, 2, 6, 1, false);
  std::vector<ReferenceCase> repeated = weighted;
  for (std::size_t i = 0; i < weighted.size(); i += 3) {
    repeated.push_back(weighted[i]);
    weighted[i].Weight = 2.0;
  }
  const std::vector<double> beta = {0.6, 0.3};
  const PassValue a = Evaluate(PassCases(weighted), false, false, beta);
  const PassValue b = Evaluate(PassCases(repeated), false, false, beta);
  EXPECT_NEAR(a.L, b.L, 1e-11);
  for (std::size_t j = 0; j < 2; ++j) EXPECT_NEAR(a.U[j], b.U[j], 1e-12);
  EXPECT_LT(Distance(a.H, b.H), 1e-12);
  // Under Efron the two copies are tied events, which one event of weight 2 is not.
  EXPECT_GT(
      std::abs(Evaluate(PassCases(weighted), true, false, beta).L - Evaluate(PassCases(repeated), true, false, beta).L),
      0.1);
}

TEST(RightCensoredPass, OrderOfRowsWithinATimeDoesNotMatter) {
  const std::vector<ReferenceCase> cases = RandomCases(16, 60, 2, 5, 2, true);
  const std::vector<ReferenceCase> reversed(cases.rbegin(), cases.rend());
  for (const bool efron : {false, true}) {
    const PassValue a = Evaluate(PassCases(cases), efron, true, {0.5, -1.0});
    const PassValue b = Evaluate(PassCases(reversed), efron, true, {0.5, -1.0});
    EXPECT_NEAR(a.L, b.L, 1e-11) << Name(efron);
    for (std::size_t j = 0; j < 2; ++j) EXPECT_NEAR(a.U[j], b.U[j], 1e-11) << Name(efron);
    EXPECT_LT(Distance(a.H, b.H), 1e-11) << Name(efron);
  }
}

TEST(RightCensoredPass, ShiftOfACovariateMovesNothing) {
  std::vector<ReferenceCase> cases = RandomCases(17, 60, 2, 8, 1, true);
  const PassValue before = Evaluate(PassCases(cases), true, false, {0.5, -0.25});
  for (ReferenceCase& one : cases) one.X[1] += 8.0;
  const PassValue after = Evaluate(PassCases(cases), true, false, {0.5, -0.25});
  EXPECT_NEAR(before.L, after.L, 1e-10);
  EXPECT_NEAR(before.U[1], after.U[1], 1e-10);
  EXPECT_LT(Distance(before.H, after.H), 1e-9) << "the squares of the shifted values cancel";
}

// What all cases share cancels out of score and information, to the last digit.
TEST(RightCensoredPass, ColumnThatIsTheSameInAllRowsGivesZeros) {
  std::vector<ReferenceCase> cases = RandomCases(17, 150, 2, 8, 2, true);
  for (ReferenceCase& one : cases) one.X[1] = 0.1;
  for (const bool efron : {false, true}) {
    const PassValue value = Evaluate(PassCases(cases), efron, true, {0.5, 3.0});
    EXPECT_EQ(value.U[1], 0.0) << Name(efron);
    EXPECT_EQ(value.H(0, 1), 0.0) << Name(efron);
    EXPECT_EQ(value.H(1, 1), 0.0) << Name(efron);
  }
}

TEST(RightCensoredPass, PassAtZeroEqualsThePassAtAZeroVector) {
  const PassCases cases(RandomCases(18, 60, 3, 5, 2, true));
  for (const bool efron : {false, true}) {
    const PassValue null = Evaluate(cases, efron, true, {});
    const PassValue zero = Evaluate(cases, efron, true, Zero(3));
    // k times 1/d and k/d may differ in their last digit.
    EXPECT_NEAR(null.L, zero.L, 1e-12) << Name(efron);
    for (std::size_t j = 0; j < 3; ++j) EXPECT_NEAR(null.U[j], zero.U[j], 1e-12) << Name(efron);
    EXPECT_LT(Distance(null.H, zero.H), 1e-12) << Name(efron);
  }
}

TEST(RightCensoredPass, SecondPassStartsFromNothing) {
  const PassCases cases(RandomCases(19, 60, 2, 5, 3, true));
  HeapOnlyHost host;
  RightCensoredPass pass(host, cases.Table(), cases.Count(), cases.Columns(true), LeadingColumns(2), 1);
  const PassValue first = RunPass(pass, 2, {0.5, 1.0});
  RunPass(pass, 2, {-2.0, 3.0});
  RunPass(pass, 2, {});
  const PassValue again = RunPass(pass, 2, {0.5, 1.0});
  EXPECT_EQ(first.L, again.L);
  EXPECT_EQ(first.U, again.U);
  EXPECT_EQ(first.H, again.H);
}

TEST(RightCensoredPass, ActiveColumnsAreTakenInTheirOrder) {
  const std::vector<ReferenceCase> cases = RandomCases(20, 60, 4, 6, 1, true);
  std::vector<ReferenceCase> chosen = cases;
  for (ReferenceCase& one : chosen) one.X = {one.X[3], one.X[1]};
  const PassCases table(cases);
  HeapOnlyHost host;
  RightCensoredPass pass(host, table.Table(), table.Count(), table.Columns(false), {3, 1}, 1);
  const PassValue value = RunPass(pass, 2, {0.4, -0.8});
  const PassValue expected = Evaluate(PassCases(chosen), true, false, {0.4, -0.8});
  EXPECT_EQ(value.L, expected.L);
  EXPECT_EQ(value.U, expected.U);
  EXPECT_EQ(value.H, expected.H);
}

TEST(RightCensoredPass, LeavesTheTriangleBelowTheDiagonalAlone) {
  const PassCases cases(RandomCases(21, 30, 3, 5, 1, false));
  HeapOnlyHost host;
  RightCensoredPass pass(host, cases.Table(), cases.Count(), cases.Columns(false), LeadingColumns(3), 0);
  std::vector<double> H(9, -7.0);
  double* rows[] = {&H[0], &H[3], &H[6]};
  std::vector<double> U(3);
  const std::vector<double> beta = {0.1, 0.2, 0.3};
  pass.Evaluate(beta.data(), U.data(), rows);
  EXPECT_EQ(H[3], -7.0);
  EXPECT_EQ(H[6], -7.0);
  EXPECT_EQ(H[7], -7.0);
  EXPECT_GT(H[0], 0.0);
}

TEST(RightCensoredPass, HasALikelihoodWithoutColumns) {
  std::vector<ReferenceCase> cases = FiveCases();
  for (ReferenceCase& one : cases) one.X.clear();
  EXPECT_NEAR(Evaluate(PassCases(cases), false, false, {}).L, -2 * std::log(4) - std::log(5), 1e-14);
}

TEST(RightCensoredPass, AllocatesNothingInAPass) {
  const PassCases cases(RandomCases(22, 200, 4, 10, 3, true));
  HeapOnlyHost host;
  RightCensoredPass pass(host, cases.Table(), cases.Count(), cases.Columns(true), {2, 0, 3}, 1);
  std::vector<double> H(9);
  double* rows[] = {&H[0], &H[3], &H[6]};
  std::vector<double> U(3);
  const std::vector<double> beta = {0.1, 0.2, 0.3};
  const int requests = host.Requests();
  const long before = testing::AllocationCount();
  pass.Evaluate(beta.data(), U.data(), rows);
  EXPECT_EQ(testing::AllocationCount(), before);
  EXPECT_EQ(host.Requests(), requests);
}

TEST(RightCensoredPass, FailsWhenMemoryIsOut) {
  const PassCases cases(RandomCases(23, 20, 2, 5, 2, true));
  testing::ExpectFailureAtEveryAllocation([&](HeapOnlyHost& host) {
    return RightCensoredPass(host, cases.Table(), cases.Count(), cases.Columns(true), LeadingColumns(2), 1).Failed();
  });
}

TEST(RightCensoredPass, LeavesAFlagWhenANumberCannotBeComputed) {
  struct {
    const char* what;
    double x;
    double beta;
    int flag;
  } const cases[] = {
      {"exponential too large", 1000.0, 1.0, FE_OVERFLOW},
      {"all relative risks underflow", -1000.0, 1.0, FE_DIVBYZERO},
      {"linear predictor too large", 1e300, 1e300, FE_OVERFLOW},
  };
  for (const auto& c : cases) {
    const PassCases table({{1.0, true, 1.0, 0.0, {c.x}}, {2.0, true, 1.0, 0.0, {c.x}}});
    std::feclearexcept(FE_ALL_EXCEPT);
    Evaluate(table, false, false, {c.beta});
    EXPECT_NE(std::fetestexcept(c.flag), 0) << c.what;
    std::feclearexcept(FE_ALL_EXCEPT);
  }
}

}  // namespace
}  // namespace orv
