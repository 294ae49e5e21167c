// The arguments of a command, checked before they are parsed, so that a slip gets a message in this program's words.
#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace orv {

// Checks the arguments that follow the name of `command`: every option exists, has its values, none of them empty, and
// stands once unless it may be repeated; no argument is left over. Throws DefinitionError for the first that is wrong.
// Returns the arguments with each single value joined to its option by "=", so that a value may begin with a dash.
//
//   table  what the one argument that is no option names, for the message when it is missing
//
// Arguments that ask for help are returned as they are.
std::vector<std::string> CheckArguments(const CLI::App& command,
                                        const std::vector<std::string>& arguments,
                                        const std::string& table);

}  // namespace orv
