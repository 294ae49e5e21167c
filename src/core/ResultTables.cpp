// The result tables as operations of the analysis.
#include "core/CCoxPH.h"
#include "fit/CCoxFit.h"
#include "output/DesignTables.h"
#include "output/EstimateTable.h"
#include "output/FitTables.h"
#include "output/SummaryTables.h"
#include "output/Type3Table.h"

namespace orv {

void CCoxPH::CreateSummarySpreadsheet() {
  ShowSummary(*m_pCoxFit);
}

void CCoxPH::CreateNoCovariateSummarySpreadsheet() {
  ShowNoCovariateSummary(*m_pCoxFit);
}

void CCoxPH::CreateParameterEstimateSpreadsheet(double confidenceLevel) {
  ShowParameterEstimates(*m_pCoxFit, confidenceLevel);
}

void CCoxPH::CreateType3Spreadsheet(double confidenceLevel) {
  ShowType3Tests(*m_pCoxFit, confidenceLevel);
}

void CCoxPH::CreateIterationHistorySpreadsheet() {
  ShowIterationHistory(*m_pCoxFit);
}

void CCoxPH::CreateDesignTermsSpreadsheet() {
  ShowDesignTerms(*m_pCoxData);
}

void CCoxPH::CreateCovarianceSpreadsheet() {
  ShowCovariance(*m_pCoxFit);
}

void CCoxPH::CreateCorrelationSpreadsheet() {
  ShowCorrelation(*m_pCoxFit);
}

}  // namespace orv
