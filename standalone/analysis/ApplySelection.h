// ApplySelection: the model building of an analysis as a person writes it, turned into the options of the module.
#pragma once

#include "core/CCoxPH.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/ApplyDefinition.h"

namespace orv {

// Call it last: it looks at the design. Throws DefinitionError when more effects are to be forced than there are.
void ApplySelection(const AnalysisDefinition& definition, CCoxPH& analysis, AppliedDefinition& applied);

}  // namespace orv
