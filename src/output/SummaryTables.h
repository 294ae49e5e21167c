// The summary of a fit, and of the cases in each stratum.
#pragma once

namespace orv {

class CCoxFit;

// -2 Log L, information criteria, R2 and the global tests; without coefficients ShowNoCovariateSummary. The numbers of
// complete and censored cases go to the document as the properties "Complete" and "Censored". The stratum table
// follows when the analysis has strata. Needs a fit that evaluated at least one vector; otherwise nothing is shown.
void ShowSummary(CCoxFit& fit);

// The one row of a model without coefficients, and the stratum table.
void ShowNoCovariateSummary(const CCoxFit& fit);

}  // namespace orv
