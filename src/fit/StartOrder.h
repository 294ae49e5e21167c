// The rows of a table of intervals in the order in which a walk from the last stop to the first loses them.
#pragma once

#include "data/CaseTable.h"
#include "fit/TieTable.h"
#include "host/WorkArray.h"

namespace orv {

// Within each stratum the rows are sorted by start, latest first. As the time of the walk falls, the rows that leave
// are a run of this order; every one of them has joined before, since its stop lies above its start.
class StartOrder {
 public:
  StartOrder(Host& host, const CaseTable& cases, int n, int startColumn, const TieTable& ties);

  bool Failed() const { return m_order.Failed() || m_firstRow.Failed(); }

  // Begins a walk at row n.
  void Rewind();
  // The walk enters the stratum that ends with this row.
  void EnterStratum(int lastRow);
  // The row that leaves `ahead` places after the next one, for fetching it in time; 0 beyond the stratum.
  int Upcoming(int ahead) const {
    const int place = m_next + ahead;
    return place < m_end ? m_order[static_cast<std::size_t>(place)].Row : 0;
  }
  // The next row with start >= time, which is thereby gone; 0 when there is none.
  int NextLeaver(double time);

 private:
  // A start beside its row: a comparison that went to the table would miss the cache.
  struct StartOfRow {
    double Start;
    int Row;
  };

  void SortByStart(const CaseTable& cases, int n, int startColumn, const TieTable& ties);

  const int m_n;
  WorkArray<StartOfRow> m_order;  // place k, from 0
  WorkArray<int> m_firstRow;      // of a row that ends a stratum: the stratum's first row
  int m_next = 0;                 // place of the next row to leave
  int m_end = 0;                  // places of the stratum end here
};

}  // namespace orv
