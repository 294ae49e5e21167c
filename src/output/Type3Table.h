// The table of Type 3 tests: each effect of the model tested as a whole.
#pragma once

#include <string>
#include <vector>

namespace orv {

class CCoxFit;

// The test of one effect.
struct EffectTest {
  std::string Name;
  double ChiSquare = 0.0;
  int ShownDf = 0;      // what the table shows: it need not be the df of the p value
  double PValue = 1.0;  // 1 when no function of the effect can be tested
};

// The Wald tests of the effects, in design order, by the covariance in use. Under the restricted codings the hypothesis
// is that all parameters of the effect are 0, and an effect whose columns are all dropped has no test; the df shown is
// the number of columns that are not dropped under sigma-restricted coding and that of the test under reference coding.
// Kept: saved tables hold both. Under the overparameterized coding the hypothesis is BuildType3Contrast's, an effect
// without a function has no test, and the number of functions is shown.
// Empty when there is nothing to test, when the fit left no covariance, and, under the overparameterized coding, when
// the information cannot be had: memory is out, the evaluation fails, or covariates depend on time.
std::vector<EffectTest> ComputeType3Tests(CCoxFit& fit);

// One row per test; nothing is shown when there is none. Rows with a p value below alpha are highlighted.
//   confidenceLevel  0 to 1; see AlphaOf
void ShowType3Tests(CCoxFit& fit, double confidenceLevel);

}  // namespace orv
