// Start values from a spreadsheet file.
#pragma once

#include <string>

namespace orv {

class CCoxPH;

// Reads the start values of the options from a spreadsheet of one column, a coefficient a case in design order. Whether
// there are as many as coefficients is seen when the run starts. Returns 0, or 1 after a message: for a name that does
// not end in ".orv" to the letter, and then nothing changes; for more than one column and for a cell that does not
// begin with a number, and then there are no start values.
int LoadStartValues(CCoxPH& analysis, const std::string& file);

}  // namespace orv
