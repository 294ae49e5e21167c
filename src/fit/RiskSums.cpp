#include "fit/RiskSums.h"

#include <algorithm>
#include <cfenv>
#include <limits>
#include <numeric>
#include <utility>

#include "data/RoundHalfAway.h"

namespace orv {

namespace {

// As many tied groups as are worth the start of a product.
constexpr int kMeanRows = 64;
// Weights and fractions down to a millionth, divided by a larger sum, are no normal numbers and flushed to zero.
constexpr double kLargestRiskSum = 1e-6 / std::numeric_limits<double>::min();

}  // namespace

struct RiskSums::GroupTerms {
  double EventRisks = 0.0;     // E0
  double Reciprocals = 0.0;    // sum of m / D
  double Fractions = 0.0;      // sum of m f / D
  double MeanPlace = 0.0;      // mean of g
  double SpreadOfPlace = 0.0;  // sum of (g - mean)^2
};

RiskSums::RiskSums(Host& host, int p, int efronStep, const PassKernels& kernels)
    : m_p(p),
      m_efronStep(efronStep),
      m_kernels(kernels),
      m_origin(host, 1, p),
      m_U(host, 1, p),
      m_H(host, p, p),
      m_block(host, kBlockRows + 1, p),
      m_left(host, kBlockRows + 1, p),
      m_pull(host, 1, p),
      m_S0Here(host, kBlockRows),
      m_wr(host, kBlockRows),
      m_eventWr(host, kBlockRows),
      m_eventWeight(host, kBlockRows),
      m_reciprocal(host, kBlockRows),
      m_r(host, kBlockRows),
      m_q(host, kBlockRows),
      m_share(host, kBlockRows),
      m_score(host, kBlockRows),
      m_S1(host, 1, p),
      m_S2(host, p, p),
      m_E1(host, 1, p),
      m_E2(host, p, p),
      m_S1Here(host, 1, p),
      m_means(host, kMeanRows, p),
      m_leftOfMeans(host, kMeanRows, p),
      m_denominator(host, kBlockRows),
      m_lostByDenominator(host, kBlockRows),
      m_factor(host, kBlockRows),
      m_term(host, kBlockRows),
      m_restOfTerm(host, kBlockRows) {}

bool RiskSums::Failed() const {
  return m_origin.Failed() || m_U.Failed() || m_H.Failed() || m_block.Failed() || m_left.Failed() || m_pull.Failed() ||
         m_S0Here.Failed() || m_wr.Failed() || m_eventWr.Failed() || m_eventWeight.Failed() || m_reciprocal.Failed() ||
         m_r.Failed() || m_q.Failed() || m_share.Failed() || m_score.Failed() || m_S1.Failed() || m_S2.Failed() ||
         m_E1.Failed() || m_E2.Failed() || m_S1Here.Failed() || m_means.Failed() || m_leftOfMeans.Failed() ||
         m_denominator.Failed() || m_lostByDenominator.Failed() || m_factor.Failed() || m_term.Failed() ||
         m_restOfTerm.Failed();
}

void RiskSums::StartPass(const double* origin) {
  m_hasOrigin = origin != nullptr;
  if (m_hasOrigin) std::copy_n(origin, m_p, m_origin.Row(0));
  EmptyBlock();
  m_meanCount = 0;
  m_logarithms = 0;
  m_L = {};
  m_S0 = {};
  m_S1.Clear();
  m_S2.Clear();
  m_hasRowsBefore = false;
  ClearEvents();
  m_U.Clear();
  m_H.Clear();
}

void RiskSums::EmptyBlock() {
  m_count = 0;
  m_segment = 0;
  m_firstOfGroup = 0;
  m_closedRows = 0;
  m_hasCarried = false;
  m_shareOfBefore = 0.0;
  m_summed = -1;
  for (WorkArray<double>* numbers : {&m_reciprocal, &m_r, &m_q, &m_share}) {
    numbers->Clear();
  }
}

void RiskSums::ClearRiskSet() {
  CarryOpenEvents();
  SettleSegment(false);
  if (m_hasRowsBefore) m_S2.Clear();
  m_hasRowsBefore = false;
  m_S0 = {};
  m_S1.Clear();
}

// The open group has no events up to so many rows of the block.
void RiskSums::ForgetEvents(int rows) {
  m_firstOfGroup = rows;
  m_E0 = 0.0;
  if (!m_hasE2) return;
  m_E1.Clear();
  m_E2.Clear();
  m_hasE2 = false;
}

void RiskSums::JoinRows(int count, const double* wr, const double* isEvent, const double* weight) {
  if (m_hasOrigin) m_kernels.SubtractRow(Row(m_count), m_origin.Row(0), count, m_p);
  const auto first = static_cast<std::size_t>(m_count);
  CompensatedSum S0 = m_S0;  // stays in registers
  for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k) {
    S0.Add(wr[k]);
    NoteRow(first + k, S0, wr[k], isEvent[k], weight[k]);
  }
  m_S0 = S0;
  m_count += count;
}

