// The writer of .orv files: an SQLite database that holds a whole table, value labels and dates included.
#pragma once

#include <functional>
#include <string>

#include "standalone/tables/MemoryTable.h"

namespace orv {

// Fills an empty file. `checkpoint` is called every few thousand cases; what it throws reaches the caller. Throws
// std::system_error when the file cannot be written. Reading the file back gives an equal table.
void WriteOrv(const MemoryTable& table, const std::string& file, const std::function<void()>& checkpoint);

}  // namespace orv
