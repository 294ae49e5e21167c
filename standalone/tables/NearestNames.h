// The names closest to a misspelt one, for messages: `no variable "agee" in trial.csv. Closest: "age".`
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orv {

// The number of insertions, deletions, replacements and swaps of neighbours that turn `a` into `b`, no part of the text
// being edited twice. Counts bytes; upper and lower case of A to Z are the same.
// Method: optimal string alignment, the restricted form of Damerau's distance. a.size() * b.size() steps.
std::size_t EditDistance(std::string_view a, std::string_view b);

// At most `count` of the candidates, nearest first; equally near ones in the order given. There is no limit on the
// distance: the nearest name is a candidate even when it is far away.
std::vector<std::string> NearestNames(std::string_view name,
                                      const std::vector<std::string_view>& candidates,
                                      std::size_t count);

}  // namespace orv
