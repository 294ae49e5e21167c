#include "inference/RootFinder.h"

#include <algorithm>
#include <cmath>

namespace orv {

namespace {

constexpr int kMostIterations = 100;
constexpr double kRelativeStep = 6e-8;

// The iterate b, the previous one a, and c on the other side of the root.
struct Bracket {
  double a, fa, b, fb, c, fc;
};

// A step by inverse quadratic interpolation, or by the secant while there are only two points; empty when it would
// leave the bracket or shrink it too slowly.
std::optional<double> InterpolatedStep(const Bracket& s, double half, double tolerance, double before) {
  double p = 0.0;
  double q = 0.0;
  const double ratio = s.fb / s.fa;
  if (s.a == s.c) {
    p = 2.0 * half * ratio;
    q = 1.0 - ratio;
  } else {
    const double t = s.fa / s.fc;
    const double r = s.fb / s.fc;
    p = ratio * (2.0 * half * t * (t - r) - (s.b - s.a) * (r - 1.0));
    q = (t - 1.0) * (r - 1.0) * (ratio - 1.0);
  }
  if (p > 0.0) q = -q;
  p = std::abs(p);
  const bool stays = 2.0 * p < std::min(3.0 * half * q - std::abs(tolerance * q), std::abs(before * q));
  if (!stays) return std::nullopt;
  return p / q;
}

}  // namespace

std::optional<double> FindRoot(const std::function<std::optional<double>(double)>& f,
                               double low,
                               double high,
                               double tolerance) {
  const std::optional<double> atLow = f(low);
  const std::optional<double> atHigh = f(high);
  if (!atLow || !atHigh) return std::nullopt;
  if ((*atLow > 0.0 && *atHigh > 0.0) || (*atLow < 0.0 && *atHigh < 0.0)) return std::nullopt;
  Bracket s{low, *atLow, high, *atHigh, high, *atHigh};
  double step = high - low;
  double before = step;
  for (int iteration = 0; iteration < kMostIterations; ++iteration) {
    if ((s.fb > 0.0 && s.fc > 0.0) || (s.fb < 0.0 && s.fc < 0.0)) {
      s.c = s.a;
      s.fc = s.fa;
      before = step = s.b - s.a;
    }
    if (std::abs(s.fc) < std::abs(s.fb)) s = {s.b, s.fb, s.c, s.fc, s.b, s.fb};
    const double stepTolerance = kRelativeStep * std::abs(s.b) + 0.5 * tolerance;
    const double half = 0.5 * (s.c - s.b);
    if (std::abs(half) <= stepTolerance || s.fb == 0.0) return s.b;
    std::optional<double> interpolated;
    if (std::abs(before) >= stepTolerance && std::abs(s.fa) > std::abs(s.fb)) {
      interpolated = InterpolatedStep(s, half, stepTolerance, before);
    }
    before = interpolated ? step : half;
    step = interpolated ? *interpolated : half;
    s.a = s.b;
    s.fa = s.fb;
    s.b += std::abs(step) > stepTolerance ? step : std::copysign(stepTolerance, half);
    const std::optional<double> value = f(s.b);
    if (!value) return std::nullopt;
    s.fb = *value;
  }
  return std::nullopt;
}

}  // namespace orv
