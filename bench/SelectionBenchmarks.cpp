// Model building: whole forward selections, with the share of the fits in them, and searches for best subsets, with how
// many subsets they look at.
#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Cases.h"
#include "LatestCase.h"
#include "MachineSpeed.h"
#include "ReferencePass.h"
#include "SurvivalAnalysis.h"
#include "select/BestSubsets.h"

namespace orv::bench {

namespace {

constexpr SurvivalKind kKind{"efron", true, false, 0};
constexpr double kLeastDigits = 9.0;

// ---- Forward selection --------------------------------------------------------------------------------------------

constexpr struct {
  int Cases;
  int Covariates;
} kForwardSizes[] = {{2'000, 20}, {20'000, 20}, {20'000, 100}};

struct PreparedSelection {
  PreparedSelection(int cases, int covariates) : Analysis(kKind, cases, covariates) {
    Analysis.Settings().ModelBuilding = ModelBuildings::Forward;
  }

  SurvivalAnalysis Analysis;
  double Digits = 0.0;
  double FitSeconds = 0.0;  // the fits and evaluations of all steps
  int Steps = 0;
};

// The score statistic of a covariate alone at beta = 0 is U^2 / I. The first effect to enter has the smallest p value,
// of which several can be 0.
double DigitsOfFirstStep(PreparedSelection& prepared, int covariates) {
  const CCoxFit& fit = prepared.Analysis.LatestFit();
  const std::vector<double> zero(static_cast<std::size_t>(covariates), 0.0);
  const LikelihoodValues values = EvaluatePlainly(prepared.Analysis.Table(), kKind, zero, RiskSets::RunningSums);
  const auto j = static_cast<std::size_t>(fit.m_ForwardEffects.at(0)) - 1;
  const long double statistic = values.U[j] * values.U[j] / values.H[j * (j + 1) / 2 + j];
  return AgreedDigits(statistic, fit.m_ForwardScores[0], statistic);
}

// The steps of a selection again, without its tests.
double SecondsOfFits(PreparedSelection& prepared, const std::vector<int>& effects) {
  CCoxData& data = prepared.Analysis.ReadCases();
  CoxSettings& settings = prepared.Analysis.Settings();
  CCoxFit fit(&data, settings.Likelihood, settings.InputType);
  settings.FinalFitReady = false;
  const double start = ThreadSeconds();
  fit.EvaluateScoreAtStart();
  for (const int effect : effects) {
    fit.m_ActiveColumns.push_back(effect - 1);
    fit.m_ActiveCount = static_cast<int>(fit.m_ActiveColumns.size());
    fit.ResetResults();
    fit.FitCurrentModel();
    std::vector<double> beta(data.CoefficientCount, 0.0);
    for (std::size_t j = 0; j < fit.m_ActiveColumns.size(); ++j) {
      beta[static_cast<std::size_t>(fit.m_ActiveColumns[j])] = fit.m_BetaHistory.back()[j];
    }
    fit.EvaluateScoreAt(beta.data());
  }
  const double seconds = ThreadSeconds() - start;
  settings.FinalFitReady = true;
  return seconds;
}

std::unique_ptr<PreparedSelection> PrepareSelection(int cases, int covariates) {
  auto prepared = std::make_unique<PreparedSelection>(cases, covariates);
  const CCoxFit& fit = prepared->Analysis.Fit();
  prepared->Steps = static_cast<int>(fit.m_ForwardEffects.size());
  prepared->Digits = DigitsOfFirstStep(*prepared, covariates);
  if (!(prepared->Digits >= kLeastDigits)) {
    throw std::runtime_error(fmt::format("the first step agrees to {:.1f} digits", prepared->Digits));
  }
  const std::vector<int> effects = fit.m_ForwardEffects;
  prepared->Analysis.RestoreFullModel();
  prepared->FitSeconds = SecondsOfFits(*prepared, effects);
  return prepared;
}

void RunForward(benchmark::State& state, const std::string& name, int cases, int covariates) {
  static LatestCase<PreparedSelection> latest;
  PreparedSelection* prepared = nullptr;
  try {
    prepared = &latest.Get(name, [&] { return PrepareSelection(cases, covariates); });
    while (state.KeepRunning()) benchmark::DoNotOptimize(prepared->Analysis.Fit());
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
    return;
  }
  state.counters[Figures::Cases] = cases;
  state.counters[Figures::Columns] = covariates;
  state.counters[Figures::Steps] = prepared->Steps;
  state.counters[Figures::FitSeconds] = prepared->FitSeconds;
  state.SetLabel(fmt::format("{:.1f} digits", prepared->Digits));
}

// ---- Best subsets -------------------------------------------------------------------------------------------------

constexpr int kSubsetCases = 1'000;
constexpr int kSubsetColumns[] = {8, 12, 16, 24, 32};
constexpr int kMostEnumerated = 16;

struct PreparedSubsets {
  explicit PreparedSubsets(int covariates) : Analysis(kKind, kSubsetCases, covariates), Data(Analysis.ReadCases()) {}

  std::unique_ptr<CCoxFit> NewFit() {
    return std::make_unique<CCoxFit>(&Data, Likelihoods::Efron, InputTypes::SurvivalTime);
  }

  SurvivalAnalysis Analysis;
  CCoxData& Data;
  double Digits = 16.0;
  double ExhaustiveSeconds = 0.0;  // 0 where there are too many subsets
  double Scored = 0.0;
};

std::unique_ptr<PreparedSubsets> PrepareSubsets(int covariates) {
  auto prepared = std::make_unique<PreparedSubsets>(covariates);
  const auto bounded = prepared->NewFit();
  BestSubsetsBounded(*bounded);
  prepared->Scored = static_cast<double>(bounded->m_SubsetsScored);
  if (bounded->m_SubsetCount != covariates) throw std::runtime_error("a size has no best subset");
  if (covariates <= kMostEnumerated) {
    const auto exhaustive = prepared->NewFit();
    const double start = ThreadSeconds();
    BestSubsetsAllModels(*exhaustive);
    prepared->ExhaustiveSeconds = ThreadSeconds() - start;
    for (std::size_t k = 0; k < bounded->m_SubsetScores.size(); ++k) {
      const double score = exhaustive->m_SubsetScores.at(k);
      prepared->Digits = std::min(prepared->Digits, AgreedDigits(score, bounded->m_SubsetScores[k], score));
    }
  } else {
    // The largest set is that of the score test of the whole model.
    CCoxFit& fit = prepared->Analysis.Fit();
    prepared->Digits = AgreedDigits(fit.m_ScoreStatistic, bounded->m_SubsetScores.back(), fit.m_ScoreStatistic);
    prepared->Analysis.ReadCases();
  }
  if (!(prepared->Digits >= kLeastDigits)) {
    throw std::runtime_error(fmt::format("the scores agree to {:.1f} digits", prepared->Digits));
  }
  return prepared;
}

void RunSubsetSearch(benchmark::State& state, const std::string& name, int covariates) {
  static LatestCase<PreparedSubsets> latest;
  PreparedSubsets* prepared = nullptr;
  try {
    prepared = &latest.Get(name, [&] { return PrepareSubsets(covariates); });
    while (state.KeepRunning()) {
      const auto fit = prepared->NewFit();
      BestSubsetsBounded(*fit);
      benchmark::DoNotOptimize(fit->m_SubsetScores.data());
    }
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
    return;
  }
  state.counters[Figures::Cases] = kSubsetCases;
  state.counters[Figures::Columns] = covariates;
  state.counters[Figures::Subsets] = std::ldexp(1.0, covariates) - 1.0;
  state.counters[Figures::Scored] = prepared->Scored;
  state.counters[Figures::ExhaustiveSeconds] = prepared->ExhaustiveSeconds;
  state.SetLabel(fmt::format("{:.1f} digits", prepared->Digits));
}

}  // namespace

void RegisterSelectionBenchmarks() {
  for (const auto& size : kForwardSizes) {
    const std::string name = CaseName("select", "forward", size.Cases, size.Covariates);
    benchmark::RegisterBenchmark(
        name.c_str(), [name, size](benchmark::State& state) { RunForward(state, name, size.Cases, size.Covariates); });
  }
  for (const int covariates : kSubsetColumns) {
    const std::string name = CaseName("select", "best", kSubsetCases, covariates);
    benchmark::RegisterBenchmark(
        name.c_str(), [name, covariates](benchmark::State& state) { RunSubsetSearch(state, name, covariates); });
  }
}

}  // namespace orv::bench
