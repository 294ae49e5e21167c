#include "select/SubsetSweep.h"

#include <algorithm>

#include "fit/FloatingPointRegime.h"

namespace orv {

void SubsetSweep::Add(int column) {
  if (!m_swept.SweepIn(column)) m_aside.insert(std::lower_bound(m_aside.begin(), m_aside.end(), column), column);
}

void SubsetSweep::Remove(int column) {
  if (std::erase(m_aside, column) > 0) return;
  m_swept.SweepOut(column);
  // One column at most can take its place.
  const auto taken = std::find_if(m_aside.begin(), m_aside.end(), [this](int other) { return m_swept.SweepIn(other); });
  if (taken != m_aside.end()) m_aside.erase(taken);
}

double SubsetSweep::Score() const {
  FloatingPointRegime::ThrowIfFailed();
  return m_swept.ChiSquare();
}

}  // namespace orv
