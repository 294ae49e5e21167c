// The order in which effects may enter and leave: an interaction after its main effects, a main effect not before the
// interactions that hold it.
#pragma once

#include <vector>

namespace orv {

class CCoxFit;

class EffectHierarchy {
 public:
  // Compares all effects of the design with each other once.
  explicit EffectHierarchy(const CCoxFit& fit);

  // Effects count from 1; `inModel` has a bit an effect, from 0.
  // True when another effect that is not in the model is contained in this one.
  bool WaitsForAnother(int effect, const std::vector<bool>& inModel) const;
  // True when another effect that is in the model contains this one.
  bool IsHeldByAnother(int effect, const std::vector<bool>& inModel) const;

 private:
  std::vector<std::vector<int>> m_parts;   // per effect, from 0: the others that it contains
  std::vector<std::vector<int>> m_wholes;  // the others that contain it
};

}  // namespace orv
