#include "fit/RiskSums.h"

#include <cmath>

#include "data/RoundHalfAway.h"
#include "fit/PassKernels.h"

namespace orv {

RiskSums::RiskSums(Host& host, int p, int efronStep)
    : m_p(p),
      m_efronStep(efronStep),
      m_S1(host, static_cast<std::size_t>(p)),
      m_S2(host, PackedSize(static_cast<std::size_t>(p))),
      m_E1(host, static_cast<std::size_t>(p)),
      m_E2(host, PackedSize(static_cast<std::size_t>(p))),
      m_H(host, PackedSize(static_cast<std::size_t>(p))),
      m_mean(host, static_cast<std::size_t>(p)) {}

bool RiskSums::Failed() const {
  return m_S1.Failed() || m_S2.Failed() || m_E1.Failed() || m_E2.Failed() || m_H.Failed() || m_mean.Failed();
}

void RiskSums::StartPass() {
  ClearRiskSet();
  ClearEvents();
  m_H.Clear();
}

void RiskSums::ClearRiskSet() {
  m_S0 = {};
  m_S1.Clear();
  m_S2.Clear();
}

void RiskSums::ClearEvents() {
  m_E0 = 0.0;
  m_E1.Clear();
  m_E2.Clear();
}

void RiskSums::Join(const double* x, double wr) {
  m_S0.Add(wr);
  AddWeighted(m_S1.Data(), m_S2.Data(), x, wr, m_p);
}

void RiskSums::Leave(const double* x, double wr) {
  Join(x, -wr);
}

void RiskSums::AddEvent(const double* x, double wr) {
  m_E0 += wr;
  if (m_efronStep != 0) AddWeighted(m_E1.Data(), m_E2.Data(), x, wr, m_p);
}

void RiskSums::AddEvent(const double* x, double wr, double eta, double weight, CompensatedSum& L, double* U) {
  L.Add(eta * weight);
  for (int j = 0; j < m_p; ++j) U[j] += x[j] * weight;
  AddEvent(x, wr);
}

void RiskSums::CloseGroup(double events, double meanWeight, bool atZero, CompensatedSum& L, double* U) {
  EventTerm term{m_S1.Data(), m_S2.Data(), m_E1.Data(), m_E2.Data()};
  term.Weight = meanWeight;
  const double riskSum = m_S0.Value();
  const double reciprocal = 1.0 / events;
  int terms = static_cast<int>(RoundHalfAway(events));
  if (m_efronStep == 0) {
    // The terms of Breslow's rule are equal. Taken at once they cost a d-th, and their rounding does not add up.
    term.Weight *= terms;
    terms = 1;
  }
  for (int k = 0; k < terms; ++k) {
    // Two forms of one number, kept apart so that the null log likelihood keeps its last digit.
    const double share = static_cast<double>(k) * m_efronStep;
    term.Fraction = atZero ? share * reciprocal : share / events;
    term.Denominator = riskSum - term.Fraction * m_E0;
    L.Add(-std::log(term.Denominator) * term.Weight);
    SubtractEventTerm(term, U, m_H.Data(), m_mean.Data(), m_p);
  }
  m_E0 = 0.0;
  if (m_efronStep != 0) ClearEvents();
}

void RiskSums::CopyInformation(double** H) const {
  CopyPackedToUpper(m_H.Data(), H, m_p);
}

}  // namespace orv
