#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "fit/FloatingPointRegime.h"
#include "fit/RiskSums.h"
#include "support/FailingAllocations.h"
#include "support/HeapOnlyHost.h"
#include "support/PlainPass.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

using testing::PlainSums;

// Rows with x = (1, 2), (3, -1) and (0, 1), and wr = 2, 1 and 3:
//   S0 = 6, S1 = (5, 6), S2 = (11; 1, 12)
constexpr double kX[3][2] = {{1, 2}, {3, -1}, {0, 1}};
constexpr double kWr[3] = {2, 1, 3};

// What a pass came to: the information is packed.
struct Derivatives {
  explicit Derivatives(int p) : U(static_cast<std::size_t>(p)), H(PackedSize(static_cast<std::size_t>(p))) {}
  double L = 0.0;
  std::vector<double> U, H;
};

Derivatives EndPass(RiskSums& sums, int p) {
  Derivatives result(p);
  std::vector<double> cells(static_cast<std::size_t>(p * p), 0.0);
  std::vector<double*> rows;
  for (int j = 0; j < p; ++j) rows.push_back(cells.data() + j * p);
  CompensatedSum L;
  sums.EndPass(L, result.U.data(), rows.data());
  result.L = L.Value();
  std::size_t packed = 0;
  for (int j = 0; j < p; ++j) {
    for (int l = 0; l <= j; ++l) result.H[packed++] = rows[static_cast<std::size_t>(l)][j];
  }
  return result;
}

// Joins the three rows, of which some are events.
RiskSums& Join(RiskSums& sums, const std::vector<int>& events = {}) {
  for (int i = 0; i < 3; ++i) {
    sums.Join(kX[i], kWr[i]);
    if (std::find(events.begin(), events.end(), i) != events.end()) sums.AddEvent();
  }
  return sums;
}

void ExpectSums(RiskSums& sums, double S0, const std::vector<double>& S1) {
  EXPECT_DOUBLE_EQ(sums.S0(), S0);
  for (std::size_t j = 0; j < S1.size(); ++j) EXPECT_DOUBLE_EQ(sums.S1()[j], S1[j]) << j;
}

TEST(RiskSums, AreWeightedSumsOverTheRowsThatJoined) {
  HeapOnlyHost host;
  RiskSums sums(host, 2, 0);
  ExpectSums(Join(sums), 6, {5, 6});
}

TEST(RiskSums, RowThatLeavesIsTakenOut) {
  HeapOnlyHost host;
  RiskSums sums(host, 2, 0);
  Join(sums).Leave(kX[1], kWr[1]);
  ExpectSums(sums, 5, {2, 7});
}

TEST(RiskSums, ClearingTheRiskSetLeavesTheInformationAndANewPassDoesNot) {
  HeapOnlyHost host;
  RiskSums sums(host, 2, 0);
  Join(sums).CloseGroup(1, 1, false);
  sums.ClearRiskSet();
  ExpectSums(sums, 0, {0, 0});
  EXPECT_NEAR(EndPass(sums, 2).H[0], 11.0 / 6 - 25.0 / 36, 1e-14);
  sums.StartPass();
  EXPECT_EQ(EndPass(sums, 2).H, std::vector<double>(3, 0.0));
}

struct Closed {
  double L;
  std::vector<double> U, H;
};

Closed Close(int efronStep, double events, double weight, const std::vector<int>& eventRows, bool atZero) {
  HeapOnlyHost host;
  RiskSums sums(host, 2, efronStep);
  Join(sums, eventRows);
  sums.CloseGroup(events, weight, atZero);
  const Derivatives end = EndPass(sums, 2);
  return {end.L, end.U, end.H};
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
    Join(sums, {0, 1}).CloseGroup(2, 1, false);
    ExpectSums(sums, 6, {5, 6});
    sums.Join(kX[2], 1.0);
    sums.AddEvent();
    sums.Join(kX[2], 1.0);
    sums.AddEvent();
    sums.CloseGroup(2, 1, false);
    const double first = -std::log(6.0) - std::log(efronStep == 0 ? 6.0 : 4.5);
    EXPECT_NEAR(EndPass(sums, 2).L, first - std::log(8.0) - std::log(efronStep == 0 ? 8.0 : 7.0), 1e-14) << efronStep;
  }
}

