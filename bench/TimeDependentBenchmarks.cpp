// One pass of a model with an effect that changes with time, against the pairs of an event time and a row at risk.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <string>

#include "Cases.h"
#include "PreparedPass.h"
#include "fit/FloatingPointRegime.h"

namespace orv::bench {

namespace {

constexpr SurvivalKind kKind = {.Name = "no-ties", .HasTimeDependentEffect = true};
constexpr int kSizes[] = {500, 1'000, 2'000, 4'000};
constexpr int kCovariates = 2;
constexpr int kCoefficients = kCovariates + 1;

// A first pass computes the values of the expression, the further ones of a fit read what it kept.
enum class Values { Computed, Kept };

// The first pass and a later one are held against the definition: values that were kept wrongly show in the later.
std::unique_ptr<PreparedPass> PrepareAndCheck(int cases) {
  auto prepared = std::make_unique<PreparedPass>(kKind, cases, kCovariates);
  const LikelihoodValues reference = EvaluatePlainly(prepared->Table(), kKind, prepared->Beta(), RiskSets::Rescan);
  const double first = prepared->DigitsAgainst(reference);
  prepared->Digits = std::min(first, prepared->DigitsAgainst(reference));
  return prepared;
}

// Rows are sorted by time, and no two times are equal: at the time of an event the rows from its own on are at risk.
double PairsOf(const CCoxData& data) {
  const int n = static_cast<int>(data.ValidCaseCount);
  double pairs = 0.0;
  for (int row = 1; row <= n; ++row) {
    if (data.CaseTable.GetRow(row)[data.StatusColumn] == 1.0) pairs += n - row + 1;
  }
  return pairs;
}

void RunTimeDependent(benchmark::State& state, const std::string& name, Values values, int cases) {
  PreparedPass* prepared = LatestPass(state, name, [&] { return PrepareAndCheck(cases); });
  if (prepared == nullptr) return;
  const FloatingPointRegime regime;
  while (state.KeepRunning()) {
    if (values == Values::Computed) {
      state.PauseTiming();
      prepared->MakeAnew();
      state.ResumeTiming();
    }
    benchmark::DoNotOptimize(prepared->Evaluate());
  }
  LeaveFigures(state, *prepared);
  state.counters[Figures::Pairs] = PairsOf(prepared->Data());
}

}  // namespace

void RegisterTimeDependentBenchmarks() {
  constexpr struct {
    const char* Name;
    Values From;
  } kPasses[] = {{"first", Values::Computed}, {"kept", Values::Kept}};
  for (const auto& pass : kPasses) {
    for (const int cases : kSizes) {
      const std::string name = CaseName("timedependent", pass.Name, cases, kCoefficients);
      benchmark::RegisterBenchmark(name.c_str(), [name, pass, cases](benchmark::State& state) {
        RunTimeDependent(state, name, pass.From, cases);
      });
    }
  }
}

}  // namespace orv::bench
