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
#include "PeakMemory.h"
#include "standalone/tables/TableReaders.h"

namespace orv::bench {

namespace {

struct ReadKind {
  const char* Name;
  FileKind File;
  bool IsOrv;
};
constexpr ReadKind kKinds[] = {{"numbers", FileKind::Numbers, false},
                               {"mixed", FileKind::Mixed, false},
                               {"digits", FileKind::Digits, false},
                               {"digits.orv", FileKind::Digits, true}};
constexpr int kSizes[] = {10'000, 100'000, 1'000'000};
constexpr int kScans = 5;

struct PreparedFile {
  PreparedFile(FileKind kind, int cases) : File(kind, cases) {}

  GeneratedFile File;
  double ScanSeconds = std::numeric_limits<double>::infinity();
  std::uint64_t PeakBytes = 0;
};

std::unique_ptr<PreparedFile> PrepareAndCheck(const ReadKind& kind, int cases) {
  auto prepared = std::make_unique<PreparedFile>(kind.File, cases);
  GeneratedFile& file = prepared->File;
  if (kind.IsOrv) file.BecomeOrv(ReadTable(file.Path()));
  if (!file.IsReadAs(ReadTable(file.Path()))) throw std::runtime_error("the table read is not the table written");
  for (int scan = 0; scan < kScans; ++scan) {
    const double start = ThreadSeconds();
    const std::uint64_t lines = file.CountLines();
    prepared->ScanSeconds = std::min(prepared->ScanSeconds, ThreadSeconds() - start);
    if (!kind.IsOrv && lines != static_cast<std::uint64_t>(cases) + 1) throw std::runtime_error("the scan is wrong");
  }
  prepared->PeakBytes = PeakMemoryOfReading(file.Path());
  return prepared;
}

void RunRead(benchmark::State& state, const ReadKind& kind, int cases) {
  static LatestCase<PreparedFile> latest;
  PreparedFile* prepared = nullptr;
  try {
    prepared =
        &latest.Get(CaseName("read", kind.Name, cases, kFileColumns), [&] { return PrepareAndCheck(kind, cases); });
    while (state.KeepRunning()) benchmark::DoNotOptimize(ReadTable(prepared->File.Path()));
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
    return;
  }
  state.counters[Figures::Cases] = cases;
  state.counters[Figures::Columns] = kFileColumns;
  state.counters[Figures::Bytes] = static_cast<double>(prepared->File.Bytes());
  state.counters[Figures::ScanSeconds] = prepared->ScanSeconds;
  state.counters[Figures::PeakBytes] = static_cast<double>(prepared->PeakBytes);
  state.SetBytesProcessed(static_cast<std::int64_t>(prepared->File.Bytes()) * state.iterations());
  state.SetLabel("same bits");
}

}  // namespace

void RegisterReadBenchmarks() {
  for (const ReadKind& kind : kKinds) {
    for (const int cases : kSizes) {
      const std::string name = CaseName("read", kind.Name, cases, kFileColumns);
      benchmark::RegisterBenchmark(name.c_str(),
                                   [&kind, cases](benchmark::State& state) { RunRead(state, kind, cases); });
    }
  }
}

}  // namespace orv::bench
