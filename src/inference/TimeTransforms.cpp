#include "inference/TimeTransforms.h"

#include <algorithm>
#include <cmath>

#include "core/CCoxPH.h"
#include "data/AlmostEqual.h"
#include "data/CCoxData.h"

namespace orv {

namespace {

int TimeColumn(const CCoxData& data) {
  const bool intervals = data.Owner->m_Settings.InputType == InputTypes::CountingProcess;
  return intervals ? data.StopColumn : data.SurvivalColumn;
}

// a lies below b and is not tied with it.
bool IsBefore(double a, double b) {
  return a < b && !AlmostEqual(a, b);
}

struct TimedCase {
  double Time = 0.0;
  bool IsComplete = false;
  int Row = 0;
};

// All cases by time. Cases of one time stay in the order of the case table.
std::vector<TimedCase> CasesByTime(const CCoxData& data) {
  const int timeColumn = TimeColumn(data);
  std::vector<TimedCase> cases(data.ValidCaseCount);
  int row = 0;
  for (TimedCase& one : cases) {
    const double* cells = data.CaseTable.GetRow(++row);
    one = {cells[timeColumn], cells[data.StatusColumn] == 1.0, row};
  }
  std::stable_sort(cases.begin(), cases.end(), [](const auto& a, const auto& b) { return a.Time < b.Time; });
  return cases;
}

// One value for each complete case, also where a transform lists fewer or more.
void FitToCompleteCases(TransformedTimes& times, const CCoxData& data) {
  times.Values.resize(data.CompleteCaseCount, 0.0);
  times.Rows.resize(data.CompleteCaseCount, 0);
}

// The Kaplan-Meier estimate as it falls from group to group; each event takes the estimate just before its group.
class ProductLimit {
 public:
  void AddEvent(int row) { m_times.Rows.push_back(row); }
  // Closes a group: the estimate after it is `estimate`, and the events added since the last call are its own.
  void CloseGroup(double estimate) {
    if (m_times.Rows.size() == m_times.Values.size()) return;
    m_times.Values.resize(m_times.Rows.size(), 1.0 - m_before);
    m_before = estimate;
  }
  TransformedTimes Take(const CCoxData& data) {
    FitToCompleteCases(m_times, data);
    return std::move(m_times);
  }

 private:
  TransformedTimes m_times;
  double m_before = 1.0;
};

TransformedTimes KaplanMeierOfSurvivalTimes(const CCoxData& data) {
  const std::vector<TimedCase> cases = CasesByTime(data);
  const auto n = static_cast<double>(cases.size());
  ProductLimit curve;
  double S = 1.0;
  double R = n;
  double d = 0.0;
  double groupTime = 0.0;
  bool metEvent = false;
  for (std::size_t i = 0; i < cases.size(); ++i) {
    const TimedCase& one = cases[i];
    if (!metEvent) groupTime = one.Time;
    if (IsBefore(groupTime, one.Time)) {
      S = (R - d) * S / R;
      R = n - static_cast<double>(i);
      curve.CloseGroup(S);
      d = 0.0;
      groupTime = one.Time;
    }
    if (!one.IsComplete) continue;
    metEvent = true;
    d += 1.0;
    curve.AddEvent(one.Row);
  }
  curve.CloseGroup((R - d) * S / R);
  return curve.Take(data);
}

// The number of cases at risk at ascending times: the starts before the time less the stops before it, since a case
// that has stopped has started.
class IntervalRiskSets {
 public:
  IntervalRiskSets(const CCoxData& data, const std::vector<TimedCase>& byStop) : m_byStop(byStop) {
    for (int row = 1; row <= static_cast<int>(data.ValidCaseCount); ++row) {
      m_starts.push_back(data.CaseTable.GetRow(row)[data.StartColumn]);
    }
    std::sort(m_starts.begin(), m_starts.end());
  }

  double CountAt(double time) {
    while (m_started < m_starts.size() && IsBefore(m_starts[m_started], time)) ++m_started;
    while (m_stopped < m_byStop.size() && IsBefore(m_byStop[m_stopped].Time, time)) ++m_stopped;
    return static_cast<double>(m_started) - static_cast<double>(m_stopped);
  }
  // The first case, in order of stops, that has not stopped before the time of the last CountAt.
  std::size_t FirstOpen() const { return m_stopped; }

 private:
  const std::vector<TimedCase>& m_byStop;
  std::vector<double> m_starts;
  std::size_t m_started = 0;
  std::size_t m_stopped = 0;
};

TransformedTimes KaplanMeierOfIntervals(const CCoxData& data) {
  const std::vector<TimedCase> cases = CasesByTime(data);
  IntervalRiskSets riskSets(data, cases);
  ProductLimit curve;
  double S = 1.0;
  const auto addGroup = [&](double time) {
    const double R = riskSets.CountAt(time);
    double d = 0.0;
    for (std::size_t i = riskSets.FirstOpen(); i < cases.size() && AlmostEqual(cases[i].Time, time); ++i) {
      if (!cases[i].IsComplete || !IsBefore(data.CaseTable.GetRow(cases[i].Row)[data.StartColumn], time)) continue;
      d += 1.0;
      curve.AddEvent(cases[i].Row);
    }
    if (!(d > 0.0)) return;
    S *= 1.0 - d / R;
    curve.CloseGroup(S);
  };

  const auto firstEvent = std::find_if(cases.begin(), cases.end(), [](const auto& one) { return one.IsComplete; });
  if (firstEvent == cases.end()) return curve.Take(data);
  double time = firstEvent->Time;
  for (const TimedCase& one : cases) {
    if (!IsBefore(time, one.Time)) continue;
    addGroup(time);
    time = one.Time;
  }
  if (cases.back().IsComplete) addGroup(time);
  return curve.Take(data);
}

}  // namespace

TransformedTimes IdentityTimes(const CCoxData& data) {
  const int timeColumn = TimeColumn(data);
  TransformedTimes times;
  for (int row = 1; row <= static_cast<int>(data.ValidCaseCount); ++row) {
    const double* cells = data.CaseTable.GetRow(row);
    if (cells[data.StatusColumn] != 1.0) continue;
    times.Values.push_back(cells[timeColumn]);
    times.Rows.push_back(row);
  }
  return times;
}

std::optional<TransformedTimes> LogTimes(const CCoxData& data) {
  TransformedTimes times = IdentityTimes(data);
  for (double& value : times.Values) {
    if (value <= 0.0) return std::nullopt;
    value = std::log(value);
  }
  return times;
}

TransformedTimes KaplanMeierTimes(const CCoxData& data) {
  const bool intervals = data.Owner->m_Settings.InputType == InputTypes::CountingProcess;
  return intervals ? KaplanMeierOfIntervals(data) : KaplanMeierOfSurvivalTimes(data);
}

TransformedTimes RankTimes(const CCoxData& data) {
  std::vector<TimedCase> cases = CasesByTime(data);
  std::erase_if(cases, [](const TimedCase& one) { return !one.IsComplete; });
  TransformedTimes times;
  for (std::size_t first = 0; first < cases.size();) {
    std::size_t end = first + 1;
    while (end < cases.size() && AlmostEqual(cases[end - 1].Time, cases[end].Time)) ++end;
    const double meanRank = (static_cast<double>(first + 1) + static_cast<double>(end)) / 2.0;
    times.Values.resize(end, meanRank);
    for (; first < end; ++first) times.Rows.push_back(cases[first].Row);
  }
  return times;
}

}  // namespace orv
