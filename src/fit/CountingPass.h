// The pass over intervals (start, stop], with or without strata, under Breslow's and Efron's rule for ties.
#pragma once

#include <vector>

#include "fit/IntervalRiskSet.h"
#include "fit/PartialLikelihood.h"
#include "fit/RiskSums.h"
#include "fit/RowsAhead.h"
#include "fit/TieTable.h"

namespace orv {

// The likelihood of RightCensoredPass with risk sets of the rows whose interval holds the event time: start < t <=
// stop.
//
// Rows are visited from the last stop to the first. O(n p^2). No allocation in a pass.
// Source: Andersen and Gill (1982).
class CountingPass : public PartialLikelihood {
 public:
  // `columns.Time` is the stop of the interval.
  CountingPass(Host& host,
               const CaseTable& cases,
               int n,
               const CaseColumns& columns,
               int startColumn,
               const std::vector<int>& activeColumns,
               int efronStep);

  bool Failed() const override;
  double Evaluate(const double* beta, double* U, double** H) override;

 private:
  const CaseTable& m_cases;
  const int m_n;
  const int m_p;
  TieTable m_ties;
  RowsAhead m_rows;
  PaddedRows m_x;  // design values of the rows that m_rows has loaded
  RiskSums m_sums;
  IntervalRiskSet m_riskSet;
};

}  // namespace orv
