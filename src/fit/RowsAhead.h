// RowsAhead: the rows of a walk from the last to the first, with their risks, a block of them at a time.
#pragma once

#include <vector>

#include "data/CaseTable.h"
#include "fit/ActiveDesign.h"
#include "fit/PaddedRows.h"
#include "fit/PassKernels.h"
#include "fit/TieTable.h"
#include "host/WorkArray.h"

namespace orv {

// The linear predictors and exponentials of a block of rows are formed together, which takes a fraction of the time
// that they would take one by one.
class RowsAhead {
 public:
  static constexpr int kRows = 64;

  // The table must outlive the object, and its cells stay as they are. `activeColumns`: the design columns of the
  // model, as columns of a case row.
  RowsAhead(Host& host,
            const CaseTable& cases,
            int n,
            const CaseColumns& columns,
            const std::vector<int>& activeColumns,
            const PassKernels& kernels = KernelsOfThisMachine());

  bool Failed() const;

  // For the head of a walk, before row n. beta: p values, or null for the zero vector, where no exponential is taken.
  void Start(const double* beta);

  // Moves on to the next rows, as many as are left and at most kRows or `room`. Returns their number. Their design
  // values go to `x`, padded as rows of a block, in the order of the walk.
  int Load(double* x, int room = kRows);

  // p values: those of the columns that are the same in rows 1 to n, 0 for others. Null when there are none but zeros.
  const double* Constants() const { return m_hasConstants ? m_constants.Data() : nullptr; }

  // Where the rows of the next Load lie.
  ComingStore Next() const;

  // Of the rows that Load moved to, a number for each in the order of the walk:
  const double* Eta() const { return m_eta.Data(); }  // the linear predictor
  const double* Weight() const { return m_weight.Data(); }
  const double* WeightedRisk() const { return m_wr.Data(); }  // weight * exp(eta)
  const double* IsEvent() const { return m_event.Data(); }    // 1 or 0

 private:
  void FindConstants();
  static std::size_t At(int k) { return static_cast<std::size_t>(k); }

  const CaseTable& m_cases;
  const int m_n;
  const int m_p;
  const CaseColumns m_columns;
  const PassKernels& m_kernels;
  ActiveDesign m_design;
  WorkArray<double> m_constants;
  bool m_hasConstants = false;
  PaddedRows m_beta;
  WorkArray<double> m_eta;
  WorkArray<double> m_weight;
  WorkArray<double> m_wr;
  WorkArray<double> m_event;
  bool m_atZero = false;
  int m_row = 0;  // the next one
};

}  // namespace orv
