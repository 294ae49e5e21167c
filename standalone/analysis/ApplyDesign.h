// ApplyDesign: the design of an analysis as a person writes it, turned into the options of the module.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "core/CCoxPH.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/EffectSyntax.h"
#include "standalone/analysis/TimeCovariateSyntax.h"
#include "standalone/formula/CompileFormula.h"
#include "standalone/host/StandaloneHost.h"

namespace orv {

// Time-dependent covariates, effects, start values and held coefficients. Call the steps in this order, the first after
// the times and predictors are chosen, the last after the codes. `notes` receives what the person should know. Each
// throws DefinitionError for what does not fit the table.
class DesignApplier {
 public:
  DesignApplier(const AnalysisDefinition& definition,
                StandaloneHost& host,
                CCoxPH& analysis,
                std::vector<std::string>& notes);

  // False when the module has refused a covariate with its message.
  bool ChooseTimeCovariates();
  void ChooseEffects();
  // False when the module has refused a file of start values with its message. Throws TableError for one that cannot be
  // read.
  bool ChooseStartValues();

 private:
  using Symbols = std::map<std::string, std::string>;  // name of a predictor to its term

  const std::string& NameOf(int variable) const { return m_host.Table().Variable(variable).Name; }
  bool IsTimeCovariate(const std::string& name) const;
  std::vector<TimeCovariate> UsedTimeCovariates();
  bool MeansTheSameInUpperCase(const std::string& formula, const CompiledFormula& compiled);
  void CheckFormula(const TimeCovariate& covariate);
  void NoteOnTimeCovariates();
  std::vector<std::string> ClosePredictors(const std::string& name, const Symbols& symbols) const;
  void ResolvePredictors(WrittenEffect& effect, const Symbols& symbols);
  std::string TermOf(const WrittenEffect& effect, const Symbols& symbols) const;
  void DropUnusedPredictors();
  void NoteOnMissingPredictors();
  void HoldEffects();

  const AnalysisDefinition& m_definition;
  StandaloneHost& m_host;
  CCoxPH& m_analysis;
  CoxSettings& m_settings;
  std::vector<std::string>& m_notes;
  std::set<int> m_used;          // variables of the written effects
  std::set<int> m_formulaReads;  // variables of the formulas, and the time
};

}  // namespace orv
