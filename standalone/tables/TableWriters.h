// WriteTable: a table into a file, by the writer that the file's ending asks for.
//
// A new form is one more record in TableWriters.cpp and one more function.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/tables/MemoryTable.h"

namespace orv {

// The endings that can be written, in lower case, with the point.
std::vector<std::string_view> WritableEndings();
bool IsWritableEnding(std::string_view ending);

// Writes a table under a temporary name and renames it, so that a failure leaves an earlier file as it was. Returns
// what the file does not hold of the table, a sentence each. `checkpoint` is called every few thousand cases; what it
// throws ends the writing. Throws OutputError. REQUIRES: the ending of `path` is writable.
std::vector<std::string> WriteTable(const MemoryTable& table,
                                    const std::string& path,
                                    const std::function<void()>& checkpoint = {});

}  // namespace orv
