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

// A vector of Width doubles, and of as many bit patterns.
template <int Width>
struct VectorOf;
template <>
struct VectorOf<2> {
  typedef double Type __attribute__((vector_size(16)));
  typedef std::uint64_t Bits __attribute__((vector_size(16)));
};
template <>
struct VectorOf<4> {
  typedef double Type __attribute__((vector_size(32)));
  typedef std::uint64_t Bits __attribute__((vector_size(32)));
};
template <>
struct VectorOf<8> {
  typedef double Type __attribute__((vector_size(64)));
  typedef std::uint64_t Bits __attribute__((vector_size(64)));
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
};

// For units that multiply and add in one operation, which rounds once.
template <int Lanes>
struct FusedArithmetic {
  using Vector = typename VectorOf<Lanes>::Type;

  static Vector LostByProduct(Vector a, Vector b, Vector p) {
    Vector lost;
    for (int lane = 0; lane < Lanes; ++lane) lost[lane] = __builtin_fma(a[lane], b[lane], -p[lane]);
    return lost;
  }
};

// Unit: Width, the doubles of a vector; Registers, of vectors, that a tile of a product may take; Rows, those of the
// largest tile; LostByProduct(a, b, p), what p = a b has lost to rounding.
template <typename Unit>
struct Clones {
  static constexpr int kWidth = Unit::Width;
  using Vector = typename VectorOf<kWidth>::Type;
  // Of a double.
  static constexpr std::uint64_t kExponentBias = 1023;
  static constexpr int kFractionBits = 52;

  using Bits = typename VectorOf<kWidth>::Bits;

  static Bits BitsOf(Vector vector) {
    Bits bits;
    __builtin_memcpy(&bits, &vector, sizeof bits);
    return bits;
  }
  static Vector FromBits(Bits bits) {
    Vector vector;
    __builtin_memcpy(&vector, &bits, sizeof vector);
    return vector;
  }

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
    return fraction * FromBits((BitsOf(shifted) + kExponentBias) << kFractionBits);
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

  // x = 2^k m with m from sqrt(1/2) to sqrt(2), and log m = 2 atanh(s) with s = (m - 1) / (m + 1), whose series is cut
  // where its terms are below 1e-20 of the first. log 2 is taken in two parts, of which the first times k is exact.
  // What s, the sum and the product with the factor lose to rounding goes into the rest. REQUIRES: x normal and
  // positive.
  static void LogarithmsOf(const double* x, const double* lost, const double* factors, double* terms, double* rest) {
    constexpr double kLog2High = 0x1.62e42fefa3800p-1;
    constexpr double kLog2Low = 0x1.ef35793c76730p-45;
    constexpr std::uint64_t kBitsOfRootOfHalf = 0x3fe6a09e667f3bcd;
    constexpr double kShifter = 0x1p52;  // its lowest bit is 1
    constexpr double kBias = 1023.0;
    constexpr int kTerms = 13;
    const Vector values = Load<kWidth>(x);
    const Bits bits = BitsOf(values);
    const Bits exponent = (bits - kBitsOfRootOfHalf + (kExponentBias << kFractionBits)) >> kFractionBits;
    const Vector k = FromBits(exponent + BitsOf(Vector{} + kShifter)) - kShifter - kBias;
    const Vector m = FromBits(bits - ((exponent - kExponentBias) << kFractionBits));
    const Vector f = m - 1.0;
    const Vector d = f + 2.0;
    const Vector lostByD = f - (d - 2.0);
    const Vector s = f / d;
    const Vector product = s * d;
    const Vector lostByS = ((f - product) - Unit::LostByProduct(s, d, product) - s * lostByD) / d;
    const Vector t = s * s;
    Vector series = Vector{} + 2.0 / (2 * kTerms + 1);
    for (int n = kTerms - 1; n > 0; --n) series = series * t + 2.0 / (2 * n + 1);
    const Vector whole = k * kLog2High;
    const Vector first = s * 2.0;
    const Vector head = whole + first;
    const Vector tail =
        (first - (head - whole)) + (k * kLog2Low + (lostByS * 2.0 + s * t * series)) + Load<kWidth>(lost) / values;
    const Vector factor = Load<kWidth>(factors);
    const Vector term = head * factor;
    Store<kWidth>(terms, term);
    Store<kWidth>(rest, Unit::LostByProduct(head, factor, term) + tail * factor);
  }

