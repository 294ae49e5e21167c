#include "fit/PackedCholesky.h"

#include <cmath>
#include <cstddef>

#include "data/AlmostEqual.h"

namespace orv {

namespace {

constexpr double kRelativeTolerance = 1e-14;         // of a pivot to its diagonal element
constexpr double kSquaredRelativeTolerance = 1e-28;  // the same for a squared remainder

// True when a lies above b by more than the slack of AlmostEqual.
bool Exceeds(double a, double b) {
  return OrderedBits(a) > OrderedBits(b) && !AlmostEqual(a, b);
}

}  // namespace

int PackedCholesky(double* a, int n, int& nullity) {
  nullity = 0;
  // Indices count from 1.
  const auto element = [a](int i, int j) -> double& {
    const auto row = static_cast<std::size_t>(i);
    return a[row * (row - 1) / 2 + static_cast<std::size_t>(j) - 1];
  };
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j < i; ++j) {
      double w = element(i, j);
      for (int k = 1; k < j; ++k) w -= element(i, k) * element(j, k);
      if (AlmostEqual(element(j, j), 0.0)) {
        if (Exceeds(w * w, kSquaredRelativeTolerance * element(i, i) * element(j, j))) return 1;
        element(i, j) = 0.0;
      } else {
        element(i, j) = w / element(j, j);
      }
    }
    double w = element(i, i);
    for (int k = 1; k < i; ++k) w -= element(i, k) * element(i, k);
    if (Exceeds(std::abs(w), std::abs(element(i, i) * kRelativeTolerance))) {
      if (OrderedBits(w) < 0) return 1;
      element(i, i) = std::sqrt(w);
    } else {
      element(i, i) = 0.0;
      ++nullity;
    }
  }
  return 0;
}

}  // namespace orv
