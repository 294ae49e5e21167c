// EffectModel: the model that a search changes effect by effect, as the fit's current model.
#pragma once

#include <vector>

namespace orv {

class CCoxFit;

// Effects count from 1, columns from 0. m_ActiveColumns and m_ActiveCount of the fit follow every change, so a search
// that ends in between leaves the model as it stands.
class EffectModel {
 public:
  // Starts empty. `fit` outlives the object.
  explicit EffectModel(CCoxFit& fit);

  bool Holds(int effect) const { return m_holds[static_cast<std::size_t>(effect - 1)]; }
  // In the order in which they joined, and so stand the columns.
  const std::vector<int>& Effects() const { return m_effects; }
  // A bit an effect, from 0.
  const std::vector<bool>& EffectBits() const { return m_holds; }

  void Add(int effect);
  void Remove(int effect);

  // Fits the model from the start values, with nothing left of an earlier fit.
  void Fit();
  // The estimates of the latest fit at their columns of the full design, 0 elsewhere.
  std::vector<double> FullEstimates() const;

 private:
  void Publish();

  CCoxFit& m_fit;
  std::vector<int> m_effects;
  std::vector<bool> m_holds;
};

}  // namespace orv
