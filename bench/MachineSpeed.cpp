#include "MachineSpeed.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <ctime>
#include <stdexcept>
#include <vector>

namespace orv::bench {

namespace {

constexpr int kRuns = 12;
constexpr int kRunsOfAMoment = 4;
constexpr long kRounds = 1'000'000;  // 2 to 6 ms a run
constexpr double kFactor = 0.999;
constexpr double kTerm = 0.5;

// Sums to a register of w doubles: 12 w of them occupy 12 registers, as many as leave room for the factor and the term
// among 16, and enough to hide the latency of two units with six cycles each.
constexpr int kRegisters = 12;

// The sum of the s_k after some rounds. Inlined into functions that are compiled for one vector unit each.
template <int kSums>
[[gnu::always_inline]] inline double MultiplyAdds(long rounds, double factor, double term) {
  double sums[kSums];
  for (int k = 0; k < kSums; ++k) sums[k] = k;
  for (long round = 0; round < rounds; ++round) {
    for (int k = 0; k < kSums; ++k) sums[k] = sums[k] * factor + term;
  }
  double total = 0.0;
  for (const double sum : sums) total += sum;
  return total;
}

struct Kernel {
  const char* VectorUnit;
  int Sums;
  double (*Run)(long rounds, double factor, double term);
};

[[gnu::noinline]] double RunPortable(long rounds, double factor, double term) {
  return MultiplyAdds<2 * kRegisters>(rounds, factor, term);
}

#if defined(__x86_64__)
constexpr Kernel kPortable{"SSE2", 2 * kRegisters, RunPortable};

[[gnu::noinline, gnu::target("avx2,fma")]] double RunAvx2(long rounds, double factor, double term) {
  return MultiplyAdds<4 * kRegisters>(rounds, factor, term);
}
[[gnu::noinline, gnu::target("avx512f")]] double RunAvx512(long rounds, double factor, double term) {
  return MultiplyAdds<8 * kRegisters>(rounds, factor, term);
}

std::vector<Kernel> KernelsOfThisMachine() {
  std::vector<Kernel> kernels{kPortable};
  if (__builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0) {
    kernels.push_back({"AVX2, fused", 4 * kRegisters, RunAvx2});
  }
  if (__builtin_cpu_supports("avx512f") != 0) kernels.push_back({"AVX-512, fused", 8 * kRegisters, RunAvx512});
  return kernels;
}
#else
constexpr Kernel kPortable{"the compiler's default", 2 * kRegisters, RunPortable};

std::vector<Kernel> KernelsOfThisMachine() {
  return {kPortable};
}
#endif

// Every s_k tends to term / (1 - factor): a loop that was optimised away would not get there.
double MeasureMultiplyAdds(const Kernel& kernel, int runs) {
  const double limit = kTerm / (1.0 - kFactor) * kernel.Sums;
  double best = 0.0;
  for (int run = 0; run < runs; ++run) {
    const double start = ThreadSeconds();
    const double total = kernel.Run(kRounds, kFactor, kTerm);
    const double seconds = ThreadSeconds() - start;
    if (!(std::abs(total - limit) < 1e-9 * limit)) throw std::logic_error("the multiply-add kernel is wrong");
    best = std::max(best, static_cast<double>(kRounds) * kernel.Sums / seconds);
  }
  return best;
}

[[gnu::noinline]] void Triad(double* a, const double* b, const double* c, double s, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) a[i] = b[i] + s * c[i];
}

double MeasureTriad() {
  constexpr std::size_t kLeastBytes = std::size_t{64} << 20U;
  std::size_t largestCache = 0;
  for (const auto& cache : benchmark::CPUInfo::Get().caches) {
    largestCache = std::max(largestCache, static_cast<std::size_t>(std::max(cache.size, 0)));
  }
  const std::size_t count = std::max(kLeastBytes, 2 * largestCache) / sizeof(double);
  std::vector<double> a(count, 0.0);
  const std::vector<double> b(count, 1.0);
  const std::vector<double> c(count, 2.0);
  double best = 0.0;
  for (int run = 1; run <= kRuns; ++run) {
    const double start = ThreadSeconds();
    Triad(a.data(), b.data(), c.data(), run, count);
    const double seconds = ThreadSeconds() - start;
    if (a.front() != 1.0 + 2.0 * run || a.back() != a.front()) throw std::logic_error("the triad is wrong");
    best = std::max(best, 3.0 * sizeof(double) * static_cast<double>(count) / seconds);
  }
  return best;
}

}  // namespace

double ThreadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double PeakOfThisMoment() {
  return MeasureMultiplyAdds(KernelsOfThisMachine().back(), kRunsOfAMoment);
}

MachineSpeed MeasureMachine() {
  MachineSpeed speed;
  for (const Kernel& kernel : KernelsOfThisMachine()) {
    const double rate = MeasureMultiplyAdds(kernel, kRuns);
    if (kernel.Run == kPortable.Run) speed.PortableMultiplyAdds = rate;
    if (rate <= speed.MultiplyAdds) continue;
    speed.MultiplyAdds = rate;
    speed.VectorUnit = kernel.VectorUnit;
  }
  speed.TriadBytes = MeasureTriad();
  return speed;
}

}  // namespace orv::bench
