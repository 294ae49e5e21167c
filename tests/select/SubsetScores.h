// Scores of sets of columns by this folder's own linear algebra, to judge the sweeps by: elimination in long double,
// the largest pivot first, from the score and the information before anything was swept.
#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

#include "support/TestMatrix.h"

namespace orv::testing {

// U_S' (I_SS)^- U_S for the columns of which the flag stands, and the rank of I_SS.
struct ScoreOfSet {
  ScoreOfSet(const std::vector<double>& score, const std::vector<double>& packed, const std::vector<bool>& members) {
    std::vector<std::size_t> columns;
    for (std::size_t k = 0; k < members.size(); ++k) {
      // A column without information takes no part.
      if (members[k] && packed[k * (k + 1) / 2 + k] > 0.0) columns.push_back(k);
    }
    const std::size_t n = columns.size();
    std::vector<std::vector<long double>> a(n, std::vector<long double>(n));
    std::vector<long double> u(n);
    for (std::size_t i = 0; i < n; ++i) {
      const auto unit = [&](std::size_t c) { return std::sqrt(static_cast<long double>(packed[c * (c + 1) / 2 + c])); };
      u[i] = score[columns[i]] / unit(columns[i]);
      for (std::size_t j = 0; j < n; ++j) {
        const std::size_t high = std::max(columns[i], columns[j]);
        const std::size_t low = std::min(columns[i], columns[j]);
        a[i][j] = packed[high * (high + 1) / 2 + low] / unit(high) / unit(low);
      }
    }
    std::vector<bool> done(n, false);
    for (std::size_t step = 0; step < n; ++step) {
      std::size_t pivot = n;
      for (std::size_t i = 0; i < n; ++i) {
        if (!done[i] && (pivot == n || a[i][i] > a[pivot][pivot])) pivot = i;
      }
      if (!(a[pivot][pivot] > kSingular)) break;
      done[pivot] = true;
      ++Rank;
      Value += static_cast<double>(u[pivot] * u[pivot] / a[pivot][pivot]);
      for (std::size_t i = 0; i < n; ++i) {
        if (done[i]) continue;
        const long double share = a[i][pivot] / a[pivot][pivot];
        u[i] -= share * u[pivot];
        for (std::size_t j = 0; j < n; ++j) {
          if (!done[j]) a[i][j] -= share * a[pivot][j];
        }
      }
    }
  }

  double Value = 0.0;
  int Rank = 0;

 private:
  // Of a unit diagonal. Combinations of other columns leave about 1e-15 here, other columns of these tests over 1e-6.
  static constexpr long double kSingular = 1e-11L;
};

// Score and information of a linear model: U = X'y and I = X'X, summed in long double.
struct ScoreAndInformation {
  ScoreAndInformation(const TestMatrix& x, const TestMatrix& y) {
    for (int i = 0; i < x.Cols(); ++i) {
      Score.push_back(Product(x, i, y, 0));
      for (int j = 0; j <= i; ++j) Packed.push_back(Product(x, i, x, j));
    }
  }
  std::vector<double> Score;
  std::vector<double> Packed;

 private:
  static double Product(const TestMatrix& a, int i, const TestMatrix& b, int j) {
    long double sum = 0.0L;
    for (int row = 0; row < a.Rows(); ++row) sum += static_cast<long double>(a(row, i)) * b(row, j);
    return static_cast<double>(sum);
  }
};

// A random design: of its columns some repeat others, add others up or are zero.
struct RandomDesign {
  RandomDesign(TestRandom& random, int columns, bool aliases) : X(random.Matrix(3 * columns + 4, columns)) {
    for (int c = 1; aliases && c < columns; ++c) {
      const int kind = random.Integer(6);
      const int first = random.Integer(c);
      const int second = random.Integer(c);
      for (int row = 0; row < X.Rows(); ++row) {
        if (kind == 0) X(row, c) = X(row, first);
        if (kind == 1) X(row, c) = X(row, first) + 2.0 * X(row, second);
        if (kind == 2 && c % 4 == 3) X(row, c) = 0.0;
      }
      if (kind == 1) Normalise(c);
    }
    Y = random.Matrix(X.Rows(), 1);
  }
  TestMatrix X;
  TestMatrix Y;

 private:
  // Sums of sums would grow, and with them what rounding leaves of a column that says nothing.
  void Normalise(int column) {
    double sum = 0.0;
    for (int row = 0; row < X.Rows(); ++row) sum += X(row, column) * X(row, column);
    for (int row = 0; row < X.Rows(); ++row) X(row, column) /= std::sqrt(sum);
  }
};

}  // namespace orv::testing
