// The pass over the cases as the textbooks write it: every row updates a p by p matrix, and so does every event. It is
// the check of the pass by blocks, and what that one is timed against.
#pragma once

#include <cmath>
#include <cstddef>
#include <optional>
#include <vector>

#include "data/AlmostEqual.h"
#include "data/CaseTable.h"
#include "fit/CompensatedSum.h"
#include "fit/PassKernels.h"
#include "fit/StartOrder.h"
#include "fit/TieTable.h"

namespace orv::testing {

// Sums of weight, weight x and weight x x' (packed) over a set of rows.
struct PlainSums {
  explicit PlainSums(int p) : S1(static_cast<std::size_t>(p)), S2(PackedSize(static_cast<std::size_t>(p))) {}

  void Add(const double* x, double weight) {
    S0.Add(weight);
    AddWeighted(S1.data(), S2.data(), x, weight, static_cast<int>(S1.size()));
  }
  void Clear() { *this = PlainSums(static_cast<int>(S1.size())); }

  CompensatedSum S0;
  std::vector<double> S1;
  std::vector<double> S2;
};

struct PlainValue {
  double L = 0.0;
  std::vector<double> U;
  std::vector<double> H;  // packed lower triangle
};

// The rows, in ascending time within contiguous strata, with the design values first.
struct PlainCases {
  orv::Host& Host;
  const CaseTable& Table;
  int Rows = 0;
  CaseColumns Columns;
  int StartColumn = -1;  // of intervals
  int Parameters = 0;
};

class PlainPass {
 public:
  PlainPass(const PlainCases& cases, int efronStep)
      : m_cases(cases),
        m_efronStep(efronStep),
        m_ties(cases.Host, cases.Table, cases.Rows, cases.Columns),
        m_risk(cases.Parameters),
        m_events(cases.Parameters),
        m_mean(static_cast<std::size_t>(cases.Parameters)) {
    if (HasIntervals()) m_starts.emplace(cases.Host, cases.Table, cases.Rows, cases.StartColumn, m_ties);
  }

  // `beta` null: at zero.
  PlainValue Evaluate(const double* beta) {
    const int p = m_cases.Parameters;
    PlainValue value;
    value.U.assign(static_cast<std::size_t>(p), 0.0);
    value.H.assign(PackedSize(static_cast<std::size_t>(p)), 0.0);
    m_risk.Clear();
    m_events.Clear();
    m_likelihood = {};
    if (HasIntervals()) m_starts->Rewind();
    for (int row = m_cases.Rows; row >= 1; --row) {
      const double* x = m_cases.Table.GetRow(row);
      if (m_ties.EndsStratum(row)) m_risk.Clear();
      if (HasIntervals()) RemoveLeavers(row, beta);
      const double weight = x[m_cases.Columns.Weight];
      const double eta = Eta(x, beta);
      m_risk.Add(x, weight * std::exp(eta));
      if (x[m_cases.Columns.Status] == 1.0) {
        m_likelihood.Add(eta * weight);
        for (int j = 0; j < p; ++j) value.U[static_cast<std::size_t>(j)] += x[j] * weight;
        m_events.Add(x, weight * std::exp(eta));
      }
      if (m_ties.Deaths(row) > 0.0) CloseGroup(m_ties.Deaths(row), m_ties.MeanWeight(row), value);
    }
    value.L = m_likelihood.Value();
    return value;
  }

 private:
  bool HasIntervals() const { return m_cases.StartColumn >= 0; }

  double Eta(const double* x, const double* beta) const {
    return beta == nullptr ? 0.0 : LinearPredictor(x, beta, m_cases.Parameters);
  }

  void RemoveLeavers(int row, const double* beta) {
    if (m_ties.EndsStratum(row)) m_starts->EnterStratum(row);
    const double time = m_cases.Table.GetRow(row)[m_cases.Columns.Time];
    while (const int leaver = m_starts->NextLeaver(time)) {
      const double* x = m_cases.Table.GetRow(leaver);
      m_risk.Add(x, -x[m_cases.Columns.Weight] * std::exp(Eta(x, beta)));
    }
  }

  void CloseGroup(double events, double meanWeight, PlainValue& value) {
    if (m_efronStep == 0) {
      SubtractEvent(0.0, meanWeight * events, value);  // equal terms, whose rounding would add up
    } else {
      for (double k = 0.0; k < events; k += 1.0) SubtractEvent(k / events, meanWeight, value);
    }
    m_events.Clear();
  }

  void SubtractEvent(double fraction, double weight, PlainValue& value) {
    const std::size_t p = value.U.size();
    const double D = m_risk.S0.Value() - fraction * m_events.S0.Value();
    m_likelihood.Add(-std::log(D) * weight);
    for (std::size_t j = 0; j < p; ++j) {
      m_mean[j] = (m_risk.S1[j] - fraction * m_events.S1[j]) / D;
      value.U[j] -= m_mean[j] * weight;
    }
    const double q = 1.0 / D;
    for (std::size_t j = 0; j < p; ++j) {
      double* H = value.H.data() + PackedSize(j);
      const double* S2 = m_risk.S2.data() + PackedSize(j);
      const double* E2 = m_events.S2.data() + PackedSize(j);
      const double a = m_mean[j];
      for (std::size_t l = 0; l <= j; ++l) H[l] += ((S2[l] - fraction * E2[l]) * q - m_mean[l] * a) * weight;
    }
  }

  const PlainCases m_cases;
  const int m_efronStep;
  TieTable m_ties;
  std::optional<StartOrder> m_starts;  // of intervals
  PlainSums m_risk;
  PlainSums m_events;
  std::vector<double> m_mean;
  CompensatedSum m_likelihood;
};

}  // namespace orv::testing
