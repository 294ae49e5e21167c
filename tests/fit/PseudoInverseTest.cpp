#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "fit/PseudoInverse.h"
#include "fit/SingularValueDecomposition.h"
#include "support/HeapOnlyHost.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

struct Inverse {
  TestMatrix b;
  int failed = -1;
  int status = -1;
};

Inverse Invert(Host& host, const TestMatrix& a) {
  Inverse result{Scaled(TestMatrix(a.Cols(), a.Rows()), std::numeric_limits<double>::quiet_NaN())};
  const std::size_t size = static_cast<std::size_t>(a.Rows()) * static_cast<std::size_t>(a.Cols());
  const std::vector<double> before(a.Data(), a.Data() + size);
  result.failed = PseudoInverse(host, a.Data(), result.b.Data(), a.Rows(), a.Cols(), result.status);
  const auto same = [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); };
  EXPECT_TRUE(std::equal(before.begin(), before.end(), a.Data(), same)) << "the matrix has changed";
  return result;
}

TestMatrix InverseOf(const TestMatrix& a) {
  HeapOnlyHost host;
  const Inverse result = Invert(host, a);
  EXPECT_EQ(result.failed, 0);
  EXPECT_EQ(result.status, kDecompositionOk);
  EXPECT_EQ(host.LiveBlocks(), 0);
  return result.b;
}

// The four conditions that define the inverse. An inverse carries an error of rounding times condition; multiplied by
// the matrix once more, where the inverse itself is not the measure, that is the condition squared.
void ExpectPenrose(const TestMatrix& a, const TestMatrix& g, const std::string& what) {
  const double condition = std::max(1.0, Norm(a) * Norm(g));
  const double rounding = 2 * std::max({a.Rows(), a.Cols(), 4}) * kEpsilon * condition;
  const TestMatrix ag = a * g;
  const TestMatrix ga = g * a;
  EXPECT_LE(Distance(ag * a, a), rounding * Norm(a)) << what << ": A G A";
  EXPECT_LE(Distance(ga * g, g), rounding * condition * Norm(g)) << what << ": G A G";
  EXPECT_LE(Distance(ag, Transposed(ag)), rounding * condition) << what << ": A G";
  EXPECT_LE(Distance(ga, Transposed(ga)), rounding * condition) << what << ": G A";
}

TEST(PseudoInverse, MeetsThePenroseConditionsForEveryShape) {
  TestRandom random(17);
  for (int rows = 1; rows <= 30; ++rows) {
    for (const int cols : {1, 2, 5, rows, rows + 1, 30}) {
      const TestMatrix a = random.Matrix(rows, cols);
      ExpectPenrose(a, InverseOf(a), std::to_string(rows) + " by " + std::to_string(cols));
    }
  }
}

TEST(PseudoInverse, MeetsThePenroseConditionsForDeficientRank) {
  TestRandom random(18);
  for (int rows = 2; rows <= 30; rows += 4) {
    for (int cols = 2; cols <= 30; cols += 7) {
      for (int rank = 1; rank < std::min(rows, cols); rank += 3) {
        // Of unit norm, so that rounding stays below the absolute bound on singular values.
        TestMatrix a = random.Matrix(rows, rank) * random.Matrix(rank, cols);
        a = Scaled(a, 1.0 / Norm(a));
        const TestMatrix g = InverseOf(a);
        // Rounding kept as a direction of its own would show as an inverse of 1e15.
        EXPECT_LT(Norm(g), 1e6) << rows << " by " << cols << ", rank " << rank;
        ExpectPenrose(a, g, std::to_string(rows) + " by " + std::to_string(cols) + ", rank " + std::to_string(rank));
      }
    }
  }
}

TEST(PseudoInverse, IsTheInverseOfARegularMatrix) {
  // The inverse of the Hilbert matrix of order 3; 524 is its condition.
  const TestMatrix expected(3, 3, {9, -36, 30, -36, 192, -180, 30, -180, 180});
  EXPECT_LE(Distance(InverseOf(Hilbert(3)), expected), 4 * 524 * kEpsilon * Norm(expected));
}

TEST(PseudoInverse, MeetsThePenroseConditionsForHilbertMatrices) {
  for (int n = 1; n <= 8; ++n) {
    const TestMatrix a = Hilbert(n);
    const TestMatrix g = InverseOf(a);
    ExpectPenrose(a, g, "Hilbert matrix of order " + std::to_string(n));
    EXPECT_LE(Distance(a * g, Identity(n)), 2 * n * kEpsilon * Norm(a) * Norm(g)) << "n = " << n;
  }
}

