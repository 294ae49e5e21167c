// RunFacts: the report of a run as the short list that stands above its results.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "standalone/documents/RunReport.h"

namespace orv {

struct RunFact {
  std::string Name;           // e.g. "Cases read"
  std::string Text;           // what is shown
  std::optional<int> Number;  // when the fact is a number: the same as Text
};

// Program and version; the cases read, taken and left out, by reason and by variable that is missing; columns that took
// no part in the fit; convergence and iterations; messages. What is not known or did not happen has no fact. A message
// keeps its line ends.
std::vector<RunFact> FactsOfRun(const RunReport& report);

}  // namespace orv
