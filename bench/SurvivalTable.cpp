#include "SurvivalTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "FixedSeedNumbers.h"
#include "core/VariableSelection.h"

namespace orv::bench {

namespace {

constexpr double kLongestTime = 2.5;  // heavy ties: the follow-up ends here

TableVariable EmptyVariable(std::string name, std::size_t cases) {
  TableVariable variable;
  variable.Name = std::move(name);
  variable.Values.reserve(cases);
  return variable;
}

}  // namespace

MemoryTable MakeSurvivalTable(const SurvivalKind& kind, int cases, int covariates) {
  const auto n = static_cast<std::size_t>(cases);
  std::vector<TableVariable> predictors;
  for (int j = 1; j <= covariates; ++j) predictors.push_back(EmptyVariable(fmt::format("x{}", j), n));
  TableVariable time = EmptyVariable("time", n);
  TableVariable status = EmptyVariable("status", n);
  TableVariable stratum = EmptyVariable("stratum", n);

  FixedSeedNumbers numbers;
  const double effect = 0.5 / std::sqrt(static_cast<double>(covariates));
  for (std::size_t row = 0; row < n; ++row) {
    double eta = 0.0;
    for (std::size_t j = 0; j < predictors.size(); ++j) {
      const double x = j % 3 == 2 ? static_cast<double>(numbers.Below(2)) : numbers.Normal();
      predictors[j].Values.push_back(x);
      eta += j % 2 == 0 ? effect * x : -effect * x;
    }
    const double event = numbers.Exponential() / std::exp(eta);
    double censored = 1.5 * numbers.Exponential();
    if (kind.HeavyTies) censored = std::min(censored, kLongestTime);
    const double end = std::min(event, censored);
    time.Values.push_back(kind.HeavyTies ? std::ceil(end * (kTimes / kLongestTime)) : end);
    status.Values.push_back(event <= censored ? 1.0 : 0.0);
    if (kind.Strata > 0) stratum.Values.push_back(numbers.Below(kind.Strata) + 1.0);
  }

  MemoryTable table("generated");
  for (TableVariable& predictor : predictors) table.AddVariable(std::move(predictor));
  table.AddVariable(std::move(time));
  table.AddVariable(std::move(status));
  if (kind.Strata > 0) table.AddVariable(std::move(stratum));
  return table;
}

SurvivalAnalysis::SurvivalAnalysis(const SurvivalKind& kind, int cases, int covariates)
    : m_table(MakeSurvivalTable(kind, cases, covariates)), m_host(m_table), m_analysis(nullptr) {
  m_analysis.AttachHost(m_host);
  m_analysis.Init();
  CoxSettings& settings = m_analysis.m_Settings;
  settings.CodeForCompleteResponses = 1.0;
  settings.Likelihood = kind.Efron ? Likelihoods::Efron : Likelihoods::Breslow;
  settings.SurvivalVariables[0] = static_cast<std::int16_t>(covariates + 1);
  settings.SurvivalVariableCount = 1;
  settings.CensorVariable = static_cast<std::int16_t>(covariates + 2);
  settings.CensorVariableCount = 1;
  for (int j = 1; j <= covariates; ++j) settings.CovariateVariables.push_back(static_cast<std::int16_t>(j));
  settings.CovariateCount = static_cast<std::int16_t>(covariates);
  if (kind.Strata > 0) {
    settings.StrataVariable = static_cast<std::int16_t>(covariates + 3);
    settings.StrataVariableCount = 1;
    for (int code = 1; code <= kind.Strata; ++code) settings.StrataCodes.push_back(code);
    settings.StrataCodeCount = {static_cast<std::int16_t>(kind.Strata)};
  }
  BuildDefaultDesign(m_analysis);
}

void SurvivalAnalysis::Refuse() const {
  const std::vector<std::string>& messages = m_host.Messages();
  throw std::runtime_error(messages.empty() ? "no result and no message" : messages.back());
}

CCoxData& SurvivalAnalysis::ReadCases() {
  m_analysis.ReplaceData(std::make_unique<CCoxData>(&m_analysis));
  m_analysis.m_pCoxData->BuildDesign(m_analysis.m_Settings.InputType);
  if (m_analysis.m_pCoxData->ReadCases(nullptr) != 0) Refuse();
  return *m_analysis.m_pCoxData;
}

CCoxFit& SurvivalAnalysis::Fit() {
  if (m_analysis.RunCoxRegression(nullptr) != 0) Refuse();
  if (!m_analysis.m_pCoxFit->m_Converged) throw std::runtime_error("the fit did not converge");
  return *m_analysis.m_pCoxFit;
}

}  // namespace orv::bench
