#include "fit/RiskSums.h"

#include <algorithm>
#include <cmath>

#include "data/RoundHalfAway.h"

namespace orv {

namespace {

// Enough rows for the products to be worth their start, and few enough for the blocks to stay in the cache.
constexpr int kBlockRows = 64;
constexpr int kMeanRows = 64;

}  // namespace

struct RiskSums::GroupTerms {
  int Count = 0;
  double Reciprocals = 0.0;    // sum of m / D
  double Fractions = 0.0;      // sum of m f / D
  double MeanPlace = 0.0;      // mean of g
  double SpreadOfPlace = 0.0;  // sum of (g - mean)^2
};

RiskSums::RiskSums(Host& host, int p, int efronStep, const PassKernels& kernels)
    : m_p(p),
      m_efronStep(efronStep),
      m_kernels(kernels),
      m_S1(host, 1, p),
      m_E1(host, 1, p),
      m_U(host, 1, p),
      m_block(host, kBlockRows, p),
      m_wr(host, kBlockRows),
      m_eventWr(host, kBlockRows),
      m_eventWeight(host, kBlockRows),
      m_share(host, kBlockRows),
      m_reciprocal(host, kBlockRows + 1),
      m_S2(host, p, p),
      m_E2(host, p, p),
      m_H(host, p, p),
      m_means(host, kMeanRows, p),
      m_meanWeight(host, kMeanRows),
      m_scoreWeight(host, kMeanRows) {}

bool RiskSums::Failed() const {
  return m_S1.Failed() || m_E1.Failed() || m_U.Failed() || m_block.Failed() || m_wr.Failed() || m_eventWr.Failed() ||
         m_eventWeight.Failed() || m_share.Failed() || m_reciprocal.Failed() || m_S2.Failed() || m_E2.Failed() ||
         m_H.Failed() || m_means.Failed() || m_meanWeight.Failed() || m_scoreWeight.Failed();
}

void RiskSums::StartPass() {
  m_count = 0;
  m_segment = 0;
  m_firstOfGroup = 0;
  m_meanCount = 0;
  m_reciprocal.Clear();
  m_S0 = {};
  m_S1.Clear();
  m_S2.Clear();
  m_hasS2 = false;
  ClearEvents();
  m_U.Clear();
  m_H.Clear();
}

void RiskSums::ClearRiskSet() {
  CarryOpenEvents();
  SettleSegment();
  if (m_hasS2) m_S2.Clear();
  m_hasS2 = false;
  m_S0 = {};
  m_S1.Clear();
}

void RiskSums::ClearEvents() {
  m_E0 = 0.0;
  m_firstOfGroup = m_count;
  if (!m_hasE2) return;
  m_E1.Clear();
  m_E2.Clear();
  m_hasE2 = false;
}

void RiskSums::Join(const double* x, double wr) {
  if (m_count == kBlockRows) FlushBlock();
  double* row = m_block.Row(m_count);
  std::copy_n(x, m_p, row);
  Enter(row, wr);
}

void RiskSums::JoinPadded(const double* x, double wr) {
  if (m_count == kBlockRows) FlushBlock();
  Enter(x, wr);
}

void RiskSums::Enter(const double* x, double wr) {
  const auto at = static_cast<std::size_t>(m_count);
  m_kernels.Join(x, wr, m_block.Row(m_count), m_S1.Row(0), m_p);
  m_S0.Add(wr);
  m_wr[at] = wr;
  m_eventWr[at] = 0.0;
  m_eventWeight[at] = 0.0;
  m_share[at] = 0.0;
  ++m_count;
}

void RiskSums::AddEvent() {
  const auto at = static_cast<std::size_t>(m_count - 1);
  m_E0 += m_wr[at];
  if (m_efronStep != 0) m_eventWr[at] = m_wr[at];
}

void RiskSums::AddEvent(double eta, double weight, CompensatedSum& L) {
  L.Add(eta * weight);
  m_eventWeight[static_cast<std::size_t>(m_count - 1)] = weight;
  AddEvent();
}

RiskSums::GroupTerms RiskSums::TermsOf(double events, double meanWeight, bool atZero, CompensatedSum& L) const {
  GroupTerms terms;
  terms.Count = static_cast<int>(RoundHalfAway(events));
  const double riskSum = m_S0.Value();
  if (m_efronStep == 0 || terms.Count == 1) {
    // Equal terms, taken at once: their rounding does not add up.
    const double weight = meanWeight * terms.Count;
    L.Add(-std::log(riskSum) * weight);
    terms.Reciprocals = weight / riskSum;
    return terms;
  }
  const double reciprocal = 1.0 / events;
  for (int k = 0; k < terms.Count; ++k) {
    // Two forms of one number, kept apart so that the null log likelihood keeps its last digit.
    const double share = k;
    const double fraction = atZero ? share * reciprocal : share / events;
    const double denominator = riskSum - fraction * m_E0;
    L.Add(-std::log(denominator) * meanWeight);
    terms.Reciprocals += meanWeight / denominator;
    terms.Fractions += meanWeight * (fraction / denominator);
    const double place = fraction * (riskSum / denominator);
    const double change = place - terms.MeanPlace;
    terms.MeanPlace += change / (k + 1);
    terms.SpreadOfPlace += change * (place - terms.MeanPlace);
  }
  return terms;
}

void RiskSums::CloseGroup(double events, double meanWeight, bool atZero, CompensatedSum& L) {
  const GroupTerms terms = TermsOf(events, meanWeight, atZero, L);
  const double q = 1.0 / m_S0.Value();
  const double weight = meanWeight * terms.Count;
  if (m_efronStep != 0 && terms.Count > 1) {
    TakeLineOfMeans(q, weight, meanWeight, terms);
    SettleEvents(terms.Fractions);
  } else {
    m_kernels.Scale(NextMean(weight, weight), m_S1.Row(0), q, m_p);
  }
  m_reciprocal[static_cast<std::size_t>(m_count)] += terms.Reciprocals;
  ClearEvents();
}

// The means a = u + g v of a tied group: their mean, as often as there are events, and their spread along v.
void RiskSums::TakeLineOfMeans(double q, double weight, double meanWeight, const GroupTerms& terms) {
  if (m_meanCount + 2 > kMeanRows) FlushMeans();
  double* u = NextMean(weight, weight);
  double* v = NextMean(meanWeight * terms.SpreadOfPlace, 0.0);
  std::copy_n(m_E1.Row(0), m_p, v);
  SumOpenEvents(v);
  m_kernels.Scale(u, m_S1.Row(0), q, m_p);
  m_kernels.Scale(v, v, -q, m_p);
  m_kernels.AddScaled(v, u, m_E0 * q, m_p);
  m_kernels.AddScaled(u, v, terms.MeanPlace, m_p);
}

// The open group's events of the block into E1.
void RiskSums::SumOpenEvents(double* E1) {
  const int first = m_firstOfGroup;
  m_kernels.AddCombination(E1, m_block.Row(first), m_eventWr.Data() + first, m_count - first, m_p);
}

// Room for a mean a, of which H loses weight a a' and the score scoreWeight a.
double* RiskSums::NextMean(double weight, double scoreWeight) {
  if (m_meanCount == kMeanRows) FlushMeans();
  const auto at = static_cast<std::size_t>(m_meanCount);
  m_meanWeight[at] = -weight;
  m_scoreWeight[at] = -scoreWeight;
  return m_means.Row(m_meanCount++);
}

void RiskSums::FlushMeans() {
  m_kernels.AddOuterProducts(m_H.Row(0), m_means.Row(0), m_meanWeight.Data(), m_meanCount, m_p);
  m_kernels.AddCombination(m_U.Row(0), m_means.Row(0), m_scoreWeight.Data(), m_meanCount, m_p);
  m_meanCount = 0;
}

void RiskSums::AddEventsToScore() {
  m_kernels.AddCombination(m_U.Row(0), m_block.Row(0), m_eventWeight.Data(), m_count, m_p);
}

// The events of the group that closes lose `share` of their part in H.
void RiskSums::SettleEvents(double share) {
  for (int row = m_firstOfGroup; row < m_count; ++row) {
    const auto at = static_cast<std::size_t>(row);
    m_share[at] -= m_eventWr[at] * share;
    m_eventWr[at] = 0.0;
  }
  if (m_hasE2) AddToInformation(m_E2, -share);
}

// H += factor M, lower triangles.
void RiskSums::AddToInformation(const PaddedRows& M, double factor) {
  for (int j = 0; j < m_p; ++j) m_kernels.AddScaled(m_H.Row(j), M.Row(j), factor, j + 1);
}

// The open group's events so far go into E2, since their rows leave the block or their risk set ends.
void RiskSums::CarryOpenEvents() {
  const int first = m_firstOfGroup;
  const double* eventWr = m_eventWr.Data();
  if (std::any_of(eventWr + first, eventWr + m_count, [](double wr) { return wr != 0.0; })) {
    SumOpenEvents(m_E1.Row(0));
    m_kernels.AddOuterProducts(m_E2.Row(0), m_block.Row(first), eventWr + first, m_count - first, m_p);
    m_hasE2 = true;
  }
  m_firstOfGroup = m_count;
}

// The rows of the risk set take what the groups that closed have left for them.
void RiskSums::SettleSegment() {
  double reciprocals = 0.0;
  for (int row = m_count; row-- > m_segment;) {
    const auto at = static_cast<std::size_t>(row);
    reciprocals += m_reciprocal[at + 1];
    m_reciprocal[at + 1] = 0.0;
    m_share[at] += m_wr[at] * reciprocals;
  }
  double& beforeFirst = m_reciprocal[static_cast<std::size_t>(m_segment)];
  reciprocals += beforeFirst;
  beforeFirst = 0.0;
  if (m_hasS2 && reciprocals != 0.0) AddToInformation(m_S2, reciprocals);
  m_segment = m_count;
}

void RiskSums::AddBlockToInformation() {
  int count = m_count;
  while (count > 0 && m_share[static_cast<std::size_t>(count) - 1] == 0.0) --count;
  m_kernels.AddOuterProducts(m_H.Row(0), m_block.Row(0), m_share.Data(), count, m_p);
}

void RiskSums::FlushBlock() {
  CarryOpenEvents();
  const int first = m_segment;
  SettleSegment();
  AddBlockToInformation();
  m_kernels.AddOuterProducts(m_S2.Row(0), m_block.Row(first), m_wr.Data() + first, m_count - first, m_p);
  m_hasS2 = true;
  AddEventsToScore();
  m_count = 0;
  m_segment = 0;
  m_firstOfGroup = 0;
}

void RiskSums::EndPass(double* U, double** H) {
  SettleSegment();
  AddBlockToInformation();
  AddEventsToScore();
  FlushMeans();
  m_count = 0;
  m_segment = 0;
  for (int j = 0; j < m_p; ++j) {
    U[j] += m_U.Row(0)[j];
    for (int l = 0; l <= j; ++l) H[l][j] += m_H.Row(j)[l];
  }
}

}  // namespace orv
