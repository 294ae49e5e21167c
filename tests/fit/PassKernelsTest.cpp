#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cfloat>
#include <cmath>
#include <string>
#include <vector>

#include "fit/PaddedRows.h"
#include "fit/PassKernels.h"
#include "support/HeapOnlyHost.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

TEST(PassKernels, PackedSizeIsThatOfALowerTriangle) {
  EXPECT_EQ(PackedSize(0), 0U);
  EXPECT_EQ(PackedSize(1), 1U);
  EXPECT_EQ(PackedSize(4), 10U);
}

TEST(PassKernels, PaddedRowsAreAnOddNumberOfVectors) {
  for (std::size_t p = 0; p <= 200; ++p) {
    EXPECT_GE(PaddedOrder(p), p);
    EXPECT_EQ(PaddedOrder(p) % (2 * kVectorDoubles), kVectorDoubles) << p;
    EXPECT_LE(PaddedOrder(p), p + 2 * kVectorDoubles) << p;
  }
}

TEST(PassKernels, LinearPredictorAddsFromTheFirstTerm) {
  const std::vector<double> x = {1, 2, 3};
  const std::vector<double> beta = {0.5, -1, 3.5};
  EXPECT_EQ(LinearPredictor(x.data(), beta.data(), 3), 9.0);
  EXPECT_EQ(LinearPredictor(x.data(), beta.data(), 0), 0.0);
  const double large = 1e16;
  const std::vector<double> order = {large, 1.0, -large};
  const std::vector<double> ones = {1, 1, 1};
  EXPECT_EQ(LinearPredictor(order.data(), ones.data(), 3), 0.0);
}

TEST(PassKernels, AddWeightedAddsTheLowerTriangleByRows) {
  std::vector<double> S1 = {1, 1, 1};
  std::vector<double> S2(6, 1);
  const std::vector<double> x = {1, 2, 3};
  AddWeighted(S1.data(), S2.data(), x.data(), 2.0, 3);
  EXPECT_EQ(S1, (std::vector<double>{3, 5, 7}));
  EXPECT_EQ(S2, (std::vector<double>{3, 5, 9, 7, 13, 19}));
}

TEST(PassKernels, PortableCloneStandsFirstAndTheOneOfThisMachineLast) {
  ASSERT_GE(AvailableKernels().size(), 1U);
  EXPECT_EQ(AvailableKernels().front().VectorUnit, std::string("the compiler's default"));
  EXPECT_EQ(AvailableKernels().back().VectorUnit, std::string(KernelsOfThisMachine().VectorUnit));
}

// Every clone on every number of columns that it treats in a way of its own: less than a vector, odd ends, several
// tiles.
class PassKernelsOf : public ::testing::TestWithParam<int> {
 protected:
  static constexpr int kMostColumns = 70;
  static constexpr double kGuard = 123.5;

  void SetUp() override {
    if (static_cast<std::size_t>(GetParam()) >= AvailableKernels().size()) GTEST_SKIP() << "not on this machine";
  }
  const PassKernels& Kernels() const { return AvailableKernels()[static_cast<std::size_t>(GetParam())]; }

  void Fill(PaddedRows& rows, int count, int p) {
    for (int i = 0; i < count; ++i) {
      for (int j = 0; j < p; ++j) rows.Row(i)[j] = m_random.Value();
    }
  }

  std::vector<double> RandomNumbers(int count) {
    std::vector<double> numbers;
    for (int i = 0; i < count; ++i) numbers.push_back(m_random.Value());
    return numbers;
  }

  HeapOnlyHost m_host;
  TestRandom m_random{11};
};

