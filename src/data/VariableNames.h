// Names of variables as the user sees them.
#pragma once

#include <string>

namespace orv {

class Host;

// The long name of a variable (number from 1), without blanks around it and without formatting marks. Empty when the
// host has no such variable.
std::string VariableName(Host& host, int variable);

}  // namespace orv
