// The arguments of a command, checked before they are parsed, so that a slip gets a message in this program's words.
#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace orv {

// An argument that is no option.
struct FileArgument {
  std::string Name;  // as the help calls it, such as TABLE
  std::string What;  // what it names, for the message when it is missing
};

// Checks the arguments that follow the name of `command`: every option exists, has its values, none of them empty, and
// stands once unless it may be repeated; no argument is left over. Throws DefinitionError for the first that is wrong.
// Returns the arguments with each single value joined to its option by "=", so that a value may begin with a dash.
//
//   files  the arguments that are no options, in their order, all of them required
//
// Arguments that ask for help are returned as they are.
std::vector<std::string> CheckArguments(const CLI::App& command,
                                        const std::vector<std::string>& arguments,
                                        const std::vector<FileArgument>& files);

}  // namespace orv
