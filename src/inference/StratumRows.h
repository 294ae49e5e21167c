// The rows of the strata in a sorted case table.
#pragma once

#include <vector>

namespace orv {

class CCoxData;

// Rows count from 1; both ends belong to the stratum.
struct StratumRows {
  int First = 0;
  int Last = 0;
  int Count() const { return Last - First + 1; }
};

// In ascending order of stratum codes; one entry of all cases without strata, none without cases.
std::vector<StratumRows> StrataOf(const CCoxData& data);

}  // namespace orv
