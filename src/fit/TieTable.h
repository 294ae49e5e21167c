// The tied groups of a fit: on which row each group closes, with how many events of which mean weight.
#pragma once

#include <cstdint>

#include "data/CaseTable.h"
#include "host/WorkArray.h"

namespace orv {

// The columns of a case row that a fit reads, from 0.
struct CaseColumns {
  int Time = 0;      // survival time, or stop of the interval
  int Weight = 0;    // always holds a value; 1.0 in an unweighted analysis
  int Status = 0;    // 1.0 complete, 0.0 censored
  int Stratum = -1;  // -1 without strata
};

// Rows are 1 to n in ascending time within contiguous strata. Times within 15 units in the last place are tied; so are
// stratum values. Both arrays have n + 1 elements; element 0 is unused.
class TieTable {
 public:
  TieTable(Host& host, const CaseTable& cases, int n, const CaseColumns& columns);

  bool Failed() const { return m_deaths.Failed() || m_meanWeight.Failed() || m_lastOfStratum.Failed(); }
  // Events of the tied group that closes on this row, the group's first; 0 elsewhere and for groups without events.
  double Deaths(int row) const { return m_deaths[static_cast<std::size_t>(row)]; }
  // The most events of a group, at least 1: the size of a store for any of them.
  int LargestGroup() const { return m_largestGroup; }
  // Mean case weight of those events; only where Deaths is above 0.
  double MeanWeight(int row) const { return m_meanWeight[static_cast<std::size_t>(row)]; }
  // The row after this one belongs to another stratum. Always false on the last row and without strata.
  bool EndsStratum(int row) const { return m_lastOfStratum[static_cast<std::size_t>(row)] != 0; }

 private:
  void FindStrata(const CaseTable& cases, int n, int stratumColumn);
  void FindGroups(const CaseTable& cases, int n, const CaseColumns& columns);

  int m_largestGroup = 1;
  WorkArray<double> m_deaths;
  WorkArray<double> m_meanWeight;
  WorkArray<std::uint8_t> m_lastOfStratum;
};

}  // namespace orv
