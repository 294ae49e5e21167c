// Why cases were left out of a run, counted while the cases are read.
#pragma once

#include <array>
#include <map>

namespace orv {

// What ReadCase returns for a case that is left out. 0 keeps the case; 9 is reserved.
enum class Exclusion : int {
  None = 0,
  Missing = 1,     // a tested variable is missing
  Weight = 2,      // not positive, or not whole under the discrete likelihood
  Time = 3,        // negative, an empty interval, or no valid date
  Entry = 4,       // an entry time is used and the time is negative
  Stratum = 5,     // the stratum is not selected
  Factor = 6,      // a factor value is none of the selected codes
  Status = 7,      // the censoring indicator is neither code
  Expression = 8,  // a variable of a time expression is missing
  Reserved = 9,
  Selection = 10,  // the host's selection conditions reject the case; not a result of ReadCase
};

struct ExclusionCounts {
  // Cases by the first reason that applied. The module shows them to no one; a host may.
  std::array<int, 11> ByReason{};
  // Cases left out as missing, by variable number. A case that lacks several values counts at each.
  std::map<int, int> MissingByVariable;

  int Of(Exclusion reason) const { return ByReason[static_cast<std::size_t>(reason)]; }
  void Add(Exclusion reason) { ++ByReason[static_cast<std::size_t>(reason)]; }
};

}  // namespace orv
