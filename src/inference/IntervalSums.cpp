#include "inference/IntervalSums.h"

#include <algorithm>
#include <utility>

#include "data/CCoxData.h"

namespace orv {

namespace {

// Below this share of the largest sum the moments have lost three digits to what left them.
constexpr double kLeastShare = 1e-3;

}  // namespace

IntervalSums::IntervalSums(const CCoxData& data,
                           const StratumRows& stratum,
                           const std::vector<double>& risks,
                           std::size_t p)
    : m_data(data), m_stratum(stratum), m_risks(risks), m_next(stratum.Last), m_S1(p, 0.0) {
  // Starts beside their rows: a comparison that went to the table would miss the cache.
  std::vector<std::pair<double, int>> order;
  for (int row = stratum.First; row <= stratum.Last; ++row) order.emplace_back(Start(row), row);
  std::sort(order.begin(), order.end(), std::greater<>());
  for (const auto& [start, row] : order) m_byStart.push_back(row);
}

double IntervalSums::Start(int row) const {
  return m_data.CaseTable.GetRow(row)[m_data.StartColumn];
}

double IntervalSums::Stop(int row) const {
  return m_data.CaseTable.GetRow(row)[m_data.StopColumn];
}

void IntervalSums::Add(int row, double sign) {
  const double* cells = m_data.CaseTable.GetRow(row);
  const double e = sign * cells[m_data.WeightColumn] * m_risks[static_cast<std::size_t>(row) - 1];
  m_S0.Add(e);
  for (std::size_t j = 0; j < m_S1.size(); ++j) m_S1[j] += e * cells[j];
}

void IntervalSums::WalkTo(int row) {
  for (; m_next >= row; --m_next) {
    RemoveLeavers(Stop(m_next));
    Add(m_next, 1.0);
    ++m_atRisk;
    m_peak = std::max(m_peak, S0());
  }
}

// Leavers lie all over the table. Asked for some rows ahead, they are at hand when their turn comes.
void IntervalSums::FetchAhead() const {
  constexpr std::size_t kRowsAhead = 8;
  if (m_left + kRowsAhead >= m_byStart.size()) return;
  const int row = m_byStart[m_left + kRowsAhead];
  __builtin_prefetch(&m_risks[static_cast<std::size_t>(row) - 1]);
  m_data.CaseTable.Prefetch(row);
}

void IntervalSums::RemoveLeavers(double time) {
  const std::size_t before = m_left;
  for (; m_left < m_byStart.size() && Start(m_byStart[m_left]) >= time; ++m_left) {
    FetchAhead();
    Add(m_byStart[m_left], -1.0);
    --m_atRisk;
  }
  if (m_left > before && (m_atRisk == 0 || S0() < kLeastShare * m_peak)) RestoreDigits(time);
}

void IntervalSums::RestoreDigits(double time) {
  m_S0 = {};
  std::fill(m_S1.begin(), m_S1.end(), 0.0);
  for (int row = m_stratum.Last; row > m_next; --row) {
    if (Start(row) < time) Add(row, 1.0);
  }
  m_peak = S0();
}

}  // namespace orv
