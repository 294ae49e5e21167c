#include "inference/KaplanMeierBaseline.h"

#include <cmath>
#include <optional>

#include "data/AlmostEqual.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/CompensatedSum.h"
#include "inference/BreslowBaseline.h"
#include "inference/RootFinder.h"
#include "inference/StratumRows.h"

namespace orv {

namespace {

constexpr double kHighestProbability = 0.999999999999;
constexpr double kRootTolerance = 1e-12;

class StratumCurve {
 public:
  StratumCurve(CCoxFit& fit, const TiedEvents& ties, const StratumRows& stratum, const std::vector<double>& riskSums)
      : m_fit(fit), m_data(*fit.m_pData), m_ties(ties), m_stratum(stratum), m_riskSums(riskSums) {}

  BaselineCurve Run() {
    double S = 1.0;
    std::size_t k = 0;
    for (int row = m_stratum.First; row < m_stratum.Last && m_fit.m_RootFindFailed == 0; ++row) {
      const int d = m_ties.Counts[static_cast<std::size_t>(row) - 1];
      if (d == 0 || !AlmostEqual(Cells(row)[m_data.StatusColumn], 1.0)) continue;
      const std::optional<double> conditional = d == 1 ? OfOneEvent(row, k) : OfSeveralEvents(row, d, k);
      if (!conditional) {
        m_fit.m_KaplanMeierValid = false;
        m_fit.m_RootFindFailed = 1;
        break;
      }
      S *= *conditional;
      Append(row, S);
      ++k;
    }
    // The count is looked up by the size of the stratum, counted from the first row of the table. Kept: from the second
    // stratum on it looks at a row of an earlier one, and curves on record end accordingly.
    const int lastCount = m_ties.Counts[static_cast<std::size_t>(m_stratum.Count()) - 1];
    if (lastCount == 1 && m_fit.m_RootFindFailed == 0) Append(m_stratum.Last, 0.0);
    return std::move(m_curve);
  }

 private:
  const double* Cells(int row) const { return m_data.CaseTable.GetRow(row); }
  double Risk(int row) const { return std::exp(m_fit.m_LinearPredictor[static_cast<std::size_t>(row) - 1]); }

  void Append(int row, double S) {
    m_curve.Times.push_back(Cells(row)[m_data.SurvivalColumn]);
    m_curve.Values.push_back(S);
  }

  std::optional<double> OfOneEvent(int row, std::size_t k) const {
    const double r = Risk(row);
    const double rest = 1.0 - r / m_riskSums[k];
    if (rest < 0.0) return std::nullopt;
    return rest == 0.0 ? 0.0 : std::pow(rest, 1.0 / r);
  }

  // Complete cases stand first at a time, so the events are the d rows from this one on.
  std::optional<double> OfSeveralEvents(int row, int d, std::size_t k) const {
    const auto excess = [&](double alpha) -> std::optional<double> {
      // Added up as the risk sum was: at alpha 0, when the events are all that is left, the two are the same number.
      CompensatedSum sum;
      for (int j = row + d - 1; j >= row; --j) {
        const double r = Risk(j);
        const double denominator = 1.0 - std::pow(alpha, r);
        if (denominator == 0.0) return std::nullopt;
        sum.Add(r / denominator);
      }
      return sum.Value() - m_riskSums[k];
    };
    return FindRoot(excess, 0.0, kHighestProbability, kRootTolerance);
  }

  CCoxFit& m_fit;
  const CCoxData& m_data;
  const TiedEvents& m_ties;
  const StratumRows m_stratum;
  const std::vector<double>& m_riskSums;
  BaselineCurve m_curve{{0.0}, {1.0}};
};

}  // namespace

void ComputeKaplanMeierBaseline(CCoxFit& fit, const TiedEvents& ties) {
  fit.m_KaplanMeierCurves.clear();
  fit.m_RootFindFailed = 0;
  std::size_t stratum = 0;
  for (const StratumRows& rows : StrataOf(*fit.m_pData)) {
    fit.m_KaplanMeierCurves.push_back(StratumCurve(fit, ties, rows, fit.m_EventRiskSums[stratum++]).Run());
  }
}

}  // namespace orv
