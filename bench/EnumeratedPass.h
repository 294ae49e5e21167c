// The reference path of the discrete likelihood: every subset of every risk set, in long double.
#pragma once

#include <vector>

#include "ReferencePass.h"
#include "SurvivalTable.h"

namespace orv::bench {

// Evaluates log partial likelihood, score and information of discrete times at `beta` (one value a predictor) from a
// table as MakeSurvivalTable makes it, without strata. The cost is the number of subsets of all risk sets, so it serves
// small tables with few tied events. Shares no code with the module.
LikelihoodValues EvaluateByEnumeration(const MemoryTable& table,
                                       const SurvivalKind& kind,
                                       const std::vector<double>& beta);

}  // namespace orv::bench
