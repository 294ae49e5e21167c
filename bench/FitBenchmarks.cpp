#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <vector>

#include "Cases.h"
#include "LatestCase.h"
#include "ReferencePass.h"
#include "SurvivalAnalysis.h"

namespace orv::bench {

namespace {

constexpr SurvivalKind kKinds[] = {
    {"breslow/no-ties", false, false, 0},
    {"efron/heavy-ties", true, true, 0},
    {"breslow/strata", false, false, kStrata},
};
constexpr int kSizes[] = {10'000, 100'000, 1'000'000};
constexpr int kCovariates = 10;

constexpr double kLeastDigits = 10.0;       // of the log likelihood at the estimate
constexpr double kInverseTolerance = 1e-6;  // covariance times information against the unit matrix

struct PreparedFit {
  PreparedFit(const SurvivalKind& kind, int cases) : Analysis(kind, cases, kCovariates) {}

  SurvivalAnalysis Analysis;
  double Passes = 0.0;
  double MultiplyAdds = 0.0;
  double Digits = 0.0;  // of the log likelihood at the estimate
};

// covariance times information, both of the reference's order.
long double ProductElement(const DenseMatrix& covariance,
                           const LikelihoodValues& values,
                           std::size_t row,
                           std::size_t column) {
  long double sum = 0.0L;
  for (std::size_t k = 0; k < covariance.size(); ++k) {
    const std::size_t high = std::max(k, column);
    sum += covariance[row][k] * values.H[high * (high + 1) / 2 + std::min(k, column)];
  }
  return sum;
}

// The information inverts to the covariance, and the Newton step from the estimate is as short as the default rule for
// convergence asks: step' U <= 1e-8 |L|. Throws std::runtime_error.
void CheckMaximum(const CCoxFit& fit, const LikelihoodValues& atEstimate) {
  const std::size_t p = atEstimate.U.size();
  if (fit.m_Covariance.size() != p) throw std::runtime_error("the covariance has another order");
  long double stepDotScore = 0.0L;
  for (std::size_t j = 0; j < p; ++j) {
    for (std::size_t l = 0; l < p; ++l) {
      const long double unit = j == l ? 1.0L : 0.0L;
      if (!(std::abs(ProductElement(fit.m_Covariance, atEstimate, j, l) - unit) < kInverseTolerance)) {
        throw std::runtime_error("the covariance is not the inverse of the information");
      }
      stepDotScore += atEstimate.U[j] * fit.m_Covariance[j][l] * atEstimate.U[l];
    }
  }
  if (!(stepDotScore <= 1e-8L * std::abs(atEstimate.L))) throw std::runtime_error("the estimate is no maximum");
}

std::unique_ptr<PreparedFit> PrepareAndCheck(const SurvivalKind& kind, int cases) {
  auto prepared = std::make_unique<PreparedFit>(kind, cases);
  const CCoxFit& fit = prepared->Analysis.Fit();
  const std::vector<double>& estimate = fit.m_BetaHistory.back();
  const LikelihoodValues values = EvaluatePlainly(prepared->Analysis.Table(), kind, estimate, RiskSets::RunningSums);
  CheckMaximum(fit, values);
  prepared->Digits = AgreedDigits(values.L, fit.m_LogLikHistory.back(), std::abs(values.L));
  if (!(prepared->Digits >= kLeastDigits)) {
    throw std::runtime_error(fmt::format("the likelihood agrees to {:.1f} digits", prepared->Digits));
  }
  // One pass for each entry: the first is the pass at zero, which is where the fit starts.
  prepared->Passes = static_cast<double>(fit.m_LogLikHistory.size());
  const double events = fit.m_pData->CompleteCaseCount;
  prepared->MultiplyAdds =
      prepared->Passes *
      MultiplyAddsOfPass(fit.m_pData->ValidCaseCount, events, TimesWithEvents(kind, events), kCovariates, kind.Efron);
  return prepared;
}

void RunFit(benchmark::State& state, const SurvivalKind& kind, int cases) {
  static LatestCase<PreparedFit> latest;
  PreparedFit* prepared = nullptr;
  try {
    prepared =
        &latest.Get(CaseName("fit", kind.Name, cases, kCovariates), [&] { return PrepareAndCheck(kind, cases); });
    while (state.KeepRunning()) benchmark::DoNotOptimize(prepared->Analysis.Fit());
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
    return;
  }
  state.counters[Figures::Cases] = cases;
  state.counters[Figures::Columns] = kCovariates;
  state.counters[Figures::Passes] = prepared->Passes;
  state.counters[Figures::MultiplyAdds] = prepared->MultiplyAdds;
  state.SetLabel(fmt::format("{:.1f} digits", prepared->Digits));
}

}  // namespace

void RegisterFitBenchmarks() {
  for (const SurvivalKind& kind : kKinds) {
    for (const int cases : kSizes) {
      const std::string name = CaseName("fit", kind.Name, cases, kCovariates);
      benchmark::RegisterBenchmark(name.c_str(),
                                   [&kind, cases](benchmark::State& state) { RunFit(state, kind, cases); });
    }
  }
}

}  // namespace orv::bench
