#include "data/CoxDesignColumn.h"

#include <algorithm>
#include <cmath>

namespace orv {

bool CoxDesignColumn::HasFactor() const {
  return std::find(VariableRoles.begin(), VariableRoles.end(), VariableRole::Factor) != VariableRoles.end();
}

void CoxDesignColumn::AddValue(double value, double weight) {
  const double weightedDistance = (value - WeightedMean) * weight;
  WeightSum += weight;
  WeightedMean += weightedDistance / WeightSum;
  WeightedVariance += (value - WeightedMean) * weightedDistance;

  const double distance = value - Mean;
  ++Count;
  Mean += distance / Count;
  Variance += (value - Mean) * distance;
}

void CoxDesignColumn::FinishStatistics() {
  if (WeightSum - 1.0 > 0.0) {
    WeightedVariance /= WeightSum - 1.0;
    if (WeightedVariance > 0.0) WeightedStdDev = std::sqrt(WeightedVariance);
  }
  if (Count > 1) {
    Variance /= Count - 1;
    StdDev = std::sqrt(Variance);
  }
}

bool ColumnsAgreeOnFixed(std::vector<CoxDesignColumn>::const_iterator first,
                         std::vector<CoxDesignColumn>::const_iterator last) {
  const auto disagree = [](const CoxDesignColumn& a, const CoxDesignColumn& b) { return a.Fixed != b.Fixed; };
  return std::adjacent_find(first, last, disagree) == last;
}

}  // namespace orv
