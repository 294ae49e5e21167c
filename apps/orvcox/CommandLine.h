// The program's commands.
#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "apps/orvcox/OptionWords.h"

namespace orv {

// Runs `orvcox` with these arguments (without the program's name). Results go to `out`, messages, notes and progress to
// `err`. Returns the exit code.
int RunCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

// Calls `use` with the program as it is declared: commands, options, help. For what is written from it.
void UseDeclaredProgram(const std::function<void(const CLI::App& program, const WordsOfOptions& words)>& use);

}  // namespace orv
