// The sandwich estimate of the covariance, and the global tests that go with it.
#include <algorithm>
#include <new>
#include <utility>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "data/RoundHalfAway.h"
#include "fit/CCoxFit.h"
#include "fit/PaddedRows.h"
#include "fit/PassKernels.h"
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

// R R', summed over the cases or subjects: blocks of them as rows, so that each element is fetched once. Empty when
// memory is out.
DenseMatrix Square(Host& host, const DenseMatrix& R) {
  constexpr std::size_t kRows = 64;
  const std::size_t p = R.size();
  const int order = static_cast<int>(p);
  PaddedRows block(host, static_cast<int>(kRows), order);
  PaddedRows sums(host, order, order);
  if (block.Failed() || sums.Failed()) return {};
  const std::size_t count = p > 0 ? R[0].size() : 0;
  for (std::size_t first = 0; first < count; first += kRows) {
    const std::size_t rows = std::min(kRows, count - first);
    for (std::size_t j = 0; j < p; ++j) {
      for (std::size_t i = 0; i < rows; ++i) block.Row(static_cast<int>(i))[j] = R[j][first + i];
    }
    KernelsOfThisMachine().AddProducts(sums.Row(0), block.Row(0), block.Row(0), static_cast<int>(rows), order, {}, {});
  }
  DenseMatrix product = SquareMatrix(p);
  for (std::size_t j = 0; j < p; ++j) {
    for (std::size_t l = 0; l <= j; ++l) product[j][l] = product[l][j] = sums.Row(static_cast<int>(j))[l];
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
  // By runs of cases whose residuals stay in the cache while every parameter takes them.
  constexpr std::size_t kCases = 256;
  const std::size_t n = m_pData->ValidCaseCount;
  for (std::size_t first = 0; first < n; first += kCases) {
    const std::size_t last = std::min(first + kCases, n);
    for (std::size_t i = 0; i < p; ++i) {
      for (std::size_t k = 0; k < p; ++k) {
        const double v = m_Covariance[i][k];
        if (v == 0.0) continue;
        for (std::size_t c = first; c < last; ++c) m_DfBeta[i][c] += v * m_ScoreResiduals[k][c];
      }
    }
  }
}

void CCoxFit::ComputeRobustCovariance() {
  m_RobustCovariance.clear();
  if (m_Covariance.size() != m_pData->CoefficientCount || m_BetaHistory.empty()) return;
  const WeightRecord* weights = Owner().m_Commons.Weights;
  const bool isWeighted = weights != nullptr && weights->On;
  ComputeScoreResiduals(*this);
  // Weights without subjects: each case is a subject of its own.
  const bool takesCases = Settings().SubjectVariable == 0 && !isWeighted;
  DenseMatrix sums;
  if (takesCases) {
    ComputeDfBeta();
  } else {
    sums = SumOverSubjects(*m_pData, m_ScoreResiduals);
  }
  DenseMatrix square = Square(HostOf(), takesCases ? m_DfBeta : sums);
  if (square.size() != m_Covariance.size()) throw std::bad_alloc();
  m_RobustCovariance = takesCases ? std::move(square) : Sandwich(m_Covariance, square);
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
  return InverseQuadraticForm(HostOf(), Square(HostOf(), residuals), u);
}

}  // namespace orv
