// orvcox_bench: what reading, one pass and a whole fit cost, as ratios to what this machine can do.
#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <string>
#include <vector>

#include "Cases.h"
#include "MachineSpeed.h"
#include "PeakMemory.h"
#include "RatioReporter.h"

namespace orv::bench {

namespace {

// Defaults that the command line can override: many runs of a length well above the resolution of the clock.
constexpr const char* kDefaultFlags[] = {"--benchmark_repetitions=15", "--benchmark_min_time=0.05"};

constexpr const char* kLegend =
    R"(read: a file to a table in memory. cases: that table to the sorted case table, which takes n log n. pass:
likelihood, score and information at one vector. interval: the same over intervals (start, stop]; making: what a fit
pays once before it, the starts sorted. discrete: the same under the discrete likelihood with d events at each time;
subsets: the sums over the subsets of one risk set by enumeration. timedependent: the same with the covariate
x1*log(T_+1), whose values the first pass computes and the further ones have kept. fit: the table in memory to the
fitted model, cases and baseline included. derived: one family of residuals from a fit, with those that it needs.
select/forward: a table in memory to the model that forward selection finds; select/best: the bounded search for best
subsets, without a fit.

Each case is checked before it is timed. Times are CPU times of the one thread, the least over the runs, as the peaks of
the machine are: what else it does can only add to them. The spread is what the median of the runs lies above the least.
  answer       digits to which the result agrees with the definition computed in long double; pass and interval: with the
               plain form of the pass, too; discrete: that on a small table, and the two forms of input with each other
               on this one; subsets: with the recursion; derived: totals with what they must be
  Gmadd/s      1e9 multiply-adds per second that the pass by blocks needs: p (p + 1) / 2 for each case that enters the
               risk set or leaves it, once more where a group closes in its block, and more for tied groups under
               Efron's rule; 5 p a case; exponentials, divisions and what tiles compute beyond the triangle are not
               counted
  of peak      Gmadd/s against the peak of the machine, of passes that of the moment after the run; of portable: against
               that without wider vector units
  x plain      the time of the plain form of the pass, which updates a p by p matrix for every row and every event, in
               the same build and on the same table, against the time of the pass
  GB/s         rows of the case table read per second; of triad: against memory bandwidth (above 1 means from cache);
               of read: the bytes of the file per second against it.
               A row that leaves a risk set is read a second time, out of the order of the table
  memory       of read: what reading adds to the memory of a new process at its peak, against the 8 bytes of each value
  of scan      the time to read the file's bytes and count its lines against the time to read it as a table
  subsets      that the definition of the discrete likelihood sums over: of d of each risk set, all times together
  of recursion the time of the enumeration against that of the recursion over the same members; taken: what the pass
               over intervals takes for them
  of all       the fits and evaluations of the steps, made again without the tests, against the whole run
  scored       subsets that the bounded search looks at; exhaustive: what looking at every one of them takes
  pairs        of an event time and a row at risk
)";

std::string ProcessorName() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    const std::size_t colon = line.find(": ");
    if (line.starts_with("model name") && colon != std::string::npos) return line.substr(colon + 2);
  }
  return "unknown processor";
}

std::string Caches(const benchmark::CPUInfo& processor) {
  std::string caches;
  for (const auto& cache : processor.caches) {
    if (cache.type == "Instruction") continue;
    caches += fmt::format("{}L{} {} KiB", caches.empty() ? "" : ", ", cache.level, cache.size / 1024);
  }
  return caches;
}

void PrintConditions(const MachineSpeed& speed) {
  const benchmark::CPUInfo& processor = benchmark::CPUInfo::Get();
  fmt::print("Machine    {}, {} processors, {}\n", ProcessorName(), processor.num_cpus, Caches(processor));
  fmt::print("Compiler   {} {}\n", ORV_BENCH_COMPILER, __VERSION__);
  fmt::print("Flags      {}\n", ORV_BENCH_FLAGS);
  fmt::print("Peak       {:.1f} Gmadd/s ({}); portable {:.1f} Gmadd/s; triad {:.1f} GB/s\n\n",
             speed.MultiplyAdds * 1e-9, speed.VectorUnit, speed.PortableMultiplyAdds * 1e-9, speed.TriadBytes * 1e-9);
  fmt::print("{}", kLegend);
  std::fflush(stdout);
}

// The machine is measured again at the end: what changed in between has changed the ratios too.
void PrintEnd(const MachineSpeed& start, const MachineSpeed& end, const std::string& command) {
  fmt::print("\nPeak at the end {:.1f} Gmadd/s ({:+.0f} %), triad {:.1f} GB/s ({:+.0f} %)\n", end.MultiplyAdds * 1e-9,
             (end.MultiplyAdds / start.MultiplyAdds - 1.0) * 100.0, end.TriadBytes * 1e-9,
             (end.TriadBytes / start.TriadBytes - 1.0) * 100.0);
  fmt::print("Command    {}\n", command);
}

int Run(int argc, char** argv) {
  std::string command = argv[0];
  for (int i = 1; i < argc; ++i) command += fmt::format(" {}", argv[i]);

  std::vector<std::string> defaults(std::begin(kDefaultFlags), std::end(kDefaultFlags));
  std::vector<char*> arguments{argv[0]};
  for (std::string& flag : defaults) arguments.push_back(flag.data());
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  int count = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

  RegisterReadBenchmarks();
  RegisterCaseBenchmarks();
  RegisterPassBenchmarks();
  RegisterIntervalBenchmarks();
  RegisterDiscreteBenchmarks();
  RegisterSubsetBenchmarks();
  RegisterTimeDependentBenchmarks();
  RegisterSelectionBenchmarks();
  RegisterFitBenchmarks();
  RegisterDerivedBenchmarks();
  const MachineSpeed start = MeasureMachine();
  PrintConditions(start);
  RatioReporter reporter(start);
  const std::size_t cases = benchmark::RunSpecifiedBenchmarks(&reporter);
  PrintEnd(start, MeasureMachine(), command);
  benchmark::Shutdown();
  return reporter.HasFailed() || cases == 0 ? 1 : 0;
}

}  // namespace

}  // namespace orv::bench

int main(int argc, char** argv) {
  if (argc == 3 && std::string(argv[1]) == orv::bench::kReadForPeak) return orv::bench::ReadForPeakMemory(argv[2]);
  try {
    return orv::bench::Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "orvcox_bench: %s\n", error.what());
    return 1;
  }
}
