#include <gtest/gtest.h>

#include <cfenv>
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

  HeapOnlyHost m_host;
  TestRandom m_random{11};
};

TEST_P(PassKernelsOf, OuterProductsAreThoseOfThePlainTripleLoop) {
  for (int p = 0; p <= kMostColumns; ++p) {
    for (const int count : {0, 1, 2, 7, 31, 64}) {
      PaddedRows A(m_host, count, p);
      PaddedRows B(m_host, count, p);
      PaddedRows C(m_host, p, p);
      Fill(A, count, p);
      Fill(B, count, p);
      Fill(C, p, p);
      std::vector<long double> expected;
      for (int j = 0; j < p; ++j) {
        for (int l = 0; l <= j; ++l) {
          long double sum = C.Row(j)[l];
          for (int i = 0; i < count; ++i) sum += static_cast<long double>(A.Row(i)[j]) * B.Row(i)[l];
          expected.push_back(sum);
        }
      }
      Kernels().AddOuterProducts(C.Row(0), A.Row(0), B.Row(0), count, p);
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
    std::vector<double> x;
    std::vector<double> beta;
    for (int j = 0; j < p; ++j) {
      x.push_back(m_random.Value());
      beta.push_back(m_random.Value());
    }
    EXPECT_NEAR(Kernels().LinearPredictor(x.data(), beta.data(), p), LinearPredictor(x.data(), beta.data(), p),
                1e-15 * (p + 1))
        << p;
  }
}

TEST_P(PassKernelsOf, VectorKernelsDoWhatTheirFormulasSay) {
  for (int p = 1; p <= kMostColumns; ++p) {
    PaddedRows x(m_host, 2, p);
    PaddedRows out(m_host, 2, p);
    PaddedRows more(m_host, 1, p);
    PaddedRows sum(m_host, 2, p);
    Fill(x, 2, p);
    Fill(sum, 1, p);
    sum.Row(1)[0] = kGuard;
    std::vector<double> before(sum.Row(0), sum.Row(0) + p);
    Kernels().Weigh(x.Row(0), 0.75, out.Row(0), sum.Row(0), p);
    for (int j = 0; j < p; ++j) {
      ASSERT_EQ(out.Row(0)[j], 0.75 * x.Row(0)[j]) << p;
      ASSERT_NEAR(sum.Row(0)[j], before[static_cast<std::size_t>(j)] + 0.75 * x.Row(0)[j], 1e-15) << p;
    }
    before.assign(sum.Row(0), sum.Row(0) + p);
    Kernels().AddScaled(sum.Row(0), x.Row(0), -0.5, p);
    for (int j = 0; j < p; ++j) {
      ASSERT_NEAR(sum.Row(0)[j], before[static_cast<std::size_t>(j)] - 0.5 * x.Row(0)[j], 1e-15) << p;
    }
    before.assign(sum.Row(0), sum.Row(0) + p);
    Kernels().TakeMean(x.Row(0), 0.5, 3.0, out.Row(0), more.Row(0), sum.Row(0), p);
    for (int j = 0; j < p; ++j) {
      ASSERT_EQ(out.Row(0)[j], 0.5 * x.Row(0)[j]) << p;
      ASSERT_EQ(more.Row(0)[j], -3.0 * (0.5 * x.Row(0)[j])) << p;
      ASSERT_NEAR(sum.Row(0)[j], before[static_cast<std::size_t>(j)] - 1.5 * x.Row(0)[j], 1e-15) << p;
    }
    const double factors[] = {2.0, -3.0};
    Kernels().ScaleRows(x.Row(0), factors, out.Row(0), 2, p);
    for (int i = 0; i < 2; ++i) {
      for (int j = 0; j < p; ++j) ASSERT_EQ(out.Row(i)[j], factors[i] * x.Row(i)[j]) << p;
    }
    ASSERT_EQ(sum.Row(1)[0], kGuard) << "the next row is another vector, p " << p;
  }
}

// The flags of the processor end a fit, so none may rise where the numbers are in range.
TEST_P(PassKernelsOf, PaddingRaisesNoFlags) {
  for (const int p : {1, 3, 12, 13, 20}) {
    PaddedRows A(m_host, 3, p);
    PaddedRows B(m_host, 3, p);
    PaddedRows C(m_host, p, p);
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < p; ++j) {
        A.Row(i)[j] = 1e200;
        B.Row(i)[j] = 1e100;
      }
    }
    std::feclearexcept(FE_ALL_EXCEPT);
    Kernels().AddOuterProducts(C.Row(0), A.Row(0), B.Row(0), 3, p);
    EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW), 0) << p;
    A.Row(0)[p - 1] = 1e300;
    Kernels().AddOuterProducts(C.Row(0), A.Row(0), B.Row(0), 3, p);
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
