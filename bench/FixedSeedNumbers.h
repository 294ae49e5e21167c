// FixedSeedNumbers: random numbers that are the same in every run and on every machine.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>

namespace orv::bench {

// The generators of the standard library are fixed, but its distributions are not, so these are written out.
// Method: SplitMix64 (Steele, Lea and Flood, 2014); Box and Muller (1958).
class FixedSeedNumbers {
 public:
  explicit FixedSeedNumbers(std::uint64_t seed = 19580607) : m_state(seed) {}

  std::uint64_t Next() {
    m_state += 0x9E3779B97F4A7C15U;
    std::uint64_t z = m_state;
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31U);
  }
  // In the open interval 0 to 1.
  double Uniform() { return (static_cast<double>(Next() >> 12U) + 0.5) * 0x1p-52; }
  // 0 to `count` - 1.
  int Below(int count) { return static_cast<int>(Next() % static_cast<std::uint64_t>(count)); }
  double Normal() {
    const double radius = std::sqrt(-2.0 * std::log(Uniform()));
    return radius * std::cos(2.0 * std::numbers::pi * Uniform());
  }
  // Mean 1.
  double Exponential() { return -std::log(Uniform()); }

 private:
  std::uint64_t m_state;
};

}  // namespace orv::bench
