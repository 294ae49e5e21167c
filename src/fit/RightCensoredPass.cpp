#include "fit/RightCensoredPass.h"

#include <algorithm>
#include <cmath>

#include "fit/PassKernels.h"

namespace orv {

RightCensoredPass::RightCensoredPass(Host& host,
                                     const CaseTable& cases,
                                     int n,
                                     const CaseColumns& columns,
                                     const std::vector<int>& activeColumns,
                                     int efronStep)
    : m_cases(cases),
      m_n(n),
      m_columns(columns),
      m_ties(host, cases, n, columns),
      m_design(host, activeColumns),
      m_sums(host, static_cast<int>(activeColumns.size()), efronStep) {}

double RightCensoredPass::Evaluate(const double* beta, double* U, double** H) {
  const bool atZero = beta == nullptr;
  const int p = m_design.Count();
  const PassKernels& kernels = KernelsOfThisMachine();
  m_sums.StartPass();
  ClearDerivatives(U, H, p);
  CompensatedSum L;
  for (int row = m_n; row >= 1; --row) {
    m_cases.PrefetchBefore(row);
    const double* cells = m_cases.GetRow(row);
    const double* x = m_design.Of(cells);
    const double weight = cells[m_columns.Weight];
    if (m_ties.EndsStratum(row)) m_sums.ClearRiskSet();
    const double eta = atZero ? 0.0 : kernels.LinearPredictor(x, beta, p);
    const double wr = atZero ? weight : weight * std::exp(eta);
    m_sums.Join(x, wr);
    if (cells[m_columns.Status] == 1.0) m_sums.AddEvent(eta, weight, L);
    if (m_ties.Deaths(row) > 0.0) m_sums.CloseGroup(m_ties.Deaths(row), m_ties.MeanWeight(row), atZero, L);
  }
  m_sums.EndPass(U, H);
  return L.Value();
}

}  // namespace orv
