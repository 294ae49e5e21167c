// RowsAhead: the rows of a walk from the last to the first, with their risks, some rows before their turn.
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
  // The table must outlive the object. `activeColumns`: the design columns of the model, as columns of a case row.
  RowsAhead(Host& host,
            const CaseTable& cases,
            int n,
            const CaseColumns& columns,
            const std::vector<int>& activeColumns,
            const PassKernels& kernels = KernelsOfThisMachine());

  bool Failed() const;

  // For the head of a walk, before row n. beta: p values, or null for the zero vector, where no exponential is taken.
  void Start(const double* beta);
  // Moves on to the next row.
  void Next() {
    if (--m_place < 0) Load();
    if (m_row > kRows) m_cases.Prefetch(m_row - kRows);
    --m_row;
  }

  // Of the row that Next moved to:
  // the design values, padded as a row of a block
  const double* X() const { return m_x.Row(m_place); }
  // the linear predictor
  double Eta() const { return m_eta[At()]; }
  double Weight() const { return m_weight[At()]; }
  // weight * exp(eta)
  double WeightedRisk() const { return m_wr[At()]; }

 private:
  static constexpr int kRows = 64;

  std::size_t At() const { return static_cast<std::size_t>(m_place); }
  void Load();

  const CaseTable& m_cases;
  const int m_n;
  const int m_p;
  const int m_weightColumn;
  const PassKernels& m_kernels;
  ActiveDesign m_design;
  PaddedRows m_beta;
  PaddedRows m_x;  // the row whose turn comes last stands first
  WorkArray<double> m_eta;
  WorkArray<double> m_weight;
  WorkArray<double> m_wr;
  bool m_atZero = false;
  int m_row = 0;    // the next one
  int m_place = 0;  // of the current row in the block
};

}  // namespace orv
