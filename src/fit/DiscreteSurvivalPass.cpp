#include "fit/DiscreteSurvivalPass.h"

#include <algorithm>
#include <cmath>

#include "data/AlmostEqual.h"
#include "data/RoundHalfAway.h"
#include "fit/DiscreteGroup.h"
#include "fit/PassKernels.h"

namespace orv {

DiscreteSurvivalPass::DiscreteSurvivalPass(Host& host,
                                           const CaseTable& cases,
                                           int n,
                                           const CaseColumns& columns,
                                           const std::vector<int>& activeColumns)
    : m_cases(cases),
      m_n(n),
      m_columns(columns),
      m_ties(host, cases, n, columns),
      m_design(host, activeColumns),
      m_highest(host, static_cast<std::size_t>(n) + 1),
      m_lowest(host, static_cast<std::size_t>(n) + 1),
      m_sums(host, static_cast<int>(activeColumns.size()), m_ties.LargestGroup()),
      m_r(host, static_cast<std::size_t>(n) + 1),
      m_H(host, PackedSize(activeColumns.size())) {
  if (!DiscreteSurvivalPass::Failed()) FindOrders();
}

bool DiscreteSurvivalPass::Failed() const {
  return m_ties.Failed() || m_design.Failed() || m_highest.Failed() || m_lowest.Failed() || m_sums.Failed() ||
         m_r.Failed() || m_H.Failed();
}

void DiscreteSurvivalPass::FindOrders() {
  int highest = 0;
  int lowest = 1;
  for (int row = 1; row <= m_n; ++row) {
    if (row > 1 && m_ties.EndsStratum(row - 1)) highest = 0;
    const int d = RoundToInteger(m_ties.Deaths(row));
    // A group of d events reads order d of its own row and one order less of each row further up.
    lowest = highest == 0 ? std::max(d, 1) : std::max(lowest - 1, 1);
    if (d > 0) lowest = std::min(lowest, d);
    highest = std::max(highest, d);
    m_highest[static_cast<std::size_t>(row)] = highest;
    m_lowest[static_cast<std::size_t>(row)] = lowest;
  }
}

double DiscreteSurvivalPass::RelativeRisk(const double* cells, const double* beta) {
  if (beta == nullptr) return 1.0;
  return cells[m_columns.Weight] * std::exp(LinearPredictor(m_design.Of(cells), beta, m_design.Count()));
}

void DiscreteSurvivalPass::AddNumerator(int row, CompensatedSum& L, double* U) {
  const int p = m_design.Count();
  const double time = m_cases.GetRow(row)[m_columns.Time];
  // Complete cases stand first at a time, so the events of the group are the rows from its first one on.
  for (int k = row; k <= m_n; ++k) {
    const double* cells = m_cases.GetRow(k);
    if (!AlmostEqual(cells[m_columns.Time], time) || cells[m_columns.Status] != 1.0) return;
    L.Add(std::log(m_r[static_cast<std::size_t>(k)]));
    const double* x = m_design.Of(cells);
    for (int j = 0; j < p; ++j) U[j] += x[j];
    if (m_ties.EndsStratum(k)) return;
  }
}

double DiscreteSurvivalPass::Evaluate(const double* beta, double* U, double** H) {
  const int p = m_design.Count();
  m_sums.Clear();
  m_H.Clear();
  std::fill_n(U, p, 0.0);
  CompensatedSum L;
  for (int row = m_n; row >= 1; --row) {
    const double* cells = m_cases.GetRow(row);
    const auto at = static_cast<std::size_t>(row);
    if (m_ties.EndsStratum(row)) m_sums.Clear();
    m_r[at] = RelativeRisk(cells, beta);
    m_sums.Join(m_r[at], m_design.Of(cells), m_lowest[at], m_highest[at]);
    if (!(m_ties.Deaths(row) > 0.0) || !AlmostEqual(cells[m_columns.Status], 1.0)) continue;
    const int d = RoundToInteger(m_ties.Deaths(row));
    SubtractSubsetTerm({m_sums.Value(d), m_sums.First(d), m_sums.Second(d)}, L, U, m_H.Data(), p);
    AddNumerator(row, L, U);
  }
  CopyPackedToUpper(m_H.Data(), H, p);
  return L.Value();
}

}  // namespace orv
