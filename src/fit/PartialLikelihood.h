// PartialLikelihood: one pass over the cases, as the Newton frame sees it.
#pragma once

namespace orv {

class PartialLikelihood {
 public:
  virtual ~PartialLikelihood() = default;

  // Working store could not be had; Evaluate must not be called then.
  virtual bool Failed() const = 0;

  // Evaluates log partial likelihood, score and information at a parameter vector.
  //   beta   p values, or null for the zero vector, where no exponential is taken
  //   U      p values, overwritten
  //   H      p rows of p; the upper triangle (row <= column) is overwritten, the rest left alone
  // Returns the log partial likelihood. Numbers that cannot be computed leave floating-point status flags and are not
  // tested for here.
  virtual double Evaluate(const double* beta, double* U, double** H) = 0;
};

}  // namespace orv
