// The rows that are at risk at a time of a walk, for walks whose rows join from the last to the first.
#pragma once

#include "host/WorkArray.h"

namespace orv {

// A list of row numbers from 1, in ascending order. Every operation but Clear takes constant time.
class RiskList {
 public:
  RiskList(Host& host, int n)
      : m_after(host, static_cast<std::size_t>(n) + 1), m_before(host, static_cast<std::size_t>(n) + 1) {}

  bool Failed() const { return m_after.Failed() || m_before.Failed(); }
  bool IsEmpty() const { return m_first == 0; }
  void Clear() { m_first = 0; }
  // Puts a row that is lower than all others at the head.
  void AddBefore(int row) {
    NextOf(row) = m_first;
    PreviousOf(row) = 0;
    if (m_first != 0) PreviousOf(m_first) = row;
    m_first = row;
  }
  // Takes a row of the list out of it.
  void Remove(int row) {
    const int before = PreviousOf(row);
    const int after = NextOf(row);
    (before != 0 ? NextOf(before) : m_first) = after;
    if (after != 0) PreviousOf(after) = before;
  }
  // The lowest row, 0 when there is none; and the row that follows one, 0 after the last.
  int First() const { return m_first; }
  int After(int row) const { return m_after[static_cast<std::size_t>(row)]; }

 private:
  int& NextOf(int row) { return m_after[static_cast<std::size_t>(row)]; }
  int& PreviousOf(int row) { return m_before[static_cast<std::size_t>(row)]; }

  int m_first = 0;
  WorkArray<int> m_after;
  WorkArray<int> m_before;
};

}  // namespace orv
