#include "inference/SchoenfeldResiduals.h"

#include <memory>
#include <new>
#include <vector>

#include "core/CCoxPH.h"
#include "data/AlmostEqual.h"
#include "data/CCoxData.h"
#include "data/RoundHalfAway.h"
#include "fit/CCoxFit.h"
#include "fit/StartOrder.h"
#include "fit/TieTable.h"
#include "inference/RelativeRisks.h"

namespace orv {

namespace {

CaseColumns ColumnsOf(const CCoxData& data, bool intervals) {
  const bool strata = data.Owner->m_Settings.HasStrata();
  return {intervals ? data.StopColumn : data.SurvivalColumn, data.WeightColumn, data.StatusColumn,
          strata ? data.StratumColumn : -1};
}

// At the lowest row of each run of tied times the number of its events, 0 at the other rows; element 0 is unused.
// Unlike the groups of the fit a run goes on into the next stratum when that begins at the time at which this one ends.
// Kept: saved residuals of stratified analyses depend on it.
std::vector<int> EventsOfRuns(const CaseTable& cases, int n, const CaseColumns& columns) {
  std::vector<int> events(static_cast<std::size_t>(n) + 1, 0);
  int count = 0;
  for (int row = n; row >= 1; --row) {
    const double* cells = cases.GetRow(row);
    count += RoundToInteger(cells[columns.Status]);
    if (row > 1 && AlmostEqual(cells[columns.Time], cases.GetRow(row - 1)[columns.Time])) continue;
    events[static_cast<std::size_t>(row)] = count;
    count = 0;
  }
  return events;
}

// One walk from the last row to the first, so that the risk set only grows, but for intervals that have not begun yet.
//   S0, S1  over the risk set: sum of e and of e x, with e = weight * exp(x'b)
//   D, T    the same over the events of the open run
class SchoenfeldWalk {
 public:
  explicit SchoenfeldWalk(CCoxFit& fit)
      : m_cases(fit.m_pData->CaseTable),
        m_n(static_cast<int>(fit.m_pData->ValidCaseCount)),
        m_p(fit.m_pData->CoefficientCount),
        m_columns(ColumnsOf(*fit.m_pData, fit.m_InputType == InputTypes::CountingProcess)),
        m_efronStep(fit.m_Likelihood == Likelihoods::Efron ? 1.0 : 0.0),
        m_ties(fit.Owner().GetHost(), m_cases, m_n, m_columns),
        m_events(EventsOfRuns(m_cases, m_n, m_columns)),
        m_e(RelativeRisks(fit, fit.m_BetaHistory.back().data())),
        m_S1(m_p, 0.0),
        m_T(m_p, 0.0),
        m_mean(m_p, 0.0) {
    if (m_ties.Failed()) throw std::bad_alloc();
    for (int row = 1; row <= m_n; ++row) m_e[At(row)] *= m_cases.GetRow(row)[m_columns.Weight];
    if (fit.m_InputType != InputTypes::CountingProcess) return;
    m_starts = std::make_unique<StartOrder>(fit.Owner().GetHost(), m_cases, m_n, fit.m_pData->StartColumn, m_ties);
    if (m_starts->Failed()) throw std::bad_alloc();
  }

  DenseMatrix Run() {
    DenseMatrix residuals(m_p, std::vector<double>(static_cast<std::size_t>(m_n), 0.0));
    if (m_starts) m_starts->Rewind();
    int upperEnd = m_n;  // of the open run
    for (int row = m_n; row >= 1; --row) {
      if (m_ties.EndsStratum(row)) EnterStratum(row);
      if (m_starts) RemoveLeavers(row);
      Join(row);
      const int count = m_events[static_cast<std::size_t>(row)];
      if (count <= 0) continue;
      AverageRiskSet(count);
      for (int member = row; member <= upperEnd; ++member) Subtract(member, residuals);
      upperEnd = row - 1;
      m_D = 0.0;
      m_T.assign(m_p, 0.0);
    }
    return residuals;
  }

 private:
  static std::size_t At(int row) { return static_cast<std::size_t>(row) - 1; }

  // D stays as it is: within a run that goes on across the boundary it holds the events of both strata.
  void EnterStratum(int lastRow) {
    ClearRiskSet();
    m_T.assign(m_p, 0.0);
    m_atRisk = 0;
    if (m_starts) m_starts->EnterStratum(lastRow);
  }

