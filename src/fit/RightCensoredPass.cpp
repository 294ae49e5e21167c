#include "fit/RightCensoredPass.h"

#include "fit/PassKernels.h"

namespace orv {

RightCensoredPass::RightCensoredPass(Host& host,
                                     const CaseTable& cases,
                                     int n,
                                     const CaseColumns& columns,
                                     const std::vector<int>& activeColumns,
                                     int efronStep)
    : m_n(n),
      m_p(static_cast<int>(activeColumns.size())),
      m_ties(host, cases, n, columns),
      m_rows(host, cases, n, columns, activeColumns),
      m_sums(host, m_p, efronStep) {}

double RightCensoredPass::Evaluate(const double* beta, double* U, double** H) {
  m_atZero = beta == nullptr;
  m_sums.StartPass(m_rows.Constants());
  ClearDerivatives(U, H, m_p);
  m_rows.Start(beta);
  m_L = {};
  for (int row = m_n; row >= 1;) {
    double* x = m_sums.NextRow(m_rows.Next());
    const int count = m_rows.Load(x, m_sums.Room());
    for (int first = 0; first < count;) {
      if (m_ties.EndsStratum(row - first)) m_sums.ClearRiskSet();
      int end = first + 1;
      while (end < count && !m_ties.EndsStratum(row - end)) ++end;
      JoinRows(row, first, end);
      first = end;
    }
    row -= count;
  }
  m_sums.EndPass(m_L, U, H);
  return m_L.Value();
}

// The loaded rows from `first` to before `end`, all of one stratum; the first of all that are loaded is `row` of the
// table.
void RightCensoredPass::JoinRows(int row, int first, int end) {
  const int offset = m_sums.Waiting() - first;
  const double* isEvent = m_rows.IsEvent();
  const double* weight = m_rows.Weight();
  m_sums.JoinRows(end - first, m_rows.WeightedRisk() + first, isEvent + first, weight + first);
  // Listed first, since a branch that is taken at random costs more than the lists.
  int event[RowsAhead::kRows];
  int closing[RowsAhead::kRows];
  int events = 0;
  int closings = 0;
  for (int k = first; k < end; ++k) {
    event[events] = k;
    events += isEvent[k] != 0.0 ? 1 : 0;
    closing[closings] = k;
    closings += m_ties.Deaths(row - k) > 0.0 ? 1 : 0;
  }
  for (int i = 0; i < events; ++i) m_L.Add(m_rows.Eta()[event[i]] * weight[event[i]]);
  for (int i = 0; i < closings; ++i) {
    const int k = closing[i];
    m_sums.CloseGroup(offset + k, m_ties.Deaths(row - k), m_ties.MeanWeight(row - k), m_atZero);
  }
}

}  // namespace orv
