// Pieces of messages that quote what a file holds.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orv {

// The beginning of a text on one line, cut between characters.
std::string Excerpt(std::string_view text);

// The first names of a list, "..." standing for the rest.
std::string NameList(const std::vector<std::string>& names);

// "1 field", "2 fields".
std::string CountOf(std::uint64_t number, std::string_view thing);

}  // namespace orv
