// The writer of CSV files: comma-separated UTF-8 text that the reader of delimited text reads back.
//
// A variable is written as texts when every value has a label, no two labels are the same, and none would be read as a
// missing value; otherwise as numbers, in the fewest digits that read back as the same double. Dates are written as
// YYYY-MM-DD, missing values as empty places. Fields that need quotes have them; lines end in LF.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "standalone/tables/MemoryTable.h"

namespace orv {

// Fills an empty file. Returns what the file does not hold of the table, a sentence each, for the user. `checkpoint` is
// called every few thousand cases; what it throws reaches the caller. Throws std::system_error when the file cannot be
// written.
std::vector<std::string> WriteDelimited(const MemoryTable& table,
                                        const std::string& file,
                                        const std::function<void()>& checkpoint);

}  // namespace orv
