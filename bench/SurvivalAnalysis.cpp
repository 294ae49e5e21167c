#include "SurvivalAnalysis.h"

#include <numeric>
#include <stdexcept>
#include <string>

#include "core/TimeCovariates.h"
#include "core/VariableSelection.h"
#include "data/TimeExpressions.h"
#include "fit/CountingPass.h"
#include "fit/DiscreteCountingPass.h"
#include "fit/DiscreteSurvivalPass.h"
#include "fit/NumericalFailure.h"
#include "fit/RightCensoredPass.h"
#include "fit/TimeDependentPass.h"

namespace orv::bench {

namespace {

void ChooseTimes(CoxSettings& settings, const SurvivalKind& kind, const SurvivalVariables& variables) {
  if (kind.Start == Starts::None) {
    settings.SurvivalVariables[0] = static_cast<std::int16_t>(variables.Time);
    settings.SurvivalVariableCount = 1;
    return;
  }
  settings.InputType = InputTypes::CountingProcess;
  settings.StartVariable = static_cast<std::int16_t>(variables.Start);
  settings.StartVariableCount = 1;
  settings.StopVariable = static_cast<std::int16_t>(variables.Time);
  settings.StopVariableCount = 1;
}

int LikelihoodOf(const SurvivalKind& kind) {
  if (kind.TiedEvents > 0) return Likelihoods::Discrete;
  return kind.Efron ? Likelihoods::Efron : Likelihoods::Breslow;
}

}  // namespace

SurvivalAnalysis::SurvivalAnalysis(const SurvivalKind& kind, int cases, int covariates)
    : m_kind(kind), m_table(MakeSurvivalTable(kind, cases, covariates)), m_host(m_table), m_analysis(nullptr) {
  m_analysis.AttachHost(m_host);
  m_analysis.Init();
  const SurvivalVariables variables(kind, covariates);
  CoxSettings& settings = m_analysis.m_Settings;
  settings.CodeForCompleteResponses = 1.0;
  settings.Likelihood = static_cast<std::int16_t>(LikelihoodOf(kind));
  ChooseTimes(settings, kind, variables);
  settings.CensorVariable = static_cast<std::int16_t>(variables.Status);
  settings.CensorVariableCount = 1;
  for (int j = 1; j <= covariates; ++j) settings.CovariateVariables.push_back(static_cast<std::int16_t>(j));
  settings.CovariateCount = static_cast<std::int16_t>(covariates);
  if (kind.Strata > 0) {
    settings.StrataVariable = static_cast<std::int16_t>(variables.Stratum);
    settings.StrataVariableCount = 1;
    for (int code = 1; code <= kind.Strata; ++code) settings.StrataCodes.push_back(code);
    settings.StrataCodeCount = {static_cast<std::int16_t>(kind.Strata)};
  }
  if (kind.HasTimeDependentEffect) {
    settings.InputType = InputTypes::TimeDependent;
    if (SetTimeCovariate(m_analysis, 0, "late", kTimeDependentEffect) != 0) Refuse();
  }
  BuildDefaultDesign(m_analysis);
  // The check compiles the formula.
  if (kind.HasTimeDependentEffect && m_analysis.CheckInputsForCorrectness(nullptr) != 0) Refuse();
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

CaseColumns SurvivalAnalysis::Columns() const {
  const CCoxData& data = *m_analysis.m_pCoxData;
  const bool intervals = m_kind.Start != Starts::None;
  return {intervals ? data.StopColumn : data.SurvivalColumn, data.WeightColumn, data.StatusColumn, data.StratumColumn};
}

testing::PlainPass SurvivalAnalysis::MakePlainPass() {
  const CCoxData& data = *m_analysis.m_pCoxData;
  const testing::PlainCases cases{m_host,
                                  data.CaseTable,
                                  static_cast<int>(data.ValidCaseCount),
                                  Columns(),
                                  m_kind.Start != Starts::None ? data.StartColumn : -1,
                                  static_cast<int>(data.CoefficientCount)};
  return {cases, m_kind.Efron ? 1 : 0};
}

std::unique_ptr<PartialLikelihood> SurvivalAnalysis::MakePass() {
  const CCoxData& data = *m_analysis.m_pCoxData;
  const bool intervals = m_kind.Start != Starts::None;
  const int n = static_cast<int>(data.ValidCaseCount);
  const CaseColumns columns = Columns();
  std::vector<int> design(data.CoefficientCount);
  std::iota(design.begin(), design.end(), 0);
  const int efronStep = m_kind.Efron ? 1 : 0;
  std::unique_ptr<PartialLikelihood> pass;
  if (m_kind.HasTimeDependentEffect) {
    pass = MakeTimeDependentPass();
  } else if (m_kind.TiedEvents > 0 && intervals) {
    pass = std::make_unique<DiscreteCountingPass>(m_host, data.CaseTable, n, columns, data.StartColumn, design);
  } else if (m_kind.TiedEvents > 0) {
    pass = std::make_unique<DiscreteSurvivalPass>(m_host, data.CaseTable, n, columns, design);
  } else if (intervals) {
    pass = std::make_unique<CountingPass>(m_host, data.CaseTable, n, columns, data.StartColumn, design, efronStep);
  } else {
    pass = std::make_unique<RightCensoredPass>(m_host, data.CaseTable, n, columns, design, efronStep);
  }
  if (pass->Failed()) throw std::runtime_error("out of memory");
  return pass;
}

std::unique_ptr<PartialLikelihood> SurvivalAnalysis::MakeTimeDependentPass() {
  const CCoxData& data = *m_analysis.m_pCoxData;
  std::vector<TimeColumn> design;
  for (int column = 0; column < static_cast<int>(data.CoefficientCount); ++column) {
    const auto& expressions = data.DesignColumns[static_cast<std::size_t>(column)].ExpressionIds;
    design.push_back({column, {expressions.begin(), expressions.end()}});
  }
  const ExpressionStore* store = m_analysis.m_pExpressions.get();
  const int timeSymbol = m_host.GetNbVars() + 1;
  const int firstVariable = data.TimeVariableColumn;
  const auto value = [this, store, timeSymbol, firstVariable](int expression, double time, const double* cells) {
    int error = 0;
    const double result =
        EvaluateTimeExpression(m_host, store, expression, time, cells + firstVariable, timeSymbol, error);
    if (error != 0) throw NumericalFailure();
    return result;
  };
  return std::make_unique<TimeDependentPass>(m_host, data.CaseTable, static_cast<int>(data.ValidCaseCount), Columns(),
                                             design, value, m_kind.Efron ? 1 : 0);
}

}  // namespace orv::bench
