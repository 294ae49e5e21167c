// The options of `orvcox fit`.
#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "standalone/analysis/AnalysisDefinition.h"

namespace orv {

struct FitOptions {
  std::string Table;                 // a file, or "-" for standard input
  AnalysisDefinition Definition;     // complete after parsing
  std::vector<std::string> StartValues;  // as typed
  std::vector<std::string> Fix;          // as typed
  double Confidence = 0.95;
  std::vector<std::string> Show;     // names of ShowNames, or "all"
  std::vector<std::string> Outputs;  // files that the results go to instead of standard output
  std::string Format = "text";       // of standard output
  bool Quiet = false;                // no progress, no notes
};

// Declares the command. `options` must outlive `program`.
CLI::App* AddFitCommand(CLI::App& program, FitOptions& options);

// The names that --show takes, in the order in which results are written.
const std::vector<std::string>& ShowNames();

// The result names asked for, in the order of ShowNames. Throws DefinitionError for a name that is none.
std::vector<std::string> ChosenResults(const FitOptions& options);

}  // namespace orv