void RiskSums::CloseGroup(int row, double events, double meanWeight, bool atZero) {
  const int count = static_cast<int>(RoundHalfAway(events));
  // Means and shares would be zeros without a word.
  if (m_S0Here[static_cast<std::size_t>(row)].Value() > kLargestRiskSum) std::feraiseexcept(FE_OVERFLOW);
  if (m_efronStep != 0 && count > 1) {
    CloseTiedGroup(row, count, meanWeight, atZero);
  } else {
    // Equal terms, taken at once: their rounding does not add up.
    const auto at = static_cast<std::size_t>(row);
    const double riskSum = m_S0Here[at].Value();
    const double weight = meanWeight * count;
    SubtractLogarithm(weight, riskSum, m_S0Here[at].Since(riskSum));
    m_q[at] = 1.0 / riskSum;
    m_r[at] += weight / riskSum;
    m_reciprocal[at] += weight / riskSum;
  }
  m_closedRows = row + 1;
  ForgetEvents(m_closedRows);
}

// The logarithm of denominator + lost, weighted, goes off the likelihood. They wait, since many take little longer than
// one; and they have more digits than a double, since a step near the maximum gains less than their rounding adds up
// to. Of the later denominators of a tied group only S0 has them, too.
void RiskSums::SubtractLogarithm(double weight, double denominator, double lost) {
  if (m_logarithms == kBlockRows) FlushLogarithms();
  const auto at = static_cast<std::size_t>(m_logarithms++);
  m_denominator[at] = denominator;
  m_lostByDenominator[at] = lost;
  m_factor[at] = -weight;
}

void RiskSums::FlushLogarithms() {
  const auto count = static_cast<std::size_t>(m_logarithms);
  // To the next whole vector: their logarithm is 0.
  for (std::size_t at = count; at % kVectorDoubles != 0; ++at) m_denominator[at] = 1.0;
  m_kernels.Logarithms(m_denominator.Data(), m_lostByDenominator.Data(), m_factor.Data(), m_term.Data(),
                       m_restOfTerm.Data(), m_logarithms);
  for (std::size_t at = 0; at < count; ++at) m_L.Add(m_term[at], m_restOfTerm[at]);
  m_logarithms = 0;
}

RiskSums::GroupTerms RiskSums::TermsOf(int row, int events, double meanWeight, bool atZero) {
  GroupTerms terms;
  const CompensatedSum& S0 = m_S0Here[static_cast<std::size_t>(row)];
  const double riskSum = S0.Value();
  const double lost = S0.Since(riskSum);
  terms.EventRisks = OpenEventRisks(row + 1);
  const double count = events;
  const double reciprocal = 1.0 / count;
  for (int k = 0; k < events; ++k) {
    // Two forms of one number, kept apart so that the null log likelihood keeps its last digit.
    const double share = k;
    const double fraction = atZero ? share * reciprocal : share / count;
    const double denominator = riskSum - fraction * terms.EventRisks;
    SubtractLogarithm(meanWeight, denominator, lost);
    terms.Reciprocals += meanWeight / denominator;
    terms.Fractions += meanWeight * (fraction / denominator);
    const double place = fraction * (riskSum / denominator);
    const double change = place - terms.MeanPlace;
    terms.MeanPlace += change / (k + 1);
    terms.SpreadOfPlace += change * (place - terms.MeanPlace);
  }
  return terms;
}

