#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "fit/SingularValueDecomposition.h"
#include "support/HeapOnlyHost.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

struct Factors {
  TestMatrix U;
  std::vector<double> w;
  TestMatrix V;
  int failed = -1;
  int status = -1;
};

Factors Decompose(Host& host, const TestMatrix& a) {
  const int n = a.Cols();
  const double unset = std::numeric_limits<double>::quiet_NaN();
  Factors factors{a, std::vector<double>(static_cast<std::size_t>(n), unset), Scaled(Identity(n), unset)};
  factors.failed = SingularValueDecomposition(host, factors.U.Data(), a.Rows(), n, factors.w.data(), factors.V.Data(),
                                              factors.status);
  return factors;
}

Factors Decompose(const TestMatrix& a) {
  HeapOnlyHost host;
  Factors factors = Decompose(host, a);
  EXPECT_EQ(host.LiveBlocks(), 0);
  return factors;
}

// A decomposition is right when it gives the matrix back, its factors are orthogonal and its values ordered.
// Householder and Givens transformations are backward stable; the factor 4 n covers their number.
void ExpectDecomposes(const Factors& f, const TestMatrix& a, const std::string& what) {
  const int m = a.Rows();
  const int n = a.Cols();
  const double rounding = 4 * std::max({m, n, 4}) * kEpsilon;
  EXPECT_EQ(f.failed, 0) << what;
  EXPECT_EQ(f.status, kDecompositionOk) << what;
  EXPECT_LE(Distance(f.U * Diagonal(f.w) * Transposed(f.V), a), rounding * Norm(a)) << what;
  EXPECT_LE(Distance(Transposed(f.V) * f.V, Identity(n)), rounding) << what;
  EXPECT_LE(Distance(f.V * Transposed(f.V), Identity(n)), rounding) << what;
  if (m >= n) {
    EXPECT_LE(Distance(Transposed(f.U) * f.U, Identity(n)), rounding) << what;
  } else {
    EXPECT_LE(Distance(f.U * Transposed(f.U), Identity(m)), rounding) << what;
  }
  for (std::size_t j = 0; j < f.w.size(); ++j) {
    EXPECT_GE(f.w[j], 0.0) << what << ", value " << j;
    if (j > 0) {
      EXPECT_LE(f.w[j], f.w[j - 1]) << what << ", value " << j;
    }
  }
}

// An orthogonal matrix: the product of a few random reflections.
TestMatrix RandomOrthogonal(TestRandom& random, int n) {
  TestMatrix q = Identity(n);
  for (int turn = 0; turn < 3; ++turn) {
    const TestMatrix v = random.Matrix(n, 1);
    const double factor = 2.0 / (Norm(v) * Norm(v));
    TestMatrix reflection = Identity(n);
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < n; ++j) reflection(i, j) -= factor * v(i, 0) * v(j, 0);
    }
    q = q * reflection;
  }
  return q;
}

TEST(SingularValueDecomposition, GivesSquareMatricesBack) {
  TestRandom random(9);
  for (int n = 1; n <= 30; ++n) {
    const TestMatrix a = random.Matrix(n, n);
    ExpectDecomposes(Decompose(a), a, "order " + std::to_string(n));
  }
}

TEST(SingularValueDecomposition, GivesTallAndWideMatricesBack) {
  TestRandom random(10);
  for (int n = 1; n <= 30; ++n) {
    for (const int m : {1, 2, n / 2 + 1, n - 1, n + 1, 2 * n + 3}) {
      if (m < 1) continue;
      const TestMatrix a = random.Matrix(m, n);
      const Factors f = Decompose(a);
      ExpectDecomposes(f, a, std::to_string(m) + " by " + std::to_string(n));
      for (int j = m; j < n; ++j) {
        EXPECT_LE(f.w[static_cast<std::size_t>(j)], 4 * n * kEpsilon * Norm(a)) << m << " by " << n;
      }
    }
  }
}

TEST(SingularValueDecomposition, WideMatricesHaveOrthonormalColumnsOfUAtPositiveValues) {
  TestRandom random(11);
  const TestMatrix a = random.Matrix(4, 7);
  const Factors f = Decompose(a);
  TestMatrix leading(4, 4);
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) leading(i, j) = f.U(i, j);
  }
  EXPECT_LE(Distance(Transposed(leading) * leading, Identity(4)), 28 * kEpsilon);
}

TEST(SingularValueDecomposition, GivesHilbertMatricesBack) {
  for (int n = 1; n <= 30; ++n) {
    const TestMatrix a = Hilbert(n);
    ExpectDecomposes(Decompose(a), a, "Hilbert matrix of order " + std::to_string(n));
  }
}

