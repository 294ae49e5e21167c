#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <vector>

#include "Cases.h"
#include "LatestCase.h"
#include "ReferencePass.h"
#include "SurvivalTable.h"
#include "fit/FloatingPointRegime.h"
#include "fit/RightCensoredPass.h"

namespace orv::bench {

namespace {

constexpr SurvivalKind kKinds[] = {
    {"breslow/no-ties", false, false, 0},
    {"breslow/heavy-ties", false, true, 0},
    {"efron/heavy-ties", true, true, 0},
    {"breslow/strata", false, false, kStrata},
};
constexpr struct {
  int Cases;
  int Covariates;
} kSizes[] = {{10'000, 10}, {100'000, 10}, {1'000'000, 10}, {100'000, 2}, {100'000, 50}};

// Rescanning every risk set takes n times the number of tied groups, so the definition itself is held against a table
// of this many cases, and running sums in long double against the table that is timed.
constexpr int kRescannedCases = 200;

// Random rounding in a sum of a million terms costs three of sixteen digits, and the standard deviation of such a score
// is three digits below the sizes that it sums. More is lost only by rounding that leans one way.
constexpr double kLeastDigits = 10.0;

class PreparedPass {
 public:
  PreparedPass(const SurvivalKind& kind, int cases, int covariates)
      : m_kind(kind),
        m_analysis(kind, cases, covariates),
        m_data(m_analysis.ReadCases()),
        m_beta(static_cast<std::size_t>(covariates)),
        m_pass(m_analysis.GetHost(),
               m_data.CaseTable,
               static_cast<int>(m_data.ValidCaseCount),
               {m_data.SurvivalColumn, m_data.WeightColumn, m_data.StatusColumn, m_data.StratumColumn},
               AllColumns(covariates),
               kind.Efron ? 1 : 0),
        m_U(m_beta.size()),
        m_H(m_analysis.GetHost(), m_beta.size()) {
    for (std::size_t j = 0; j < m_beta.size(); ++j) m_beta[j] = j % 2 == 0 ? 0.1 : -0.05;
    if (m_pass.Failed() || m_H.Failed()) throw std::runtime_error("out of memory");
  }

  double Evaluate() { return m_pass.Evaluate(m_beta.data(), m_U.data(), m_H.Rows()); }

  double DigitsAgainst(RiskSets riskSets) {
    const LikelihoodValues reference = EvaluatePlainly(m_analysis.Table(), m_kind, m_beta, riskSets);
    const FloatingPointRegime regime;
    const double L = Evaluate();
    return AgreedDigits(reference, L, m_U.data(), m_H.Rows());
  }

  double MultiplyAdds() const {
    return MultiplyAddsOfPass(m_data.ValidCaseCount, m_data.CompleteCaseCount, static_cast<double>(m_beta.size()),
                              m_kind.Efron);
  }
  double TableBytes() const {
    return static_cast<double>(m_data.ValidCaseCount) * m_data.CaseTable.ColumnCount() * sizeof(double);
  }

  double Digits = 0.0;  // of agreement with the reference, in the worst number

 private:
  static std::vector<int> AllColumns(int covariates) {
    std::vector<int> columns(static_cast<std::size_t>(covariates));
    std::iota(columns.begin(), columns.end(), 0);
    return columns;
  }

  const SurvivalKind m_kind;
  SurvivalAnalysis m_analysis;
  CCoxData& m_data;
  std::vector<double> m_beta;
  RightCensoredPass m_pass;
  std::vector<double> m_U;
  WorkMatrix m_H;
};

std::unique_ptr<PreparedPass> PrepareAndCheck(const SurvivalKind& kind, int cases, int covariates) {
  const double small = PreparedPass(kind, kRescannedCases, covariates).DigitsAgainst(RiskSets::Rescan);
  auto prepared = std::make_unique<PreparedPass>(kind, cases, covariates);
  prepared->Digits = std::min(small, prepared->DigitsAgainst(RiskSets::RunningSums));
  if (!(prepared->Digits >= kLeastDigits)) {
    throw std::runtime_error(fmt::format("the pass agrees with the definition to {:.1f} digits", prepared->Digits));
  }
  return prepared;
}

void RunPass(benchmark::State& state, const SurvivalKind& kind, int cases, int covariates) {
  static LatestCase<PreparedPass> latest;
  PreparedPass* prepared = nullptr;
  try {
    prepared = &latest.Get(CaseName("pass", kind.Name, cases, covariates),
                           [&] { return PrepareAndCheck(kind, cases, covariates); });
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
    return;
  }
  const FloatingPointRegime regime;
  while (state.KeepRunning()) benchmark::DoNotOptimize(prepared->Evaluate());
  state.counters[Figures::Cases] = cases;
  state.counters[Figures::Columns] = covariates;
  state.counters[Figures::MultiplyAdds] = prepared->MultiplyAdds();
  state.counters[Figures::Bytes] = prepared->TableBytes();
  state.SetLabel(fmt::format("{:.1f} digits", prepared->Digits));
}

}  // namespace

void RegisterPassBenchmarks() {
  for (const SurvivalKind& kind : kKinds) {
    for (const auto& size : kSizes) {
      const std::string name = CaseName("pass", kind.Name, size.Cases, size.Covariates);
      benchmark::RegisterBenchmark(
          name.c_str(), [&kind, size](benchmark::State& state) { RunPass(state, kind, size.Cases, size.Covariates); });
    }
  }
}

}  // namespace orv::bench