TEST(RiskSums, InformationIsAddedToTheUpperTriangle) {
  HeapOnlyHost host;
  RiskSums sums(host, 2, 0);
  CompensatedSum L;
  Join(sums).CloseGroup(1, 1, false);
  double U[2] = {1, 1};
  double cells[4] = {1, 1, -7, 1};
  double* H[2] = {cells, cells + 2};
  sums.EndPass(L, U, H);
  EXPECT_NEAR(L.Value(), -std::log(6.0), 1e-15);
  EXPECT_NEAR(U[0], 1 - 5.0 / 6, 1e-14);
  EXPECT_NEAR(cells[0], 1 + 11.0 / 6 - 25.0 / 36, 1e-14);
  EXPECT_NEAR(cells[1], 1 + 1.0 / 6 - 5.0 / 6, 1e-14);
  EXPECT_EQ(cells[2], -7);
  EXPECT_NEAR(cells[3], 1 + 12.0 / 6 - 1, 1e-14);
}

// The same sums without blocks: every row and every event updates all of them.
class EveryStepAtOnce {
 public:
  EveryStepAtOnce(int p, int efronStep) : Result(p), m_efronStep(efronStep), m_risk(p), m_events(p) {}

  void Join(const std::vector<double>& x, double wr) { m_risk.Add(x.data(), wr); }
  void AddEvent(const std::vector<double>& x, double wr) { m_events.Add(x.data(), wr); }
  void ClearRiskSet() { m_risk.Clear(); }
  void CloseGroup(int events, double weight) {
    const std::size_t p = Result.U.size();
    for (int k = 0; k < events; ++k) {
      const double f = static_cast<double>(k) * m_efronStep / events;
      const double D = m_risk.S0.Value() - f * m_events.S0.Value();
      L.Add(-std::log(D) * weight);
      const auto mean = [&](std::size_t j) { return (m_risk.S1[j] - f * m_events.S1[j]) / D; };
      for (std::size_t j = 0; j < p; ++j) {
        Result.U[j] -= weight * mean(j);
        for (std::size_t l = 0; l <= j; ++l) {
          const std::size_t at = PackedSize(j) + l;
          Result.H[at] += weight * ((m_risk.S2[at] - f * m_events.S2[at]) / D - mean(j) * mean(l));
        }
      }
    }
    m_events.Clear();
  }
  double S0() const { return m_risk.S0.Value(); }

  Derivatives Result;
  CompensatedSum L;

 private:
  const int m_efronStep;
  PlainSums m_risk;
  PlainSums m_events;
};

// A walk of random steps: long and short groups, groups without events, rows that leave, risk sets that end, also in
// the middle of a group.
struct RandomWalk {
  const char* What;
  int Steps;
  int RowsOfGroup;    // at most
  int EventsInTen;    // of the rows
  int LeaversInTen;   // steps that take a row out
  int EndsInHundred;  // steps after which the risk set ends
};

constexpr RandomWalk kWalks[] = {
    {"lone rows", 300, 1, 6, 0, 0},    {"all events", 300, 2, 10, 0, 0}, {"ties beyond a block", 900, 200, 7, 0, 0},
    {"one group", 400, 1000, 9, 0, 0}, {"leavers", 400, 4, 5, 4, 0},     {"ends of risk sets", 500, 5, 5, 2, 20},
    {"few events", 700, 3, 1, 3, 1},
};

