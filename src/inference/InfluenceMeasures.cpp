#include "inference/InfluenceMeasures.h"

#include <algorithm>
#include <cmath>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/PackedCholesky.h"
#include "fit/PassKernels.h"
#include "fit/SingularValueDecomposition.h"
#include "host/WorkArray.h"
#include "inference/ScoreResiduals.h"
#include "inference/StratumRows.h"

namespace orv {

namespace {

std::vector<std::size_t> KeptColumns(const CCoxData& data) {
  std::vector<std::size_t> kept;
  for (std::size_t c = 0; c < data.CoefficientCount; ++c) {
    if (!data.DesignColumns[c].Dropped) kept.push_back(c);
  }
  return kept;
}

// The lower Cholesky factor of the covariance on the kept columns, packed by rows; empty when there is none.
std::vector<double> FactorOfCovariance(const DenseMatrix& covariance, const std::vector<std::size_t>& kept) {
  std::vector<double> factor;
  for (std::size_t row = 0; row < kept.size(); ++row) {
    for (std::size_t column = 0; column <= row; ++column) factor.push_back(covariance[kept[row]][kept[column]]);
  }
  int nullity = 0;
  if (PackedCholesky(factor.data(), static_cast<int>(kept.size()), nullity) != 0) factor.clear();
  return factor;
}

// Lmax of one stratum.
class InfluenceDirection {
 public:
  InfluenceDirection(CCoxFit& fit, const std::vector<std::size_t>& kept, const std::vector<double>& factor)
      : m_fit(fit), m_data(*fit.m_pData), m_kept(kept), m_factor(factor) {}

  bool Run(const StratumRows& stratum) {
    const std::size_t r = m_kept.size();
    // The decomposition sees at least r rows; those beyond the cases are zero.
    const std::size_t rows = std::max(static_cast<std::size_t>(stratum.Count()), r);
    Host& host = m_fit.Owner().GetHost();
    WorkArray<double> B(host, rows * r);
    WorkArray<double> values(host, r);
    WorkArray<double> V(host, r * r);
    if (B.Failed() || values.Failed() || V.Failed()) return false;
    FillScaledScores(stratum, rows, B.Data());
    int status = 0;
    SingularValueDecomposition(host, B.Data(), static_cast<int>(rows), static_cast<int>(r), values.Data(), V.Data(),
                               status);
    if (status != kDecompositionOk) return false;
    for (int row = stratum.First; row <= stratum.Last; ++row) {
      const double u = B[static_cast<std::size_t>(row - stratum.First)];
      m_fit.m_Lmax[static_cast<std::size_t>(row) - 1] = std::abs(u) / RootWeight(row);
    }
    return true;
  }

 private:
  double RootWeight(int row) const { return std::sqrt(m_data.CaseTable.GetRow(row)[m_data.WeightColumn]); }

  // B = A' F by columns, with A' the rows sqrt(w) U over the kept columns.
  void FillScaledScores(const StratumRows& stratum, std::size_t rows, double* B) const {
    for (int row = stratum.First; row <= stratum.Last; ++row) {
      const auto at = static_cast<std::size_t>(row) - 1;
      const double root = RootWeight(row);
      const double* factorRow = m_factor.data();
      for (std::size_t m = 0; m < m_kept.size(); ++m) {
        const double score = root * m_fit.m_ScoreResiduals[m_kept[m]][at];
        for (std::size_t c = 0; c <= m; ++c) {
          B[c * rows + static_cast<std::size_t>(row - stratum.First)] += score * factorRow[c];
        }
        factorRow += m + 1;
      }
    }
  }

  CCoxFit& m_fit;
  const CCoxData& m_data;
  const std::vector<std::size_t>& m_kept;
  const std::vector<double>& m_factor;
};

}  // namespace

void ComputeLikelihoodDisplacement(CCoxFit& fit) {
  if (!fit.m_LikelihoodDisplacement.empty()) return;
  fit.ComputeDfBeta();
  if (fit.m_DfBeta.empty()) return;
  std::vector<double>& displacement = fit.m_LikelihoodDisplacement;
  displacement.assign(fit.m_pData->ValidCaseCount, 0.0);
  for (std::size_t k = 0; k < fit.m_DfBeta.size(); ++k) {
    for (std::size_t i = 0; i < displacement.size(); ++i) {
      displacement[i] += fit.m_DfBeta[k][i] * fit.m_ScoreResiduals[k][i];
    }
  }
}

void ComputeStdErrorXBeta(CCoxFit& fit) {
  const CCoxData& data = *fit.m_pData;
  const std::size_t p = data.CoefficientCount;
  if (!fit.m_StdErrorXBeta.empty() || fit.m_Covariance.size() != p) return;
  fit.m_StdErrorXBeta.reserve(data.ValidCaseCount);
  for (int row = 1; row <= static_cast<int>(data.ValidCaseCount); ++row) {
    const double* x = data.CaseTable.GetRow(row);
    double variance = 0.0;
    for (std::size_t k = 0; k < p; ++k) {
      variance += x[k] * LinearPredictor(x, fit.m_Covariance[k].data(), static_cast<int>(p));
    }
    fit.m_StdErrorXBeta.push_back(variance > 0.0 ? std::sqrt(variance) : 0.0);
  }
}

bool ComputeLmax(CCoxFit& fit) {
  if (!fit.m_Lmax.empty()) return true;
  const CCoxData& data = *fit.m_pData;
  const std::vector<std::size_t> kept = KeptColumns(data);
  if (kept.empty() || fit.m_Covariance.size() != data.CoefficientCount) return false;
  ComputeScoreResiduals(fit);
  const std::vector<double> factor = FactorOfCovariance(fit.m_Covariance, kept);
  if (factor.empty() || fit.m_ScoreResiduals.empty()) return false;
  fit.m_Lmax.assign(data.ValidCaseCount, 0.0);
  InfluenceDirection direction(fit, kept, factor);
  for (const StratumRows& stratum : StrataOf(data)) {
    if (direction.Run(stratum)) continue;
    fit.m_Lmax.clear();
    return false;
  }
  return true;
}

}  // namespace orv
