// The table of the test of proportional hazards.
#pragma once

#include <string>

namespace orv {

class CCoxData;
struct ProportionalHazardsTest;

// One row per tested design column and the row "Overall": chi-square, df, p value. Rows of columns whose p value lies
// below 1 - confidenceLevel, by more than 15 units in the last place, are highlighted; the last row never is.
//   transform  the name of the transform for the title, such as "Log Time"
void ShowProportionalHazards(const CCoxData& data,
                             const ProportionalHazardsTest& test,
                             const std::string& transform,
                             double confidenceLevel);

}  // namespace orv
