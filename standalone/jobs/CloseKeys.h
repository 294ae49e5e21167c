// CloseKeys: what a name that a job should not have may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv {

// Sections in brackets, nearest first; empty when none is close.
std::vector<std::string> CloseSections(std::string_view name);

// For a name in a section that has no such key: the keys that say the same as the option of that name, otherwise those
// that are close to it, nearest first. A key of another section is followed by its place: "Format in [Host]". The
// section of the variables counts as a key and comes as CloseSections gives it. Empty when none is close.
std::vector<std::string> CloseKeys(std::string_view name, std::string_view section);

}  // namespace orv