  void ClearRiskSet() {
    m_S0 = 0.0;
    m_S1.assign(m_p, 0.0);
  }

  // Leavers lie all over the table. Asked for some rows ahead, they are at hand when their turn comes.
  void FetchAhead() const {
    constexpr int kRowsAhead = 8;
    const int row = m_starts->Upcoming(kRowsAhead);
    if (row == 0) return;
    __builtin_prefetch(&m_e[At(row)]);
    m_cases.Prefetch(row);
  }

  // Rows that start at the time of this row or later have not entered yet.
  void RemoveLeavers(int row) {
    const double time = m_cases.GetRow(row)[m_columns.Time];
    while (const int leaver = m_starts->NextLeaver(time)) {
      FetchAhead();
      const double* x = m_cases.GetRow(leaver);
      const double e = m_e[At(leaver)];
      m_S0 -= e;
      for (std::size_t k = 0; k < m_p; ++k) m_S1[k] -= e * x[k];
      --m_atRisk;
    }
    // With nobody left the sums hold rounding alone.
    if (m_atRisk == 0) ClearRiskSet();
  }

  void Join(int row) {
    const double* cells = m_cases.GetRow(row);
    const double e = m_e[At(row)];
    m_S0 += e;
    for (std::size_t k = 0; k < m_p; ++k) m_S1[k] += e * cells[k];
    ++m_atRisk;
    if (cells[m_columns.Status] != 1.0) return;
    m_D += e;
    for (std::size_t k = 0; k < m_p; ++k) m_T[k] += e * cells[k];
  }

  // The average that the events of a run share: the mean over its steps.
  void AverageRiskSet(int count) {
    m_mean.assign(m_p, 0.0);
    for (int step = 0; step < count; ++step) {
      const double fraction = step * m_efronStep / count;
      const double denominator = (m_S0 - fraction * m_D) * count;
      for (std::size_t k = 0; k < m_p; ++k) m_mean[k] += (m_S1[k] - fraction * m_T[k]) / denominator;
    }
  }

  void Subtract(int row, DenseMatrix& residuals) const {
    const double* cells = m_cases.GetRow(row);
    if (cells[m_columns.Status] != 1.0) return;
    for (std::size_t k = 0; k < m_p; ++k) residuals[k][At(row)] = cells[k] - m_mean[k];
  }

  const CaseTable& m_cases;
  const int m_n;
  const std::size_t m_p;
  const CaseColumns m_columns;
  const double m_efronStep;
  TieTable m_ties;                       // for the ends of strata; its groups are the fit's
  std::unique_ptr<StartOrder> m_starts;  // for intervals
  std::vector<int> m_events;
  std::vector<double> m_e;  // by row from 0
  double m_S0 = 0.0;
  double m_D = 0.0;
  int m_atRisk = 0;
  std::vector<double> m_S1;
  std::vector<double> m_T;
  std::vector<double> m_mean;
};

}  // namespace

void ComputeSchoenfeldResiduals(CCoxFit& fit) {
  if (!fit.m_SchoenfeldResiduals.empty() || fit.m_BetaHistory.empty()) return;
  fit.m_SchoenfeldResiduals = SchoenfeldWalk(fit).Run();
}

void ComputeScaledSchoenfeldResiduals(CCoxFit& fit) {
  const std::size_t p = fit.m_pData->CoefficientCount;
  if (!fit.m_ScaledSchoenfeldResiduals.empty() || fit.m_Covariance.size() != p) return;
  ComputeSchoenfeldResiduals(fit);
  const DenseMatrix& residuals = fit.m_SchoenfeldResiduals;
  if (residuals.size() != p) return;
  const CCoxData& data = *fit.m_pData;
  const double N = data.CompleteCaseCount;
  DenseMatrix scaled(p, std::vector<double>(data.ValidCaseCount, 0.0));
  for (std::size_t k = 0; k < p; ++k) {
    // Column by column, so that the vectors are read in the order of the store.
    for (std::size_t m = 0; m < p; ++m) {
      for (std::size_t i = 0; i < scaled[k].size(); ++i) scaled[k][i] += fit.m_Covariance[k][m] * residuals[m][i];
    }
    for (double& value : scaled[k]) value *= N;
  }
  fit.m_ScaledSchoenfeldResiduals = std::move(scaled);
}

}  // namespace orv
