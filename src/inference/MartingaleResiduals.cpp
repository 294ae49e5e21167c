#include "inference/MartingaleResiduals.h"

#include <cmath>

#include "core/CoxSettings.h"
#include "data/CCoxData.h"
#include "data/RoundHalfAway.h"
#include "fit/CCoxFit.h"
#include "fit/CompensatedSum.h"
#include "inference/IntervalGroups.h"
#include "inference/RelativeRisks.h"
#include "inference/StratumRows.h"

namespace orv {

namespace {

double SignedRoot(double M, double delta, double logarithm) {
  const double v = -2.0 * (M + delta * logarithm);
  if (!(v > 0.0)) return 0.0;
  return M < 0.0 ? -std::sqrt(v) : std::sqrt(v);
}

// The residuals of one stratum of survival times, forward over its tied groups.
class SurvivalStratum {
 public:
  SurvivalStratum(CCoxFit& fit, const StratumRows& stratum, const std::vector<double>& risks)
      : m_fit(fit),
        m_data(*fit.m_pData),
        m_stratum(stratum),
        m_risks(risks),
        m_isEfron(fit.m_Likelihood == Likelihoods::Efron) {}

  void Run() {
    SumRiskSets();
    for (int row = m_stratum.First; row <= m_stratum.Last;) {
      int last = row;
      while (last < m_stratum.Last && Time(last + 1) == Time(row)) ++last;
      CloseGroup(row, last);
      row = last + 1;
    }
  }

 private:
  const double* Cells(int row) const { return m_data.CaseTable.GetRow(row); }
  double Time(int row) const { return Cells(row)[m_data.SurvivalColumn]; }
  double Status(int row) const { return Cells(row)[m_data.StatusColumn]; }
  double Risk(int row) const { return m_risks[static_cast<std::size_t>(row) - 1]; }
  double& Martingale(int row) { return m_fit.m_MartingaleResiduals[static_cast<std::size_t>(row) - 1]; }
  double& Deviance(int row) { return m_fit.m_DevianceResiduals[static_cast<std::size_t>(row) - 1]; }

  // Each row's place holds the sum over the rows from it on, until its residual is known.
  void SumRiskSets() {
    double S0 = 0.0;
    for (int row = m_stratum.Last; row >= m_stratum.First; --row) {
      S0 += Cells(row)[m_data.WeightColumn] * Risk(row);
      Martingale(row) = S0;
    }
  }

  void CloseGroup(int first, int last) {
    const double S0 = Martingale(first);
    double d = 0.0;
    double W = 0.0;
    double E = 0.0;
    for (int row = first; row <= last; ++row) {
      const double weight = Cells(row)[m_data.WeightColumn];
      d += Status(row);
      W += weight * Status(row);
      E += weight * Risk(row) * Status(row);
    }
    double hazardOfEvents = 0.0;
    const bool shares = d >= 2.0 && m_isEfron;
    if (shares) {
      hazardOfEvents = m_H;
      const double q = 1.0 / d;
      const int events = RoundToInteger(d);
      for (int k = 0; k < events; ++k) {
        const double f = k * q;
        const double step = W * q / (S0 - f * E);
        m_H += step;
        hazardOfEvents += (1.0 - f) * step;
      }
    } else {
      m_H += W / S0;
      hazardOfEvents = m_H;
    }
    for (int row = first; row <= last; ++row) {
      const double delta = Status(row);
      const double M = delta - (delta != 0.0 ? hazardOfEvents : m_H) * Risk(row);
      Martingale(row) = M;
      const double rest = delta - M;
      // Under Efron's rule the logarithm is taken as it comes, and what it spoils leaves the residual at 0.
      if (rest > 0.0) Deviance(row) = SignedRoot(M, delta, std::log(rest));
    }
  }

  CCoxFit& m_fit;
  const CCoxData& m_data;
  const StratumRows m_stratum;
  const std::vector<double>& m_risks;
  const bool m_isEfron;
  double m_H = 0.0;
};

}  // namespace

void ComputeSurvivalMartingaleResiduals(CCoxFit& fit) {
  const std::size_t n = fit.m_pData->ValidCaseCount;
  fit.m_MartingaleResiduals.assign(n, 0.0);
  fit.m_DevianceResiduals.assign(n, 0.0);
  const std::vector<double> risks = RelativeRisks(fit, fit.m_BetaHistory.back().data());
  for (const StratumRows& stratum : StrataOf(*fit.m_pData)) SurvivalStratum(fit, stratum, risks).Run();
}

void ComputeCountingMartingaleResiduals(CCoxFit& fit) {
  const CCoxData& data = *fit.m_pData;
  const std::vector<double> risks = RelativeRisks(fit, fit.m_BetaHistory.back().data());
  const bool isEfron = fit.m_Likelihood == Likelihoods::Efron;
  std::vector<double>& M = fit.m_MartingaleResiduals;
  M.resize(data.ValidCaseCount);
  for (const StratumRows& stratum : StrataOf(data)) {
    const IntervalGroups groups(data, stratum, risks, IntervalGroups::Ties::Exact);
    // The hazard after each group, and before the first.
    std::vector<CompensatedSum> hazard(1);
    std::vector<double> ofEvents;
    for (const IntervalGroup& group : groups.Groups()) {
      double all = 0.0;
      double shared = 0.0;
      const double m = group.W / group.d;
      for (int k = 0; k < group.d; ++k) {
        const double f = isEfron ? static_cast<double>(k) / group.d : 0.0;
        const double step = m / (group.S0 - f * group.E);
        all += step;
        shared += (1.0 - f) * step;
      }
      hazard.push_back(hazard.back());
      hazard.back().Add(all);
      ofEvents.push_back(shared - all);
    }
    for (int row = stratum.First; row <= stratum.Last; ++row) {
      const double* cells = data.CaseTable.GetRow(row);
      const double delta = cells[data.StatusColumn];
      const IntervalGroups::Span& span = groups.SpanOf(row);
      double steps = hazard[span.End].Since(hazard[span.Begin]);
      if (delta == 1.0) steps += ofEvents[span.End - 1];
      M[static_cast<std::size_t>(row) - 1] = delta - risks[static_cast<std::size_t>(row) - 1] * steps;
    }
  }
}

}  // namespace orv
