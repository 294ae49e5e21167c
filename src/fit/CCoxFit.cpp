#include "fit/CCoxFit.h"

#include <cmath>
#include <numeric>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/LDL.h"

namespace orv {

CCoxFit::CCoxFit(CCoxData* data, int likelihood, int inputType)
    : m_pData(data), m_Likelihood(likelihood), m_InputType(inputType) {
  const CoxSettings& settings = Settings();
  m_MaxIterations = settings.MaxIterations;
  m_ConvergenceTolerance = std::pow(10.0, -settings.ConvergenceExponent);
}

CCoxPH& CCoxFit::Owner() const {
  return *m_pData->Owner;
}

const CoxSettings& CCoxFit::Settings() const {
  return Owner().m_Settings;
}

Host& CCoxFit::HostOf() const {
  return Owner().GetHost();
}

const DenseMatrix& CCoxFit::CovarianceInUse() const {
  return Settings().UseRobustVariance ? m_RobustCovariance : m_Covariance;
}

void CCoxFit::ResetResults() {
  m_LogLikHistory.clear();
  m_BetaHistory.clear();
  m_Information.clear();
  m_Covariance.clear();
  for (CoxDesignColumn& column : m_pData->DesignColumns) column.Dropped = false;
}

void CCoxFit::DropResiduals() {
  m_ScoreResiduals.clear();
  m_SchoenfeldResiduals.clear();
  m_ScaledSchoenfeldResiduals.clear();
  m_DfBeta.clear();
  m_StdErrorXBeta.clear();
  m_LikelihoodDisplacement.clear();
  m_Lmax.clear();
}

int CCoxFit::ActiveParameterCount() {
  const CoxSettings& settings = Settings();
  const bool selecting = !settings.FinalFitReady && settings.ModelBuilding >= ModelBuildings::Forward &&
                         settings.ModelBuilding <= ModelBuildings::Stepwise;
  if (selecting) return m_ActiveCount;
  m_ActiveColumns.resize(m_pData->CoefficientCount);
  std::iota(m_ActiveColumns.begin(), m_ActiveColumns.end(), 0);
  return static_cast<int>(m_pData->CoefficientCount);
}

void CCoxFit::InitialBeta(double* beta, int p) const {
  const CoxSettings& settings = Settings();
  const bool allColumns = settings.ModelBuilding <= ModelBuildings::AllEffects;
  for (int j = 0; j < p; ++j) {
    const auto parameter = static_cast<std::size_t>(j);
    const auto entry = allColumns ? parameter : static_cast<std::size_t>(m_ActiveColumns[parameter]);
    beta[j] = settings.UseStartValues ? settings.StartValues[entry] : 0.0;
  }
}

CoxDesignColumn& CCoxFit::ColumnOf(int parameter) {
  const int column = m_ActiveColumns[static_cast<std::size_t>(parameter)];
  return m_pData->DesignColumns[static_cast<std::size_t>(column)];
}

void CCoxFit::ZeroFixedRows(double** a, int p) {
  std::vector<unsigned char> fixed(static_cast<std::size_t>(p), 0);
  for (int j = 0; j < p; ++j) {
    if (!ColumnOf(j).Fixed) continue;
    ColumnOf(j).Dropped = true;
    fixed[static_cast<std::size_t>(j)] = 1;
  }
  ZeroRowsAndColumns(a, p, fixed.data());
}

int CCoxFit::FactorLDL(double** a, int p, double tolerance) {
  ZeroFixedRows(a, p);
  std::vector<unsigned char> dropped(static_cast<std::size_t>(p), 0);
  const int rank = orv::FactorLDL(a, p, tolerance, dropped.data());
  for (int j = 0; j < p; ++j) ColumnOf(j).Dropped = dropped[static_cast<std::size_t>(j)] != 0;
  return rank;
}

void CCoxFit::SolveLDL(double* const* a, int p, double* b) {
  orv::SolveLDL(a, p, b);
}

void CCoxFit::InvertLDL(double** a, int p) {
  orv::InvertLDL(a, p);
}

}  // namespace orv
