// Elementary symmetric sums with their derivatives against the enumeration of the subsets.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "fit/ReferenceDiscrete.h"
#include "fit/SymmetricSums.h"
#include "support/FailingAllocations.h"
#include "support/HeapOnlyHost.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

using testing::SubsetEnumeration;

struct Members {
  std::vector<double> R;
  std::vector<std::vector<double>> X;
};

// Relative risks of positive values only, so that no sum of theirs cancels, and covariates of both signs or positive.
Members RandomMembers(unsigned seed, int count, int p, bool positive) {
  TestRandom random(seed);
  Members members;
  for (int i = 0; i < count; ++i) {
    members.R.push_back(std::exp(random.Value() * 2.0));
    std::vector<double> x;
    for (int j = 0; j < p; ++j) x.push_back(positive ? 1.5 + random.Value() : random.Value());
    members.X.push_back(x);
  }
  return members;
}

SubsetEnumeration Enumerated(const Members& members, int p, int d) {
  SubsetEnumeration sums(static_cast<std::size_t>(p));
  sums.R.assign(members.R.begin(), members.R.end());
  for (const std::vector<double>& x : members.X) sums.X.emplace_back(x.begin(), x.end());
  sums.Sum(static_cast<std::size_t>(d));
  return sums;
}

// `scale`: what an error is relative to, as the covariates may cancel and their sizes do not.
void ExpectSums(const SymmetricSums& sums, const SubsetEnumeration& expected, int d, int p, const std::string& what) {
  const auto Q = static_cast<double>(expected.Q);
  EXPECT_NEAR(sums.Value(d), Q, 1e-12 * Q) << what;
  std::size_t place = 0;
  for (std::size_t j = 0; j < static_cast<std::size_t>(p); ++j) {
    // The sum of d covariates of size 2.5 at most.
    EXPECT_NEAR(sums.First(d)[j], static_cast<double>(expected.Q1[j]), 1e-12 * Q * 2.5 * d) << what;
    for (std::size_t l = 0; l <= j; ++l) {
      EXPECT_NEAR(sums.Second(d)[place++], static_cast<double>(expected.Q2[j][l]), 1e-12 * Q * 6.25 * d * d) << what;
    }
  }
}

TEST(SymmetricSums, AreTheSumsOverAllSubsets) {
  HeapOnlyHost host;
  unsigned seed = 1;
  for (const int count : {1, 2, 5, 9}) {
    for (const int p : {1, 2, 4}) {
      for (const bool positive : {false, true}) {
        const Members members = RandomMembers(++seed, count, p, positive);
        SymmetricSums sums(host, p, count);
        for (std::size_t i = 0; i < members.R.size(); ++i) sums.Join(members.R[i], members.X[i].data(), 1, count);
        for (int d = 1; d <= count; ++d) {
          ExpectSums(sums, Enumerated(members, p, d), d, p,
                     std::to_string(d) + " of " + std::to_string(count) + ", p = " + std::to_string(p));
        }
      }
    }
  }
}

// With positive covariates nothing cancels, and each number by itself is as good.
TEST(SymmetricSums, PositiveSumsAreRelativelyExact) {
  HeapOnlyHost host;
  const Members members = RandomMembers(40, 10, 3, true);
  SymmetricSums sums(host, 3, 6);
  for (std::size_t i = 0; i < members.R.size(); ++i) sums.Join(members.R[i], members.X[i].data(), 1, 6);
  for (int d = 1; d <= 6; ++d) {
    const SubsetEnumeration expected = Enumerated(members, 3, d);
    std::size_t place = 0;
    for (std::size_t j = 0; j < 3; ++j) {
      EXPECT_NEAR(sums.First(d)[j] / static_cast<double>(expected.Q1[j]), 1.0, 1e-12) << d;
      for (std::size_t l = 0; l <= j; ++l) {
        EXPECT_NEAR(sums.Second(d)[place++] / static_cast<double>(expected.Q2[j][l]), 1.0, 1e-12) << d;
      }
    }
  }
}

