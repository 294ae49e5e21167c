// `orvcox fit --save-job`: the analysis that was run, as a job file.
#pragma once

#include "apps/orvcox/FitOptions.h"

namespace orv {

// Looks at what can be seen before the run. Throws DefinitionError for a name without .toml, for the table, an output
// or start values in the place of the job file, and for texts that a job cannot hold.
void CheckJobPlace(const FitOptions& options);

// Throws OutputError when the file cannot be written; then an earlier one is as it was.
void SaveJob(const FitOptions& options);

}  // namespace orv
