#include "fit/SymmetricSums.h"

#include "fit/PassKernels.h"

namespace orv {

SymmetricSums::SymmetricSums(Host& host, int p, int largestOrder)
    : m_p(static_cast<std::size_t>(p)),
      m_packed(PackedSize(static_cast<std::size_t>(p))),
      m_values(host, static_cast<std::size_t>(largestOrder) + 1),
      m_first(host, (static_cast<std::size_t>(largestOrder) + 1) * m_p),
      m_second(host, (static_cast<std::size_t>(largestOrder) + 1) * m_packed) {
  if (!Failed()) Clear();
}

void SymmetricSums::Clear() {
  m_values.Clear();
  m_first.Clear();
  m_second.Clear();
  m_values[0].Add(1.0);  // the empty subset
}

void SymmetricSums::Join(double r, const double* x, int lowest, int highest) {
  // From the highest order down, so that each reads the values of the order below from before this member.
  for (int d = highest; d >= lowest; --d) JoinOrder(r, x, static_cast<std::size_t>(d));
}

void SymmetricSums::JoinOrder(double r, const double* x, std::size_t d) {
  const double below = m_values[d - 1].Value();
  const double* firstBelow = m_first.Data() + (d - 1) * m_p;
  const double* secondBelow = m_second.Data() + (d - 1) * m_packed;
  double* first = m_first.Data() + d * m_p;
  double* second = m_second.Data() + d * m_packed;
  for (std::size_t j = 0; j < m_p; ++j) {
    const double rx = r * x[j];
    const double rFirst = r * firstBelow[j];
    for (std::size_t l = 0; l <= j; ++l) {
      second[l] += r * secondBelow[l] + rx * x[l] * below + x[l] * rFirst + rx * firstBelow[l];
    }
    second += j + 1;
    secondBelow += j + 1;
  }
  for (std::size_t j = 0; j < m_p; ++j) first[j] += r * firstBelow[j] + r * x[j] * below;
  m_values[d].Add(r * below);
}

}  // namespace orv
