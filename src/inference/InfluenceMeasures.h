// What single cases do to the estimates: changes of the parameters, displacement of the likelihood, and the error of
// the linear predictor.
#pragma once

namespace orv {

class CCoxFit;

// All are by sorted row, from 0, and are computed only when absent. Score residuals are computed when they are absent,
// by the kernel of the input type. Without a covariance, as after a cancelled fit, nothing is filled.

// m_LikelihoodDisplacement: U_i' V U_i. Needs m_DfBeta or computes it. Source: Pettitt and Bin Daud (1989).
void ComputeLikelihoodDisplacement(CCoxFit& fit);

// m_StdErrorXBeta: sqrt(x_i' V x_i), 0 when that is negative or not a number.
void ComputeStdErrorXBeta(CCoxFit& fit);

// m_Lmax: the direction of the largest local influence, |u_i| / sqrt(w_i) with u the first left singular vector of the
// rows sqrt(w_i) U_i' F, where V = F F' over the columns that took part in the fit. By stratum when there are some;
// each stratum has a scale of its own. False, with m_Lmax empty, when there is no such column, memory is out, or a
// decomposition fails. Source: Cook, JRSS B 48 (1986) 133-169; Pettitt and Bin Daud (1989).
bool ComputeLmax(CCoxFit& fit);

}  // namespace orv
