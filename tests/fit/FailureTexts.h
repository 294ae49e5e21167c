// What a fit says when its numbers fail.
#pragma once

namespace orv::testing {

inline constexpr const char* kLastIterationUsed =
    "A numerical issue was encountered during estimation and the Cox Proportional Hazards algorithm was unable to "
    "converge.  The last iteration of the parameter estimates will be used in subsequent results.";
inline constexpr const char* kNoResults =
    "A numerical issue was encountered during estimation and the Cox Proportional Hazards algorithm was unable to "
    "converge.  No results are available.  New start values should be considered.";

}  // namespace orv::testing
