#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

#include "inference/SweepPacked.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

// A packed matrix with its swept pivots.
struct Swept {
  int n;
  std::vector<double> packed;
  std::vector<bool> bits;

  explicit Swept(const TestMatrix& a) : n(a.Rows()), packed(Packed(a)) {}
  int Sweep(int pivot) {
    int singular = -1;
    SweepPacked(packed.data(), pivot, n, bits, singular);
    return singular;
  }
  TestMatrix Symmetric() const { return SymmetricOfPacked(packed, n); }
};

std::vector<int> ShuffledPivots(TestRandom& random, int n) {
  std::vector<int> pivots(static_cast<std::size_t>(n));
  std::iota(pivots.begin(), pivots.end(), 1);
  for (int i = n - 1; i > 0; --i) {
    std::swap(pivots[static_cast<std::size_t>(i)], pivots[static_cast<std::size_t>(random.Integer(i + 1))]);
  }
  return pivots;
}

TEST(SweepPacked, OfAllPivotsIsTheInverse) {
  TestRandom random(21);
  for (int n = 1; n <= 30; ++n) {
    const TestMatrix a = random.PositiveDefinite(n);
    Swept swept(a);
    for (int pivot = 1; pivot <= n; ++pivot) EXPECT_EQ(swept.Sweep(pivot), 0) << "n = " << n << ", " << pivot;
    EXPECT_EQ(swept.bits, std::vector<bool>(static_cast<std::size_t>(n), true));
    const TestMatrix inverse = swept.Symmetric();
    EXPECT_LE(Distance(a * inverse, Identity(n)), 2 * n * kEpsilon * Norm(a) * Norm(inverse)) << "n = " << n;
  }
}

TEST(SweepPacked, GivesTheInverseInAnyOrderOfThePivots) {
  TestRandom random(22);
  for (int turn = 0; turn < 20; ++turn) {
    const TestMatrix a = random.PositiveDefinite(6);
    Swept swept(a);
    for (const int pivot : ShuffledPivots(random, 6)) EXPECT_EQ(swept.Sweep(pivot), 0);
    const TestMatrix inverse = swept.Symmetric();
    EXPECT_LE(Distance(a * inverse, Identity(6)), 12 * kEpsilon * Norm(a) * Norm(inverse)) << "turn " << turn;
  }
}

TEST(SweepPacked, SweptAgainInAnyOrderRestoresTheMatrix) {
  TestRandom random(23);
  for (int n = 1; n <= 30; ++n) {
    const TestMatrix a = random.PositiveDefinite(n);
    Swept swept(a);
    for (const int pivot : ShuffledPivots(random, n)) EXPECT_EQ(swept.Sweep(pivot), 0);
    const double condition = Norm(a) * Norm(swept.Symmetric());
    for (const int pivot : ShuffledPivots(random, n)) EXPECT_EQ(swept.Sweep(pivot), 0);
    EXPECT_EQ(swept.bits, std::vector<bool>(static_cast<std::size_t>(n), false));
    EXPECT_LE(Distance(swept.Symmetric(), a), 2 * n * kEpsilon * condition * Norm(a)) << "n = " << n;
  }
}

TEST(SweepPacked, RestoresHilbertMatricesToTheirCondition) {
  for (int n = 1; n <= 6; ++n) {
    const TestMatrix a = Hilbert(n);
    Swept swept(a);
    for (int pivot = 1; pivot <= n; ++pivot) EXPECT_EQ(swept.Sweep(pivot), 0) << "n = " << n;
    const TestMatrix inverse = swept.Symmetric();
    const double rounding = n * kEpsilon * Norm(a) * Norm(inverse);
    EXPECT_LE(Distance(a * inverse, Identity(n)), rounding) << "n = " << n;
    for (int pivot = n; pivot >= 1; --pivot) swept.Sweep(pivot);
    EXPECT_LE(Distance(swept.Symmetric(), a), rounding * Norm(a)) << "n = " << n;
  }
}

