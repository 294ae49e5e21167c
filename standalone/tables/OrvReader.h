// The reader of .orv files, SQLite databases that hold a whole table (see docs/file-formats.md).
//
// Columns and tables that this version does not know are ignored. A file of a newer version is refused.
#pragma once

#include <string>

#include "standalone/tables/MemoryTable.h"
#include "standalone/tables/TableReaders.h"

namespace orv {

// Throws TableError and TableReadCancelled. Progress counts values instead of bytes. Beyond the table itself the memory
// that reading takes does not grow with the cases.
MemoryTable ReadOrvFile(const std::string& path, const TableReadOptions& options);

}  // namespace orv
