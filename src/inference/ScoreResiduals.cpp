#include "inference/ScoreResiduals.h"

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CompensatedSum.h"
#include "inference/IntervalGroups.h"
#include "inference/RelativeRisks.h"
#include "inference/ScoreShares.h"
#include "inference/StratumRows.h"

namespace orv {

namespace {

// The walk over survival times, from the last row to the first.
class SurvivalWalk {
 public:
  SurvivalWalk(const CCoxFit& fit, const std::vector<double>& risks)
      : m_data(*fit.m_pData),
        m_risks(risks),
        m_n(static_cast<int>(m_data.ValidCaseCount)),
        m_p(m_data.CoefficientCount),
        m_hasStrata(m_data.Owner->m_Settings.HasStrata()),
        m_isEfron(fit.m_Likelihood == Likelihoods::Efron),
        m_timeColumn(fit.m_InputType == InputTypes::CountingProcess ? m_data.StopColumn : m_data.SurvivalColumn),
        m_S1(m_p, 0.0),
        m_T(m_p, 0.0) {}

  // The shares of the groups in the order in which they close, which is from the last rows to the first.
  std::vector<ScoreShares> Run() {
    for (int row = m_n; row >= 1; --row) {
      if (row < m_n && Stratum(row) != Stratum(row + 1)) {
        m_S0 = 0.0;
        m_S1.assign(m_p, 0.0);
        ClearEvents();
      }
      Join(row);
      if (m_d > 0 && Closes(row)) Close(row);
    }
    return std::move(m_groups);
  }

 private:
  const double* Cells(int row) const { return m_data.CaseTable.GetRow(row); }
  // Rows 0 and n + 1 do not exist; what stands for them differs from every row.
  double Time(int row) const { return row < 1 ? -1.0 : Cells(row)[m_timeColumn]; }
  double Stratum(int row) const { return !m_hasStrata || row < 1 ? -1.0 : Cells(row)[m_data.StratumColumn]; }

  void Join(int row) {
    const double* cells = Cells(row);
    const double e = cells[m_data.WeightColumn] * m_risks[static_cast<std::size_t>(row) - 1];
    const bool isEvent = cells[m_data.StatusColumn] == 1.0;
    m_S0 += e;
    if (isEvent) {
      ++m_d;
      m_W += cells[m_data.WeightColumn];
      m_E += e;
    }
    for (std::size_t j = 0; j < m_p; ++j) {
      m_S1[j] += e * cells[j];
      if (isEvent) m_T[j] += e * cells[j];
    }
  }

  // The stratum of the row below is compared with that of the row above, not with the row's own. Kept: so the highest
  // row of a stratum closes a group at once even when the next lower row ties with it.
  bool Closes(int row) const {
    if (row == 1 || row == m_n || Time(row) != Time(row - 1)) return true;
    return m_hasStrata && Stratum(row - 1) != Stratum(row + 1);
  }

  void Close(int row) {
    const bool shares = m_d >= 2 && m_isEfron;
    ScoreShares group = shares ? EfronShares(m_d, m_W, m_S0, m_E, m_S1.data(), m_T.data(), m_p)
                               : BreslowShares(m_W, m_S0, m_S1.data(), m_p);
    group.FirstRow = row;
    group.CarriesRowWeight = shares;
    m_groups.push_back(std::move(group));
    ClearEvents();
  }

  void ClearEvents() {
    m_d = 0;
    m_W = 0.0;
    m_E = 0.0;
    m_T.assign(m_p, 0.0);
  }

  const CCoxData& m_data;
  const std::vector<double>& m_risks;
  const int m_n;
  const std::size_t m_p;
  const bool m_hasStrata;
  const bool m_isEfron;
  const int m_timeColumn;
  double m_S0 = 0.0;
  std::vector<double> m_S1;
  int m_d = 0;
  double m_W = 0.0;
  double m_E = 0.0;
  std::vector<double> m_T;
  std::vector<ScoreShares> m_groups;
};

// What a row of the risk sets has lost up to now: with its own weight, and without.
struct RunningShares {
  explicit RunningShares(std::size_t p) : A(p) {}
  void Add(const ScoreShares& group) {
    H.Add(group.H);
    for (std::size_t j = 0; j < A.size(); ++j) A[j].Add(group.A[j]);
  }

  CompensatedSum H;
  std::vector<CompensatedSum> A;
};

constexpr int kRowsAhead = 8;

// What a row at risk has lost after so many groups: the sums of A, one for each parameter, and the sum of H behind
// them.
class ShareHistory {
 public:
  ShareHistory(std::size_t p, std::size_t groups) : m_p(p) {
    m_sums.reserve((groups + 1) * (p + 1));
    m_sums.resize(p + 1);
  }
  void Add(const ScoreShares& group) {
    const std::size_t latest = m_sums.size() - (m_p + 1);
    for (std::size_t j = 0; j <= m_p; ++j) {
      CompensatedSum sum = m_sums[latest + j];
      sum.Add(j < m_p ? group.A[j] : group.H);
      m_sums.push_back(sum);
    }
  }
  const CompensatedSum* After(std::size_t groups) const { return m_sums.data() + groups * (m_p + 1); }
  // Asks for what After will return, before it is needed.
  void Fetch(std::size_t groups) const {
    constexpr std::size_t kSumsOfLine = 4;
    const CompensatedSum* const sums = After(groups);
    for (std::size_t j = 0; j <= m_p; j += kSumsOfLine) __builtin_prefetch(sums + j);
    __builtin_prefetch(sums + m_p);
  }

