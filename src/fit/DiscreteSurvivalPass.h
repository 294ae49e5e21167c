// The pass over right-censored rows under the discrete likelihood, with or without strata.
#pragma once

#include <vector>

#include "fit/ActiveDesign.h"
#include "fit/CompensatedSum.h"
#include "fit/PartialLikelihood.h"
#include "fit/SymmetricSums.h"
#include "fit/TieTable.h"

namespace orv {

// At a time with d events the denominator sums, over every subset of d of the risk set, the product of the members'
// relative risks: an elementary symmetric sum, built up as the rows join from the last to the first. Weights are inside
// the relative risks; analyses run with unit weights.
//
// A row joins the orders that a group still to come reads, and no others: orders beyond them cost time and may lie
// outside the range of a double. A pass costs O(n D p^2) with D the largest number of events of a group.
// Sources: Cox (1972); Gail, Lubin and Rubinstein (1981).
class DiscreteSurvivalPass : public PartialLikelihood {
 public:
  DiscreteSurvivalPass(Host& host,
                       const CaseTable& cases,
                       int n,
                       const CaseColumns& columns,
                       const std::vector<int>& activeColumns);

  bool Failed() const override;
  double Evaluate(const double* beta, double* U, double** H) override;

 private:
  void FindOrders();
  double RelativeRisk(const double* cells, const double* beta);
  // The events of the group that closes on a row, into L and U.
  void AddNumerator(int row, CompensatedSum& L, double* U);

  const CaseTable& m_cases;
  const int m_n;
  const CaseColumns m_columns;
  TieTable m_ties;
  ActiveDesign m_design;
  WorkArray<int> m_highest;  // of each row: the orders that the groups of its stratum closing on it or later read
  WorkArray<int> m_lowest;
  SymmetricSums m_sums;
  WorkArray<double> m_r;  // relative risk of each row
  WorkArray<double> m_H;  // packed
};

}  // namespace orv
