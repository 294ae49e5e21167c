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
      m_columns(columns),
      m_kernels(kernels),
      m_design(host, activeColumns),
      m_constants(host, activeColumns.size()),
      m_beta(host, 1, m_p),
      m_eta(host, kRows),
      m_weight(host, kRows),
      m_wr(host, kRows),
      m_event(host, kRows) {
  if (!Failed() && n > 0) FindConstants();
}

bool RowsAhead::Failed() const {
  return m_design.Failed() || m_constants.Failed() || m_beta.Failed() || m_eta.Failed() || m_weight.Failed() ||
         m_wr.Failed() || m_event.Failed();
}

// Goes on while some column has not changed yet, which is a few rows on most tables.
void RowsAhead::FindConstants() {
  std::copy_n(m_design.Of(m_cases.GetRow(1)), m_p, m_constants.Data());
  std::vector<std::size_t> same;
  for (std::size_t j = 0; j < m_constants.Count(); ++j) {
    if (m_constants[j] != 0.0) same.push_back(j);
  }
  for (int row = 2; row <= m_n && !same.empty(); ++row) {
    const double* x = m_design.Of(m_cases.GetRow(row));
    std::erase_if(same, [&](std::size_t j) {
      const bool changes = x[j] != m_constants[j];
      if (changes) m_constants[j] = 0.0;
      return changes;
    });
  }
  m_hasConstants = !same.empty();
}

void RowsAhead::Start(const double* beta) {
  m_atZero = beta == nullptr;
  if (m_atZero) {
    m_eta.Clear();
  } else {
    std::copy_n(beta, m_p, m_beta.Row(0));
  }
  m_row = m_n;
}

ComingStore RowsAhead::Next() const {
  const int count = std::min(m_row, kRows);
  if (count == 0) return {};
  return {m_cases.GetRow(m_row - count + 1),
          At(count) * static_cast<std::size_t>(m_cases.ColumnCount()) * sizeof(double)};
}

int RowsAhead::Load(double* x, int room) {
  const int count = std::min({m_row, room, kRows});
  if (count == 0) return 0;
  for (int k = 0; k < count; ++k) {
    const double* cells = m_cases.GetRow(m_row - k);
    m_weight[At(k)] = cells[m_columns.Weight];
    m_event[At(k)] = cells[m_columns.Status] == 1.0 ? 1.0 : 0.0;
  }
  if (m_design.IsLeading()) {
    m_kernels.CopyRows(m_cases.GetRow(m_row), -static_cast<std::ptrdiff_t>(m_cases.ColumnCount()), x, count, m_p);
  } else {
    const std::size_t distance = PaddedOrder(static_cast<std::size_t>(m_p));
    for (int k = 0; k < count; ++k) std::copy_n(m_design.Of(m_cases.GetRow(m_row - k)), m_p, x + At(k) * distance);
  }
  m_row -= count;
  if (m_atZero) {
    std::copy_n(m_weight.Data(), count, m_wr.Data());
    return count;
  }
  m_kernels.LinearPredictors(x, m_beta.Row(0), m_eta.Data(), count, m_p);
  m_kernels.Exponentials(m_eta.Data(), m_wr.Data(), count);
  for (int k = 0; k < count; ++k) m_wr[At(k)] *= m_weight[At(k)];
  return count;
}

}  // namespace orv
