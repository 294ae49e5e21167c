// WriteJob: a job as a file that a person can read, change and run.
#pragma once

#include <string>

#include "standalone/jobs/Job.h"

namespace orv {

// The text of a job in TOML: keys in the order of JobKeys(), each with its help above, choices of the analysis spelt
// out, and what has not been asked for left out. The same job gives the same bytes, and reading the text back gives a
// job that runs in the same way; a job that was read comes back as it was.
// REQUIRES: the definitions are accepted by CheckDefinition and CheckResultDefinition.
std::string WriteJob(const Job& job);

}  // namespace orv
