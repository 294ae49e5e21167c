// One pass under the discrete likelihood, against the number of tied events at each time.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Cases.h"
#include "EnumeratedPass.h"
#include "PreparedPass.h"
#include "fit/FloatingPointRegime.h"
#include "fit/SubsetGenerator.h"

namespace orv::bench {

namespace {

constexpr int kCases = 500;
constexpr int kCovariates = 10;
constexpr int kTiedEvents[] = {2, 5, 10, 20, 30, 50};

// Every subset is visited by the reference, so it serves a small table with few tied events.
constexpr int kEnumeratedCases = 20;
constexpr int kEnumeratedEvents[] = {2, 3};

SurvivalKind TiedKind(Starts starts, int tiedEvents) {
  SurvivalKind kind;
  kind.Start = starts;
  kind.TiedEvents = tiedEvents;
  return kind;
}

// Both forms of input against every subset, on small tables.
double DigitsAgainstEnumeration() {
  double digits = 16.0;
  for (const Starts starts : {Starts::None, Starts::Zero, Starts::Spread}) {
    for (const int tiedEvents : kEnumeratedEvents) {
      const SurvivalKind kind = TiedKind(starts, tiedEvents);
      PreparedPass small(kind, kEnumeratedCases, kCovariates);
      digits = std::min(digits, small.DigitsAgainst(EvaluateByEnumeration(small.Table(), kind, small.Beta())));
    }
  }
  return digits;
}

// Intervals that begin at 0 have the risk sets of right-censored rows, so the two forms must give one likelihood.
std::unique_ptr<PreparedPass> PrepareAndCheck(Starts starts, int tiedEvents) {
  auto prepared = std::make_unique<PreparedPass>(TiedKind(starts, tiedEvents), kCases, kCovariates);
  const Starts other = starts == Starts::None ? Starts::Zero : Starts::None;
  PreparedPass otherForm(TiedKind(other, tiedEvents), kCases, kCovariates);
  prepared->Digits = std::min(DigitsAgainstEnumeration(), prepared->DigitsAgainst(otherForm.Values()));
  return prepared;
}

// The subsets that the definition sums over, at all times together. Times with events count from 1.
double SubsetsOfTable(const PreparedPass& pass, const SurvivalVariables& variables, int tiedEvents) {
  const std::vector<double>& stops = pass.Table().Variable(variables.Time).Values;
  const int times = static_cast<int>(pass.Data().CompleteCaseCount) / tiedEvents;
  double subsets = 0.0;
  for (int time = 1; time <= times; ++time) {
    const auto atRisk = std::count_if(stops.begin(), stops.end(), [&](double stop) { return stop >= time; });
    subsets += SubsetCount(tiedEvents, static_cast<int>(atRisk));
  }
  return subsets;
}

void RunDiscrete(benchmark::State& state, const std::string& name, Starts starts, int tiedEvents) {
  PreparedPass* prepared = LatestPass(state, name, [&] { return PrepareAndCheck(starts, tiedEvents); });
  if (prepared == nullptr) return;
  const FloatingPointRegime regime;
  while (state.KeepRunning()) benchmark::DoNotOptimize(prepared->Evaluate());
  LeaveFigures(state, *prepared);
  state.counters[Figures::TiedEvents] = tiedEvents;
  const SurvivalVariables variables(TiedKind(starts, tiedEvents), kCovariates);
  state.counters[Figures::Subsets] = SubsetsOfTable(*prepared, variables, tiedEvents);
}

}  // namespace

void RegisterDiscreteBenchmarks() {
  constexpr struct {
    const char* Name;
    Starts Start;
  } kForms[] = {{"survival", Starts::None}, {"counting", Starts::Zero}};
  for (const auto& form : kForms) {
    for (const int tiedEvents : kTiedEvents) {
      const std::string name = CaseName("discrete", form.Name, kCases, kCovariates, tiedEvents);
      benchmark::RegisterBenchmark(name.c_str(), [name, form, tiedEvents](benchmark::State& state) {
        RunDiscrete(state, name, form.Start, tiedEvents);
      });
    }
  }
}

}  // namespace orv::bench
