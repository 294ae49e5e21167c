// The program's commands.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace orv {

// Runs `orvcox` with these arguments (without the program's name). Results go to `out`, messages, notes and progress to
// `err`. Returns the exit code.
int RunCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

}  // namespace orv
