// The test of one effect by which a selection decides: a chi-square with its degrees of freedom.
#pragma once

namespace orv {

class CCoxFit;

struct SelectionTest {
  double ChiSquare = 0.0;
  int Df = 0;
  double PValue = 1.0;  // 1 without a degree of freedom
};

// Chi-square and degrees of freedom with their p value, by the host's distribution. What the host's arithmetic leaves
// in the floating-point flags is not the search's.
SelectionTest TestOf(const CCoxFit& fit, double chiSquare, int df);

}  // namespace orv
