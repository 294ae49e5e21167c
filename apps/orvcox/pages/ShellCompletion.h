// Completion of the program's command line in a shell.
//
// Offered are the commands; the options of the command, those given already left out unless they may be repeated; the
// words of options that take one of some words, or several with commas; and files for arguments and options that take
// one. Other values are left to the person who types.
#pragma once

#include <string>
#include <string_view>

#include "apps/orvcox/pages/ProgramOutline.h"

namespace orv::pages {

// For bash 4 or later, without the helpers of the bash-completion package, which loads it by the program's name.
std::string WriteBashCompletion(const ProgramOutline& outline);

// For the completion system of zsh, in a file named _PROGRAM on its search path. Options are shown with their help.
std::string WriteZshCompletion(const ProgramOutline& outline);

// The text as one word of a shell, in single quotes.
std::string QuotedForShell(std::string_view text);

}  // namespace orv::pages
