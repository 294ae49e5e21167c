// The design values of a case row in the order of the parameters.
#pragma once

#include <vector>

#include "host/WorkArray.h"

namespace orv {

class ActiveDesign {
 public:
  // `columns`: the design columns of the model, as columns of a case row.
  ActiveDesign(Host& host, const std::vector<int>& columns)
      : m_columns(columns), m_isLeading(AreLeading(columns)), m_values(host, columns.size()) {}

  bool Failed() const { return m_values.Failed(); }
  bool IsLeading() const { return m_isLeading; }  // the columns are the first p
  int Count() const { return static_cast<int>(m_columns.size()); }

  // Valid until the next call. Points into the row when the columns are the first p.
  const double* Of(const double* row) {
    if (m_isLeading) return row;
    for (std::size_t j = 0; j < m_columns.size(); ++j) m_values[j] = row[m_columns[j]];
    return m_values.Data();
  }

 private:
  static bool AreLeading(const std::vector<int>& columns) {
    for (std::size_t j = 0; j < columns.size(); ++j) {
      if (columns[j] != static_cast<int>(j)) return false;
    }
    return true;
  }

  const std::vector<int> m_columns;
  const bool m_isLeading;
  WorkArray<double> m_values;
};

}  // namespace orv