TEST(SweepPacked, OfTheDesignGivesLeastSquares) {
  // The products of (1, t, y) for t = 0, 1, 2 and y = 1, 3, 6: intercept 5/6, slope 5/2, residual sum of squares 1/6.
  Swept swept(TestMatrix(3, 3, {3, 3, 10, 3, 5, 15, 10, 15, 46}));
  EXPECT_EQ(swept.Sweep(1), 0);
  EXPECT_EQ(swept.Sweep(2), 0);
  EXPECT_EQ(swept.bits, (std::vector<bool>{true, true, false}));
  const double expected[] = {5.0 / 6.0, -0.5, 0.5, 5.0 / 6.0, 2.5, 1.0 / 6.0};
  for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(swept.packed[i], expected[i], 46 * 4 * kEpsilon) << i;
}

TEST(SweepPacked, KeepsTheSignsOfPartlySweptMatrices) {
  // By hand for (4 2; 2 5): row and column of a swept pivot have opposite signs in the full matrix, and the lower
  // triangle holds the upper element: a column's entries below are positive, the entries to its left negative.
  Swept first(TestMatrix(2, 2, {4, 2, 2, 5}));
  first.Sweep(1);
  EXPECT_EQ(first.packed, (std::vector<double>{0.25, 0.5, 4.0}));
  Swept second(TestMatrix(2, 2, {4, 8, 8, 64}));
  second.Sweep(2);
  EXPECT_EQ(second.packed, (std::vector<double>{3.0, -0.125, 1.0 / 64.0}));
}

TEST(SweepPacked, LeavesTheEliminatedRestInTheCorner) {
  // What is left of the pivots not swept is the Schur complement, whichever pivots were swept.
  TestRandom random(24);
  const TestMatrix a = random.PositiveDefinite(5);
  Swept swept(a);
  swept.Sweep(4);
  swept.Sweep(2);
  Swept inner(TestMatrix(2, 2, {a(1, 1), a(1, 3), a(3, 1), a(3, 3)}));
  inner.Sweep(1);
  inner.Sweep(2);
  const int kept[] = {0, 2, 4};
  TestMatrix border(3, 2);
  TestMatrix corner(3, 3);
  TestMatrix left(3, 3);
  for (int i = 0; i < 3; ++i) {
    border(i, 0) = a(kept[i], 1);
    border(i, 1) = a(kept[i], 3);
    for (int j = 0; j < 3; ++j) {
      corner(i, j) = a(kept[i], kept[j]);
      left(i, j) = swept.Symmetric()(kept[i], kept[j]);
    }
  }
  const TestMatrix explained = border * inner.Symmetric() * Transposed(border);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) EXPECT_NEAR(left(i, j), corner(i, j) - explained(i, j), 40 * kEpsilon * Norm(a));
  }
}

TEST(SweepPacked, RefusesPivotsThatEarlierOnesExplain) {
  // Columns x1, x2, x1 + x2, x3 of small integers, so that what is left of the third is rounding alone.
  const TestMatrix x(5, 4, {1, 2, 3, 0, 2, -1, 1, 1, 0, 1, 1, 4, 3, 1, 4, -2, 1, 1, 2, 1});
  const TestMatrix a = Transposed(x) * x;
  Swept swept(a);
  EXPECT_EQ(swept.Sweep(1), 0);
  EXPECT_EQ(swept.Sweep(2), 0);
  const Swept before = swept;
  EXPECT_EQ(swept.Sweep(3), 1);
  EXPECT_EQ(swept.packed, before.packed) << "a refused sweep changes no bit";
  EXPECT_EQ(swept.bits, before.bits);
  EXPECT_EQ(swept.Sweep(4), 0) << "the flag is cleared on entry";
  EXPECT_EQ(swept.bits, (std::vector<bool>{true, true, false, true}));

  // The swept part is a generalised inverse.
  TestMatrix g = swept.Symmetric();
  for (int j = 0; j < 4; ++j) g(2, j) = g(j, 2) = 0.0;
  EXPECT_LE(Distance(a * g * a, a), 8 * kEpsilon * Norm(a) * Norm(g) * Norm(a));
  EXPECT_LE(Distance(g * a * g, g), 8 * kEpsilon * Norm(a) * Norm(g) * Norm(g));
}

