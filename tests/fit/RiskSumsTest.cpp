#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "fit/RiskSums.h"
#include "support/FailingAllocations.h"
#include "support/HeapOnlyHost.h"

namespace orv {
namespace {

// Rows with x = (1, 2), (3, -1) and (0, 1), and wr = 2, 1 and 3:
//   S0 = 6, S1 = (5, 6), S2 = (11; 1, 12)
constexpr double kX[3][2] = {{1, 2}, {3, -1}, {0, 1}};
constexpr double kWr[3] = {2, 1, 3};

RiskSums& Join(RiskSums& sums) {
  for (int i = 0; i < 3; ++i) sums.Join(kX[i], kWr[i]);
  return sums;
}

void ExpectSums(const RiskSums& sums, double S0, const std::vector<double>& S1, const std::vector<double>& S2) {
  EXPECT_DOUBLE_EQ(sums.S0(), S0);
  for (std::size_t j = 0; j < S1.size(); ++j) EXPECT_DOUBLE_EQ(sums.S1()[j], S1[j]) << j;
  for (std::size_t k = 0; k < S2.size(); ++k) EXPECT_DOUBLE_EQ(sums.S2()[k], S2[k]) << k;
}

TEST(RiskSums, AreWeightedSumsOverTheRowsThatJoined) {
  HeapOnlyHost host;
  RiskSums sums(host, 2, 0);
  ExpectSums(Join(sums), 6, {5, 6}, {11, 1, 12});
}

TEST(RiskSums, RowThatLeavesIsTakenOut) {
  HeapOnlyHost host;
  RiskSums sums(host, 2, 0);
  Join(sums).Leave(kX[1], kWr[1]);
  ExpectSums(sums, 5, {2, 7}, {2, 4, 11});
}

TEST(RiskSums, ClearingTheRiskSetLeavesTheInformation) {
  HeapOnlyHost host;
  RiskSums sums(host, 2, 0);
  CompensatedSum L;
  double U[2] = {0, 0};
  Join(sums).CloseGroup(1, 1, false, L, U);
  const double H = sums.Information()[0];
  EXPECT_GT(H, 0.0);
  sums.ClearRiskSet();
  ExpectSums(sums, 0, {0, 0}, {0, 0, 0});
  EXPECT_EQ(sums.Information()[0], H);
  sums.StartPass();
  EXPECT_EQ(sums.Information()[0], 0.0);
}

struct Closed {
  double L;
  std::vector<double> U, H;
};

Closed Close(int efronStep, double events, double weight, const std::vector<int>& eventRows, bool atZero) {
  HeapOnlyHost host;
  RiskSums sums(host, 2, efronStep);
  Join(sums);
  for (const int row : eventRows) sums.AddEvent(kX[row], kWr[row]);
  CompensatedSum L;
  std::vector<double> U(2, 0.0);
  sums.CloseGroup(events, weight, atZero, L, U.data());
  return {L.Value(), U, {sums.Information(), sums.Information() + 3}};
}

// Under Breslow each of d events takes the same term: log 6, means 5/6 and 1.
TEST(RiskSums, BreslowTakesEqualTerms) {
  for (const double d : {1.0, 2.0, 7.0}) {
    const Closed closed = Close(0, d, 1.5, {0}, false);
    EXPECT_NEAR(closed.L, -1.5 * d * std::log(6.0), 1e-13) << d;
    EXPECT_NEAR(closed.U[0], -1.5 * d * 5 / 6, 1e-13) << d;
    EXPECT_NEAR(closed.U[1], -1.5 * d, 1e-13) << d;
    EXPECT_NEAR(closed.H[0], 1.5 * d * (11.0 / 6 - 25.0 / 36), 1e-13) << d;
    EXPECT_NEAR(closed.H[1], 1.5 * d * (1.0 / 6 - 5.0 / 6), 1e-13) << d;
    EXPECT_NEAR(closed.H[2], 1.5 * d * (12.0 / 6 - 1.0), 1e-13) << d;
  }
}

// Events are rows 0 and 1: E0 = 3, E1 = (5, 3), E2 = (11; 1, 9). Without half of them the sums are
// 4.5, (2.5, 4.5), (5.5; 0.5, 7.5).
TEST(RiskSums, EfronTakesOutAShareOfTheEvents) {
  for (const bool atZero : {false, true}) {
    const Closed closed = Close(1, 2, 2.0, {0, 1}, atZero);
    EXPECT_NEAR(closed.L, -2 * (std::log(6.0) + std::log(4.5)), 1e-13);
    EXPECT_NEAR(closed.U[0], -2 * (5.0 / 6 + 2.5 / 4.5), 1e-13);
    EXPECT_NEAR(closed.U[1], -2 * (1.0 + 1.0), 1e-13);
    EXPECT_NEAR(closed.H[0], 2 * (11.0 / 6 - 25.0 / 36 + 5.5 / 4.5 - 6.25 / 20.25), 1e-13);
    EXPECT_NEAR(closed.H[1], 2 * (1.0 / 6 - 5.0 / 6 + 0.5 / 4.5 - 2.5 / 4.5), 1e-13);
    EXPECT_NEAR(closed.H[2], 2 * (2.0 - 1.0 + 7.5 / 4.5 - 1.0), 1e-13);
  }
}

TEST(RiskSums, ClosingAGroupForgetsItsEventsAndKeepsTheRiskSet) {
  for (const int efronStep : {0, 1}) {
    HeapOnlyHost host;
    RiskSums sums(host, 2, efronStep);
    Join(sums);
    CompensatedSum first, second;
    double U[2] = {0, 0};
    sums.AddEvent(kX[0], kWr[0]);
    sums.AddEvent(kX[1], kWr[1]);
    sums.CloseGroup(2, 1, false, first, U);
    ExpectSums(sums, 6, {5, 6}, {11, 1, 12});
    sums.AddEvent(kX[2], kWr[2]);
    sums.AddEvent(kX[2], kWr[2]);
    sums.CloseGroup(2, 1, false, second, U);
    EXPECT_NEAR(second.Value(), -std::log(6.0) - std::log(efronStep == 0 ? 6.0 : 3.0), 1e-14) << efronStep;
  }
}

TEST(RiskSums, InformationGoesToTheUpperTriangle) {
  HeapOnlyHost host;
  RiskSums sums(host, 2, 0);
  CompensatedSum L;
  double U[2] = {0, 0};
  Join(sums).CloseGroup(1, 1, false, L, U);
  double cells[4] = {-7, -7, -7, -7};
  double* H[2] = {cells, cells + 2};
  sums.CopyInformation(H);
  EXPECT_EQ(cells[0], sums.Information()[0]);
  EXPECT_EQ(cells[1], sums.Information()[1]);
  EXPECT_EQ(cells[2], -7);
  EXPECT_EQ(cells[3], sums.Information()[2]);
}

// S0 decides on the last digits of the likelihood: a row of 1e16 that came and went leaves the ones as they were.
TEST(RiskSums, DenominatorCarriesItsRounding) {
  HeapOnlyHost host;
  RiskSums sums(host, 1, 0);
  const double x = 0.0;
  for (int i = 0; i < 5; ++i) sums.Join(&x, 1.0);
  sums.Join(&x, 1e17);
  for (int i = 0; i < 5; ++i) sums.Join(&x, 1.0);
  sums.Leave(&x, 1e17);
  EXPECT_EQ(sums.S0(), 10.0);
}

TEST(RiskSums, FailWhenMemoryIsOut) {
  testing::ExpectFailureAtEveryAllocation([](HeapOnlyHost& host) { return RiskSums(host, 2, 1).Failed(); });
}

}  // namespace
}  // namespace orv
