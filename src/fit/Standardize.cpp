// The standardised scale of a fit, and the way back from it.
#include <cmath>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/NumericalFailure.h"

namespace orv {

// Time-dependent covariates change with time, so their fits run on raw values and both changes do nothing for them.

void CCoxFit::Standardize() {
  if (m_InputType == InputTypes::TimeDependent) return;
  m_scales.clear();
  for (const int column : m_ActiveColumns) {
    const auto c = static_cast<std::size_t>(column);
    m_scales.push_back({c, m_pData->DesignColumns[c].Mean, m_pData->DesignColumns[c].StdDev});
  }
  for (const ColumnScale& scale : m_scales) {
    if (!std::isfinite(scale.Mean) || !std::isfinite(scale.StdDev)) throw NumericalFailure();
  }
  CoxSettings& settings = Owner().m_Settings;
  // Before the table changes: memory may be out.
  if (settings.HasFixedParameters) m_RawStartValues = settings.StartValues;
  for (int row = 1; row <= static_cast<int>(m_pData->ValidCaseCount); ++row) {
    double* cells = m_pData->CaseTable.GetRow(row, CaseTable::Access::Write);
    for (const ColumnScale& scale : m_scales) {
      double& x = cells[scale.Column];
      x -= scale.Mean;
      if (scale.StdDev > 0.0) x /= scale.StdDev;
    }
  }
  // Only with fixed parameters: start values are otherwise taken as parameters of the standardised scale. Kept, since
  // saved start values depend on it.
  if (!settings.HasFixedParameters) return;
  for (const ColumnScale& scale : m_scales) {
    const bool hasValue = scale.Column < settings.StartValues.size();
    if (hasValue && scale.StdDev > 0.0) settings.StartValues[scale.Column] *= scale.StdDev;
  }
}

void CCoxFit::RestoreStartValues() {
  if (m_RawStartValues.empty()) return;
  // Multiplied and divided by the deviation a value might lose its last digit, so the saved one comes back.
  Owner().m_Settings.StartValues.swap(m_RawStartValues);
  m_RawStartValues.clear();
}

void CCoxFit::Unstandardize() {
  if (m_InputType == InputTypes::TimeDependent) return;
  // Nothing is allocated on the way back: it is taken when memory is out, too.
  for (int row = 1; row <= static_cast<int>(m_pData->ValidCaseCount); ++row) {
    double* cells = m_pData->CaseTable.GetRow(row, CaseTable::Access::Write);
    // No test of the deviation: a constant column comes back as its mean.
    for (const ColumnScale& scale : m_scales) cells[scale.Column] = cells[scale.Column] * scale.StdDev + scale.Mean;
  }
  const std::size_t p = m_scales.size();
  for (std::vector<double>& beta : m_BetaHistory) {
    for (std::size_t j = 0; j < p; ++j) {
      if (m_scales[j].StdDev > 0.0) beta[j] /= m_scales[j].StdDev;
    }
  }
  const bool hasMatrices = !m_Information.empty() && !m_Covariance.empty();
  for (std::size_t j = 0; hasMatrices && j < p; ++j) {
    const double sj = m_scales[j].StdDev;
    for (std::size_t k = j; k < p; ++k) {
      const double sk = m_scales[k].StdDev;
      m_Information[k][j] = m_Information[j][k] = sj * m_Information[j][k] * sk;
      if (sj > 0.0 && sk > 0.0) m_Covariance[j][k] /= sj * sk;
      m_Covariance[k][j] = m_Covariance[j][k];
    }
  }
  RestoreStartValues();
}

}  // namespace orv
