// One pass whose risk sets are running sums: over right-censored rows, and over intervals, where rows leave again.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <span>
#include <string>

#include "Cases.h"
#include "MachineSpeed.h"
#include "PreparedPass.h"
#include "fit/FloatingPointRegime.h"

namespace orv::bench {

namespace {

constexpr SurvivalKind kRightCensored[] = {
    {"efron/no-ties", true, false, 0},         {"efron/heavy-ties", true, true, 0},
    {"breslow/no-ties", false, false, 0},      {"breslow/heavy-ties", false, true, 0},
    {"breslow/strata", false, false, kStrata},
};
constexpr SurvivalKind kIntervals[] = {
    {"efron/late-entry", true, false, 0, Starts::Spread},
    {"efron/heavy-ties", true, true, 0, Starts::Spread},
    {"breslow/late-entry", false, false, 0, Starts::Spread},
};
// Making a pass is the same work under both rules for ties.
constexpr SurvivalKind kMade[] = {
    {"late-entry", false, false, 0, Starts::Spread},
    {"heavy-ties", false, true, 0, Starts::Spread},
};
struct Size {
  int Cases;
  int Covariates;
};
constexpr Size kSizes[] = {{10'000, 10}, {100'000, 10}, {1'000'000, 10}, {100'000, 2},
                           {100'000, 5}, {100'000, 20}, {100'000, 50},   {100'000, 100}};
// The kind that most analyses are of, and the larger tables.
constexpr Size kFurtherSizes[] = {{100'000, 8},    {100'000, 200},  {1'000'000, 5},   {1'000'000, 8},
                                  {1'000'000, 20}, {1'000'000, 50}, {1'000'000, 100}, {10'000'000, 10}};
constexpr int kCovariatesOfMaking = 10;

// Rescanning every risk set takes n times the number of tied groups, so the definition itself is held against a table
// of this many cases, and running sums in long double and the plain form of the pass against the table that is timed.
constexpr int kRescannedCases = 400;

double DigitsOf(PreparedPass& pass, const SurvivalKind& kind, RiskSets riskSets) {
  return pass.DigitsAgainst(EvaluatePlainly(pass.Table(), kind, pass.Beta(), riskSets));
}

std::unique_ptr<PreparedPass> PrepareAndCheck(const SurvivalKind& kind, int cases, int covariates) {
  PreparedPass small(kind, kRescannedCases, covariates);
  auto prepared = std::make_unique<PreparedPass>(kind, cases, covariates);
  prepared->Digits = std::min({DigitsOf(small, kind, RiskSets::Rescan),
                               DigitsOf(*prepared, kind, RiskSets::RunningSums), prepared->DigitsAgainstPlainForm()});
  return prepared;
}

// Rows that leave the risk set before the walk ends, in a table of one stratum.
double Leavers(const CCoxData& data) {
  if (data.StartColumn < 0) return 0.0;
  const double earliest = data.CaseTable.GetRow(1)[data.StopColumn];
  double leavers = 0.0;
  for (int row = 1; row <= static_cast<int>(data.ValidCaseCount); ++row) {
    if (data.CaseTable.GetRow(row)[data.StartColumn] >= earliest) ++leavers;
  }
  return leavers;
}

void RunPass(benchmark::State& state, const std::string& name, const SurvivalKind& kind, int cases, int covariates) {
  PreparedPass* prepared = LatestPass(state, name, [&] { return PrepareAndCheck(kind, cases, covariates); });
  if (prepared == nullptr) return;
  const FloatingPointRegime regime;
  while (state.KeepRunning()) benchmark::DoNotOptimize(prepared->Evaluate());
  LeaveFigures(state, *prepared);
  state.counters[Figures::PeakRate] = PeakOfThisMoment();
  state.counters[Figures::PlainSeconds] = prepared->PlainSeconds;
  const CCoxData& data = prepared->Data();
  const double rows = data.ValidCaseCount + Leavers(data);
  const double events = data.CompleteCaseCount;
  state.counters[Figures::MultiplyAdds] =
      MultiplyAddsOfPass(rows, events, TimesWithEvents(kind, events), covariates, kind.Efron);
  state.counters[Figures::Bytes] = rows * data.CaseTable.ColumnCount() * sizeof(double);
}

// What a fit pays once before its first pass over intervals: its tables of ties and of starts, which are sorted.
void RunMaking(benchmark::State& state, const std::string& name, const SurvivalKind& kind, int cases) {
  PreparedPass* prepared = LatestPass(state, name, [&] { return PrepareAndCheck(kind, cases, kCovariatesOfMaking); });
  if (prepared == nullptr) return;
  while (state.KeepRunning()) prepared->MakeAnew();
  LeaveFigures(state, *prepared);
}

void RegisterPasses(const char* group, const SurvivalKind& kind, std::span<const Size> sizes) {
  for (const Size& size : sizes) {
    const std::string name = CaseName(group, kind.Name, size.Cases, size.Covariates);
    benchmark::RegisterBenchmark(name.c_str(), [name, &kind, size](benchmark::State& state) {
      RunPass(state, name, kind, size.Cases, size.Covariates);
    });
  }
}

void RegisterMaking(const SurvivalKind& kind) {
  for (const Size& size : kSizes) {
    if (size.Covariates != kCovariatesOfMaking) continue;
    const std::string name = CaseName("interval/making", kind.Name, size.Cases, size.Covariates);
    benchmark::RegisterBenchmark(
        name.c_str(), [name, &kind, size](benchmark::State& state) { RunMaking(state, name, kind, size.Cases); });
  }
}

}  // namespace

void RegisterPassBenchmarks() {
  for (const SurvivalKind& kind : kRightCensored) RegisterPasses("pass", kind, kSizes);
  RegisterPasses("pass", kRightCensored[0], kFurtherSizes);
}

void RegisterIntervalBenchmarks() {
  for (const SurvivalKind& kind : kIntervals) RegisterPasses("interval", kind, kSizes);
  for (const SurvivalKind& kind : kMade) RegisterMaking(kind);
}

}  // namespace orv::bench
