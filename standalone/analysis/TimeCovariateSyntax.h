// The syntax of time-dependent covariates: NAME=FORMULA.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv {

struct TimeCovariate {
  std::string Name;
  std::string Formula;
};

// The name ends at the first "=". Throws DefinitionError when there is none, or when a side is empty.
TimeCovariate ParseTimeCovariate(std::string_view text);

// All of an analysis. Throws DefinitionError also for a name that stands twice and for more than 40.
std::vector<TimeCovariate> ParseTimeCovariates(const std::vector<std::string>& texts);

}  // namespace orv
