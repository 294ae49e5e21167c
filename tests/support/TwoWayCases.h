// Survival times of two factors, f with levels 1 to 2 and g with levels 1 to 3, and a covariate x.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/TestAnalysis.h"
#include "support/TestMatrix.h"

namespace orv::testing {

// Variables: v1 time, v2 status, v3 x, v4 f, v5 g. `counts` tells the cases of each cell, g running fastest; the times
// are all different.
inline std::vector<TestColumn> TwoWayCases(const std::vector<int>& counts, double scaleOfX = 1.0) {
  std::vector<TestColumn> columns = {{"time", {}}, {"status", {}}, {"x", {}}, {"f", {}}, {"g", {}}};
  TestRandom random(20240611);
  double serial = 0.0;
  for (int cell = 0; cell < static_cast<int>(counts.size()); ++cell) {
    for (int k = 0; k < counts[static_cast<std::size_t>(cell)]; ++k) {
      const int f = cell / 3 + 1;
      const int g = cell % 3 + 1;
      serial += 1.0;
      columns[0].Values.push_back(20.0 + 9.0 * random.Value() + 2.0 * f - 1.5 * g * (f - 1) + 1e-3 * serial);
      columns[1].Values.push_back(random.Integer(5) > 0 ? 1.0 : 0.0);
      columns[2].Values.push_back(scaleOfX * (3.0 + random.Value()));
      columns[3].Values.push_back(f);
      columns[4].Values.push_back(g);
    }
  }
  return columns;
}

inline const std::vector<int> kBalanced = {5, 5, 5, 5, 5, 5};
inline const std::vector<int> kUnbalanced = {3, 8, 5, 9, 2, 6};
inline const std::vector<int> kEmptyCell = {6, 4, 0, 5, 7, 6};

// Chooses the variables of an analysis of these cases, and the effects. Without effects there are no predictors.
inline void SelectTwoWay(TestAnalysis& analysis,
                         int coding,
                         const std::vector<std::pair<std::string, std::string>>& effects) {
  analysis.Settings().Coding = static_cast<std::int16_t>(coding);
  analysis.Settings().ConvergenceType = ConvergenceTypes::RelativeParameter;
  analysis.Time({"time"}).Status("status");
  if (!effects.empty()) analysis.Covariates({"x"}).Factor("f", {1, 2}).Factor("g", {1, 2, 3}).Design(effects);
}

}  // namespace orv::testing
