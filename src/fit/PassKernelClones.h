// The bodies of the pass kernels, compiled once for each vector unit by the files that include this one.
//
// Such a file is compiled for a unit that the machine may lack, so nothing of it may be taken for another's: everything
// stands in an unnamed namespace or is always inlined, and no function of the standard library is called.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fit/PassKernels.h"

namespace orv {
namespace {

// A vector of Width doubles, and the tile of C that is held in registers: Rows by Vectors of it.
template <int Width>
struct VectorOf;
template <>
struct VectorOf<2> {
  typedef double Type __attribute__((vector_size(16)));
  typedef std::int64_t Bits __attribute__((vector_size(16)));
};
template <>
struct VectorOf<4> {
  typedef double Type __attribute__((vector_size(32)));
  typedef std::int64_t Bits __attribute__((vector_size(32)));
};
template <>
struct VectorOf<8> {
  typedef double Type __attribute__((vector_size(64)));
  typedef std::int64_t Bits __attribute__((vector_size(64)));
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
  // Of a double.
  static constexpr std::int64_t kExponentBias = 1023;
  static constexpr int kFractionBits = 52;

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

  static void LinearPredictors(const double* B, const double* beta, double* eta, int count, int p) {
    const std::size_t stride = PaddedOrder(static_cast<std::size_t>(p));
    constexpr int kLists = static_cast<int>(kVectorDoubles);
    for (int i = 0; i < count; ++i) {
      const double* x = B + static_cast<std::size_t>(i) * stride;
      Vector sums[2] = {};
      int v = 0;
      for (; v + 2 <= Vectors(p); v += 2) {
        const int j = v * kWidth;
        sums[0] += Load<kWidth>(x + j) * Load<kWidth>(beta + j);
        sums[1] += Load<kWidth>(x + j + kWidth) * Load<kWidth>(beta + j + kWidth);
      }
      if (v < Vectors(p)) sums[0] += Load<kWidth>(x + v * kWidth) * Load<kWidth>(beta + v * kWidth);
      eta[i] = SumOfLanes(sums[0] + sums[1]);
    }
    for (int i = count; i % kLists != 0; ++i) eta[i] = 0.0;
  }

  // exp(x) = 2^n exp(r) with n the whole number next to x / log 2 and |r| <= log(2) / 2, where the Taylor polynomial of
  // degree 13 has an error of 4e-18. log 2 is taken in two parts, of which the first times n is exact (Cody and Waite,
  // 1980). What r and 1 + r lose to rounding is added with the small terms, so that the last sum alone rounds: noise of
  // the risks becomes noise of the likelihood, and a step near the maximum is judged by its last digits.
  // REQUIRES: |x| <= kLargestExponent, where 2^n is a number.
  static Vector Exponential(Vector x) {
    constexpr double kLog2e = 0x1.71547652b82fep+0;
    constexpr double kLog2High = 0x1.62e42fee00000p-1;
    constexpr double kLog2Low = 0x1.a39ef35793c76p-33;
    constexpr double kShifter = 0x1.8p52;  // whatever is added to it loses its fraction
    constexpr double kReciprocalFactorials[] = {1.0 / 6227020800, 1.0 / 479001600, 1.0 / 39916800, 1.0 / 3628800,
                                                1.0 / 362880,     1.0 / 40320,     1.0 / 5040,     1.0 / 720,
                                                1.0 / 120,        1.0 / 24,        1.0 / 6,        1.0 / 2};
    const Vector shifted = x * kLog2e + kShifter;
    const Vector n = shifted - kShifter;
    const Vector reduced = x - n * kLog2High;
    const Vector r = reduced - n * kLog2Low;
    const Vector lostByR = (reduced - r) - n * kLog2Low;
    Vector q = Vector{} + kReciprocalFactorials[0];
    for (int k = 1; k < 12; ++k) q = q * r + kReciprocalFactorials[k];
    const Vector head = 1.0 + r;
    const Vector lostByHead = r - (head - 1.0);
    const Vector fraction = head + (lostByHead + (lostByR + r * r * q));
    // The low bits of the shifted number are n, and those of a double above bit 52 its exponent.
    typename VectorOf<kWidth>::Bits bits;
    __builtin_memcpy(&bits, &shifted, sizeof bits);
    bits = (bits + kExponentBias) << kFractionBits;
    Vector power;
    __builtin_memcpy(&power, &bits, sizeof power);
    return fraction * power;
  }

  static void Exponentials(const double* eta, double* results, int count) {
    constexpr double kLargestExponent = 700.0;
    bool isInRange = true;
    for (int i = 0; i < count; ++i) isInRange &= __builtin_fabs(eta[i]) <= kLargestExponent;
    if (!isInRange) {
      for (int i = 0; i < count; ++i) results[i] = __builtin_exp(eta[i]);
      return;
    }
    for (int i = 0; i < count; i += kWidth) Store<kWidth>(results + i, Exponential(Load<kWidth>(eta + i)));
  }

  template <int Count>
  static void CopyPart(const double*& from, double*& to, int count) {
    if ((count & Count) == 0) return;
    __builtin_memcpy(to, from, Count * sizeof(double));
    from += Count;
    to += Count;
  }

