#include "fit/TieTable.h"

#include <algorithm>

#include "data/AlmostEqual.h"
#include "data/RoundHalfAway.h"

namespace orv {

TieTable::TieTable(Host& host, const CaseTable& cases, int n, const CaseColumns& columns)
    : m_deaths(host, static_cast<std::size_t>(n) + 1),
      m_meanWeight(host, static_cast<std::size_t>(n) + 1),
      m_lastOfStratum(host, static_cast<std::size_t>(n) + 1) {
  if (Failed()) return;
  if (columns.Stratum >= 0) FindStrata(cases, n, columns.Stratum);
  FindGroups(cases, n, columns);
}

void TieTable::FindStrata(const CaseTable& cases, int n, int stratumColumn) {
  for (int row = 1; row < n; ++row) {
    const bool same = AlmostEqual(cases.GetRow(row)[stratumColumn], cases.GetRow(row + 1)[stratumColumn]);
    m_lastOfStratum[static_cast<std::size_t>(row)] = same ? 0 : 1;
  }
}

void TieTable::FindGroups(const CaseTable& cases, int n, const CaseColumns& columns) {
  double eventCount = 0.0;
  double eventWeight = 0.0;
  // From the last row to the first, as the passes walk: the first row of a group is the one that closes it.
  for (int row = n; row >= 1; --row) {
    const double* cells = cases.GetRow(row);
    const double status = cells[columns.Status];
    const double weight = cells[columns.Weight];
    const bool goesOn =
        row > 1 && !EndsStratum(row - 1) && AlmostEqual(cells[columns.Time], cases.GetRow(row - 1)[columns.Time]);
    if (goesOn) {
      eventCount += RoundHalfAway(status);
      eventWeight += weight * status;
      continue;
    }
    const auto at = static_cast<std::size_t>(row);
    m_deaths[at] = eventCount + status;
    if (m_deaths[at] > 0.0) m_meanWeight[at] = (weight * status + eventWeight) / m_deaths[at];
    m_largestGroup = std::max(m_largestGroup, RoundToInteger(m_deaths[at]));
    eventCount = 0.0;
    eventWeight = 0.0;
  }
}

}  // namespace orv
