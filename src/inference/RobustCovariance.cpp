// The sandwich estimate of the covariance, and the global tests that go with it.
#include <algorithm>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "data/RoundHalfAway.h"
#include "fit/CCoxFit.h"
#include "fit/PseudoInverse.h"
#include "host/WorkArray.h"
#include "inference/ScoreResiduals.h"

namespace orv {

namespace {

DenseMatrix SquareMatrix(std::size_t order) {
  return DenseMatrix(order, std::vector<double>(order, 0.0));
}

// Residuals summed over the subjects, in the order of their numbers; the residuals themselves without subjects.
DenseMatrix SumOverSubjects(const CCoxData& data, const DenseMatrix& residuals) {
  if (data.Owner->m_Settings.SubjectVariable == 0) return residuals;
  DenseMatrix sums(residuals.size(), std::vector<double>(static_cast<std::size_t>(data.NextSubjectId), 0.0));
  for (std::size_t i = 0; i < data.ValidCaseCount; ++i) {
    const double* cells = data.CaseTable.GetRow(static_cast<int>(i) + 1);
    const auto subject = static_cast<std::size_t>(RoundToInteger(cells[data.SubjectColumn]));
    for (std::size_t j = 0; j < residuals.size(); ++j) sums[j][subject] += residuals[j][i];
  }
  return sums;
}

// R R', summed over the cases or subjects.
DenseMatrix Square(const DenseMatrix& R) {
  DenseMatrix product = SquareMatrix(R.size());
  for (std::size_t j = 0; j < R.size(); ++j) {
    for (std::size_t l = 0; l <= j; ++l) {
      double sum = 0.0;
      for (std::size_t i = 0; i < R[j].size(); ++i) sum += R[j][i] * R[l][i];
      product[j][l] = product[l][j] = sum;
    }
  }
  return product;
}

// C A C for symmetric matrices.
DenseMatrix Sandwich(const DenseMatrix& C, const DenseMatrix& A) {
  const std::size_t p = C.size();
  DenseMatrix left = SquareMatrix(p);
  DenseMatrix product = SquareMatrix(p);
  for (std::size_t i = 0; i < p; ++i) {
    for (std::size_t k = 0; k < p; ++k) {
      for (std::size_t j = 0; j < p; ++j) left[i][j] += C[i][k] * A[k][j];
    }
  }
  for (std::size_t i = 0; i < p; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      double sum = 0.0;
      for (std::size_t k = 0; k < p; ++k) sum += left[i][k] * C[k][j];
      product[i][j] = product[j][i] = sum;
    }
  }
  return product;
}

// x' M^+ x; 0 when memory is out.
double InverseQuadraticForm(Host& host, const DenseMatrix& M, const std::vector<double>& x) {
  const std::size_t p = x.size();
  if (p == 0 || M.size() != p) return 0.0;
  WorkArray<double> matrix(host, p * p);
  WorkArray<double> inverse(host, p * p);
  if (matrix.Failed() || inverse.Failed()) return 0.0;
  for (std::size_t i = 0; i < p; ++i) {
    for (std::size_t j = 0; j < p; ++j) matrix[j * p + i] = M[i][j];
  }
  int status = 0;
  PseudoInverse(host, matrix.Data(), inverse.Data(), static_cast<int>(p), static_cast<int>(p), status);
  double sum = 0.0;
  for (std::size_t i = 0; i < p; ++i) {
    for (std::size_t j = 0; j < p; ++j) sum += x[i] * inverse[j * p + i] * x[j];
  }
  return sum;
}

}  // namespace

void CCoxFit::ComputeDfBeta() {
  const std::size_t p = m_pData->CoefficientCount;
  if (!m_DfBeta.empty() || m_Covariance.size() != p) return;
  ComputeScoreResiduals(*this);
  if (m_ScoreResiduals.size() != p) return;
  m_DfBeta.assign(p, std::vector<double>(m_pData->ValidCaseCount, 0.0));
  for (std::size_t i = 0; i < p; ++i) {
    for (std::size_t k = 0; k < p; ++k) {
      const double v = m_Covariance[i][k];
      if (v == 0.0) continue;
      for (std::size_t c = 0; c < m_DfBeta[i].size(); ++c) m_DfBeta[i][c] += v * m_ScoreResiduals[k][c];
    }
  }
}

void CCoxFit::ComputeRobustCovariance() {
  m_RobustCovariance.clear();
  if (m_Covariance.size() != m_pData->CoefficientCount || m_BetaHistory.empty()) return;
  const WeightRecord* weights = Owner().m_Commons.Weights;
  const bool isWeighted = weights != nullptr && weights->On;
  ComputeScoreResiduals(*this);
  if (Settings().SubjectVariable == 0 && !isWeighted) {
    ComputeDfBeta();
    m_RobustCovariance = Square(m_DfBeta);
    return;
  }
  // Weights without subjects: each case is a subject of its own.
  m_RobustCovariance = Sandwich(m_Covariance, Square(SumOverSubjects(*m_pData, m_ScoreResiduals)));
}

double CCoxFit::RobustWaldStatistic() const {
  if (m_BetaHistory.empty()) return 0.0;
  return InverseQuadraticForm(HostOf(), m_RobustCovariance, m_BetaHistory.back());
}

double CCoxFit::RobustScoreStatistic() {
  if (m_NullScoreResiduals.empty()) {
    m_NullScoreResiduals = m_InputType == InputTypes::CountingProcess ? CountingScoreResiduals(*this, nullptr)
                                                                      : SurvivalScoreResiduals(*this, nullptr);
  }
  const DenseMatrix residuals = SumOverSubjects(*m_pData, m_NullScoreResiduals);
  std::vector<double> u;
  for (const std::vector<double>& ofParameter : residuals) {
    double sum = 0.0;
    for (const double residual : ofParameter) sum += residual;
    u.push_back(sum);
  }
  return InverseQuadraticForm(HostOf(), Square(residuals), u);
}

}  // namespace orv
