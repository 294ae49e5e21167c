// The two ways to sum over the subsets of a risk set, and which one is taken.
#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <string>
#include <vector>

#include "fit/DiscreteGroup.h"
#include "fit/PassKernels.h"
#include "support/HeapOnlyHost.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

struct Group {
  std::vector<RiskMember> Members;
  std::vector<double> X;
};

Group RandomGroup(unsigned seed, int count, int p) {
  TestRandom random(seed);
  Group group;
  for (int i = 0; i < count * p; ++i) group.X.push_back(1.5 + random.Value());
  for (int i = 0; i < count; ++i) {
    group.Members.push_back({std::exp(2.0 * random.Value()), group.X.data() + static_cast<std::ptrdiff_t>(i) * p});
  }
  return group;
}

std::string Describe(int d, int count, int p) {
  return std::to_string(d) + " of " + std::to_string(count) + ", p = " + std::to_string(p);
}

// All terms are positive, so every sum is relatively exact.
TEST(DiscreteGroup, EnumerationAndRecursionGiveTheSameSums) {
  HeapOnlyHost host;
  unsigned seed = 0;
  for (const int p : {1, 3}) {
    for (const int count : {1, 2, 4, 8, 13}) {
      for (int d = 1; d <= count; ++d) {
        const Group group = RandomGroup(++seed, count, p);
        const std::size_t packed = PackedSize(static_cast<std::size_t>(p));
        std::vector<double> Q1(static_cast<std::size_t>(p), -7.0);  // overwritten
        std::vector<double> Q2(packed, -7.0);
        const SubsetSums sums = EnumerateSubsets(group.Members, d, p, Q1.data(), Q2.data());
        SymmetricSums recursion(host, p, d);
        for (const RiskMember& member : group.Members) recursion.Join(member.r, member.x, 1, d);
        EXPECT_NEAR(sums.Q / recursion.Value(d), 1.0, 1e-12) << Describe(d, count, p);
        EXPECT_EQ(sums.Q1, Q1.data());
        EXPECT_EQ(sums.Q2, Q2.data());
        for (std::size_t j = 0; j < Q1.size(); ++j) {
          EXPECT_NEAR(Q1[j] / recursion.First(d)[j], 1.0, 1e-12) << Describe(d, count, p);
        }
        for (std::size_t k = 0; k < packed; ++k) {
          EXPECT_NEAR(Q2[k] / recursion.Second(d)[k], 1.0, 1e-12) << Describe(d, count, p);
        }
      }
    }
  }
}

TEST(DiscreteGroup, MoreEventsThanMembersHaveNoSubset) {
  const Group group = RandomGroup(1, 2, 1);
  double Q1 = -7.0;
  double Q2 = -7.0;
  EXPECT_EQ(EnumerateSubsets(group.Members, 3, 1, &Q1, &Q2).Q, 0.0);
  EXPECT_EQ(Q1, 0.0);
  EXPECT_EQ(Q2, 0.0);
}

// Q = 5, Q1 = (4, 10), Q2 = (4; 9 30): means 0.8 and 2.
TEST(DiscreteGroup, TermIsTheLogarithmTheMeanAndTheCovariance) {
  const double Q1[] = {4.0, 10.0};
  const double Q2[] = {4.0, 9.0, 30.0};
  CompensatedSum L;
  L.Add(10.0);
  double U[] = {1.0, 1.0};
  double H[] = {100.0, 200.0, 300.0};
  SubtractSubsetTerm({5.0, Q1, Q2}, L, U, H, 2);
  EXPECT_DOUBLE_EQ(L.Value(), 10.0 - std::log(5.0));
  EXPECT_DOUBLE_EQ(U[0], 1.0 - 0.8);
  EXPECT_DOUBLE_EQ(U[1], 1.0 - 2.0);
  EXPECT_DOUBLE_EQ(H[0], 100.0 + 0.8 - 0.64);
  EXPECT_DOUBLE_EQ(H[1], 200.0 + 1.8 - 1.6);
  EXPECT_DOUBLE_EQ(H[2], 300.0 + 6.0 - 4.0);
}

// The product of two sums, or of a sum with itself, would be out of range.
TEST(DiscreteGroup, SumsNearTheLargestDoubleStillGiveATerm) {
  const double Q1[] = {8e304, 2e305};
  const double Q2[] = {8e304, 1.8e305, 6e305};
  CompensatedSum L;
  double U[] = {0.0, 0.0};
  double H[] = {0.0, 0.0, 0.0};
  std::feclearexcept(FE_ALL_EXCEPT);
  SubtractSubsetTerm({1e305, Q1, Q2}, L, U, H, 2);
  EXPECT_EQ(std::fetestexcept(FE_OVERFLOW | FE_INVALID | FE_DIVBYZERO), 0);
  EXPECT_NEAR(L.Value(), -305 * std::log(10.0), 1e-12);
  EXPECT_NEAR(U[0], -0.8, 1e-15);
  EXPECT_NEAR(H[0], 0.8 - 0.64, 1e-15);
  EXPECT_NEAR(H[1], 1.8 - 1.6, 1e-15);
  EXPECT_NEAR(H[2], 6.0 - 4.0, 1e-15);
}

TEST(DiscreteGroup, EnumerationIsTakenWhereItCostsLess) {
  struct {
    int d, members, p;
    bool enumerate;
  } const cases[] = {
      {2, 2, 1, true},                           // one subset
      {3, 4, 2, true},                           // four subsets, as many members
      {40, 40, 3, true},                         // one subset of many
      {1200, 1200, 2, true}, {5, 20, 2, false},  // 15504 subsets
      {30, 500, 4, false},                       // more subsets than any machine counts
      {600, 1200, 2, false},                     // beyond a double
      {30, 500, 0, false},                       // without columns too
  };
  for (const auto& c : cases) {
    EXPECT_EQ(EnumerationIsCheaper(c.d, c.members, c.p), c.enumerate) << Describe(c.d, c.members, c.p);
  }
}

// Whatever the choice, the enumeration must never run long.
TEST(DiscreteGroup, EnumerationStaysWithinAFewPassesOfTheRecursion) {
  for (int members = 2; members <= 200; ++members) {
    for (int d = 2; d <= members; ++d) {
      for (const int p : {1, 2, 10}) {
        if (!EnumerationIsCheaper(d, members, p)) continue;
        double subsets = 1.0;
        for (int k = 1; k <= d; ++k) subsets = subsets * (members - d + k) / k;
        EXPECT_LE(subsets, 4.0 * members * d) << Describe(d, members, p);
      }
    }
  }
}

}  // namespace
}  // namespace orv
