// The numeric fields of the startup dialog, as the user left them.
#pragma once

#include <optional>

namespace orv {

struct StartupFields {
  // Empty when the field yields no number.
  std::optional<double> CodeForCensoredResponses;
  std::optional<double> CodeForCompleteResponses;
  double PToEnter = 0.05;
  double PToRemove = 0.15;
  double Iterations = 50.0;  // put back to the option's value when it is refused
  int EffectsToForce = 0;
  int DisplayBest = 1;
};

}  // namespace orv
