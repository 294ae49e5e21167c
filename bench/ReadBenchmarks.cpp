#include <benchmark/benchmark.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

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
  const char* Ending;
};
constexpr ReadKind kKinds[] = {{"numbers", FileKind::Numbers, ".csv"},
                               {"mixed", FileKind::Mixed, ".csv"},
                               {"digits", FileKind::Digits, ".csv"},
                               {"digits.orv", FileKind::Digits, ".orv"},
                               {"digits.sas7bdat", FileKind::Digits, ".sas7bdat"},
                               {"digits.xpt", FileKind::Digits, ".xpt"},
                               {"digits.sav", FileKind::Digits, ".sav"},
                               {"digits.dta", FileKind::Digits, ".dta"}};
constexpr int kSizes[] = {10'000, 100'000, 1'000'000};
constexpr int kScans = 5;
constexpr double kMostMemory = 1.5;  // of reading, against the table read

struct PreparedFile {
  PreparedFile(FileKind kind, int cases) : File(kind, cases) {}

  GeneratedFile File;
  double ScanSeconds = std::numeric_limits<double>::infinity();
  std::uint64_t PeakBytes = 0;
};

std::unique_ptr<PreparedFile> PrepareAndCheck(const ReadKind& kind, int cases) {
  auto prepared = std::make_unique<PreparedFile>(kind.File, cases);
  GeneratedFile& file = prepared->File;
  const bool isDelimited = std::string_view(kind.Ending) == ".csv";
  if (!isDelimited) file.Become(kind.Ending, ReadTable(file.Path()));
  if (!file.IsReadAs(ReadTable(file.Path()))) throw std::runtime_error("the table read is not the table written");
  for (int scan = 0; scan < kScans; ++scan) {
    const double start = ThreadSeconds();
    const std::uint64_t lines = file.CountLines();
    prepared->ScanSeconds = std::min(prepared->ScanSeconds, ThreadSeconds() - start);
    if (isDelimited && lines != static_cast<std::uint64_t>(cases) + 1) throw std::runtime_error("the scan is wrong");
  }
  prepared->PeakBytes = PeakMemoryOfReading(file.Path());
  // Of small tables the program itself takes more.
  const double tableBytes = static_cast<double>(cases) * kFileColumns * sizeof(double);
  if (cases >= 1'000'000 && prepared->PeakBytes > kMostMemory * tableBytes) {
    throw std::runtime_error("reading takes more than 1.5 times the memory of the table");
  }
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
