// The options of `orvcox fit`.
#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <string>
#include <vector>

#include "apps/orvcox/OptionWords.h"
#include "apps/orvcox/OutputTargets.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/ResultDefinition.h"

namespace orv {

// Complete after parsing, if not said otherwise. The fields "as typed" serve the parsing alone.
struct FitOptions {
  std::string Table;                               // a file, or "-" for standard input
  AnalysisDefinition Definition;                   // checked as far as that is possible without the table
  ResultDefinition Results;                        // what to write; the names in the order of ShowNames
  std::vector<OutputTarget> Targets;               // files that the results go to instead of standard output
  const DocumentFormat* StandardFormat = nullptr;  // of standard output
  bool Quiet = false;                              // no progress, no notes
  std::string SaveJob;                             // a job file that a run without refusal is written to
  WordsOfOptions Words;                            // complete after the declaration
  // Puts notes into the words of whoever defined the analysis; empty for those of the command line.
  std::function<std::string(const std::string&)> Wording;
  // A note on where values stand that a text of the module refuses, by the number of the text; empty when that is not
  // certain. Without it there are no such notes.
  std::function<std::string(int)> NoteOnRefusal;

  struct {
    std::string MaxIterations;
    std::string ToleranceExponent;
    std::string Confidence;
    std::string PEnter;
    std::string PRemove;
    std::string Force;
    std::vector<std::string> StartValues;
    std::vector<std::string> Fix;
    std::vector<std::string> Show;
    std::vector<std::string> Outputs;
    std::string Format;
  } AsTyped;
};

// Declares the command. `options` must outlive `program`. Parsing throws DefinitionError for values that are none.
CLI::App* AddFitCommand(CLI::App& program, FitOptions& options);

}  // namespace orv
