#include "select/SweptInformation.h"

#include <algorithm>
#include <cstddef>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/NumericalFailure.h"
#include "inference/SweepPacked.h"
#include "inference/UnitDiagonal.h"

namespace orv {

namespace {

std::size_t Place(int row, int column) {
  const auto i = static_cast<std::size_t>(std::max(row, column));
  return i * (i + 1) / 2 + static_cast<std::size_t>(std::min(row, column));
}

}  // namespace

SweptInformation::SweptInformation(const CCoxFit& fit, const std::vector<int>& order)
    : m_count(static_cast<int>(fit.m_pData->CoefficientCount)) {
  const auto p = static_cast<std::size_t>(m_count);
  // An evaluation for which memory is out leaves nothing behind.
  if (fit.m_ScoreVector.size() != p || fit.m_PackedInformation.size() != p * (p + 1) / 2) throw NumericalFailure();
  const auto columnAt = [&order](int place) { return order.empty() ? place : order[static_cast<std::size_t>(place)]; };
  std::vector<double> units;
  for (int place = 0; place < m_count; ++place) {
    const int column = columnAt(place);
    units.push_back(UnitOf(fit.m_PackedInformation[Place(column, column)]));
    m_score.push_back(fit.m_ScoreVector[static_cast<std::size_t>(column)] * units.back());
  }
  m_packed.reserve(fit.m_PackedInformation.size());
  for (int row = 0; row < m_count; ++row) {
    for (int column = 0; column <= row; ++column) {
      const double unit = units[static_cast<std::size_t>(row)] * units[static_cast<std::size_t>(column)];
      m_packed.push_back(fit.m_PackedInformation[Place(columnAt(row), columnAt(column))] * unit);
    }
  }
  m_swept.assign(p, false);
}

bool SweptInformation::SweepIn(int column) {
  int singular = 0;
  SweepPacked(m_packed.data(), column + 1, m_count, m_swept, singular);
  if (singular != 0) return false;
  m_sweptColumns.insert(std::lower_bound(m_sweptColumns.begin(), m_sweptColumns.end(), column), column);
  return true;
}

void SweptInformation::SweepOut(int column) {
  int singular = 0;
  SweepPacked(m_packed.data(), column + 1, m_count, m_swept, singular);
  m_sweptColumns.erase(std::lower_bound(m_sweptColumns.begin(), m_sweptColumns.end(), column));
}

void SweptInformation::SweepIn(EffectColumns columns) {
  for (int column = columns.First; column <= columns.Last; ++column) {
    if (!IsSwept(column)) SweepIn(column);
  }
}

double SweptInformation::ChiSquare() const {
  return CCoxFit::ScoreQuadraticForm(m_score.data(), m_packed.data(), m_swept, m_count);
}

// With the columns in, what one of them adds is its own estimate of one step, squared, over its variance.
double SweptInformation::LossWithout(int column) const {
  if (!IsSwept(column)) return 0.0;
  double step = 0.0;
  for (const int i : m_sweptColumns) step += m_packed[Place(i, column)] * m_score[static_cast<std::size_t>(i)];
  return step * step / m_packed[Place(column, column)];
}

// What is left of a column's score when the swept columns have explained theirs: u_j - sum of u_i b_ij, with b_ij the
// coefficient of column j on the swept column i. The packed triangle holds it below a swept diagonal and its negative
// to the left of one.
double SweptInformation::ScoreBeyond(int column) const {
  double rest = m_score[static_cast<std::size_t>(column)];
  for (const int i : m_sweptColumns) {
    const double stored = m_packed[Place(i, column)];
    rest -= m_score[static_cast<std::size_t>(i)] * (i < column ? stored : -stored);
  }
  return rest;
}

double SweptInformation::ChiSquareWith(EffectColumns columns, int& df) const {
  std::vector<double> score;
  std::vector<double> packed;
  for (int column = columns.First; column <= columns.Last; ++column) {
    score.push_back(ScoreBeyond(column));
    for (int other = columns.First; other <= column; ++other) packed.push_back(m_packed[Place(column, other)]);
  }
  std::vector<bool> swept(score.size(), false);
  df = 0;
  for (int pivot = 1; pivot <= columns.Count(); ++pivot) {
    int singular = 0;
    SweepPacked(packed.data(), pivot, columns.Count(), swept, singular);
    if (singular == 0) ++df;
  }
  return ChiSquare() + CCoxFit::ScoreQuadraticForm(score.data(), packed.data(), swept, columns.Count());
}

}  // namespace orv
