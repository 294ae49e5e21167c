#include "fit/CountingPass.h"

#include "fit/PassKernels.h"

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
      m_columns(columns),
      m_ties(host, cases, n, columns),
      m_rows(host, cases, n, columns, activeColumns),
      m_sums(host, m_p, efronStep),
      m_riskSet(host, cases, n, columns, startColumn, m_ties, activeColumns, m_sums) {}

bool CountingPass::Failed() const {
  return m_ties.Failed() || m_rows.Failed() || m_sums.Failed() || m_riskSet.Failed();
}

double CountingPass::Evaluate(const double* beta, double* U, double** H) {
  const bool atZero = beta == nullptr;
  m_sums.StartPass();
  m_riskSet.Rewind();
  ClearDerivatives(U, H, m_p);
  m_rows.Start(beta);
  CompensatedSum L;
  for (int row = m_n; row >= 1; --row) {
    if (m_ties.EndsStratum(row)) m_riskSet.EnterStratum(row);
    m_riskSet.RemoveLeavers(row);
    m_rows.Next();
    m_riskSet.JoinPadded(row, m_rows.X(), m_rows.WeightedRisk());
    if (m_cases.GetRow(row)[m_columns.Status] == 1.0) m_sums.AddEvent(m_rows.Eta(), m_rows.Weight(), L);
    if (m_ties.Deaths(row) > 0.0) m_sums.CloseGroup(m_ties.Deaths(row), m_ties.MeanWeight(row), atZero, L);
  }
  m_sums.EndPass(U, H);
  return L.Value();
}

}  // namespace orv
