// The nine maximisation routines, each with a small analysis that the dispatcher sends to it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fit/ReferenceDiscrete.h"
#include "fit/ReferenceTimeDependent.h"
#include "fit/TimeDependentAnalysis.h"
#include "fit/TwelveCases.h"

namespace orv::testing {

struct Routine {
  const char* What;
  int InputType;
  bool Discrete;
  bool Strata;
  bool HasCancelQuery;
  bool HasProgressBar;
  bool LoopsWithoutColumns;
};

inline constexpr Routine kRoutines[] = {
    {"FitSurvival", InputTypes::SurvivalTime, false, false, true, true, false},
    {"FitSurvivalStrata", InputTypes::SurvivalTime, false, true, false, true, true},
    {"FitCounting", InputTypes::CountingProcess, false, false, false, true, true},
    {"FitCountingStrata", InputTypes::CountingProcess, false, true, false, true, true},
    {"FitSurvivalDiscrete", InputTypes::SurvivalTime, true, false, true, true, true},
    {"FitSurvivalDiscreteStrata", InputTypes::SurvivalTime, true, true, true, true, true},
    {"FitCountingDiscrete", InputTypes::CountingProcess, true, false, true, true, true},
    {"FitCountingDiscreteStrata", InputTypes::CountingProcess, true, true, true, true, true},
    {"FitTimeDependent", InputTypes::TimeDependent, false, false, false, false, true},
};

// Covariates a and b; under FitTimeDependent a times log(t + 1), and b. Ties by Efron's rule unless discrete.
inline std::unique_ptr<TestAnalysis> AnalysisOf(const Routine& routine, bool hasColumns = true) {
  std::vector<TestColumn> columns = TwelveCases();
  columns.push_back({"start", {0, 1, 2, 0, 3, 0, 0, 2, 0, 4, 0, 1}});
  std::unique_ptr<TestAnalysis> analysis;
  if (routine.InputType == InputTypes::TimeDependent) {
    analysis = std::make_unique<TimeDependentAnalysis>(
        columns, std::vector<std::string>{"a", "b"}, std::vector<std::string>{"log(T_ + 1)"},
        hasColumns ? std::vector<TimeEffect>{{"a_t", "a", {1}}, {"b", "b"}} : std::vector<TimeEffect>{});
    // The checks, which compile the formulas, refuse a design without columns; the routine itself bears it.
    if (hasColumns) {
      EXPECT_EQ(analysis->Analysis.CheckInputsForCorrectness(nullptr), 0);
    }
  } else {
    analysis = std::make_unique<TestAnalysis>(columns);
    if (routine.InputType == InputTypes::CountingProcess) {
      analysis->Interval("start", "time");
    } else {
      analysis->Time({"time"});
    }
    analysis->Status("status");
    if (hasColumns) analysis->Covariates({"a", "b"}).DefaultDesign();
  }
  analysis->Settings().Likelihood = routine.Discrete ? Likelihoods::Discrete : Likelihoods::Efron;
  if (routine.Strata) analysis->Strata("g", {1, 2});
  return analysis;
}

// What the routine's likelihood is by definition, at a vector on the scale of the table.
inline ReferenceValue ReferenceOf(const Routine& routine, const CCoxData& data, const std::vector<double>& vector) {
  const RealVector beta(vector.begin(), vector.end());
  const std::vector<ReferenceCase> cases = CasesOf(data);
  if (routine.Discrete) return EvaluateDiscreteReference(cases, beta);
  if (routine.InputType != InputTypes::TimeDependent) return EvaluateReference(cases, beta, true);
  return EvaluateTimeDependentReference(cases, beta, true, false, [](const ReferenceCase& one, double time) {
    std::vector<double> x = one.X;
    if (!x.empty()) x[0] *= std::log(time + 1.0);
    return x;
  });
}

}  // namespace orv::testing