TEST(SingularValueDecomposition, FindsPrescribedValues) {
  TestRandom random(12);
  struct {
    const char* what;
    std::vector<double> values;
  } const cases[] = {
      {"apart", {9, 7, 4, 2, 1}},
      {"repeated", {5, 5, 5, 2, 2, 1, 1, 1}},
      {"close together", {1, 1 - 1e-15, 1 - 1e-9, 1 - 2e-9}},
      {"graded", {1, 1e-3, 1e-6, 1e-9, 1e-12, 1e-15}},
      {"singular", {3, 2, 1, 0, 0, 0}},
      {"one direction", {4, 0, 0, 0, 0, 0, 0}},
  };
  for (const auto& c : cases) {
    const int n = static_cast<int>(c.values.size());
    const TestMatrix a = RandomOrthogonal(random, n) * Diagonal(c.values) * RandomOrthogonal(random, n);
    const Factors f = Decompose(a);
    ExpectDecomposes(f, a, c.what);
    // Values move by no more than the error of the matrix, which the test's own products add to.
    for (std::size_t j = 0; j < c.values.size(); ++j) {
      EXPECT_NEAR(f.w[j], c.values[j], 8 * n * kEpsilon * Norm(a)) << c.what << ", value " << j;
    }
  }
}

TEST(SingularValueDecomposition, FindsTheValuesOfATwoByTwoMatrix) {
  // a'a = (25, 20; 20, 25) has the eigenvalues 45 and 5.
  const Factors f = Decompose(TestMatrix(2, 2, {3, 0, 4, 5}));
  EXPECT_NEAR(f.w[0], std::sqrt(45.0), 4 * kEpsilon * 7);
  EXPECT_NEAR(f.w[1], std::sqrt(5.0), 4 * kEpsilon * 7);
}

TEST(SingularValueDecomposition, OrdersTheAbsoluteValuesOfADiagonalDownward) {
  const TestMatrix a = Diagonal({0.5, -3.0, 2.0, 0.0, -1e-14, 7.0});
  const Factors f = Decompose(a);
  EXPECT_EQ(f.w, (std::vector<double>{7.0, 3.0, 2.0, 0.5, 1e-14, 0.0}));
  ExpectDecomposes(f, a, "diagonal");
  EXPECT_EQ(f.U * Diagonal(f.w) * Transposed(f.V), a);
}

TEST(SingularValueDecomposition, NegatesAColumnOfVWithItsValue) {
  // The reflector of one column turns 3 into -3, which the last step makes positive again.
  const Factors f = Decompose(TestMatrix(1, 1, {3.0}));
  EXPECT_EQ(f.w[0], 3.0);
  EXPECT_EQ(f.U(0, 0) * f.V(0, 0), 1.0);
  const Factors negative = Decompose(TestMatrix(1, 1, {-3.0}));
  EXPECT_EQ(negative.w[0], 3.0);
  EXPECT_EQ(negative.U(0, 0) * negative.V(0, 0), -1.0);
}

TEST(SingularValueDecomposition, EqualValuesKeepTheirOrder) {
  const Factors f = Decompose(Diagonal({2.0, 2.0, 3.0, 2.0}));
  EXPECT_EQ(f.w, (std::vector<double>{3.0, 2.0, 2.0, 2.0}));
  const int place[] = {2, 0, 1, 3};
  for (int j = 0; j < 4; ++j) {
    for (int i = 0; i < 4; ++i) EXPECT_EQ(std::abs(f.V(i, j)), i == place[j] ? 1.0 : 0.0) << i << ", " << j;
  }
}

TEST(SingularValueDecomposition, AllZeroMatrixHasZeroValuesAndIdentityFactors) {
  for (const int n : {1, 2, 5}) {
    const TestMatrix a(n, n);
    const Factors f = Decompose(a);
    ExpectDecomposes(f, a, "zero");
    EXPECT_EQ(f.w, std::vector<double>(static_cast<std::size_t>(n), 0.0));
    EXPECT_EQ(f.U, Identity(n));
    EXPECT_EQ(f.V, Identity(n));
  }
}

TEST(SingularValueDecomposition, HandlesZeroRowsAndColumns) {
  TestRandom random(13);
  for (int hole = 0; hole < 6; ++hole) {
    TestMatrix a = random.Matrix(6, 6);
    for (int i = 0; i < 6; ++i) a(i, hole) = 0.0;
    ExpectDecomposes(Decompose(a), a, "zero column " + std::to_string(hole));
    ExpectDecomposes(Decompose(Transposed(a)), Transposed(a), "zero row " + std::to_string(hole));
  }
}

