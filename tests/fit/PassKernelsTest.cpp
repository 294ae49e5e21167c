#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
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

TEST_P(PassKernelsOf, OuterProductsAreThoseOfThePlainTripleLoop) {
  for (int p = 0; p <= kMostColumns; ++p) {
    for (const int count : {0, 1, 2, 7, 31, 64}) {
      PaddedRows B(m_host, count, p);
      PaddedRows C(m_host, p, p);
      const std::vector<double> factors = RandomNumbers(count);
      Fill(B, count, p);
      Fill(C, p, p);
      std::vector<long double> expected;
      for (int j = 0; j < p; ++j) {
        for (int l = 0; l <= j; ++l) {
          long double sum = C.Row(j)[l];
          for (int i = 0; i < count; ++i) {
            sum += static_cast<long double>(factors[static_cast<std::size_t>(i)]) * B.Row(i)[j] * B.Row(i)[l];
          }
          expected.push_back(sum);
        }
      }
      Kernels().AddOuterProducts(C.Row(0), B.Row(0), factors.data(), count, p);
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

TEST_P(PassKernelsOf, RowsAreCopiedElementByElement) {
  constexpr int kRows = 3;
  for (int p = 0; p <= kMostColumns; ++p) {
    // The last row ends with the store: reading beyond it would be seen by the sanitizer.
    const std::size_t distance = static_cast<std::size_t>(p) + 2;
    const std::vector<double> cells = RandomNumbers(static_cast<int>(distance) * (kRows - 1) + p);
    PaddedRows B(m_host, kRows, p);
    Kernels().CopyRows(cells.data(), distance, B.Row(0), kRows, p);
    for (int i = 0; i < kRows; ++i) {
      for (int j = 0; j < static_cast<int>(PaddedOrder(static_cast<std::size_t>(p))); ++j) {
        const std::size_t at = static_cast<std::size_t>(i) * distance + static_cast<std::size_t>(j);
        ASSERT_EQ(B.Row(i)[j], j < p ? cells[at] : 0.0) << "p " << p << ", row " << i << ", place " << j;
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
    std::vector<double> before(sum.Row(0), sum.Row(0) + p);
    Kernels().Join(x.Row(0), 0.75, out.Row(0), sum.Row(0), p);
    for (int j = 0; j < p; ++j) {
      ASSERT_EQ(out.Row(0)[j], x.Row(0)[j]) << p;
      ASSERT_NEAR(sum.Row(0)[j], before[static_cast<std::size_t>(j)] + 0.75 * x.Row(0)[j], 1e-15) << p;
    }
    before.assign(sum.Row(0), sum.Row(0) + p);
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

// The flags of the processor end a fit, so none may rise where the numbers are in range.
TEST_P(PassKernelsOf, PaddingRaisesNoFlags) {
  for (const int p : {1, 3, 12, 13, 20}) {
    PaddedRows B(m_host, 3, p);
    PaddedRows C(m_host, p, p);
    for (int i = 0; i < 3; ++i) std::fill_n(B.Row(i), p, 1e150);
    const std::vector<double> factors = {1.0, 2.0, 1e-200};
    std::feclearexcept(FE_ALL_EXCEPT);
    Kernels().AddOuterProducts(C.Row(0), B.Row(0), factors.data(), 3, p);
    EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW), 0) << p;
    B.Row(0)[p - 1] = 1e160;
    Kernels().AddOuterProducts(C.Row(0), B.Row(0), factors.data(), 3, p);
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
