#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "fit/SubsetGenerator.h"

namespace orv {
namespace {

using Subset = std::vector<int>;

std::vector<Subset> AllSubsets(int d, int m) {
  std::vector<Subset> subsets;
  SubsetGenerator generator(d, m);
  while (generator.Next()) subsets.push_back(generator.Positions());
  return subsets;
}

std::string Describe(int d, int m) {
  return std::to_string(d) + " of " + std::to_string(m);
}

// The number of subsets by Pascal's triangle.
std::size_t Pascal(int d, int m) {
  if (d < 0 || d > m) return 0;
  if (d == 0 || d == m) return 1;
  return Pascal(d - 1, m - 1) + Pascal(d, m - 1);
}

TEST(SubsetGenerator, GivesTheSubsetsInLexicographicOrder) {
  EXPECT_EQ(AllSubsets(2, 4), (std::vector<Subset>{{0, 1}, {0, 2}, {0, 3}, {1, 2}, {1, 3}, {2, 3}}));
  EXPECT_EQ(AllSubsets(3, 5), (std::vector<Subset>{{0, 1, 2},
                                                   {0, 1, 3},
                                                   {0, 1, 4},
                                                   {0, 2, 3},
                                                   {0, 2, 4},
                                                   {0, 3, 4},
                                                   {1, 2, 3},
                                                   {1, 2, 4},
                                                   {1, 3, 4},
                                                   {2, 3, 4}}));
}

// Ascending positions below m, each subset above the one before, as many as there are: so all of them, once each.
TEST(SubsetGenerator, GivesEverySubsetOnce) {
  for (int m = 0; m <= 12; ++m) {
    for (int d = 0; d <= m; ++d) {
      const std::vector<Subset> subsets = AllSubsets(d, m);
      EXPECT_EQ(subsets.size(), Pascal(d, m)) << Describe(d, m);
      EXPECT_TRUE(std::is_sorted(subsets.begin(), subsets.end())) << Describe(d, m);
      EXPECT_EQ(std::set<Subset>(subsets.begin(), subsets.end()).size(), subsets.size()) << Describe(d, m);
      for (const Subset& subset : subsets) {
        ASSERT_EQ(subset.size(), static_cast<std::size_t>(d)) << Describe(d, m);
        for (int k = 0; k < d; ++k) {
          const int position = subset[static_cast<std::size_t>(k)];
          EXPECT_GE(position, k == 0 ? 0 : subset[static_cast<std::size_t>(k) - 1] + 1) << Describe(d, m);
          EXPECT_LT(position, m) << Describe(d, m);
        }
      }
    }
  }
}

TEST(SubsetGenerator, HasBoundaryCases) {
  EXPECT_EQ(AllSubsets(0, 5), std::vector<Subset>{{}}) << "the empty subset";
  EXPECT_EQ(AllSubsets(0, 0), std::vector<Subset>{{}});
  EXPECT_EQ(AllSubsets(1, 3), (std::vector<Subset>{{0}, {1}, {2}}));
  EXPECT_EQ(AllSubsets(4, 4), (std::vector<Subset>{{0, 1, 2, 3}})) << "the whole";
  EXPECT_TRUE(AllSubsets(1, 0).empty());
  EXPECT_TRUE(AllSubsets(5, 4).empty()) << "more than there are";
}

TEST(SubsetGenerator, StaysAtItsEnd) {
  for (const int d : {0, 1, 2, 4}) {
    SubsetGenerator generator(d, 4);
    while (generator.Next()) {
    }
    EXPECT_FALSE(generator.Next()) << d;
    EXPECT_FALSE(generator.Next()) << d;
  }
}

TEST(SubsetGenerator, TwoDoNotDisturbEachOther) {
  SubsetGenerator a(2, 5);
  SubsetGenerator b(3, 6);
  std::vector<Subset> ofA;
  while (a.Next()) {
    ofA.push_back(a.Positions());
    b.Next();
  }
  EXPECT_EQ(ofA, AllSubsets(2, 5));
  EXPECT_EQ(b.Positions(), AllSubsets(3, 6)[9]);
}

TEST(SubsetCount, IsTheBinomialCoefficient) {
  for (int m = 0; m <= 20; ++m) {
    for (int d = -1; d <= m + 1; ++d) {
      EXPECT_NEAR(SubsetCount(d, m), static_cast<double>(Pascal(d, m)), 1e-10) << Describe(d, m);
    }
  }
}

TEST(SubsetCount, GrowsBeyondAnyInteger) {
  // 118264581564861424 for 30 of 60; 100891344545564193334812497256 for 50 of 100.
  EXPECT_NEAR(SubsetCount(30, 60) / 118264581564861424.0, 1.0, 1e-13);
  EXPECT_NEAR(SubsetCount(50, 100) / 1.00891344545564193e29, 1.0, 1e-13);
  EXPECT_TRUE(std::isinf(SubsetCount(600, 1200)));
}

TEST(SubsetCount, MayStopShortWhereItIsEnough) {
  for (int m = 0; m <= 20; ++m) {
    for (int d = 0; d <= m; ++d) {
      const auto exact = static_cast<double>(Pascal(d, m));
      for (const double enough : {0.5, 7.0, 1000.0, 1e9}) {
        const double count = SubsetCount(d, m, enough);
        EXPECT_LE(count, exact * (1 + 1e-12)) << Describe(d, m);
        EXPECT_GE(count, std::min(enough, exact * (1 - 1e-12))) << Describe(d, m);
      }
    }
  }
}

}  // namespace
}  // namespace orv
