#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "fit/PassKernels.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

using Vector = std::vector<double>;

TEST(PassKernels, PackedSizeIsThatOfALowerTriangle) {
  EXPECT_EQ(PackedSize(0), 0U);
  EXPECT_EQ(PackedSize(1), 1U);
  EXPECT_EQ(PackedSize(4), 10U);
}

TEST(PassKernels, LinearPredictorAddsFromTheFirstTerm) {
  const Vector x = {1.0, 2.0, 3.0};
  const Vector beta = {10.0, -1.0, 0.5};
  EXPECT_EQ(LinearPredictor(x.data(), beta.data(), 3), 9.5);
  EXPECT_EQ(LinearPredictor(x.data(), beta.data(), 0), 0.0);
  // (1e16 + 1) - 1e16 is 0 in this order and 1 in the other.
  const Vector order = {1e16, 1.0, -1e16};
  const Vector ones = {1.0, 1.0, 1.0};
  EXPECT_EQ(LinearPredictor(order.data(), ones.data(), 3), 0.0);
}

TEST(PassKernels, AddWeightedAddsTheLowerTriangleByRows) {
  Vector S1 = {100.0, 200.0, 300.0};
  Vector S2(6, 1.0);
  const Vector x = {1.0, 2.0, -3.0};
  AddWeighted(S1.data(), S2.data(), x.data(), 2.0, 3);
  EXPECT_EQ(S1, (Vector{102.0, 204.0, 294.0}));
  EXPECT_EQ(S2, (Vector{3.0, 5.0, 9.0, -5.0, -11.0, 19.0}));
}

TEST(PassKernels, EventTermIsTheCovarianceOverTheReducedRiskSet) {
  // Four members of a risk set, the first two events. A third of the events is out.
  const std::vector<Vector> x = {{1.0, 0.5}, {2.0, -1.0}, {-1.0, 3.0}, {0.0, 4.0}};
  const Vector weight = {1.0, 2.0, 0.5, 3.0};
  const double fraction = 1.0 / 3.0;
  const double m = 1.75;
  Vector S1(2, 0.0);
  Vector S2(3, 0.0);
  Vector E1(2, 0.0);
  Vector E2(3, 0.0);
  double S0 = 0.0;
  double E0 = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    S0 += weight[i];
    AddWeighted(S1.data(), S2.data(), x[i].data(), weight[i], 2);
    if (i >= 2) continue;
    E0 += weight[i];
    AddWeighted(E1.data(), E2.data(), x[i].data(), weight[i], 2);
  }
  // The definition: every member with the weight that it has left.
  Vector share = weight;
  share[0] *= 1.0 - fraction;
  share[1] *= 1.0 - fraction;
  double total = 0.0;
  Vector mean(2, 0.0);
  for (std::size_t i = 0; i < x.size(); ++i) {
    total += share[i];
    for (std::size_t j = 0; j < 2; ++j) mean[j] += share[i] * x[i][j];
  }
  for (double& value : mean) value /= total;
  TestMatrix covariance(2, 2);
  for (std::size_t i = 0; i < x.size(); ++i) {
    for (int j = 0; j < 2; ++j) {
      for (int l = 0; l < 2; ++l) {
        const auto jj = static_cast<std::size_t>(j);
        const auto ll = static_cast<std::size_t>(l);
        covariance(j, l) += share[i] * (x[i][jj] - mean[jj]) * (x[i][ll] - mean[ll]) / total;
      }
    }
  }

  EventTerm term{S1.data(), S2.data(), E1.data(), E2.data()};
  term.Denominator = S0 - fraction * E0;
  term.Fraction = fraction;
  term.Weight = m;
  Vector U = {10.0, 20.0};
  Vector H = {1.0, 2.0, 3.0};
  Vector a(2);
  SubtractEventTerm(term, U.data(), H.data(), a.data(), 2);
  for (std::size_t j = 0; j < 2; ++j) {
    EXPECT_NEAR(a[j], mean[j], 1e-14);
    EXPECT_NEAR(U[j], 10.0 * static_cast<double>(j + 1) - m * mean[j], 1e-13);
  }
  EXPECT_NEAR(H[0], 1.0 + m * covariance(0, 0), 1e-13);
  EXPECT_NEAR(H[1], 2.0 + m * covariance(1, 0), 1e-13);
  EXPECT_NEAR(H[2], 3.0 + m * covariance(1, 1), 1e-13);
}

TEST(PassKernels, WithoutAFractionTheEventSumsAreNotRead) {
  const Vector S1 = {4.0};
  const Vector S2 = {4.0};
  const Vector notRead = {std::numeric_limits<double>::quiet_NaN()};
  EventTerm term{S1.data(), S2.data(), notRead.data(), notRead.data()};
  term.Denominator = 6.0;
  term.Fraction = 0.0;
  term.Weight = 2.0;
  double U = 0.0;
  double H = 0.0;
  double a = 0.0;
  SubtractEventTerm(term, &U, &H, &a, 1);
  EXPECT_DOUBLE_EQ(a, 2.0 / 3.0);
  EXPECT_DOUBLE_EQ(U, -4.0 / 3.0);
  EXPECT_NEAR(H, 4.0 / 9.0, 1e-15);
}

}  // namespace
}  // namespace orv
