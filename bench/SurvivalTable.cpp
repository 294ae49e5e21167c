#include "SurvivalTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

#include "FixedSeedNumbers.h"

namespace orv::bench {

namespace {

constexpr double kLongestTime = 2.5;  // heavy ties: the follow-up ends here
constexpr double kGrid = kTimes / kLongestTime;
constexpr double kMeanCensoring = 0.43;  // the mean event time is about 1
constexpr double kMeanVisit = 1.0;       // from one measurement of a subject to the next
constexpr double kMeanEntry = 0.5;       // of the subjects that enter late, which is every second

// The rows of a table under way.
struct Columns {
  Columns(int covariates, std::size_t cases) : X(static_cast<std::size_t>(covariates)) {
    for (std::vector<double>& x : X) x.reserve(cases);
  }

  std::vector<std::vector<double>> X;
  std::vector<double> Time;
  std::vector<double> Status;
  std::vector<double> Stratum;
  std::vector<double> Start;
};

// Draws the predictors of a row and returns its hazard.
double DrawPredictors(Columns& rows, FixedSeedNumbers& numbers) {
  const double effect = 0.5 / std::sqrt(static_cast<double>(rows.X.size()));
  double eta = 0.0;
  for (std::size_t j = 0; j < rows.X.size(); ++j) {
    const double x = j % 3 == 2 ? static_cast<double>(numbers.Below(2)) : numbers.Normal();
    rows.X[j].push_back(x);
    eta += j % 2 == 0 ? effect * x : -effect * x;
  }
  return std::exp(eta);
}

void DrawRightCensored(Columns& rows, const SurvivalKind& kind, int cases) {
  FixedSeedNumbers numbers;
  for (int row = 0; row < cases; ++row) {
    const double hazard = DrawPredictors(rows, numbers);
    const double event = numbers.Exponential() / hazard;
    double censored = kMeanCensoring * numbers.Exponential();
    if (kind.HeavyTies) censored = std::min(censored, kLongestTime);
    const double end = std::min(event, censored);
    rows.Time.push_back(kind.HeavyTies ? std::ceil(end * kGrid) : end);
    rows.Status.push_back(event <= censored ? 1.0 : 0.0);
    if (kind.Strata > 0) rows.Stratum.push_back(numbers.Below(kind.Strata) + 1.0);
    if (kind.Start == Starts::Zero) rows.Start.push_back(0.0);
  }
}

// The predictors of a subject are measured anew at each visit, where its next row begins. Exponential times have no
// memory, so every row draws its own. With heavy ties all times lie on the grid.
void DrawIntervals(Columns& rows, const SurvivalKind& kind, int cases) {
  FixedSeedNumbers numbers;
  bool isNewSubject = true;
  double start = 0.0;
  double stratum = 0.0;
  for (int row = 0; row < cases; ++row) {
    if (isNewSubject) {
      start = numbers.Below(2) == 0 ? 0.0 : kMeanEntry * numbers.Exponential();
      if (kind.HeavyTies) start = std::min(std::floor(start * kGrid), kTimes - 1.0);
      if (kind.Strata > 0) stratum = numbers.Below(kind.Strata) + 1.0;
    }
    const double hazard = DrawPredictors(rows, numbers);
    const double event = numbers.Exponential() / hazard;
    const double censored = kMeanCensoring * numbers.Exponential();
    const double visit = kMeanVisit * numbers.Exponential();
    const double length = std::min({event, censored, visit});
    double stop = kind.HeavyTies ? start + std::ceil(length * kGrid) : start + length;
    const bool isBeyondEnd = kind.HeavyTies && stop > kTimes;
    if (isBeyondEnd) stop = kTimes;
    rows.Start.push_back(start);
    rows.Time.push_back(stop);
    rows.Status.push_back(!isBeyondEnd && event == length ? 1.0 : 0.0);
    if (kind.Strata > 0) rows.Stratum.push_back(stratum);
    isNewSubject = visit > length || (kind.HeavyTies && stop >= kTimes);
    start = stop;
  }
}

// Of each five rows in the order of their times three are events, and each run of TiedEvents of those takes one time. A
// censored row takes the time of the next event.
void DrawTiedEvents(Columns& rows, const SurvivalKind& kind, int cases) {
  FixedSeedNumbers numbers;
  std::vector<double> latent;
  for (int row = 0; row < cases; ++row) {
    const double hazard = DrawPredictors(rows, numbers);
    latent.push_back(numbers.Exponential() / hazard);
  }
  std::vector<std::size_t> order(latent.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return latent[a] < latent[b]; });
  rows.Time.resize(latent.size());
  rows.Status.resize(latent.size());
  int events = 0;
  for (std::size_t rank = 0; rank < order.size(); ++rank) {
    const bool isEvent = rank % 5 % 2 == 0;
    const int timesBefore = events / kind.TiedEvents;
    rows.Time[order[rank]] = timesBefore + 1.0;
    rows.Status[order[rank]] = isEvent ? 1.0 : 0.0;
    if (isEvent) ++events;
  }
  if (kind.Start == Starts::None) return;
  for (const double time : rows.Time) {
    const bool isLate = kind.Start == Starts::Spread && numbers.Below(2) == 1;
    rows.Start.push_back(isLate ? std::floor(time * numbers.Uniform()) : 0.0);
  }
}

void AddVariable(MemoryTable& table, std::string name, std::vector<double> values) {
  if (values.empty()) return;
  TableVariable variable;
  variable.Name = std::move(name);
  variable.Values = std::move(values);
  table.AddVariable(std::move(variable));
}

}  // namespace

MemoryTable MakeSurvivalTable(const SurvivalKind& kind, int cases, int covariates) {
  Columns rows(covariates, static_cast<std::size_t>(cases));
  if (kind.TiedEvents > 0) {
    DrawTiedEvents(rows, kind, cases);
  } else if (kind.Start == Starts::Spread) {
    DrawIntervals(rows, kind, cases);
  } else {
    DrawRightCensored(rows, kind, cases);
  }

  MemoryTable table("generated");
  for (std::size_t j = 0; j < rows.X.size(); ++j) AddVariable(table, fmt::format("x{}", j + 1), std::move(rows.X[j]));
  AddVariable(table, "time", std::move(rows.Time));
  AddVariable(table, "status", std::move(rows.Status));
  AddVariable(table, "stratum", std::move(rows.Stratum));
  AddVariable(table, "start", std::move(rows.Start));
  return table;
}

SurvivalVariables::SurvivalVariables(const SurvivalKind& kind, int covariates)
    : Time(covariates + 1),
      Status(covariates + 2),
      Stratum(kind.Strata > 0 ? covariates + 3 : 0),
      Start(kind.Start != Starts::None ? covariates + 3 + (kind.Strata > 0 ? 1 : 0) : 0) {}

}  // namespace orv::bench
