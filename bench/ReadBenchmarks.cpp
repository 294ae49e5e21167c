#include <benchmark/benchmark.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>

#include "Cases.h"
#include "GeneratedFile.h"
#include "LatestCase.h"
#include "MachineSpeed.h"
#include "standalone/tables/TableReaders.h"

namespace orv::bench {

namespace {

constexpr struct {
  const char* Name;
  FileKind Kind;
} kKinds[] = {{"numbers", FileKind::Numbers}, {"mixed", FileKind::Mixed}};
constexpr int kSizes[] = {10'000, 100'000, 1'000'000};
constexpr int kScans = 5;

struct PreparedFile {
  PreparedFile(FileKind kind, int cases) : File(kind, cases) {}

  GeneratedFile File;
  double ScanSeconds = std::numeric_limits<double>::infinity();
};

std::unique_ptr<PreparedFile> PrepareAndCheck(FileKind kind, int cases) {
  auto prepared = std::make_unique<PreparedFile>(kind, cases);
  if (!prepared->File.IsReadAs(ReadTable(prepared->File.Path()))) {
    throw std::runtime_error("the table read is not the table written");
  }
  for (int scan = 0; scan < kScans; ++scan) {
    const double start = ThreadSeconds();
    const std::uint64_t lines = prepared->File.CountLines();
    prepared->ScanSeconds = std::min(prepared->ScanSeconds, ThreadSeconds() - start);
    if (lines != static_cast<std::uint64_t>(cases) + 1) throw std::runtime_error("the scan is wrong");
  }
  return prepared;
}

void RunRead(benchmark::State& state, const char* kindName, FileKind kind, int cases) {
  static LatestCase<PreparedFile> latest;
  PreparedFile* prepared = nullptr;
  try {
    prepared =
        &latest.Get(CaseName("read", kindName, cases, kFileColumns), [&] { return PrepareAndCheck(kind, cases); });
    while (state.KeepRunning()) benchmark::DoNotOptimize(ReadTable(prepared->File.Path()));
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
    return;
  }
  state.counters[Figures::Cases] = cases;
  state.counters[Figures::Columns] = kFileColumns;
  state.counters[Figures::Bytes] = static_cast<double>(prepared->File.Bytes());
  state.counters[Figures::ScanSeconds] = prepared->ScanSeconds;
  state.SetBytesProcessed(static_cast<std::int64_t>(prepared->File.Bytes()) * state.iterations());
  state.SetLabel("same bits");
}

}  // namespace

void RegisterReadBenchmarks() {
  for (const auto& kind : kKinds) {
    for (const int cases : kSizes) {
      const std::string name = CaseName("read", kind.Name, cases, kFileColumns);
      benchmark::RegisterBenchmark(
          name.c_str(), [&kind, cases](benchmark::State& state) { RunRead(state, kind.Name, kind.Kind, cases); });
    }
  }
}

}  // namespace orv::bench
