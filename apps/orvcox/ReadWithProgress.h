// Reading a table with a progress bar, cancelled by Ctrl-C.
#pragma once

#include <iosfwd>
#include <string>

#include "standalone/tables/MemoryTable.h"

namespace orv {

// Draws on `progress`, which may be null. Throws TableError, or TableReadCancelled.
MemoryTable ReadWithProgress(const std::string& path, std::ostream* progress);

}  // namespace orv
