// The bodies of the pass kernels, compiled once for each vector unit by the files that include this one.
//
// Such a file is compiled for a unit that the machine may lack, so nothing of it may be taken for another's: everything
// stands in an unnamed namespace, and no header with inline functions is included.
#pragma once

#include <cstddef>

#include "fit/PassKernels.h"

namespace orv {
namespace {

// A vector of Width doubles, and the tile of C that is held in registers: Rows by Vectors of it.
template <int Width>
struct VectorOf;
template <>
struct VectorOf<2> {
  typedef double Type __attribute__((vector_size(16)));
};
template <>
struct VectorOf<4> {
  typedef double Type __attribute__((vector_size(32)));
};
template <>
struct VectorOf<8> {
  typedef double Type __attribute__((vector_size(64)));
};

template <int Width>
[[gnu::always_inline]] inline typename VectorOf<Width>::Type Load(const double* from) {
  typename VectorOf<Width>::Type vector;
  __builtin_memcpy(&vector, from, sizeof vector);
  return vector;
}

template <int Width>
[[gnu::always_inline]] inline void Store(double* to, typename VectorOf<Width>::Type vector) {
  __builtin_memcpy(to, &vector, sizeof vector);
}

// A unit of half the width, for sums over the lanes of a vector.
template <typename Unit>
struct HalfOf {
  static constexpr int Width = Unit::Width / 2;
  static constexpr int Rows = 1;
  static constexpr int Vectors = 1;
};

// Unit: Width, the doubles of a vector; Rows and Vectors, the largest tile.
template <typename Unit>
struct Clones {
  static constexpr int kWidth = Unit::Width;
  using Vector = typename VectorOf<kWidth>::Type;

  // Whole vectors that hold p elements.
  static constexpr int Vectors(int p) { return (p + kWidth - 1) / kWidth; }

  static double SumOfLanes(Vector vector) {
    if constexpr (kWidth == 2) {
      return vector[0] + vector[1];
    } else {
      typename VectorOf<kWidth / 2>::Type halves[2];
      __builtin_memcpy(halves, &vector, sizeof vector);
      return Clones<HalfOf<Unit>>::SumOfLanes(halves[0] + halves[1]);
    }
  }

  static double LinearPredictor(const double* x, const double* beta, int p) {
    constexpr int kSums = 4;
    int j = 0;
    double eta = 0.0;
    if (p >= kWidth) {
      Vector sums[kSums] = {};
      for (; j + kSums * kWidth <= p; j += kSums * kWidth) {
#pragma GCC unroll 4
        for (int k = 0; k < kSums; ++k) {
          sums[k] += Load<kWidth>(x + j + k * kWidth) * Load<kWidth>(beta + j + k * kWidth);
        }
      }
      for (; j + kWidth <= p; j += kWidth) sums[0] += Load<kWidth>(x + j) * Load<kWidth>(beta + j);
      eta = SumOfLanes((sums[0] + sums[1]) + (sums[2] + sums[3]));
    }
    for (; j < p; ++j) eta += x[j] * beta[j];
    return eta;
  }

  static void Weigh(const double* x, double weight, double* weighted, double* sum, int p) {
    for (int v = 0; v < Vectors(p); ++v) {
      const int j = v * kWidth;
      const Vector product = Load<kWidth>(x + j) * weight;
      Store<kWidth>(weighted + j, product);
      Store<kWidth>(sum + j, Load<kWidth>(sum + j) + product);
    }
  }

  static void AddScaled(double* y, const double* x, double factor, int p) {
    for (int v = 0; v < Vectors(p); ++v) {
      const int j = v * kWidth;
      Store<kWidth>(y + j, Load<kWidth>(y + j) + Load<kWidth>(x + j) * factor);
    }
  }

  static void
  TakeMean(const double* x, double factor, double weight, double* mean, double* weighted, double* sum, int p) {
    for (int v = 0; v < Vectors(p); ++v) {
      const int j = v * kWidth;
      const Vector a = Load<kWidth>(x + j) * factor;
      const Vector product = a * -weight;
      Store<kWidth>(mean + j, a);
      Store<kWidth>(weighted + j, product);
      Store<kWidth>(sum + j, Load<kWidth>(sum + j) + product);
    }
  }

  static void ScaleRows(const double* B, const double* factors, double* scaled, int count, int p) {
    const std::size_t stride = PaddedOrder(static_cast<std::size_t>(p));
    for (int i = 0; i < count; ++i) {
      const std::size_t row = static_cast<std::size_t>(i) * stride;
      for (int v = 0; v < Vectors(p); ++v) {
        const std::size_t at = row + static_cast<std::size_t>(v * kWidth);
        Store<kWidth>(scaled + at, Load<kWidth>(B + at) * factors[i]);
      }
    }
  }

  // A tile of C: Rows rows from the pointer on, Vectors vectors wide.
  template <int Rows, int Vectors>
  static void Tile(double* C, const double* A, const double* B, int count, std::size_t stride) {
    Vector sums[Rows][Vectors] = {};
    for (int i = 0; i < count; ++i) {
      Vector b[Vectors];
#pragma GCC unroll 4
      for (int v = 0; v < Vectors; ++v) b[v] = Load<kWidth>(B + v * kWidth);
#pragma GCC unroll 16
      for (int r = 0; r < Rows; ++r) {
#pragma GCC unroll 4
        for (int v = 0; v < Vectors; ++v) sums[r][v] += b[v] * A[r];
      }
      A += stride;
      B += stride;
    }
#pragma GCC unroll 16
    for (int r = 0; r < Rows; ++r) {
      double* row = C + static_cast<std::size_t>(r) * stride;
#pragma GCC unroll 4
      for (int v = 0; v < Vectors; ++v) Store<kWidth>(row + v * kWidth, Load<kWidth>(row + v * kWidth) + sums[r][v]);
    }
  }

  // The tiles of `rows` rows of C, of which `columns` columns are wanted.
  template <int Rows>
  static void Panel(double* C, const double* A, const double* B, int count, std::size_t stride, int columns) {
    constexpr int kWide = Unit::Vectors * kWidth;
    int l = 0;
    for (; l + kWide - kWidth < columns; l += kWide) Tile<Rows, Unit::Vectors>(C + l, A, B + l, count, stride);
    for (; l < columns; l += kWidth) Tile<Rows, 1>(C + l, A, B + l, count, stride);
  }

  template <int Rows>
  static void
  PanelOf(int rows, double* C, const double* A, const double* B, int count, std::size_t stride, int columns) {
    if (rows == Rows) {
      Panel<Rows>(C, A, B, count, stride, columns);
    } else if constexpr (Rows > 1) {
      PanelOf<Rows - 1>(rows, C, A, B, count, stride, columns);
    }
  }

  static void AddOuterProducts(double* C, const double* A, const double* B, int count, int p) {
    const std::size_t stride = PaddedOrder(static_cast<std::size_t>(p));
    if (count == 0) return;
    for (int j = 0; j < p; j += Unit::Rows) {
      const int rows = p - j < Unit::Rows ? p - j : Unit::Rows;
      PanelOf<Unit::Rows>(rows, C + static_cast<std::size_t>(j) * stride, A + j, B, count, stride, j + rows);
    }
  }

  static constexpr PassKernels Table(const char* name) {
    return {name, LinearPredictor, Weigh, AddScaled, TakeMean, ScaleRows, AddOuterProducts};
  }
};

}  // namespace
}  // namespace orv
