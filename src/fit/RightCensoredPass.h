// The pass over right-censored rows, with or without strata, under Breslow's and Efron's rule for ties.
#pragma once

#include <vector>

#include "fit/PartialLikelihood.h"
#include "fit/RiskSums.h"
#include "fit/RowsAhead.h"
#include "fit/TieTable.h"

namespace orv {

// The log partial likelihood with tied groups g of d events, risk set R(g), event set E(g) and mean event weight m:
//
//   L = sum over events of w eta  -  sum over g, k = 0..d-1 of m log(S0 - f E0),   f = efronStep k / d
//   S0 = sum over R(g) of w exp(eta),   E0 = sum over E(g) of w exp(eta)
//
// Rows are visited from the last to the first, so a risk set only grows and each row is read once. O(n p^2) a pass,
// and no allocation in it. The cases must not change while the pass lives.
// Sources: Breslow (1974), Efron (1977); the fraction counts events, not weights.
class RightCensoredPass : public PartialLikelihood {
 public:
  // `activeColumns`: the design columns of the model, as columns of a case row. efronStep: 0 Breslow, 1 Efron.
  RightCensoredPass(Host& host,
                    const CaseTable& cases,
                    int n,
                    const CaseColumns& columns,
                    const std::vector<int>& activeColumns,
                    int efronStep);

  bool Failed() const override { return m_ties.Failed() || m_rows.Failed() || m_sums.Failed(); }
  double Evaluate(const double* beta, double* U, double** H) override;

 private:
  void JoinRows(int row, int first, int end);

  const int m_n;
  const int m_p;
  TieTable m_ties;
  RowsAhead m_rows;
  RiskSums m_sums;
  CompensatedSum m_L;
  bool m_atZero = false;
};

}  // namespace orv