TEST(PseudoInverse, TimesASingularSymmetricMatrixProjectsOnTheRowSpace) {
  TestRandom random(19);
  const TestMatrix x = random.Matrix(3, 6);
  const TestMatrix a = Transposed(x) * x;  // rank 3 of 6
  const TestMatrix projection = InverseOf(a) * a;
  const double rounding = 48 * kEpsilon * Norm(a) * Norm(InverseOf(a));
  EXPECT_LE(Distance(projection * projection, projection), rounding);
  EXPECT_LE(Distance(projection, Transposed(projection)), rounding);
  EXPECT_LE(Distance(a * projection, a), rounding * Norm(a));
  double trace = 0.0;
  for (int i = 0; i < 6; ++i) trace += projection(i, i);
  EXPECT_NEAR(trace, 3.0, rounding);
}

TEST(PseudoInverse, CountsSingularValuesUpToTheAbsoluteBoundAsZero) {
  const double above = std::nextafter(1e-14, 1.0);
  EXPECT_EQ(InverseOf(Diagonal({1.0, 1e-14, 4.0})), Diagonal({1.0, 0.0, 0.25}));
  EXPECT_EQ(InverseOf(Diagonal({1.0, above, 4.0})), Diagonal({1.0, 1.0 / above, 0.25}));
  EXPECT_EQ(InverseOf(Scaled(Identity(3), 1e-15)), TestMatrix(3, 3)) << "the bound is not relative";
  EXPECT_EQ(InverseOf(Diagonal({1e+20, 1.0})), Diagonal({1.0 / 1e+20, 1.0})) << "the bound is not relative";
}

TEST(PseudoInverse, KeepsTheSignOfADiagonal) {
  EXPECT_EQ(InverseOf(Diagonal({-2.0, 0.0, 0.5})), Diagonal({-0.5, 0.0, 2.0}));
}

TEST(PseudoInverse, UndoesTheTransposition) {
  // Not symmetric: a transposed result would show. The inverse of (1 2; 0 1) is (1 -2; 0 1).
  EXPECT_LE(Distance(InverseOf(TestMatrix(2, 2, {1, 2, 0, 1})), TestMatrix(2, 2, {1, -2, 0, 1})), 16 * kEpsilon);
}

TEST(PseudoInverse, OfAVectorIsItsTransposeOverItsSquare) {
  const TestMatrix column(3, 1, {1, 2, 2});
  EXPECT_LE(Distance(InverseOf(column), Scaled(Transposed(column), 1.0 / 9.0)), 4 * kEpsilon);
  EXPECT_LE(Distance(InverseOf(Transposed(column)), Scaled(column, 1.0 / 9.0)), 4 * kEpsilon);
}

TEST(PseudoInverse, OfAnAllZeroMatrixIsZero) {
  EXPECT_EQ(InverseOf(TestMatrix(4, 4)), TestMatrix(4, 4));
  EXPECT_EQ(InverseOf(TestMatrix(2, 5)), TestMatrix(5, 2));
}

TEST(PseudoInverse, AcceptsAnEmptyMatrix) {
  EXPECT_EQ(InverseOf(TestMatrix(0, 0)), TestMatrix(0, 0));
}

TEST(PseudoInverse, RaisesNoFloatingPointFailure) {
  TestRandom random(20);
  for (const TestMatrix& a : {TestMatrix(3, 3), random.Matrix(5, 2) * random.Matrix(2, 5), Hilbert(20)}) {
    std::feclearexcept(FE_ALL_EXCEPT);
    InverseOf(a);
    EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW), 0) << a.Rows() << " by " << a.Cols();
  }
}

TEST(PseudoInverse, FailsWithAZeroResultWhenTheDecompositionDoesNotConverge) {
  TestMatrix a = Identity(3);
  a(1, 2) = std::numeric_limits<double>::quiet_NaN();
  HeapOnlyHost host;
  const Inverse result = Invert(host, a);
  EXPECT_EQ(result.failed, 1);
  EXPECT_EQ(result.status, kDecompositionNotConverged);
  EXPECT_EQ(result.b, TestMatrix(3, 3));
  EXPECT_EQ(host.LiveBlocks(), 0);
}

TEST(PseudoInverse, FailsWithStatusTwoAndAZeroResultWhenMemoryIsOut) {
  HeapOnlyHost host;
  host.FailAllocation(0);
  EXPECT_EQ(Invert(host, Hilbert(3)).failed, 0);
  const int requests = host.Requests();
  ASSERT_GE(requests, 4);
  for (int failing = 1; failing <= requests; ++failing) {
    host.FailAllocation(failing);
    const Inverse result = Invert(host, Hilbert(3));
    EXPECT_EQ(result.failed, 1) << "allocation " << failing;
    EXPECT_EQ(result.status, 2) << "allocation " << failing;
    EXPECT_EQ(result.b, TestMatrix(3, 3)) << "allocation " << failing;
    EXPECT_EQ(host.LiveBlocks(), 0) << "allocation " << failing;
  }
}

}  // namespace
}  // namespace orv
