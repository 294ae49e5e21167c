// Cases laid out as a fit finds them, for tests of the passes and of the tie table without an analysis around them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "fit/PartialLikelihood.h"
#include "fit/RightCensoredPass.h"
#include "support/HeapOnlyHost.h"
#include "support/ReferenceLikelihood.h"
#include "support/TestMatrix.h"

namespace orv::testing {

// A case table with the design values first, then time, weight, status, stratum and start. Rows are sorted by stratum,
// then time, then events before censored, unless they are to stay as they are.
class PassCases {
 public:
  explicit PassCases(std::vector<ReferenceCase> cases, bool sorted = true) : m_cases(std::move(cases)) {
    if (sorted) {
      std::stable_sort(m_cases.begin(), m_cases.end(), [](const ReferenceCase& a, const ReferenceCase& b) {
        return std::make_tuple(a.Stratum, a.Time, !a.Event) < std::make_tuple(b.Stratum, b.Time, !b.Event);
      });
    }
    const int p = Parameters();
    m_table = CaseTable(Count(), p + 5);
    for (int row = 1; row <= Count(); ++row) {
      const ReferenceCase& one = m_cases[static_cast<std::size_t>(row) - 1];
      double* cells = m_table.GetRow(row, CaseTable::Access::Write);
      std::copy(one.X.begin(), one.X.end(), cells);
      cells[p] = one.Time;
      cells[p + 1] = one.Weight;
      cells[p + 2] = one.Event ? 1.0 : 0.0;
      cells[p + 3] = one.Stratum;
      cells[p + 4] = one.Start;
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
  int StartColumn() const { return Parameters() + 4; }

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
inline PassValue RunPass(PartialLikelihood& pass, int p, const std::vector<double>& beta) {
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

// Compares every number of a pass with the definition; `unit` is the largest difference allowed.
inline void ExpectAgrees(const PassValue& value, const ReferenceValue& expected, double unit, const std::string& what) {
  EXPECT_NEAR(value.L, static_cast<double>(expected.L), unit) << what;
  for (std::size_t j = 0; j < expected.U.size(); ++j) {
    EXPECT_NEAR(value.U[j], static_cast<double>(expected.U[j]), unit) << what << ", U " << j;
    for (std::size_t l = 0; l < expected.U.size(); ++l) {
      EXPECT_NEAR(value.H(static_cast<int>(j), static_cast<int>(l)), static_cast<double>(expected.H[j][l]), unit)
          << what << ", H " << j << ' ' << l;
    }
  }
}

inline void ExpectNear(const PassValue& a, const PassValue& b, double unit, const std::string& what) {
  EXPECT_NEAR(a.L, b.L, unit) << what;
  ASSERT_EQ(a.U.size(), b.U.size()) << what;
  for (std::size_t j = 0; j < a.U.size(); ++j) EXPECT_NEAR(a.U[j], b.U[j], unit) << what << ", U " << j;
  EXPECT_LT(Distance(a.H, b.H), unit) << what;
}

inline std::vector<double> RandomVector(unsigned seed, int p) {
  TestRandom random(seed);
  std::vector<double> beta;
  for (int j = 0; j < p; ++j) beta.push_back(random.Value());
  return beta;
}

inline RealVector ToReal(const std::vector<double>& values) {
  return {values.begin(), values.end()};
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

// Random intervals with many ties at whole times: subjects of several rows, some of which enter late, with gaps between
// rows now and then and with more than one event. Each row has covariates of its own.
inline std::vector<ReferenceCase> RandomIntervals(unsigned seed, int subjects, int p, int strata, bool weighted) {
  constexpr double kEndOfStudy = 14.0;
  TestRandom random(seed);
  std::vector<ReferenceCase> cases;
  for (int subject = 0; subject < subjects; ++subject) {
    const double stratum = strata > 1 ? random.Integer(strata) : 0.0;
    double start = random.Integer(2) == 0 ? 0.0 : random.Integer(7);
    for (int rows = 1 + random.Integer(3); rows > 0 && start < kEndOfStudy; --rows) {
      ReferenceCase one;
      one.Start = start;
      one.Time = start + 1.0 + random.Integer(5);
      one.Event = random.Integer(2) == 0;
      one.Weight = weighted ? 1.25 + random.Value() : 1.0;
      one.Stratum = stratum;
      for (int j = 0; j < p; ++j) one.X.push_back(random.Value() * 1.5);
      start = one.Time + (random.Integer(4) == 0 ? 1.0 : 0.0);
      cases.push_back(std::move(one));
    }
  }
  return cases;
}

}  // namespace orv::testing
