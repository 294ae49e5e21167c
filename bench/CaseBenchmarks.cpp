#include <benchmark/benchmark.h>

#include <memory>
#include <stdexcept>
#include <vector>

#include "Cases.h"
#include "LatestCase.h"
#include "SurvivalAnalysis.h"

namespace orv::bench {

namespace {

constexpr SurvivalKind kKinds[] = {{"breslow/no-ties", false, false, 0}, {"breslow/strata", false, false, kStrata}};
constexpr int kSizes[] = {10'000, 100'000, 1'000'000};
constexpr int kCovariates = 10;

// Every case of the table stands in the case table once, with the same bits, in the order of stratum and time.
bool HoldsEveryCaseInOrder(const CCoxData& data, const MemoryTable& table) {
  const int n = table.CaseCount();
  if (data.CaseTable.RowCount() != n) return false;
  std::vector<bool> seen(static_cast<std::size_t>(n) + 1);
  const double* before = nullptr;
  for (int row = 1; row <= n; ++row) {
    const double* cells = data.CaseTable.GetRow(row);
    const int number = static_cast<int>(cells[data.CaseNumberColumn]);
    if (number < 1 || number > n || seen[static_cast<std::size_t>(number)]) return false;
    seen[static_cast<std::size_t>(number)] = true;
    for (int j = 1; j <= kCovariates; ++j) {
      if (cells[j - 1] != table.Value(j, number)) return false;
    }
    if (cells[data.SurvivalColumn] != table.Value(kCovariates + 1, number)) return false;
    const bool sameStratum =
        before != nullptr && (data.StratumColumn < 0 || before[data.StratumColumn] == cells[data.StratumColumn]);
    if (sameStratum && before[data.SurvivalColumn] > cells[data.SurvivalColumn]) return false;
    if (before != nullptr && !sameStratum && before[data.StratumColumn] > cells[data.StratumColumn]) return false;
    before = cells;
  }
  return true;
}

std::unique_ptr<SurvivalAnalysis> PrepareAndCheck(const SurvivalKind& kind, int cases) {
  auto analysis = std::make_unique<SurvivalAnalysis>(kind, cases, kCovariates);
  if (!HoldsEveryCaseInOrder(analysis->ReadCases(), analysis->Table())) {
    throw std::runtime_error("the case table does not hold every case in its place");
  }
  return analysis;
}

void RunReadCases(benchmark::State& state, const SurvivalKind& kind, int cases) {
  static LatestCase<SurvivalAnalysis> latest;
  try {
    SurvivalAnalysis& analysis =
        latest.Get(CaseName("cases", kind.Name, cases, kCovariates), [&] { return PrepareAndCheck(kind, cases); });
    while (state.KeepRunning()) benchmark::DoNotOptimize(analysis.ReadCases());
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
    return;
  }
  state.counters[Figures::Cases] = cases;
  state.counters[Figures::Columns] = kCovariates;
  state.SetLabel("same bits");
}

}  // namespace

void RegisterCaseBenchmarks() {
  for (const SurvivalKind& kind : kKinds) {
    for (const int cases : kSizes) {
      const std::string name = CaseName("cases", kind.Name, cases, kCovariates);
      benchmark::RegisterBenchmark(name.c_str(),
                                   [&kind, cases](benchmark::State& state) { RunReadCases(state, kind, cases); });
    }
  }
}

}  // namespace orv::bench