void Walk(const RandomWalk& walk, int p, int efronStep, const PassKernels& kernels) {
  HeapOnlyHost host;
  TestRandom random(static_cast<unsigned>(p * 2 + efronStep));
  RiskSums sums(host, p, efronStep, kernels);
  EveryStepAtOnce plain(p, efronStep);
  std::vector<std::pair<std::vector<double>, double>> atRisk;
  int events = 0;
  int left = 1 + random.Integer(walk.RowsOfGroup);
  sums.StartPass();
  for (int step = 0; step < walk.Steps; ++step) {
    // A risk set that ends in the middle of a group would leave Efron's events without a part of S0.
    const bool mayEnd = efronStep == 0 || events == 0;
    if (random.Integer(100) < walk.EndsInHundred && mayEnd) {
      sums.ClearRiskSet();
      plain.ClearRiskSet();
      atRisk.clear();
    }
    if (atRisk.size() > 3 && random.Integer(10) < walk.LeaversInTen) {
      const auto [x, wr] = atRisk[atRisk.size() / 2];
      atRisk.erase(atRisk.begin() + static_cast<std::ptrdiff_t>(atRisk.size() / 2));
      sums.Leave(x.data(), wr);
      plain.Join(x, -wr);
    }
    std::vector<double> x;
    for (int j = 0; j < p; ++j) x.push_back(random.Value());
    const double wr = 1.5 + random.Value();
    sums.Join(x.data(), wr);
    plain.Join(x, wr);
    atRisk.emplace_back(x, wr);
    if (random.Integer(10) < walk.EventsInTen) {
      sums.AddEvent();
      plain.AddEvent(x, wr);
      ++events;
    }
    // The last group always closes.
    if (--left > 0 && step + 1 < walk.Steps) continue;
    const double weight = 1.25 + random.Value();
    if (events > 0) {
      sums.CloseGroup(events, weight, false);
      plain.CloseGroup(events, weight);
    }
    events = 0;
    left = 1 + random.Integer(walk.RowsOfGroup);
  }
  const Derivatives end = EndPass(sums, p);
  const std::string what = std::string(walk.What) + ", p " + std::to_string(p) + ", Efron " +
                           std::to_string(efronStep) + ", " + kernels.VectorUnit;
  const double unit = 1e-13 * walk.Steps;
  EXPECT_NEAR(end.L, plain.L.Value(), unit) << what;
  for (std::size_t j = 0; j < end.U.size(); ++j) ASSERT_NEAR(end.U[j], plain.Result.U[j], unit) << what;
  for (std::size_t k = 0; k < end.H.size(); ++k) ASSERT_NEAR(end.H[k], plain.Result.H[k], unit) << what;
}

TEST(RiskSums, BlocksGiveWhatEveryStepAtOnceGives) {
  for (const PassKernels& kernels : AvailableKernels()) {
    for (const RandomWalk& walk : kWalks) {
      for (const int efronStep : {0, 1}) {
        for (const int p : {0, 1, 3, 8, 13, 25}) Walk(walk, p, efronStep, kernels);
      }
    }
  }
}

// Rows at risk that are built anew in the middle of a tied group: its events are those of before.
TEST(RiskSums, EventsOfTheOpenGroupStayWhenTheRiskSetIsBuiltAnew) {
  constexpr int kRows = 3;
  Derivatives ends[] = {Derivatives(2), Derivatives(2)};
  for (const bool anew : {false, true}) {
    HeapOnlyHost host;
    RiskSums sums(host, 2, 1);
    sums.StartPass();
    for (int i = 0; i < kRows; ++i) {
      sums.Join(kX[i], kWr[i]);
      if (i < 2) sums.AddEvent();
    }
    if (anew) {
      sums.ClearRiskSet();
      for (int i = 0; i < kRows; ++i) sums.Join(kX[i], kWr[i]);
    }
    sums.CloseGroup(2, 1.5, false);
    ends[anew ? 1 : 0] = EndPass(sums, 2);
  }
  EXPECT_EQ(ends[0].L, ends[1].L);
  for (std::size_t j = 0; j < ends[0].U.size(); ++j) EXPECT_NEAR(ends[1].U[j], ends[0].U[j], 1e-14);
  for (std::size_t k = 0; k < ends[0].H.size(); ++k) EXPECT_NEAR(ends[1].H[k], ends[0].H[k], 1e-14);
}

