#include "inference/BreslowBaseline.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "core/CoxSettings.h"
#include "data/AlmostEqual.h"
#include "data/CCoxData.h"
#include "data/RoundHalfAway.h"
#include "fit/CCoxFit.h"
#include "fit/CompensatedSum.h"
#include "inference/IntervalSums.h"
#include "inference/StratumRows.h"

namespace orv {

namespace {

// What a walk leaves with the fit.
enum class Kept { Baseline, Moments };

// Walks one stratum from its last row to its first, with the sums over the rows at risk.
class StratumWalk {
 public:
  StratumWalk(CCoxFit& fit, const StratumRows& stratum, TiedEvents& ties, Kept kept)
      : m_fit(fit),
        m_kept(kept),
        m_data(*fit.m_pData),
        m_stratum(stratum),
        m_ties(ties),
        m_isCounting(fit.m_InputType == InputTypes::CountingProcess),
        m_S1(m_data.CoefficientCount, 0.0) {}

  // `risks`: exp of the linear predictor by sorted row.
  void Run(const std::vector<double>& risks) {
    std::optional<IntervalSums> intervals;
    if (m_isCounting) intervals.emplace(m_data, m_stratum, risks, m_S1.size());
    for (int row = m_stratum.Last; row >= m_stratum.First; --row) {
      if (!intervals) Add(row, risks[static_cast<std::size_t>(row) - 1]);
      CountEvent(row);
      if (row > m_stratum.First && AlmostEqual(Time(row), Time(row - 1))) continue;
      if (intervals) intervals->WalkTo(row);
      CloseRun(row, intervals ? intervals->S0() : m_S0.Value(), intervals ? intervals->S1() : m_S1);
    }
    Store();
  }

 private:
  const double* Cells(int row) const { return m_data.CaseTable.GetRow(row); }
  double Time(int row) const { return Cells(row)[m_isCounting ? m_data.StopColumn : m_data.SurvivalColumn]; }

  void Add(int row, double risk) {
    const double* cells = Cells(row);
    const double e = cells[m_data.WeightColumn] * risk;
    m_S0.Add(e);
    for (std::size_t j = 0; j < m_S1.size(); ++j) m_S1[j] += e * cells[j];
  }

  void CountEvent(int row) {
    const double* cells = Cells(row);
    const int status = RoundToInteger(cells[m_data.StatusColumn]);
    m_count += status;
    if (status > 0) m_meanWeight += (cells[m_data.WeightColumn] - m_meanWeight) / m_count;
  }

  void CloseRun(int row, double S0, const std::vector<double>& S1) {
    const auto at = static_cast<std::size_t>(row) - 1;
    m_ties.Counts[at] = m_count;
    m_ties.MeanWeights[at] = m_meanWeight;
    if (m_count != 0 && AlmostEqual(Cells(row)[m_data.StatusColumn], 1.0)) {
      Keep(row, S0, S1);
    }
    m_count = 0;
    m_meanWeight = 0.0;
  }

  void Keep(int row, double S0, const std::vector<double>& S1) {
    if (m_kept == Kept::Moments) {
      m_moments.push_back(S1);
      return;
    }
    m_times.push_back(Time(row));
    m_riskSums.push_back(S0);
    m_weightSums.push_back(m_count * m_meanWeight);
  }

  // The walk found the event times from the last to the first.
  void Store() {
    if (m_kept == Kept::Moments) {
      std::reverse(m_moments.begin(), m_moments.end());
      m_fit.m_EventRiskMoments.push_back(std::move(m_moments));
      return;
    }
    std::reverse(m_times.begin(), m_times.end());
    std::reverse(m_riskSums.begin(), m_riskSums.end());
    std::reverse(m_weightSums.begin(), m_weightSums.end());
    BaselineCurve curve{{0.0}, {0.0}};
    double H = 0.0;
    for (std::size_t k = 0; k < m_times.size(); ++k) {
      H += m_weightSums[k] / m_riskSums[k];
      curve.Times.push_back(m_times[k]);
      curve.Values.push_back(H);
    }
    m_fit.m_BreslowCurves.push_back(std::move(curve));
    m_fit.m_EventRiskSums.push_back(std::move(m_riskSums));
    m_fit.m_EventWeightSums.push_back(std::move(m_weightSums));
  }

  CCoxFit& m_fit;
  const Kept m_kept;
  const CCoxData& m_data;
  const StratumRows m_stratum;
  TiedEvents& m_ties;
  const bool m_isCounting;
  CompensatedSum m_S0;
  std::vector<double> m_S1;
  int m_count = 0;  // events of the open run
  double m_meanWeight = 0.0;
  std::vector<double> m_times;
  std::vector<double> m_riskSums;
  std::vector<double> m_weightSums;
  std::vector<std::vector<double>> m_moments;
};

TiedEvents WalkStrata(CCoxFit& fit, Kept kept) {
  const std::size_t n = fit.m_pData->ValidCaseCount;
  TiedEvents ties{std::vector<int>(n, 0), std::vector<double>(n, 0.0)};
  std::vector<double> risks = fit.m_LinearPredictor;
  for (double& risk : risks) risk = std::exp(risk);
  for (const StratumRows& stratum : StrataOf(*fit.m_pData)) StratumWalk(fit, stratum, ties, kept).Run(risks);
  return ties;
}

}  // namespace

TiedEvents ComputeBreslowBaseline(CCoxFit& fit) {
  fit.m_BreslowCurves.clear();
  fit.m_EventRiskSums.clear();
  fit.m_EventWeightSums.clear();
  fit.m_EventRiskMoments.clear();
  return WalkStrata(fit, Kept::Baseline);
}

void FillEventRiskMoments(CCoxFit& fit) {
  // Of all strata or of none: memory may be out on the way.
  if (fit.m_EventRiskMoments.size() == fit.m_BreslowCurves.size()) return;
  fit.m_EventRiskMoments.clear();
  WalkStrata(fit, Kept::Moments);
}

}  // namespace orv
