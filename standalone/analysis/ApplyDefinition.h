// ApplyDefinition: from an analysis as a person writes it to the options of the module.
#pragma once

#include <string>
#include <vector>

#include "core/CCoxPH.h"
#include "core/StartupFields.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/host/StandaloneHost.h"

namespace orv {

struct AppliedDefinition {
  StartupFields Fields;            // the numeric fields, for RunFromStartup
  std::vector<std::string> Notes;  // what the person should know about how the definition was taken
  bool Refused = false;            // a check at variable selection showed its message
};

// Fills the options of `analysis`, to which `host` is attached, from a definition, and makes the choices that were left
// open: codes as found, the largest code as reference, every predictor as an effect. Weights are set on the host.
// Throws DefinitionError for a definition that does not fit the table.
AppliedDefinition ApplyDefinition(const AnalysisDefinition& definition, StandaloneHost& host, CCoxPH& analysis);

}  // namespace orv
