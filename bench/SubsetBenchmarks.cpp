// The sums over the subsets of one risk set: by enumeration, which is timed, and by the recursion that it is held
// against.
#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Cases.h"
#include "LatestCase.h"
#include "MachineSpeed.h"
#include "ReferencePass.h"
#include "SurvivalTable.h"
#include "fit/DiscreteGroup.h"
#include "fit/FloatingPointRegime.h"
#include "fit/PassKernels.h"
#include "fit/SubsetGenerator.h"
#include "fit/SymmetricSums.h"
#include "standalone/host/StandaloneHost.h"

namespace orv::bench {

namespace {

constexpr int kCovariates = 10;
constexpr struct {
  int Members;
  int TiedEvents;
} kSizes[] = {{4, 2}, {12, 2}, {50, 2}, {500, 2}, {6, 3}, {12, 3}, {50, 3}, {7, 5}, {12, 5}, {25, 5}};
constexpr double kLeastDigits = 10.0;
constexpr int kTimings = 5;
constexpr int kRunsBetweenClocks = 10;
constexpr double kLeastTiming = 1e-3;  // seconds, far above the resolution of the clock

class RiskSet {
 public:
  RiskSet(int members, int tiedEvents)
      : m_d(tiedEvents),
        m_table(MakeSurvivalTable({}, members, kCovariates)),
        m_host(m_table),
        m_recursion(m_host, kCovariates, tiedEvents),
        m_Q1(kCovariates),
        m_Q2(PackedSize(kCovariates)) {
    if (m_recursion.Failed()) throw std::runtime_error("out of memory");
    for (int row = 1; row <= members; ++row) {
      for (int j = 1; j <= kCovariates; ++j) m_x.push_back(m_table.Value(j, row));
    }
    for (std::size_t k = 0; k < static_cast<std::size_t>(members); ++k) {
      const double* x = m_x.data() + k * kCovariates;
      m_members.push_back({std::exp(0.1 * x[0] - 0.05 * x[1]), x});
    }
  }

  SubsetSums Enumerate() { return EnumerateSubsets(m_members, m_d, kCovariates, m_Q1.data(), m_Q2.data()); }

  SubsetSums Recur() {
    m_recursion.Clear();
    int lowest = m_d - static_cast<int>(m_members.size());
    for (const RiskMember& member : m_members) m_recursion.Join(member.r, member.x, std::max(++lowest, 1), m_d);
    return {m_recursion.Value(m_d), m_recursion.First(m_d), m_recursion.Second(m_d)};
  }

  // A sum of the values is held against the root of what their squares sum up to: it may cancel to nothing.
  double DigitsOfAgreement() {
    const SubsetSums a = Enumerate();
    const SubsetSums b = Recur();
    double digits = AgreedDigits(a.Q, b.Q, a.Q);
    std::vector<long double> size(kCovariates);
    for (std::size_t j = 0; j < size.size(); ++j) size[j] = std::sqrt(a.Q2[PackedSize(j) + j] / a.Q);
    std::size_t packed = 0;
    for (std::size_t j = 0; j < size.size(); ++j) {
      digits = std::min(digits, AgreedDigits(a.Q1[j], b.Q1[j], size[j] * a.Q));
      for (std::size_t l = 0; l <= j; ++l, ++packed) {
        digits = std::min(digits, AgreedDigits(a.Q2[packed], b.Q2[packed], size[j] * size[l] * a.Q));
      }
    }
    return digits;
  }

  // The shortest of a few timings, each of many runs.
  void TimeRecursion() {
    for (int timing = 0; timing < kTimings; ++timing) {
      const double start = ThreadSeconds();
      int runs = 0;
      double seconds = 0.0;
      while (seconds < kLeastTiming) {
        for (int k = 0; k < kRunsBetweenClocks; ++k, ++runs) benchmark::DoNotOptimize(Recur().Q);
        seconds = ThreadSeconds() - start;
      }
      RecursionSeconds = std::min(RecursionSeconds, seconds / runs);
    }
  }

  double Digits = 0.0;
  double RecursionSeconds = std::numeric_limits<double>::infinity();

 private:
  const int m_d;
  MemoryTable m_table;
  StandaloneHost m_host;
  SymmetricSums m_recursion;
  std::vector<double> m_Q1;
  std::vector<double> m_Q2;
  std::vector<double> m_x;
  std::vector<RiskMember> m_members;
};

std::unique_ptr<RiskSet> PrepareAndCheck(int members, int tiedEvents) {
  auto prepared = std::make_unique<RiskSet>(members, tiedEvents);
  const FloatingPointRegime regime;
  prepared->Digits = prepared->DigitsOfAgreement();
  if (!(prepared->Digits >= kLeastDigits)) {
    throw std::runtime_error(fmt::format("enumeration and recursion agree to {:.1f} digits", prepared->Digits));
  }
  prepared->TimeRecursion();
  return prepared;
}

void RunSubsets(benchmark::State& state, const std::string& name, int members, int tiedEvents) {
  static LatestCase<RiskSet> latest;
  RiskSet* prepared = nullptr;
  try {
    prepared = &latest.Get(name, [&] { return PrepareAndCheck(members, tiedEvents); });
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
    return;
  }
  const FloatingPointRegime regime;
  while (state.KeepRunning()) benchmark::DoNotOptimize(prepared->Enumerate().Q);
  state.counters[Figures::Cases] = members;
  state.counters[Figures::Columns] = kCovariates;
  state.counters[Figures::TiedEvents] = tiedEvents;
  state.counters[Figures::Subsets] = SubsetCount(tiedEvents, members);
  state.counters[Figures::RecursionSeconds] = prepared->RecursionSeconds;
  state.counters[Figures::TakesEnumeration] = EnumerationIsCheaper(tiedEvents, members, kCovariates) ? 1.0 : 0.0;
  state.SetLabel(fmt::format("{:.1f} digits", prepared->Digits));
}

}  // namespace

void RegisterSubsetBenchmarks() {
  for (const auto& size : kSizes) {
    const std::string name = CaseName("discrete", "subsets", size.Members, kCovariates, size.TiedEvents);
    benchmark::RegisterBenchmark(name.c_str(), [name, size](benchmark::State& state) {
      RunSubsets(state, name, size.Members, size.TiedEvents);
    });
  }
}

}  // namespace orv::bench
