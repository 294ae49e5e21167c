#include "select/EffectHierarchy.h"

#include <algorithm>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "inference/EffectContainment.h"

namespace orv {

EffectHierarchy::EffectHierarchy(const CCoxFit& fit) {
  const int effects = static_cast<int>(fit.m_pData->EffectCount);
  m_parts.resize(static_cast<std::size_t>(effects));
  m_wholes.resize(static_cast<std::size_t>(effects));
  for (int part = 0; part < effects; ++part) {
    for (int whole = 0; whole < effects; ++whole) {
      if (part == whole || !EffectContains(fit, part, whole)) continue;
      m_parts[static_cast<std::size_t>(whole)].push_back(part);
      m_wholes[static_cast<std::size_t>(part)].push_back(whole);
    }
  }
}

bool EffectHierarchy::WaitsForAnother(int effect, const std::vector<bool>& inModel) const {
  const std::vector<int>& parts = m_parts[static_cast<std::size_t>(effect - 1)];
  return std::any_of(parts.begin(), parts.end(), [&](int part) { return !inModel[static_cast<std::size_t>(part)]; });
}

bool EffectHierarchy::IsHeldByAnother(int effect, const std::vector<bool>& inModel) const {
  const std::vector<int>& wholes = m_wholes[static_cast<std::size_t>(effect - 1)];
  return std::any_of(wholes.begin(), wholes.end(), [&](int whole) { return inModel[static_cast<std::size_t>(whole)]; });
}

}  // namespace orv
