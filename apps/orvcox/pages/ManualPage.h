// The manual page of the program, orvcox(1).
#pragma once

#include <string>
#include <string_view>

#include "apps/orvcox/pages/ProgramOutline.h"

namespace orv::pages {

// The page in the man macros of roff. The same outline gives the same bytes.
std::string WriteManualPage(const ProgramOutline& outline);

// A line of text as roff shows it letter by letter. Signs that roff would replace by typographic ones, or take for a
// request at the start of a line, are escaped.
std::string RoffText(std::string_view line);

}  // namespace orv::pages