TEST_P(PassKernelsOf, ProductsAreThoseOfThePlainTripleLoop) {
  for (int p = 0; p <= kMostColumns; ++p) {
    for (const int count : {0, 1, 2, 7, 31, 65}) {
      PaddedRows A(m_host, count, p);
      PaddedRows B(m_host, count, p);
      PaddedRows C(m_host, p, p);
      PaddedRows M(m_host, p, p);
      Fill(A, count, p);
      Fill(B, count, p);
      Fill(C, p, p);
      Fill(M, p, p);
      const bool addsM = (p + count) % 2 == 0;
      constexpr double kFactor = -1.25;
      std::vector<long double> expected;
      for (int j = 0; j < p; ++j) {
        for (int l = 0; l <= j; ++l) {
          long double sum = C.Row(j)[l] + static_cast<long double>(addsM ? kFactor : 0.0) * M.Row(j)[l];
          for (int i = 0; i < count; ++i) sum += static_cast<long double>(A.Row(i)[j]) * B.Row(i)[l];
          expected.push_back(sum);
        }
      }
      // Store of any size may be fetched meanwhile, whether or not there is time for all of it.
      const std::vector<double> next(static_cast<std::size_t>(p * count * 3) + 1);
      const ComingStore stores[] = {{}, {next.data(), 1}, {next.data(), next.size() * sizeof(double)}};
      Kernels().AddProducts(C.Row(0), A.Row(0), B.Row(0), count, p,
                            addsM ? ScaledMatrix{M.Row(0), kFactor} : ScaledMatrix{}, stores[(p + count) % 3]);
      std::size_t at = 0;
      for (int j = 0; j < p; ++j) {
        for (int l = 0; l <= j; ++l) {
          ASSERT_NEAR(C.Row(j)[l], static_cast<double>(expected[at++]), 1e-15 * (count + 1))
              << Kernels().VectorUnit << ", p " << p << ", rows " << count << ", element " << j << ' ' << l;
        }
      }
    }
  }
}

// The rows of a block against the groups that close on some of them, by the definitions of S1, A, U and the pull.
TEST_P(PassKernelsOf, RowsAreCentredOnTheGroupsThatFindThemAtRisk) {
  for (int p = 1; p <= kMostColumns; ++p) {
    for (const int count : {0, 1, 5, 64}) {
      PaddedRows B(m_host, count, p);
      PaddedRows A(m_host, count + 1, p);
      PaddedRows S1(m_host, 1, p);
      PaddedRows U(m_host, 1, p);
      PaddedRows pull(m_host, 1, p);
      Fill(B, count, p);
      Fill(A, count + 1, p);
      Fill(S1, 1, p);
      Fill(U, 1, p);
      const std::vector<double> wr = RandomNumbers(count);
      const std::vector<double> share = RandomNumbers(count);
      const std::vector<double> score = RandomNumbers(count);
      const std::vector<double> q = RandomNumbers(count);
      std::vector<double> r = RandomNumbers(count);
      for (std::size_t i = 0; i < r.size(); i += 3) r[i] = 0.0;
      A.Row(count)[0] = kGuard;
      std::vector<double> S1Before(S1.Row(0), S1.Row(0) + p);
      std::vector<double> UBefore(U.Row(0), U.Row(0) + p);
      Kernels().CentreRows(B.Row(0), {wr.data(), share.data(), score.data(), q.data(), r.data()}, S1.Row(0), U.Row(0),
                           pull.Row(0), A.Row(0), count, p);
      for (int j = 0; j < p; ++j) {
        const auto column = static_cast<std::size_t>(j);
        std::vector<double> pulls;
        for (int i = 0; i < count; ++i) {
          const auto at = static_cast<std::size_t>(i);
          S1Before[column] += wr[at] * B.Row(i)[j];
          UBefore[column] += score[at] * B.Row(i)[j];
          pulls.push_back(r[at] * q[at] * S1Before[column]);
        }
        double later = 0.0;
        for (int i = count; i-- > 0;) {
          const auto at = static_cast<std::size_t>(i);
          later += pulls[at];
          ASSERT_NEAR(A.Row(i)[j], share[at] * B.Row(i)[j] - wr[at] * later, 1e-14) << p << ' ' << i << ' ' << j;
        }
        ASSERT_NEAR(S1.Row(0)[j], S1Before[column], 1e-14) << p;
        ASSERT_NEAR(U.Row(0)[j], UBefore[column], 1e-14) << p;
        ASSERT_NEAR(pull.Row(0)[j], later, 1e-14) << p;
      }
      ASSERT_EQ(A.Row(count)[0], kGuard) << "rows beyond the last, p " << p;
    }
  }
}

TEST_P(PassKernelsOf, ARowIsSubtractedFromEachRow) {
  for (int p = 0; p <= kMostColumns; ++p) {
    constexpr int kRows = 3;
    PaddedRows B(m_host, kRows + 1, p);
    PaddedRows row(m_host, 1, p);
    Fill(B, kRows + 1, p);
    Fill(row, 1, p);
    PaddedRows before(m_host, kRows + 1, p);
    for (int i = 0; i <= kRows; ++i) std::copy_n(B.Row(i), p, before.Row(i));
    Kernels().SubtractRow(B.Row(0), row.Row(0), kRows, p);
    for (int i = 0; i <= kRows; ++i) {
      for (int j = 0; j < p; ++j) {
        ASSERT_EQ(B.Row(i)[j], before.Row(i)[j] - (i < kRows ? row.Row(0)[j] : 0.0)) << p;
      }
    }
  }
}

