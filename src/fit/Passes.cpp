// The passes of a fit, made for its cases.
#include <numeric>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "data/RoundHalfAway.h"
#include "data/TimeExpressions.h"
#include "fit/CCoxFit.h"
#include "fit/CountingPass.h"
#include "fit/DiscreteCountingPass.h"
#include "fit/DiscreteSurvivalPass.h"
#include "fit/NumericalFailure.h"
#include "fit/RightCensoredPass.h"
#include "fit/TimeDependentPass.h"

namespace orv {

CaseColumns CCoxFit::PassColumns(bool strata) const {
  const bool intervals = m_InputType == InputTypes::CountingProcess;
  return {intervals ? m_pData->StopColumn : m_pData->SurvivalColumn, m_pData->WeightColumn, m_pData->StatusColumn,
          strata ? m_pData->StratumColumn : -1};
}

std::vector<int> CCoxFit::AllColumns() const {
  std::vector<int> columns(m_pData->CoefficientCount);
  std::iota(columns.begin(), columns.end(), 0);
  return columns;
}

std::unique_ptr<PartialLikelihood> CCoxFit::SurvivalPass(bool strata,
                                                         int efronStep,
                                                         const std::vector<int>& columns) const {
  return std::make_unique<RightCensoredPass>(HostOf(), m_pData->CaseTable, static_cast<int>(m_pData->ValidCaseCount),
                                             PassColumns(strata), columns, efronStep);
}

std::unique_ptr<PartialLikelihood> CCoxFit::CountingPassOf(bool strata,
                                                           int efronStep,
                                                           const std::vector<int>& columns) const {
  return std::make_unique<CountingPass>(HostOf(), m_pData->CaseTable, static_cast<int>(m_pData->ValidCaseCount),
                                        PassColumns(strata), m_pData->StartColumn, columns, efronStep);
}

std::unique_ptr<PartialLikelihood> CCoxFit::SurvivalDiscretePass(bool strata, const std::vector<int>& columns) const {
  return std::make_unique<DiscreteSurvivalPass>(HostOf(), m_pData->CaseTable, static_cast<int>(m_pData->ValidCaseCount),
                                                PassColumns(strata), columns);
}

std::unique_ptr<PartialLikelihood> CCoxFit::CountingDiscretePass(bool strata, const std::vector<int>& columns) const {
  return std::make_unique<DiscreteCountingPass>(HostOf(), m_pData->CaseTable, static_cast<int>(m_pData->ValidCaseCount),
                                                PassColumns(strata), m_pData->StartColumn, columns);
}

std::unique_ptr<PartialLikelihood> CCoxFit::TimeDependentPassOf(int efronStep, const std::vector<int>& columns) const {
  std::vector<TimeColumn> design;
  for (const int column : columns) {
    const auto& expressions = m_pData->DesignColumns[static_cast<std::size_t>(column)].ExpressionIds;
    design.push_back({column, {expressions.begin(), expressions.end()}});
  }
  Host& host = HostOf();
  ExpressionStore* store = Owner().m_pExpressions.get();
  const int timeSymbol = host.GetNbVars() + 1;
  const int firstVariable = m_pData->TimeVariableColumn;
  const int caseNumberColumn = m_pData->CaseNumberColumn;
  const auto value = [=, &host](int expression, double time, const double* cells) {
    const double* variables = firstVariable >= 0 ? cells + firstVariable : nullptr;
    int error = 0;
    const double result = EvaluateTimeExpression(host, store, expression, time, variables, timeSymbol, error);
    if (error != 0) {
      if (store != nullptr) store->NoteFailure({expression, RoundToInteger(cells[caseNumberColumn]), time});
      throw NumericalFailure();
    }
    return result;
  };
  return std::make_unique<TimeDependentPass>(host, m_pData->CaseTable, static_cast<int>(m_pData->ValidCaseCount),
                                             PassColumns(Settings().HasStrata()), design, value, efronStep);
}

}  // namespace orv
