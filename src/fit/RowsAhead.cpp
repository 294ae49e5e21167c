#include "fit/RowsAhead.h"

#include <algorithm>

namespace orv {

RowsAhead::RowsAhead(Host& host,
                     const CaseTable& cases,
                     int n,
                     const CaseColumns& columns,
                     const std::vector<int>& activeColumns,
                     const PassKernels& kernels)
    : m_cases(cases),
      m_n(n),
      m_p(static_cast<int>(activeColumns.size())),
      m_weightColumn(columns.Weight),
      m_kernels(kernels),
      m_design(host, activeColumns),
      m_beta(host, 1, m_p),
      m_x(host, kRows, m_p),
      m_eta(host, kRows),
      m_weight(host, kRows),
      m_wr(host, kRows) {}

bool RowsAhead::Failed() const {
  return m_design.Failed() || m_beta.Failed() || m_x.Failed() || m_eta.Failed() || m_weight.Failed() || m_wr.Failed();
}

void RowsAhead::Start(const double* beta) {
  m_atZero = beta == nullptr;
  if (m_atZero) {
    m_eta.Clear();
  } else {
    std::copy_n(beta, m_p, m_beta.Row(0));
  }
  m_row = m_n;
  m_place = 0;
}

void RowsAhead::Load() {
  const int count = std::min(m_row, kRows);
  const int first = m_row - count + 1;
  for (int k = 0; k < count; ++k) m_weight[static_cast<std::size_t>(k)] = m_cases.GetRow(first + k)[m_weightColumn];
  if (m_design.IsLeading()) {
    m_kernels.CopyRows(m_cases.GetRow(first), static_cast<std::size_t>(m_cases.ColumnCount()), m_x.Row(0), count, m_p);
  } else {
    for (int k = 0; k < count; ++k) std::copy_n(m_design.Of(m_cases.GetRow(first + k)), m_p, m_x.Row(k));
  }
  m_place = count - 1;
  if (m_atZero) {
    std::copy_n(m_weight.Data(), count, m_wr.Data());
    return;
  }
  m_kernels.LinearPredictors(m_x.Row(0), m_beta.Row(0), m_eta.Data(), count, m_p);
  m_kernels.Exponentials(m_eta.Data(), m_wr.Data(), count);
  for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k) m_wr[k] *= m_weight[k];
}

}  // namespace orv
