// AlmostEqual: the module's equality of doubles, for missing data, codes, tied times and stratum changes.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

namespace orv {

// Doubles mapped to integers in their own order, so that neighbours differ by 1 and both zeros are 0.
inline std::int64_t OrderedBits(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  constexpr std::uint64_t kSign = 0x8000000000000000U;
  return std::bit_cast<std::int64_t>((bits & kSign) != 0 ? kSign - bits : bits);
}

inline constexpr std::uint64_t kAlmostEqualSlack = 15;  // units in the last place

// The distance of two ordered images, which may not fit a signed integer.
inline std::uint64_t OrderedDistance(std::int64_t a, std::int64_t b) {
  return a > b ? static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b)
               : static_cast<std::uint64_t>(b) - static_cast<std::uint64_t>(a);
}

// True when the doubles lie within 15 units in the last place of each other. Infinities and NaNs take part by their
// bits, as any other double.
inline bool AlmostEqual(double a, double b) {
  return OrderedDistance(OrderedBits(a), OrderedBits(b)) <= kAlmostEqualSlack;
}

// The strict form: also false when either value is infinite or NaN.
inline bool AlmostEqualStrict(double a, double b) {
  return std::isfinite(a) && std::isfinite(b) && AlmostEqual(a, b);
}

}  // namespace orv
