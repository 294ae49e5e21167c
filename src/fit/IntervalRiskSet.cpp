#include "fit/IntervalRiskSet.h"

#include <algorithm>

namespace orv {

namespace {

// Below this share of the largest sum the sums of moments have lost three digits to what left them.
constexpr double kLeastShare = 1e-3;

}  // namespace

IntervalRiskSet::IntervalRiskSet(Host& host,
                                 const CaseTable& cases,
                                 int n,
                                 const CaseColumns& columns,
                                 int startColumn,
                                 const TieTable& ties,
                                 const std::vector<int>& activeColumns,
                                 RiskSums& sums,
                                 RiskList* members)
    : m_cases(cases),
      m_n(n),
      m_timeColumn(columns.Time),
      m_startColumn(startColumn),
      m_starts(host, cases, n, startColumn, ties),
      m_design(host, activeColumns),
      m_sums(sums),
      m_members(members),
      m_wr(host, static_cast<std::size_t>(n) + 1) {}

void IntervalRiskSet::Empty() {
  m_sums.ClearRiskSet();
  m_peak = 0.0;
}

void IntervalRiskSet::Rewind() {
  EnterStratum(m_n);
}

void IntervalRiskSet::EnterStratum(int lastRow) {
  Empty();
  m_starts.EnterStratum(lastRow);
  if (m_members != nullptr) m_members->Clear();
  m_atRisk = 0;
  m_stratumEnd = lastRow;
}

void IntervalRiskSet::Join(int row, const double* x, double wr) {
  m_sums.Join(x, wr);
  m_wr[static_cast<std::size_t>(row)] = wr;
  if (m_members != nullptr) m_members->AddBefore(row);
  ++m_atRisk;
  m_peak = std::max(m_peak, m_sums.S0());
}

// Leavers lie all over the table. Asked for some rows ahead, they are at hand when their turn comes.
void IntervalRiskSet::FetchAhead() const {
  constexpr int kRowsAhead = 8;
  const int row = m_starts.Upcoming(kRowsAhead);
  if (row == 0) return;
  __builtin_prefetch(&m_wr[static_cast<std::size_t>(row)]);
  m_cases.Prefetch(row);
}

void IntervalRiskSet::RemoveLeavers(int row) {
  const double time = m_cases.GetRow(row)[m_timeColumn];
  bool anyLeft = false;
  while (const int leaver = m_starts.NextLeaver(time)) {
    FetchAhead();
    m_sums.Leave(m_design.Of(m_cases.GetRow(leaver)), WeightedRisk(leaver));
    if (m_members != nullptr) m_members->Remove(leaver);
    --m_atRisk;
    anyLeft = true;
  }
  if (anyLeft) RestoreDigits(row);
}

void IntervalRiskSet::RestoreDigits(int row) {
  if (m_atRisk > 0 && m_sums.S0() >= kLeastShare * m_peak) return;
  Empty();
  if (m_atRisk == 0) return;
  const double time = m_cases.GetRow(row)[m_timeColumn];
  for (int k = m_stratumEnd; k > row; --k) {
    const double* cells = m_cases.GetRow(k);
    if (cells[m_startColumn] < time) m_sums.Join(m_design.Of(cells), WeightedRisk(k));
  }
  m_peak = m_sums.S0();
}

}  // namespace orv