  static void CopyRows(const double* cells, std::size_t distance, double* B, int count, int p) {
    const std::size_t stride = PaddedOrder(static_cast<std::size_t>(p));
    const int whole = p / kWidth * kWidth;
    for (int i = 0; i < count; ++i) {
      const double* from = cells + static_cast<std::size_t>(i) * distance;
      double* to = B + static_cast<std::size_t>(i) * stride;
      for (int j = 0; j < whole; j += kWidth) Store<kWidth>(to + j, Load<kWidth>(from + j));
      from += whole;
      to += whole;
      // The rest is shorter than a vector.
      CopyPart<4>(from, to, p - whole);
      CopyPart<2>(from, to, p - whole);
      CopyPart<1>(from, to, p - whole);
    }
  }

  static void Join(const double* x, double weight, double* copy, double* sum, int p) {
    for (int v = 0; v < Vectors(p); ++v) {
      const int j = v * kWidth;
      const Vector values = Load<kWidth>(x + j);
      Store<kWidth>(copy + j, values);
      Store<kWidth>(sum + j, Load<kWidth>(sum + j) + values * weight);
    }
  }

  static void AddScaled(double* y, const double* x, double factor, int p) {
    for (int v = 0; v < Vectors(p); ++v) {
      const int j = v * kWidth;
      Store<kWidth>(y + j, Load<kWidth>(y + j) + Load<kWidth>(x + j) * factor);
    }
  }

  static void Scale(double* y, const double* x, double factor, int p) {
    for (int v = 0; v < Vectors(p); ++v) Store<kWidth>(y + v * kWidth, Load<kWidth>(x + v * kWidth) * factor);
  }

  static void AddCombination(double* sum, const double* B, const double* factors, int count, int p) {
    const std::size_t stride = PaddedOrder(static_cast<std::size_t>(p));
    for (int v = 0; v < Vectors(p); ++v) {
      constexpr int kSums = 2;
      const double* column = B + v * kWidth;
      Vector sums[kSums] = {};
      int i = 0;
      for (; i + kSums <= count; i += kSums) {
        const double* row = column + static_cast<std::size_t>(i) * stride;
        sums[0] += Load<kWidth>(row) * factors[i];
        sums[1] += Load<kWidth>(row + stride) * factors[i + 1];
      }
      if (i < count) sums[0] += Load<kWidth>(column + static_cast<std::size_t>(i) * stride) * factors[i];
      Store<kWidth>(sum + v * kWidth, Load<kWidth>(sum + v * kWidth) + (sums[0] + sums[1]));
    }
  }

  // A tile of C: Rows rows from the pointer on, Vectors vectors wide. A and B point into the same rows, to the column
  // of the tile's first row and to its own first column.
  template <int Rows, int Vectors>
  static void Tile(double* C, const double* A, const double* B, const double* factors, int count, std::size_t stride) {
    Vector sums[Rows][Vectors] = {};
    for (int i = 0; i < count; ++i) {
      const std::size_t at = static_cast<std::size_t>(i) * stride;
      Vector b[Vectors];
#pragma GCC unroll 4
      for (int v = 0; v < Vectors; ++v) b[v] = Load<kWidth>(B + at + v * kWidth) * factors[i];
#pragma GCC unroll 16
      for (int r = 0; r < Rows; ++r) {
#pragma GCC unroll 4
        for (int v = 0; v < Vectors; ++v) sums[r][v] += b[v] * A[at + r];
      }
    }
#pragma GCC unroll 16
    for (int r = 0; r < Rows; ++r) {
      double* row = C + static_cast<std::size_t>(r) * stride;
#pragma GCC unroll 4
      for (int v = 0; v < Vectors; ++v) Store<kWidth>(row + v * kWidth, Load<kWidth>(row + v * kWidth) + sums[r][v]);
    }
  }

  // The tiles of Rows rows of C, the first of which is row j, down to the diagonal.
  template <int Rows>
  static void Panel(double* C, const double* B, const double* factors, int count, std::size_t stride, int j) {
    constexpr int kWide = Unit::Vectors * kWidth;
    const int columns = j + Rows;
    double* row = C + static_cast<std::size_t>(j) * stride;
    int l = 0;
    for (; l + kWide - kWidth < columns; l += kWide) {
      Tile<Rows, Unit::Vectors>(row + l, B + j, B + l, factors, count, stride);
    }
    for (; l < columns; l += kWidth) Tile<Rows, 1>(row + l, B + j, B + l, factors, count, stride);
  }

  // A panel of fewer rows than the largest tile.
  template <int Rows>
  static void
  LastPanel(int rows, double* C, const double* B, const double* factors, int count, std::size_t stride, int j) {
    if (rows == Rows) {
      Panel<Rows>(C, B, factors, count, stride, j);
    } else if constexpr (Rows > 1) {
      LastPanel<Rows - 1>(rows, C, B, factors, count, stride, j);
    }
  }

  static void AddOuterProducts(double* C, const double* B, const double* factors, int count, int p) {
    const std::size_t stride = PaddedOrder(static_cast<std::size_t>(p));
    if (count == 0) return;
    int j = 0;
    for (; j + Unit::Rows <= p; j += Unit::Rows) Panel<Unit::Rows>(C, B, factors, count, stride, j);
    if constexpr (Unit::Rows > 1) LastPanel<Unit::Rows - 1>(p - j, C, B, factors, count, stride, j);
  }

  static constexpr PassKernels Table(const char* name) {
    return {name,      LinearPredictor, LinearPredictors, Exponentials,    CopyRows, Join,
            AddScaled, Scale,           AddCombination,   AddOuterProducts};
  }
};

}  // namespace
}  // namespace orv
