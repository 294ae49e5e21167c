#include <gtest/gtest.h>

#include <vector>

#include "fit/PackedCholesky.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

// L of a packed factor.
TestMatrix LowerOfPacked(const std::vector<double>& packed, int n) {
  TestMatrix L = SymmetricOfPacked(packed, n);
  for (int i = 0; i < n; ++i) {
    for (int j = i + 1; j < n; ++j) L(i, j) = 0.0;
  }
  return L;
}

TEST(PackedCholesky, FactorsASmallMatrixExactly) {
  std::vector<double> a = {4, 2, 5, -2, 1, 6};
  int nullity = -1;
  EXPECT_EQ(PackedCholesky(a.data(), 3, nullity), 0);
  EXPECT_EQ(nullity, 0);
  EXPECT_EQ(a, (std::vector<double>{2, 1, 2, -1, 1, 2}));
}

TEST(PackedCholesky, ProductOfTheFactorsIsTheMatrix) {
  TestRandom random(7);
  for (int n = 1; n <= 30; ++n) {
    const TestMatrix a = random.PositiveDefinite(n);
    std::vector<double> packed = Packed(a);
    int nullity = -1;
    ASSERT_EQ(PackedCholesky(packed.data(), n, nullity), 0) << "n = " << n;
    EXPECT_EQ(nullity, 0);
    const TestMatrix L = LowerOfPacked(packed, n);
    EXPECT_LE(Distance(L * Transposed(L), a), n * kEpsilon * Norm(a)) << "n = " << n;
  }
}

TEST(PackedCholesky, FactorsHilbertMatrices) {
  for (int n = 1; n <= 11; ++n) {
    const TestMatrix a = Hilbert(n);
    std::vector<double> packed = Packed(a);
    int nullity = -1;
    ASSERT_EQ(PackedCholesky(packed.data(), n, nullity), 0) << "n = " << n;
    EXPECT_EQ(nullity, 0) << "n = " << n;
    const TestMatrix L = LowerOfPacked(packed, n);
    EXPECT_LE(Distance(L * Transposed(L), a), n * kEpsilon * Norm(a)) << "n = " << n;
  }
}

TEST(PackedCholesky, GivesBackSingularFactorsOfSmallIntegers) {
  // Pivots 0, 1, 2 or 4 with zero columns under the zeros: all arithmetic is exact, so the factor comes back.
  TestRandom random(8);
  const double pivots[] = {0.0, 1.0, 2.0, 4.0};
  for (int n = 1; n <= 30; ++n) {
    TestMatrix L(n, n);
    int zeros = 0;
    for (int j = 0; j < n; ++j) {
      L(j, j) = pivots[random.Integer(4)];
      if (L(j, j) == 0.0) ++zeros;
      for (int i = j + 1; i < n; ++i) L(i, j) = L(j, j) == 0.0 ? 0.0 : random.Integer(7) - 3;
    }
    std::vector<double> packed = Packed(L * Transposed(L));
    int nullity = -1;
    ASSERT_EQ(PackedCholesky(packed.data(), n, nullity), 0) << "n = " << n;
    EXPECT_EQ(nullity, zeros) << "n = " << n;
    EXPECT_EQ(LowerOfPacked(packed, n), L) << "n = " << n;
  }
}

TEST(PackedCholesky, TellsDefiniteSingularAndIndefiniteMatricesApart) {
  struct {
    const char* what;
    int n;
    std::vector<double> packed;
    int failed;
    int nullity;
    std::vector<double> factor;  // not looked at after a failure
  } const cases[] = {
      {"one element", 1, {9}, 0, 0, {3}},
      {"one zero", 1, {0}, 0, 1, {0}},
      {"minus zero", 1, {-0.0}, 0, 1, {0}},
      {"negative", 1, {-1}, 1, 0, {}},
      {"smallest double", 1, {0x1p-1074}, 0, 1, {0}},
      {"15 of the smallest double", 1, {15 * 0x1p-1074}, 0, 1, {0}},
      {"16 of the smallest double", 1, {16 * 0x1p-1074}, 0, 0, {0x1p-535}},
      {"16 of the smallest double below zero", 1, {-16 * 0x1p-1074}, 1, 0, {}},
      {"all zero", 3, {0, 0, 0, 0, 0, 0}, 0, 3, {0, 0, 0, 0, 0, 0}},
      {"zero pivot first", 2, {0, 0, 4}, 0, 1, {0, 0, 2}},
      {"remainder under a zero pivot", 2, {0, 1, 4}, 1, 1, {}},
      {"tiny remainder under a zero pivot", 2, {0, 1e-20, 4}, 1, 1, {}},
      {"remainder whose square is within 15 of the smallest double", 2, {0, 0x1p-536, 4}, 0, 1, {0, 0, 2}},
      {"remainder whose square is 16 of the smallest double", 2, {0, 0x1p-535, 4}, 1, 1, {}},
      {"repeated column", 3, {4, 2, 5, 4, 2, 4}, 0, 1, {2, 1, 2, 2, 0, 0}},
      {"indefinite", 2, {1, 2, 1}, 1, 0, {}},
      {"pivot above 1e-14 of the diagonal", 2, {1, 1, 1 + 0x1p-46}, 0, 0, {1, 1, 0x1p-23}},
      {"pivot below 1e-14 of the diagonal", 2, {1, 1, 1 + 0x1p-47}, 0, 1, {1, 1, 0}},
      {"pivot below minus 1e-14 of the diagonal", 2, {1, 1, 1 - 0x1p-46}, 1, 0, {}},
      {"pivot above minus 1e-14 of the diagonal", 2, {1, 1, 1 - 0x1p-47}, 0, 1, {1, 1, 0}},
  };
  for (const auto& c : cases) {
    std::vector<double> a = c.packed;
    int nullity = -1;
    EXPECT_EQ(PackedCholesky(a.data(), c.n, nullity), c.failed) << c.what;
    EXPECT_EQ(nullity, c.nullity) << c.what;
    if (c.failed == 0) {
      EXPECT_EQ(a, c.factor) << c.what;
    }
  }
}

TEST(PackedCholesky, FailsInTheRowOfTheBadPivotAndKeepsTheRowsBefore) {
  std::vector<double> a = {4, 2, 5, 4, 2, 3, 7, 8, 9, 10};
  int nullity = -1;
  EXPECT_EQ(PackedCholesky(a.data(), 4, nullity), 1);
  EXPECT_EQ(std::vector<double>(a.begin(), a.begin() + 3), (std::vector<double>{2, 1, 2}));
  EXPECT_EQ(std::vector<double>(a.begin() + 6, a.end()), (std::vector<double>{7, 8, 9, 10}));
}

TEST(PackedCholesky, AcceptsAnEmptyMatrix) {
  int nullity = -1;
  EXPECT_EQ(PackedCholesky(nullptr, 0, nullity), 0);
  EXPECT_EQ(nullity, 0);
}

}  // namespace
}  // namespace orv
