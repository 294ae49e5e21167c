#include "fit/CountingPass.h"

#include <algorithm>
#include <cmath>

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
      m_columns(columns),
      m_ties(host, cases, n, columns),
      m_design(host, activeColumns),
      m_sums(host, static_cast<int>(activeColumns.size()), efronStep),
      m_riskSet(host, cases, n, columns, startColumn, m_ties, activeColumns, m_sums) {}

bool CountingPass::Failed() const {
  return m_ties.Failed() || m_design.Failed() || m_sums.Failed() || m_riskSet.Failed();
}

double CountingPass::Evaluate(const double* beta, double* U, double** H) {
  const bool atZero = beta == nullptr;
  const int p = m_design.Count();
  const PassKernels& kernels = KernelsOfThisMachine();
  m_sums.StartPass();
  m_riskSet.Rewind();
  ClearDerivatives(U, H, p);
  CompensatedSum L;
  for (int row = m_n; row >= 1; --row) {
    if (m_ties.EndsStratum(row)) m_riskSet.EnterStratum(row);
    m_riskSet.RemoveLeavers(row);
    m_cases.PrefetchBefore(row);
    const double* cells = m_cases.GetRow(row);
    const double* x = m_design.Of(cells);
    const double weight = cells[m_columns.Weight];
    const double eta = atZero ? 0.0 : kernels.LinearPredictor(x, beta, p);
    const double wr = atZero ? weight : weight * std::exp(eta);
    m_riskSet.Join(row, x, wr);
    if (cells[m_columns.Status] == 1.0) m_sums.AddEvent(eta, weight, L);
    if (m_ties.Deaths(row) > 0.0) m_sums.CloseGroup(m_ties.Deaths(row), m_ties.MeanWeight(row), atZero, L);
  }
  m_sums.EndPass(U, H);
  return L.Value();
}

}  // namespace orv
