// The names of the variables in a file that has no lines.
#pragma once

#include <string>
#include <vector>

namespace orv {

// The names without the blanks around them. Throws TableError when there are none or more than the module can number,
// and for a name that is empty, repeated, or no UTF-8 text.
std::vector<std::string> CheckedVariableNames(const std::string& source, std::vector<std::string> names);

}  // namespace orv
