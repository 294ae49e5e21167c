#include "fit/CountingPass.h"

namespace orv {

CountingPass::CountingPass(Host& host,
                           const CaseTable& cases,
                           int n,
                           const CaseColumns& columns,
                           int startColumn,
                           const std::vector<int>& activeColumns,
                           int efronStep)
    : m_cases(cases),
      m_n(n),
      m_p(static_cast<int>(activeColumns.size())),
      m_ties(host, cases, n, columns),
      m_rows(host, cases, n, columns, activeColumns),
      m_x(host, RowsAhead::kRows, m_p),
      m_sums(host, m_p, efronStep),
      m_riskSet(host, cases, n, columns, startColumn, m_ties, activeColumns, m_sums) {}

bool CountingPass::Failed() const {
  return m_ties.Failed() || m_rows.Failed() || m_x.Failed() || m_sums.Failed() || m_riskSet.Failed();
}

double CountingPass::Evaluate(const double* beta, double* U, double** H) {
  const bool atZero = beta == nullptr;
  m_sums.StartPass(m_rows.Constants());
  m_riskSet.Rewind();
  ClearDerivatives(U, H, m_p);
  m_rows.Start(beta);
  CompensatedSum L;
  for (int row = m_n; row >= 1;) {
    const int count = m_rows.Load(m_x.Row(0));
    for (int k = 0; k < count; ++k, --row) {
      if (row > RowsAhead::kRows) m_cases.Prefetch(row - RowsAhead::kRows);
      if (m_ties.EndsStratum(row)) m_riskSet.EnterStratum(row);
      m_riskSet.RemoveLeavers(row);
      m_riskSet.Join(row, m_x.Row(k), m_rows.WeightedRisk()[k]);
      if (m_rows.IsEvent()[k] != 0.0) {
        L.Add(m_rows.Eta()[k] * m_rows.Weight()[k]);
        m_sums.AddEvent(m_rows.Weight()[k]);
      }
      if (m_ties.Deaths(row) > 0.0) m_sums.CloseGroup(m_ties.Deaths(row), m_ties.MeanWeight(row), atZero);
    }
  }
  m_sums.EndPass(L, U, H);
  return L.Value();
}

}  // namespace orv
