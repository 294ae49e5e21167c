#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "fit/LDL.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

constexpr double kTolerance = 1e-12;  // the one that the fit uses
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A matrix as rows behind pointers, the form that the kernels take.
class RowMatrix {
 public:
  explicit RowMatrix(const TestMatrix& a) : m_order(a.Rows()), m_values(Transposed(a)) {
    for (int i = 0; i < m_order; ++i) m_rows.push_back(m_values.Data() + i * m_order);
  }
  RowMatrix(const RowMatrix&) = delete;
  RowMatrix& operator=(const RowMatrix&) = delete;

  double** Rows() { return m_rows.data(); }
  int Order() const { return m_order; }
  TestMatrix Values() const { return Transposed(m_values); }
  TestMatrix SymmetricOfUpper() const {
    TestMatrix result = Values();
    for (int i = 0; i < m_order; ++i) {
      for (int j = 0; j < i; ++j) result(i, j) = result(j, i);
    }
    return result;
  }
  // L D L' of a factor.
  TestMatrix ProductOfFactor() const {
    const TestMatrix factor = Values();
    TestMatrix L = Identity(m_order);
    TestMatrix D(m_order, m_order);
    for (int i = 0; i < m_order; ++i) {
      D(i, i) = factor(i, i);
      for (int j = 0; j < i; ++j) L(i, j) = factor(i, j);
    }
    return L * D * Transposed(L);
  }

 private:
  int m_order;
  TestMatrix m_values;  // the transpose, so that rows lie together
  std::vector<double*> m_rows;
};

// The generalised inverse by the kernels, in full.
TestMatrix InverseOf(const TestMatrix& a, std::vector<unsigned char>* dropped = nullptr) {
  RowMatrix work(a);
  if (dropped != nullptr) dropped->resize(static_cast<std::size_t>(a.Rows()));
  FactorLDL(work.Rows(), a.Rows(), kTolerance, dropped == nullptr ? nullptr : dropped->data());
  InvertLDL(work.Rows(), a.Rows());
  return work.SymmetricOfUpper();
}

// Columns x1, x2, x3, x1 + x2, x4, x3 - x1: the fourth and sixth say nothing new.
TestMatrix WithTwoAliasedColumns() {
  TestRandom random(20);
  TestMatrix x = random.Matrix(12, 6);
  for (int i = 0; i < x.Rows(); ++i) {
    x(i, 3) = x(i, 0) + x(i, 1);
    x(i, 5) = x(i, 2) - x(i, 0);
  }
  return Transposed(x) * x;
}

TEST(FactorLDL, FactorsASmallMatrixExactlyFromItsUpperTriangle) {
  RowMatrix a(TestMatrix(3, 3, {4, 2, -2, kNaN, 5, 1, kNaN, kNaN, 6}));
  std::vector<unsigned char> dropped(3, 7);
  EXPECT_EQ(FactorLDL(a.Rows(), 3, kTolerance, dropped.data()), 3);
  EXPECT_EQ(a.Values(), TestMatrix(3, 3, {4, 2, -2, 0.5, 4, 1, -0.5, 0.5, 4}));
  EXPECT_EQ(dropped, std::vector<unsigned char>(3, 0));
}

TEST(FactorLDL, ProductOfTheFactorsIsTheMatrix) {
  TestRandom random(1);
  for (int n = 1; n <= 30; ++n) {
    const TestMatrix a = random.PositiveDefinite(n);
    RowMatrix work(a);
    EXPECT_EQ(FactorLDL(work.Rows(), n, kTolerance, nullptr), n);
    // The factorisation of a definite matrix is backward stable: n roundings an element.
    EXPECT_LE(Distance(work.ProductOfFactor(), a), n * kEpsilon * Norm(a)) << "n = " << n;
  }
}

TEST(FactorLDL, FactorsHilbertMatricesUntilThePivotsFallBelowTheTolerance) {
  // Pivot k of a Hilbert matrix is 1 / ((2k - 1) C(2k - 2, k - 1)^2): 1.4e-12 for k = 11, 8.7e-14 for k = 12.
  for (int n = 1; n <= 12; ++n) {
    const TestMatrix a = Hilbert(n);
    RowMatrix work(a);
    std::vector<unsigned char> dropped(static_cast<std::size_t>(n));
    EXPECT_EQ(FactorLDL(work.Rows(), n, kTolerance, dropped.data()), n < 12 ? n : 11);
    for (int i = 0; i < n; ++i) EXPECT_EQ(dropped[static_cast<std::size_t>(i)], i == 11 ? 1 : 0) << n << ", " << i;
    // A dropped pivot leaves its own size behind.
    const double left = n < 12 ? 0.0 : 1e-13;
    EXPECT_LE(Distance(work.ProductOfFactor(), a), n * kEpsilon * Norm(a) + left) << "n = " << n;
  }
}

