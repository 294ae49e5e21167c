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
// S0 is kept from row to row. All else is put off: rows wait in a block, and a group leaves with the block what it
// takes. A full block then goes into H as one product of matrices, since with r = m / D of a group
//
//   sum over groups of r (S2 / D - a a')  =  sum over rows i of the risk set of
//                                            wr_i (R_i x_i - V_i) x_i',   R_i = sum of r,  V_i = sum of r a,
//
// both over the groups that find row i at risk. The rows before the block share one R and one V, so that S2 and S1
// stand for them. S2 takes the block as another product, so a row costs p^2 multiplications, all of them in products
// of matrices.
//
// The d means of a tied group under Efron's rule lie on a line, a = u + g v with u = S1 / S0, v = (E0 / S0) u - E1 / S0
// and g = f S0 / D, so that two rows stand for all of them: they wait in a block of their own, for a third product.
//
// Sources: Breslow (1974), Efron (1977); the sums by blocks are this program's own.
class RiskSums {
 public:
  static constexpr int kBlockRows = 64;

  // efronStep: 0 Breslow, 1 Efron.
  RiskSums(Host& host, int p, int efronStep, const PassKernels& kernels = KernelsOfThisMachine());

  bool Failed() const;
  // For the head of a pass: empties everything, the information too. `origin`: p values that are taken off those of
  // every row, null for none. Score and information are those of differences between rows, so a column that is the same
  // in all of them gives exact zeros with its value as the origin, and else what rounding leaves of it. REQUIRES, with
  // an origin: the groups' mean weights times their events are the weights of AddEvent.
  void StartPass(const double* origin = nullptr);
  // For a new stratum, or a risk set that is built anew. Events of the open group stay.
  void ClearRiskSet();
  void ClearEvents() { ForgetEvents(m_count); }

  // The place in the block for the p values of the row that joins next, and how many rows there is room for from it on.
  // Their places are PaddedOrder(p) apart. The first call may settle the rows that wait, and have `next` fetched
  // meanwhile.
  double* NextRow(const ComingStore& next = {}) {
    if (m_count == kBlockRows) FlushBlock(next);
    return Row(m_count);
  }
  int Room() const { return kBlockRows - m_count; }

  // The `count` rows from NextRow on join the risk set. A number for each: wr; whether it is an event, 1 or 0; and what
  // an event times its values brings into the score.
  void JoinRows(int count, const double* wr, const double* isEvent, const double* weight);
  // A row joins the risk set. x: p values, which are copied.
  void Join(const double* x, double wr) {
    double* row = NextRow();
    m_kernels.CopyRows(x, 0, row, 1, m_p);
    if (m_hasOrigin) m_kernels.SubtractRow(row, m_origin.Row(0), 1, m_p);
    m_S0.Add(wr);
    NoteRow(static_cast<std::size_t>(m_count++), m_S0, wr, 0.0, 0.0);
  }
  // A row leaves it.
  void Leave(const double* x, double wr) { Join(x, -wr); }

  // The row that joined last is an event of the open group, and brings x times `weight` into the score. A weight of 0:
  // the caller takes care of the score.
  void AddEvent(double weight = 0.0) {
    const auto at = static_cast<std::size_t>(m_count - 1);
    m_eventWr[at] = m_wr[at];
    m_eventWeight[at] = weight;
  }
  // Closes the open group on the row that joined last. `atZero`: the pass runs at the zero vector.
  void CloseGroup(double events, double meanWeight, bool atZero) {
    CloseGroup(m_count - 1, events, meanWeight, atZero);
  }

  // The same for one of the rows that wait, by its place from 0: a pass may let a whole block join first, and then
  // close its groups in the order of their rows.
  int Waiting() const { return m_count; }
  void CloseGroup(int row, double events, double meanWeight, bool atZero);

  // Ends a pass: adds what the groups took off the log likelihood L, what they and the events brought to the score U,
  // and to the upper triangle of the information H. Rows may not join afterwards.
  void EndPass(CompensatedSum& L, double* U, double** H);

