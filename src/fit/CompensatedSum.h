// A sum that carries the rounding of its additions along.
#pragma once

#include <cmath>

namespace orv {

// For the few long sums whose last digits decide something: with a plain sum the log likelihood of a large table wavers
// by more than a Newton step near the maximum gains, and the step would be rejected by chance.
// Method: Neumaier (1974).
class CompensatedSum {
 public:
  void Add(double term) {
    const double sum = m_sum + term;
    const bool termIsSmaller = std::abs(m_sum) >= std::abs(term);
    m_lost += termIsSmaller ? (m_sum - sum) + term : (term - sum) + m_sum;
    m_sum = sum;
  }
  // A term in two parts, of which the second is small.
  void Add(double term, double rest) {
    Add(term);
    m_lost += rest;
  }
  double Value() const { return m_sum + m_lost; }
  // What the sum is more than `value`, a number near to it.
  double Since(double value) const { return (m_sum - value) + m_lost; }
  // What has come in since this sum was `earlier`, exact to its own size and not to that of the sum.
  double Since(const CompensatedSum& earlier) const { return (m_sum - earlier.m_sum) + (m_lost - earlier.m_lost); }

 private:
  double m_sum = 0.0;
  double m_lost = 0.0;
};

}  // namespace orv