TEST(SymmetricSums, OrderZeroIsTheEmptySubset) {
  HeapOnlyHost host;
  SymmetricSums sums(host, 1, 3);
  const double x = 4.0;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(sums.Value(0), 1.0);
    EXPECT_EQ(sums.First(0)[0], 0.0);
    EXPECT_EQ(sums.Second(0)[0], 0.0);
    sums.Join(2.0, &x, 1, 3);
  }
}

TEST(SymmetricSums, OrdersBeyondTheMembersAreZero) {
  HeapOnlyHost host;
  SymmetricSums sums(host, 1, 4);
  const double x = 3.0;
  sums.Join(2.0, &x, 1, 4);
  sums.Join(5.0, &x, 1, 4);
  EXPECT_EQ(sums.Value(1), 7.0);
  EXPECT_EQ(sums.Value(2), 10.0);
  EXPECT_EQ(sums.First(2)[0], 60.0);
  EXPECT_EQ(sums.Second(2)[0], 360.0);
  for (const int d : {3, 4}) {
    EXPECT_EQ(sums.Value(d), 0.0) << d;
    EXPECT_EQ(sums.First(d)[0], 0.0) << d;
    EXPECT_EQ(sums.Second(d)[0], 0.0) << d;
  }
}

TEST(SymmetricSums, ClearForgetsTheMembers) {
  HeapOnlyHost host;
  const Members members = RandomMembers(50, 6, 2, false);
  SymmetricSums sums(host, 2, 3);
  const double other[] = {100.0, -50.0};
  for (int i = 0; i < 5; ++i) sums.Join(1000.0, other, 1, 3);
  sums.Clear();
  for (std::size_t i = 0; i < members.R.size(); ++i) sums.Join(members.R[i], members.X[i].data(), 1, 3);
  for (int d = 1; d <= 3; ++d) ExpectSums(sums, Enumerated(members, 2, d), d, 2, std::to_string(d));
}

// Only the orders that lead to order d need be kept up: d - (m - k) to d of the k-th member.
TEST(SymmetricSums, OrdersThatNothingReadsMayBeLeftOut) {
  HeapOnlyHost host;
  for (const int m : {1, 2, 5, 9}) {
    for (int d = 1; d <= m; ++d) {
      const Members members = RandomMembers(static_cast<unsigned>(60 + 10 * m + d), m, 2, false);
      SymmetricSums whole(host, 2, m);
      SymmetricSums part(host, 2, m);
      for (int k = 1; k <= m; ++k) {
        const auto i = static_cast<std::size_t>(k) - 1;
        whole.Join(members.R[i], members.X[i].data(), 1, m);
        part.Join(members.R[i], members.X[i].data(), std::max(d - (m - k), 1), d);
      }
      const std::string what = std::to_string(d) + " of " + std::to_string(m);
      EXPECT_EQ(part.Value(d), whole.Value(d)) << what;
      for (std::size_t j = 0; j < 2; ++j) EXPECT_EQ(part.First(d)[j], whole.First(d)[j]) << what;
      for (std::size_t place = 0; place < 3; ++place) EXPECT_EQ(part.Second(d)[place], whole.Second(d)[place]) << what;
    }
  }
}

TEST(SymmetricSums, EmptyRangeOfOrdersChangesNothing) {
  HeapOnlyHost host;
  SymmetricSums sums(host, 1, 3);
  const double x = 3.0;
  sums.Join(2.0, &x, 1, 3);
  sums.Join(7.0, &x, 1, 0);
  EXPECT_EQ(sums.Value(1), 2.0);
  EXPECT_EQ(sums.Value(2), 0.0);
}

TEST(SymmetricSums, FailWhenMemoryIsOut) {
  testing::ExpectFailureAtEveryAllocation([](HeapOnlyHost& host) { return SymmetricSums(host, 2, 3).Failed(); });
}

}  // namespace
}  // namespace orv
