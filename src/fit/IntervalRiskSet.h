// The risk set of intervals (start, stop] as a walk goes from the last stop to the first.
#pragma once

#include <vector>

#include "fit/ActiveDesign.h"
#include "fit/RiskList.h"
#include "fit/RiskSums.h"
#include "fit/StartOrder.h"
#include "fit/TieTable.h"

namespace orv {

// A row joins the sums at its stop and leaves them at its start; the starts are sorted once, so a pointer finds the
// leavers. What leaves is subtracted. When that has taken most digits of the sums, they are built anew from the rows at
// risk, so that a row of a very high risk leaves nothing behind. No allocation in a walk.
class IntervalRiskSet {
 public:
  // `sums` takes the rows; `members`, when not null, lists them. Both belong to the caller and outlive the object.
  IntervalRiskSet(Host& host,
                  const CaseTable& cases,
                  int n,
                  const CaseColumns& columns,
                  int startColumn,
                  const TieTable& ties,
                  const std::vector<int>& activeColumns,
                  RiskSums& sums,
                  RiskList* members = nullptr);

  bool Failed() const { return m_starts.Failed() || m_design.Failed() || m_wr.Failed(); }

  // Begins a walk at row n; the sums are empty.
  void Rewind();
  // The walk enters the stratum that ends with this row.
  void EnterStratum(int lastRow);
  // Takes the rows whose interval lies above the time of `row` out of the risk set.
  void RemoveLeavers(int row);
  // A row joins with its design values and its weighted risk.
  void Join(int row, const double* x, double wr);

  int StratumEnd() const { return m_stratumEnd; }
  // What a row of the walk has brought into the sums.
  double WeightedRisk(int row) const { return m_wr[static_cast<std::size_t>(row)]; }

 private:
  void Empty();
  void FetchAhead() const;
  void RestoreDigits(int row);

  const CaseTable& m_cases;
  const int m_n;
  const int m_timeColumn;
  const int m_startColumn;
  StartOrder m_starts;
  ActiveDesign m_design;
  RiskSums& m_sums;
  RiskList* m_members;
  WorkArray<double> m_wr;
  int m_atRisk = 0;
  int m_stratumEnd = 0;
  double m_peak = 0.0;  // the largest sum of risks since the sums were last exact
};

}  // namespace orv