TEST(SingularValueDecomposition, CancelsTheSuperdiagonalBesideAZeroOnTheDiagonal) {
  // Upper bidiagonal already, with zeros on the diagonal at the start, in the middle and at the end.
  struct {
    const char* what;
    std::vector<double> diagonal;
  } const cases[] = {
      {"start", {0, 2, 3, 4}}, {"middle", {1, 0, 3, 4}}, {"end", {1, 2, 3, 0}},
      {"all", {0, 0, 0, 0}},   {"two", {0, 2, 0, 4}},
  };
  for (const auto& c : cases) {
    TestMatrix a = Diagonal(c.diagonal);
    for (int i = 0; i < 3; ++i) a(i, i + 1) = 1.0;
    ExpectDecomposes(Decompose(a), a, c.what);
  }
}

TEST(SingularValueDecomposition, ScalesExactlyWithAPowerOfTwo) {
  // Sums of absolute values before the squares and ratios in the shift: neither underflow nor overflow comes in.
  TestRandom random(14);
  for (const int n : {2, 7, 20}) {
    const TestMatrix a = random.Matrix(n + 2, n);
    const Factors unit = Decompose(a);
    for (const double factor : {0x1p-700, 0x1p-3, 0x1p+700}) {
      const Factors f = Decompose(Scaled(a, factor));
      EXPECT_EQ(f.failed, 0);
      EXPECT_EQ(f.U, unit.U) << "n = " << n << ", factor " << factor;
      EXPECT_EQ(f.V, unit.V) << "n = " << n << ", factor " << factor;
      for (std::size_t j = 0; j < f.w.size(); ++j) EXPECT_EQ(f.w[j], unit.w[j] * factor) << factor;
    }
  }
}

TEST(SingularValueDecomposition, RaisesNoFloatingPointFailure) {
  TestRandom random(15);
  const TestMatrix matrices[] = {TestMatrix(4, 4),
                                 Diagonal({1.0, 0.0, -2.0}),
                                 Hilbert(25),
                                 random.Matrix(12, 12),
                                 random.Matrix(12, 2) * random.Matrix(2, 12),
                                 Scaled(random.Matrix(9, 9), 1e-250),
                                 Scaled(random.Matrix(9, 9), 1e+250),
                                 random.Matrix(3, 8)};
  for (const TestMatrix& a : matrices) {
    std::feclearexcept(FE_ALL_EXCEPT);
    const Factors f = Decompose(a);
    EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW), 0) << a.Rows() << " by " << a.Cols();
    EXPECT_EQ(f.failed, 0);
  }
}

TEST(SingularValueDecomposition, GivesUpOnAMatrixThatIsNotFinite) {
  TestRandom random(16);
  for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    for (int hole = 0; hole < 4; ++hole) {
      TestMatrix a = random.Matrix(4, 4);
      a(hole, (hole + 1) % 4) = bad;
      const Factors f = Decompose(a);
      EXPECT_EQ(f.failed, 1) << bad << " in row " << hole;
      EXPECT_EQ(f.status, kDecompositionNotConverged) << bad << " in row " << hole;
    }
  }
}

TEST(SingularValueDecomposition, AcceptsMatricesWithoutColumnsOrRows) {
  const Factors none = Decompose(TestMatrix(0, 0));
  EXPECT_EQ(none.failed, 0);
  EXPECT_EQ(none.status, kDecompositionOk);
  EXPECT_EQ(Decompose(TestMatrix(3, 0)).failed, 0);
  const Factors noRows = Decompose(TestMatrix(0, 2));
  EXPECT_EQ(noRows.failed, 0);
  EXPECT_EQ(noRows.w, std::vector<double>(2, 0.0));
  EXPECT_EQ(noRows.V, Identity(2));
}

TEST(SingularValueDecomposition, ReportsMemoryThatIsOutAndGivesTheRestBack) {
  const TestMatrix a = Diagonal({1.0, 3.0, 2.0});
  HeapOnlyHost host;
  host.FailAllocation(0);
  EXPECT_EQ(Decompose(host, a).failed, 0);
  const int requests = host.Requests();
  ASSERT_GE(requests, 2);
  for (int failing = 1; failing <= requests; ++failing) {
    host.FailAllocation(failing);
    const Factors f = Decompose(host, a);
    EXPECT_EQ(f.failed, 1) << "allocation " << failing;
    EXPECT_EQ(f.status, kDecompositionOutOfMemory) << "allocation " << failing;
    EXPECT_EQ(host.LiveBlocks(), 0) << "allocation " << failing;
    if (failing == 1) continue;
    // Only the ordering is missing.
    EXPECT_EQ(f.w, (std::vector<double>{1.0, 3.0, 2.0})) << "allocation " << failing;
    EXPECT_EQ(f.U * Diagonal(f.w) * Transposed(f.V), a) << "allocation " << failing;
  }
}

}  // namespace
}  // namespace orv