// Score and information are those of differences: the origin changes them by rounding, and makes a column that is the
// same in all rows exact zeros.
TEST(RiskSums, AnOriginTakesOutWhatAllRowsShare) {
  constexpr double kShared[2] = {0.1, 0.3};
  constexpr double kSharedSecond[2] = {0.0, 0.3};
  for (const int efronStep : {0, 1}) {
    HeapOnlyHost host;
    RiskSums sums(host, 2, efronStep);
    std::vector<Derivatives> ends;
    for (const double* origin : {static_cast<const double*>(nullptr), kShared, kSharedSecond}) {
      sums.StartPass(origin);
      TestRandom random(3);
      // Beyond a block, through both ways in.
      for (int group = 0; group < 60; ++group) {
        for (int event = 0; event < 2; ++event) {
          const double x[2] = {random.Value(), 0.3};
          const double wr = 2.0 + random.Value();
          const double isEvent = 1.0;
          const double weight = 1.5;
          if (event == 0) {
            sums.Join(x, wr);
            sums.AddEvent(weight);
          } else {
            std::copy_n(x, 2, sums.NextRow());
            sums.JoinRows(1, &wr, &isEvent, &weight);
          }
        }
        sums.CloseGroup(2, 1.5, false);
      }
      ends.push_back(EndPass(sums, 2));
    }
    for (std::size_t k = 1; k < ends.size(); ++k) {
      EXPECT_EQ(ends[k].L, ends[0].L);
      EXPECT_NEAR(ends[k].U[0], ends[0].U[0], 1e-12);
      EXPECT_NEAR(ends[k].H[0], ends[0].H[0], 1e-12);
      EXPECT_EQ(ends[k].U[1], 0.0);
      EXPECT_EQ(ends[k].H[1], 0.0);
      EXPECT_EQ(ends[k].H[2], 0.0);
    }
  }
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

// Risks beyond the square root of the largest double, whose squares never stand alone.
TEST(RiskSums, RisksNearTheEndsOfTheRangeRaiseNoFlagsAndLoseNothing) {
  const double expected[2] = {2 * 2 * (2.0 - 1.0), 2 * (2.0 - 1.0 + 7.5 / 4.5 - 1.0)};
  for (const double size : {1e-290, 1e-160, 1e160, 7e300}) {
    for (const int efronStep : {0, 1}) {
      HeapOnlyHost host;
      RiskSums sums(host, 2, efronStep);
      const FloatingPointRegime regime;
      std::feclearexcept(FE_ALL_EXCEPT);
      for (int i = 0; i < 3; ++i) {
        sums.Join(kX[i], kWr[i] * size);
        if (i < 2) sums.AddEvent();
      }
      sums.CloseGroup(2, 2.0, false);
      const Derivatives end = EndPass(sums, 2);
      EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW), 0) << size;
      EXPECT_NEAR(end.H[2], expected[efronStep], 1e-12) << size << ", Efron " << efronStep;
    }
  }
}

TEST(RiskSums, SumWithoutAReciprocalIsAnOverflow) {
  for (const int efronStep : {0, 1}) {
    HeapOnlyHost host;
    RiskSums sums(host, 2, efronStep);
    const FloatingPointRegime regime;
    for (int i = 0; i < 3; ++i) {
      sums.Join(kX[i], kWr[i] * 8e300);
      if (i < 2) sums.AddEvent();
    }
    std::feclearexcept(FE_ALL_EXCEPT);
    sums.CloseGroup(2, 2.0, false);
    EXPECT_NE(std::fetestexcept(FE_OVERFLOW), 0) << efronStep;
  }
}

// Asking for the sums between the rows and the groups that close on them changes nothing.
TEST(RiskSums, SumsMayBeAskedForAtAnyTime) {
  std::vector<Derivatives> ends;
  for (const bool asks : {false, true}) {
    HeapOnlyHost host;
    RiskSums sums(host, 2, 1);
    const double wr[] = {2, 1, 3, 1};
    const double isEvent[] = {1, 1, 1, 1};
    const double weight[] = {1, 1, 1, 1};
    double* rows = sums.NextRow();
    for (int i = 0; i < 4; ++i) std::copy_n(kX[i % 3], 2, rows + static_cast<std::size_t>(i) * PaddedOrder(2));
    sums.JoinRows(4, wr, isEvent, weight);
    if (asks) {
      EXPECT_DOUBLE_EQ(sums.S1()[0], 2 + 3 + 0 + 1);
    }
    sums.CloseGroup(1, 2, 1.0, false);
    sums.CloseGroup(3, 2, 1.0, false);
    ends.push_back(EndPass(sums, 2));
  }
  EXPECT_EQ(ends[0].U, ends[1].U);
  EXPECT_EQ(ends[0].H, ends[1].H);
}

TEST(RiskSums, FailWhenMemoryIsOut) {
  testing::ExpectFailureAtEveryAllocation([](HeapOnlyHost& host) { return RiskSums(host, 2, 1).Failed(); });
}

}  // namespace
}  // namespace orv
