// The pass over survival times with covariates that change with time, under Breslow's and Efron's rule for ties.
#pragma once

#include <functional>
#include <vector>

#include "fit/PartialLikelihood.h"
#include "fit/RiskSums.h"
#include "fit/TieTable.h"

namespace orv {

// A column of the model with the time expressions that multiply its stored value.
struct TimeColumn {
  int Column = 0;                // of a case row
  std::vector<int> Expressions;  // their numbers; empty for a column that keeps its stored value
};

// At an event time every row of the risk set is evaluated at that time. Values depend on row and time and not on the
// parameters, so they are kept between passes as long as they fit a bounded store.
//
// The risk set of a group is every row from its first to the end of the table. Strata cut tied groups and nothing else:
// kept, stratified analyses with time-dependent covariates have always run their risk sets across the strata.
//
// O(n p^2) and the expressions, for each time with events: the sums of a group are needed only on the row that closes
// it. The columns are on their raw scale, so each group is centred on the row that closes it: score and information are
// those of differences within a risk set, and a column that is the same for all of them gives exact zeros.
// Source: Cox (1972).
class TimeDependentPass : public PartialLikelihood {
 public:
  // The value of an expression (number from 1) at a time for a case row. Throws NumericalFailure when there is none.
  using ExpressionValue = std::function<double(int expression, double time, const double* cells)>;

  TimeDependentPass(Host& host,
                    const CaseTable& cases,
                    int n,
                    const CaseColumns& columns,
                    const std::vector<TimeColumn>& design,
                    ExpressionValue value,
                    int efronStep);

  bool Failed() const override;
  double Evaluate(const double* beta, double* U, double** H) override;

 private:
  // The values of the columns with expressions for one row at one time: kept ones when there are, else computed, and
  // kept when there is room.
  const double* VaryingValues(const double* cells, double time);
  void FormDesign(const double* cells, double time);
  // The sums over the rows from `row` on at a time, centred on that row.
  void SumRiskSet(int row, double time, const double* beta);
  // An event of the group that is summed, at its own time.
  void AddEvent(int row, const double* beta, CompensatedSum& L, double* U);
  void Center();

  const CaseTable& m_cases;
  const int m_n;
  const CaseColumns m_columns;
  const std::vector<TimeColumn> m_design;
  const ExpressionValue m_value;
  TieTable m_ties;
  RiskSums m_sums;
  WorkArray<double> m_x;               // design values of the row in hand
  WorkArray<double> m_center;          // design values of the row that closes the group in hand
  WorkArray<int> m_events;             // rows of its events
  std::vector<std::size_t> m_varying;  // places of the columns that have expressions
  WorkArray<double> m_current;         // their values of the row in hand, when none are kept
  WorkArray<double> m_kept;            // all such values of a pass, in the order of their use
  bool m_isKept = false;               // m_kept is filled
  std::size_t m_next = 0;              // the next kept value of the pass
};

}  // namespace orv
