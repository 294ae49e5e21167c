// The choice of the effect that enters, by score tests, and of the one that leaves, by Wald tests.
#pragma once

#include <vector>

#include "select/EffectHierarchy.h"
#include "select/SelectionTest.h"
#include "select/SweptInformation.h"

namespace orv {

class CCoxFit;

// An effect with its test; effect 0 stands for none.
struct SelectionCandidate {
  int Effect = 0;
  SelectionTest Test;
};

// Of the `effects`, ascending from 1, the one with the smallest p value of its score test beyond the columns that are
// swept. Those in the model, and those that wait for another effect, are passed over. Of equal p values the effect that
// stands earlier in the design is taken. With no effect left the p value is 2, above every limit.
//   inModel  a bit an effect, from 0
SelectionCandidate BestToEnter(const CCoxFit& fit,
                               const SweptInformation& swept,
                               const EffectHierarchy& hierarchy,
                               const std::vector<bool>& inModel,
                               const std::vector<int>& effects);

// The Wald tests of effects within the current model, as its latest fit left it. Always by the usual covariance: the
// robust one belongs to the final model.
class RemovalTests {
 public:
  // Under the overparameterized coding it evaluates the information at beta = 0, from which the hypotheses come.
  explicit RemovalTests(CCoxFit& fit);

  // Of the `effects`, ascending from 1, the one in the model with the largest p value. Those that a higher-order effect
  // of the model contains are passed over. Of equal p values the effect that stands earlier in the design is taken.
  // With no effect left the p value is -1. Throws NumericalFailure when a variance is 0 that is divided by, and when
  // the fit left no covariance.
  SelectionCandidate BestToLeave(const EffectHierarchy& hierarchy,
                                 const std::vector<bool>& inModel,
                                 const std::vector<int>& effects) const;

  // The test of one effect. With one column that is not dropped it is the square of the first column's estimate over
  // its variance. Kept: it is the first column even when that one is dropped and another counts, and then its variance
  // of 0 ends the search, as it has in every release.
  SelectionTest Test(int effect) const;

 private:
  std::vector<std::vector<double>> HypothesisOf(int effect) const;

  const CCoxFit& m_fit;
  std::vector<double> m_nullInformation;  // packed
};

// Tests L'b = 0 on the current model by m_Covariance, like TestLinearHypothesis on the final one.
//   L              a row for each column of the current model, a column for each function
//   lastIteration  the entry of m_BetaHistory that holds b, from 0
//   df             out: how many of the functions are independent
//   failed         out: 1 when none is, and then the chi-square is 0
double WaldForEffect(const CCoxFit& fit,
                     const std::vector<std::vector<double>>& L,
                     int lastIteration,
                     int& df,
                     int& failed);

}  // namespace orv
