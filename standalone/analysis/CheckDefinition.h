// CheckDefinition: what can be wrong with a definition whatever the table, found before the table is read.
#pragma once

#include "standalone/analysis/AnalysisDefinition.h"

namespace orv {

// Throws DefinitionError when a definition lacks the time or the status, gives options that exclude each other or
// leaves out one that another needs, or when a word, list or effect is not written as it has to be.
void CheckDefinition(const AnalysisDefinition& definition);

}  // namespace orv