TEST_P(PassKernelsOf, ScaledRowsAreTheRowsTimesTheirFactors) {
  for (int p = 0; p <= kMostColumns; ++p) {
    constexpr int kRows = 3;
    PaddedRows B(m_host, kRows, p);
    PaddedRows A(m_host, kRows + 1, p);
    Fill(B, kRows, p);
    A.Row(kRows)[0] = kGuard;
    const std::vector<double> factors = RandomNumbers(kRows);
    Kernels().ScaleRows(B.Row(0), factors.data(), A.Row(0), kRows, p);
    for (int i = 0; i < kRows; ++i) {
      for (int j = 0; j < p; ++j) ASSERT_EQ(A.Row(i)[j], factors[static_cast<std::size_t>(i)] * B.Row(i)[j]) << p;
    }
    ASSERT_EQ(A.Row(kRows)[0], kGuard) << p;
  }
}

TEST_P(PassKernelsOf, LinearPredictorIsThatOfThePlainLoop) {
  for (int p = 0; p <= kMostColumns; ++p) {
    // Without room behind the last element: reading beyond it would be seen by the sanitizer.
    const std::vector<double> x = RandomNumbers(p);
    const std::vector<double> beta = RandomNumbers(p);
    EXPECT_NEAR(Kernels().LinearPredictor(x.data(), beta.data(), p), LinearPredictor(x.data(), beta.data(), p),
                1e-15 * (p + 1))
        << p;
  }
}

TEST_P(PassKernelsOf, LinearPredictorsOfABlockAreThoseOfItsRows) {
  for (int p = 0; p <= kMostColumns; ++p) {
    for (const int count : {1, 7, 8, 13}) {
      PaddedRows B(m_host, count, p);
      PaddedRows beta(m_host, 1, p);
      Fill(B, count, p);
      Fill(beta, 1, p);
      std::vector<double> eta(2 * kVectorDoubles, kGuard);
      Kernels().LinearPredictors(B.Row(0), beta.Row(0), eta.data(), count, p);
      for (int i = 0; i < count; ++i) {
        ASSERT_NEAR(eta[static_cast<std::size_t>(i)], LinearPredictor(B.Row(i), beta.Row(0), p), 1e-15 * (p + 1)) << p;
      }
      for (int i = count; i % static_cast<int>(kVectorDoubles) != 0; ++i) {
        ASSERT_EQ(eta[static_cast<std::size_t>(i)], 0.0) << "to the next whole vector";
      }
    }
  }
}

TEST_P(PassKernelsOf, RowsAreCopiedElementByElementUpwardsAndDownwards) {
  constexpr int kRows = 3;
  for (int p = 0; p <= kMostColumns; ++p) {
    // The store ends with the last row: reading beyond it would be seen by the sanitizer.
    const int distance = p + 2;
    const std::vector<double> cells = RandomNumbers(distance * (kRows - 1) + p);
    for (const bool isUpwards : {true, false}) {
      PaddedRows B(m_host, kRows, p);
      const double* first = cells.data() + (isUpwards ? 0 : distance * (kRows - 1));
      Kernels().CopyRows(first, isUpwards ? distance : -distance, B.Row(0), kRows, p);
      for (int i = 0; i < kRows; ++i) {
        const double* row = cells.data() + distance * (isUpwards ? i : kRows - 1 - i);
        for (int j = 0; j < static_cast<int>(PaddedOrder(static_cast<std::size_t>(p))); ++j) {
          ASSERT_EQ(B.Row(i)[j], j < p ? row[j] : 0.0) << "p " << p << ", row " << i << ", place " << j;
        }
      }
    }
  }
}