TEST(FactorLDL, DropsColumnsThatEarlierOnesExplain) {
  const TestMatrix a = WithTwoAliasedColumns();
  RowMatrix work(a);
  std::vector<unsigned char> dropped(6, 9);
  EXPECT_EQ(FactorLDL(work.Rows(), 6, kTolerance, dropped.data()), 4);
  EXPECT_EQ(dropped, (std::vector<unsigned char>{0, 0, 0, 1, 0, 1}));
  EXPECT_EQ(work.Values()(3, 3), 0.0);
  EXPECT_EQ(work.Values()(5, 5), 0.0);
  EXPECT_LE(Distance(work.ProductOfFactor(), a), 6 * kEpsilon * Norm(a));
}

TEST(FactorLDL, ComparesPivotsWithTheBoundAndWithEightTimesItBelowZero) {
  const double below = std::nextafter(1e-12, 0.0);
  const double clearlyNegative = std::nextafter(-8e-12, -1.0);
  struct {
    const char* what;
    std::vector<double> diagonal;
    double tolerance;
    int rank;
    std::vector<unsigned char> dropped;
  } const cases[] = {
      {"at the bound", {1.0, 1e-12}, 1e-12, 2, {0, 0}},
      {"just below the bound", {1.0, below}, 1e-12, 1, {0, 1}},
      {"the bound comes from the largest, wherever it stands", {1e-12, 2.0, 2e-12}, 1e-12, 2, {1, 0, 0}},
      {"zero", {1.0, 0.0, 3.0}, 1e-12, 2, {0, 1, 0}},
      {"zero with no tolerance", {1.0, 0.0}, 0.0, 1, {0, 1}},
      {"minus 8 times the bound", {1.0, -8e-12}, 1e-12, 1, {0, 1}},
      {"below minus 8 times the bound", {1.0, clearlyNegative}, 1e-12, -1, {0, 1}},
      {"negative before positive", {-1.0, 2.0, 3.0}, 1e-12, -2, {1, 0, 0}},
      {"any negative with no tolerance", {1.0, -1e-300}, 0.0, -1, {0, 1}},
      {"all zero", {0.0, 0.0, 0.0}, 1e-12, 0, {1, 1, 1}},
      {"all negative: no pivot, so no sign", {-1.0, -2.0}, 1e-12, 0, {1, 1}},
      {"one element", {5.0}, 1e-12, 1, {0}},
  };
  for (const auto& c : cases) {
    RowMatrix a(Diagonal(c.diagonal));
    std::vector<unsigned char> dropped(c.diagonal.size(), 5);
    EXPECT_EQ(FactorLDL(a.Rows(), a.Order(), c.tolerance, dropped.data()), c.rank) << c.what;
    EXPECT_EQ(dropped, c.dropped) << c.what;
    for (int i = 0; i < a.Order(); ++i) {
      const auto place = static_cast<std::size_t>(i);
      EXPECT_EQ(a.Values()(i, i), c.dropped[place] != 0 ? 0.0 : c.diagonal[place]) << c.what << ", pivot " << i;
    }
  }
}

TEST(FactorLDL, NegatesTheRankOfAnIndefiniteMatrix) {
  // The second pivot is 1 - 6 * 6 / 4 = -8.
  RowMatrix a(TestMatrix(3, 3, {4, 6, 0, 6, 1, 0, 0, 0, 2}));
  std::vector<unsigned char> dropped(3);
  EXPECT_EQ(FactorLDL(a.Rows(), 3, kTolerance, dropped.data()), -2);
  EXPECT_EQ(dropped, (std::vector<unsigned char>{0, 1, 0}));
}

TEST(FactorLDL, LeavesTheElementsUnderASkippedPivotAsTheyAre) {
  RowMatrix a(TestMatrix(3, 3, {0, 7, -3, 0, 2, 4, 0, 0, 9}));
  EXPECT_EQ(FactorLDL(a.Rows(), 3, kTolerance, nullptr), 2);
  EXPECT_EQ(a.Values(), TestMatrix(3, 3, {0, 7, -3, 7, 2, 4, -3, 2, 1}));
}

