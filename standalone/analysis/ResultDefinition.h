// ResultDefinition: what a person wants to see of a fitted model, with names instead of numbers.
//
// The command line fills one. CheckResultDefinition looks at what can be seen without a table, ResolveResults at what
// needs the analysis, before it runs; ApplyResults then sets the options of the results dialog.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/host/StandaloneHost.h"
#include "ui/CCoxPHResults.h"

namespace orv {

// Texts are as typed; an empty text or list means that the option was not given.
struct ResultDefinition {
  std::vector<std::string> Results;    // names of --show, checked
  bool ShowsAll = false;               // --show all: what the analysis does not have is left out
  std::vector<std::string> Residuals;  // "martingale", "deviance", ...
  std::vector<std::string> Contrasts;  // "X X X": one function each
  std::vector<std::string> Patterns;   // "V=X, V=X"
  std::string SurvivorType;
  std::string CI;
  bool HasSurvivorLimits = true;  // false leaves them out; with CI "none" there are none
  bool HasHazardLimits = true;
  std::string Transform;
  double Confidence = 0.95;

  bool Shows(std::string_view result) const;
  bool operator==(const ResultDefinition&) const = default;
};

// What a definition means for an analysis.
struct ResolvedResults {
  std::vector<std::string> Results;  // those that the analysis has
  ResidualChoices Residuals;
  DenseMatrix LinearCombinations;                    // a row for each coefficient; empty without contrasts
  std::vector<std::string> Coefficients;             // their labels
  std::vector<std::map<int, std::string>> Patterns;  // by variable: the value as typed
  SurvivorType Survivor = SurvivorType::Breslow;
  SurvivorCIType SurvivorCI = SurvivorCIType::Normal;
  bool HasSurvivorLimits = true;
  bool HasHazardLimits = true;
  TimeTransform Transform = TimeTransform::Identity;
  double Confidence = 0.95;
};

// The names that --show and --residuals take, in the order in which results are written.
const std::vector<std::string>& ShowNames();
const std::vector<std::string>& ResidualNames();
// What is shown when nothing is asked for.
const std::vector<std::string>& DefaultShowNames();

// The numbers of a contrast. Throws DefinitionError when there is none or a word that is no number.
std::vector<double> ParseContrast(const std::string& text);

// Throws DefinitionError for words that are none, for contrasts without numbers and for options whose result is not
// shown.
void CheckResultDefinition(const ResultDefinition& definition);

// REQUIRES: ApplyDefinition has filled the options. Throws DefinitionError for what the analysis cannot have: results
// of another input form, contrasts of another length, patterns of other variables.
ResolvedResults ResolveResults(const ResultDefinition& definition, const StandaloneHost& host, CCoxPH& analysis);

// Sets the options of the results. Returns the names of those that the fit has; `notes` receives what differs from the
// wish. Throws DefinitionError for a pattern that is none.
std::vector<std::string> ApplyResults(const ResolvedResults& resolved,
                                      CCoxPHResults& results,
                                      std::vector<std::string>& notes);

}  // namespace orv
