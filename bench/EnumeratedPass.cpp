#include "EnumeratedPass.h"

#include <cmath>
#include <cstddef>
#include <set>

namespace orv::bench {

namespace {

class SubsetLikelihood {
 public:
  SubsetLikelihood(const MemoryTable& table, const SurvivalKind& kind, const std::vector<double>& beta)
      : m_beta(beta), m_n(static_cast<std::size_t>(table.CaseCount())), m_Q1(beta.size()) {
    const SurvivalVariables variables(kind, static_cast<int>(beta.size()));
    for (int j = 1; j <= static_cast<int>(beta.size()); ++j) m_x.push_back(table.Variable(j).Values.data());
    m_time = table.Variable(variables.Time).Values.data();
    m_status = table.Variable(variables.Status).Values.data();
    if (variables.Start > 0) m_start = table.Variable(variables.Start).Values.data();
    m_values.U.resize(beta.size());
    m_values.H.resize(beta.size() * (beta.size() + 1) / 2);
    m_Q2.resize(m_values.H.size());
  }

  LikelihoodValues Evaluate() {
    std::set<double> times;
    for (std::size_t row = 0; row < m_n; ++row) {
      if (m_status[row] == 1.0) times.insert(m_time[row]);
    }
    for (const double time : times) AddGroup(time);
    return m_values;
  }

 private:
  void AddGroup(double time) {
    m_members.clear();
    std::size_t events = 0;
    std::vector<long double> sum(m_beta.size());  // of the events
    for (std::size_t row = 0; row < m_n; ++row) {
      if (m_time[row] < time || (m_start != nullptr && m_start[row] >= time)) continue;
      m_members.push_back(row);
      if (m_status[row] != 1.0 || m_time[row] != time) continue;
      ++events;
      for (std::size_t j = 0; j < m_beta.size(); ++j) sum[j] += m_x[j][row];
    }
    m_values.L += Predictor(sum);
    for (std::size_t j = 0; j < m_beta.size(); ++j) m_values.U[j] += sum[j];
    SubtractSubsets(events);
  }

  void SubtractSubsets(std::size_t events) {
    m_Q = 0.0L;
    m_Q1.assign(m_Q1.size(), 0.0L);
    m_Q2.assign(m_Q2.size(), 0.0L);
    Choose(events, 0, std::vector<long double>(m_beta.size()));
    m_values.L -= std::log(m_Q);
    std::size_t packed = 0;
    for (std::size_t j = 0; j < m_beta.size(); ++j) {
      m_values.U[j] -= m_Q1[j] / m_Q;
      for (std::size_t l = 0; l <= j; ++l, ++packed) {
        m_values.H[packed] += m_Q2[packed] / m_Q - (m_Q1[j] / m_Q) * (m_Q1[l] / m_Q);
      }
    }
  }

  // Every way to choose `count` more members from a place on; `sum` holds the values of those that are chosen.
  void Choose(std::size_t count, std::size_t from, const std::vector<long double>& sum) {
    if (count == 0) {
      AddSubset(sum);
      return;
    }
    for (std::size_t place = from; place + count <= m_members.size(); ++place) {
      std::vector<long double> with = sum;
      for (std::size_t j = 0; j < with.size(); ++j) with[j] += m_x[j][m_members[place]];
      Choose(count - 1, place + 1, with);
    }
  }

  void AddSubset(const std::vector<long double>& sum) {
    const long double risk = std::exp(Predictor(sum));
    m_Q += risk;
    std::size_t packed = 0;
    for (std::size_t j = 0; j < sum.size(); ++j) {
      m_Q1[j] += risk * sum[j];
      for (std::size_t l = 0; l <= j; ++l) m_Q2[packed++] += risk * sum[j] * sum[l];
    }
  }

  long double Predictor(const std::vector<long double>& sum) const {
    long double eta = 0.0L;
    for (std::size_t j = 0; j < m_beta.size(); ++j) eta += sum[j] * m_beta[j];
    return eta;
  }

  const std::vector<double>& m_beta;
  const std::size_t m_n;
  std::vector<const double*> m_x;
  const double* m_time = nullptr;
  const double* m_status = nullptr;
  const double* m_start = nullptr;
  std::vector<std::size_t> m_members;  // of the risk set in hand
  long double m_Q = 0.0L;              // over its subsets: sum of r_A, r_A x_A and r_A x_A x_A' (packed)
  std::vector<long double> m_Q1;
  std::vector<long double> m_Q2;
  LikelihoodValues m_values;
};

}  // namespace

LikelihoodValues EvaluateByEnumeration(const MemoryTable& table,
                                       const SurvivalKind& kind,
                                       const std::vector<double>& beta) {
  return SubsetLikelihood(table, kind, beta).Evaluate();
}

}  // namespace orv::bench
