// The sums over a risk set and over the events of an open tied group, and what a group takes off the likelihood.
#pragma once

#include <cstddef>

#include "fit/CompensatedSum.h"
#include "fit/PaddedRows.h"
#include "fit/PassKernels.h"
#include "host/WorkArray.h"

namespace orv {

// With wr = weight * exp(eta) of a row, x its design values, and U and H the score and information of the pass:
//
//   S0, S1, S2   over the risk set: sum of wr, wr x, wr x x'
//   E0, E1, E2   the same over the events of the open tied group
//
// A group of d events with mean weight m takes, for k = 0..d-1, f = efronStep k / d and D = S0 - f E0,
//
//   L -= m log D;   a = (S1 - f E1) / D;   U -= m a;   H += m ((S2 - f E2) / D - a a')
//
// The sums S0 and S1 are kept from row to row. What costs p^2 is put off: rows wait in a block, and a group leaves its
// share of 1 / D with the rows of the block that it found at risk. A full block then goes into H as one product of
// matrices, since
//
//   sum over groups of S2 / D  =  (S2 of the rows before the block) times (sum of 1 / D of the block's groups)
//                                 + sum over rows i of the block of wr_i (sum of 1 / D of the groups after i) x_i x_i',
//
// into S2 as another, and the means a of the groups as a third. The d means of a tied group lie on a line,
// a = u + g v with u = S1 / S0, v = (E0 / S0) u - E1 / S0 and g = f S0 / D, so that two rows stand for all of them.
//
// Sources: Breslow (1974), Efron (1977); the sums by blocks are this program's own.
class RiskSums {
 public:
  // efronStep: 0 Breslow, 1 Efron.
  RiskSums(Host& host, int p, int efronStep, const PassKernels& kernels = KernelsOfThisMachine());

  bool Failed() const;
  // For the head of a pass: empties everything, the information too.
  void StartPass();
  // For a new stratum, or a risk set that is built anew. Events of the open group stay.
  void ClearRiskSet();
  void ClearEvents();

  // A row joins the risk set. x: p values, which are copied.
  void Join(const double* x, double wr);
  // The same for values that are padded as a row of a block.
  void JoinPadded(const double* x, double wr);
  // A row leaves it.
  void Leave(const double* x, double wr) { Join(x, -wr); }
  // The row that joined last is an event of the open group.
  void AddEvent();
  // The same, with what the event brings into likelihood and score: eta times its weight, and x times its weight.
  void AddEvent(double eta, double weight, CompensatedSum& L);
  // Closes the open group. `atZero`: the pass runs at the zero vector.
  void CloseGroup(double events, double meanWeight, bool atZero, CompensatedSum& L);

  // Ends a pass: adds what the events and groups brought to the score U, and to the upper triangle of the information
  // H. Rows may not join afterwards.
  void EndPass(double* U, double** H);

  double S0() const { return m_S0.Value(); }
  const double* S1() const { return m_S1.Row(0); }

 private:
  // What the terms of a group come to.
  struct GroupTerms;

  void Enter(const double* x, double wr);
  GroupTerms TermsOf(double events, double meanWeight, bool atZero, CompensatedSum& L) const;
  void TakeLineOfMeans(double q, double weight, double meanWeight, const GroupTerms& terms);
  double* NextMean(double weight, double scoreWeight);
  void FlushMeans();
  void AddEventsToScore();
  void SumOpenEvents(double* E1);
  void SettleEvents(double share);
  void CarryOpenEvents();
  void AddToInformation(const PaddedRows& M, double factor);
  void SettleSegment();
  void AddBlockToInformation();
  void FlushBlock();

  const int m_p;
  const int m_efronStep;
  const PassKernels& m_kernels;
  CompensatedSum m_S0;
  double m_E0 = 0.0;
  PaddedRows m_S1;
  PaddedRows m_E1;  // of the open group's events before the block; with m_hasE2
  PaddedRows m_U;

  // The rows that wait. Those before m_segment belong to risk sets that are done with.
  PaddedRows m_block;
  int m_count = 0;
  int m_segment = 0;
  int m_firstOfGroup = 0;           // the first row after the group that closed last
  WorkArray<double> m_wr;           // a row
  WorkArray<double> m_eventWr;      // a row: wr of an event of the open group, 0 of others
  WorkArray<double> m_eventWeight;  // a row: what its values bring into the score
  WorkArray<double> m_share;        // a row: its share in H
  WorkArray<double> m_reciprocal;   // by number of rows: sum of m / D over the groups that closed on so many

  PaddedRows m_S2;  // of the rows of the risk set before the block
  PaddedRows m_E2;  // of the open group's events before the block
  PaddedRows m_H;
  bool m_hasS2 = false;
  bool m_hasE2 = false;

  PaddedRows m_means;               // of the groups, one after the other
  WorkArray<double> m_meanWeight;   // minus the weights in H
  WorkArray<double> m_scoreWeight;  // minus the weights in U
  int m_meanCount = 0;
};

}  // namespace orv
