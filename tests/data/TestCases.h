// Cases of a small trial, written down by field, and their reading into the case data of an analysis.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "data/CCoxData.h"
#include "support/TestAnalysis.h"

namespace orv::testing {

// One case. A test changes the fields that it is about.
struct TrialCase {
  double x = 1.0;       // covariate
  double f = 1.0;       // factor
  double g = 1.0;       // stratum
  double time = 5.0;    // survival time, or end of the interval
  double status = 1.0;  // 1 complete, 0 censored
  double w = 1.0;       // weight
  double id = 1.0;      // subject
  double entry = 0.0;   // entry time, or start of the interval
  double z = 3.0;       // read by an expression
};

inline std::vector<TestColumn> TrialColumns(const std::vector<TrialCase>& cases) {
  std::vector<TestColumn> columns = {{"x", {}}, {"f", {}},  {"g", {}},     {"time", {}}, {"status", {}},
                                     {"w", {}}, {"id", {}}, {"entry", {}}, {"z", {}}};
  for (const TrialCase& c : cases) {
    const double values[] = {c.x, c.f, c.g, c.time, c.status, c.w, c.id, c.entry, c.z};
    for (std::size_t k = 0; k < columns.size(); ++k) columns[k].Values.push_back(values[k]);
  }
  return columns;
}

// Four cases that every selection below keeps: both strata, both levels, events and censored cases.
inline std::vector<TrialCase> GoodCases() {
  return {{.x = 1, .f = 1, .g = 1, .time = 3, .status = 1},
          {.x = 2, .f = 2, .g = 1, .time = 4, .status = 0},
          {.x = 3, .f = 1, .g = 2, .time = 2, .status = 1},
          {.x = 5, .f = 2, .g = 2, .time = 6, .status = 0}};
}

// Makes the case data of the options as they stand and builds their design.
inline CCoxData& BuildData(TestAnalysis& test) {
  test.Analysis.ReplaceData(std::make_unique<CCoxData>(&test.Analysis));
  test.Data().BuildDesign(test.Settings().InputType);
  return test.Data();
}

// The same, with the cases read. The reading must succeed.
inline CCoxData& ReadData(TestAnalysis& test) {
  CCoxData& data = BuildData(test);
  EXPECT_EQ(data.ReadCases(nullptr), 0) << "the cases cannot be read";
  return data;
}

inline int ExcludedCount(const CCoxData& data) {
  const auto& byReason = data.Excluded.ByReason;
  return std::accumulate(byReason.begin() + 1, byReason.end(), 0);
}

// The kept cases by their number in the input table, in the order of the case table.
inline std::vector<int> KeptCases(const CCoxData& data) {
  std::vector<int> numbers;
  for (int row = 1; row <= static_cast<int>(data.ValidCaseCount); ++row) {
    numbers.push_back(static_cast<int>(data.CaseTable.GetRow(row)[data.CaseNumberColumn]));
  }
  return numbers;
}

// One column of the case table by case number.
inline std::map<int, double> ColumnByCase(const CCoxData& data, std::int32_t column) {
  std::map<int, double> values;
  for (int row = 1; row <= static_cast<int>(data.ValidCaseCount); ++row) {
    const double* cells = data.CaseTable.GetRow(row);
    values[static_cast<int>(cells[data.CaseNumberColumn])] = cells[column];
  }
  return values;
}

}  // namespace orv::testing
