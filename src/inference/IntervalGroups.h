// The event times of one stratum of intervals (start, stop], with the sums over the rows at risk, and for each row the
// event times at which it is at risk.
#pragma once

#include <cstddef>
#include <vector>

#include "inference/StratumRows.h"

namespace orv {

class CCoxData;

// The group of an event time t. With e = weight times relative risk of a row:
struct IntervalGroup {
  int FirstRow = 0;   // the group's first event, from 1; its rows are a run
  int LastRow = 0;    // the last row that is tied with it, events and others
  double Time = 0.0;  // of FirstRow
  int d = 0;          // events
  double S0 = 0.0;    // sum of e over the rows at risk: start < t, from FirstRow to the end of the stratum
  double W = 0.0;     // weight of the events
  double E = 0.0;     // sum of e over the events
};

class IntervalGroups {
 public:
  // Which rows share an event time: those of the same double, or those within 15 units in the last place.
  enum class Ties { Exact, Near };
  enum class Moments { None, First };

  // `risks`: relative risk of every sorted row, from 0. O(n p + n log n) for the n rows of the stratum.
  IntervalGroups(const CCoxData& data,
                 const StratumRows& stratum,
                 const std::vector<double>& risks,
                 Ties ties,
                 Moments moments = Moments::None);

  // In ascending order of time.
  const std::vector<IntervalGroup>& Groups() const { return m_groups; }
  // Of group k, when moments are asked for: the sum of e x over the rows at risk, and over the events.
  const double* S1(std::size_t k) const { return m_S1.data() + k * m_p; }
  const double* T(std::size_t k) const { return m_T.data() + k * m_p; }

  // The groups [Begin, End) in whose risk sets a row of the stratum is. The last of them is the row's own for an event.
  struct Span {
    std::size_t Begin = 0;
    std::size_t End = 0;
  };
  const Span& SpanOf(int row) const { return m_spans[static_cast<std::size_t>(row - m_stratum.First)]; }

 private:
  void FindGroups(const std::vector<double>& risks);
  void SumRiskSets(const std::vector<double>& risks, Moments moments);
  // From the rows in the order of their starts, the latest first.
  void FindSpans(const std::vector<int>& byStart);

  const CCoxData& m_data;
  const StratumRows m_stratum;
  const Ties m_ties;
  std::size_t m_p = 0;  // columns of the moments
  std::vector<IntervalGroup> m_groups;
  std::vector<Span> m_spans;  // of the rows of the stratum
  std::vector<double> m_S1;
  std::vector<double> m_T;
};

}  // namespace orv
