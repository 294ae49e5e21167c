#include "ui/CCoxPHResults.h"

#include "data/CCoxData.h"
#include "output/SelectionTables.h"

namespace orv {

CCoxPHResults::CCoxPHResults(CCoxPH& analysis) : m_analysis(analysis) {
  const bool hasColumns = Data().CoefficientCount > 0;
  Residuals.ComputeMartingale = hasColumns;
  Residuals.ComputeDeviance = hasColumns;
  Residuals.ComputeCoxSnell = hasColumns;
  Residuals = AvailableResiduals(Residuals);
}

ResidualChoices CCoxPHResults::AvailableResiduals(ResidualChoices choices) const {
  if (Settings().InputType == InputTypes::TimeDependent) return {};
  if (Settings().InputType == InputTypes::CountingProcess) {
    choices.ComputeDeviance = false;
    choices.ComputeLikelihoodDisplacement = false;
    choices.ComputeLMAX = false;
  }
  if (!m_analysis.m_pCoxFit->m_BreslowValid) {
    choices.ComputeMartingale = false;
    choices.ComputeDeviance = false;
  }
  return choices;
}

void CCoxPHResults::ModelBuildingSummary() {
  ShowModelBuildingSummary(Fit());
}

int CCoxPHResults::ReadConfidenceLevel(double level) {
  if (level > 0.0 && level < 1.0) {
    ConfidenceLevel = level;
    return 0;
  }
  constexpr double kDefaultLevel = 0.95;
  m_analysis.dsplst(0, "Confidence level is not in the interval (0,1).  The confidence level is reset to 0.95.");
  ConfidenceLevel = kDefaultLevel;
  return 1;
}

}  // namespace orv
