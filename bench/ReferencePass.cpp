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
    const int p = static_cast<int>(beta.size());
    for (int j = 1; j <= p; ++j) m_x.push_back(table.Variable(j).Values.data());
    m_time = table.Variable(p + 1).Values.data();
    m_status = table.Variable(p + 2).Values.data();
    m_stratum = kind.Strata > 0 ? table.Variable(p + 3).Values.data() : nullptr;
    m_order.resize(static_cast<std::size_t>(table.CaseCount()));
    std::iota(m_order.begin(), m_order.end(), std::size_t{0});
    std::sort(m_order.begin(), m_order.end(), [this](std::size_t a, std::size_t b) {
      if (Stratum(a) != Stratum(b)) return Stratum(a) < Stratum(b);
      return m_time[a] < m_time[b];
    });
    m_values.U.resize(beta.size());
    m_values.H.resize(m_atRisk.S2.size());
  }

  LikelihoodValues Evaluate(RiskSets riskSets) {
    std::size_t stratumEnd = m_order.size();
    for (std::size_t end = m_order.size(); end > 0;) {
      const std::size_t begin = GroupBegin(end);
      const bool isLastOfStratum = end == m_order.size() || Stratum(m_order[end]) != Stratum(m_order[end - 1]);
      if (isLastOfStratum) stratumEnd = end;
      if (riskSets == RiskSets::Rescan || isLastOfStratum) m_atRisk.Clear();
      const std::size_t atRiskEnd = riskSets == RiskSets::Rescan ? stratumEnd : end;
      for (std::size_t place = begin; place < atRiskEnd; ++place) AddCase(m_atRisk, m_order[place]);
      AddGroup(begin, end);
      end = begin;
    }
    return m_values;
  }

 private:
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

  long double Predictor(std::size_t row) const {
    long double eta = 0.0L;
    for (std::size_t j = 0; j < m_x.size(); ++j) eta += static_cast<long double>(m_x[j][row]) * m_beta[j];
    return eta;
  }

  void AddCase(Sums& sums, std::size_t row) const {
    const long double risk = std::exp(Predictor(row));
    sums.S0 += risk;
    std::size_t packed = 0;
    for (std::size_t j = 0; j < m_x.size(); ++j) {
      const long double weighted = risk * m_x[j][row];
      sums.S1[j] += weighted;
      for (std::size_t l = 0; l <= j; ++l) sums.S2[packed++] += weighted * m_x[l][row];
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
      for (std::size_t j = 0; j < m_x.size(); ++j) m_values.U[j] += m_x[j][row];
      if (m_isEfron) AddCase(m_events, row);
    }
    for (int k = 0; k < deaths; ++k) AddEventTerm(m_isEfron ? static_cast<long double>(k) / deaths : 0.0L);
  }

  void AddEventTerm(long double fraction) {
    const std::size_t p = m_x.size();
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
  std::vector<const double*> m_x;
  const double* m_time = nullptr;
  const double* m_status = nullptr;
  const double* m_stratum = nullptr;
  std::vector<std::size_t> m_order;  // rows by stratum, then time
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
