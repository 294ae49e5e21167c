#include "inference/SweepPacked.h"

#include <cmath>
#include <cstddef>

#include "data/AlmostEqual.h"

namespace orv {

namespace {

constexpr double kSmallestScale = 1e-12;  // a smaller diagonal entry is not scaled
constexpr double kSmallestPivot = 1e-7;   // of the scaled matrix

std::size_t Place(std::size_t i, std::size_t j) {
  return i * (i + 1) / 2 + j;
}

// sqrt(d_i d_j), or 0 when the product is not positive.
double ScaleFactor(double di, double dj) {
  const double product = di * dj;
  return product > 0.0 ? std::sqrt(product) : 0.0;
}

double Scaled(double value, double di, double dj) {
  const double factor = ScaleFactor(di, dj);
  return factor > 0.0 ? value / factor : 0.0;
}

bool IsTooSmall(double scaledPivot) {
  const double size = std::abs(scaledPivot);
  return OrderedBits(size) <= OrderedBits(kSmallestPivot) || AlmostEqual(size, kSmallestPivot);
}

// Sweeps index k of the scaled matrix. `sign` holds the signs before the sweep.
void SweepScaled(double* a, std::size_t k, std::size_t order, const std::vector<double>& sign) {
  const double q = 1.0 / a[Place(k, k)];
  std::vector<double> u(order);  // column k of the full matrix
  std::vector<double> w(order);  // row k of the full matrix
  for (std::size_t i = 0; i < order; ++i) {
    if (i == k) continue;
    const double stored = i < k ? a[Place(k, i)] : a[Place(i, k)];
    const double mirrored = sign[k] * sign[i] * stored;
    u[i] = i < k ? stored : mirrored;
    w[i] = i < k ? mirrored : stored;
  }
  for (std::size_t j = 0; j < order; ++j) {
    if (j == k) continue;
    for (std::size_t i = 0; i <= j; ++i) {
      if (i != k) a[Place(j, i)] -= q * u[i] * w[j];
    }
  }
  for (std::size_t i = 0; i < k; ++i) a[Place(k, i)] = -q * u[i];
  for (std::size_t i = k + 1; i < order; ++i) a[Place(i, k)] = q * w[i];
  a[Place(k, k)] = q;
}

}  // namespace

void SweepPacked(double* packed, int pivot, int n, std::vector<bool>& swept, int& singular) {
  singular = 0;
  const auto order = static_cast<std::size_t>(n);
  const auto k = static_cast<std::size_t>(pivot - 1);
  std::vector<double> sign(order, 1.0);
  std::vector<double> scale(order);
  for (std::size_t i = 0; i < order; ++i) {
    if (i < swept.size() && swept[i]) sign[i] = -1.0;
    const double size = std::abs(packed[Place(i, i)]);
    scale[i] = kSmallestScale > size ? 1.0 : size;
  }
  // Tested before anything is scaled: a division undone by a multiplication need not give every bit back.
  if (sign[k] > 0.0 && IsTooSmall(Scaled(packed[Place(k, k)], scale[k], scale[k]))) {
    singular = 1;
    return;
  }

  for (std::size_t i = 0; i < order; ++i) {
    for (std::size_t j = 0; j <= i; ++j) packed[Place(i, j)] = Scaled(packed[Place(i, j)], scale[i], scale[j]);
  }
  SweepScaled(packed, k, order, sign);
  // In row and column k the entries are now those of an inverse, and so is their unit.
  scale[k] = 1.0 / scale[k];
  for (std::size_t i = 0; i < order; ++i) {
    for (std::size_t j = 0; j <= i; ++j) packed[Place(i, j)] *= ScaleFactor(scale[i], scale[j]);
  }

  if (swept.size() < order) swept.resize(order, false);
  swept[k] = !swept[k];
}

}  // namespace orv
