#include "fit/DiscreteCountingPass.h"

#include <algorithm>
#include <cmath>

#include "data/AlmostEqual.h"
#include "data/RoundHalfAway.h"
#include "fit/PassKernels.h"

namespace orv {

DiscreteCountingPass::DiscreteCountingPass(Host& host,
                                           const CaseTable& cases,
                                           int n,
                                           const CaseColumns& columns,
                                           int startColumn,
                                           const std::vector<int>& activeColumns)
    : m_cases(cases),
      m_n(n),
      m_columns(columns),
      m_ties(host, cases, n, columns),
      m_design(host, activeColumns),
      m_running(host, static_cast<int>(activeColumns.size()), 0),
      m_sums(host, static_cast<int>(activeColumns.size()), m_ties.LargestGroup()),
      m_atRisk(host, n),
      m_riskSet(host, cases, n, columns, startColumn, m_ties, activeColumns, m_running, &m_atRisk),
      m_H(host, PackedSize(activeColumns.size())),
      m_Q1(host, activeColumns.size()),
      m_Q2(host, PackedSize(activeColumns.size())) {}

bool DiscreteCountingPass::Failed() const {
  return m_ties.Failed() || m_design.Failed() || m_running.Failed() || m_sums.Failed() || m_atRisk.Failed() ||
         m_riskSet.Failed() || m_H.Failed() || m_Q1.Failed() || m_Q2.Failed();
}

void DiscreteCountingPass::GatherMembers() {
  const auto p = static_cast<std::size_t>(m_design.Count());
  m_members.clear();
  m_memberDesigns.clear();
  for (int row = m_atRisk.First(); row != 0; row = m_atRisk.After(row)) {
    const double* x = m_design.Of(m_cases.GetRow(row));
    m_memberDesigns.insert(m_memberDesigns.end(), x, x + p);
    m_members.push_back({m_riskSet.WeightedRisk(row), nullptr});
  }
  for (std::size_t k = 0; k < m_members.size(); ++k) m_members[k].x = m_memberDesigns.data() + k * p;
}

SubsetSums DiscreteCountingPass::SumOverSubsets(int d) {
  const int p = m_design.Count();
  const int count = static_cast<int>(m_members.size());
  if (EnumerationIsCheaper(d, count, p)) {
    return EnumerateSubsets(m_members, d, p, m_Q1.Data(), m_Q2.Data());
  }
  m_sums.Clear();
  int lowest = d - count;
  for (const RiskMember& member : m_members) m_sums.Join(member.r, member.x, std::max(++lowest, 1), d);
  return {m_sums.Value(d), m_sums.First(d), m_sums.Second(d)};
}

void DiscreteCountingPass::AddNumerator(int row, CompensatedSum& L, double* U) {
  const int p = m_design.Count();
  const double time = m_cases.GetRow(row)[m_columns.Time];
  for (int k = row; k <= m_riskSet.StratumEnd(); ++k) {
    const double* cells = m_cases.GetRow(k);
    if (!AlmostEqual(cells[m_columns.Time], time)) return;
    if (cells[m_columns.Status] != 1.0) continue;
    L.Add(std::log(m_riskSet.WeightedRisk(k)));
    const double* x = m_design.Of(cells);
    for (int j = 0; j < p; ++j) U[j] += x[j];
  }
}

void DiscreteCountingPass::CloseGroup(int row, CompensatedSum& L, double* U) {
  const int d = RoundToInteger(m_ties.Deaths(row));
  if (d > 1) {
    GatherMembers();
    SubtractSubsetTerm(SumOverSubsets(d), L, U, m_H.Data(), m_design.Count());
  } else {
    // The subsets of one member are the members: the term of a lone event is that of the other rules for ties.
    m_running.CloseGroup(1.0, 1.0, false);
  }
  AddNumerator(row, L, U);
}

double DiscreteCountingPass::Evaluate(const double* beta, double* U, double** H) {
  const int p = m_design.Count();
  m_running.StartPass();
  m_riskSet.Rewind();
  m_H.Clear();
  std::fill_n(U, p, 0.0);
  CompensatedSum L;
  for (int row = m_n; row >= 1; --row) {
    if (m_ties.EndsStratum(row)) m_riskSet.EnterStratum(row);
    m_riskSet.RemoveLeavers(row);
    const double* cells = m_cases.GetRow(row);
    const double* x = m_design.Of(cells);
    const double r = beta == nullptr ? 1.0 : cells[m_columns.Weight] * std::exp(LinearPredictor(x, beta, p));
    m_riskSet.Join(row, x, r);
    if (m_ties.Deaths(row) > 0.0) CloseGroup(row, L, U);
  }
  CopyPackedToUpper(m_H.Data(), H, p);
  m_running.EndPass(L, U, H);
  return L.Value();
}

}  // namespace orv
