// `orvcox fit`: one analysis of one table.
#pragma once

#include <iosfwd>

#include "apps/orvcox/FitOptions.h"

namespace orv {

// Returns the exit code. Throws DefinitionError for a definition that does not fit the table, TableError for a file
// that cannot be read, OutputError for one that cannot be written.
int RunFit(const FitOptions& options, std::ostream& out, std::ostream& err);

}  // namespace orv
