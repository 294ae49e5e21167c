// The tables of survivor and cumulative hazard functions.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "inference/SurvivorFunctions.h"

namespace orv {

class CCoxFit;

// What sets the two kinds of table apart.
struct CurveTableForm {
  const char* Title = "";
  const char* ValueTitle = "";
  double FirstValue = 0.0;  // at time 0
  bool HasLimits = false;
  double ConfidenceLevel = 0.95;
};

// One table: a row for time 0 and one for each point. `points` empty: the pattern is out of range, and all rows stay
// empty.
//   stratum       place of the stratum, from 0; its text heads the table when the analysis has strata
//   patternLabel  the text of the pattern
void ShowCurve(const CCoxFit& fit,
               std::size_t stratum,
               const std::optional<std::vector<CurvePoint>>& points,
               std::size_t pointCount,
               const std::string& patternLabel,
               const CurveTableForm& form);

}  // namespace orv
