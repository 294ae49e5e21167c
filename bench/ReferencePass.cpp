#include "ReferencePass.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace orv::bench {

namespace {

constexpr double kMostDigits = 16.0;

// S0, S1 and S2 of a set of cases.
struct Sums {
  explicit Sums(std::size_t p) : S1(p), S2(p * (p + 1) / 2) {}
  void Clear() {
    S0 = 0.0L;
    std::fill(S1.begin(), S1.end(), 0.0L);
    std::fill(S2.begin(), S2.end(), 0.0L);
  }

  long double S0 = 0.0L;
  std::vector<long double> S1;
  std::vector<long double> S2;
};

class PlainLikelihood {
 public:
  PlainLikelihood(const MemoryTable& table, const SurvivalKind& kind, const std::vector<double>& beta)
      : m_beta(beta), m_isEfron(kind.Efron), m_atRisk(beta.size()), m_events(beta.size()) {
    const int predictors = static_cast<int>(beta.size()) - (kind.HasTimeDependentEffect ? 1 : 0);
    const SurvivalVariables variables(kind, predictors);
    for (int j = 1; j <= predictors; ++j) m_predictors.push_back(table.Variable(j).Values.data());
    m_time = table.Variable(variables.Time).Values.data();
    m_status = table.Variable(variables.Status).Values.data();
    if (variables.Stratum > 0) m_stratum = table.Variable(variables.Stratum).Values.data();
    if (variables.Start > 0) m_start = table.Variable(variables.Start).Values.data();
    m_order = RowsBy(m_time, table.CaseCount());
    if (m_start != nullptr) m_byStart = RowsBy(m_start, table.CaseCount());
    m_values.U.resize(beta.size());
    m_values.H.resize(m_atRisk.S2.size());
  }

  LikelihoodValues Evaluate(RiskSets riskSets) {
    std::size_t stratumEnd = m_order.size();
    for (std::size_t end = m_order.size(); end > 0;) {
      const std::size_t begin = GroupBegin(end);
      const bool isLastOfStratum = end == m_order.size() || Stratum(m_order[end]) != Stratum(m_order[end - 1]);
      if (isLastOfStratum) stratumEnd = end;
      m_logTime = std::log(m_time[m_order[begin]] + 1.0L);
      if (riskSets == RiskSets::Rescan) {
        Rescan(begin, stratumEnd);
      } else {
        MoveOn(begin, end, isLastOfStratum);
      }
      AddGroup(begin, end);
      end = begin;
    }
    return m_values;
  }

 private:
  // The rows by stratum, then by a time.
  std::vector<std::size_t> RowsBy(const double* time, int cases) const {
    std::vector<std::size_t> rows(static_cast<std::size_t>(cases));
    std::iota(rows.begin(), rows.end(), std::size_t{0});
    std::sort(rows.begin(), rows.end(), [this, time](std::size_t a, std::size_t b) {
      if (Stratum(a) != Stratum(b)) return Stratum(a) < Stratum(b);
      return time[a] < time[b];
    });
    return rows;
  }

  // The risk set of the group that begins at a place, added up from nothing: start < t <= stop.
  void Rescan(std::size_t begin, std::size_t stratumEnd) {
    m_atRisk.Clear();
    const double time = m_time[m_order[begin]];
    for (std::size_t place = begin; place < stratumEnd; ++place) {
      const std::size_t row = m_order[place];
      if (m_start == nullptr || m_start[row] < time) AddCase(m_atRisk, row, 1.0L);
    }
  }

  // The same from the risk set of the group after it: the rows of the group join, and those that start later leave.
  void MoveOn(std::size_t begin, std::size_t end, bool isLastOfStratum) {
    if (isLastOfStratum) {
      m_atRisk.Clear();
      m_leaving = end;
    }
    for (std::size_t place = begin; place < end; ++place) AddCase(m_atRisk, m_order[place], 1.0L);
    if (m_start == nullptr) return;
    const std::size_t group = m_order[begin];
    while (m_leaving > 0) {
      const std::size_t row = m_byStart[m_leaving - 1];
      if (Stratum(row) != Stratum(group) || m_start[row] < m_time[group]) return;
      AddCase(m_atRisk, row, -1.0L);
      --m_leaving;
    }
  }

  double Stratum(std::size_t row) const { return m_stratum != nullptr ? m_stratum[row] : 0.0; }

  // The first place of the tied group that ends before a place.
  std::size_t GroupBegin(std::size_t end) const {
    std::size_t begin = end - 1;
    while (begin > 0 && m_time[m_order[begin - 1]] == m_time[m_order[end - 1]] &&
           Stratum(m_order[begin - 1]) == Stratum(m_order[end - 1])) {
      --begin;
    }
    return begin;
  }