TEST(FactorLDL, AcceptsAModelWithoutParameters) {
  EXPECT_EQ(FactorLDL(nullptr, 0, kTolerance, nullptr), 0);
  SolveLDL(nullptr, 0, nullptr);
  InvertLDL(nullptr, 0);
  MirrorUpper(nullptr, 0);
  ZeroRowsAndColumns(nullptr, 0, nullptr);
}

TEST(SolveLDL, SolvesTheSystemOfTheMatrix) {
  TestRandom random(2);
  for (int n = 1; n <= 30; ++n) {
    const TestMatrix a = random.PositiveDefinite(n);
    const TestMatrix b = random.Matrix(n, 1);
    TestMatrix x = b;
    RowMatrix work(a);
    FactorLDL(work.Rows(), n, kTolerance, nullptr);
    SolveLDL(work.Rows(), n, x.Data());
    // A backward stable solution leaves a residual of rounding size against the norms of matrix and solution.
    EXPECT_LE(Distance(a * x, b), 2 * n * kEpsilon * Norm(a) * Norm(x)) << "n = " << n;
  }
}

TEST(SolveLDL, LeavesASmallResidualOnHilbertMatrices) {
  for (int n = 1; n <= 11; ++n) {
    const TestMatrix a = Hilbert(n);
    TestMatrix x(n, 1);
    for (int i = 0; i < n; ++i) x(i, 0) = i % 2 == 0 ? 1.0 : -1.0;
    const TestMatrix b = x;
    RowMatrix work(a);
    FactorLDL(work.Rows(), n, kTolerance, nullptr);
    SolveLDL(work.Rows(), n, x.Data());
    EXPECT_LE(Distance(a * x, b), 2 * n * kEpsilon * Norm(a) * Norm(x)) << "n = " << n;
  }
}

TEST(SolveLDL, GivesDroppedParametersAZeroStep) {
  const TestMatrix a = WithTwoAliasedColumns();
  TestRandom random(3);
  const TestMatrix b = a * random.Matrix(6, 1);
  TestMatrix x = b;
  RowMatrix work(a);
  FactorLDL(work.Rows(), 6, kTolerance, nullptr);
  SolveLDL(work.Rows(), 6, x.Data());
  EXPECT_EQ(x(3, 0), 0.0);
  EXPECT_EQ(x(5, 0), 0.0);
  // The right-hand side lies in the range of the matrix, so the remaining columns solve it.
  EXPECT_LE(Distance(a * x, b), 12 * kEpsilon * Norm(a) * Norm(x));
}

TEST(SolveLDL, CarriesTheElementsUnderASkippedPivotForward) {
  // Forward with the rows (1), (7, 1), (-3, 2, 1); then the pivots 0, 2, 1 and back: exact in small integers.
  RowMatrix a(TestMatrix(3, 3, {0, 7, -3, 0, 2, 4, 0, 0, 9}));
  FactorLDL(a.Rows(), 3, kTolerance, nullptr);
  double b[] = {1.0, 11.0, 10.0};  // forward: 1, 4, 5
  SolveLDL(a.Rows(), 3, b);
  EXPECT_EQ(b[0], 0.0);
  EXPECT_EQ(b[1], 4.0 / 2.0 - 2.0 * 5.0);
  EXPECT_EQ(b[2], 5.0);
}

TEST(InvertLDL, InvertsExactlyWhereArithmeticIsExact) {
  // Pivots 4, 4, 4; the inverse from the inverted factors.
  const TestMatrix a(3, 3, {4, 2, -2, 2, 5, 1, -2, 1, 6});
  const TestMatrix inverse = InverseOf(a);
  EXPECT_EQ(a * inverse, Identity(3));
}

TEST(InvertLDL, TheInverseTimesTheMatrixIsTheIdentity) {
  TestRandom random(4);
  for (int n = 1; n <= 30; ++n) {
    const TestMatrix a = random.PositiveDefinite(n);
    const TestMatrix inverse = InverseOf(a);
    EXPECT_LE(Distance(a * inverse, Identity(n)), 2 * n * kEpsilon * Norm(a) * Norm(inverse)) << "n = " << n;
  }
}