TEST_P(PassKernelsOf, VectorKernelsDoWhatTheirFormulasSay) {
  for (int p = 1; p <= kMostColumns; ++p) {
    PaddedRows x(m_host, 1, p);
    PaddedRows out(m_host, 2, p);
    PaddedRows sum(m_host, 2, p);
    Fill(x, 1, p);
    Fill(sum, 1, p);
    out.Row(1)[0] = kGuard;
    sum.Row(1)[0] = kGuard;
    const std::vector<double> before(sum.Row(0), sum.Row(0) + p);
    Kernels().AddScaled(sum.Row(0), x.Row(0), -0.5, p);
    for (int j = 0; j < p; ++j) {
      ASSERT_NEAR(sum.Row(0)[j], before[static_cast<std::size_t>(j)] - 0.5 * x.Row(0)[j], 1e-15) << p;
    }
    Kernels().Scale(out.Row(0), x.Row(0), 0.3, p);
    for (int j = 0; j < p; ++j) ASSERT_EQ(out.Row(0)[j], 0.3 * x.Row(0)[j]) << p;
    ASSERT_EQ(out.Row(1)[0], kGuard) << "the next row is another vector, p " << p;
    ASSERT_EQ(sum.Row(1)[0], kGuard) << "the next row is another vector, p " << p;
  }
}

TEST_P(PassKernelsOf, CombinationsAreSumsOverTheRows) {
  for (int p = 1; p <= kMostColumns; ++p) {
    for (const int count : {0, 1, 2, 5, 64}) {
      PaddedRows B(m_host, count, p);
      PaddedRows sum(m_host, 1, p);
      Fill(B, count, p);
      Fill(sum, 1, p);
      const std::vector<double> factors = RandomNumbers(count);
      std::vector<double> expected(sum.Row(0), sum.Row(0) + p);
      for (int i = 0; i < count; ++i) {
        for (int j = 0; j < p; ++j) {
          expected[static_cast<std::size_t>(j)] += factors[static_cast<std::size_t>(i)] * B.Row(i)[j];
        }
      }
      Kernels().AddCombination(sum.Row(0), B.Row(0), factors.data(), count, p);
      for (int j = 0; j < p; ++j) {
        ASSERT_NEAR(sum.Row(0)[j], expected[static_cast<std::size_t>(j)], 1e-15 * (count + 1)) << p << ' ' << count;
      }
    }
  }
}

TEST_P(PassKernelsOf, ExponentialsAreHardlyMoreThanRounded) {
  constexpr int kBlocks = 4000;
  constexpr int kCount = 64;
  const double scales[] = {1e-8, 0.34, 5.0, 690.0};
  for (int block = 0; block < kBlocks; ++block) {
    std::vector<double> eta = RandomNumbers(kCount);
    for (double& x : eta) x *= scales[block % 4];
    if (block == 0) std::fill(eta.begin(), eta.end(), 0.0);
    std::vector<double> results(kCount);
    Kernels().Exponentials(eta.data(), results.data(), kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
      const long double exact = std::exp(static_cast<long double>(eta[i]));
      const double unit = std::nextafter(static_cast<double>(exact), 1e308) - static_cast<double>(exact);
      ASSERT_LT(std::abs(static_cast<double>((results[i] - exact) / unit)), 0.7) << "exp " << eta[i];
    }
    if (block == 0) {
      ASSERT_EQ(results[5], 1.0);
    }
  }
}

// A risk beyond the range of numbers ends a step of the fit, one within it must not.
TEST_P(PassKernelsOf, ExponentialsRaiseTheFlagsOfTheLibrarysFunction) {
  constexpr int kCount = 16;
  struct {
    double Eta;
    bool Overflows;
  } const cases[] = {{700.0, false}, {709.0, false}, {710.0, true}, {1e300, true}, {-700.0, false}, {-1e300, false}};
  for (const auto& c : cases) {
    std::vector<double> eta(kCount, 0.5);
    eta[9] = c.Eta;
    std::vector<double> results(kCount);
    std::feclearexcept(FE_ALL_EXCEPT);
    Kernels().Exponentials(eta.data(), results.data(), kCount);
    EXPECT_EQ(std::fetestexcept(FE_OVERFLOW) != 0, c.Overflows) << c.Eta;
    EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO), 0) << c.Eta;
    std::feclearexcept(FE_ALL_EXCEPT);
    EXPECT_DOUBLE_EQ(results[9], std::exp(c.Eta));
    EXPECT_NEAR(results[8], std::exp(0.5), 1e-15) << "its neighbour";
  }
}