  double S0() const { return m_S0.Value(); }
  // p values, relative to the origin; until a row joins.
  const double* S1() { return S1After(m_count); }

 private:
  // What the terms of a tied group come to.
  struct GroupTerms;

  void NoteRow(std::size_t at, const CompensatedSum& S0, double wr, double isEvent, double weight) {
    m_S0Here[at] = S0;
    m_wr[at] = wr;
    m_eventWr[at] = wr * isEvent;
    m_eventWeight[at] = weight * isEvent;
  }
  void ForgetEvents(int rows);
  GroupTerms TermsOf(int row, int events, double meanWeight, bool atZero);
  void CloseTiedGroup(int row, int events, double meanWeight, bool atZero);
  void SubtractLogarithm(double weight, double denominator, double lost);
  void FlushLogarithms();
  void TakeLineOfMeans(int row, int events, double meanWeight, const GroupTerms& terms);
  void FlushMeans();
  const double* S1After(int rows);
  double OpenEventRisks(int rows) const;
  void AddOpenEvents(double* E1, int rows);
  void SettleEvents(int rows, double share);
  void CarryOpenEvents();
  void AddSquares(PaddedRows& M, const double* factors, int first, int count, const ComingStore& next);
  void AddToInformation(const PaddedRows& M, double factor);
  double SumShares(int first);
  void SettleSegment(bool endsBlock);
  void AddBlockToInformation(const ComingStore& next);
  void FlushBlock(const ComingStore& next);
  void EmptyBlock();

  // Place 0 of a block is for what stands for the rows before it.
  double* Row(int row) { return m_block.Row(row + 1); }
  double* Left(int row) { return m_left.Row(row + 1); }

  const int m_p;
  const int m_efronStep;
  const PassKernels& m_kernels;
  PaddedRows m_origin;
  bool m_hasOrigin = false;
  CompensatedSum m_S0;
  CompensatedSum m_L;
  PaddedRows m_U;
  PaddedRows m_H;

  // The rows that wait. Those before m_segment belong to risk sets that are done with.
  PaddedRows m_block;
  PaddedRows m_left;  // once the segment is settled: the rows' left factors in H
  PaddedRows m_pull;  // the sum of r a over a segment
  int m_count = 0;
  int m_segment = 0;
  int m_firstOfGroup = 0;     // the first row after the group that closed last
  int m_closedRows = 0;       // the rows up to the group that closed last
  bool m_hasCarried = false;  // place 0 of the block is filled
  // A number for each row of the block.
  WorkArray<CompensatedSum> m_S0Here;  // S0 once the row has joined
  WorkArray<double> m_wr;
  WorkArray<double> m_eventWr;      // wr of an event, 0 of others
  WorkArray<double> m_eventWeight;  // what its values bring into the score
  WorkArray<double> m_reciprocal;   // where a group closes: sum of m / D
  WorkArray<double> m_r;            // the same where its means are centred row by row, else 0
  WorkArray<double> m_q;            // 1 / S0 there
  WorkArray<double> m_share;
  WorkArray<double> m_score;

  // Of the risk set's rows before the segment.
  PaddedRows m_S1;
  PaddedRows m_S2;
  bool m_hasRowsBefore = false;
  double m_shareOfBefore = 0.0;  // of S2 in H, once the block is settled
  // Of the open group's events before the block.
  double m_E0 = 0.0;
  PaddedRows m_E1;
  PaddedRows m_E2;
  bool m_hasE2 = false;

  PaddedRows m_S1Here;  // S1 with the first m_summed rows of the block, once that is asked for
  int m_summed = -1;
  PaddedRows m_means;  // of tied groups, one after the other
  PaddedRows m_leftOfMeans;
  int m_meanCount = 0;

  // Denominators that wait for their logarithms.
  WorkArray<double> m_denominator;
  WorkArray<double> m_lostByDenominator;
  WorkArray<double> m_factor;
  WorkArray<double> m_term;
  WorkArray<double> m_restOfTerm;
  int m_logarithms = 0;
};

}  // namespace orv