void RiskSums::CloseTiedGroup(int row, int events, double meanWeight, bool atZero) {
  const GroupTerms terms = TermsOf(row, events, meanWeight, atZero);
  TakeLineOfMeans(row, events, meanWeight, terms);
  SettleEvents(row + 1, terms.Fractions);
  m_reciprocal[static_cast<std::size_t>(row)] += terms.Reciprocals;
}

// The means a = u + g v of a tied group: their mean, as often as there are events, and their spread along v.
void RiskSums::TakeLineOfMeans(int row, int events, double meanWeight, const GroupTerms& terms) {
  if (m_meanCount == kMeanRows) FlushMeans();
  const double q = 1.0 / m_S0Here[static_cast<std::size_t>(row)].Value();
  double* u = m_means.Row(m_meanCount);
  double* v = m_means.Row(m_meanCount + 1);
  std::copy_n(m_E1.Row(0), m_p, v);
  AddOpenEvents(v, row + 1);
  m_kernels.Scale(u, S1After(row + 1), q, m_p);
  m_kernels.Scale(v, v, -q, m_p);
  m_kernels.AddScaled(v, u, terms.EventRisks * q, m_p);
  m_kernels.AddScaled(u, v, terms.MeanPlace, m_p);
  m_kernels.Scale(m_leftOfMeans.Row(m_meanCount), u, -meanWeight * events, m_p);
  m_kernels.Scale(m_leftOfMeans.Row(m_meanCount + 1), v, -meanWeight * terms.SpreadOfPlace, m_p);
  m_meanCount += 2;
}

void RiskSums::FlushMeans() {
  m_kernels.AddProducts(m_H.Row(0), m_leftOfMeans.Row(0), m_means.Row(0), m_meanCount, m_p, {}, {});
  m_meanCount = 0;
}

// S1 once so many rows of the block have joined.
const double* RiskSums::S1After(int rows) {
  if (m_summed < m_segment || m_summed > rows) {
    std::copy_n(m_S1.Row(0), m_p, m_S1Here.Row(0));
    m_summed = m_segment;
  }
  m_kernels.AddCombination(m_S1Here.Row(0), Row(m_summed), m_wr.Data() + m_summed, rows - m_summed, m_p);
  m_summed = rows;
  return m_S1Here.Row(0);
}

// E0 with the open group's events among the first `rows` of the block.
double RiskSums::OpenEventRisks(int rows) const {
  return std::accumulate(m_eventWr.Data() + m_firstOfGroup, m_eventWr.Data() + rows, m_E0);
}

// Those events into E1.
void RiskSums::AddOpenEvents(double* E1, int rows) {
  const int first = m_firstOfGroup;
  m_kernels.AddCombination(E1, Row(first), m_eventWr.Data() + first, rows - first, m_p);
}

// The events of the group that closes lose `share` of their part in score and information.
void RiskSums::SettleEvents(int rows, double share) {
  for (int row = m_firstOfGroup; row < rows; ++row) {
    const auto at = static_cast<std::size_t>(row);
    m_share[at] -= m_eventWr[at] * share;
  }
  if (!m_hasE2) return;
  AddToInformation(m_E2, -share);
  m_kernels.AddScaled(m_U.Row(0), m_E1.Row(0), share, m_p);
}

// M += factors_i x_i x_i' over rows of the block whose segment is not settled yet.
void RiskSums::AddSquares(PaddedRows& M, const double* factors, int first, int count, const ComingStore& next) {
  m_kernels.ScaleRows(Row(first), factors + first, Left(first), count, m_p);
  m_kernels.AddProducts(M.Row(0), Left(first), Row(first), count, m_p, {}, next);
}

// H += factor M, lower triangles.
void RiskSums::AddToInformation(const PaddedRows& M, double factor) {
  for (int j = 0; j < m_p; ++j) m_kernels.AddScaled(m_H.Row(j), M.Row(j), factor, j + 1);
}