TEST_P(PassKernelsOf, LogarithmsKeepMoreDigitsThanADoubleHas) {
  constexpr int kBlocks = 4000;
  constexpr std::size_t kCount = 64;
  // Near 1, of any size, and the ends of the normal numbers.
  const double scales[] = {1e-9, 0.7, 40.0, 708.0};
  for (int block = 0; block < kBlocks; ++block) {
    std::vector<double> x = RandomNumbers(kCount);
    for (double& value : x) value = std::exp(value * scales[block % 4]);
    if (block == 0) x[0] = 1.0;
    if (block == 1)
      std::copy_n(std::vector<double>{DBL_MIN, DBL_MAX, 2.0, 0.5, 0x1.6a09e667f3bccp-1, 0x1.6a09e667f3bcdp0}.begin(), 6,
                  x.begin());
    std::vector<double> lost = RandomNumbers(kCount);
    for (std::size_t i = 0; i < kCount; ++i) lost[i] *= x[i] * 1e-16;
    const std::vector<double> factors = RandomNumbers(kCount);
    std::vector<double> terms(kCount);
    std::vector<double> rest(kCount);
    Kernels().Logarithms(x.data(), lost.data(), factors.data(), terms.data(), rest.data(), kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
      const long double logarithm =
          std::log1p(static_cast<long double>(lost[i]) / x[i]) + std::log(static_cast<long double>(x[i]));
      const long double exact = factors[i] * logarithm;
      const long double error = (static_cast<long double>(terms[i]) - exact) + rest[i];
      // The reference has 64 bits itself.
      ASSERT_LE(std::abs(error), 2e-19L * std::abs(exact) + 4e-18L * std::abs(factors[i])) << "log " << x[i];
      ASSERT_LE(std::abs(rest[i]), 0.01 * std::abs(factors[i]) + 1e-15 * std::abs(terms[i])) << "log " << x[i];
    }
    if (block == 0) {
      ASSERT_EQ(terms[0], 0.0);
    }
  }
}

// A denominator that is no positive number ends a step of the fit.
TEST_P(PassKernelsOf, LogarithmsRaiseTheFlagsOfTheLibrarysFunction) {
  constexpr int kCount = 8;
  struct {
    double X;
    int Flags;
  } const cases[] = {{0.0, FE_DIVBYZERO}, {-1.0, FE_INVALID}, {1e-310, 0}, {DBL_MIN, 0}, {DBL_MAX, 0}};
  for (const auto& c : cases) {
    std::vector<double> x(kCount, 2.0);
    x[3] = c.X;
    const std::vector<double> lost(kCount, 0.0);
    const std::vector<double> factors(kCount, 1.0);
    std::vector<double> terms(kCount);
    std::vector<double> rest(kCount);
    std::feclearexcept(FE_ALL_EXCEPT);
    Kernels().Logarithms(x.data(), lost.data(), factors.data(), terms.data(), rest.data(), kCount);
    EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW), c.Flags) << c.X;
    std::feclearexcept(FE_ALL_EXCEPT);
    if (c.Flags == 0) {
      EXPECT_DOUBLE_EQ(terms[3] + rest[3], std::log(c.X));
    }
    EXPECT_DOUBLE_EQ(terms[4] + rest[4], std::log(2.0)) << "its neighbour";
  }
}

// The flags of the processor end a fit, so none may rise where the numbers are in range.
TEST_P(PassKernelsOf, PaddingRaisesNoFlags) {
  for (const int p : {1, 3, 12, 13, 20}) {
    PaddedRows B(m_host, 3, p);
    PaddedRows C(m_host, p, p);
    for (int i = 0; i < 3; ++i) std::fill_n(B.Row(i), p, 1e150);
    std::feclearexcept(FE_ALL_EXCEPT);
    Kernels().AddProducts(C.Row(0), B.Row(0), B.Row(0), 3, p, {}, {});
    EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW), 0) << p;
    B.Row(0)[p - 1] = 1e160;
    Kernels().AddProducts(C.Row(0), B.Row(0), B.Row(0), 3, p, {}, {});
    EXPECT_NE(std::fetestexcept(FE_OVERFLOW), 0) << p;
    std::feclearexcept(FE_ALL_EXCEPT);
  }
}

std::string CloneName(const ::testing::TestParamInfo<int>& clone) {
  const char* const names[] = {"Portable", "Second", "Third"};
  return names[clone.param];
}

INSTANTIATE_TEST_SUITE_P(EveryVectorUnit, PassKernelsOf, ::testing::Values(0, 1, 2), CloneName);

}  // namespace
}  // namespace orv