  // The design value of a row at the time of the group in hand.
  long double X(std::size_t j, std::size_t row) const {
    return j < m_predictors.size() ? m_predictors[j][row] : m_predictors[0][row] * m_logTime;
  }

  long double Predictor(std::size_t row) const {
    long double eta = 0.0L;
    for (std::size_t j = 0; j < m_beta.size(); ++j) eta += X(j, row) * m_beta[j];
    return eta;
  }

  void AddCase(Sums& sums, std::size_t row, long double sign) const {
    const long double risk = sign * std::exp(Predictor(row));
    sums.S0 += risk;
    std::size_t packed = 0;
    for (std::size_t j = 0; j < m_beta.size(); ++j) {
      const long double weighted = risk * X(j, row);
      sums.S1[j] += weighted;
      for (std::size_t l = 0; l <= j; ++l) sums.S2[packed++] += weighted * X(l, row);
    }
  }

  // The events at the places from `begin` to before `end`, one after the other.
  void AddGroup(std::size_t begin, std::size_t end) {
    m_events.Clear();
    int deaths = 0;
    for (std::size_t place = begin; place < end; ++place) {
      const std::size_t row = m_order[place];
      if (m_status[row] != 1.0) continue;
      ++deaths;
      m_values.L += Predictor(row);
      for (std::size_t j = 0; j < m_beta.size(); ++j) m_values.U[j] += X(j, row);
      if (m_isEfron) AddCase(m_events, row, 1.0L);
    }
    for (int k = 0; k < deaths; ++k) AddEventTerm(m_isEfron ? static_cast<long double>(k) / deaths : 0.0L);
  }

  void AddEventTerm(long double fraction) {
    const std::size_t p = m_beta.size();
    const long double denominator = m_atRisk.S0 - fraction * m_events.S0;
    m_values.L -= std::log(denominator);
    std::vector<long double> mean(p);
    for (std::size_t j = 0; j < p; ++j) {
      mean[j] = (m_atRisk.S1[j] - fraction * m_events.S1[j]) / denominator;
      m_values.U[j] -= mean[j];
    }
    std::size_t packed = 0;
    for (std::size_t j = 0; j < p; ++j) {
      for (std::size_t l = 0; l <= j; ++l, ++packed) {
        const long double second = (m_atRisk.S2[packed] - fraction * m_events.S2[packed]) / denominator;
        m_values.H[packed] += second - mean[j] * mean[l];
      }
    }
  }

  const std::vector<double>& m_beta;
  const bool m_isEfron;
  std::vector<const double*> m_predictors;
  const double* m_time = nullptr;
  const double* m_status = nullptr;
  const double* m_stratum = nullptr;
  const double* m_start = nullptr;
  std::vector<std::size_t> m_order;    // rows by stratum, then time
  std::vector<std::size_t> m_byStart;  // rows by stratum, then start
  std::size_t m_leaving = 0;           // running sums: the rows from this place of m_byStart on have left
  long double m_logTime = 0.0L;        // log(t + 1) of the group in hand
  Sums m_atRisk;
  Sums m_events;
  LikelihoodValues m_values;
};

}  // namespace

LikelihoodValues EvaluatePlainly(const MemoryTable& table,
                                 const SurvivalKind& kind,
                                 const std::vector<double>& beta,
                                 RiskSets riskSets) {
  return PlainLikelihood(table, kind, beta).Evaluate(riskSets);
}

double AgreedDigits(long double reference, long double value, long double scale) {
  const long double error = std::abs(value - reference) / scale;
  if (std::isnan(error)) return 0.0;
  return error > 0.0L ? std::clamp(static_cast<double>(-std::log10(error)), 0.0, kMostDigits) : kMostDigits;
}

double AgreedDigits(const LikelihoodValues& reference, double L, const double* U, double* const* H) {
  const std::size_t p = reference.U.size();
  double digits = AgreedDigits(reference.L, L, std::abs(reference.L));
  std::vector<long double> error(p);  // standard deviations of the scores
  for (std::size_t j = 0; j < p; ++j) error[j] = std::sqrt(reference.H[j * (j + 1) / 2 + j]);
  std::size_t packed = 0;
  for (std::size_t j = 0; j < p; ++j) {
    digits = std::min(digits, AgreedDigits(reference.U[j], U[j], error[j]));
    for (std::size_t l = 0; l <= j; ++l) {
      digits = std::min(digits, AgreedDigits(reference.H[packed++], H[l][j], error[j] * error[l]));
    }
  }
  return digits;
}

}  // namespace orv::bench