// The open group's events so far go into E2, since their rows leave the block or their risk set ends.
void RiskSums::CarryOpenEvents() {
  const int first = m_firstOfGroup;
  const double* events = m_eventWr.Data();
  const bool hasEvents = std::any_of(events + first, events + m_count, [](double wr) { return wr != 0.0; });
  if (m_efronStep != 0 && hasEvents) {
    m_E0 = OpenEventRisks(m_count);
    AddOpenEvents(m_E1.Row(0), m_count);
    AddSquares(m_E2, events, first, m_count - first, {});
    m_hasE2 = true;
  }
  m_firstOfGroup = m_count;
}

// The shares of the rows from `first` on, by what the groups that closed have left for them. Returns the sum of 1 / D,
// the share of the rows before.
double RiskSums::SumShares(int first) {
  double reciprocals = 0.0;
  for (int row = m_count; row-- > first;) {
    const auto at = static_cast<std::size_t>(row);
    reciprocals += m_reciprocal[at];
    m_share[at] += m_wr[at] * reciprocals;
    m_score[at] = m_eventWeight[at] - m_share[at];
  }
  return reciprocals;
}

// The rows of the risk set take what the groups that closed have left for them, and go into S1.
void RiskSums::SettleSegment(bool endsBlock) {
  const int first = std::exchange(m_segment, m_count);
  const auto at = static_cast<std::size_t>(first);
  const int count = m_count - first;
  m_summed = -1;
  if (endsBlock && m_closedRows <= first) {
    m_kernels.AddCombination(m_S1.Row(0), Row(first), m_wr.Data() + at, count, m_p);
    m_kernels.AddCombination(m_U.Row(0), Row(first), m_eventWeight.Data() + at, count, m_p);
    return;
  }
  const double reciprocals = SumShares(first);
  const RowTerms terms{m_wr.Data() + at, m_share.Data() + at, m_score.Data() + at, m_q.Data() + at, m_r.Data() + at};
  double* pull = m_pull.Row(0);
  const bool carries = m_hasRowsBefore && reciprocals != 0.0;
  if (carries) {
    // S2 waits for the product of the block, if it lives so long.
    m_shareOfBefore = endsBlock ? reciprocals : 0.0;
    if (!endsBlock) AddToInformation(m_S2, reciprocals);
    m_kernels.AddScaled(m_U.Row(0), m_S1.Row(0), -reciprocals, m_p);
    std::copy_n(m_S1.Row(0), m_p, m_block.Row(0));
    pull = m_left.Row(0);
  }
  m_kernels.CentreRows(Row(first), terms, m_S1.Row(0), m_U.Row(0), pull, Left(first), count, m_p);
  if (carries) {
    m_kernels.Scale(pull, pull, -1.0, m_p);
    m_hasCarried = true;
  }
}

void RiskSums::AddBlockToInformation(const ComingStore& next) {
  if (m_closedRows == 0) return;
  const int first = m_hasCarried ? -1 : 0;
  const ScaledMatrix before = m_shareOfBefore == 0.0 ? ScaledMatrix{} : ScaledMatrix{m_S2.Row(0), m_shareOfBefore};
  m_kernels.AddProducts(m_H.Row(0), Left(first), Row(first), m_closedRows - first, m_p, before, next);
}

void RiskSums::FlushBlock(const ComingStore& next) {
  CarryOpenEvents();
  const int first = m_segment;
  SettleSegment(true);
  // What comes next is fetched in the time of both products.
  const std::size_t early = m_closedRows > 0 ? next.bytes / 2 : 0;
  AddBlockToInformation({next.first, early});
  AddSquares(m_S2, m_wr.Data(), first, m_count - first,
             {static_cast<const char*>(next.first) + early, next.bytes - early});
  m_hasRowsBefore = true;
  EmptyBlock();
}

void RiskSums::EndPass(CompensatedSum& L, double* U, double** H) {
  SettleSegment(true);
  AddBlockToInformation({});
  FlushMeans();
  FlushLogarithms();
  EmptyBlock();
  L.Add(m_L.Value(), m_L.Since(m_L.Value()));
  for (int j = 0; j < m_p; ++j) {
    U[j] += m_U.Row(0)[j];
    for (int l = 0; l <= j; ++l) H[l][j] += m_H.Row(j)[l];
  }
}

}  // namespace orv