 private:
  const std::size_t m_p;
  std::vector<CompensatedSum> m_sums;
};

DenseMatrix ZeroResiduals(const CCoxData& data) {
  return DenseMatrix(data.CoefficientCount, std::vector<double>(data.ValidCaseCount, 0.0));
}

// The part of an event of a group: its distance from the mean, and what it does not lose with the others of its group.
void AddEvent(const ScoreShares& group, const double* x, double e, std::size_t at, DenseMatrix& U) {
  for (std::size_t j = 0; j < U.size(); ++j) {
    double part = x[j] - group.Mean[j];
    if (!group.EventA.empty()) part += e * (x[j] * (group.H - group.EventH) - (group.A[j] - group.EventA[j]));
    U[j][at] += part;
  }
}

}  // namespace

DenseMatrix SurvivalScoreResiduals(const CCoxFit& fit, const double* beta) {
  const CCoxData& data = *fit.m_pData;
  const std::vector<double> risks = RelativeRisks(fit, beta);
  const std::vector<ScoreShares> groups = SurvivalWalk(fit, risks).Run();
  const int timeColumn = fit.m_InputType == InputTypes::CountingProcess ? data.StopColumn : data.SurvivalColumn;
  DenseMatrix U = ZeroResiduals(data);
  auto group = groups.rbegin();
  for (const StratumRows& stratum : StrataOf(data)) {
    RunningShares weighted(U.size());
    RunningShares unweighted(U.size());
    for (int row = stratum.First; row <= stratum.Last; ++row) {
      for (; group != groups.rend() && group->FirstRow == row; ++group) {
        (group->CarriesRowWeight ? weighted : unweighted).Add(*group);
        const double time = data.CaseTable.GetRow(row)[timeColumn];
        for (int event = row; event <= stratum.Last; ++event) {
          const double* cells = data.CaseTable.GetRow(event);
          if (cells[timeColumn] != time) break;
          if (cells[data.StatusColumn] != 1.0) continue;
          const auto at = static_cast<std::size_t>(event) - 1;
          AddEvent(*group, cells, cells[data.WeightColumn] * risks[at], at, U);
        }
      }
      const double* x = data.CaseTable.GetRow(row);
      const auto at = static_cast<std::size_t>(row) - 1;
      const double r = risks[at];
      const double e = x[data.WeightColumn] * r;
      for (std::size_t j = 0; j < U.size(); ++j) {
        U[j][at] -= r * (x[j] * unweighted.H.Value() - unweighted.A[j].Value()) +
                    e * (x[j] * weighted.H.Value() - weighted.A[j].Value());
      }
    }
  }
  return U;
}

DenseMatrix CountingScoreResiduals(const CCoxFit& fit, const double* beta) {
  const CCoxData& data = *fit.m_pData;
  const std::vector<double> risks = RelativeRisks(fit, beta);
  const bool isEfron = fit.m_Likelihood == Likelihoods::Efron;
  DenseMatrix U = ZeroResiduals(data);
  const std::size_t p = U.size();
  for (const StratumRows& stratum : StrataOf(data)) {
    const IntervalGroups groups(data, stratum, risks, IntervalGroups::Ties::Near, IntervalGroups::Moments::First);
    ShareHistory history(p, groups.Groups().size());
    for (std::size_t k = 0; k < groups.Groups().size(); ++k) {
      const IntervalGroup& group = groups.Groups()[k];
      const ScoreShares shares = group.d >= 2 && isEfron
                                     ? EfronShares(group.d, group.W, group.S0, group.E, groups.S1(k), groups.T(k), p)
                                     : BreslowShares(group.W, group.S0, groups.S1(k), p);
      history.Add(shares);
      for (int row = group.FirstRow; row <= group.LastRow; ++row) {
        const double* cells = data.CaseTable.GetRow(row);
        if (cells[data.StatusColumn] != 1.0) continue;
        const auto at = static_cast<std::size_t>(row) - 1;
        AddEvent(shares, cells, cells[data.WeightColumn] * risks[at], at, U);
      }
    }
    for (int row = stratum.First; row <= stratum.Last; ++row) {
      const double* x = data.CaseTable.GetRow(row);
      const auto at = static_cast<std::size_t>(row) - 1;
      const double e = x[data.WeightColumn] * risks[at];
      // Where the starts of the rows to come lie in the history is not in their order.
      if (row + kRowsAhead <= stratum.Last) history.Fetch(groups.SpanOf(row + kRowsAhead).Begin);
      const IntervalGroups::Span& span = groups.SpanOf(row);
      const CompensatedSum* from = history.After(span.Begin);
      const CompensatedSum* to = history.After(span.End);
      const double H = to[p].Since(from[p]);
      for (std::size_t j = 0; j < p; ++j) U[j][at] -= e * (x[j] * H - to[j].Since(from[j]));
    }
  }
  return U;
}

void ComputeScoreResiduals(CCoxFit& fit) {
  if (!fit.m_ScoreResiduals.empty() || fit.m_BetaHistory.empty()) return;
  const double* beta = fit.m_BetaHistory.back().data();
  fit.m_ScoreResiduals = fit.m_InputType == InputTypes::SurvivalTime ? SurvivalScoreResiduals(fit, beta)
                                                                     : CountingScoreResiduals(fit, beta);
}

}  // namespace orv
