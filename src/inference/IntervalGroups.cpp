#include "inference/IntervalGroups.h"

#include <algorithm>

#include "data/AlmostEqual.h"
#include "data/CCoxData.h"
#include "inference/IntervalSums.h"

namespace orv {

IntervalGroups::IntervalGroups(const CCoxData& data,
                               const StratumRows& stratum,
                               const std::vector<double>& risks,
                               Ties ties,
                               Moments moments)
    : m_data(data), m_stratum(stratum), m_ties(ties) {
  FindGroups(risks);
  SumRiskSets(risks, moments);
}

void IntervalGroups::FindGroups(const std::vector<double>& risks) {
  for (int row = m_stratum.First; row <= m_stratum.Last;) {
    const double* cells = m_data.CaseTable.GetRow(row);
    if (cells[m_data.StatusColumn] == 0.0) {
      ++row;
      continue;
    }
    IntervalGroup group;
    group.FirstRow = row;
    group.Time = cells[m_data.StopColumn];
    for (; row <= m_stratum.Last; ++row) {
      const double* tied = m_data.CaseTable.GetRow(row);
      const double time = tied[m_data.StopColumn];
      if (m_ties == Ties::Exact ? time != group.Time : !AlmostEqual(time, group.Time)) break;
      group.LastRow = row;
      if (tied[m_data.StatusColumn] != 1.0) continue;
      const double weight = tied[m_data.WeightColumn];
      ++group.d;
      group.W += weight;
      group.E += weight * risks[static_cast<std::size_t>(row) - 1];
    }
    m_groups.push_back(group);
  }
}

void IntervalGroups::SumRiskSets(const std::vector<double>& risks, Moments moments) {
  m_p = moments == Moments::First ? m_data.CoefficientCount : 0;
  m_S1.resize(m_groups.size() * m_p);
  m_T.assign(m_groups.size() * m_p, 0.0);
  IntervalSums sums(m_data, m_stratum, risks, m_p);
  for (std::size_t k = m_groups.size(); k-- > 0;) {
    IntervalGroup& group = m_groups[k];
    sums.WalkTo(group.FirstRow);
    group.S0 = sums.S0();
    std::copy(sums.S1().begin(), sums.S1().end(), m_S1.begin() + static_cast<std::ptrdiff_t>(k * m_p));
    double* const T = m_T.data() + k * m_p;
    for (int event = group.FirstRow; event <= group.LastRow && m_p > 0; ++event) {
      const double* cells = m_data.CaseTable.GetRow(event);
      if (cells[m_data.StatusColumn] != 1.0) continue;
      const double e = cells[m_data.WeightColumn] * risks[static_cast<std::size_t>(event) - 1];
      for (std::size_t j = 0; j < m_p; ++j) T[j] += e * cells[j];
    }
  }
  FindSpans(sums.ByStart());
}

void IntervalGroups::FindSpans(const std::vector<int>& byStart) {
  m_spans.resize(byStart.size());
  const auto spanOf = [this](int row) -> Span& { return m_spans[static_cast<std::size_t>(row - m_stratum.First)]; };
  std::size_t groups = 0;
  for (int row = m_stratum.First; row <= m_stratum.Last; ++row) {
    while (groups < m_groups.size() && m_groups[groups].FirstRow <= row) ++groups;
    spanOf(row).End = groups;
  }
  groups = m_groups.size();
  for (const int row : byStart) {
    const double start = m_data.CaseTable.GetRow(row)[m_data.StartColumn];
    while (groups > 0 && m_groups[groups - 1].Time > start) --groups;
    spanOf(row).Begin = std::min(groups, spanOf(row).End);
  }
}

}  // namespace orv
