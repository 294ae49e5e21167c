// An analysis with covariates that change with time, by name and formula.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "data/EffectTerm.h"
#include "support/TestAnalysis.h"

namespace orv::testing {

// An effect of the design: a covariate of the table times the formulas at these positions, from 1. Without a covariate
// it is the formulas alone.
struct TimeEffect {
  std::string Name;
  std::string Covariate;
  std::vector<int> Formulas = {};
};

class TimeDependentAnalysis : public TestAnalysis {
 public:
  TimeDependentAnalysis(const std::vector<TestColumn>& columns,
                        const std::vector<std::string>& covariates,
                        const std::vector<std::string>& formulas,
                        const std::vector<TimeEffect>& effects)
      : TestAnalysis(columns) {
    Settings().InputType = InputTypes::TimeDependent;
    Time({"time"}).Status("status").Covariates(covariates);
    for (std::size_t k = 0; k < formulas.size(); ++k) {
      Settings().TimeDependentCovariateNames.push_back("formula" + std::to_string(k + 1));
    }
    Settings().TimeDependentCovariateExpressions = formulas;
    std::vector<std::pair<std::string, std::string>> terms;
    for (const TimeEffect& effect : effects) {
      std::string term = effect.Covariate.empty() ? "" : VariableSymbol(Number(effect.Covariate));
      for (const int formula : effect.Formulas) term += (term.empty() ? "" : "*") + TimeExpressionSymbol(formula);
      terms.emplace_back(effect.Name, term);
    }
    Design(terms);
  }

  // Compiles the formulas and prepares the fit. The checks of a run are the ones that compile.
  CCoxFit& PrepareTimeFit() {
    EXPECT_EQ(Analysis.CheckInputsForCorrectness(nullptr), 0) << "the options of the test are refused";
    return PrepareFit();
  }
};

}  // namespace orv::testing