  static void Logarithms(const double* x,
                         const double* lost,
                         const double* factors,
                         double* terms,
                         double* rest,
                         int count) {
    bool isInRange = true;
    for (int i = 0; i < count; ++i) isInRange &= x[i] >= __DBL_MIN__ && x[i] <= __DBL_MAX__;
    if (!isInRange) {
      for (int i = 0; i < count; ++i) {
        terms[i] = factors[i] * __builtin_log(x[i]);
        rest[i] = 0.0;
      }
      return;
    }
    for (int i = 0; i < count; i += kWidth) LogarithmsOf(x + i, lost + i, factors + i, terms + i, rest + i);
  }

  template <int Count>
  static void CopyPart(const double*& from, double*& to, int count) {
    if ((count & Count) == 0) return;
    __builtin_memcpy(to, from, Count * sizeof(double));
    from += Count;
    to += Count;
  }

  static void CopyRows(const double* cells, std::ptrdiff_t distance, double* B, int count, int p) {
    const std::size_t stride = PaddedOrder(static_cast<std::size_t>(p));
    const int whole = p / kWidth * kWidth;
    for (int i = 0; i < count; ++i) {
      const double* from = cells + i * distance;
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

  static void SubtractRow(double* B, const double* row, int count, int p) {
    const std::size_t stride = PaddedOrder(static_cast<std::size_t>(p));
    for (int i = 0; i < count; ++i) {
      double* from = B + static_cast<std::size_t>(i) * stride;
      for (int v = 0; v < Vectors(p); ++v) {
        const int j = v * kWidth;
        Store<kWidth>(from + j, Load<kWidth>(from + j) - Load<kWidth>(row + j));
      }
    }
  }

  // CentreRows for Part vectors of each row.
  template <int Part>
  static void CentreColumns(const double* B,
                            const RowTerms& terms,
                            double* S1,
                            double* U,
                            double* pull,
                            double* A,
                            int count,
                            std::size_t stride) {
    Vector sums[Part];
#pragma GCC unroll 4
    for (int v = 0; v < Part; ++v) sums[v] = Load<kWidth>(S1 + v * kWidth);
    for (int i = 0; i < count; ++i) {
      const std::size_t at = static_cast<std::size_t>(i) * stride;
      const double wr = terms.wr[i];
      const double q = terms.q[i];
      const double r = terms.r[i];
#pragma GCC unroll 4
      for (int v = 0; v < Part; ++v) {
        sums[v] += Load<kWidth>(B + at + v * kWidth) * wr;
        Store<kWidth>(A + at + v * kWidth, sums[v] * q * r);
      }
    }
    Vector pulls[Part] = {};
    Vector scores[Part] = {};
    for (int i = count; i-- > 0;) {
      const std::size_t at = static_cast<std::size_t>(i) * stride;
      const double wr = terms.wr[i];
      const double share = terms.share[i];
      const double score = terms.score[i];
#pragma GCC unroll 4
      for (int v = 0; v < Part; ++v) {
        const Vector values = Load<kWidth>(B + at + v * kWidth);
        pulls[v] += Load<kWidth>(A + at + v * kWidth);
        scores[v] += values * score;
        Store<kWidth>(A + at + v * kWidth, values * share - pulls[v] * wr);
      }
    }
#pragma GCC unroll 4
    for (int v = 0; v < Part; ++v) {
      Store<kWidth>(S1 + v * kWidth, sums[v]);
      Store<kWidth>(U + v * kWidth, Load<kWidth>(U + v * kWidth) + scores[v]);
      Store<kWidth>(pull + v * kWidth, pulls[v]);
    }
  }

  static void
  CentreRows(const double* B, const RowTerms& terms, double* S1, double* U, double* pull, double* A, int count, int p) {
    const std::size_t stride = PaddedOrder(static_cast<std::size_t>(p));
    const int last = Vectors(p) * kWidth;
    int j = 0;
    for (; j + 4 * kWidth <= last; j += 4 * kWidth) {
      CentreColumns<4>(B + j, terms, S1 + j, U + j, pull + j, A + j, count, stride);
    }
    const int left = (last - j) / kWidth;
    if (left == 3) CentreColumns<3>(B + j, terms, S1 + j, U + j, pull + j, A + j, count, stride);
    if (left == 2) CentreColumns<2>(B + j, terms, S1 + j, U + j, pull + j, A + j, count, stride);
    if (left == 1) CentreColumns<1>(B + j, terms, S1 + j, U + j, pull + j, A + j, count, stride);
  }

  static void ScaleRows(const double* B, const double* factors, double* A, int count, int p) {
    const std::size_t stride = PaddedOrder(static_cast<std::size_t>(p));
    for (int i = 0; i < count; ++i) {
      const std::size_t at = static_cast<std::size_t>(i) * stride;
      for (int v = 0; v < Vectors(p); ++v) {
        Store<kWidth>(A + at + v * kWidth, Load<kWidth>(B + at + v * kWidth) * factors[i]);
      }
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

  // Walks over store that is to be fetched, at such a pace that the last of it is reached with the last step, or as far
  // as a line of the cache a step goes.
  struct Fetcher {
    const char* Next;
    std::size_t Left;
    std::size_t Step;

    Fetcher(const ComingStore& store, std::size_t steps)
        : Next(static_cast<const char*>(store.first)), Left(store.bytes), Step((store.bytes + steps - 1) / steps) {
      constexpr std::size_t kLine = kVectorDoubles * sizeof(double);
      if (Step > kLine) Step = kLine;
    }
    void Skip(std::size_t steps) {
      const std::size_t bytes = steps * Step;
      if (bytes < Left) {
        Next += bytes;
        Left -= bytes;
      } else {
        Step = 0;
      }
    }
  };

  // What the tiles of a product have in common.
  struct Product {
    int Count;
    std::size_t Stride;
    double FactorOfM;
    Fetcher Ahead;
  };

  // The widest tile of so many rows that fits into the registers, beside a row of B and an element of A.
  static constexpr int WidestTile(int rows) {
    constexpr int kMostVectors = 8;
    const int fits = (Unit::Registers - 1) / (rows + 1);
    return fits < kMostVectors ? fits : kMostVectors;
  }
  // How many tiles a panel of so many vectors takes.
  static constexpr int TileCount(int vectors, int rows) {
    return (vectors + WidestTile(rows) - 1) / WidestTile(rows);
  }

  // A tile of C: Rows rows from the pointer on, Part vectors wide. A and B point to the columns of their rows that
  // belong to the tile's first row and first column, M to the tile's place.
  template <int Rows, int Part>
  static void Tile(double* C, const double* A, const double* B, const double* M, Product& product) {
    constexpr int kSecondCache = 2;
    Vector sums[Rows][Part] = {};
    const std::size_t stride = product.Stride;
    const char* fetch = product.Ahead.Next;
    for (int i = 0; i < product.Count; ++i) {
      const std::size_t at = static_cast<std::size_t>(i) * stride;
      __builtin_prefetch(fetch, 0, kSecondCache);
      fetch += product.Ahead.Step;
      Vector b[Part];
#pragma GCC unroll 8
      for (int v = 0; v < Part; ++v) b[v] = Load<kWidth>(B + at + v * kWidth);
#pragma GCC unroll 8
      for (int r = 0; r < Rows; ++r) {
#pragma GCC unroll 8
        for (int v = 0; v < Part; ++v) sums[r][v] += b[v] * A[at + r];
      }
    }
    product.Ahead.Skip(static_cast<std::size_t>(product.Count));
#pragma GCC unroll 8
    for (int r = 0; r < Rows; ++r) {
      const std::size_t at = static_cast<std::size_t>(r) * stride;
#pragma GCC unroll 8
      for (int v = 0; v < Part; ++v) {
        const std::size_t place = at + v * kWidth;
        Vector sum = sums[r][v];
        if (M != nullptr) sum += Load<kWidth>(M + place) * product.FactorOfM;
        Store<kWidth>(C + place, Load<kWidth>(C + place) + sum);
      }
    }
  }

  // A tile of a width that is known at run time.
  template <int Rows, int Part>
  static void TileOfWidth(int width, double* C, const double* A, const double* B, const double* M, Product& product) {
    if (width == Part) {
      Tile<Rows, Part>(C, A, B, M, product);
    } else if constexpr (Part > 1) {
      TileOfWidth<Rows, Part - 1>(width, C, A, B, M, product);
    }
  }

  // The tiles of Rows rows of C, the first of which is row j, down to the diagonal: about equally wide, which keeps the
  // vector unit busier than wide ones and a narrow one.
  template <int Rows>
  static void Panel(double* C, const double* A, const double* B, const double* M, int j, Product& product) {
    const std::size_t at = static_cast<std::size_t>(j) * product.Stride;
    int vectors = Vectors(j + Rows);
    int l = 0;
    for (int tiles = TileCount(vectors, Rows); tiles > 0; --tiles) {
      const int width = (vectors + tiles - 1) / tiles;
      const double* m = M == nullptr ? nullptr : M + at + l;
      TileOfWidth<Rows, WidestTile(Rows)>(width, C + at + l, A + j, B + l, m, product);
      vectors -= width;
      l += width * kWidth;
    }
  }

  // A panel of fewer rows than the largest tile.
  template <int Rows>
  static void
  LastPanel(int rows, double* C, const double* A, const double* B, const double* M, int j, Product& product) {
    if (rows == Rows) {
      Panel<Rows>(C, A, B, M, j, product);
    } else if constexpr (Rows > 1) {
      LastPanel<Rows - 1>(rows, C, A, B, M, j, product);
    }
  }

  static std::size_t TilesOf(int p) {
    int tiles = 0;
    for (int j = 0; j < p; j += Unit::Rows) {
      const int rows = p - j < Unit::Rows ? p - j : Unit::Rows;
      tiles += TileCount(Vectors(j + rows), rows);
    }
    return static_cast<std::size_t>(tiles);
  }

  static void AddProducts(double* C,
                          const double* A,
                          const double* B,
                          int count,
                          int p,
                          const ScaledMatrix& M,
                          const ComingStore& next) {
    if (p == 0) return;
    const std::size_t steps = TilesOf(p) * static_cast<std::size_t>(count > 0 ? count : 1);
    Product product{count, PaddedOrder(static_cast<std::size_t>(p)), M.factor, Fetcher(next, steps)};
    int j = 0;
    for (; j + Unit::Rows <= p; j += Unit::Rows) Panel<Unit::Rows>(C, A, B, M.matrix, j, product);
    if constexpr (Unit::Rows > 1) LastPanel<Unit::Rows - 1>(p - j, C, A, B, M.matrix, j, product);
  }

  static constexpr PassKernels Table(const char* name) {
    return {name,       LinearPredictor, LinearPredictors, Exponentials, Logarithms,     CopyRows,   SubtractRow,
            CentreRows, ScaleRows,       AddScaled,        Scale,        AddCombination, AddProducts};
  }
};

}  // namespace
}  // namespace orv
