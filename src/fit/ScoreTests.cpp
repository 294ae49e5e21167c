// Score tests of model building and the matrices that stand in for a cross-product: evaluations at a given vector.
#include <algorithm>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"

namespace orv {

namespace {

std::size_t PackedIndex(std::size_t row, std::size_t column) {
  return row * (row + 1) / 2 + column;
}

}  // namespace

void CCoxFit::EvaluateScoreAt(double* beta) {
  if (m_InputType == InputTypes::TimeDependent) return;
  const std::size_t p = m_pData->CoefficientCount;
  const auto isFixed = [this](std::size_t j) { return m_pData->DesignColumns[j].Fixed; };
  if (Settings().HasFixedParameters) {
    for (std::size_t j = 0; j < p; ++j) {
      if (isFixed(j)) beta[j] = Settings().StartValues[j];
    }
  }
  // Emptied, so that an evaluation for which memory is out is seen.
  m_PackedInformation.clear();
  RunEvaluator(beta);
  if (m_PackedInformation.empty()) return;
  for (std::size_t row = 0; row < p; ++row) {
    for (std::size_t column = 0; column <= row; ++column) {
      if (isFixed(row) || isFixed(column)) m_PackedInformation[PackedIndex(row, column)] = 0.0;
    }
  }
}

void CCoxFit::EvaluateScoreAtStart() {
  std::vector<double> beta(m_pData->CoefficientCount, 0.0);
  EvaluateScoreAt(beta.data());
}

double CCoxFit::ScoreQuadraticForm(const double* score, const double* packed, const std::vector<bool>& inModel, int p) {
  std::vector<std::size_t> members;
  for (std::size_t column = 0; column < static_cast<std::size_t>(p); ++column) {
    if (inModel[column]) members.push_back(column);
  }
  double sum = 0.0;
  for (std::size_t i = 0; i < members.size(); ++i) {
    const std::size_t row = members[i];
    for (std::size_t j = 0; j < i; ++j) {
      sum += 2.0 * score[row] * packed[PackedIndex(row, members[j])] * score[members[j]];
    }
    sum += score[row] * packed[PackedIndex(row, row)] * score[row];
  }
  return sum;
}

}  // namespace orv
