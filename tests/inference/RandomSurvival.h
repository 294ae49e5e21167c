// Random analyses with many ties, for tests of what is derived from a fit.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "support/TestAnalysis.h"
#include "support/TestMatrix.h"

namespace orv::testing {

struct RandomForm {
  const char* What = "";
  bool Intervals = false;
  bool Strata = false;
  bool Weights = false;
  bool MeetingStrata = false;  // the last time of a stratum is the first of the next one
};

// Columns start, time, status, a, b, g, w. Times are whole numbers; strata are 1 to 3.
inline std::vector<TestColumn> RandomSurvivalColumns(unsigned seed, int n, bool meetingStrata) {
  constexpr int kTimes = 7;
  TestRandom random(seed);
  std::vector<TestColumn> columns = {{"start", {}}, {"time", {}}, {"status", {}}, {"a", {}},
                                     {"b", {}},     {"g", {}},    {"w", {}}};
  for (int i = 0; i < n; ++i) {
    const int stratum = 1 + random.Integer(3);
    const double time = 2.0 + random.Integer(kTimes) + (meetingStrata ? (kTimes - 1) * (stratum - 1) : 0);
    const double start = std::max(0.0, time - 1.0 - random.Integer(5));
    const double status = random.Integer(3) > 0 ? 1.0 : 0.0;
    const double values[] = {start,
                             time,
                             status,
                             random.Value(),
                             static_cast<double>(random.Integer(3)),
                             static_cast<double>(stratum),
                             1.25 + random.Value()};
    for (std::size_t c = 0; c < columns.size(); ++c) columns[c].Values.push_back(values[c]);
  }
  return columns;
}

inline void DefineForm(TestAnalysis& analysis, const RandomForm& form) {
  if (form.Intervals) {
    analysis.Interval("start", "time");
  } else {
    analysis.Time({"time"});
  }
  analysis.Status("status").Covariates({"a", "b"}).DefaultDesign();
  if (form.Strata) analysis.Strata("g", {1, 2, 3});
  if (form.Weights) analysis.Weights("w");
}

inline const std::vector<RandomForm>& RandomForms() {
  static const std::vector<RandomForm> forms = {
      {"survival times", false, false, false, false},
      {"survival times, weights", false, false, true, false},
      {"survival times, strata", false, true, false, false},
      {"survival times, strata, weights", false, true, true, false},
      {"survival times, strata that meet", false, true, true, true},
      {"intervals", true, false, false, false},
      {"intervals, weights", true, false, true, false},
      {"intervals, strata", true, true, false, false},
      {"intervals, strata, weights", true, true, true, false},
      {"intervals, strata that meet", true, true, true, true},
  };
  return forms;
}

}  // namespace orv::testing