TEST(InvertLDL, InvertsHilbertMatricesToTheirCondition) {
  // The inverse of the Hilbert matrix of order 3 is known in integers; larger ones are judged by their residual.
  const TestMatrix third(3, 3, {9, -36, 30, -36, 192, -180, 30, -180, 180});
  EXPECT_LE(Distance(InverseOf(Hilbert(3)), third), 524 * kEpsilon * Norm(third));  // 524: condition of the matrix
  for (int n = 1; n <= 9; ++n) {
    const TestMatrix a = Hilbert(n);
    const TestMatrix inverse = InverseOf(a);
    EXPECT_LE(Distance(a * inverse, Identity(n)), n * kEpsilon * Norm(a) * Norm(inverse)) << "n = " << n;
  }
}

TEST(InvertLDL, GivesAGeneralisedInverseThatIsZeroAtDroppedParameters) {
  const TestMatrix a = WithTwoAliasedColumns();
  std::vector<unsigned char> dropped;
  const TestMatrix g = InverseOf(a, &dropped);
  ASSERT_EQ(dropped, (std::vector<unsigned char>{0, 0, 0, 1, 0, 1}));
  for (const int i : {3, 5}) {
    for (int j = 0; j < 6; ++j) {
      EXPECT_EQ(g(i, j), 0.0) << i << ", " << j;
      EXPECT_EQ(g(j, i), 0.0) << j << ", " << i;
    }
  }
  const double condition = Norm(a) * Norm(g);
  EXPECT_LE(Distance(a * g * a, a), 12 * kEpsilon * condition * Norm(a));
  EXPECT_LE(Distance(g * a * g, g), 12 * kEpsilon * condition * Norm(g));
}

TEST(InvertLDL, InvertedTwiceIsTheMatrixOfTheKeptParameters) {
  TestMatrix kept = WithTwoAliasedColumns();
  const TestMatrix g = InverseOf(kept);
  const TestMatrix information = InverseOf(g);
  for (const int i : {3, 5}) {
    for (int j = 0; j < 6; ++j) kept(i, j) = kept(j, i) = 0.0;
  }
  EXPECT_LE(Distance(information, kept), 24 * kEpsilon * Norm(kept) * Norm(g) * Norm(kept));
  for (int j = 0; j < 6; ++j) EXPECT_EQ(information(3, j), 0.0) << j;
}

TEST(InvertLDL, IsZeroForAnAllZeroMatrix) {
  EXPECT_EQ(InverseOf(TestMatrix(4, 4)), TestMatrix(4, 4));
}

TEST(InvertLDL, InvertsOneElement) {
  EXPECT_EQ(InverseOf(TestMatrix(1, 1, {8.0})), TestMatrix(1, 1, {0.125}));
  EXPECT_EQ(InverseOf(TestMatrix(1, 1, {-8.0})), TestMatrix(1, 1, {0.0}));
}

TEST(ZeroRowsAndColumns, ZeroesTheMarkedOnesAndNoOther) {
  RowMatrix a(TestMatrix(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9}));
  const unsigned char fixed[] = {0, 1, 0};
  ZeroRowsAndColumns(a.Rows(), 3, fixed);
  EXPECT_EQ(a.Values(), TestMatrix(3, 3, {1, 0, 3, 0, 0, 0, 7, 0, 9}));
}

TEST(ZeroRowsAndColumns, MakesFactorLDLDropTheFixedParameter) {
  TestRandom random(5);
  const TestMatrix a = random.PositiveDefinite(4);
  RowMatrix work(a);
  const unsigned char fixed[] = {0, 0, 1, 0};
  ZeroRowsAndColumns(work.Rows(), 4, fixed);
  std::vector<unsigned char> dropped(4);
  EXPECT_EQ(FactorLDL(work.Rows(), 4, kTolerance, dropped.data()), 3);
  EXPECT_EQ(dropped, (std::vector<unsigned char>{0, 0, 1, 0}));
}

TEST(MirrorUpper, CopiesTheUpperTriangleIntoTheLower) {
  RowMatrix a(TestMatrix(3, 3, {1, 2, 3, kNaN, 5, 6, kNaN, kNaN, 9}));
  MirrorUpper(a.Rows(), 3);
  EXPECT_EQ(a.Values(), TestMatrix(3, 3, {1, 2, 3, 2, 5, 6, 3, 6, 9}));
}

}  // namespace
}  // namespace orv
