// The sums over a risk set and over the events of an open tied group, and what a group takes off the likelihood.
#pragma once

#include "fit/CompensatedSum.h"
#include "host/WorkArray.h"

namespace orv {

// With wr = weight * exp(eta) of a row, x its design values, and U and H the score and packed information of the pass:
//
//   S0, S1, S2   over the risk set: sum of wr, wr x, wr x x'
//   E0, E1, E2   the same over the events of the open tied group
//
// A group of d events with mean weight m takes, for k = 0..d-1 and f = efronStep k / d,
//   m log(S0 - f E0) off the log likelihood, and the matching terms into U and H (see SubtractEventTerm).
class RiskSums {
 public:
  // efronStep: 0 Breslow, 1 Efron. Breslow reads no E1 and E2, so they are not kept then.
  RiskSums(Host& host, int p, int efronStep);

  bool Failed() const;
  // For the head of a pass: empties everything, the information too.
  void StartPass();
  // For a new stratum, or a risk set that is built anew.
  void ClearRiskSet();
  void ClearEvents();

  // A row joins the risk set.
  void Join(const double* x, double wr);
  // A row leaves it.
  void Leave(const double* x, double wr);
  // A row of the risk set is an event of the open group.
  void AddEvent(const double* x, double wr);
  // The same, with what the event brings into likelihood and score: eta times its weight, and x times its weight.
  void AddEvent(const double* x, double wr, double eta, double weight, CompensatedSum& L, double* U);
  // Closes the open group. `atZero`: the pass runs at the zero vector.
  void CloseGroup(double events, double meanWeight, bool atZero, CompensatedSum& L, double* U);

  // The information into the upper triangle of a matrix.
  void CopyInformation(double** H) const;

  double S0() const { return m_S0.Value(); }
  const double* S1() const { return m_S1.Data(); }
  const double* S2() const { return m_S2.Data(); }
  double* Information() { return m_H.Data(); }

 private:
  const int m_p;
  const int m_efronStep;
  CompensatedSum m_S0;
  double m_E0 = 0.0;
  WorkArray<double> m_S1;
  WorkArray<double> m_S2;
  WorkArray<double> m_E1;
  WorkArray<double> m_E2;
  WorkArray<double> m_H;
  WorkArray<double> m_mean;  // work area of the event terms
};

}  // namespace orv
