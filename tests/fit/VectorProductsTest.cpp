#include <gtest/gtest.h>

#include <vector>

#include "fit/VectorProducts.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

TEST(DotProduct, AddsTheProductsOfTheElements) {
  const double x[] = {1.0, -2.0, 3.0};
  const double y[] = {4.0, 0.5, 2.0};
  EXPECT_EQ(DotProduct(x, y, 3), 9.0);
  EXPECT_EQ(DotProduct(x, y, 1), 4.0);
}

TEST(DotProduct, IsZeroForEmptyVectors) {
  EXPECT_EQ(DotProduct(nullptr, nullptr, 0), 0.0);
}

TEST(DotProduct, AddsFromTheFirstElementToTheLast) {
  // The order shows in the last bits: 1 is lost beside 1e16 unless the large terms have gone before.
  const double ones[] = {1.0, 1.0, 1.0};
  const double lost[] = {1e16, 1.0, -1e16};
  const double kept[] = {1e16, -1e16, 1.0};
  EXPECT_EQ(DotProduct(lost, ones, 3), 0.0);
  EXPECT_EQ(DotProduct(kept, ones, 3), 1.0);
}

TEST(DotProduct, RoundsEveryProduct) {
  // A fused multiply-add would keep the tail of 0.1 * 10.
  const double x[] = {-1.0, 0.1};
  const double y[] = {1.0, 10.0};
  EXPECT_EQ(DotProduct(x, y, 2), 0.0);
}

TEST(RowTimesMatrix, TakesTheMatrixByColumns) {
  const double row[] = {1.0, 10.0};
  const double byColumns[] = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0};
  std::vector<double> out(3, -1.0);
  RowTimesMatrix(out.data(), row, byColumns, 2, 3);
  EXPECT_EQ(out, (std::vector<double>{21.0, 43.0, 65.0}));
}

TEST(RowTimesMatrix, IsZeroForAMatrixWithoutRowsAndNothingWithoutColumns) {
  std::vector<double> out(2, -1.0);
  RowTimesMatrix(out.data(), nullptr, nullptr, 0, 2);
  EXPECT_EQ(out, (std::vector<double>{0.0, 0.0}));
  const double row[] = {1.0, 2.0};
  out.assign(2, -1.0);
  RowTimesMatrix(out.data(), row, nullptr, 2, 0);
  EXPECT_EQ(out, (std::vector<double>{-1.0, -1.0}));
}

TEST(RowTimesMatrix, AgreesWithTheMatrixProduct) {
  TestRandom random(6);
  for (int size = 1; size <= 30; ++size) {
    const int cols = 31 - size;
    const TestMatrix row = random.Matrix(1, size);
    const TestMatrix matrix = random.Matrix(size, cols);
    TestMatrix out(1, cols);
    RowTimesMatrix(out.Data(), row.Data(), matrix.Data(), size, cols);
    EXPECT_LE(Distance(out, row * matrix), size * kEpsilon * Norm(row) * Norm(matrix)) << size << " by " << cols;
  }
}

}  // namespace
}  // namespace orv
