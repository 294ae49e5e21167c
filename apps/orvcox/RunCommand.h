// `orvcox run`: the analysis of a job file.
#pragma once

#include <CLI/App.hpp>
#include <iosfwd>
#include <string>
#include <vector>

#include "apps/orvcox/OptionWords.h"

namespace orv {

struct RunOptions {
  std::string JobFile;
  std::vector<std::string> Outputs;  // with Format in the place of what the job says
  std::string Format;
  bool Quiet = false;
  WordsOfOptions Words;  // complete after the declaration
};

// Declares the command. `options` must outlive `program`.
CLI::App* AddRunCommand(CLI::App& program, RunOptions& options);

// Runs the job as RunFit does. Returns the exit code. Throws DefinitionError in the words of the job, TableError and
// OutputError with the line and the key that name the file, and what RunFit throws besides.
int RunJob(const RunOptions& options, std::ostream& out, std::ostream& err);

}  // namespace orv
