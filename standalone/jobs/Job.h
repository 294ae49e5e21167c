// Job: an analysis as a file keeps it, with all that a run needs besides the table itself.
#pragma once

#include <string>
#include <vector>

#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/ResultDefinition.h"

namespace orv {

// Names of files are relative to the folder of the job file (JobPaths.h takes them from there and back).
struct Job {
  std::string Table;  // a file, "-" for standard input, or an address such as "sqlite:FILE?table=NAME"
  AnalysisDefinition Definition;
  ResultDefinition Results;
  std::vector<std::string> Outputs;  // files that the results go to instead of standard output
  std::string Format;                // of standard output; empty for the usual one
  bool Quiet = false;                // no progress, no notes

  bool operator==(const Job&) const = default;
};

}  // namespace orv