TEST(SweepPacked, ComparesTheScaledPivot) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  struct {
    const char* what;
    double diagonal;
    int singular;
  } const cases[] = {
      {"one", 1.0, 0},
      {"small beside the other entry", 1e-10, 0},
      {"the smallest that is scaled", 1e-12, 0},
      {"just below", std::nextafter(1e-12, 0.0), 1},
      {"zero", 0.0, 1},
      {"negative", -3.0, 0},
      {"the smallest negative that is scaled", -1e-12, 0},
      {"just above zero from below", -1e-13, 1},
      {"large", 1e+150, 0},
      {"so large that its square overflows", 1e+300, 0},
      {"beyond a double", std::numeric_limits<double>::infinity(), 1},
      {"not a number", nan, 1},
  };
  for (const auto& c : cases) {
    Swept swept(Diagonal({c.diagonal, 1e+6}));
    EXPECT_EQ(swept.Sweep(1), c.singular) << c.what;
    if (c.singular != 0) {
      EXPECT_TRUE(swept.packed[0] == c.diagonal || std::isnan(c.diagonal)) << c.what;
      EXPECT_EQ(std::count(swept.bits.begin(), swept.bits.end(), true), 0) << c.what;
    } else {
      // Exact: the scaled pivot is 1 or -1.
      EXPECT_EQ(swept.packed[0], 1.0 / c.diagonal) << c.what;
      EXPECT_EQ(swept.bits, (std::vector<bool>{true, false})) << c.what;
    }
    EXPECT_EQ(swept.packed[2], 1e+6) << c.what;
  }
}

TEST(SweepPacked, NeverRefusesAPivotThatIsSwept) {
  // Swept in, the pivot is 1e-20; swept out again it comes back.
  Swept swept(Diagonal({1e+20}));
  EXPECT_EQ(swept.Sweep(1), 0);
  EXPECT_NEAR(swept.packed[0], 1e-20, 1e-35);
  EXPECT_EQ(swept.Sweep(1), 0);
  EXPECT_NEAR(swept.packed[0], 1e+20, 1e+5);
  EXPECT_EQ(swept.bits, std::vector<bool>{false});
}

TEST(SweepPacked, RefusesEveryPivotOfAnAllZeroMatrix) {
  Swept swept(TestMatrix(3, 3));
  for (int pivot = 1; pivot <= 3; ++pivot) EXPECT_EQ(swept.Sweep(pivot), 1) << pivot;
  EXPECT_EQ(swept.packed, std::vector<double>(6, 0.0));
  EXPECT_TRUE(swept.bits.empty());
}

TEST(SweepPacked, SweepsIndefiniteMatrices) {
  const TestMatrix a(2, 2, {1, 2, 2, 1});
  Swept swept(a);
  EXPECT_EQ(swept.Sweep(1), 0);
  EXPECT_EQ(swept.Sweep(2), 0);
  EXPECT_LE(Distance(a * swept.Symmetric(), Identity(2)), 8 * kEpsilon);
}

TEST(SweepPacked, TakesTheUnitsOutOfTheMatrix) {
  // Without the scale the pivot test would refuse the diagonal entry of 2^-36, about 1.5e-11. All entries stay above
  // 1e-12, swept too, so that each sweep scales them and powers of two leave no trace.
  TestRandom random(25);
  const TestMatrix a = random.PositiveDefinite(4);
  const double unit[] = {1.0, 0x1p-18, 0x1p+18, 0x1p-7};
  TestMatrix b = a;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) b(i, j) *= unit[i] * unit[j];
  }
  Swept plain(a);
  Swept scaled(b);
  for (int pivot = 1; pivot <= 4; ++pivot) {
    EXPECT_EQ(plain.Sweep(pivot), 0);
    EXPECT_EQ(scaled.Sweep(pivot), 0);
  }
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      EXPECT_EQ(scaled.Symmetric()(i, j) * unit[i] * unit[j], plain.Symmetric()(i, j)) << i << ", " << j;
    }
  }
}

}  // namespace
}  // namespace orv
