// CloseNames: what a misspelt name may have meant.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orv {

// Up to `count` candidates that are close to `name`, nearest first; empty when none is. Close is a candidate that
// differs in at most a third of its letters (one letter in a short name), capitals or not, and one that holds the
// name or is held by it, as an abbreviation is.
std::vector<std::string> CloseNames(std::string_view name,
                                    const std::vector<std::string_view>& candidates,
                                    std::size_t count);

}  // namespace orv
