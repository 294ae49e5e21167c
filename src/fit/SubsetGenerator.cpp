#include "fit/SubsetGenerator.h"

#include <algorithm>
#include <numeric>

namespace orv {

bool SubsetGenerator::Next() {
  const int d = static_cast<int>(m_positions.size());
  if (!m_started) {
    m_started = true;
    std::iota(m_positions.begin(), m_positions.end(), 0);
    return d <= m_length;
  }
  return d > 0 && Advance(d, 0) >= 0;
}

int SubsetGenerator::Advance(int count, int depth) {
  const auto last = static_cast<std::size_t>(count) - 1;
  if (m_positions[last] + 1 < m_length - depth) return ++m_positions[last];
  if (count == 1) return -1;
  const int before = Advance(count - 1, depth + 1);
  if (before < 0) return -1;
  return m_positions[last] = before + 1;
}

double SubsetCount(int d, int m, double enough) {
  if (d < 0 || d > m) return 0.0;
  const int fewer = std::min(d, m - d);
  double count = 1.0;
  // The product grows from factor to factor.
  for (int k = 1; k <= fewer && count < enough; ++k) count = count * (m - fewer + k) / k;
  return count;
}

}  // namespace orv
