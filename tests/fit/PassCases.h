// Cases laid out as a fit finds them, for tests of a pass and of the tie table without an analysis around them.
#pragma once

#include <algorithm>
#include <tuple>
#include <vector>

#include "fit/RightCensoredPass.h"
#include "support/HeapOnlyHost.h"
#include "support/ReferenceLikelihood.h"
#include "support/TestMatrix.h"

namespace orv::testing {

// A case table with the design values first, then time, weight, status and stratum. Rows are sorted by stratum, then
// time, then events before censored, unless they are to stay as they are.
class PassCases {
 public:
  explicit PassCases(std::vector<ReferenceCase> cases, bool sorted = true) : m_cases(std::move(cases)) {
    if (sorted) {
      std::stable_sort(m_cases.begin(), m_cases.end(), [](const ReferenceCase& a, const ReferenceCase& b) {
        return std::make_tuple(a.Stratum, a.Time, !a.Event) < std::make_tuple(b.Stratum, b.Time, !b.Event);
      });
    }
    const int p = Parameters();
    m_table = CaseTable(Count(), p + 4);
    for (int row = 1; row <= Count(); ++row) {
      const ReferenceCase& one = m_cases[static_cast<std::size_t>(row) - 1];
      double* cells = m_table.GetRow(row, CaseTable::Access::Write);
      std::copy(one.X.begin(), one.X.end(), cells);
      cells[p] = one.Time;
      cells[p + 1] = one.Weight;
      cells[p + 2] = one.Event ? 1.0 : 0.0;
      cells[p + 3] = one.Stratum;
    }
  }

  int Count() const { return static_cast<int>(m_cases.size()); }
  int Parameters() const { return m_cases.empty() ? 0 : static_cast<int>(m_cases.front().X.size()); }
  const CaseTable& Table() const { return m_table; }
  CaseTable& Table() { return m_table; }
  const std::vector<ReferenceCase>& Cases() const { return m_cases; }
  CaseColumns Columns(bool strata) const {
    const int p = Parameters();
    return {p, p + 1, p + 2, strata ? p + 3 : -1};
  }

 private:
  std::vector<ReferenceCase> m_cases;
  CaseTable m_table;
};

// What one pass gives, with the information as its full symmetric matrix.
struct PassValue {
  double L = 0.0;
  std::vector<double> U;
  TestMatrix H;
};

// Runs a pass. `beta` empty: the pass at zero, where no exponential is taken.
inline PassValue RunPass(RightCensoredPass& pass, int p, const std::vector<double>& beta) {
  std::vector<double> H(static_cast<std::size_t>(p * p), -7.0);
  std::vector<double*> rows;
  for (int j = 0; j < p; ++j) rows.push_back(H.data() + j * p);
  PassValue value;
  value.U.assign(static_cast<std::size_t>(p), -7.0);  // a pass overwrites what it finds
  value.L = pass.Evaluate(beta.empty() ? nullptr : beta.data(), value.U.data(), rows.data());
  value.H = TestMatrix(p, p);
  for (int j = 0; j < p; ++j) {
    for (int l = 0; l <= j; ++l) value.H(l, j) = value.H(j, l) = H[static_cast<std::size_t>(l * p + j)];
  }
  return value;
}

inline std::vector<int> LeadingColumns(int p) {
  std::vector<int> columns;
  for (int j = 0; j < p; ++j) columns.push_back(j);
  return columns;
}

inline PassValue Evaluate(const PassCases& cases, bool efron, bool strata, const std::vector<double>& beta) {
  HeapOnlyHost host;
  RightCensoredPass pass(host, cases.Table(), cases.Count(), cases.Columns(strata), LeadingColumns(cases.Parameters()),
                         efron ? 1 : 0);
  return RunPass(pass, cases.Parameters(), beta);
}

// Random cases with many ties: times 1 to `times`, `strata` strata, weights 1 or 0.25 to 2.25.
inline std::vector<ReferenceCase> RandomCases(unsigned seed, int n, int p, int times, int strata, bool weighted) {
  TestRandom random(seed);
  std::vector<ReferenceCase> cases;
  for (int i = 0; i < n; ++i) {
    ReferenceCase one;
    one.Time = 1.0 + random.Integer(times);
    one.Event = random.Integer(3) > 0;
    one.Weight = weighted ? 1.25 + random.Value() : 1.0;
    one.Stratum = strata > 1 ? random.Integer(strata) : 0.0;
    for (int j = 0; j < p; ++j) one.X.push_back(random.Value() * 1.5);
    cases.push_back(std::move(one));
  }
  return cases;
}

}  // namespace orv::testing
