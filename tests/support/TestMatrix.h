// Small dense matrices for the tests of the matrix kernels: products summed in long double, fixed random values.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

namespace orv {

inline constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

// Stored by columns; indices count from 0.
class TestMatrix {
 public:
  TestMatrix() = default;
  TestMatrix(int rows, int cols) : m_rows(rows), m_cols(cols), m_values(Size(rows) * Size(cols), 0.0) {}
  // The elements as they stand on paper, row by row.
  TestMatrix(int rows, int cols, const std::vector<double>& byRows) : TestMatrix(rows, cols) {
    for (int i = 0; i < rows; ++i) {
      for (int j = 0; j < cols; ++j) (*this)(i, j) = byRows.at(Size(i) * Size(cols) + Size(j));
    }
  }

  int Rows() const { return m_rows; }
  int Cols() const { return m_cols; }
  double* Data() { return m_values.data(); }
  const double* Data() const { return m_values.data(); }
  double& operator()(int i, int j) { return m_values.at(Size(j) * Size(m_rows) + Size(i)); }
  double operator()(int i, int j) const { return m_values.at(Size(j) * Size(m_rows) + Size(i)); }
  bool operator==(const TestMatrix&) const = default;

 private:
  static std::size_t Size(int count) { return static_cast<std::size_t>(count); }

  int m_rows = 0;
  int m_cols = 0;
  std::vector<double> m_values;
};

inline TestMatrix operator*(const TestMatrix& a, const TestMatrix& b) {
  TestMatrix product(a.Rows(), b.Cols());
  for (int i = 0; i < a.Rows(); ++i) {
    for (int j = 0; j < b.Cols(); ++j) {
      long double sum = 0.0L;
      for (int k = 0; k < a.Cols(); ++k) sum += static_cast<long double>(a(i, k)) * b(k, j);
      product(i, j) = static_cast<double>(sum);
    }
  }
  return product;
}

inline TestMatrix Scaled(TestMatrix a, double factor) {
  for (int j = 0; j < a.Cols(); ++j) {
    for (int i = 0; i < a.Rows(); ++i) a(i, j) *= factor;
  }
  return a;
}

inline TestMatrix Transposed(const TestMatrix& a) {
  TestMatrix result(a.Cols(), a.Rows());
  for (int i = 0; i < a.Rows(); ++i) {
    for (int j = 0; j < a.Cols(); ++j) result(j, i) = a(i, j);
  }
  return result;
}

inline TestMatrix Diagonal(const std::vector<double>& values) {
  const int n = static_cast<int>(values.size());
  TestMatrix result(n, n);
  for (int i = 0; i < n; ++i) result(i, i) = values[static_cast<std::size_t>(i)];
  return result;
}

inline TestMatrix Identity(int n) {
  return Diagonal(std::vector<double>(static_cast<std::size_t>(n), 1.0));
}

inline TestMatrix Hilbert(int n) {
  TestMatrix result(n, n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) result(i, j) = 1.0 / (i + j + 1);
  }
  return result;
}

// The root of the sum of squares.
inline double Norm(const TestMatrix& a) {
  long double sum = 0.0L;
  for (int j = 0; j < a.Cols(); ++j) {
    for (int i = 0; i < a.Rows(); ++i) sum += static_cast<long double>(a(i, j)) * a(i, j);
  }
  return static_cast<double>(std::sqrt(sum));
}

// The norm of a - b. Not a number when an element is not.
inline double Distance(const TestMatrix& a, const TestMatrix& b) {
  TestMatrix difference = a;
  for (int j = 0; j < a.Cols(); ++j) {
    for (int i = 0; i < a.Rows(); ++i) difference(i, j) -= b(i, j);
  }
  return Norm(difference);
}

// Values from -1 to 1, the same with every library: the generator is fixed by the standard, a distribution is not.
class TestRandom {
 public:
  explicit TestRandom(unsigned seed) : m_bits(seed) {}
  double Value() { return static_cast<double>(m_bits() >> 11) * 0x1p-52 - 1.0; }
  int Integer(int below) { return static_cast<int>(m_bits() % static_cast<unsigned>(below)); }
  TestMatrix Matrix(int rows, int cols) {
    TestMatrix result(rows, cols);
    for (int j = 0; j < cols; ++j) {
      for (int i = 0; i < rows; ++i) result(i, j) = Value();
    }
    return result;
  }
  // Positive definite, from more rows than columns, so that its condition stays moderate.
  TestMatrix PositiveDefinite(int n) {
    const TestMatrix x = Matrix(2 * n + 2, n);
    return Transposed(x) * x;
  }

 private:
  std::mt19937_64 m_bits;
};

// The lower triangle by rows.
inline std::vector<double> Packed(const TestMatrix& a) {
  std::vector<double> result;
  for (int i = 0; i < a.Rows(); ++i) {
    for (int j = 0; j <= i; ++j) result.push_back(a(i, j));
  }
  return result;
}

// The symmetric matrix of a packed lower triangle.
inline TestMatrix SymmetricOfPacked(const std::vector<double>& packed, int n) {
  TestMatrix result(n, n);
  std::size_t place = 0;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j <= i; ++j) result(i, j) = result(j, i) = packed.at(place++);
  }
  return result;
}

}  // namespace orv
