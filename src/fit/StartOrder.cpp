#include "fit/StartOrder.h"

#include <algorithm>

namespace orv {

StartOrder::StartOrder(Host& host, const CaseTable& cases, int n, int startColumn, const TieTable& ties)
    : m_n(n), m_order(host, static_cast<std::size_t>(n)), m_firstRow(host, static_cast<std::size_t>(n) + 1) {
  if (!Failed() && !ties.Failed()) SortByStart(cases, n, startColumn, ties);
}

void StartOrder::SortByStart(const CaseTable& cases, int n, int startColumn, const TieTable& ties) {
  const auto startsLater = [](const StartOfRow& a, const StartOfRow& b) {
    return a.Start != b.Start ? a.Start > b.Start : a.Row > b.Row;
  };
  for (int first = 1; first <= n;) {
    int last = first;
    while (last < n && !ties.EndsStratum(last)) ++last;
    m_firstRow[static_cast<std::size_t>(last)] = first;
    for (int row = first; row <= last; ++row) {
      m_order[static_cast<std::size_t>(row) - 1] = {cases.GetRow(row)[startColumn], row};
    }
    std::sort(m_order.Data() + first - 1, m_order.Data() + last, startsLater);
    first = last + 1;
  }
}

void StartOrder::Rewind() {
  EnterStratum(m_n);
}

void StartOrder::EnterStratum(int lastRow) {
  m_next = lastRow > 0 ? m_firstRow[static_cast<std::size_t>(lastRow)] - 1 : 0;
  m_end = lastRow;
}

int StartOrder::NextLeaver(double time) {
  if (m_next >= m_end || !(m_order[static_cast<std::size_t>(m_next)].Start >= time)) return 0;
  return m_order[static_cast<std::size_t>(m_next++)].Row;
}

}  // namespace orv
